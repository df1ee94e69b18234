#include "tablemaker/retrograde_analysis.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <set>

#include "platform/fault.h"
#include "tablemaker/attack_sets.h"
#include "tablemaker/parallel_for.h"

namespace valku {

namespace {

constexpr int anyDistance = 127;  // above all
constexpr TbType promotions[] = {tbKnight, tbBishop, tbRook, tbQueen};

// The ending that a capture or promotion leads to, and which of its men is which of those before.
struct Conversion {
    const Ending* ending = nullptr;
    int swap = 0;  // 1 if its first-named side was the second-named one before
    int origin[maxEndingMen]{};

    EndingState stateOf(int sideToMove, const Placement& before) const {
        const u8 flip = swap ? mirrorRanks : 0;  // pawns of its first-named side go up
        Placement p{};
        for (const int side : {0, 1}) p.kings[side] = before.kings[side ^ swap] ^ flip;
        for (int man = 0; man < ending->material.count; ++man) p.men[man] = before.men[origin[man]] ^ flip;
        return ending->stateOf(sideToMove ^ swap, p);
    }
};

// The best that the moves of a position lead to, gathered move by move. Distances are in moves.
struct MoveOutcomes {
    int fastestWin = anyDistance;
    int slowestLoss = -1;
    bool escape = false;  // some move is not known to lose

    // `successor` is for the other side to move. Its wins count up to `horizon` moves: those can no longer
    // turn out to be faster.
    void add(EndingState successor, int horizon) {
        if (successor == stateIllegal) return;
        if (isLoss(successor)) {
            fastestWin = std::min(fastestWin, distanceOf(successor) + 1);
        } else if (isWin(successor) && distanceOf(successor) <= horizon) {
            slowestLoss = std::max(slowestLoss, distanceOf(successor));
        } else {
            escape = true;
        }
    }

    EndingState state(bool inCheck) const {
        if (fastestWin < anyDistance) return winIn(fastestWin);
        if (escape) return stateUnknown;
        if (slowestLoss >= 0) return lossIn(slowestLoss);
        return inCheck ? lossIn(0) : stateUnknown;
    }
};

class RetrogradeSolver {
  public:
    RetrogradeSolver(Ending& solvedEnding, const SolvedEndings& solved, int threadCount)
        : ending(solvedEnding), material(ending.material), threads(threadCount) {
        for (const MaterialChange& change : changesOf(material)) {
            conversions[change.captured + 1][change.promoted + 1][change.promotion] =
                makeConversion(change, solved);
        }
        enPassant = classTable[ending.tbClass].hasPawnsOnBothSides();
    }

    void run(const std::function<void(double)>& report) {
        forEachPair([&](int side, u32 pair) { ending.markIllegal(side, pair); });
        report(0.1);
        forEachPair([&](int side, u32 pair) { findInitialStates(side, pair); });
        settleEnPassantPositions(0);
        // The number of rounds is not known; most of the work is in the first ones.
        double done = 0.3;
        for (int moves = 0; moves <= longest && longest <= maxDistance; ++moves) {
            report(done);
            done += (1 - done) * 0.1;
            // Every predecessor of a loss is a win. A predecessor of a win is a loss if all its moves lose.
            const EndingState won = winIn(moves + 1);
            forEachPair([&](int side, u32 pair) { propagate(side, pair, lossIn(moves), won); });
            forEachPair([&](int side, u32 pair) { propagate(side, pair, won, stateCandidate); });
            forEachPair([&](int side, u32 pair) { settleCandidates(side, pair, moves + 1); });
            settleEnPassantPositions(moves + 1);
        }
        if (longest > maxDistance) {
            throw Fault(classTable[ending.tbClass].name +
                        ": a mate lies too far away for the bytes of a table");
        }
    }

  private:
    // One side to move after the other, so that all threads write to the states of one side only.
    template <class Use>
    void forEachPair(Use use) {
        for (const int side : {0, 1})
            parallelFor(threads, ending.pairCount(), [&](u32 pair) { use(side, pair); });
    }

