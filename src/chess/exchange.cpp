#include "chess/exchange.h"

#include <algorithm>

#include "chess/attacks.h"
#include "chess/piece_values.h"
#include "chess/side.h"
#include "chess/tables.h"

namespace valku {

namespace {

// The value of a king that captures: more than everything else on the board. In the bounded test it is twice
// that, so that capturing on a protected square can never pay.
constexpr i32 kingStake = 30000;
constexpr i32 kingStakeInBound = 60000;
constexpr i32 unboundedBelow = -30000;

// How far the enumeration of one side's attackers has come: cheapest class first, list order within a class.
struct AttackerCursor {
    enum Class { Pawns, Knights, Bishops, Rooks, Queens, King, Exhausted };
    int attackerClass = Pawns;
    int index = 0;
};

constexpr i32 noAttacker = -1;

[[gnu::always_inline]] inline bool reachesAlongLine(int from, int square, u8 lineFlags) {
    const int step = directionTable[square - from];
    if (step == 0) return false;
    const bool diagonal = step == 15 || step == 17 || step == -15 || step == -17;
    if (!(lineFlags & (diagonal ? diagonalFlag : straightFlag))) return false;
    for (int between = from + step; between != square; between += step) {
        if (searchPosition.board[between] != empty) return false;
    }
    return true;
}

// Searches a list from the cursor on; if true, the cursor is past the attacker that was found. An entry equal
// to `square` is the piece that has already captured there.
[[gnu::always_inline]] inline bool findSlider(const u8* list, int square, u8 lineFlags, bool onItsLines,
                                              AttackerCursor& cursor) {
    for (; onItsLines && list[cursor.index] != noSquare; ++cursor.index) {
        if (list[cursor.index] == square || !reachesAlongLine(list[cursor.index], square, lineFlags))
            continue;
        ++cursor.index;
        return true;
    }
    ++cursor.attackerClass;
    cursor.index = 0;
    return false;
}

// The value of the next attacker of `square`, the cursor being advanced past it; noAttacker if there is none.
template <Color Us>
i32 nextAttacker(int square, i32 kingValue, AttackerCursor& cursor) {
    const Position& p = searchPosition;
    // The bitboards still show the moving man on its origin; as filters they may let too much pass, never too
    // little.
    const auto onDiagonal = [&] { return (bishopRays[square] & diagonalBBOf<Us>(p)) != 0; };
    const auto onStraight = [&] { return (rookRays[square] & straightBBOf<Us>(p)) != 0; };
    switch (cursor.attackerClass) {
        case AttackerCursor::Pawns:
            if (cursor.index < pawnAttacksOf<Us>(p)[square]) {
                ++cursor.index;
                return pawnValue;
            }
            cursor = {AttackerCursor::Knights, 0};
            [[fallthrough]];
        case AttackerCursor::Knights:
            if (knightAttacks[square] & knightsBBOf<Us>(p)) {
                for (const u8* list = knightsOf<Us>(p); list[cursor.index] != noSquare; ++cursor.index) {
                    if (!(knightAttacks[square] & squareMask[list[cursor.index]])) continue;
                    ++cursor.index;
                    return knightValue;
                }
            }
            cursor = {AttackerCursor::Bishops, 0};
            [[fallthrough]];
        case AttackerCursor::Bishops:
            if (findSlider(bishopsOf<Us>(p), square, diagonalFlag, onDiagonal(), cursor)) return bishopValue;
            [[fallthrough]];
        case AttackerCursor::Rooks:
            if (findSlider(rooksOf<Us>(p), square, straightFlag, onStraight(), cursor)) return rookValue;
            [[fallthrough]];
        case AttackerCursor::Queens:
            if (findSlider(queensOf<Us>(p), square, diagonalFlag | straightFlag, onDiagonal() || onStraight(),
                           cursor)) {
                return queenValue;
            }
            [[fallthrough]];
        case AttackerCursor::King:
            cursor.attackerClass = AttackerCursor::Exhausted;
            if (kingDistance(kingOf<Us>(p), square) == 1) return kingValue;
            [[fallthrough]];
        default:
            return noAttacker;
    }
}

// The best result for `Us`, which may stop at `best` or recapture the man worth `onSquare`.
template <Color Us>
i32 recapture(i32 best, int square, i32 onSquare, AttackerCursor own, AttackerCursor other) {
    const i32 value = nextAttacker<Us>(square, kingStake, own);
    if (value == noAttacker) return best;
    return std::max(best, -recapture<~Us>(-(best + onSquare), square, value, other, own));
}

// Takes the moving man off its origin for the duration of an exchange, so that X-ray attackers behind it are
// found and it is not counted twice. The destructor restores everything exactly, list order included.
template <Color Us>
class LiftedMover {
  public:
    LiftedMover(int from, int to)
        : from_(from), to_(to), code_(searchPosition.board[from]), entry_(entryOf(code_)) {
        Position& p = searchPosition;
        p.board[from_] = empty;
        if (code_ == S::pawn) {
            changeAttacks(-1);
        } else if (entry_) {
            *entry_ = static_cast<u8>(to_);
        } else if (code_ == S::king) {
            kingOf<Us>(p) = to_;
        }
    }

