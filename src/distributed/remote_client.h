#pragma once

#include "distributed/client_search_process.h"
#include "platform/socket.h"

namespace valku {

// A copy of the engine on another machine, or on this one, reached by TCP. It has a hash table of its own.
class RemoteClientSearchProcess final : public AbstractClientSearchProcess {
  public:
    // Calls the peer; a peer that did not get its port is looked for on the next ones. inError if there is
    // none. Waits for some seconds at the most.
    RemoteClientSearchProcess(const std::string& host, u16 port);

    // With the port that has answered.
    std::string name() const override;

    bool hasEnded() override { return true; }
    void cutOff() override { socket.shutDown(); }

  protected:
    i32 readData() override;
    void writeData(std::string_view text) override;
    bool hasData() override { return socket.hasInput(); }

  private:
    bool connect();

    const std::string peerHost;
    u16 peerPort;
    Socket socket;
};

}  // namespace valku
