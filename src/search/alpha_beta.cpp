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

constexpr i32 internalDeepeningDepth = 12;
constexpr i32 twofoldDeepeningDepth = 28;
constexpr i32 verificationDepth = 32;
constexpr i32 shuffleAboveDepth = 28;
constexpr i32 checkExtension = 2;
constexpr i32 singularExtension = 3;
constexpr i32 singularDepth = 20;
constexpr i32 singularMargin = 45;
constexpr i32 openWindowReduction = 8;

// The rule by which every zero-window child is reached that this process searches by itself.
[[gnu::always_inline]] inline i32 searchZws(int ply, i32 beta, i32 depth) {
    if (depth < 1) return quiesceZws(ply, beta);
    if (depth <= frontierDepth) return frontierZws(ply, beta);
    return alphaBetaZws(ply, beta, depth);
}

// Each node function exists twice, as one code over two ways of descending. The plain way: this process
// searches every child.
struct PlainDescent {
    [[gnu::always_inline]] static i32 zws(int ply, i32 beta, i32 depth) {
        return searchZws(ply, beta, depth);
    }
    [[gnu::always_inline]] static i32 zwsRaced(int ply, i32 beta, i32 depth) {
        return searchZws(ply, beta, depth);
    }
    [[gnu::always_inline]] static i32 zwsBehind(bool, int ply, i32 beta, i32 depth) {
        return searchZws(ply, beta, depth);
    }
    [[gnu::always_inline]] static i32 open(int ply, i32 alpha, i32 beta, i32 depth) {
        return depth < 1 ? quiescePv(ply, alpha, beta, 0) : alphaBeta(ply, alpha, beta, depth);
    }
};

// Few nodes of these depths and more are entered in a second; their speed does not matter.
constexpr i32 openRaceDepth = 29;
constexpr i32 zwsRaceDepth = 33;

i32 alphaBetaSplit(int ply, i32 alpha, i32 beta, i32 depth);
i32 alphaBetaZwsSplit(int ply, i32 beta, i32 depth);

// A race at `ply` is worth its while for the first 2 to the power of `ply` seconds of a search; later only
// nodes further down are raced.
bool isTooLateToRace(int ply) {
    return elapsedSeconds > std::ldexp(1.0, ply);
}

// The split-aware way: a deep child is raced over the search processes. Once the search has lasted longer
// than suits its ply it is entered instead, and its own children are raced.
struct SplitDescent {
    static i32 zws(int ply, i32 beta, i32 depth) {
        if (depth >= zwsRaceDepth && isTooLateToRace(ply)) return alphaBetaZwsSplit(ply, beta, depth);
        return zwsRaced(ply, beta, depth);
    }
    // Raced at any time.
    static i32 zwsRaced(int ply, i32 beta, i32 depth) {
        if (depth < zwsRaceDepth) return searchZws(ply, beta, depth);
        return splitSearchPort(ply, beta - 1, beta, depth, true);
    }
    // A node that knows a cut move always races its children.
    static i32 zwsBehind(bool hasCutMove, int ply, i32 beta, i32 depth) {
        return hasCutMove ? zwsRaced(ply, beta, depth) : zws(ply, beta, depth);
    }
    static i32 open(int ply, i32 alpha, i32 beta, i32 depth) {
        if (depth < openRaceDepth) return PlainDescent::open(ply, alpha, beta, depth);
        if (isTooLateToRace(ply)) return alphaBetaSplit(ply, alpha, beta, depth);
        return splitSearchPort(ply, alpha, beta, depth, false);
    }
};

constexpr i32 nullMoveDepth(i32 depth) {
    if (depth <= 12) return 0;
    return depth < 24 ? depth - 12 : depth - 16;
}

// What a reduced move of a zero-window node loses: a ply, and one more for each hexadecimal digit of a
// negative history value.
[[gnu::always_inline]] inline i32 reductionOf(i32 tag) {
    i32 reduction = 4;
    for (i32 deficit = tagHistoryOffset - (tag & tagHistoryMask); deficit > 0; deficit >>= 4) reduction += 4;
    return reduction;
}

// A far advanced enemy pawn that has just moved and that no pawn blocks: passing could lose to it in an
// ending.
template <Color Us>
bool advancedPawnThreatens(int square) {
    using S = Side<Us>;
    return Side<S::Them>::relativeRank(square) >= 5 && searchPosition.board[square] == Side<S::Them>::pawn &&
           searchPosition.board[square - S::up] != S::pawn;
}

bool pawnGuardForbidsNullMove() {
    const Position& p = searchPosition;
    if (isMiddlegame(p)) return false;
    const int square = moveTo(p.state[-1].move);
    return p.sideToMove == White ? advancedPawnThreatens<White>(square)
                                 : advancedPawnThreatens<Black>(square);
}

