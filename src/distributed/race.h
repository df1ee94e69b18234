#pragma once

#include "distributed/process_lists.h"
#include "search/search_job.h"
#include "search/stop_word.h"

namespace valku {

// What distinguishes the two functions that race a node.
struct RaceCourse {
    const char* function;          // as the diagnostic files name it
    const char* client;            // what kind of clients take part
    AbstractSearchProcess& local;  // the racer of this process; always waited for
    StopByte stopOfLocal;          // what stops it
    Event& anyFinished;
    std::string (*describe)(const SearchJob& job, int racers);  // for the file: a round without a winner
};

struct RaceResult {
    SearchResult winner;
    const AbstractSearchProcess* by = nullptr;
    u64 totalNodes = 0;  // of the winner and of those that confirmed their stop
    u64 localNodes = 0;  // the part of it that the racer of this process has counted
};

// Gives one node to the local process and to all clients at once, takes the result of the first that has
// finished and stops the others. All of them search the whole subtree; no work is divided.
//
// The calling thread only waits: searchPosition, the frames and the counters are the local racer's until the
// race is over. A client that does not confirm its stop at once is passed by, and takes part again when it
// has: nobody waits for it.
RaceResult race(const RaceCourse& course, const ProcessList& clients, const Position& position,
                const SearchJob& job);

}  // namespace valku
