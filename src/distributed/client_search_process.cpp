#include "distributed/client_search_process.h"

#include <algorithm>
#include <mutex>

#include "distributed/diagnostics.h"
#include "distributed/wire_protocol.h"
#include "platform/clock.h"

namespace valku {

namespace {

// No client writes lines of that length; the rest of one is not waited for.
constexpr std::size_t longestPending = 65536;

}  // namespace

void AbstractClientSearchProcess::startThread() {
    inError = !ensureThread();
}

void AbstractClientSearchProcess::sendMessage(std::string_view text) {
    const std::lock_guard lock(sendMutex);
    writeData(text);
}

void AbstractClientSearchProcess::startSearch(const Position& position, const SearchJob& newJob,
                                              Event* anyFinished) {
    copyPosition(jobPosition, position);
    takeJob(newJob, anyFinished);
    jobEvent.signal();
    jobSent.wait();
}

void AbstractClientSearchProcess::quit() {
    leaving = true;
    sendMessage("quit\n");
    jobEvent.signal();
}

void AbstractClientSearchProcess::awaitThread() {
    if (threadStarted) threadEnded.wait();
}

void AbstractClientSearchProcess::run() {
    for (;;) {
        jobEvent.wait();
        if (leaving) break;
        doneEvent.reset();
        work();
    }
    // A search that is being shut down may still hand out a job.
    inError = true;
    jobSent.signal();
    doneEvent.signal();
    threadEnded.signal();
}

void AbstractClientSearchProcess::work() {
    // An answer that no job asked for would be taken for the answer to this one.
    const bool unasked = !pending.empty() || (hasData() && receive() && !pending.empty());
    if (!unasked) sendMessage(composeJob(jobPosition, job));
    jobSent.signal();

    std::string response = pending;
    if (!unasked) getNextMessage(response);
    const std::optional<SearchResult> answer = unasked ? std::nullopt : parseResult(response);
    if (!answer) {
        fail(response);
        return;
    }
    result = *answer;
    completeJob("ACSP");
}

// The client is out of use for good. Whoever waits for it is woken.
void AbstractClientSearchProcess::fail(const std::string& response) {
    inError = true;
    constexpr std::size_t shown = 1023;
    const std::string line = response.substr(0, std::min(response.find('\n'), shown));
    if (!leaving) {
        appendDiagnostic(connectionErrors,
                         diagnosticTime() + " put client in error state (ACPS::run)!\nresponse = " + line);
    }
    doneEvent.signal();
    sleepMilliseconds(1);
}

bool AbstractClientSearchProcess::receive() {
    const i32 count = readData();
    if (count > 0) pending.append(readBuffer.data(), static_cast<std::size_t>(count));
    return count >= 0;
}

bool AbstractClientSearchProcess::takeLine(std::string& line) {
    const std::size_t end = pending.find('\n');
    if (end == std::string::npos) return false;
    line = pending.substr(0, end);
    pending.erase(0, end + 1);
    return true;
}

void AbstractClientSearchProcess::getNextMessage(std::string& line) {
    while (!takeLine(line)) {
        checkPatience();
        if (pending.size() < longestPending && receive()) continue;
        inError = true;
        if (!leaving) {
            appendDiagnostic(connectionErrors,
                             diagnosticTime() + " put client in error state (ACPS::getNextMessage)!");
        }
        line = "err";
        return;
    }
}

}  // namespace valku