    ~LiftedMover() {
        Position& p = searchPosition;
        p.board[from_] = code_;
        if (code_ == S::pawn) {
            changeAttacks(+1);
        } else if (entry_) {
            *entry_ = static_cast<u8>(from_);
        } else if (code_ == S::king) {
            kingOf<Us>(p) = from_;
        }
    }

    LiftedMover(const LiftedMover&) = delete;
    LiftedMover& operator=(const LiftedMover&) = delete;

    u8 code() const { return code_; }

  private:
    using S = Side<Us>;

    u8* entryOf(u8 code) {
        Position& p = searchPosition;
        u8* list = nullptr;
        switch (code) {
            case S::knight:
                list = knightsOf<Us>(p);
                break;
            case S::bishop:
                list = bishopsOf<Us>(p);
                break;
            case S::rook:
                list = rooksOf<Us>(p);
                break;
            case S::queen:
                list = queensOf<Us>(p);
                break;
            default:
                return nullptr;
        }
        while (*list != from_) ++list;
        return list;
    }

    void changeAttacks(int change) {
        auto& attacks = pawnAttacksOf<Us>(searchPosition);
        for (const int square : {from_ + S::up - 1, from_ + S::up + 1}) {
            attacks[square] = static_cast<i8>(attacks[square] + change);
        }
    }

    const int from_;
    const int to_;
    const u8 code_;
    u8* const entry_;
};

template <Color Us>
i32 staticExchangeOf(Move move) {
    const int to = moveTo(move);
    const LiftedMover<Us> mover(moveFrom(move), to);
    const i32 onSquare = mover.code() == Side<Us>::king ? kingStake : pieceValueByCode[mover.code()];
    return -recapture<~Us>(-pieceValueByCode[searchPosition.board[to]], to, onSquare, {}, {});
}

template <Color Us>
i32 exchangeBoundOf(Move move, i32 threshold) {
    const int to = moveTo(move);
    const i32 victim = pieceValueByCode[searchPosition.board[to]];
    if (victim < threshold) return victim;

    const LiftedMover<Us> mover(moveFrom(move), to);
    AttackerCursor own, theirs;
    i32 balance = victim;
    i32 next = mover.code() == Side<Us>::king ? kingStakeInBound : pieceValueByCode[mover.code()];
    i32 upper = victim;
    i32 lower = unboundedBelow;
    for (;;) {
        upper = std::min(upper, balance);
        if (balance - next >= threshold) return std::min(upper, balance - next);
        i32 value = nextAttacker<~Us>(to, kingStakeInBound, theirs);
        if (value == noAttacker) return upper;
        balance -= next;
        next = value;

        lower = std::max(lower, balance);
        if (balance + next < threshold) return std::max(lower, balance + next);
        value = nextAttacker<Us>(to, kingStakeInBound, own);
        if (value == noAttacker) return lower;
        balance += next;
        next = value;
    }
}

}  // namespace

i32 staticExchange(Move move) {
    return searchPosition.sideToMove == White ? staticExchangeOf<White>(move) : staticExchangeOf<Black>(move);
}

i32 exchangeBound(Move move, i32 threshold) {
    return searchPosition.sideToMove == White ? exchangeBoundOf<White>(move, threshold)
                                              : exchangeBoundOf<Black>(move, threshold);
}

}  // namespace valku
