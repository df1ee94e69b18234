#include "chess/move_generation.h"

#include "chess/attacks.h"
#include "chess/mobility_tables.h"
#include "chess/piece_values.h"
#include "chess/side.h"
#include "chess/steps.h"

namespace valku {

namespace {

[[gnu::always_inline]] inline void addMove(MoveList& list, int from, int to) {
    list.moves[list.count++] = makeMoveWord(from, to);
}

[[gnu::always_inline]] inline void addPromotion(MoveList& list, int from, int to, u8 promotion) {
    list.moves[list.count++] = makeMoveWord(from, to, promotion);
}

template <Color Us>
[[gnu::always_inline]] inline void addUnderPromotions(MoveList& list, int from, int to) {
    addPromotion(list, from, to, Side<Us>::rook);
    addPromotion(list, from, to, Side<Us>::bishop);
    addPromotion(list, from, to, Side<Us>::knight);
}

template <Color Us>
[[gnu::always_inline]] inline void addPawnMove(MoveList& list, int from, int to) {
    if (Side<Us>::relativeRank(from) == 6) {
        addPromotion(list, from, to, Side<Us>::queen);
        addUnderPromotions<Us>(list, from, to);
    } else {
        addMove(list, from, to);
    }
}

template <Color Us>
constexpr bool mayDoubleStep(int from) {
    return Us == White ? from < 24 : from >= 96;
}

// Collects captures whose victim reaches the threshold, and sums up the mobility of the pieces, since it
// walks the rays anyway.
template <Color Us>
struct CaptureScan {
    using S = Side<Us>;
    static constexpr Color Them = ~Us;

    const Position& p;
    MoveList& list;
    const i32 threshold;
    i32 mobility = 0;
    i32 highestLeftOut = 0;

    [[gnu::always_inline]] bool wanted(i32 value) {
        if (value >= threshold) return true;
        if (value > highestLeftOut) highestLeftOut = value;
        return false;
    }

    [[gnu::always_inline]] void capture(int from, int to, u8 victim) {
        if (wanted(pieceValueByCode[victim])) addMove(list, from, to);
    }

    [[gnu::always_inline]] void reach(const MobilityTable& weights, int square) {
        mobility += pawnAttacksOf<Them>(p)[square] ? 0 : weights[static_cast<std::size_t>(square)];
    }

    [[gnu::always_inline]] void ray(const MobilityTable& weights, int from, int step) {
        for (int to = from + step;; to += step) {
            const u8 code = p.board[to];
            if (!(code & S::enemyOrEmpty)) return;
            reach(weights, to);
            if (code != empty) {
                capture(from, to, code);
                return;
            }
        }
    }

    void enPassant() {
        const int field = p.state->epField;
        if (field == noEpField) return;
        for (const int step : {S::up + 1, S::up - 1}) {
            const int from = field - step;
            if (p.board[from] == S::pawn && wanted(pawnValue)) addMove(list, from, field);
        }
    }

    void pawns() {
        for (const u8* entry = pawnsOf<Us>(p); *entry != noSquare; ++entry) {
            const int from = *entry;
            for (const int step : {S::up - 1, S::up + 1}) {
                const u8 victim = p.board[from + step];
                if (isManOf(Them, victim) && wanted(pieceValueByCode[victim]))
                    addPawnMove<Us>(list, from, from + step);
            }
            if (S::relativeRank(from) >= 6 && p.board[from + S::up] == empty) {
                addPromotion(list, from, from + S::up, S::queen);
            }
        }
    }

    void knights() {
        for (const u8* entry = knightsOf<Us>(p); *entry != noSquare; ++entry) {
            const int from = *entry;
            reach(knightMobility<Us>, from);
            for (const int step : Steps<Us>::knight) {
                const int to = from + step;
                const u8 code = p.board[to];
                if (!(code & S::enemyOrEmpty)) continue;
                reach(knightMobility<Us>, to);
                if (code != empty) capture(from, to, code);
            }
        }
    }

    void bishops() {
        for (const u8* entry = bishopsOf<Us>(p); *entry != noSquare; ++entry) {
            reach(bishopMobility<Us>, *entry);
            for (const int step : Steps<Us>::bishop) ray(bishopMobility<Us>, *entry, step);
        }
    }

