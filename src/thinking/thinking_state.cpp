#include "thinking/thinking_state.h"

namespace valku {

SharedFlag readyForGo{false};
SharedFlag thinkingActive{false};
SharedFlag searchRunning{false};
Event goEvent;
Event idleEvent;
Event stopAckEvent;
SharedFlag stopAckWanted{false};

SharedFlag pondering{false};
SharedFlag analyzing{false};
SharedFlag abortThinking{false};
SharedFlag answerGiven{false};
SharedFlag noAutoPonder{false};
SharedFlag timeUsedUp{false};
SharedFlag minimalSearchPending{false};
SharedFlag timeControlled{false};
SharedFlag easyMode{true};
SharedFlag fritzMode{false};
SharedNumber maxDepth{10};
int engineSide = engineBlack;

i32 aspirationWindow = 25;

i32 quickPlay = 0;
i32 resignValue = 0;

Move bestMove = nullMove;
Line mainLine{};
i32 lastScore = 0;
i32 lastDepth = 0;

u64 totalNodes = 0;
i32 totalSelDepth = 0;
u32 totalTbProbes = 0;
u32 totalTbHits = 0;

double startTime = 0;

}  // namespace valku
