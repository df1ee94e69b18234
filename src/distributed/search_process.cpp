#include "distributed/search_process.h"

#include <mutex>
#include <string>

#include "distributed/diagnostics.h"
#include "platform/clock.h"

namespace valku {

namespace {

constexpr double stopPatienceSeconds = 3;  // for the answer to a job whose stop was requested

}  // namespace

bool AbstractSearchProcess::ensureThread() {
    const std::lock_guard lock(threadStart);
    if (!threadStarted) threadStarted = tryStart();
    return threadStarted;
}

void AbstractSearchProcess::takeJob(const SearchJob& newJob, Event* anyFinished) {
    job = newJob;
    anyFinishedEvent = anyFinished;
    finished = false;
}

void AbstractSearchProcess::passBy(const std::string& complaint) {
    const std::lock_guard lock(endOfJob);
    if (finished || inError) return;
    passingComplaint = complaint;
    patienceEnd = steadySeconds() + stopPatienceSeconds;
    passedBy = true;
}

void AbstractSearchProcess::checkPatience() {
    if (!passedBy || inError) return;
    const std::lock_guard lock(endOfJob);
    if (steadySeconds() < patienceEnd) return;
    inError = true;
    appendDiagnostic(connectionErrors, diagnosticTime() + passingComplaint);
}

void AbstractSearchProcess::completeJob(const char* recovered) {
    {
        // The signals belong to the step: a caller that sees the job completed may start the next one.
        const std::lock_guard lock(endOfJob);
        if (!passedBy) {
            finished = true;
            if (anyFinishedEvent) anyFinishedEvent->signal();
            doneEvent.signal();
            return;
        }
    }
    if (inError) {
        appendDiagnostic(connectionErrors,
                         "time = " + diagnosticTime() + ": " + recovered + " recovered from error state!");
    }
    inError = false;
    passedBy = false;  // last: from here on the next job may come
}

}  // namespace valku
