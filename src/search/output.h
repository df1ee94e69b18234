#pragma once

#include <string_view>

namespace valku {

// The door to the outside. Everything that the engine says goes through it; the part that owns the door is
// handed in at start-up.
class TextSink {
  public:
    virtual ~TextSink() = default;

    // Sends the text whole. Any thread.
    virtual void send(std::string_view text) = 0;
};

extern TextSink* textSink;

inline void sendText(std::string_view text) {
    textSink->send(text);
}

}  // namespace valku