    // Calls use(index) for the positions of a king pair that have the state.
    template <class Use>
    void forEachIn(EndingState state, int side, u32 pair, Use use) {
        const EndingState* const begin = ending.states[side].data();
        const EndingState* at = begin + std::size_t{pair} * ending.pairSize();
        const EndingState* const end = at + ending.pairSize();
        const auto find = [&] { return std::memchr(at, state, static_cast<std::size_t>(end - at)); };
        while (at != end && (at = static_cast<const EndingState*>(find())))
            use(static_cast<u32>(at++ - begin));
    }

    Conversion makeConversion(MaterialChange change, const SolvedEndings& solved) const {
        const auto [tbClass, swapped] = classAfter(material, change);
        Conversion conversion{solved.at(tbClass).get(), swapped ? 1 : 0, {}};
        const EndingMaterial& after = conversion.ending->material;
        bool used[maxEndingMen]{};
        for (int place = 0; place < after.count; ++place) {
            const auto fits = [&](int man) {
                const TbType type = man == change.promoted ? change.promotion : material.type[man];
                return !used[man] && man != change.captured && type == after.type[place] &&
                       (material.side[man] ^ conversion.swap) == after.side[place];
            };
            int man = 0;
            while (!fits(man)) ++man;
            used[man] = true;
            conversion.origin[place] = man;
        }
        return conversion;
    }

    // Is the man a pawn of `side` beside the square?
    bool isPawnBeside(const Placement& p, int man, int side, int square) const {
        return material.type[man] == tbPawn && material.side[man] == side && p.men[man] >> 3 == square >> 3 &&
               std::abs(p.men[man] - square) == 1;
    }

    // Does a pawn of the other side attack, legally or not, a pawn of `side` en passant that has just come to
    // the square by a double step?
    bool allowsEnPassant(const Placement& p, int side, int square) const {
        bool found = false;
        for (int man = 0; enPassant && man < material.count; ++man)
            found |= isPawnBeside(p, man, side ^ 1, square);
        return found;
    }

    // Has the side a double step that allowsEnPassant?
    bool hasEnPassantStep(const Placement& p, int side) const {
        if (!enPassant) return false;
        const u64 occupied = occupiedSquares(material, p);
        bool found = false;
        for (int man = 0; man < material.count; ++man) {
            const int from = p.men[man], step = pawnStep(side);
            if (material.type[man] != tbPawn || material.side[man] != side || relativeRank64(side, from) != 1)
                continue;
            if (occupied & (bitOf(from + step) | bitOf(from + 2 * step))) continue;
            found |= allowsEnPassant(p, side, from + 2 * step);
        }
        return found;
    }

    // The state by the moves, of which wins and losses up to `horizon` moves are known. For positions with
    // hasEnPassantStep, states of both sides to move are read.
    EndingState stateByMoves(const Placement& p, int side, int horizon) const {
        return outcomesOfMoves(p, side, horizon).state(isInCheck(p, side));
    }

    bool isInCheck(const Placement& p, int side) const {
        return attacks(material, p, side ^ 1, p.kings[side], occupiedSquares(material, p));
    }

