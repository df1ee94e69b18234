#include "search/search_ports.h"

namespace valku {

SearchPorts searchPorts{};

}  // namespace valku
