#include "distributed/search_process.h"

#include <mutex>
#include <string>

#include "distributed/diagnostics.h"

namespace valku {

bool AbstractSearchProcess::giveUp() {
    const std::lock_guard lock(endOfJob);
    if (!finished) inError = true;
    return inError;
}

void AbstractSearchProcess::completeJob(Event* anyFinished, const char* recovered) {
    {
        const std::lock_guard lock(endOfJob);
        finished = !inError;
    }
    if (!finished) {
        appendDiagnostic(connectionErrors,
                         "time = " + diagnosticTime() + ": " + recovered + " recovered from error state!");
        inError = false;
        return;
    }
    if (anyFinished) anyFinished->signal();
    doneEvent.signal();
}

}  // namespace valku
