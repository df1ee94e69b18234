#include "tablemaker/commands.h"

#include "chess/attacks.h"
#include "chess/fen.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "chess/move_text.h"
#include "platform/raw_io.h"
#include "tablebases/probe.h"
#include "tablemaker/one_ply_minimax.h"

namespace valku {

namespace {

std::string valueText(i32 value) {
    if (value == noTableValue) return "no table";
    if (value == 0) return "draw";
    const int distance = movesToMate(value);
    if (distance == 0) return "mated";
    return (value > 0 ? "mate in " : "mated in ") + movesText(distance);
}

i32 lookUp(const Position& position) {
    return position.whiteMen + position.blackMen == 2 ? 0 : probeTableValue(position);
}

void probeFen(const std::string& fen) {
    if (!readFen(fen)) throw Fault(fen + ": is no position");
    Position& position = gamePosition;
    const i32 value = valueOf(position, lookUp);
    std::string text = fen + ": " + valueText(value);
    if (value == noTableValue) throw Fault(text);
    text += ", value " + std::to_string(value) + "\n";
    std::string best;
    MoveList list;
    generateAllMoves(position, list);
    for (i32 i = 0; i < list.count; ++i) {
        makeMove(position, list.moves[i]);
        const bool isBest = !leftKingInCheck(position) && valueBeforeMove(valueOf(position, lookUp)) == value;
        unmakeMove(position);
        if (isBest) best += " " + moveToUciText(list.moves[i], *position.state);
    }
    writeStandardOutput(text + (best.empty() ? "" : "  best:" + best + "\n"));
}

}  // namespace

int probePositions(const TablesArguments& arguments) {
    if (!registerTables(arguments.directory)) return 1;
    return forEachReportingFaults(arguments.words, probeFen);
}

}  // namespace valku
