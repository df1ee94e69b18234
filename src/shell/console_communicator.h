#pragma once

#include <atomic>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/mutex.h"
#include "platform/thread.h"
#include "search/output.h"
#include "shell/peer_connection.h"

namespace valku {

enum class TextDirection { sent, received, internal };

// The single door to the outside: reads lines and hands each to the dispatcher, and serialises everything
// that goes out, to standard output, to a peer and to the log. Texts of different threads interleave only
// whole.
class ConsoleCommunicator final : public Thread, public TextSink {
  public:
    // Reads and dispatches until the input ends, then sees the running search off and ends the process. With
    // a port the commands come from whoever calls there.
    void run() override;

    // The port to listen on; 0, as at first, for standard input. Before `run`.
    void setPort(u16 number) { port = number; }

    void send(std::string_view text) override { send(text, TextDirection::sent, true); }

    // `writeOut` false: the text goes to the log only. One system write, under the output mutex.
    void send(std::string_view text, TextDirection direction, bool writeOut);

    bool keepsNotes() const override { return logEnabled; }
    void note(std::string_view text) override { send(text, TextDirection::internal, false); }
    void status(std::string_view text) override;

    // The file is opened by the first text that is logged after switching on; each time a new one.
    void setLogging(bool on);
    bool isLogging() const { return logEnabled; }

    // The next word of the protocol detection; empty at the end of input.
    std::string readWord();

    // Held while a command is carried out: whoever has it finds the game as the commands have left it.
    Mutex commandMutex;

  private:
    bool readLine(std::string& line);
    void log(std::string_view text, TextDirection direction);

    u16 port = 0;
    PeerConnection peer;
    std::atomic<bool> logEnabled{false};
    Mutex outputMutex;
    std::ofstream logStream;
};

extern ConsoleCommunicator communicator;

}  // namespace valku
