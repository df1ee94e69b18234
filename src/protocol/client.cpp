#include "protocol/client.h"

#include <algorithm>
#include <limits>
#include <string>

#include "chess/attacks.h"
#include "chess/castling_rights.h"
#include "chess/fen.h"
#include "chess/position.h"
#include "distributed/process_lists.h"
#include "distributed/root_search_process.h"
#include "distributed/wire_protocol.h"
#include "platform/clock.h"
#include "platform/shut_down.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "search/stop_word.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"

namespace valku {

namespace {

ClientAlphaBetaThread* clientThread = nullptr;

// What the lines of a job have told so far, and whether one of them told what no position can be. Written by
// the thread that reads the commands. Nobody but startJob believes it.
Position told;
bool malformed = false;

// The longest history that leaves the stack room for a search.
constexpr int mostHistory = 300;

constexpr i32 widestBound = 32000;

// What stands before the root of a job is not told. It counts as an ordinary move of no consequence: the
// square is that of a king.
constexpr Move unknownMove(const Position& position) {
    return makeMoveWord(noSquare, position.whiteKing);
}

// The next number of a text, after blanks; 0 if there is none, the largest if it does not fit.
i32 takeNumberOrZero(std::string_view& text) {
    skipSeparators(text);
    return takeNumber<i32>(text, std::numeric_limits<i32>::max()).value_or(0);
}

// The squares of one man, up to the colon or the letter behind them. False if the text is no such group.
bool takeGroup(std::string_view& text, u8 man) {
    while (!text.empty() && text.front() >= '0' && text.front() <= '9') {
        const i32 square = takeNumberOrZero(text);
        if (square < 0 || square > lastSquare || !onBoard(square)) return false;
        const bool isLastRank = rankOf(square) == 0 || rankOf(square) == 7;
        if ((man & pawnFlag) && isLastRank) return false;
        if (told.board[square] != empty || !placeMan(told, man, square)) return false;
        takeMark(text, ' ');
    }
    return true;
}

bool takeMen(std::string_view& text) {
    constexpr u8 men[] = {WhitePawn, WhiteKnight, WhiteBishop, WhiteRook, WhiteQueen, WhiteKing,
                          BlackPawn, BlackKnight, BlackBishop, BlackRook, BlackQueen, BlackKing};
    for (const u8 man : men) {
        if (!takeGroup(text, man)) return false;
        if (man == BlackKing) break;
        if (!takeMark(text, ':')) return false;
    }
    return true;
}

void takeByte(std::string_view& text, u8& byte) {
    const i32 number = takeNumberOrZero(text);
    if (number < 0 || number > std::numeric_limits<u8>::max()) {
        malformed = true;
    } else {
        byte = static_cast<u8>(number);
    }
}

// Rights that the men do not bear out would let the board castle with a rook, or capture a pawn, that is not
// there.
bool isSound(const Position& p) {
    if (p.whiteKing == noSquare || p.blackKing == noSquare || leftKingInCheck(p)) return false;
    const int epField = p.state->epField;
    return areCastlingsSound(p) && (epField == noEpField || isEnPassantField(p, epField));
}

// Nodes look at the record before the root of a job, so there has to be one.
void addRecordBefore(Position& p) {
    if (stackedMoves(p) == 0) {
        p.states[1] = p.states[0];
        p.states[0].hashLow = p.states[0].hashHigh = 0;
        p.state = &p.states[1];
    }
    p.state[-1].move = unknownMove(p);
}

// Stops a running job and waits for its end.
void finishJob() {
    while (searchRunning) {
        rootSearchProcess->requestStop();
        sleepMilliseconds(1);
    }
}

}  // namespace

void ClientAlphaBetaThread::run() {
    for (;;) {
        jobEvent.wait();
        rootSearchProcess->runRootSearch();
        SearchResult result;
        const std::string answer = composeResult(*rootSearchProcess->getResult(&result));
        // The parent may send its next job the moment it has the answer.
        acknowledgeSearchEnd();
        // A process on its way out stops its job too; what it has got is worth nothing to the parent.
        if (!shutDownBegun) sendText(answer);
    }
}

void createClientThread() {
    told = gamePosition;
    static ClientAlphaBetaThread thread;
    clientThread = &thread;
}

void receivePosition(std::string_view list) {
    if (!clientThread) return;
    clearPosition(told);
    malformed = !takeMen(list) || !(list.starts_with('w') || list.starts_with('b'));
    if (malformed) return;
    told.sideToMove = list.starts_with('w') ? White : Black;
    computeDerived(told);
}

void receiveCastlings(std::string_view squares) {
    if (!clientThread) return;
    for (u8& square : told.state->castlings) takeByte(squares, square);
}

void receiveEpField(std::string_view square) {
    if (clientThread) takeByte(square, told.state->epField);
}

void receiveFiftyMoves(std::string_view count) {
    if (clientThread) takeByte(count, told.state->fiftyMoves);
}

void receiveKey(std::string_view halves) {
    if (!clientThread) return;
    told.state->hashLow = static_cast<u32>(takeNumberOrZero(halves));
    told.state->hashHigh = static_cast<u32>(takeNumberOrZero(halves));
}

void receiveHistory(std::string_view pairs) {
    if (!clientThread) return;
    const StateRecord current = *told.state;
    told.state = told.states;
    for (int count = 0;; ++count) {
        skipSeparators(pairs);
        if (pairs.empty() || pairs.front() == ';') break;
        malformed = malformed || count == mostHistory;
        if (malformed) break;
        told.state->hashLow = static_cast<u32>(takeNumberOrZero(pairs));
        told.state->hashHigh = static_cast<u32>(takeNumberOrZero(pairs));
        ++told.state;
    }
    *told.state = current;
}

void startJob(std::string_view numbers) {
    if (!clientThread) return;
    finishJob();
    if (malformed || !isSound(told)) return;
    gamePosition = told;
    SearchJob job;
    takeNumberOrZero(numbers);  // the ply at the parent: the root of this process is at ply 1
    job.alpha = std::clamp(takeNumberOrZero(numbers), -widestBound, widestBound);
    job.beta = std::clamp(takeNumberOrZero(numbers), -widestBound, widestBound);
    job.distance = std::clamp(takeNumberOrZero(numbers), 0, deepestJob);
    job.zws = takeNumberOrZero(numbers) != 0;

    clearAllStops();
    if (!announceSearch()) return;
    Position position(gamePosition);
    addRecordBefore(position);
    rootSearchProcess->setJob(position, job, nullptr);
    clientThread->jobEvent.signal();
}

void stopJob() {
    if (clientThread) rootSearchProcess->requestStop();
}

void prepareJobs() {
    if (!clientThread) return;
    finishJob();
    prepareSearches();
}

}  // namespace valku
