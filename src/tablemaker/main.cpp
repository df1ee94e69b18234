#include "tablemaker/commands.h"

int main(int argc, char** argv) {
    return valku::runTablesProgram({argv + 1, argv + argc});
}
