#pragma once

namespace valku {

// What the commands need of the shell around them. Handed in at start-up.
class EngineServices {
  public:
    virtual ~EngineServices() = default;

    virtual void setLogging(bool on) = 0;
    virtual bool isLogging() const = 0;

    // Clients, shared memory and log in order, then the end of the process.
    [[noreturn]] virtual void quit(int exitCode = 0) = 0;
};

inline EngineServices* engineServices = nullptr;

}  // namespace valku
