#include "tablemaker/commands.h"

#include <filesystem>

#include "chess/fen.h"
#include "platform/clock.h"
#include "platform/format_text.h"
#include "platform/raw_io.h"
#include "tablebases/material_classes.h"
#include "tablebases/table_entry.h"
#include "tablemaker/compressor.h"
#include "tablemaker/ending.h"
#include "tablemaker/table_file.h"

namespace valku {

namespace {

// Calls use(file, bytes) for every table among the files and reports the Faults. Returns the exit code.
template <class Use>
int forEachTable(const std::vector<std::string>& paths, Use use) {
    return forEachReportingFaults(paths, [&](const std::string& path) {
        const TableFile file = tableFileOf(path);
        use(file, readTable(file));
    });
}

void reportTable(const TableFile& file, const std::vector<u8>& bytes) {
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
    const std::string name = classTable[file.tbClass].name;
    std::string text = file.path + ": " + name + ", " + (file.side == 0 ? "first" : "second") +
                       " side to move, " + std::to_string(bytes.size()) + " entries\n  " +
                       std::to_string(wins) + " wins, " + std::to_string(draws) + " draws, " +
                       std::to_string(losses) + " losses\n";
    static Position position;
    if (distance > 0 && positionOfEntry({file.tbClass, file.side, longest}, position)) {
        text += "  longest mate: " + movesText(distance) + ", " + writeFen(position) + "\n";
    }
    writeStandardOutput(text);
}

}  // namespace

int compressTables(const TablesArguments& arguments) {
    return forEachTable(arguments.words, [&](const TableFile& file, const std::vector<u8>& bytes) {
        if (file.compressed) throw Fault(file.path + ": is compressed already");
        const std::string path = file.path + ".emd";
        const double startTime = steadySeconds();
        const u64 size = compressTable(bytes, path, arguments.threads);
        writeStandardOutput(path + formatText(": %zu bytes to %llu, %.1f s\n", bytes.size(),
                                              static_cast<unsigned long long>(size),
                                              steadySeconds() - startTime));
    });
}

int expandTables(const TablesArguments& arguments) {
    return forEachTable(arguments.words, [](const TableFile& file, const std::vector<u8>& bytes) {
        if (!file.compressed) throw Fault(file.path + ": is not compressed");
        const std::string directory = std::filesystem::path(file.path).parent_path().string();
        const std::string path = tablePath(directory, file.tbClass, file.side, false);
        writeWhole(path, bytes);
        writeStandardOutput(path + ": " + std::to_string(bytes.size()) + " bytes\n");
    });
}

int reportTables(const TablesArguments& arguments) {
    return forEachTable(arguments.words, reportTable);
}

int reportLengths(const TablesArguments& arguments) {
    if (!arguments.words.empty()) throw UsageFault("lengths takes no arguments");
    std::string text;
    for (int tbClass = 0; tbClass < tbClassCount; ++tbClass) {
        text += "    {" + std::to_string(tbClass ? tableLength(tbClass, 0) : 0) + ", " +
                std::to_string(tbClass ? tableLength(tbClass, 1) : 0) + "},  // " + classTable[tbClass].name +
                "\n";
    }
    writeStandardOutput(text);
    return 0;
}

}  // namespace valku