    MoveOutcomes outcomesOfMoves(const Placement& p, int side, int horizon) const {
        MoveOutcomes outcomes;
        const int other = side ^ 1;
        const u64 occupied = occupiedSquares(material, p);
        u64 enemies = 0;
        for (int man = 0; man < material.count; ++man) {
            if (material.side[man] == other) enemies |= bitOf(p.men[man]);
        }
        const u64 targets = ~occupied | enemies;

        // The enemy man on the square, -1 if it is empty.
        const auto capturedOn = [&](int square) {
            int man = enemies & bitOf(square) ? material.count - 1 : -1;
            while (man >= 0 && (p.men[man] != square || material.side[man] == side)) --man;
            return man;
        };
        const auto convert = [&](const Placement& after, int captured, int promoted, TbType type) {
            outcomes.add(conversions[captured + 1][promoted + 1][type].stateOf(other, after), anyDistance);
        };

        Placement after = p;
        forEachSquare(kingAttacks(p.kings[side]) & targets & ~kingAttacks(p.kings[other]), [&](int to) {
            after.kings[side] = static_cast<u8>(to);
            if (const int captured = capturedOn(to); captured >= 0)
                return convert(after, captured, -1, tbPawn);
            outcomes.add(ending.states[other][ending.indexOf(after)], horizon);
        });
        after = p;
        const u32 index = ending.indexOf(p);
        const SquareMap& onto = *ending.kings.onto[p.kings[0]][p.kings[1]];
        for (int man = 0; man < material.count; ++man) {
            if (material.side[man] != side) continue;
            const int from = p.men[man], shift = ending.shiftOf(man);
            const auto quietState = [&](int to) {
                const u32 square = onto[static_cast<std::size_t>(to)];
                return ending.states[other][(index & ~(63u << shift)) | square << shift];
            };
            const auto move = [&](int to) {
                const int captured = capturedOn(to);
                after.men[man] = static_cast<u8>(to);
                if (material.type[man] == tbPawn && relativeRank64(side, to) == 7) {
                    for (const TbType type : promotions) convert(after, captured, man, type);
                } else if (captured >= 0) {
                    convert(after, captured, -1, tbPawn);
                } else {
                    outcomes.add(quietState(to), horizon);
                }
            };
            if (material.type[man] != tbPawn) {
                forEachSquare(pieceAttacks(material.type[man], from, occupied) & targets, move);
            } else {
                forEachSquare(pawnAttacks(side, from) & enemies, move);
                const int to = from + pawnStep(side), farther = to + pawnStep(side);
                if (!(occupied & bitOf(to))) move(to);
                if (relativeRank64(side, from) == 1 && !(occupied & (bitOf(to) | bitOf(farther)))) {
                    after.men[man] = static_cast<u8>(farther);
                    outcomes.add(stateAfterDoubleStep(after, man, side, quietState(farther), horizon),
                                 horizon);
                }
            }
            after.men[man] = p.men[man];
        }
        return outcomes;
    }

    // The state after a double step of the pawn; `plain` is the one without captures en passant.
    EndingState stateAfterDoubleStep(const Placement& p, int pawn, int side, EndingState plain,
                                     int horizon) const {
        const int square = p.men[pawn], other = side ^ 1;
        if (plain == stateIllegal || !allowsEnPassant(p, side, square)) return plain;
        MoveOutcomes reply = outcomesOfMoves(p, other, horizon);
        for (int man = 0; man < material.count; ++man) {
            if (!isPawnBeside(p, man, other, square)) continue;
            Placement after = p;
            after.men[man] = static_cast<u8>(square - pawnStep(side));
            reply.add(conversions[pawn + 1][0][tbPawn].stateOf(side, after), anyDistance);
        }
        return reply.state(isInCheck(p, other));
    }

    // Calls use(index) for the predecessors of the position by moves of `mover` that capture and promote
    // nothing, except by double steps that allow en passant. Some of them are illegal positions.
    template <class Use>
    void forEachPredecessor(u32 index, int mover, Use use) const {
        const Placement p = ending.placementOf(index);
        const u64 occupied = occupiedSquares(material, p);
        for (int man = 0; man < material.count; ++man) {
            if (material.side[man] != mover) continue;
            const int to = p.men[man], shift = ending.shiftOf(man);
            const u32 others = index & ~(63u << shift);
            u64 origins = 0;
            if (material.type[man] != tbPawn) {
                origins = pieceAttacks(material.type[man], to, occupied) & ~occupied;
            } else if (const int from = to - pawnStep(mover); relativeRank64(mover, from) > 0) {
                origins = bitOf(from) & ~occupied;
                if (origins && relativeRank64(mover, to) == 3 && !allowsEnPassant(p, mover, to))
                    origins |= bitOf(from - pawnStep(mover)) & ~occupied;
            }
            forEachSquare(origins, [&](int from) { use(others | static_cast<u32>(from) << shift); });
        }
        Placement before = p;
        const u64 origins = kingAttacks(p.kings[mover]) & ~occupied & ~kingAttacks(p.kings[mover ^ 1]);
        forEachSquare(origins, [&](int from) {
            before.kings[mover] = static_cast<u8>(from);
            const u32 found = ending.indexOf(before);
            use(found);
            // With both kings on a long diagonal the reflection in it has an index of its own, of which
            // another image of this position is the successor.
            const u32 pair = found >> (6 * material.count);
            if (const SquareMap* mirror = ending.kings.mirror[pair])
                use(ending.indexOf(pair, *mirror, ending.placementOf(found).men));
        });
    }

