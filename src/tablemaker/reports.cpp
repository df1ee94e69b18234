#include "tablemaker/commands.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "chess/attacks.h"
#include "chess/fen.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "chess/move_text.h"
#include "platform/clock.h"
#include "platform/raw_io.h"
#include "tablebases/probe.h"
#include "tablebases/registration.h"
#include "tablebases/table_entry.h"
#include "tablemaker/compressor.h"
#include "tablemaker/table_file.h"
#include "tablemaker/value_by_moves.h"

namespace valku {

namespace {

int complain(const std::string& text) {
    writeErrorOutput(text + "\n");
    return 1;
}

// Calls use(file, bytes) for every table among the files; it returns an exit code of its own. The others are
// told on standard error. Returns the highest exit code.
template <class Use>
int forEachTable(const std::vector<std::string>& paths, Use use) {
    int exitCode = 0;
    for (const std::string& path : paths) {
        std::vector<u8> bytes;
        std::string error = path + ": is not the name of a table";
        const auto file = tableFileOf(path);
        exitCode =
            std::max(exitCode, file && readTable(*file, bytes, error) ? use(*file, bytes) : complain(error));
    }
    return exitCode;
}

std::string movesText(int moves) {
    return std::to_string(moves) + (moves == 1 ? " move" : " moves");
}

int tellOfTable(const TableFile& file, const std::vector<u8>& bytes) {
    u64 wins = 0, draws = 0, losses = 0, longest = 0;
    int distance = -1;
    for (u64 index = 0; index < bytes.size(); ++index) {
        const EndingState state = stateOfTableByte(static_cast<i8>(bytes[index]));
        if (state == stateIllegal) continue;
        ++(isWin(state) ? wins : isLoss(state) ? losses : draws);
        if (state == stateUnknown || distanceOf(state) <= distance) continue;
        distance = distanceOf(state);
        longest = index;
    }
    const std::string name = recordOf(file.tbClass).name;
    std::string text = file.path + ": " + name + ", " + (file.side == 0 ? "first" : "second") +
                       " side to move, " + std::to_string(bytes.size()) + " entries\n  " +
                       std::to_string(wins) + " wins, " + std::to_string(draws) + " draws, " +
                       std::to_string(losses) + " losses\n";
    static Position position;
    if (distance > 0 && positionOfEntry({file.tbClass, file.side, longest}, position)) {
        text += "  longest mate: " + movesText(distance) + ", " + writeFen(position) + "\n";
    }
    writeStandardOutput(text);
    return 0;
}

std::string verdictText(i32 value) {
    if (value == noTableValue) return "no table";
    if (value == 0) return "draw";
    const int distance = value > 0 ? 32767 - value : value + 32766;
    if (distance == 0) return "mated";
    return (value > 0 ? "mate in " : "mated in ") + movesText(distance);
}

i32 lookUp(const Position& position) {
    return position.whiteMen + position.blackMen == 2 ? 0 : probeTableValue(position);
}

int probeFen(const std::string& fen) {
    if (!readFen(fen)) return complain(fen + ": is no position");
    Position& position = gamePosition;
    const i32 value = valueOf(position, lookUp);
    std::string text = fen + ": " + verdictText(value);
    if (value == noTableValue) return complain(text);
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
    return 0;
}

}  // namespace

int compressTables(const TablesArguments& arguments) {
    return forEachTable(arguments.words, [&](const TableFile& file, const std::vector<u8>& bytes) {
        if (file.compressed) return complain(file.path + ": is compressed already");
        const std::string path = file.path + ".emd";
        const double startTime = steadySeconds();
        const u64 size = compressTable(bytes, path, arguments.threads);
        if (!size) return complain(path + ": cannot be written");
        char text[96];
        std::snprintf(text, sizeof text, ": %zu bytes to %llu, %.1f s\n", bytes.size(),
                      static_cast<unsigned long long>(size), steadySeconds() - startTime);
        writeStandardOutput(path + text);
        return 0;
    });
}

int expandTables(const TablesArguments& arguments) {
    return forEachTable(arguments.words, [](const TableFile& file, const std::vector<u8>& bytes) {
        if (!file.compressed) return complain(file.path + ": is not compressed");
        const std::string directory = std::filesystem::path(file.path).parent_path().string();
        const std::string path = tablePath(directory, file.tbClass, file.side, false);
        if (!writeWhole(path, bytes)) return complain(path + ": cannot be written");
        writeStandardOutput(path + ": " + std::to_string(bytes.size()) + " bytes\n");
        return 0;
    });
}

int tellOfTables(const TablesArguments& arguments) {
    return forEachTable(arguments.words, tellOfTable);
}

int probePositions(const TablesArguments& arguments) {
    tbStartUp(arguments.directory);
    int exitCode = 0;
    for (const std::string& fen : arguments.words) exitCode = std::max(exitCode, probeFen(fen));
    return exitCode;
}

int tellLengths(const TablesArguments& arguments) {
    if (!arguments.words.empty()) throw UsageError("lengths takes no arguments");
    std::string text;
    for (int tbClass = 0; tbClass < tbClassCount; ++tbClass) {
        text += "    {" + std::to_string(tbClass ? tableLength(tbClass, 0) : 0) + ", " +
                std::to_string(tbClass ? tableLength(tbClass, 1) : 0) + "},  // " + recordOf(tbClass).name +
                "\n";
    }
    writeStandardOutput(text);
    return 0;
}

}  // namespace valku
