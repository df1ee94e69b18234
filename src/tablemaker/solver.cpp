#include "tablemaker/solver.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <set>

#include "tablemaker/geometry.h"
#include "tablemaker/parallel.h"

namespace valku {

namespace {

constexpr int anyDistance = 127;
constexpr TbType promotions[] = {tbKnight, tbBishop, tbRook, tbQueen};

// An ending that a change of the material leads to, and where its men stand among those before the change.
struct Conversion {
    const Ending* ending = nullptr;
    int swap = 0;  // 1 if its first-named side is the second-named one before the change
    int origin[maxEndingMen]{};

    EndingState stateOf(int sideToMove, const Placement& before) const {
        const u8 flip = swap ? 56 : 0;  // pawns of its first-named side go up
        Placement p{};
        for (const int side : {0, 1}) p.kings[side] = before.kings[side ^ swap] ^ flip;
        for (int man = 0; man < ending->material.count; ++man) p.men[man] = before.men[origin[man]] ^ flip;
        return ending->stateOf(sideToMove ^ swap, p);
    }
};

// What the side to move can reach, gathered move by move.
struct Verdict {
    int fastestWin = anyDistance;
    int slowestLoss = -1;
    bool escape = false;  // some move is not known to lose

    // A win of the other side counts once it can no longer turn out to be faster: up to `horizon` moves.
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

class Solver {
  public:
    Solver(Ending& solvedEnding, const SolvedEndings& solved, int threadCount)
        : ending(solvedEnding), material(ending.material), threads(threadCount) {
        for (const Change& change : changesOf(material)) {
            conversions[change.captured + 1][change.promoted + 1][change.promotion] =
                makeConversion(change, solved);
        }
        enPassant = recordOf(ending.tbClass).hasPawns(0) && recordOf(ending.tbClass).hasPawns(1);
    }

    bool run(const std::function<void(double)>& report) {
        forEachPair([&](int side, u32 pair) { ending.markIllegal(side, pair); });
        report(0.1);
        forEachPair([&](int side, u32 pair) { findFirstStates(side, pair); });
        judgeSpecials(0);
        // How many rounds there will be is not known; most of the work is in the first ones.
        double done = 0.3;
        for (int moves = 0; moves <= deepest && deepest <= maxDistance; ++moves) {
            report(done);
            done += (1 - done) * 0.1;
            // Whoever can move to a lost position wins. Where all moves lead to won ones there is a new loss.
            const EndingState won = winIn(moves + 1);
            forEachPair([&](int side, u32 pair) { spread(side, pair, lossIn(moves), won); });
            forEachPair([&](int side, u32 pair) { spread(side, pair, won, stateDoubtful); });
            forEachPair([&](int side, u32 pair) { settleDoubts(side, pair, moves + 1); });
            judgeSpecials(moves + 1);
        }
        return deepest <= maxDistance;
    }

  private:
    // One side to move after the other: work on the positions of one writes to those of one side only.
    template <class Use>
    void forEachPair(Use use) {
        for (const int side : {0, 1})
            inParallel(threads, ending.pairCount(), [&](u32 pair) { use(side, pair); });
    }

    // Calls use(index) for the positions of a pair of kings that have the state.
    template <class Use>
    void forEachIn(EndingState state, int side, u32 pair, Use use) {
        const EndingState* const begin = ending.states[side].data();
        const EndingState* at = begin + std::size_t{pair} * ending.pairSize();
        const EndingState* const end = at + ending.pairSize();
        const auto find = [&] { return std::memchr(at, state, static_cast<std::size_t>(end - at)); };
        while (at != end && (at = static_cast<const EndingState*>(find())))
            use(static_cast<u32>(at++ - begin));
    }

