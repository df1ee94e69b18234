#pragma once

#include "platform/event.h"
#include "platform/shared_value.h"

// The flags by which the thread that reads commands and the thread that thinks deal with each other. There is
// no one variable for the state; it is read from the flags:
//
//   idle        thinkingActive clear
//   thinking    thinkingActive set, pondering clear, no analysis requested
//   pondering   thinkingActive and pondering set
//   analysing   thinkingActive set, analysis requested
// Any thread may read them. Who may write them is noted here and checked by scripts/check_layers.py.

namespace valku {

// Written by the command thread alone.

inline SharedFlag easyMode{true};  // no self-pondering; read by the thinking thread at the end of a search

// Written by both threads, and only in search_control.cpp, as the named acts of search_control.h.

inline SharedFlag readyForGo{false};            // the thinking thread waits for a request
inline SharedFlag thinkingActive{false};        // a search cycle has been requested or runs
inline SharedFlag searchRunning{false};         // the cycle has not finished its output yet
inline SharedFlag stopAckWanted{false};         // another thread waits for the end of the search
inline SharedFlag pondering{false};             // it runs on the opponent's time
inline SharedFlag abortThinking{false};         // no move is to be made or announced
inline SharedFlag answerGiven{false};           // the answer, if any, is being sent
inline SharedFlag noAutoPonder{false};          // no self-pondering after this search
inline SharedFlag timeUsedUp{false};            // it would have ended had it not been pondering
inline SharedFlag minimalSearchPending{false};  // a stop has to wait: the search is not deep enough yet
inline SharedFlag firstSearchOfGame{true};      // the next timed UCI search gets twice the time

// Signalled by the same acts.

inline Event goEvent;       // starts a search cycle
inline Event idleEvent;     // the thinking thread has gone back to waiting
inline Event stopAckEvent;  // the end of a search that somebody waits for

}  // namespace valku
