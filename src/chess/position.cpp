#include "chess/position.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "chess/piece_values.h"
#include "chess/side.h"
#include "chess/tables.h"

namespace valku {

Position gamePosition;
Position searchPosition;
int droppedGameMoves = 0;

namespace {

constexpr int maxMenPerSide = 16;
constexpr int pliesOfOneSearch = 128;  // more than a search adds to the stack below its root

template <std::size_t size>
void closeList(u8 (&list)[size]) {
    std::fill(list, list + size, static_cast<u8>(noSquare));
}

template <Color Us>
void clearSide(Position& position) {
    closeList(pawnsOf<Us>(position));
    closeList(knightsOf<Us>(position));
    closeList(bishopsOf<Us>(position));
    closeList(rooksOf<Us>(position));
    closeList(queensOf<Us>(position));
    pawnCountOf<Us>(position) = 0;
    knightCountOf<Us>(position) = 0;
    bishopCountOf<Us>(position) = 0;
    rookCountOf<Us>(position) = 0;
    queenCountOf<Us>(position) = 0;
    menOf<Us>(position) = 0;
    materialOf<Us>(position) = 0;
    kingOf<Us>(position) = noSquare;
    std::fill(pawnsOnFileOf<Us>(position), pawnsOnFileOf<Us>(position) + 8, i8{0});
}

template <std::size_t size>
bool append(u8 (&list)[size], u8& count, int square) {
    if (count + 1u >= size) return false;
    list[count++] = static_cast<u8>(square);
    return true;
}

template <Color Us>
bool placeManOf(Position& position, u8 code, int square) {
    using S = Side<Us>;
    if (menOf<Us>(position) >= maxMenPerSide) return false;
    bool placed = true;
    switch (code) {
        case S::pawn:
            placed = append(pawnsOf<Us>(position), pawnCountOf<Us>(position), square);
            break;
        case S::knight:
            placed = append(knightsOf<Us>(position), knightCountOf<Us>(position), square);
            break;
        case S::bishop:
            placed = append(bishopsOf<Us>(position), bishopCountOf<Us>(position), square);
            break;
        case S::rook:
            placed = append(rooksOf<Us>(position), rookCountOf<Us>(position), square);
            break;
        case S::queen:
            placed = append(queensOf<Us>(position), queenCountOf<Us>(position), square);
            break;
        default:
            placed = kingOf<Us>(position) == noSquare;
            if (placed) kingOf<Us>(position) = square;
    }
    if (!placed) return false;
    if (code == S::pawn) ++pawnsOnFileOf<Us>(position)[fileOf(square)];
    ++menOf<Us>(position);
    materialOf<Us>(position) += pieceValueByCode[code];
    position.board[square] = code;
    return true;
}

template <Color Us>
void addPawnAttacks(Position& position) {
    constexpr int up = Side<Us>::up;
    for (int i = 0; i < pawnCountOf<Us>(position); ++i) {
        ++pawnAttacksOf<Us>(position)[pawnsOf<Us>(position)[i] + up - 1];
        ++pawnAttacksOf<Us>(position)[pawnsOf<Us>(position)[i] + up + 1];
    }
}

u64 listBits(const u8* list) {
    u64 bits = 0;
    for (; *list != noSquare; ++list) bits |= squareMask[*list];
    return bits;
}

template <Color Us>
void computeBitboardsOf(Position& position) {
    knightsBBOf<Us>(position) = listBits(knightsOf<Us>(position));
    diagonalBBOf<Us>(position) = listBits(bishopsOf<Us>(position)) | listBits(queensOf<Us>(position));
    straightBBOf<Us>(position) = listBits(rooksOf<Us>(position)) | listBits(queensOf<Us>(position));
}

template <Color Us>
void computeMaterialOf(Position& position) {
    materialOf<Us>(position) =
        pawnCountOf<Us>(position) * pawnValue + knightCountOf<Us>(position) * knightValue +
        bishopCountOf<Us>(position) * bishopValue + rookCountOf<Us>(position) * rookValue +
        queenCountOf<Us>(position) * queenValue;
}

void computeHash(Position& position) {
    u32 low = epKey[position.state->epField];
    u32 high = low;
    for (int square = A1; square <= H8; ++square) {
        if (!(position.board[square] & manFlag)) continue;
        low ^= pieceKeyLow[position.board[square]][square];
        high ^= pieceKeyHigh[position.board[square]][square];
    }
    if (position.sideToMove == Black) {
        low ^= 1;
        high ^= 1;
    }
    position.state->hashLow = low;
    position.state->hashHigh = high;
}

void computePawnHash(Position& position) {
    u64 key = 0;
    for (int i = 0; i < position.whitePawnCount; ++i) key ^= whitePawnKey[position.whitePawns[i]];
    for (int i = 0; i < position.blackPawnCount; ++i) key ^= blackPawnKey[position.blackPawns[i]];
    position.state->pawnHash = key;
}

}  // namespace

Position::Position(const Position& source) {
    copyPosition(*this, source);
}

Position& Position::operator=(const Position& source) {
    copyPosition(*this, source);
    return *this;
}

void copyPosition(Position& destination, const Position& source) {
    if (&destination == &source) return;
    std::memcpy(static_cast<void*>(&destination), static_cast<const void*>(&source), sizeof(Position));
    destination.state = destination.states + (source.state - source.states);
}

void clearPosition(Position& position) {
    std::fill(std::begin(position.board.cells), std::end(position.board.cells), offBoard);
    for (int square = A1; square <= H8; ++square) {
        if (onBoard(square)) position.board[square] = empty;
    }
    clearSide<White>(position);
    clearSide<Black>(position);
    position.state = position.states;
    *position.state = StateRecord{};
    position.state->epField = noEpField;
    std::fill(position.state->castlings, position.state->castlings + 4, static_cast<u8>(noSquare));
}

bool placeMan(Position& position, u8 code, int square) {
    return isManOf(White, code) ? placeManOf<White>(position, code, square)
                                : placeManOf<Black>(position, code, square);
}

void computePawnAttacks(Position& position) {
    position.whitePawnAttacks = {};
    position.blackPawnAttacks = {};
    addPawnAttacks<White>(position);
    addPawnAttacks<Black>(position);
}

void computeBitboards(Position& position) {
    computeBitboardsOf<White>(position);
    computeBitboardsOf<Black>(position);
}

void computeDerived(Position& position) {
    computeHash(position);
    computePawnHash(position);
    computePawnAttacks(position);
    computeBitboards(position);
}

void computeMaterial(Position& position) {
    computeMaterialOf<White>(position);
    computeMaterialOf<Black>(position);
}

int trimStateStack(Position& position) {
    // fiftyMoves is a byte, so no repetition test looks further back than this.
    constexpr int keptRecords = 256;
    const int current = stackedMoves(position);
    if (current + pliesOfOneSearch < stateStackSize) return 0;
    const int dropped = current - keptRecords;
    std::copy(position.states + dropped, position.states + current + 1, position.states);
    position.state = position.states + keptRecords;
    return dropped;
}

}  // namespace valku
