#include "eval/pawn_structure.h"

#include <algorithm>
#include <iterator>

#include "eval/weights.h"

namespace valku {

namespace {

constexpr i32 pawnFileMiddlegame[8] = {-10, -5, 0, 5, 5, 0, -5, -10};
constexpr i32 pawnFileEndgame[8] = {6, 3, 0, -3, -3, 0, 3, 6};

constexpr i32 phalanxOnFourth = 9;  // for each pawn with a neighbor beside it
constexpr i32 phalanxBeyond = 15;
constexpr i32 neighborGap = 4;  // for each neighbor two or more ranks behind
constexpr i32 weakness = 4;     // for each weak pawn or hole in the center
constexpr i32 unadvancedPasser = 15;

constexpr int fileC = 2, fileD = 3, fileE = 4, fileF = 5;

constexpr int rank4 = 3;  // a relative rank

// What a pawn adds to the shelter of its king on the three places.
struct Shelter {
    int kingside;
    int queenside;
    int centre;
};

constexpr int bareShelter = -13;

// By relative rank and file, up to rank 4; pawns beyond it are no shelter.
constexpr Shelter shelterByPawn[4][8] = {
    {},
    {{0, 4, 0}, {0, 5, 0}, {0, 4, 3}, {0, 0, 3}, {0, 0, 3}, {4, 0, 3}, {5, 0, 0}, {4, 0, 0}},
    {{0, 3, 0}, {0, 3, 0}, {0, 3, 2}, {0, 0, 3}, {0, 0, 3}, {3, 0, 2}, {3, 0, 0}, {3, 0, 0}},
    {{0, 2, 0}, {0, 2, 0}, {0, 2, 2}, {0, 0, 2}, {0, 0, 2}, {2, 0, 2}, {2, 0, 0}, {2, 0, 0}},
};

// The sums of one color, positive if good for it.
struct PawnScores {
    i32 structure = 0;
    i32 weaknesses = 0;
    i32 filesMiddlegame = 0;
    i32 filesEndgame = 0;
};

// Facts about one color that are needed while an entry is computed.
struct PawnFacts {
    int foremost[8];  // per file the most advanced pawn; without one a value behind the own first rank
    int lowestFile = 8;
    int highestFile = -1;
};

// Central pawns that cannot advance, which obstruct their own bishop for long.
template <Color Us>
bool isBlockedCentralPawn(int square) {
    constexpr Color Them = ~Us;
    const int file = fileOf(square);
    const int rank = rankOf(square);
    if (file < fileC || file > fileF || rank < 3 || rank > 4) return false;
    const int front = square + Side<Us>::up;
    return pawnAttacksOf<Them>(searchPosition)[front] != 0 || searchPosition.board[front] == Side<Them>::pawn;
}

// How close a guarded pawn is to a pawn exchange that opens its file: 2 at once, 1 after one step, else 0.
// Pawns on the edge need no guard.
template <Color Us>
int stormStrength(int square) {
    constexpr Color Them = ~Us;
    const bool onEdge = fileOf(square) == 0 || fileOf(square) == 7;
    for (int strength = 2; strength > 0; --strength, square += Side<Us>::up) {
        const bool guarded = onEdge || pawnAttacksOf<Us>(searchPosition)[square] > 0;
        if (guarded && searchPosition.board[square] != Side<Them>::pawn &&
            pawnAttacksOf<Them>(searchPosition)[square] > 0) {
            return strength;
        }
    }
    return 0;
}

// What each pawn adds by itself; also finds the rear pawns.
template <Color Us>
void surveyPawns(PawnEntry& entry, PawnScores& scores, PawnFacts& facts) {
    const Position& position = searchPosition;
    auto& rear = rearOf<Us>(entry);
    int pawnColors = 0, stormKingside = 0, stormQueenside = 0;
    Shelter shelter = {bareShelter, bareShelter, bareShelter};

    std::fill(std::begin(rear), std::end(rear), static_cast<u8>(Us == White ? noSquare : 0));
    std::fill(std::begin(facts.foremost), std::end(facts.foremost), Us == White ? -16 : 128);

    for (const u8* pawn = pawnsOf<Us>(position); *pawn != noSquare; ++pawn) {
        const int square = *pawn;
        const int file = fileOf(square);
        const int rank = Side<Us>::relativeRank(square);

        if (isAhead<Us>(square, facts.foremost[file])) facts.foremost[file] = square;
        if (isAhead<Us>(rear[file], square)) rear[file] = static_cast<u8>(square);
        facts.lowestFile = std::min(facts.lowestFile, file);
        facts.highestFile = std::max(facts.highestFile, file);

        scores.filesMiddlegame += pawnFileMiddlegame[file];
        scores.filesEndgame += pawnFileEndgame[file];
        pawnColors += (isBlockedCentralPawn<Us>(square) ? 2 : 1) * (isDarkSquare(square) ? 1 : 16);

        if (rank <= rank4) {
            const Shelter& part = shelterByPawn[rank][file];
            shelter.kingside += part.kingside;
            shelter.queenside += part.queenside;
            shelter.centre += part.centre;
        }
        if (rank >= rank4) {
            if (position.board[square - 1] == Side<Us>::pawn ||
                position.board[square + 1] == Side<Us>::pawn) {
                scores.structure += rank == rank4 ? phalanxOnFourth : phalanxBeyond;
            }
            if (file <= fileC) stormQueenside += stormStrength<Us>(square);
            if (file >= fileF) stormKingside += stormStrength<Us>(square);
        }
    }

    pawnColoursOf<Us>(entry) = static_cast<u8>(pawnColors);
    stormKingsideOf<Us>(entry) = static_cast<i8>(stormKingside);
    stormQueensideOf<Us>(entry) = static_cast<i8>(stormQueenside);
    shelterKingsideOf<Us>(entry) = static_cast<i8>(shelter.kingside);
    shelterQueensideOf<Us>(entry) = static_cast<i8>(shelter.queenside);
    shelterCentreOf<Us>(entry) = static_cast<i8>(shelter.centre);
}

// Holes: squares of the fourth relative rank on the central files that an enemy pawn attacks and that no own
// pawn guards or can come to guard by one step.
template <Color Us>
int centralHoles() {
    int holes = 0;
    for (int file = fileC; file <= fileF; ++file) {
        const int square = Side<Us>::square(makeSquare(file, rank4));
        holes += pawnAttacksOf<~Us>(searchPosition)[square] != 0 &&
                 pawnAttacksOf<Us>(searchPosition)[square] == 0 &&
                 pawnAttacksOf<Us>(searchPosition)[square - Side<Us>::up] == 0;
    }
    return holes;
}

// The terms that depend on several pawns. To be called after surveyPawns() of both colors.
template <Color Us>
void judgePawns(PawnEntry& entry, PawnScores& scores, const PawnFacts& facts) {
    constexpr Color Them = ~Us;
    constexpr int up = Side<Us>::up;
    const Position& position = searchPosition;
    const auto& rear = rearOf<Us>(entry);
    const auto& enemyRear = rearOf<Them>(entry);
    const auto& pawnsOnFile = pawnsOnFileOf<Us>(position);
    const auto& enemyPawnsOnFile = pawnsOnFileOf<Them>(position);
    int passers = 0;

    for (int file = 0; file < 8; ++file) {
        if (pawnsOnFile[file] > 1) scores.structure -= (pawnsOnFile[file] - 1) * doublePawn;
    }
    for (int file = fileC; file <= fileF; ++file) {
        if (pawnsOnFile[file] != 0)
            scores.structure += spaceAdvantage * (Side<Us>::relativeRank(rear[file]) - 1);
    }
    scores.weaknesses += centralHoles<Us>();

    for (const u8* pawn = pawnsOf<Us>(position); *pawn != noSquare; ++pawn) {
        const int square = *pawn;
        const int file = fileOf(square);
        const int rank = Side<Us>::relativeRank(square);

        if (file > 0 && isAhead<Us>(square - up, rear[file - 1])) scores.structure -= neighborGap;
        if (file < 7 && isAhead<Us>(square - up, rear[file + 1])) scores.structure -= neighborGap;

        if (rank <= rank4) {
            // The pawns of a neighboring file can help a pawn as long as the rearmost of them is not ahead of
            // it.
            const bool leftHelps = file > 0 && !isAhead<Us>(rear[file - 1], square);
            const bool rightHelps = file < 7 && !isAhead<Us>(rear[file + 1], square);
            const int frontGuards = pawnAttacksOf<Us>(position)[square + up];
            const bool halfOpen = enemyPawnsOnFile[file] == 0;

            // Only the neighbor towards the nearer edge matters: the center has other defenders.
            if (frontGuards == 0 && !(file <= fileD ? leftHelps : rightHelps)) ++scores.weaknesses;

            const bool onEdge = file == 0 || file == 7;
            const bool leftEmpty = file == 0 || pawnsOnFile[file - 1] == 0;
            const bool rightEmpty = file == 7 || pawnsOnFile[file + 1] == 0;
            if (leftEmpty && rightEmpty) {
                scores.structure -= halfOpen ? isolatedPawn : 2 * isolatedPawn / 3;
            } else if (!onEdge && !leftHelps && !rightHelps && square == rear[file] && halfOpen &&
                       frontGuards < pawnAttacksOf<Them>(position)[square + up]) {
                scores.structure -= backstandingPawn;
            }
        }

        // A file has an enemy pawn ahead exactly if the enemy's rear pawn is ahead.
        const bool passed = square == facts.foremost[file] && !isAhead<Us>(enemyRear[file], square) &&
                            (file == 0 || !isAhead<Us>(enemyRear[file - 1], square)) &&
                            (file == 7 || !isAhead<Us>(enemyRear[file + 1], square));
        if (passed && rank >= rank4) passersOf<Us>(entry)[passers++] = static_cast<u8>(square);
        if (passed && rank < rank4) scores.structure += unadvancedPasser;
    }
    passerCountOf<Us>(entry) = static_cast<u8>(passers);
}

// If the center is locked, with the d- and e-pawns face to face, the pawn chain of each side points at a
// wing. Level pawns point at the kingside for White and at the queenside for Black.
void setChainWings(PawnEntry& entry) {
    const auto& white = entry.whiteRear;
    const auto& black = entry.blackRear;
    entry.whiteChainWing = noChainWing;
    entry.blackChainWing = noChainWing;
    if (white[fileD] + 16 != black[fileD] || white[fileE] + 16 != black[fileE]) return;
    const bool whiteToQueenside = rankOf(white[fileE]) < rankOf(white[fileD]);
    entry.whiteChainWing = whiteToQueenside ? chainToQueenside : chainToKingside;
    entry.blackChainWing = whiteToQueenside ? chainToKingside : chainToQueenside;
}

}  // namespace

void buildPawnEntry(PawnEntry& entry) {
    PawnScores white, black;
    PawnFacts whiteFacts, blackFacts;

    entry.used = 1;
    entry.key = searchPosition.state->pawnHash;

    surveyPawns<White>(entry, white, whiteFacts);
    surveyPawns<Black>(entry, black, blackFacts);

    const int lowestFile = std::min(whiteFacts.lowestFile, blackFacts.lowestFile);
    const int highestFile = std::max(whiteFacts.highestFile, blackFacts.highestFile);
    entry.pawnSpread = static_cast<u8>(lowestFile < highestFile ? highestFile - lowestFile : 0);
    entry.centralPawnsAtHome = entry.whiteRear[fileD] == D2 || entry.whiteRear[fileE] == E2 ||
                               entry.blackRear[fileD] == D7 || entry.blackRear[fileE] == E7;
    setChainWings(entry);

    judgePawns<White>(entry, white, whiteFacts);
    judgePawns<Black>(entry, black, blackFacts);

    const i32 common = white.structure - black.structure - weakness * (white.weaknesses - black.weaknesses);
    entry.middlegameScore = static_cast<i16>(white.filesMiddlegame - black.filesMiddlegame + common);
    entry.endgameScore = static_cast<i16>(white.filesEndgame - black.filesEndgame + common);
}

}  // namespace valku