    void rooks() {
        for (const u8* entry = rooksOf<Us>(p); *entry != noSquare; ++entry) {
            reach(rookMobility<Us>, *entry);
            for (const int step : Steps<Us>::rook) ray(rookMobility<Us>, *entry, step);
        }
    }

    // A queen's own square counts twice, once as a bishop's and once as a rook's.
    void queens() {
        for (const u8* entry = queensOf<Us>(p); *entry != noSquare; ++entry) {
            reach(queenMobility<Us>, *entry);
            for (const int step : Steps<Us>::bishop) ray(queenMobility<Us>, *entry, step);
            reach(queenMobility<Us>, *entry);
            for (const int step : Steps<Us>::rook) ray(queenMobility<Us>, *entry, step);
        }
    }

    void king() {
        const int from = kingOf<Us>(p);
        for (const int step : Steps<Us>::king) {
            const u8 code = p.board[from + step];
            if (isManOf(Them, code)) capture(from, from + step, code);
        }
    }
};

template <Color Us>
[[gnu::always_inline]] inline i32 generateCapturesOf(const Position& p, MoveList& list, i32 threshold) {
    list.count = 0;
    CaptureScan<Us> scan{p, list, threshold};
    scan.enPassant();
    scan.pawns();
    scan.knights();
    scan.bishops();
    scan.rooks();
    scan.queens();
    scan.king();
    list.mobility = scan.mobility;
    return scan.highestLeftOut;
}

// Piece moves for the two generators, which differ only in the squares that a piece may go to.
template <Color Us, bool withCaptures>
struct PieceMoves {
    const Position& p;
    MoveList& list;

    [[gnu::always_inline]] static bool mayEnter(u8 code) {
        return withCaptures ? (code & Side<Us>::enemyOrEmpty) != 0 : code == empty;
    }

    template <int count>
    [[gnu::always_inline]] void stepper(int from, const int (&steps)[count]) {
        for (const int step : steps) {
            if (mayEnter(p.board[from + step])) addMove(list, from, from + step);
        }
    }

    [[gnu::always_inline]] void slider(int from, const int (&steps)[4]) {
        for (const int step : steps) {
            for (int to = from + step; mayEnter(p.board[to]); to += step) {
                addMove(list, from, to);
                if (withCaptures && p.board[to] != empty) break;
            }
        }
    }

