#pragma once

#include <string>
#include <string_view>

namespace valku {

// Where everything goes that the engine says. The shell provides the object at start-up, before the second
// thread starts.
class TextSink {
  public:
    virtual ~TextSink() = default;

    // Sends the whole text. May be called by any thread, like the other functions.
    virtual void send(std::string_view text) = 0;

    // For the log only; dropped if there is none.
    virtual bool keepsNotes() const { return false; }
    virtual void note(std::string_view) {}

    // For the log and this process's own output, never sent to a peer.
    virtual void status(std::string_view text) { send(text); }
};

inline TextSink* textSink = nullptr;

inline void sendText(std::string_view text) {
    textSink->send(text);
}

// What marks a line for the user, so that an interface does not take it for an answer. Written by the thread
// that reads the commands, whenever the protocol is settled; read by that thread.
inline std::string_view informationPrefix;

// Sends one line for the user of a root process; `text` comes without its end. On the thread that reads the
// commands.
inline void sendInformation(std::string_view text) {
    sendText(std::string(informationPrefix).append(text).append("\n"));
}

}  // namespace valku
