#pragma once

#include <array>
#include <string>
#include <string_view>

#include "distributed/search_process.h"
#include "search/search_job.h"

namespace valku {

// The proxy of another engine, on whatever road its text travels. A client that fails is taken out of use;
// one that is late comes back when its answer does.
//
// The thread of a proxy sends the jobs and reads the answers. The objects are made and destroyed while no
// search runs.
class AbstractClientSearchProcess : public AbstractSearchProcess {
  public:
    using AbstractSearchProcess::AbstractSearchProcess;

    void run() override;

    // Returns when the job is on its way.
    void startSearch(const Position& position, i32 ncount, i32 alpha, i32 beta, i32 distance, bool zws,
                     Event* anyFinished) override;
    void requestStop() override { sendMessage("client_stop\n"); }
    SearchResult* getResult(SearchResult* destination) override;
    i32 getAlpha() const override { return job.alpha; }
    i32 getBeta() const override { return job.beta; }
    bool isIdle() const override { return idle; }
    void prepareSearch() override { sendMessage("client_preparesearch\n"); }

    // Says quit to the client and lets the thread of the proxy end as soon as the client is silent.
    void quit() override;

    // Behind `quit`: is the client gone, or nothing that would have to be waited for?
    virtual bool hasEnded() = 0;

    // Ends the client the rough way if it has not ended by itself. readData soon sees the end.
    virtual void cutOff() = 0;

    // Behind `cutOff`, once: waits for the thread. The proxy may then be destroyed.
    void awaitThread();

  protected:
    // To be called as the last act of a constructor whose client is there; inError if there is no thread.
    void startThread();

    void sendMessage(std::string_view text);

    // Waits for text, readPatienceMs at the most, and puts it into readBuffer. The number of bytes, 0 if
    // none came; negative at the end or after a failure.
    virtual i32 readData() = 0;

    // A client that takes nothing for writePatienceMs is cut off.
    virtual void writeData(std::string_view text) = 0;

    // Would readData come back at once?
    virtual bool hasData() = 0;

    // How often a silent client is thought of.
    static constexpr int readPatienceMs = 100;

    // A client that works has long taken what it was sent before; whoever writes holds up a search.
    static constexpr int writePatienceMs = 250;

    std::array<char, 32768> readBuffer{};

  private:
    void work();
    void fail(const std::string& response);
    void getNextMessage(std::string& line);
    bool receive();
    bool takeLine(std::string& line);

    SearchResult result;
    Mutex sendMutex;
    Event* anyFinishedEvent = nullptr;
    Event jobEvent;
    Event jobSent;
    Event threadEnded;
    Position jobPosition;  // a copy of its own, so that the caller may go on
    SearchJob job;
    SharedFlag idle{false};
    SharedFlag leaving{false};
    std::string pending;  // received, and not yet taken as a line
};

}  // namespace valku
