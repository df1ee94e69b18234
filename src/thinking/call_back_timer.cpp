#include "thinking/call_back_timer.h"

namespace valku {

CallBackTimer::CallBackTimer(u32 interval, void (*function)()) : intervalMs(interval), callback(function) {
    start();
}

CallBackTimer::~CallBackTimer() {
    active = false;
    wakeEvent.signal();
    finished.wait();
}

void CallBackTimer::cancel() {
    active = false;
    wakeEvent.signal();
    tickDone.wait();
}

void CallBackTimer::run() {
    wakeEvent.waitFor(intervalMs);
    if (active) callback();
    tickDone.signal();
    finished.signal();
}

}  // namespace valku
