#include "protocol/game_result.h"

#include "chess/game_end.h"
#include "platform/text_sink.h"
#include "protocol/protocol_mode.h"

namespace valku {

namespace {

struct ResultText {
    GameEnd end;
    int result;
    const char* text;
};

constexpr int gameGoesOn = 3;

constexpr ResultText resultTexts[] = {
    {GameEnd::fiftyMoves, 0,
     "I want to claim a draw by 50-moves-rule!\nresult 1/2-1/2 {Draw by 50-moves-rule}\n"},
    {GameEnd::repetition, 0,
     "I want to claim a draw by third-time-repetition!\nresult 1/2-1/2 {Draw by repetition}\n"},
    {GameEnd::insufficientMaterial, 0, "result 1/2-1/2 {Draw by insufficient material}\n"},
    {GameEnd::whiteMates, 1, "result 1-0 {White mates}\n"},
    {GameEnd::blackMates, 2, "result 0-1 {Black mates}\n"},
    {GameEnd::stalemate, 0, "result 1/2-1/2 {Stalemate}\n"},
};

}  // namespace

int checkGameEnd(bool claim) {
    const GameEnd end = findGameEnd(claim);
    for (const ResultText& row : resultTexts) {
        if (row.end != end) continue;
        sendText(row.text);
        return row.result;
    }
    return gameGoesOn;
}

bool checkResign(i32 score) {
    if (score > -resignValue) return false;
    if (protocolMode == protocolConsole) sendText("I resign. Congratulations!\n");
    if (protocolMode == protocolXboard) sendText("resign\n");
    return true;
}

}  // namespace valku
