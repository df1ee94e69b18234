#include "search/tablebase_port.h"

namespace valku {

namespace {

int probeNothing(int, i32*, const Position&) {
    return 0;
}

}  // namespace

TablebaseProbe tablebaseProbe = probeNothing;
i32 largestTbMen = 0;
i32 TBdistance = 8;

}  // namespace valku
