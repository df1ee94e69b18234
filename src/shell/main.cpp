#include "shell/engine.h"

int main(int argc, char** argv) {
    valku::engineMain(valku::parseCommandLine(argc, argv));
}
