#include "distributed/race.h"

#include <algorithm>

#include "chess/fen.h"
#include "distributed/diagnostics.h"
#include "platform/clock.h"
#include "platform/format_text.h"
#include "platform/text_sink.h"

namespace valku {

namespace {

// How long a race waits for all clients together. A client that works confirms its stop within a fraction of
// a millisecond, if the machine has time for it.
constexpr double graceSeconds = 0.020;
constexpr double graceOfStoppedSearch = 0.005;  // if the whole search is to stop

void startAll(ProcessList& racers, const RaceCourse& course, const ProcessList& clients,
              const Position& position, const SearchJob& job) {
    racers.clear();
    const auto start = [&](AbstractSearchProcess& process) {
        if (!process.isAvailable()) return;
        racers.push_back(&process);
        process.doneEvent.reset();
        process.startSearch(position, job, &course.anyFinished);
    };
    start(course.local);
    for (AbstractSearchProcess* const client : clients) start(*client);
}

std::string clientFailure(const RaceCourse& course, std::size_t index, const Position& position) {
    return std::string(" put ") + course.client + " client " + std::to_string(index) + " in error state (" +
           course.function + ")! position: " + writeFen(position);
}

// A stop of the whole search shortens the time, also while it runs.
bool isGraceOver(double since) {
    const double used = steadySeconds() - since;
    return used >= (stopSignalOutside() ? graceOfStoppedSearch : graceSeconds);
}

bool confirmsStop(AbstractSearchProcess& process, double since) {
    constexpr u32 sliceMs = 1;
    if (process.doneEvent.waitFor(0)) return true;  // the clients before it may have used up the time
    while (!isGraceOver(since)) {
        if (process.doneEvent.waitFor(sliceMs)) return true;
    }
    return false;
}

// Waits for all racers to confirm their stop, for the local one as long as it takes, and passes by those that
// do not. Adds up what they have counted.
void awaitStops(const ProcessList& racers, const RaceCourse& course, const Position& position,
                RaceResult& result) {
    course.local.doneEvent.wait();
    const double since = steadySeconds();
    for (std::size_t index = 0; index < racers.size(); ++index) {
        AbstractSearchProcess& process = *racers[index];
        const bool isLocal = &process == &course.local;
        if (!isLocal && !process.inError && !confirmsStop(process, since)) {
            process.passBy(clientFailure(course, index, position));
        }
        if (!process.finished) continue;
        const u64 nodes = process.getResult().nodes;
        if (isLocal) result.localNodes = nodes;
        if (&process != result.by) result.totalNodes += nodes;
    }
}

// For a round in which nobody has finished, though anyFinished was signalled.
void reportFailure(const RaceCourse& course, const Position& position, const SearchJob& job,
                   std::size_t racers) {
    appendDiagnostic(raceErrors, std::string(course.function) + ", position: " + writeFen(position));
    appendDiagnostic(raceErrors, course.describe(job, static_cast<int>(racers)));
}

void noteWinner(const RaceCourse& course, const SearchJob& job, std::size_t index) {
    if (!textSink->keepsNotes()) return;
    const std::string winner =
        index == 0 ? course.local.name() : std::string(course.client) + " client " + std::to_string(index);
    textSink->note(
        formatText("race at ply %i depth %i: won by %s", job.ncount, job.distance, winner.c_str()));
}

}  // namespace

RaceResult race(const RaceCourse& course, const ProcessList& clients, const Position& position,
                const SearchJob& wanted) {
    // A client searches no deeper, so nobody does: the results would not compare.
    SearchJob job = wanted;
    job.distance = std::min(job.distance, deepestJob);
    ProcessList racers;
    racers.reserve(clients.size() + 1);
    for (;;) {
        // Step 1. Everybody starts.
        course.anyFinished.reset();
        startAll(racers, course, clients, position, job);

        // Step 2. The first to finish has won; of several the first of the list.
        course.anyFinished.wait();
        const auto winner =
            std::find_if(racers.begin(), racers.end(),
                         [](const AbstractSearchProcess* process) -> bool { return process->finished; });
        RaceResult result;
        if (winner != racers.end()) {
            result.winner = (*winner)->getResult();
            result.by = *winner;
            result.totalNodes = result.winner.nodes;
            noteWinner(course, job, static_cast<std::size_t>(winner - racers.begin()));
        } else {
            reportFailure(course, position, job, racers.size());
        }

        // Step 3. The others stop, and are waited for.
        for (AbstractSearchProcess* const process : racers) process->requestStop();
        awaitStops(racers, course, position, result);
        clearStop(course.stopOfLocal);

        // Step 4. The signal was an old one and nobody has won: everybody starts again.
        if (result.by) return result;
    }
}

}  // namespace valku
