#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "chess/fen.h"
#include "chess/piece_values.h"
#include "chess/position.h"
#include "chess/tables.h"
#include "eval/eval_tables.h"
#include "eval/evaluate.h"
#include "eval/pawn_table.h"
#include "eval/weights.h"
#include "shared/start_up.h"
#include "shared/value_scope.h"

// What the evaluation tests share. Positions are set up as the engine does it: from a FEN into gamePosition,
// and from there into searchPosition. A placement alone means White to move without castling rights.

namespace valku {

[[maybe_unused]] inline const auto* const evalTables = startUpWith({initChessTables, initEvalTables});

inline void setPosition(std::string fen, bool mirrored = false) {
    if (fen.find(' ') == std::string::npos) fen += " w - - 0 1";
    ASSERT_TRUE(readFen(fen)) << fen;
    if (mirrored) mirrorPosition();
    copyPosition(searchPosition, gamePosition);
    if (pawnTable == nullptr) {
        nPawnTables = 1024;
        createPawnTable();
    }
    clearPawnTable();
}

inline i32 oneSidedValueOf(const std::string& fen, i32 mobility = 0, bool mirrored = false) {
    setPosition(fen, mirrored);
    mobilityBalance = mirrored ? -mobility : mobility;
    return evaluate();
}

// Also checks that the position with colors and ranks exchanged has the opposite value.
inline i32 valueOf(const std::string& fen, i32 mobility = 0) {
    const i32 mirrored = oneSidedValueOf(fen, mobility, true);
    const i32 value = oneSidedValueOf(fen, mobility);
    EXPECT_EQ(mirrored, -value) << "mirrored " << fen;
    return value;
}

inline i32 valueWithoutStructure(const std::string& fen) {
    const i32 value = valueOf(fen);
    return value - probePawnTable()->endgameScore;
}

inline const PawnEntry& pawnEntryOf(const std::string& fen, bool mirrored = false) {
    setPosition(fen, mirrored);
    return *probePawnTable();
}

// What one weight contributes to the value of a position: the value minus the one without that weight.
inline i32 shareOf(i32& weight, const std::string& fen) {
    const i32 with = valueOf(fen);
    const ValueScope without(weight, 0);
    return with - valueOf(fen);
}

// Limits that make every position a middlegame or an endgame.
constexpr i32 alwaysMiddlegame = -10000;
constexpr i32 alwaysEndgame = 100000;

struct ValueCase {
    const char* fen;
    i32 value, mobility = 0;
};
inline void checkValues(std::initializer_list<ValueCase> cases) {
    for (const auto& c : cases) EXPECT_EQ(valueOf(c.fen, c.mobility), c.value) << c.fen << " " << c.mobility;
}

// Two positions that differ by what is tested.
struct PairCase {
    const char *with, *without;
    i32 difference;
};
inline void checkPairs(std::initializer_list<PairCase> cases) {
    for (const auto& c : cases) EXPECT_EQ(valueOf(c.with) - valueOf(c.without), c.difference) << c.with;
}

struct ShareCase {
    i32* weight;
    const char* fen;
    i32 share;
};
inline void checkShares(std::initializer_list<ShareCase> cases) {
    for (const auto& c : cases) EXPECT_EQ(shareOf(*c.weight, c.fen), c.share) << c.fen;
}

}  // namespace valku