// What a zero-window node takes from a table entry: a score that ends the node, or a move to begin with.
struct ZwsHashUse {
    Move hashMove = nullMove;
    bool hasCutMove = false;

    // True if the entry ends the node with `score`.
    bool take(const HashEntry& entry, int ply, i32 beta, i32 depth, i32& score) {
        searchFrames[ply + 1].ownMobility = entry.mobility;
        if (!entry.holdsAt(searchPosition.state->fiftyMoves)) return false;
        score = scoreFromTable(entry.lowerScore, ply);
        if (entry.lowerDepth >= depth && score >= beta) return true;
        hasCutMove = entry.lowerMove != nullMove;
        hashMove = hasCutMove ? entry.lowerMove : entry.upperMove;
        score = scoreFromTable(entry.upperScore, ply);
        return entry.upperDepth >= depth && score < beta;
    }
};

void scanMobility(int ply) {
    MoveList& list = searchFrames[ply].list;
    generateCaptures(list, 0);
    searchFrames[ply + 1].ownMobility = list.mobility;
}

// A zero-window search (beta - 1, beta) of the node at `ply` without `excluded`, which is unmade. It has a
// key of its own for each excluded move, so that the node's entry is left in peace.
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
    if (probeHash(key, entry)) {
        const i32 lower = scoreFromTable(entry.lowerScore, ply);
        if (entry.lowerDepth >= depth && lower >= beta) return lower;
        const i32 upper = scoreFromTable(entry.upperScore, ply);
        if (entry.upperDepth >= depth && upper < beta) return upper;
    }

    const i32 mobility = searchFrames[ply + 1].ownMobility;
    i32 best = ply - mateScore;
    for (i32 i = 0; i < list.count; ++i) {
        const Move move = list.moves[i];
        if (move == excluded || !tryMove(move)) continue;
        const i32 score = -Descent::zws(ply + 1, 1 - beta, depth);
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

// All moves of the node, the most promising first. Returns the history table that their tags were made with.
[[gnu::always_inline]] inline HistoryTable& generateInOrder(SearchFrame& frame, i32 margin, Move hashMove) {
    generateAllMoves(frame.list);
    HistoryTable& table = historyTableFor(margin);
    tagMoves(frame, table, margin, hashMove);
    sortByTag(frame.list);
    return table;
}

struct ChildDepths {
    i32 full;
    i32 tried;  // at first
};

// The depths for the move that has just been made: less by a reduction, or more for a check, never both.
[[gnu::always_inline]] inline ChildDepths childDepths(i32 newDepth, i32 reduction) {
    if (reduction > 0) return {newDepth, std::max(newDepth - reduction, 0)};
    const i32 depth = inCheck() ? newDepth + checkExtension : newDepth;
    return {depth, depth};
}

// Steps 1 and 2 of both node functions: the ends that need no look at the position's moves. True with the
// node's score.
[[gnu::always_inline]] inline bool endsAtEntry(int ply, i32 beta, i32 depth, i32& score) {
    if (searchStopped()) {
        score = stopValue;
        return true;
    }
    ++nodeCount;
    if (ply >= horizonPly) {
        score = evaluateForSideToMove();
        return true;
    }
    // Mate distance: nothing here is worth more than being mated right now costs.
    if (beta <= ply - mateScore) {
        score = ply - mateScore;
        return true;
    }
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

    // Step 3. The table, and internal deepening where it knows nothing.
    SearchFrame& frame = searchFrames[ply];
    ZwsHashUse hash;
    HashEntry entry;
    if (probeHash(*searchPosition.state, entry)) {
        if (hash.take(entry, ply, beta, depth, score)) return score;
    } else {
        bool found = false;
        if (depth >= internalDeepeningDepth) {
            if (depth >= twofoldDeepeningDepth) Descent::zwsRaced(ply, beta, depth - 16);
            Descent::zwsRaced(ply, beta, depth - 8);
            found = probeHash(*searchPosition.state, entry);
            if (found && hash.take(entry, ply, beta, depth, score)) return score;
        }
        if (!found) scanMobility(ply);
    }

    prefetchNullMove();
    if (hash.hashMove) prefetchChild(hash.hashMove);

    // Step 4. Static evaluation.
    frame.inCheck = inCheck();
    const i32 margin = beta - evaluateNode(ply);

    // Step 5. Null move, verified at great depth. Nothing is stored.
    if (margin <= 0 && !frame.inCheck && searchPosition.state[-1].move != nullMove &&
        !pawnGuardForbidsNullMove()) {
        makeNullMove();
        score = -Descent::zwsRaced(ply + 1, 1 - beta, nullMoveDepth(depth));
        unmakeNullMove();
        if (score >= beta && depth >= verificationDepth) {
            score = std::min(score, Descent::zwsRaced(ply, beta, depth - 28));
        }
        if (score >= beta) return score;
    }

    // Step 6. All moves in the order of their tags; without a known cut move the order of a deep node is
    // drawn by lot.
    MoveList& list = frame.list;
    HistoryTable& table = generateInOrder(frame, margin, hash.hashMove);
    if (depth > shuffleAboveDepth && !hash.hasCutMove) shuffleMoves(list, 0, list.count - 1);

    const i32 newDepth = frame.inCheck ? depth - 4 + checkExtension : depth - 4;
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

        // Step 9. Search the child, in full if the reduced search reaches beta.
        score = -Descent::zwsBehind(hash.hasCutMove, ply + 1, 1 - beta, tried);
        if (score >= beta && tried != full) {
            score = -Descent::zwsBehind(hash.hasCutMove, ply + 1, 1 - beta, full);
        }
        unmakeMove();

        // Step 10. A cut.
        if (score >= beta) {
            if (wasQuiet()) {
                updateKillers(frame, piece, move);
                rewardHistory(table, piece, moveTo(move), depth);
            }
            storeNodeLowerBound(ply, score, depth, move);
            return score;
        }

        // Step 11. A failure.
        penaliseHistory(table, piece, moveTo(move));
        best = std::max(best, score);
        bigMove.endMove(move);
    }

    // Step 12. No move reached beta.
    if (legal == 0) return storeMateOrStalemate(ply, depth);
    storeNodeUpperBound(ply, best, depth, bigMove.hint());
    return best;
}

