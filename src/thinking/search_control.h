#pragma once

#include <functional>

#include "chess/position.h"
#include "platform/shut_down.h"

// Starting and ending search cycles from the thread that reads the commands. A wake-up is never lost: whoever
// waits for an end has said so before the end can come.

namespace valku {

// Starts a search cycle. The thinking thread must be idle; what the search reads must be set. Clears old
// stops.
void requestSearch();

// Stops the search where it stands and waits until its output is finished.
void haltSearch();

// Waits until the search is deep enough, then ends it with its normal output.
void moveNow();

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

// At the end of the input: a search that has a limit is waited for, any other is ended with its answer.
void finishAtEndOfInput();

// To be called before a search begins. False if the process is about to end: the tables may be gone then. A
// search that is announced in time is waited for.
bool announceSearch();

// Ends a running search, or work on its tables, so that they can be given back; all calls together wait for
// at most two seconds. Any thread.
void endSearchForShutDown();

// Whether somebody searches or works on the tables.
bool areTablesInUse();

// The thinking thread's side: work on the tables of a search that has ended. The end of the process waits for
// it, so it has to leave off when shutDownBegun is set; nothing is done if it is set already.
void workOnTables(void (*work)());

// The two together run a search and wait for its end: the first before the request, so that the end of a very
// short search is not missed. In between nobody else may wait for an end.
void expectSearchEnd();
void awaitSearchEnd();

// The same for at most so many milliseconds; the end is still wanted then. True at the end.
bool awaitSearchEnd(u32 milliseconds);

// Tells the running search to end where it stands, with its answer; does not wait for that.
void hastenSearchEnd();

// gamePosition during a search: changeGame on the thinking thread, copyGame on any other that cannot be sure
// of the search's end. While a ponder search runs, gamePosition stands still.
void changeGame(const std::function<void()>& change);
Position copyGame();

// The thinking thread's side: goes over from a search that has been answered to one on the expected reply.
// False if there is to be none.
bool beginPonderSearch(Move expectedReply);

// The thinking thread's side: the output of a search is complete.
void acknowledgeSearchEnd();

// What has to happen to the shown game when a ponder search is taken back; set by the front-end.
extern void (*ponderingTakenBack)();

}  // namespace valku
