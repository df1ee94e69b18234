#include "distributed/local_client.h"

#include <algorithm>

namespace valku {

LocalClientSearchProcess::LocalClientSearchProcess(const std::string& programPath,
                                                   const std::vector<std::string>& arguments)
    : AbstractClientSearchProcess(ProcessKind::localClient) {
    inError = !child.start(programPath, arguments);
    if (!inError) startThread();
}

// A child that has ended gives an empty line, which is no answer.
i32 LocalClientSearchProcess::readData() {
    std::string text;
    const ChildProcess::Output output = child.readSome(text, readPatienceMs);
    if (output == ChildProcess::Output::none) return 0;
    if (output == ChildProcess::Output::ended) {
        child.hasEnded();  // collects its exit status
        readBuffer[0] = '\n';
        return 1;
    }
    std::copy(text.begin(), text.end(), readBuffer.begin());
    return static_cast<i32>(text.size());
}

void LocalClientSearchProcess::writeData(std::string_view text) {
    if (!child.write(text, writePatienceMs)) child.terminate();
}

void LocalClientSearchProcess::cutOff() {
    child.terminate();
    child.wait();
}

}  // namespace valku
