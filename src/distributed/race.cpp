#include "distributed/race.h"

#include <algorithm>

#include "chess/fen.h"
#include "distributed/diagnostics.h"
#include "search/format_text.h"
#include "search/output.h"

namespace valku {

namespace {

constexpr u32 stopPatienceMs = 3000;

void startAll(ProcessList& racers, const RaceCourse& course, const ProcessList& clients,
              const Position& position, const SearchJob& job) {
    racers.clear();
    const auto start = [&](AbstractSearchProcess& process) {
        if (process.inError) return;
        racers.push_back(&process);
        process.doneEvent.reset();
        process.startSearch(position, job.ncount, job.alpha, job.beta, job.distance, job.zws,
                            &course.anyFinished);
    };
    start(course.local);
    for (AbstractSearchProcess* const client : clients) start(*client);
}

std::string clientFailure(const RaceCourse& course, std::size_t index, const Position& position) {
    return diagnosticTime() + " put " + course.client + " client " + std::to_string(index) +
           " in error state (" + course.function + ")! position: " + writeFen(position);
}

// Waits for the process to come to rest. False if it does not, or has failed meanwhile.
bool awaitRest(AbstractSearchProcess& process, const RaceCourse& course, std::size_t index,
               const Position& position) {
    if (process.inError) return false;
    const bool came =
        index == 0 ? (process.doneEvent.wait(), true) : process.doneEvent.waitFor(stopPatienceMs);
    if (!came && process.giveUp()) appendDiagnostic(connectionErrors, clientFailure(course, index, position));
    return process.finished;
}

// The lines of a round in which nobody has finished, though somebody said so.
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
                const SearchJob& job) {
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
            (*winner)->getResult(&result.winner);
            result.by = *winner;
            result.totalNodes = result.winner.nodes;
            noteWinner(course, job, static_cast<std::size_t>(winner - racers.begin()));
        } else {
            reportFailure(course, position, job, racers.size());
        }

        // Step 3. The others stop, and are waited for.
        for (AbstractSearchProcess* const process : racers) process->requestStop();
        for (std::size_t index = 0; index < racers.size(); ++index) {
            AbstractSearchProcess& process = *racers[index];
            if (!awaitRest(process, course, index, position)) continue;
            SearchResult partial;
            const u64 nodes = process.getResult(&partial)->nodes;
            if (&process == &course.local) result.localNodes = nodes;
            if (&process != result.by) result.totalNodes += nodes;
        }
        clearStop(course.stopOfLocal);

        // Step 4. A wake-up from an old signal: nobody has won. Everybody starts again.
        if (result.by) return result;
    }
}

}  // namespace valku
