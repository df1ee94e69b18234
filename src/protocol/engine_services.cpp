#include "protocol/engine_services.h"

namespace valku {

EngineServices* engineServices = nullptr;

}  // namespace valku
