#pragma once

#include "chess/types.h"
#include "platform/clock.h"
#include "platform/event.h"
#include "platform/shared_value.h"
#include "search/search_types.h"

// The flags by which the thread that reads commands and the thread that thinks deal with each other. There is
// no one variable for the state; idle, thinking, pondering and analysing are read from the flags:
//
//   idle        thinkingActive clear
//   thinking    thinkingActive set, pondering and analyzing clear
//   pondering   thinkingActive and pondering set
//   analysing   thinkingActive and analyzing set

namespace valku {

constexpr double unlimitedSeconds = 2000000.0;  // a scheduled time that stands for no limit

extern SharedFlag readyForGo;      // the thinking thread waits for a search request
extern SharedFlag thinkingActive;  // a search cycle has been requested or runs
extern SharedFlag searchRunning;   // the cycle has not finished its output yet
extern Event goEvent;              // starts a search cycle
extern Event idleEvent;            // the thinking thread has gone back to waiting
extern Event stopAckEvent;         // the end of a search that somebody waits for (stopAckWanted)
extern SharedFlag stopAckWanted;

extern SharedFlag pondering;             // the search runs on the opponent's time: no time limit ends it
extern SharedFlag analyzing;             // the book is skipped; after a move the search starts again
extern SharedFlag abortThinking;         // no move is to be made or announced
extern SharedFlag answerGiven;           // the answer, if any, is going out: the tail of the cycle is left
extern SharedFlag noAutoPonder;          // no self-pondering after this search
extern SharedFlag timeUsedUp;            // the search would have ended had it not been pondering
extern SharedFlag minimalSearchPending;  // a stop has to wait: the search is not deep enough yet
extern SharedFlag timeControlled;        // time management decides; otherwise maxDepth does
extern SharedFlag easyMode;              // no self-pondering
extern SharedFlag fritzMode;             // "hard" has no effect
extern SharedNumber maxDepth;            // plies; of searches that are not timed

// maxDepth of an analysis. It does not end there by itself, but waits.
constexpr i32 analysisDepth = 100;

enum EngineSide : int { engineWhite = 0, engineBlack = 1, engineNone = 2 };
extern int engineSide;

extern i32 aspirationWindow;  // half-width of the current window; a new one for each iteration

extern i32 quickPlay;    // above 0: the depth in plies of every search
extern i32 resignValue;  // 0 means never resign

// What the last main-line output said. Written by the thinking thread.
extern Move bestMove;
extern Line mainLine;  // moves[0] is bestMove, moves[1] the expected reply
extern i32 lastScore;
extern i32 lastDepth;

// Sums over the jobs of the current search.
extern u64 totalNodes;
extern i32 totalSelDepth;
extern u32 totalTbProbes;
extern u32 totalTbHits;

// The begin of the search, in the seconds of steadySeconds().
extern double startTime;

}  // namespace valku
