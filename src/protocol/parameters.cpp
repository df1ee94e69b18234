#include "protocol/parameters.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "book/book_settings.h"
#include "chess/piece_values.h"
#include "distributed/client_settings.h"
#include "distributed/peer_socket.h"
#include "distributed/process_role.h"
#include "eval/pawn_table.h"
#include "eval/weights.h"
#include "platform/text_scan.h"
#include "protocol/engine_services.h"
#include "protocol/game_result.h"
#include "protocol/option_effects.h"
#include "search/hash_table.h"
#include "search/search_state.h"
#include "search/tablebase_port.h"
#include "tablebases/registration.h"
#include "tablebases/table_cache.h"
#include "thinking/root_search.h"
#include "thinking/thinking.h"
#include "thinking/time_management.h"

namespace valku {

StoredSettings storedSettings;

namespace {

// Nothing sensible lies beyond this, and sums of as many weights as a board can hold stay far inside 32 bits.
constexpr i32 largestSetting = 100000;

void storeHashBuckets(std::string_view value) {
    const i64 buckets = readLongNumber(value);
    const bool givenByParent = processRole == roleLocalClient || processRole == roleRemoteClient;
    if (buckets != 0 && !givenByParent) setHashBuckets(buckets);
}

void storePawnTableSize(std::string_view value) {
    const i64 entries = readLongNumber(value);
    if (entries != 0) nPawnTables = floorPowerOfTwo(entries);
}

void storeMinNodes(std::string_view value) {
    storedSettings.minNodesRemoteSearch = readLongNumber(value);
}
void storeLogging(std::string_view value) {
    engineServices->setLogging(readNumber(value) != 0);
}

void cutPath(std::string_view value, std::string& path) {
    value = value.substr(0, value.find_last_not_of("\r\n") + 1);
    path = value.substr(0, longestPath);
}

void storeTBPath(std::string_view value) {
    cutPath(value, TBPath);
}
void storeBookFile(std::string_view value) {
    cutPath(value, bookFile);
}

void storeListenAddress(std::string_view value) {
    cutPath(value, listenAddress);
}

void storeAcceptFrom(std::string_view value) {
    acceptFrom(value.substr(0, value.find_last_not_of("\r\n") + 1));
}

void storePeer(std::string_view value) {
    const std::string host(takeField(value, ':'));
    const i32 port = readNumber(value);
    if (port > 0 && port <= std::numeric_limits<u16>::max()) addRemotePeer(host, static_cast<u16>(port));
}

constexpr std::string_view percent = "type spin default 100 min 25 max 400";
constexpr SettingCheck any = SettingCheck::any;
constexpr SettingCheck nonNegative = SettingCheck::nonNegative;

// A key whose number goes straight to its variable; keys and options that share a variable; and what has no
// variable.
constexpr Parameter number(std::string_view key, SettingCheck check, i32* target) {
    return {key, check, target, nullptr, {}, 0, {}, nullptr};
}

constexpr Parameter shared(std::string_view key, SettingCheck check, i32* target, std::string_view option,
                           int place, std::string_view declaration,
                           void (*apply)(Parameter&, std::string_view)) {
    return {key, check, target, nullptr, option, place, declaration, apply};
}

constexpr Parameter stored(std::string_view key, SettingCheck check, void (*store)(std::string_view),
                           std::string_view option = {}, int place = 0, std::string_view declaration = {},
                           void (*apply)(Parameter&, std::string_view) = nullptr) {
    return {key, check, nullptr, store, option, place, declaration, apply};
}

constexpr Parameter optionOnly(std::string_view option, int place, std::string_view declaration,
                               void (*apply)(Parameter&, std::string_view), i32* target = nullptr) {
    return {{}, any, target, nullptr, option, place, declaration, apply};
}

// An option that may be set in the middle of a search.
constexpr Parameter anyTime(Parameter parameter) {
    parameter.needsIdleEngine = false;
    return parameter;
}

// clang-format off
Parameter table[] = {
    stored("nHashTables", SettingCheck::nonZero, storeHashBuckets,
           "Hash", 1, "type spin default 1 min 1 max 2048", applyHash),
    stored("nPawnTables", SettingCheck::nonZero, storePawnTableSize),
    shared("pawnValue", nonNegative, &pawnValue, "PawnValue", 10, percent, applyPieceValue),
    shared("knightValue", nonNegative, &knightValue, "KnightValue", 11, percent, applyPieceValue),
    shared("bishopValue", nonNegative, &bishopValue, "BishopValue", 12, percent, applyPieceValue),
    shared("rookValue", nonNegative, &rookValue, "RookValue", 13, percent, applyPieceValue),
    shared("queenValue", nonNegative, &queenValue, "QueenValue", 14, percent, applyPieceValue),
    number("endgameMaterial", nonNegative, &endgameMaterial),
    number("rookOn7th", nonNegative, &rookOn7th),
    shared("pairOfBishops", nonNegative, &pairOfBishops, "PairOfBishops", 9, percent, applyWeight),
    number("doublePawn", nonNegative, &doublePawn),
    number("isolatedPawn", nonNegative, &isolatedPawn),
    number("noShortCastling", nonNegative, &noShortCastling),
    number("noLongCastling", nonNegative, &noLongCastling),
    number("rightToMove", nonNegative, &rightToMove),
    number("rookAgainstNoRook", nonNegative, &rookAgainstNoRook),
    number("backstandingPawn", nonNegative, &backstandingPawn),
    number("trappedBishop", nonNegative, &trappedBishop),
    number("narrowedRook", nonNegative, &narrowedRook),
    number("badBishop", nonNegative, &badBishop),
    number("rookOnOpenLine", nonNegative, &rookOnOpenLine),
    number("rookOnHalfOpenLine", nonNegative, &rookOnHalfOpenLine),
    number("doubledRooks", nonNegative, &doubledRooks),
    number("spaceAdvantage", nonNegative, &spaceAdvantage),
    number("pawnStormValue1", nonNegative, &pawnStormValue1),
    number("pawnStormValue2", nonNegative, &pawnStormValue2),
    number("aspirationWindow", nonNegative, &aspirationWindow),
    number("maxCompensation", nonNegative, &maxCompensation),
    number("maxExtensions", nonNegative, &storedSettings.maxExtensions),
    number("fewMovesExtValue1", nonNegative, &storedSettings.fewMovesExtValue1),
    number("fewMovesExtValue2", nonNegative, &storedSettings.fewMovesExtValue2),
    number("selectivity1", nonNegative, &storedSettings.selectivity1),
    number("selectivity2", nonNegative, &storedSettings.selectivity2),
    number("quickPlay", SettingCheck::positiveOrNone, &quickPlay),
    shared("numberOfLocalClients", SettingCheck::positive, &numberOfLocalClients,
           "CPUs", 20, "type spin default 1 min 1 max 128", applyCpus),
    stored("remoteClient", SettingCheck::peer, storePeer),
    stored("minNodesRemoteSearch", any, storeMinNodes),
    number("minDepthRemoteSearch", any, &storedSettings.minDepthRemoteSearch),
    shared("kingSafety", any, &kingSafety, "KingSafety", 16, "type spin default 100 min 1 max 999", applyKingSafety),
    anyTime(shared("dummy2", any, &storedSettings.dummy2, "Dummy2", 0, {}, applyNumber)),
    anyTime(shared("dummy3", any, &storedSettings.dummy3, "Dummy3", 0, {}, applyNumber)),
    shared("TBdistance", nonNegative, &TBdistance, "TBDistance", 7, "type spin default 8 min 1 max 99", applyTBDistance),
    shared("TBCacheSize", nonNegative, &TBCacheSize,
           "NalimovCache", 6, "type spin default 1 min 1 max 32", applyNalimovCache),
    stored("TBPath", SettingCheck::text, storeTBPath,
           "NalimovPath", 5, "type string default <empty>", applyNalimovPath),
    stored("bookFile", SettingCheck::text, storeBookFile),
    shared("factorForAnotherIteration", nonNegative, &factorForAnotherIteration,
           "TimeUsage", 17, "type spin default 100 min 50 max 400", applyTimeUsage),
    number("weightA", nonNegative, &bookWeights[int{'a'}]),
    number("weightB", nonNegative, &bookWeights[int{'b'}]),
    number("weightC", nonNegative, &bookWeights[int{'c'}]),
    number("weightD", nonNegative, &bookWeights[int{'d'}]),
    number("weightE", nonNegative, &bookWeights[int{'e'}]),
    number("weightF", nonNegative, &bookWeights[int{'f'}]),
    number("weightG", nonNegative, &bookWeights[int{'g'}]),
    number("showCurrentMove", any, &storedSettings.showCurrentMove),
    number("resignValue", nonNegative, &resignValue),
    anyTime(stored("writeLogFile", any, storeLogging,
           "WriteLog", 19, "type check default false", applyWriteLog)),
    stored("listenAddress", SettingCheck::text, storeListenAddress),
    stored("acceptFrom", SettingCheck::text, storeAcceptFrom),

    optionOnly("UCI_SetPositionValue", 2, "type string", applyPositionValue),
    optionOnly("UCI_Chess960", 3, "type check default false", applyChess960),
    optionOnly("Ponder", 4, "type check default false", nullptr),  // pondering follows `go ponder` alone
    optionOnly("TwoKnightsMalus", 8, percent, applyWeight, &twoKnightsMalus),
    anyTime(optionOnly("BestBookMovesOnly", 15, "type check default true", applyBestBookMovesOnly)),
    anyTime(optionOnly("PreserveHash", 18, "type check default true", applyPreserveHash)),
    optionOnly("ClearHash", 21, "type button", applyClearHash),
    optionOnly("ArenaChess960", 0, {}, applyArenaChess960),
    optionOnly("ReactionOnShowEval", 0, {}, nullptr),
};
// clang-format on

// What is not added up: a size, a distance that is only compared, and a percentage whose table is bounded.
bool mayBeAnything(const Parameter& parameter) {
    return parameter.target == &TBCacheSize || parameter.target == &TBdistance ||
           parameter.target == &kingSafety;
}

void storeNumber(const Parameter& parameter, std::string_view value) {
    const i32 given = readNumber(value);
    const i32 taken = mayBeAnything(parameter) ? given : std::clamp(given, -largestSetting, largestSetting);
    switch (parameter.check) {
        case SettingCheck::positive:
            if (taken > 0) *parameter.target = taken;
            break;
        case SettingCheck::positiveOrNone:
            *parameter.target = std::max(taken, 0);
            break;
        case SettingCheck::nonNegative:
            if (taken >= 0) *parameter.target = taken;
            break;
        default:
            *parameter.target = taken;
            break;
    }
}

}  // namespace

void initParameters() {
    for (Parameter& parameter : table) {
        if (parameter.target) parameter.standard = *parameter.target;
    }
}

std::string optionDeclarations() {
    std::vector<const Parameter*> listed;
    for (const Parameter& parameter : table) {
        if (parameter.place > 0) listed.push_back(&parameter);
    }
    std::sort(listed.begin(), listed.end(), [](auto* a, auto* b) { return a->place < b->place; });
    std::string text;
    for (const Parameter* parameter : listed) {
        text.append("option name ")
            .append(parameter->option)
            .append(" ")
            .append(parameter->declaration)
            .append("\n");
    }
    return text;
}

void applySettingsLine(std::string_view line) {
    for (const Parameter& parameter : table) {
        if (parameter.key.empty()) continue;
        const std::string assignment = std::string(parameter.key) + "=";
        const std::size_t at = line.find(assignment);
        if (at == std::string_view::npos) continue;
        // As many characters go as the key's end is away from the start of the line, counted from the key's
        // own start.
        std::string value(line);
        value.erase(at, at + assignment.size());
        if (parameter.storeSetting) {
            parameter.storeSetting(value);
        } else {
            storeNumber(parameter, value);
        }
    }
}

bool needsIdleEngine(std::string_view option) {
    return std::any_of(std::begin(table), std::end(table), [&](const Parameter& parameter) {
        return parameter.option == option && parameter.applyOption && parameter.needsIdleEngine;
    });
}

void setOption(std::string_view name, std::string_view value) {
    for (Parameter& parameter : table) {
        if (parameter.option == name && parameter.applyOption) parameter.applyOption(parameter, value);
    }
}

}  // namespace valku
