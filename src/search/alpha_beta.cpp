#include "search/alpha_beta.h"

#include <algorithm>
#include <cmath>

#include "chess/move_generation.h"
#include "chess/side.h"
#include "chess/tables.h"
#include "eval/game_phase.h"
#include "search/move_ordering.h"
#include "search/node.h"
#include "search/quiescence.h"
#include "search/upward_calls.h"

namespace valku {

namespace {

constexpr i32 internalDeepeningDepth = 3 * onePly;
constexpr i32 twofoldDeepeningDepth = 7 * onePly;
constexpr i32 verificationDepth = 8 * onePly;
constexpr i32 shuffleAboveDepth = 7 * onePly;
constexpr i32 checkExtension = onePly / 2;
constexpr i32 singularExtension = 3 * onePly / 4;
constexpr i32 singularDepth = 5 * onePly;
constexpr i32 singularReduction = 4 * onePly;
constexpr i32 singularMargin = 45;  // hundredths of a pawn
constexpr i32 openWindowReduction = 2 * onePly;

// A zero-window child that this process searches itself.
[[gnu::always_inline]] inline i32 searchZws(int ply, i32 beta, i32 depth) {
    if (depth < 1) return quiesceZws(ply, beta);
    if (depth <= frontierDepth) return frontierZws(ply, beta);
    return alphaBetaZws(ply, beta, depth);
}

// Each node function exists twice, as one text over two ways of descending. The plain way: this process
// searches every child.
struct PlainDescent {
    [[gnu::always_inline]] static i32 zws(int ply, i32 beta, i32 depth) {
        return searchZws(ply, beta, depth);
    }
    [[gnu::always_inline]] static i32 zwsRaced(int ply, i32 beta, i32 depth) {
        return searchZws(ply, beta, depth);
    }
    [[gnu::always_inline]] static i32 zwsMove(bool, int ply, i32 beta, i32 depth) {
        return searchZws(ply, beta, depth);
    }
    [[gnu::always_inline]] static i32 open(int ply, i32 alpha, i32 beta, i32 depth) {
        return depth < 1 ? quiescePv(ply, alpha, beta, 0) : alphaBeta(ply, alpha, beta, depth);
    }
};

// From these depths on nodes are raced. Only few are entered in a second: their speed does not matter.
constexpr i32 openRaceDepth = 7 * onePly + 1;
constexpr i32 zwsRaceDepth = 8 * onePly + 1;

i32 alphaBetaSplit(int ply, i32 alpha, i32 beta, i32 depth);
i32 alphaBetaZwsSplit(int ply, i32 beta, i32 depth);

// A node at `ply` is raced during the first 2 to the power of `ply` seconds of a search; later only nodes
// further down are.
bool isTooLateToRace(int ply) {
    return elapsedSeconds > std::ldexp(1.0, ply);
}

// The split-aware way: a deep child is raced over the search processes. Once it is too late for that, the
// child is entered instead and its own children are raced.
struct SplitDescent {
    static i32 zws(int ply, i32 beta, i32 depth) {
        if (depth >= zwsRaceDepth && isTooLateToRace(ply)) return alphaBetaZwsSplit(ply, beta, depth);
        return zwsRaced(ply, beta, depth);
    }
    // Never too late.
    static i32 zwsRaced(int ply, i32 beta, i32 depth) {
        if (depth < zwsRaceDepth) return searchZws(ply, beta, depth);
        return splitSearchPort(ply, beta - 1, beta, depth, true);
    }
    // A node that knows a cut move always races its children.
    static i32 zwsMove(bool hasCutMove, int ply, i32 beta, i32 depth) {
        return hasCutMove ? zwsRaced(ply, beta, depth) : zws(ply, beta, depth);
    }
    static i32 open(int ply, i32 alpha, i32 beta, i32 depth) {
        if (depth < openRaceDepth) return PlainDescent::open(ply, alpha, beta, depth);
        if (isTooLateToRace(ply)) return alphaBetaSplit(ply, alpha, beta, depth);
        return splitSearchPort(ply, alpha, beta, depth, false);
    }
};

// The depth that is left after a null move.
constexpr i32 nullMoveDepth(i32 depth) {
    if (depth <= 3 * onePly) return 0;
    return depth < 6 * onePly ? depth - 3 * onePly : depth - 4 * onePly;
}

// The late move reduction of a zero-window node: a ply, and one more for each hexadecimal digit of a negative
// history value.
[[gnu::always_inline]] inline i32 reductionOf(i32 tag) {
    i32 reduction = onePly;
    for (i32 deficit = tagHistoryOffset - (tag & tagHistoryMask); deficit > 0; deficit >>= 4) {
        reduction += onePly;
    }
    return reduction;
}

// A far advanced enemy pawn has just moved and no pawn blocks it.
template <Color Us>
bool advancedPawnThreatens(int square) {
    using S = Side<Us>;
    return Side<S::Them>::relativeRank(square) >= 5 && searchPosition.board[square] == Side<S::Them>::pawn &&
           searchPosition.board[square - S::up] != S::pawn;
}

// The guard against zugzwang: in an endgame no null move follows the advance of such a pawn.
bool pawnGuardForbidsNullMove() {
    const Position& p = searchPosition;
    if (isMiddlegame(p)) return false;
    const int square = moveTo(p.state[-1].move);
    return p.sideToMove == White ? advancedPawnThreatens<White>(square)
                                 : advancedPawnThreatens<Black>(square);
}

// What a zero-window node takes from a table entry: a score that ends the node, or a move to try first.
struct ZwsHashUse {
    Move hashMove = nullMove;
    bool hasCutMove = false;

