#include "eval/weights.h"

#include <algorithm>

#include "chess/piece_values.h"

namespace valku {

i32 minorValue;
i32 drawishMaterial;

void updateDerivedMaterial() {
    updatePieceValues();
    minorValue = std::max(knightValue, bishopValue);
    drawishMaterial = minorValue + 2 * (pawnValue + queenValue);
}

}  // namespace valku
