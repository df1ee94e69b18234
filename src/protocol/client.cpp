#include "protocol/client.h"

#include <string>

#include "chess/attacks.h"
#include "chess/castling_rights.h"
#include "chess/fen.h"
#include "chess/position.h"
#include "distributed/own_search_processes.h"
#include "distributed/process_lists.h"
#include "distributed/wire_protocol.h"
#include "platform/clock.h"
#include "platform/event.h"
#include "platform/shut_down.h"
#include "platform/text_sink.h"
#include "platform/thread.h"
#include "search/stop_word.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"

namespace valku {

namespace {

class ClientAlphaBetaThread final : public Thread {
  public:
    ClientAlphaBetaThread() { start(); }

    // For each job: searches, and answers with one cabresult line.
    void run() override;

    Event jobEvent;
};

void ClientAlphaBetaThread::run() {
    for (;;) {
        jobEvent.wait();
        rootSearchProcess->runRootSearch();
        const std::string answer = composeResult(rootSearchProcess->getResult());
        // The parent may send its next job the moment it has the answer.
        acknowledgeSearchEnd();
        // A process that is ending stops its job too; the result is worth nothing to the parent.
        if (!shutDownBegun) sendText(answer);
    }
}

// Set once, by createClientThread.
ClientAlphaBetaThread* clientThread = nullptr;

// What the lines of a job have told so far, and whether one of them was malformed; the next client_pos begins
// anew. Of the thread that reads the commands.
Position told;
bool malformed = false;

void receivePosition(std::string_view rest) {
    malformed = !parseMen(argumentsOf(rest), told);
}

template <bool parse(std::string_view, Position&)>
void receive(std::string_view rest) {
    if (!parse(argumentsOf(rest), told)) malformed = true;
}

void receiveKey(std::string_view rest) {
    parseKey(argumentsOf(rest), told);
}

// Rights that the men do not bear out would let the board castle with a rook, or capture a pawn, that is not
// there.
bool isSound(const Position& p) {
    if (p.whiteKing == noSquare || p.blackKing == noSquare || leftKingInCheck(p)) return false;
    const int epField = p.state->epField;
    return areCastlingsSound(p) && (epField == noEpField || isEnPassantField(p, epField));
}

// The move before the root of a job is not told. It counts as an ordinary move of no consequence: the square
// is that of a king.
constexpr Move unknownMove(const Position& position) {
    return makeMoveWord(noSquare, position.whiteKing);
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

// Returns while the job runs. A job at a position that no game has is not searched, and not answered either.
void startJob(std::string_view rest) {
    finishJob();
    if (malformed || !isSound(told)) return;
    gamePosition = told;
    clearAllStops();
    if (!announceSearch()) return;
    Position position(gamePosition);
    addRecordBefore(position);
    rootSearchProcess->setJob(position, parseJobNumbers(argumentsOf(rest)), nullptr);
    clientThread->jobEvent.signal();
}

// Without a job nothing happens.
void stopJob(std::string_view) {
    rootSearchProcess->requestStop();
}

// The parent begins a new search: passed on to the clients of this process.
void prepareJobs(std::string_view) {
    finishJob();
    prepareSearches();
}

constexpr Command words[] = {
    {"client_alphabeta", Match::prefix, startJob},
    {"client_preparesearch", Match::prefix, prepareJobs},
    {"client_pos", Match::prefix, receivePosition},
    {"client_castlings", Match::prefix, receive<parseCastlings>},
    {"client_epfield", Match::prefix, receive<parseEpField>},
    {"client_50moves", Match::prefix, receive<parseFiftyMoves>},
    {"client_hash", Match::prefix, receiveKey},
    {"client_history", Match::prefix, receive<parseHistory>},
    {"client_stop", Match::prefix, stopJob},
};

}  // namespace

void createClientThread() {
    told = gamePosition;
    static ClientAlphaBetaThread thread;
    clientThread = &thread;
}

std::span<const Command> clientCommands() {
    return words;
}

}  // namespace valku