    // True if the entry ends the node with `score`.
    bool take(const HashEntry& entry, int ply, i32 beta, i32 depth, i32& score) {
        searchFrames[ply + 1].ownMobility = entry.mobility;
        if (!entry.holdsAt(searchPosition.state->fiftyMoves)) return false;
        if (cutsZws(entry, ply, beta, depth, score)) return true;
        hasCutMove = entry.lowerMove != nullMove;
        hashMove = hasCutMove ? entry.lowerMove : entry.upperMove;
        return false;
    }
};

// Counts the side to move's mobility where no table entry gives it.
void countMobility(int ply) {
    MoveList& list = searchFrames[ply].list;
    generateCaptures(list, 0);
    searchFrames[ply + 1].ownMobility = list.mobility;
}

// The test of a singular extension (T. Anantharaman, M. Campbell, F. Hsu, "Singular Extensions: Adding
// Selectivity to Brute-Force Searching", ICCA Journal 11/4, 1988): a zero-window search (beta - 1, beta) of
// the node at `ply` without `excluded`, which is unmade. Each excluded move gives a key of its own, so that
// the node's own entry stays as it is.
template <class Descent>
i32 singularTest(int ply, i32 depth, i32 beta, const MoveList& list, Move excluded) {
    if (searchStopped()) return stopValue;
    StateRecord& state = *searchPosition.state;
    const int from = moveFrom(excluded);
    const int to = moveTo(excluded);
    StateRecord key;
    key.hashLow = state.hashLow ^ pieceKeyLow[144][from] ^ pieceKeyLow[145][to];
    key.hashHigh = state.hashHigh ^ pieceKeyHigh[144][from] ^ pieceKeyHigh[145][to];

    HashEntry entry;
    i32 score;
    if (probeHash(key, entry) && cutsZws(entry, ply, beta, depth, score)) return score;

    const i32 mobility = searchFrames[ply + 1].ownMobility;
    i32 best = ply - mateScore;
    for (i32 i = 0; i < list.count; ++i) {
        const Move move = list.moves[i];
        if (move == excluded || !tryMove(move)) continue;
        score = -Descent::zws(ply + 1, 1 - beta, depth);
        unmakeMove();
        if (score >= beta) {
            storeLowerBound(ply, key.hashHigh, key.hashLow, score, depth, move, state.fiftyMoves, mobility);
            return score;
        }
        best = std::max(best, score);
    }
    storeUpperBound(ply, key.hashHigh, key.hashLow, best, depth, nullMove, state.fiftyMoves, mobility);
    return best;
}

// Generates all moves, the most promising first. Returns the history table that their tags were made with.
[[gnu::always_inline]] inline HistoryTable& generateInOrder(SearchFrame& frame, i32 margin, Move hashMove) {
    generateAllMoves(frame.list);
    HistoryTable& table = historyTableFor(margin);
    tagMoves(frame, table, margin, hashMove);
    sortByTag(frame.list);
    return table;
}

struct ChildDepths {
    i32 full;
    i32 tried;  // of the first search
};

// The depths for the move that has just been made. Either late move reduction
// (https://www.chessprogramming.org/Late_Move_Reductions) or a check extension, never both.
[[gnu::always_inline]] inline ChildDepths childDepths(i32 newDepth, i32 reduction) {
    if (reduction > 0) return {newDepth, std::max(newDepth - reduction, 0)};
    const i32 depth = inCheck() ? newDepth + checkExtension : newDepth;
    return {depth, depth};
}

// Steps 1 and 2 of both node functions. True with the score of the node.
[[gnu::always_inline]] inline bool endsAtEntry(int ply, i32 beta, i32 depth, i32& score) {
    // Step 1. Mate distance pruning (https://www.chessprogramming.org/Mate_Distance_Pruning), against beta
    // only: no score is below that of being mated here.
    if (searchStopped()) {
        score = stopValue;
        return true;
    }
    ++nodeCount;
    if (ply >= horizonPly) {
        score = evaluateForSideToMove();
        return true;
    }
    if (beta <= ply - mateScore) {
        score = ply - mateScore;
        return true;
    }

    // Step 2. Draws and endgame tables.
    setUpFrame(ply);
    if (isDrawnByRule()) {
        score = drawScore;
        return true;
    }
    return probeTables(ply, depth, score);
}

template <class Descent>
[[gnu::always_inline]] inline i32 zwsNode(int ply, i32 beta, i32 depth) {
    i32 score;
    if (endsAtEntry(ply, beta, depth, score)) return score;

    // Step 3. Transposition table, and internal iterative deepening
    // (https://www.chessprogramming.org/Internal_Iterative_Deepening) where it has no entry.
    SearchFrame& frame = searchFrames[ply];
    ZwsHashUse hash;
    HashEntry entry;
    if (probeHash(*searchPosition.state, entry)) {
        if (hash.take(entry, ply, beta, depth, score)) return score;
    } else {
        bool found = false;
        if (depth >= internalDeepeningDepth) {
            if (depth >= twofoldDeepeningDepth) Descent::zwsRaced(ply, beta, depth - 4 * onePly);
            Descent::zwsRaced(ply, beta, depth - 2 * onePly);
            found = probeHash(*searchPosition.state, entry);
            if (found && hash.take(entry, ply, beta, depth, score)) return score;
        }
        if (!found) countMobility(ply);
    }

    prefetchNullMove();
    if (hash.hashMove) prefetchChild(hash.hashMove);

    // Step 4. Static evaluation.
    frame.inCheck = inCheck();
    const i32 margin = beta - evaluateNode(ply);

    // Step 5. Null move (C. Donninger, "Null Move and Deep Search", ICCA Journal 16/3, 1993), verified at
    // great depth (https://www.chessprogramming.org/Null_Move_Pruning). Nothing is stored.
    if (margin <= 0 && !frame.inCheck && searchPosition.state[-1].move != nullMove &&
        !pawnGuardForbidsNullMove()) {
        makeNullMove();
        score = -Descent::zwsRaced(ply + 1, 1 - beta, nullMoveDepth(depth));
        unmakeNullMove();
        if (score >= beta && depth >= verificationDepth) {
            score = std::min(score, Descent::zwsRaced(ply, beta, depth - 7 * onePly));
        }
        if (score >= beta) return score;
    }

    // Step 6. All moves in the order of their tags; without a known cut move those of a deep node are
    // shuffled.
    MoveList& list = frame.list;
    HistoryTable& table = generateInOrder(frame, margin, hash.hashMove);
    if (depth > shuffleAboveDepth && !hash.hasCutMove) shuffleMoves(list, 0, list.count - 1);

    const i32 newDepth = frame.inCheck ? depth - onePly + checkExtension : depth - onePly;
    i32 best = ply - mateScore;
    i32 legal = 0;
    BigMove bigMove;
    for (i32 i = 0; i < list.count; ++i) {
        // Step 7. Make the move.
        if (searchStopped()) return stopValue;
        const Move move = list.moves[i];
        const i32 tag = list.scores[i];
        const u8 piece = searchPosition.board[moveFrom(move)];
        if (i + 1 < list.count) prefetchChild(list.moves[i + 1]);
        if (!tryMove(move)) continue;
        ++legal;
        bigMove.startMove();

        // Step 8. Reduction, or an extension for a check.
        auto [full, tried] = childDepths(newDepth, tag < reducedBelow ? reductionOf(tag) : 0);

        // Step 9. Search the child, at full depth if the reduced search reaches beta.
        score = -Descent::zwsMove(hash.hasCutMove, ply + 1, 1 - beta, tried);
        if (score >= beta && tried != full) {
            score = -Descent::zwsMove(hash.hasCutMove, ply + 1, 1 - beta, full);
        }
        unmakeMove();

        // Step 10. A beta cut.
        if (score >= beta) {
            if (wasQuiet()) {
                updateKillers(frame, piece, move);
                rewardHistory(table, piece, moveTo(move), depth);
            }
            storeNodeLowerBound(ply, score, depth, move);
            return score;
        }

        // Step 11. A fail-low.
        penalizeHistory(table, piece, moveTo(move));
        best = std::max(best, score);
        bigMove.endMove(move);
    }

    // Step 12. Mate, stalemate, or an upper bound.
    if (legal == 0) return storeMateOrStalemate(ply, depth);
    storeNodeUpperBound(ply, best, depth, bigMove.hint());
    return best;
}

template <class Descent>
[[gnu::always_inline]] inline i32 openNode(int ply, i32 alpha, i32 beta, i32 depth) {
    i32 score;
    if (endsAtEntry(ply, beta, depth, score)) return score;

    // Step 3. The transposition table gives a move and the mobility, never a score.
    SearchFrame& frame = searchFrames[ply];
    HashEntry entry;
    bool found = probeHash(*searchPosition.state, entry);
    if (!found && depth >= internalDeepeningDepth) {
        if (depth >= twofoldDeepeningDepth) Descent::open(ply, alpha, beta, depth - 4 * onePly);
        Descent::open(ply, alpha, beta, depth - 2 * onePly);
        found = probeHash(*searchPosition.state, entry);
    }
    Move hashMove = nullMove;
    if (found) {
        searchFrames[ply + 1].ownMobility = entry.mobility;
        hashMove = entry.lowerMove;
    } else {
        countMobility(ply);
    }

    // Step 4. Static evaluation.
    frame.inCheck = inCheck();
    const i32 margin = beta - evaluateNode(ply);

    // Step 6. All moves in the order of their tags; those of a deep node are shuffled, the first excepted.
    MoveList& list = frame.list;
    HistoryTable& table = generateInOrder(frame, margin, hashMove);
    if (depth > shuffleAboveDepth) shuffleMoves(list, 1, list.count - 1);

    const i32 newDepth = frame.inCheck ? depth - onePly + checkExtension : depth - onePly;
    i32 best = ply - mateScore;
    Move bestMove = nullMove;
    bool raised = false;
    bool openWindow = true;  // for the first legal move, and for one that has raised alpha in its zero window
    i32 legal = 0;
    BigMove bigMove;
    for (i32 i = 0; i < list.count; ++i) {
        // Step 7. Make the move.
        if (searchStopped()) return stopValue;
        const Move move = list.moves[i];
        const i32 tag = list.scores[i];
        const u8 piece = searchPosition.board[moveFrom(move)];
        if (!tryMove(move)) continue;
        ++legal;
        bigMove.startMove();

        // Step 8. Reduction, or an extension for a check.
        auto [full, tried] = childDepths(newDepth, tag < reducedBelow ? openWindowReduction : 0);

        // Step 9. The zero window, for all moves but the first.
        if (!openWindow) {
            score = -Descent::zws(ply + 1, -alpha, tried);
            if (score > alpha) {
                openWindow = true;
                tried = full;
            }
        }

        // The open window, again at a greater depth if the move was reduced or proves singular.
        bool singularDone = false;
        while (openWindow) {
            score = -Descent::open(ply + 1, -beta, -alpha, tried);
            if (score <= alpha) break;
            if (tried >= singularDepth && !singularDone) {
                singularDone = true;
                unmakeMove();
                const i32 bound = score - singularMargin;
                if (singularTest<Descent>(ply, tried - singularReduction, bound, list, move) < bound) {
                    full += singularExtension;
                }
                makeMove(move);
            }
            if (tried >= full) break;
            tried = full;
        }
        unmakeMove();
        openWindow = false;

        if (score > alpha) {
            // Step 10. A new principal variation, or a beta cut.
            if (wasQuiet()) {
                updateKillers(frame, piece, move);
                rewardHistory(table, piece, moveTo(move), depth);
            }
            if (score >= beta) {
                storeNodeLowerBound(ply, score, depth, move);
                return score;
            }
            alpha = best = score;
            bestMove = move;
            raised = true;
        } else {
            // Step 11. A fail-low.
            penalizeHistory(table, piece, moveTo(move));
            if (score > best) {
                best = score;
                bestMove = move;
            }
        }
        bigMove.endMove(move);
    }

    // Step 12. Mate, stalemate, or the bounds: a score that raised alpha is exact.
    if (legal == 0) return storeMateOrStalemate(ply, depth);
    if (raised) storeNodeLowerBound(ply, best, depth, bestMove);
    storeNodeUpperBound(ply, best, depth, bigMove.hint());
    return best;
}

i32 alphaBetaSplit(int ply, i32 alpha, i32 beta, i32 depth) {
    return openNode<SplitDescent>(ply, alpha, beta, depth);
}

i32 alphaBetaZwsSplit(int ply, i32 beta, i32 depth) {
    return zwsNode<SplitDescent>(ply, beta, depth);
}

}  // namespace

i32 alphaBeta(int ply, i32 alpha, i32 beta, i32 depth) {
    return openNode<PlainDescent>(ply, alpha, beta, depth);
}

i32 alphaBetaZws(int ply, i32 beta, i32 depth) {
    return zwsNode<PlainDescent>(ply, beta, depth);
}

i32 alphaBetaEntry(i32 ncount, i32 alpha, i32 beta, i32 distance, bool allowSplit) {
    // A job without depth is a full node here.
    if (!allowSplit || distance < 1) return alphaBeta(ncount, alpha, beta, distance);
    return SplitDescent::open(ncount, alpha, beta, distance);
}

i32 alphaBetaZwsEntry(i32 ncount, i32 beta, i32 distance, bool allowSplit) {
    if (distance <= frontierDepth) return frontierZws(ncount, beta);
    return allowSplit ? SplitDescent::zws(ncount, beta, distance) : alphaBetaZws(ncount, beta, distance);
}

}  // namespace valku
