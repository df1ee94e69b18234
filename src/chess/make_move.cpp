#include "chess/make_move.h"

#include <cstring>

#include "chess/piece_values.h"
#include "chess/side.h"
#include "chess/tables.h"

namespace valku {

namespace {

// Castling does not change the keys of the rook; a constant for each castling takes their place.
constexpr u32 castlingKey(Color us, u32 castling) {
    const u32 whiteKey = castling == shortCastling ? 4 : 8;
    return us == White ? whiteKey : whiteKey * 4;
}

[[gnu::always_inline]] inline void replaceEntry(u8* list, int from, int to) {
    while (*list != from) ++list;
    *list = static_cast<u8>(to);
}

[[gnu::always_inline]] inline void removeEntry(u8* list, u8& count, int square) {
    u8* const last = list + --count;
    while (*list != square) ++list;
    *list = *last;
    *last = noSquare;
}

[[gnu::always_inline]] inline void appendEntry(u8* list, u8& count, int square) {
    list[count++] = static_cast<u8>(square);
}

[[gnu::always_inline]] inline void moveBit(u64& bits, int from, int to) {
    bits = (bits & squareClear[from]) | squareMask[to];
}

[[gnu::always_inline]] inline void changeKey(StateRecord& state, u8 code, int square) {
    state.hashLow ^= pieceKeyLow[code][square];
    state.hashHigh ^= pieceKeyHigh[code][square];
}

[[gnu::always_inline]] inline void changeKey(StateRecord& state, u32 key) {
    state.hashLow ^= key;
    state.hashHigh ^= key;
}

template <Color Us>
constexpr const u64* pawnKeyOf() {
    return Us == White ? whitePawnKey : blackPawnKey;
}

template <Color Us, int change>
[[gnu::always_inline]] inline void changePawnAttacks(Position& position, int square) {
    constexpr int up = Side<Us>::up;
    auto& attacks = pawnAttacksOf<Us>(position);
    attacks[square + up - 1] = static_cast<i8>(attacks[square + up - 1] + change);
    attacks[square + up + 1] = static_cast<i8>(attacks[square + up + 1] + change);
}

// Removes a man of `Us` from its list, bitboards, counts and material; not from the mailbox.
template <Color Us>
[[gnu::always_inline]] inline void removeMan(Position& p, u8 code, int square) {
    using S = Side<Us>;
    switch (code) {
        case S::pawn:
            --pawnsOnFileOf<Us>(p)[fileOf(square)];
            changePawnAttacks<Us, -1>(p, square);
            removeEntry(pawnsOf<Us>(p), pawnCountOf<Us>(p), square);
            break;
        case S::knight:
            knightsBBOf<Us>(p) &= squareClear[square];
            removeEntry(knightsOf<Us>(p), knightCountOf<Us>(p), square);
            break;
        case S::bishop:
            diagonalBBOf<Us>(p) &= squareClear[square];
            removeEntry(bishopsOf<Us>(p), bishopCountOf<Us>(p), square);
            break;
        case S::rook:
            straightBBOf<Us>(p) &= squareClear[square];
            removeEntry(rooksOf<Us>(p), rookCountOf<Us>(p), square);
            break;
        case S::queen:
            diagonalBBOf<Us>(p) &= squareClear[square];
            straightBBOf<Us>(p) &= squareClear[square];
            removeEntry(queensOf<Us>(p), queenCountOf<Us>(p), square);
            break;
        default:
            break;
    }
    materialOf<Us>(p) -= pieceValueByCode[code];
}

// The opposite: appends the man to its list.
template <Color Us>
[[gnu::always_inline]] inline void addMan(Position& p, u8 code, int square) {
    using S = Side<Us>;
    switch (code) {
        case S::pawn:
            ++pawnsOnFileOf<Us>(p)[fileOf(square)];
            changePawnAttacks<Us, 1>(p, square);
            appendEntry(pawnsOf<Us>(p), pawnCountOf<Us>(p), square);
            break;
        case S::knight:
            knightsBBOf<Us>(p) |= squareMask[square];
            appendEntry(knightsOf<Us>(p), knightCountOf<Us>(p), square);
            break;
        case S::bishop:
            diagonalBBOf<Us>(p) |= squareMask[square];
            appendEntry(bishopsOf<Us>(p), bishopCountOf<Us>(p), square);
            break;
        case S::rook:
            straightBBOf<Us>(p) |= squareMask[square];
            appendEntry(rooksOf<Us>(p), rookCountOf<Us>(p), square);
            break;
        case S::queen:
            diagonalBBOf<Us>(p) |= squareMask[square];
            straightBBOf<Us>(p) |= squareMask[square];
            appendEntry(queensOf<Us>(p), queenCountOf<Us>(p), square);
            break;
        default:
            break;
    }
    materialOf<Us>(p) += pieceValueByCode[code];
}

// Moves a knight, bishop, rook, queen or king in its list and bitboards; used both ways.
template <Color Us>
[[gnu::always_inline]] inline void shiftPiece(Position& p, u8 code, int from, int to) {
    using S = Side<Us>;
    switch (code) {
        case S::knight:
            moveBit(knightsBBOf<Us>(p), from, to);
            replaceEntry(knightsOf<Us>(p), from, to);
            break;
        case S::bishop:
            moveBit(diagonalBBOf<Us>(p), from, to);
            replaceEntry(bishopsOf<Us>(p), from, to);
            break;
        case S::rook:
            moveBit(straightBBOf<Us>(p), from, to);
            replaceEntry(rooksOf<Us>(p), from, to);
            break;
        case S::queen:
            moveBit(diagonalBBOf<Us>(p), from, to);
            moveBit(straightBBOf<Us>(p), from, to);
            replaceEntry(queensOf<Us>(p), from, to);
            break;
        default:
            kingOf<Us>(p) = to;
            break;
    }
}

template <Color Us>
[[gnu::always_inline]] inline void makePawnMove(Position& p, StateRecord& state, Move move, u8 target) {
    using S = Side<Us>;
    constexpr Color Them = ~Us;
    const int from = moveFrom(move);
    const int to = moveTo(move);
    const u8 promotion = movePromotion(move);
    constexpr const u64* pawnKey = pawnKeyOf<Us>();

    state.fiftyMoves = 0;
    // When the pawn promotes, its key on the destination stays in the position's key all the same.
    changeKey(state, S::pawn, to);
    changeKey(state, S::pawn, from);
    changeKey(state, 1);
    if (promotion) {
        changeKey(state, epKey[noEpField]);
        changeKey(state, promotion, to);
        p.board[to] = promotion;
        state.pawnHash ^= pawnKey[from];
        removeMan<Us>(p, S::pawn, from);
        addMan<Us>(p, promotion, to);
        return;
    }
    p.board[to] = S::pawn;
    state.pawnHash ^= pawnKey[from] ^ pawnKey[to];
    changePawnAttacks<Us, -1>(p, from);
    changePawnAttacks<Us, 1>(p, to);
    replaceEntry(pawnsOf<Us>(p), from, to);
    const int step = to - from;
    if (step == 2 * S::up) {
        // The square is set only if an enemy pawn attacks it, whether the capture is legal or not.
        if (p.board[to - 1] == Side<Them>::pawn || p.board[to + 1] == Side<Them>::pawn) {
            state.epField = static_cast<u8>(to - S::up);
        }
    } else if (step != S::up) {
        --pawnsOnFileOf<Us>(p)[fileOf(from)];
        ++pawnsOnFileOf<Us>(p)[fileOf(to)];
        if (target == empty) {
            const int victim = to - S::up;
            p.board[victim] = empty;
            --menOf<Them>(p);
            changeKey(state, Side<Them>::pawn, victim);
            state.pawnHash ^= pawnKeyOf<Them>()[victim];
            removeMan<Them>(p, Side<Them>::pawn, victim);
        }
    }
    changeKey(state, epKey[state.epField]);
}

template <Color Us>
[[gnu::always_inline]] inline void castleRook(Position& p, StateRecord& state, int kingTo, u32 castling) {
    using S = Side<Us>;
    const int rook = state.castlings[castling == shortCastling ? S::shortRight : S::longRight];
    const int landing = castling == shortCastling ? S::square(F1) : S::square(D1);
    changeKey(state, castlingKey(Us, castling));
    if (rook != kingTo) p.board[rook] = empty;
    p.board[landing] = S::rook;
    moveBit(straightBBOf<Us>(p), rook, landing);
    replaceEntry(rooksOf<Us>(p), rook, landing);
}

template <Color Us>
[[gnu::always_inline]] inline void makeMoveOf(Position& p, Move move) {
    using S = Side<Us>;
    constexpr Color Them = ~Us;
    const int from = moveFrom(move);
    const int to = moveTo(move);
    const u32 castling = moveCastling(move);
    const u8 mover = p.board[from];
    const u8 target = p.board[to];

    StateRecord& old = *p.state;
    old.move = move;
    old.captured = target;
    StateRecord& state = *++p.state;
    state.pawnHash = old.pawnHash;
    std::memcpy(state.castlings, old.castlings, sizeof state.castlings);
    state.epField = noEpField;
    state.fiftyMoves = static_cast<u8>(old.fiftyMoves + 1);
    state.hashLow = old.hashLow ^ epKey[old.epField];
    state.hashHigh = old.hashHigh ^ epKey[old.epField];
    p.sideToMove = Them;
    p.board[from] = empty;

    if (mover == S::pawn) {
        makePawnMove<Us>(p, state, move, target);
    } else {
        changeKey(state, epKey[noEpField] ^ 1);
        changeKey(state, mover, to);
        changeKey(state, mover, from);
        p.board[to] = mover;
        shiftPiece<Us>(p, mover, from, to);
        if (mover == S::rook) {
            if (from == state.castlings[S::longRight]) {
                state.castlings[S::longRight] = noSquare;
            } else if (from == state.castlings[S::shortRight]) {
                state.castlings[S::shortRight] = noSquare;
            }
        } else if (mover == S::king) {
            if (castling) castleRook<Us>(p, state, to, castling);
            state.castlings[S::longRight] = noSquare;
            state.castlings[S::shortRight] = noSquare;
            if (castling) return;  // a Chess960 king may move to its own rook's square: that is no capture
        }
    }

    if (target == empty) return;
    state.fiftyMoves = 0;
    changeKey(state, target, to);
    --menOf<Them>(p);
    if (target == Side<Them>::pawn) state.pawnHash ^= pawnKeyOf<Them>()[to];
    removeMan<Them>(p, target, to);
    if (target == Side<Them>::rook) {
        if (to == state.castlings[Side<Them>::longRight]) state.castlings[Side<Them>::longRight] = noSquare;
        if (to == state.castlings[Side<Them>::shortRight]) state.castlings[Side<Them>::shortRight] = noSquare;
    }
}

template <Color Us>
[[gnu::always_inline]] inline void unmakeCastledRook(Position& p, const StateRecord& restored, int kingFrom,
                                                     u32 castling) {
    using S = Side<Us>;
    const int rook = restored.castlings[castling == shortCastling ? S::shortRight : S::longRight];
    const int landing = castling == shortCastling ? S::square(F1) : S::square(D1);
    if (kingFrom != landing) p.board[landing] = empty;
    p.board[rook] = S::rook;
    moveBit(straightBBOf<Us>(p), landing, rook);
    replaceEntry(rooksOf<Us>(p), landing, rook);
}

// `Us` is the side that made the move.
template <Color Us>
[[gnu::always_inline]] inline void unmakeMoveOf(Position& p) {
    using S = Side<Us>;
    constexpr Color Them = ~Us;
    const StateRecord& restored = *--p.state;
    const Move move = restored.move;
    const u8 captured = restored.captured;
    const int from = moveFrom(move);
    const int to = moveTo(move);
    const u8 promotion = movePromotion(move);
    p.sideToMove = Us;

    if (promotion) {
        p.board[from] = S::pawn;
        p.board[to] = captured;
        addMan<Us>(p, S::pawn, from);
        removeMan<Us>(p, promotion, to);
    } else {
        const u8 mover = p.board[to];
        p.board[from] = mover;
        p.board[to] = captured;
        if (mover == S::pawn) {
            changePawnAttacks<Us, 1>(p, from);
            changePawnAttacks<Us, -1>(p, to);
            replaceEntry(pawnsOf<Us>(p), to, from);
            if ((from - to) & 1) {
                ++pawnsOnFileOf<Us>(p)[fileOf(from)];
                --pawnsOnFileOf<Us>(p)[fileOf(to)];
                if (to == restored.epField) {
                    const int victim = to - S::up;
                    p.board[victim] = Side<Them>::pawn;
                    ++menOf<Them>(p);
                    addMan<Them>(p, Side<Them>::pawn, victim);
                }
            }
        } else {
            shiftPiece<Us>(p, mover, to, from);
            if (const u32 castling = moveCastling(move)) {
                unmakeCastledRook<Us>(p, restored, from, castling);
                return;
            }
        }
    }

    if (captured == empty) return;
    ++menOf<Them>(p);
    addMan<Them>(p, captured, to);
}

}  // namespace

void makeMove(Move move) {
    if (searchPosition.sideToMove == White) {
        makeMoveOf<White>(searchPosition, move);
    } else {
        makeMoveOf<Black>(searchPosition, move);
    }
}

void unmakeMove() {
    if (searchPosition.sideToMove == Black) {
        unmakeMoveOf<White>(searchPosition);
    } else {
        unmakeMoveOf<Black>(searchPosition);
    }
}

void makeMove(Position& position, Move move) {
    if (position.sideToMove == White) {
        makeMoveOf<White>(position, move);
    } else {
        makeMoveOf<Black>(position, move);
    }
}

void unmakeMove(Position& position) {
    if (position.sideToMove == Black) {
        unmakeMoveOf<White>(position);
    } else {
        unmakeMoveOf<Black>(position);
    }
}

void makeNullMove() {
    StateRecord& old = *searchPosition.state;
    old.captured = empty;
    old.move = nullMove;
    StateRecord& state = *++searchPosition.state;
    state.pawnHash = old.pawnHash;
    std::memcpy(state.castlings, old.castlings, sizeof state.castlings);
    state.epField = noEpField;
    state.fiftyMoves = static_cast<u8>(old.fiftyMoves + 1);
    const u32 change = epKey[old.epField] ^ epKey[noEpField] ^ 1;
    state.hashLow = old.hashLow ^ change;
    state.hashHigh = old.hashHigh ^ change;
    searchPosition.sideToMove ^= 1;
}

void unmakeNullMove() {
    --searchPosition.state;
    searchPosition.sideToMove ^= 1;
}

}  // namespace valku
