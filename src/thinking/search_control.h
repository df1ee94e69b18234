#pragma once

#include <functional>

#include "chess/position.h"
#include "thinking/search_request.h"

// Starting, ending and steering search cycles: the only place where the flags that both threads write are
// written. No wake-up is lost: a thread that waits for an end has announced that before the end can come.

namespace valku {

// ---- The command thread's side.

// Starts a search cycle. The thinking thread must be idle; gamePosition must be set. Clears old stops.
// Nothing happens in a process other than the root, which has no thinking thread.
void requestSearch(const SearchRequest& request);

// The limits and clocks of the searches that the thinking thread begins by itself from now on.
void renewLimits(const SearchRequest& request);

// Stops the search where it stands and waits until its output is finished.
void haltSearch();

// Waits until the search is deep enough, then ends it with its normal output.
void moveNow();

// The same, and it is no ponder search any more.
void stopSearch();

// The opponent has played the expected move: the search goes on under its time limits, and ends if they are
// used up already.
void ponderHit();

// Clears what is left of a ponder search, without taking a move back. The thinking thread must be idle, or
// its end must be awaited next.
void forgetPondering();

// Ends a ponder search without output, waits for the idle state and takes the expected move back.
void stopPondering();

// Ends whatever runs without output and waits for the idle state. (UCI searches answer all the same.)
void stopThinking();

// Ends whatever runs, with its answer, and waits for the idle state.
void finishThinking();

// False while a search is at work. A cycle that has given its answer already is waited for.
bool isSettled();

// Whether a search is at work that has not come to its answer yet.
bool isAnswerOpen();

// Waits until a search runs or could begin at once.
void awaitReadiness();

// At the end of the input: a search that has a limit is waited for, any other is ended with its answer.
void finishAtEndOfInput();

// The next timed UCI search is the first of its game.
void beginNewGame();

// The two together run a search and wait for its end: the first before the request, so that the end of a very
// short search is not missed. In between nobody else may wait for an end.
void expectSearchEnd();
void awaitSearchEnd();

// The same for at most so many milliseconds; the end is still wanted then. True at the end.
bool awaitSearchEnd(u32 milliseconds);

// Makes the running search end at its next node, with its answer; does not wait for that.
void hastenSearchEnd();

// What has to happen to the shown game when a ponder search is taken back; set by the front-end.
extern void (*ponderingTakenBack)();

// ---- Any thread.

// To be called before a search begins. False if the process is about to end: its tables may be gone then. The
// end of the process waits for a search that was announced in time.
bool announceSearch();

// The output of a search is complete.
void acknowledgeSearchEnd();

// Ends a running search, or work on its tables, so that they can be given back; all calls together wait for
// at most two seconds.
void endSearchForShutDown();

// Whether a search or other work on the tables is going on.
bool areTablesInUse();

// gamePosition during a search: changeGame on the thinking thread, copyGame on any other that cannot be sure
// of the search's end. While a ponder search runs, gamePosition stands still.
void changeGame(const std::function<void()>& change);
Position copyGame();

// ---- The thinking thread's side.

// Waits for a request.
void awaitRequest();

// What the search that begins now is asked for.
SearchRequest takeRequest();

// The thinking thread goes back to waiting.
void becomeIdle();

// A stop need not wait for the search to get deeper any more.
void allowStop();

// Whether the search would have ended by now had it not been pondering. The timer's thread says so too.
void setTimeUsedUp(bool used);

// The time limit has been reached: ends the search unless it ponders. On the timer's thread.
void timeLimitReached();

// True for the first timed UCI search of a game, once.
bool isFirstSearchOfGame();

// The answer, if there is one, goes out now.
void beginAnswer();

// No self-pondering after this search.
void forgoPondering();

// Goes over from a search that has been answered to one on the expected reply. False if there is to be none.
bool beginPonderSearch(Move expectedReply);

// Work on the tables of a search that has ended. The end of the process waits for it, so it has to return
// early when shutDownBegun is set; nothing is done if it is set already.
void workOnTables(void (*work)());

}  // namespace valku
