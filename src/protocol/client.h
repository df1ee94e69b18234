#pragma once

#include <string_view>

#include "platform/event.h"
#include "platform/thread.h"

// The client's end of the wire: an engine whose commands come from a parent. A job arrives in several lines,
// each of which works on what the ones before have left; the last one starts the search, and only there the
// whole is judged, and becomes gamePosition if it can be. In a root process, which has no parent, all of this
// does nothing.
//
// On the thread that reads the commands. The texts are what follows the word and one blank.

namespace valku {

// The thread that searches for the parent.
class ClientAlphaBetaThread final : public Thread {
  public:
    ClientAlphaBetaThread() { start(); }

    // For each job: searches, and answers with one cabresult line.
    void run() override;

    Event jobEvent;
};

// Makes this process a client.
void createClientThread();

void receivePosition(std::string_view list);
void receiveCastlings(std::string_view squares);
void receiveEpField(std::string_view square);
void receiveFiftyMoves(std::string_view count);
void receiveKey(std::string_view halves);
void receiveHistory(std::string_view pairs);

// Starts the search and returns. A position that cannot be is not searched, and not answered either.
void startJob(std::string_view numbers);

// Does not wait; without a job nothing happens.
void stopJob();

// The parent begins a new search: passed on to the clients of this process.
void prepareJobs();

}  // namespace valku
