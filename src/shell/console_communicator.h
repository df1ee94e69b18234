#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "platform/mutex.h"
#include "platform/new_file.h"
#include "platform/shared_value.h"
#include "platform/text_sink.h"
#include "platform/thread.h"
#include "shell/background_output.h"
#include "shell/peer_connection.h"

namespace valku {

enum class TextDirection { sent, received, internal };

// Input and output of the process: reads lines and hands each to dispatch(), and serialises everything that
// is sent, to standard output, to a peer and to the log. Texts of different threads never mix.
class ConsoleCommunicator final : public Thread, public TextSink {
  public:
    // Reads and dispatches until the input ends, then finishes the running search and ends the process. With
    // a port the commands come from the caller there.
    void run() override;

    // The port to listen on; 0, as at first, for standard input. Before `run`.
    void setPort(u16 number) { port = number; }

    // Whether there is a caller at the port. Any thread.
    bool hasCaller() const { return peer.isOpen(); }

    void send(std::string_view text) override { send(text, TextDirection::sent, true); }

    // `writeOut` false: the text goes to the log only. One system write, under the output mutex. Waits as
    // long as nobody reads.
    void send(std::string_view text, TextDirection direction, bool writeOut);

    bool keepsNotes() const override { return logEnabled; }
    void note(std::string_view text) override { send(text, TextDirection::internal, false); }
    void status(std::string_view text) override;

    // The last text of a process; waits a limited time for other output to finish.
    void farewell(std::string_view text);
    void awaitBackgroundOutput();

    // How many pieces of text have been written, and whether one is being written: it waits if nobody reads.
    u32 piecesWritten() const { return written; }
    bool isWriting() const { return writing; }

    // True once the input has ended; what came before may not have been carried out yet.
    bool hasInputEnded() const;

    // The file is opened by the first text that is logged after switching on; each time a new one. A log that
    // cannot be written is switched off.
    void setLogging(bool on);
    bool isLogging() const { return logEnabled; }

    // The next word of the protocol detection; empty at the end of input.
    std::string readWord();

    // Held while a command is carried out: a thread that holds it finds the game as the last command has left
    // it.
    Mutex commandMutex;

  private:
    bool readLine(std::string& line);
    void refuseLongLine();
    void write(std::string_view text);
    void log(std::string_view text, TextDirection direction);
    bool openLog();

    u16 port = 0;
    PeerConnection peer;
    std::atomic<bool> logEnabled{false};
    Mutex outputMutex;  // may be held for as long as nobody reads
    Mutex logMutex;     // always taken last, and never held for long
    NewFile logFile;
    BackgroundOutput background;  // stands for standard output where there is a port
    SharedFlag inputEnded{false};
    SharedFlag writing{false};  // under the output mutex, as the next
    SharedValue<u32> written{0};
};

extern ConsoleCommunicator communicator;

}  // namespace valku
