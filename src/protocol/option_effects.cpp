#include "protocol/option_effects.h"

#include <algorithm>
#include <limits>
#include <map>
#include <string>

#include "book/book_choice.h"
#include "chess/fen.h"
#include "chess/game.h"
#include "chess/piece_values.h"
#include "distributed/clients.h"
#include "distributed/process_lists.h"
#include "distributed/process_role.h"
#include "eval/eval_tables.h"
#include "eval/pawn_table.h"
#include "eval/weights.h"
#include "platform/fault.h"
#include "platform/format_text.h"
#include "platform/process.h"
#include "platform/raw_io.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "protocol/engine_services.h"
#include "protocol/hash_report.h"
#include "protocol/parameters.h"
#include "search/hash_table.h"
#include "search/history.h"
#include "search/upward_calls.h"
#include "tablebases/registration.h"
#include "tablebases/table_cache.h"
#include "thinking/time_management.h"

namespace valku {

namespace {

bool isTrue(std::string_view value) {
    return value == "true";
}

i32 truncateToInt(double value) {
    constexpr double least = std::numeric_limits<i32>::min();
    constexpr double most = std::numeric_limits<i32>::max();
    return static_cast<i32>(std::clamp(value, least, most));
}

void reportSettings() {
    if (processRole != roleRoot) return;
    sendText(formatText(
        "info string pawn = %i ; knight = %i; bishop = %i; rook = %i; queen = %i; e1 = %i; e2 = %i; "
        "bish = %i; 2knights = %i; tbd = %i; fai = %i; cpus = %i; phash = %i; log = %i\n"
        "ksft = %i;\n",
        pawnValue, knightValue, bishopValue, rookValue, queenValue, minorValue, drawishMaterial,
        pairOfBishops, twoKnightsMalus, TBdistance, factorForAnotherIteration, localClientCount() + 1,
        PreserveHash ? 1 : 0, engineServices->isLogging() ? 1 : 0, kingSafety));
}

i32 percentOfStandard(const Parameter& parameter, std::string_view value) {
    constexpr i32 mostPercent = 100000;
    const i32 percent = std::clamp(readNumber(value), -mostPercent, mostPercent);
    return truncateToInt(percent / 100.0 * parameter.standard);
}

// Positions whose value the user has fixed, by their FEN.
std::map<std::string, i32, std::less<>> positionValues;

// Runs an action on the position of a FEN, with gamePosition restored afterwards.
template <class Action>
void withPosition(std::string_view fen, Action action) {
    const KeptGame keptGame;
    if (readFen(fen)) action(gamePosition);
}

void clearPositionValue(std::string_view fen) {
    const auto entry = positionValues.find(fen);
    if (entry == positionValues.end()) return;
    withPosition(fen, [](const Position& position) { unpinPosition(position); });
    positionValues.erase(entry);
}

// The old size may be refused now that its memory has been given back. Then half of it, and so on: an engine
// cannot go on without a table.
void createLargestTableUpTo(u64 buckets) {
    for (u64 size = buckets; size > 0; size /= 2) {
        try {
            sharedTableId = -1;
            setHashBuckets(static_cast<i64>(size));
            createHashTable();
            if (size < buckets) sendText("info string No memory for the hash table as it was, using less\n");
            return;
        } catch (const Fault&) {
        }
    }
    sendText("There is no memory for any hash table. Exiting now...\n");
    engineServices->quit(1);
}

std::string cacheSizeLine(const char* start) {
    return formatText("%s%i MB\n", start, TBCacheSize >> 20);
}

}  // namespace

void registerTablebases() {
    try {
        tbStartUp(TBPath);
    } catch (const Fault& fault) {
        writeStandardOutput(fault.text() + "\n");
        exitProcess(1);
    }
}

void applyHash(Parameter&, std::string_view value) {
    if (processRole == roleLocalClient || processRole == roleRemoteClient) return;
    const u64 buckets = bucketsForMegabytes(readNumber(value));
    if (buckets == nHashTables) return;
    const u64 before = nHashTables;
    quitLocalClients();
    try {
        releaseHashTable();
        setHashBuckets(static_cast<i64>(buckets));
        createHashTable();
    } catch (const Fault& fault) {
        sendText(fault.text() + "\n");
        createLargestTableUpTo(before);
    }
    reportHashTable();
    createLocalClients();
}

void applyWeight(Parameter& parameter, std::string_view value) {
    *parameter.target = percentOfStandard(parameter, value);
    reportSettings();
}

void applyPieceValue(Parameter& parameter, std::string_view value) {
    *parameter.target = percentOfStandard(parameter, value);
    updateDerivedMaterial();
    computeMaterial(gamePosition);
    reportSettings();
}

void applyKingSafety(Parameter&, std::string_view value) {
    kingSafety = readNumber(value);
    updateKingAttackTable();
    reportSettings();
}

void applyTimeUsage(Parameter& parameter, std::string_view value) {
    factorForAnotherIteration = truncateToInt(100.0 / readNumber(value) * parameter.standard);
    reportSettings();
}

void applyTBDistance(Parameter&, std::string_view value) {
    if (largestTbMen != 0) return;
    TBdistance = readNumber(value);
    reportSettings();
}

void applyNalimovPath(Parameter&, std::string_view value) {
    if (largestTbMen != 0) return;
    TBPath = value.substr(0, longestPath);
    const std::string text = formatText("NalimovPath received: %s\nnew NalimovPath = %s\n",
                                        std::string(value).c_str(), TBPath.c_str()) +
                             cacheSizeLine("TB-cache = ");
    registerTablebases();
    sendText(text);
}

void applyNalimovCache(Parameter&, std::string_view value) {
    if (largestTbMen != 0) return;
    const i32 megabytes = std::min(readNumber(value), 2047);
    if (megabytes > 0) {
        TBCacheSize = megabytes << 20;
        initCache();
    }
    sendText(formatText("NalimovCache received: %s\n", std::string(value).c_str()) +
             cacheSizeLine("new TB-cache = "));
}

// All the processes of this machine, this one included.
void applyCpus(Parameter&, std::string_view value) {
    if (processRole != roleRoot && processRole != roleRemoteServer) return;
    const i32 clients = std::clamp(readNumber(value), 1, maxSearchProcesses) - 1;
    if (clients == numberOfLocalClients && clients == localClientCount()) return;
    quitLocalClients();
    numberOfLocalClients = clients;
    createLocalClients();
    reportSettings();
}

void applyWriteLog(Parameter&, std::string_view value) {
    engineServices->setLogging(isTrue(value));
    reportSettings();
}

void applyPositionValue(Parameter&, std::string_view value) {
    if (value == "clearall") {
        while (!positionValues.empty()) clearPositionValue(std::string(positionValues.begin()->first));
        return;
    }
    if (value.find("clear") != std::string_view::npos) {
        if (value.size() > 6) clearPositionValue(value.substr(6));
        return;
    }
    const std::size_t blank = value.find(' ');
    if (blank == std::string_view::npos) return;
    const i32 number = readNumber(value);
    const std::string_view fen = value.substr(blank + 1);
    withPosition(fen, [&](const Position& position) {
        positionValues[std::string(fen)] = number;
        pinPosition(position, number);
    });
}

void applyChess960(Parameter&, std::string_view value) {
    chess960 = isTrue(value);
}

void applyArenaChess960(Parameter&, std::string_view value) {
    arenaCastlingNotation = isTrue(value);
    sendText(arenaCastlingNotation ? "info string Switched Arena Chess 960 mode on!\n"
                                   : "info string Switched Arena Chess 960 mode off!\n");
}

void applyBestBookMovesOnly(Parameter&, std::string_view value) {
    BestBookMovesOnly = isTrue(value);
}

void applyPreserveHash(Parameter&, std::string_view value) {
    PreserveHash = isTrue(value);
    reportSettings();
}

void applyClearHash(Parameter&, std::string_view) {
    clearHashTable();
    clearPawnTable();
    clearHistory();
}

}  // namespace valku
