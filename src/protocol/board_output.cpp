#include "protocol/board_output.h"

#include "chess/board_text.h"
#include "platform/text_sink.h"
#include "protocol/protocol_mode.h"

namespace valku {

void printBoard() {
    if (protocolMode == protocolConsole) sendText(boardText(gamePosition));
}

}  // namespace valku