template <class Descent>
[[gnu::always_inline]] inline i32 openNode(int ply, i32 alpha, i32 beta, i32 depth) {
    i32 score;
    if (endsAtEntry(ply, beta, depth, score)) return score;

    // Step 3. The table gives a move and the mobility here, never a score.
    SearchFrame& frame = searchFrames[ply];
    HashEntry entry;
    bool found = probeHash(*searchPosition.state, entry);
    if (!found && depth >= internalDeepeningDepth) {
        if (depth >= twofoldDeepeningDepth) Descent::open(ply, alpha, beta, depth - 16);
        Descent::open(ply, alpha, beta, depth - 8);
        found = probeHash(*searchPosition.state, entry);
    }
    Move hashMove = nullMove;
    if (found) {
        searchFrames[ply + 1].ownMobility = entry.mobility;
        hashMove = entry.lowerMove;
    } else {
        scanMobility(ply);
    }

    // Step 4. Static evaluation.
    frame.inCheck = inCheck();
    const i32 margin = beta - evaluateNode(ply);

    // Step 5 of a zero-window node is missing: an open window is never passed.

    // Step 6. All moves in the order of their tags; behind the first the order of a deep node is drawn by
    // lot.
    MoveList& list = frame.list;
    HistoryTable& table = generateInOrder(frame, margin, hashMove);
    if (depth > shuffleAboveDepth) shuffleMoves(list, 1, list.count - 1);

    const i32 newDepth = frame.inCheck ? depth - 4 + checkExtension : depth - 4;
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

        // Step 9. A zero window first, behind the first move.
        if (!openWindow) {
            score = -Descent::zws(ply + 1, -alpha, tried);
            if (score > alpha) {
                openWindow = true;
                tried = full;
            }
        }

        // Step 10. The open window, again at a greater depth if the move had been reduced or proves singular.
        bool singularDone = false;
        while (openWindow) {
            score = -Descent::open(ply + 1, -beta, -alpha, tried);
            if (score <= alpha) break;
            if (tried >= singularDepth && !singularDone) {
                singularDone = true;
                unmakeMove();
                const i32 bound = score - singularMargin;
                if (singularTest<Descent>(ply, tried - 16, bound, list, move) < bound)
                    full += singularExtension;
                makeMove(move);
            }
            if (tried >= full) break;
            tried = full;
        }
        unmakeMove();
        openWindow = false;

        // Step 11. A failure, a cut, or a new best line.
        if (score <= alpha) {
            penaliseHistory(table, piece, moveTo(move));
            if (score > best) {
                best = score;
                bestMove = move;
            }
        } else {
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
        }
        bigMove.endMove(move);
    }

    // Step 12. Between equal bounds the score is exact.
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
    if (!allowSplit || distance < openRaceDepth) return alphaBeta(ncount, alpha, beta, distance);
    return SplitDescent::open(ncount, alpha, beta, distance);
}

i32 alphaBetaZwsEntry(i32 ncount, i32 beta, i32 distance, bool allowSplit) {
    if (distance <= frontierDepth) return frontierZws(ncount, beta);
    return allowSplit ? SplitDescent::zws(ncount, beta, distance) : alphaBetaZws(ncount, beta, distance);
}

}  // namespace valku
