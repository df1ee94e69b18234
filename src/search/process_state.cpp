#include "search/process_state.h"

namespace valku {

int protocolMode = protocolUndecided;
int processRole = roleRoot;
u16 rolePort = 0;
std::string programPath;

}  // namespace valku
