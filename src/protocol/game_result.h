#pragma once

#include "chess/types.h"

namespace valku {

// Reports the end of the game if it is over, claiming draws with `claim`. 0 draw, 1 white has won, 2 black
// has won, 3 the game goes on.
int checkGameEnd(bool claim);

// 0 means never resign. A setting.
inline i32 resignValue = 0;

// Resigns, in the words of the protocol, at or below -resignValue. True if so.
bool checkResign(i32 score);

}  // namespace valku
