#include "distributed/search_process.h"

#include <mutex>
#include <string>

#include "distributed/diagnostics.h"
#include "platform/clock.h"

namespace valku {

namespace {

constexpr double stopPatienceSeconds = 3;

}  // namespace

bool AbstractSearchProcess::hasThread() {
    const std::lock_guard lock(threadStart);
    if (!threadStarted) threadStarted = tryStart();
    return threadStarted;
}

bool AbstractSearchProcess::passBy(const std::string& complaint) {
    const std::lock_guard lock(endOfJob);
    if (finished || inError) return false;
    passingComplaint = complaint;
    patienceEnd = steadySeconds() + stopPatienceSeconds;
    passedBy = true;
    return true;
}

void AbstractSearchProcess::checkPatience() {
    if (!passedBy || inError) return;
    const std::lock_guard lock(endOfJob);
    if (steadySeconds() < patienceEnd) return;
    inError = true;
    appendDiagnostic(connectionErrors, diagnosticTime() + passingComplaint);
}

void AbstractSearchProcess::completeJob(Event* anyFinished, const char* recovered) {
    {
        // The signals belong to the step: a caller that sees the job completed may start the next one.
        const std::lock_guard lock(endOfJob);
        if (!passedBy) {
            finished = true;
            if (anyFinished) anyFinished->signal();
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
