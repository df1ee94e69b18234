#include "search/output.h"

namespace valku {

TextSink* textSink = nullptr;

}  // namespace valku