    void noteDistance(int distance) {
        int known = longest;
        while (distance > known && !longest.compare_exchange_weak(known, distance)) {
        }
    }

    void store(int side, u32 index, EndingState state) {
        ending.states[side][index] = state;
        if (state != stateUnknown) noteDistance(distanceOf(state));
    }

    // States by captures, promotions and the lack of moves alone.
    void findInitialStates(int side, u32 pair) {
        forEachIn(stateUnknown, side, pair, [&](u32 index) {
            const Placement p = ending.placementOf(index);
            if (!hasEnPassantStep(p, side)) return store(side, index, stateByMoves(p, side, 0));
            const std::lock_guard lock(enPassantMutex);
            enPassantPositions[side].push_back(index);
        });
    }

    // Marks the predecessors of the positions with the state, if no faster win is known of them.
    void propagate(int side, u32 pair, EndingState state, EndingState mark) {
        forEachIn(state, side, pair, [&](u32 index) {
            forEachPredecessor(index, side ^ 1, [&](u32 from) {
                const std::atomic_ref before(ending.states[side ^ 1][from]);
                const EndingState known = before.load(std::memory_order_relaxed);
                if (known != stateUnknown && !(isWin(known) && known > mark)) return;
                before.store(mark, std::memory_order_relaxed);
                if (isWin(mark)) noteDistance(distanceOf(mark));
            });
        });
    }

    // Candidates of which all moves lose are losses; the others are open again.
    void settleCandidates(int side, u32 pair, int horizon) {
        forEachIn(stateCandidate, side, pair, [&](u32 index) {
            const Placement p = ending.placementOf(index);
            store(side, index, hasEnPassantStep(p, side) ? stateUnknown : stateByMoves(p, side, horizon));
        });
    }

    // The value of a double step that may be answered en passant is not that of a single successor, so all
    // such positions that are open are evaluated in every round.
    void settleEnPassantPositions(int horizon) {
        for (const int side : {0, 1}) {
            const std::vector<u32>& indices = enPassantPositions[side];
            std::vector<EndingState> found(indices.size());
            constexpr u32 portion = 1024;
            const auto count = static_cast<u32>(indices.size());
            parallelFor(threads, (count + portion - 1) / portion, [&](u32 part) {
                for (u32 i = part * portion; i < std::min(count, (part + 1) * portion); ++i) {
                    EndingState& state = found[i];
                    state = ending.states[side][indices[i]];
                    if (state != stateUnknown && !(isWin(state) && state > horizon)) continue;
                    const EndingState byMoves = stateByMoves(ending.placementOf(indices[i]), side, horizon);
                    if (state == stateUnknown || (isWin(byMoves) && byMoves < state)) state = byMoves;
                }
            });
            for (u32 i = 0; i < count; ++i) store(side, indices[i], found[i]);
        }
    }

    Ending& ending;
    const EndingMaterial& material;
    int threads;
    bool enPassant;  // there are pawns on both sides
    // By MaterialChange, its men counted from -1.
    Conversion conversions[maxEndingMen + 1][maxEndingMen + 1][tbTypes];
    std::vector<u32> enPassantPositions[2];  // with hasEnPassantStep
    std::mutex enPassantMutex;
    std::atomic<int> longest{0};  // of all distances found, in moves
};

}  // namespace

std::vector<int> classesAfter(int tbClass) {
    std::set<int> classes;
    const EndingMaterial material = materialOfClass(tbClass);
    for (const MaterialChange& change : changesOf(material))
        classes.insert(classAfter(material, change).first);
    return {classes.begin(), classes.end()};
}

void solveEnding(Ending& ending, const SolvedEndings& solved, int threads,
                 const std::function<void(double)>& report) {
    RetrogradeSolver(ending, solved, threads).run(report);
}

}  // namespace valku
