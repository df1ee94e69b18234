#pragma once

#include <array>
#include <string>
#include <string_view>

#include "distributed/search_process.h"

namespace valku {

// The proxy of another engine, whatever carries the text to it. A client that fails is taken out of use; one
// that is late comes back when its answer does.
//
// The thread of the proxy sends the jobs and reads the answers. The objects are made and destroyed while no
// search runs.
class AbstractClientSearchProcess : public AbstractSearchProcess {
  public:
    using AbstractSearchProcess::AbstractSearchProcess;

    // Returns when the job is on its way.
    void startSearch(const Position& position, const SearchJob& newJob, Event* anyFinished) override;

    void requestStop() override { sendMessage("client_stop\n"); }
    void prepareSearch() override { sendMessage("client_preparesearch\n"); }
    void run() override;

    // The end of a client, in this order and on one thread. Sends quit; the thread of the proxy ends as soon
    // as the client is silent.
    void quit();

    // Is the client gone, or nothing that would have to be waited for?
    virtual bool hasEnded() = 0;

    // Kills a client that has not ended by itself, or closes the connection. readData soon sees the end.
    virtual void cutOff() = 0;

    // Waits for the thread; once. The proxy may then be destroyed.
    void awaitThread();

  protected:
    // The last act of a constructor whose client is there; inError if the system gives no thread.
    void startThread();

    // Any thread.
    void sendMessage(std::string_view text);

    // Waits for text, readPatienceMs at the most, and puts it into readBuffer. The number of bytes, 0 if
    // none came; negative at the end or after a failure. On the proxy's thread, as hasData.
    virtual i32 readData() = 0;

    // A client that takes nothing for writePatienceMs is cut off. Under sendMutex.
    virtual void writeData(std::string_view text) = 0;

    // Would readData return at once?
    virtual bool hasData() = 0;

    // How long a silent client is waited for between two looks at passBy.
    static constexpr int readPatienceMs = 100;

    // A client that works took what it was sent before long ago; whoever writes holds up a search.
    static constexpr int writePatienceMs = 250;

    std::array<char, 32768> readBuffer{};

  private:
    void work();
    void fail(const std::string& response);
    void getNextMessage(std::string& line);
    bool receive();
    bool takeLine(std::string& line);

    Mutex sendMutex;  // one text at a time
    Event jobSent;
    Event threadEnded;
    Position jobPosition;       // a copy, so that the caller may go on; written and read as `job`
    SharedFlag leaving{false};  // set by quit, read by the proxy's thread
    std::string pending;        // received, and not yet taken as a line; of the proxy's thread
};

}  // namespace valku
