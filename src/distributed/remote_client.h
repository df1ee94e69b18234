#pragma once

#include "distributed/client_search_process.h"
#include "platform/socket.h"

namespace valku {

// A copy of the engine on another machine, or on this one, reached by TCP. It has a hash table of its own.
class RemoteClientSearchProcess final : public AbstractClientSearchProcess {
  public:
    // Calls the peer, at 30 ports from `port` on: a peer that finds its port taken listens on the next free
    // one. inError if none answers. Waits for some seconds at the most.
    RemoteClientSearchProcess(const std::string& host, u16 port);

    // With the port that answered.
    std::string name() const override;

    bool hasEnded() override { return true; }  // nobody waits for another machine
    void cutOff() override { socket.shutDown(); }

  protected:
    i32 readData() override;
    void writeData(std::string_view text) override;
    bool hasData() override { return socket.hasInput(); }

  private:
    bool connect();

    const std::string peerHost;
    u16 peerPort;  // the one that answered
    Socket socket;
};

}  // namespace valku