    [[gnu::always_inline]] void all() {
        for (const u8* entry = knightsOf<Us>(p); *entry != noSquare; ++entry)
            stepper(*entry, Steps<Us>::knight);
        for (const u8* entry = bishopsOf<Us>(p); *entry != noSquare; ++entry)
            slider(*entry, Steps<Us>::bishop);
        for (const u8* entry = rooksOf<Us>(p); *entry != noSquare; ++entry) slider(*entry, Steps<Us>::rook);
        for (const u8* entry = queensOf<Us>(p); *entry != noSquare; ++entry) {
            slider(*entry, Steps<Us>::bishop);
            slider(*entry, Steps<Us>::rook);
        }
        stepper(kingOf<Us>(p), Steps<Us>::king);
    }
};

template <Color Us>
[[gnu::always_inline]] inline bool attackedByEnemy(const Position& p, int square) {
    return Us == White ? isAttackedByBlack(p, square) : isAttackedByWhite(p, square);
}

// True if the king's path is empty, except for the castling rook, and not attacked.
template <Color Us>
bool kingPathIsFree(const Position& p, int firstSquare, int lastOfPath, int step, int castlingRook) {
    for (int square = firstSquare; (lastOfPath - square) * step >= 0; square += step) {
        if (p.board[square] != empty && square != castlingRook) return false;
        if (attackedByEnemy<Us>(p, square)) return false;
    }
    return true;
}

template <Color Us>
void addShortCastling(const Position& p, MoveList& list) {
    using S = Side<Us>;
    const int king = kingOf<Us>(p);
    const int rook = p.state->castlings[S::shortRight];
    constexpr int target = S::square(G1);
    if (!kingPathIsFree<Us>(p, king + 1, S::square(F1), 1, rook)) return;
    if (p.board[target] != empty && target != king && target != rook) return;
    if (attackedByEnemy<Us>(p, king)) return;
    if (king == target && p.board[S::square(F1)] != empty) return;
    list.moves[list.count++] = makeMoveWord(king, target, 0, shortCastling);
}

template <Color Us>
void addLongCastling(const Position& p, MoveList& list) {
    using S = Side<Us>;
    const int king = kingOf<Us>(p);
    const int rook = p.state->castlings[S::longRight];
    constexpr int target = S::square(C1);
    if (king == S::square(A1) || king == S::square(B1)) {
        if (p.board[S::square(D1)] != empty || p.board[target] != empty) return;
        if (attackedByEnemy<Us>(p, S::square(B1))) return;
        list.moves[list.count++] = makeMoveWord(S::square(B1), target, 0, longCastling);
        return;
    }
    if (!kingPathIsFree<Us>(p, king - 1, S::square(D1), -1, rook)) return;
    if (p.board[target] != empty && target != king && target != rook) return;
    if (attackedByEnemy<Us>(p, king)) return;
    if (king == target && p.board[S::square(D1)] != empty) return;
    if (rook == S::square(A1) && p.board[S::square(B1)] != empty) return;
    list.moves[list.count++] = makeMoveWord(king, target, 0, longCastling);
}

template <Color Us>
[[gnu::always_inline]] inline void generateCastlingsOf(const Position& p, MoveList& list) {
    if (p.state->castlings[Side<Us>::shortRight] != noSquare) addShortCastling<Us>(p, list);
    if (p.state->castlings[Side<Us>::longRight] != noSquare) addLongCastling<Us>(p, list);
}

template <Color Us>
[[gnu::always_inline]] inline void generateQuietMovesOf(const Position& p, MoveList& list) {
    using S = Side<Us>;
    list.count = 0;
    for (const u8* entry = pawnsOf<Us>(p); *entry != noSquare; ++entry) {
        const int from = *entry;
        const int to = from + S::up;
        if (p.board[to] != empty) continue;
        if (S::relativeRank(from) == 6) {
            addUnderPromotions<Us>(list, from, to);
        } else {
            addMove(list, from, to);
        }
        if (mayDoubleStep<Us>(from) && p.board[to + S::up] == empty) addMove(list, from, to + S::up);
    }
    PieceMoves<Us, false>{p, list}.all();
    generateCastlingsOf<Us>(p, list);
}

template <Color Us>
[[gnu::always_inline]] inline void generateAllMovesOf(const Position& p, MoveList& list) {
    using S = Side<Us>;
    constexpr Color Them = ~Us;
    list.count = 0;
    const int epField = p.state->epField;
    const bool epPossible = epField != noEpField && S::relativeRank(epField) == 5;
    for (const u8* entry = pawnsOf<Us>(p); *entry != noSquare; ++entry) {
        const int from = *entry;
        for (const int step : {S::up - 1, S::up + 1}) {
            if (isManOf(Them, p.board[from + step])) addPawnMove<Us>(list, from, from + step);
        }
        if (epPossible && (epField == from + S::up - 1 || epField == from + S::up + 1))
            addMove(list, from, epField);
        const int to = from + S::up;
        if (p.board[to] != empty) continue;
        addPawnMove<Us>(list, from, to);
        if (mayDoubleStep<Us>(from) && p.board[to + S::up] == empty) addMove(list, from, to + S::up);
    }
    PieceMoves<Us, true>{p, list}.all();
    generateCastlingsOf<Us>(p, list);
    list.mobility = list.count;
}

}  // namespace

i32 generateCaptures(MoveList& list, i32 threshold) {
    return searchPosition.sideToMove == White ? generateCapturesOf<White>(searchPosition, list, threshold)
                                              : generateCapturesOf<Black>(searchPosition, list, threshold);
}

void generateQuietMoves(MoveList& list) {
    if (searchPosition.sideToMove == White) {
        generateQuietMovesOf<White>(searchPosition, list);
    } else {
        generateQuietMovesOf<Black>(searchPosition, list);
    }
}

void generateAllMoves(MoveList& list) {
    if (searchPosition.sideToMove == White) {
        generateAllMovesOf<White>(searchPosition, list);
    } else {
        generateAllMovesOf<Black>(searchPosition, list);
    }
}

void generateAllMoves(const Position& position, MoveList& list) {
    if (position.sideToMove == White) {
        generateAllMovesOf<White>(position, list);
    } else {
        generateAllMovesOf<Black>(position, list);
    }
}

void generateCastlings(const Position& position, MoveList& list) {
    if (position.sideToMove == White) {
        generateCastlingsOf<White>(position, list);
    } else {
        generateCastlingsOf<Black>(position, list);
    }
}

}  // namespace valku