    Conversion makeConversion(Change change, const SolvedEndings& solved) const {
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

    // Is the man a pawn of the side that stands beside the square?
    bool isPawnBeside(const Placement& p, int man, int side, int square) const {
        return material.type[man] == tbPawn && material.side[man] == side && p.men[man] >> 3 == square >> 3 &&
               std::abs(p.men[man] - square) == 1;
    }

    // Can a pawn that has just come to the square by a double step be captured en passant? Legally or not.
    bool isSpecialStep(const Placement& p, int side, int square) const {
        bool special = false;
        for (int man = 0; enPassant && man < material.count; ++man)
            special |= isPawnBeside(p, man, side ^ 1, square);
        return special;
    }

    bool hasSpecialStep(const Placement& p, int side) const {
        if (!enPassant) return false;
        const u64 occupied = occupiedSquares(material, p);
        bool special = false;
        for (int man = 0; man < material.count; ++man) {
            const int from = p.men[man], step = pawnStep(side);
            if (material.type[man] != tbPawn || material.side[man] != side || rankSeenBy(side, from) != 1)
                continue;
            if (occupied & (bitOf(from + step) | bitOf(from + 2 * step))) continue;
            special |= isSpecialStep(p, side, from + 2 * step);
        }
        return special;
    }

    // What the moves say. For positions with hasSpecialStep, states of both sides to move are read.
    EndingState judge(const Placement& p, int side, int horizon) const {
        return judgeMoves(p, side, horizon).state(isInCheck(p, side));
    }

    bool isInCheck(const Placement& p, int side) const {
        return attacks(material, p, side ^ 1, p.kings[side], occupiedSquares(material, p));
    }

    Verdict judgeMoves(const Placement& p, int side, int horizon) const {
        Verdict verdict;
        const int other = side ^ 1;
        const u64 occupied = occupiedSquares(material, p);
        u64 enemies = 0;
        for (int man = 0; man < material.count; ++man) {
            if (material.side[man] == other) enemies |= bitOf(p.men[man]);
        }
        const u64 targets = ~occupied | enemies;

        // The man on an enemy's square, -1 for an empty one.
        const auto capturedOn = [&](int square) {
            int man = enemies & bitOf(square) ? material.count - 1 : -1;
            while (man >= 0 && (p.men[man] != square || material.side[man] == side)) --man;
            return man;
        };
        const auto convert = [&](const Placement& after, int captured, int promoted, TbType type) {
            verdict.add(conversions[captured + 1][promoted + 1][type].stateOf(other, after), anyDistance);
        };

        Placement after = p;
        forEachSquare(kingReach(p.kings[side]) & targets & ~kingReach(p.kings[other]), [&](int to) {
            after.kings[side] = static_cast<u8>(to);
            if (const int captured = capturedOn(to); captured >= 0)
                return convert(after, captured, -1, tbPawn);
            verdict.add(ending.states[other][ending.indexOf(after)], horizon);
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
                if (material.type[man] == tbPawn && rankSeenBy(side, to) == 7) {
                    for (const TbType type : promotions) convert(after, captured, man, type);
                } else if (captured >= 0) {
                    convert(after, captured, -1, tbPawn);
                } else {
                    verdict.add(quietState(to), horizon);
                }
            };
            if (material.type[man] != tbPawn) {
                forEachSquare(pieceReach(material.type[man], from, occupied) & targets, move);
            } else {
                forEachSquare(pawnReach(side, from) & enemies, move);
                const int to = from + pawnStep(side), farther = to + pawnStep(side);
                if (!(occupied & bitOf(to))) move(to);
                if (rankSeenBy(side, from) == 1 && !(occupied & (bitOf(to) | bitOf(farther)))) {
                    after.men[man] = static_cast<u8>(farther);
                    verdict.add(stateAfterDoubleStep(after, man, side, quietState(farther), horizon),
                                horizon);
                }
            }
            after.men[man] = p.men[man];
        }
        return verdict;
    }

    // `plain` is the state without a capture en passant.
    EndingState stateAfterDoubleStep(const Placement& p, int pawn, int side, EndingState plain,
                                     int horizon) const {
        const int square = p.men[pawn], other = side ^ 1;
        if (plain == stateIllegal || !isSpecialStep(p, side, square)) return plain;
        Verdict reply = judgeMoves(p, other, horizon);
        for (int man = 0; man < material.count; ++man) {
            if (!isPawnBeside(p, man, other, square)) continue;
            Placement after = p;
            after.men[man] = static_cast<u8>(square - pawnStep(side));
            reply.add(conversions[pawn + 1][0][tbPawn].stateOf(side, after), anyDistance);
        }
        return reply.state(isInCheck(p, other));
    }

    // Calls use(index) for the positions from which a move of `mover`, no capture and no promotion, leads to
    // this one. A double step that a pawn could capture en passant is left out. Indices of illegal positions
    // come too.
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
                origins = pieceReach(material.type[man], to, occupied) & ~occupied;
            } else if (const int from = to - pawnStep(mover); rankSeenBy(mover, from) > 0) {
                origins = bitOf(from) & ~occupied;
                if (origins && rankSeenBy(mover, to) == 3 && !isSpecialStep(p, mover, to))
                    origins |= bitOf(from - pawnStep(mover)) & ~occupied;
            }
            forEachSquare(origins, [&](int from) { use(others | static_cast<u32>(from) << shift); });
        }
        Placement before = p;
        const u64 origins = kingReach(p.kings[mover]) & ~occupied & ~kingReach(p.kings[mover ^ 1]);
        forEachSquare(origins, [&](int from) {
            before.kings[mover] = static_cast<u8>(from);
            const u32 found = ending.indexOf(before);
            use(found);
            // A position with both kings on a long diagonal has its mirror image beside it, which only
            // another image of this position leads to.
            const u32 pair = found >> (6 * material.count);
            if (const SquareMap* mirror = ending.kings.mirror[pair])
                use(ending.indexOf(pair, *mirror, ending.placementOf(found).men));
        });
    }

