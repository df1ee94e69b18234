#include "distributed/local_client.h"

#include <algorithm>

#include "platform/clock.h"

namespace valku {

LocalClientSearchProcess::LocalClientSearchProcess(const std::string& programPath,
                                                   const std::vector<std::string>& arguments)
    : AbstractClientSearchProcess(ProcessKind::localClient) {
    inError = !child.start(programPath, arguments);
    if (!inError) startThread();
}

// A child that has ended gives an empty line, which is no answer.
i32 LocalClientSearchProcess::readData() {
    constexpr int forEver = -1;
    std::string text;
    if (child.readSome(text, forEver) != ChildProcess::Output::some) {
        child.hasEnded();  // the system may forget it
        readBuffer[0] = '\n';
        return 1;
    }
    std::copy(text.begin(), text.end(), readBuffer.begin());
    return static_cast<i32>(text.size());
}

void LocalClientSearchProcess::endConnection() {
    constexpr int patienceMs = 1000;
    for (int waited = 0; !child.hasEnded() && waited < patienceMs; ++waited) sleepMilliseconds(1);
    child.terminate();
    child.wait();
}

}  // namespace valku