    void noteDistance(int distance) {
        int known = deepest;
        while (distance > known && !deepest.compare_exchange_weak(known, distance)) {
        }
    }

    void store(int side, u32 index, EndingState state) {
        ending.states[side][index] = state;
        if (state != stateUnknown) noteDistance(distanceOf(state));
    }

    // The states that follow from captures, promotions and the lack of moves alone.
    void findFirstStates(int side, u32 pair) {
        forEachIn(stateUnknown, side, pair, [&](u32 index) {
            const Placement p = ending.placementOf(index);
            if (!hasSpecialStep(p, side)) return store(side, index, judge(p, side, 0));
            const std::lock_guard lock(specialsMutex);
            specials[side].push_back(index);
        });
    }

    // Marks the positions from which a move leads to one with the state, if no faster win is known of them.
    void spread(int side, u32 pair, EndingState state, EndingState mark) {
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

    void settleDoubts(int side, u32 pair, int horizon) {
        forEachIn(stateDoubtful, side, pair, [&](u32 index) {
            const Placement p = ending.placementOf(index);
            store(side, index, hasSpecialStep(p, side) ? stateUnknown : judge(p, side, horizon));
        });
    }

    // Positions with a double step that may be answered en passant do not follow from single successors, so
    // all that are open are looked at in every round.
    void judgeSpecials(int horizon) {
        for (const int side : {0, 1}) {
            const std::vector<u32>& indices = specials[side];
            std::vector<EndingState> found(indices.size());
            constexpr u32 portion = 1024;
            const auto count = static_cast<u32>(indices.size());
            inParallel(threads, (count + portion - 1) / portion, [&](u32 part) {
                for (u32 i = part * portion; i < std::min(count, (part + 1) * portion); ++i) {
                    EndingState& state = found[i];
                    state = ending.states[side][indices[i]];
                    if (state != stateUnknown && !(isWin(state) && state > horizon)) continue;
                    const EndingState judged = judge(ending.placementOf(indices[i]), side, horizon);
                    if (state == stateUnknown || (isWin(judged) && judged < state)) state = judged;
                }
            });
            for (u32 i = 0; i < count; ++i) store(side, indices[i], found[i]);
        }
    }

    Ending& ending;
    const EndingMaterial& material;
    int threads;
    bool enPassant;  // there are pawns on both sides
    Conversion conversions[maxEndingMen + 1][maxEndingMen + 1]
                          [tbTypes];  // by Change, its men counted from -1
    std::vector<u32> specials[2];     // positions with hasSpecialStep
    std::mutex specialsMutex;
    std::atomic<int> deepest{0};  // of all distances found
};

}  // namespace

std::vector<int> classesAfter(int tbClass) {
    std::set<int> classes;
    const EndingMaterial material = materialOfClass(tbClass);
    for (const Change& change : changesOf(material)) classes.insert(classAfter(material, change).first);
    return {classes.begin(), classes.end()};
}

bool solveEnding(Ending& ending, const SolvedEndings& solved, int threads,
                 const std::function<void(double)>& report) {
    return Solver(ending, solved, threads).run(report);
}

}  // namespace valku
