#include "protocol/parameters.h"

#include <algorithm>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "book/book_choice.h"
#include "book/book_file.h"
#include "chess/piece_values.h"
#include "distributed/clients.h"
#include "distributed/listening_port.h"
#include "distributed/process_role.h"
#include "eval/pawn_table.h"
#include "eval/weights.h"
#include "platform/text_scan.h"
#include "protocol/engine_services.h"
#include "protocol/game_result.h"
#include "protocol/option_effects.h"
#include "search/hash_table.h"
#include "search/search_state.h"
#include "search/upward_calls.h"
#include "tablebases/registration.h"
#include "tablebases/table_cache.h"
#include "thinking/root_search.h"
#include "thinking/thinking.h"
#include "thinking/time_management.h"

namespace valku {

namespace {

void storeHashBuckets(std::string_view value) {
    const i64 buckets = readLongNumber(value);
    const bool givenByParent = processRole == roleLocalClient || processRole == roleRemoteClient;
    if (buckets != 0 && !givenByParent) setHashBuckets(buckets);
}

void storePawnTableSize(std::string_view value) {
    const i64 entries = readLongNumber(value);
    if (entries != 0) nPawnTables = floorPowerOfTwo(entries);
}

void storeLogging(std::string_view value) {
    engineServices->setLogging(readNumber(value) != 0);
}

std::string_view withoutLineEnd(std::string_view value) {
    return value.substr(0, value.find_last_not_of("\r\n") + 1);
}

template <std::string& path>
void storePath(std::string_view value) {
    path = withoutLineEnd(value).substr(0, longestPath);
}

void storeAcceptFrom(std::string_view value) {
    acceptFrom(withoutLineEnd(value));
}

void storePeer(std::string_view value) {
    const std::string host(takeField(value, ':'));
    const i32 port = readNumber(value);
    if (port > 0 && port <= std::numeric_limits<u16>::max()) addRemotePeer(host, static_cast<u16>(port));
}

constexpr i32 anyLeast = std::numeric_limits<i32>::min();
constexpr i32 anyMost = std::numeric_limits<i32>::max();

constexpr Parameter number(std::string_view key, i32* target, std::string_view meaning, Option option = {}) {
    return {{.key = key, .meaning = meaning}, option, target};
}

constexpr Parameter withRange(i32 least, i32 most, Parameter parameter) {
    parameter.setting.least = least;
    parameter.setting.most = most;
    return parameter;
}

constexpr Parameter smallerMeansLeast(Parameter parameter) {
    parameter.setting.smallerMeansLeast = true;
    return parameter;
}

// A key with a function of its own; `values` tells what it takes, `current` what it is set to.
constexpr Parameter special(std::string_view key, std::string_view values, void (*store)(std::string_view),
                            std::string (*current)(), std::string_view meaning, Option option = {}) {
    return {{.key = key, .meaning = meaning, .values = values, .store = store, .current = current}, option};
}

template <std::string& text>
std::string textOf() {
    return text;
}

template <u64& size>
std::string sizeOf() {
    return std::to_string(size);
}

std::string nothing() {
    return {};
}

// A key that old settings files hold. It is recognized, and nothing is done with its value.
constexpr Parameter unused(std::string_view key, i32 standard, Option option = {}) {
    return {{.key = key, .meaning = "no effect", .values = "number", .store = [](std::string_view) {}},
            option,
            nullptr,
            standard};
}

constexpr Parameter optionOnly(Option option, i32* target = nullptr) {
    return {{}, option, target};
}

using OptionEffect = void (*)(Parameter&, std::string_view);

constexpr Option spin(std::string_view name, int place, i32 standard, i32 least, i32 most, OptionEffect apply,
                      std::string_view meaning) {
    return {.name = name,
            .place = place,
            .type = OptionType::spin,
            .standard = standard,
            .least = least,
            .most = most,
            .apply = apply,
            .meaning = meaning};
}

constexpr Option percentOf(std::string_view name, int place, OptionEffect apply, std::string_view meaning) {
    return spin(name, place, 100, 25, 400, apply, meaning);
}

constexpr Option check(std::string_view name, int place, bool standard, OptionEffect apply,
                       std::string_view meaning) {
    return {.name = name,
            .place = place,
            .type = OptionType::check,
            .standard = standard,
            .apply = apply,
            .meaning = meaning};
}

constexpr Option string(std::string_view name, int place, std::string_view standard, OptionEffect apply,
                        std::string_view meaning) {
    return {.name = name, .place = place, .standardText = standard, .apply = apply, .meaning = meaning};
}

constexpr Option button(std::string_view name, int place, OptionEffect apply, std::string_view meaning) {
    return {.name = name, .place = place, .type = OptionType::button, .apply = apply, .meaning = meaning};
}

// An option that may be set in the middle of a search.
constexpr Option anyTime(Option option) {
    option.needsIdleEngine = false;
    return option;
}

// clang-format off
Parameter table[] = {
    special("nHashTables", "not 0", storeHashBuckets, sizeOf<nHashTables>,
            "buckets of the hash table, 48 bytes each; rounded down to a power of two",
            spin("Hash", 1, 1, 1, 2048, applyHash,
                 "mebibytes of the hash table, rounded down to a power of two of buckets; until it is set, `nHashTables` decides")),
    special("nPawnTables", "not 0", storePawnTableSize, sizeOf<nPawnTables>,
            "entries of the pawn table; rounded down to a power of two"),
    number("pawnValue", &pawnValue, "a pawn",
           percentOf("PawnValue", 10, applyPieceValue, "percent of the default of `pawnValue`")),
    number("knightValue", &knightValue, "a knight",
           percentOf("KnightValue", 11, applyPieceValue, "percent of the default of `knightValue`")),
    number("bishopValue", &bishopValue, "a bishop",
           percentOf("BishopValue", 12, applyPieceValue, "percent of the default of `bishopValue`")),
    number("rookValue", &rookValue, "a rook",
           percentOf("RookValue", 13, applyPieceValue, "percent of the default of `rookValue`")),
    number("queenValue", &queenValue, "a queen",
           percentOf("QueenValue", 14, applyPieceValue, "percent of the default of `queenValue`")),
    number("endgameMaterial", &endgameMaterial,
           "a position with no more material than this, less 500 for each queen, is an endgame"),
    number("rookOn7th", &rookOn7th, "bonus: rook on the 7th rank while the enemy king is on the 8th"),
    number("pairOfBishops", &pairOfBishops, "bonus: second bishop",
           percentOf("PairOfBishops", 9, applyWeight, "percent of the default of `pairOfBishops`")),
    number("doublePawn", &doublePawn, "penalty: each further pawn on a file"),
    number("isolatedPawn", &isolatedPawn, "penalty: isolated pawn; two thirds of it if an enemy pawn is on its file"),
    unused("noShortCastling", 18),
    unused("noLongCastling", 12),
    number("rightToMove", &rightToMove, "bonus: side to move"),
    number("rookAgainstNoRook", &rookAgainstNoRook, "bonus: rook against none, in an endgame without queens"),
    number("backstandingPawn", &backstandingPawn, "penalty: backward pawn"),
    number("trappedBishop", &trappedBishop, "penalty: bishop on a7 or h7 behind a pawn on b6 or g6"),
    number("narrowedRook", &narrowedRook,
           "penalty: rook that faces an enemy pawn with a piece close behind it; three times as much if it cannot step aside"),
    number("badBishop", &badBishop, "penalty: bishop with own pawns or the edge on both forward diagonals"),
    number("rookOnOpenLine", &rookOnOpenLine, "bonus: rook on a file without pawns"),
    unused("rookOnHalfOpenLine", 10),
    number("doubledRooks", &doubledRooks, "bonus: both rooks on one file"),
    number("spaceAdvantage", &spaceAdvantage,
           "bonus: each rank that the rearmost pawn of the files c to f has advanced"),
    number("pawnStormValue1", &pawnStormValue1, "weight of a pawn storm, kings on the same wing"),
    number("pawnStormValue2", &pawnStormValue2,
           "weight of a pawn storm, kings on opposite wings or the pawn chain pointing at the king"),
    unused("aspirationWindow", 25),
    number("maxCompensation", &maxCompensation, "margin of delta pruning in quiescence search"),
    unused("maxExtensions", 12),
    unused("fewMovesExtValue1", 100),
    unused("fewMovesExtValue2", 100),
    unused("selectivity1", 1),
    unused("selectivity2", 1),
    smallerMeansLeast(number("quickPlay", &quickPlay, "depth in plies of every search; 0 for no such limit")),
    withRange(1, largestSetting,
              number("numberOfLocalClients", &numberOfLocalClients, "child processes that search along",
                     spin("CPUs", 20, 1, 1, 128, applyCpus,
                          "processes of this machine that search together, this one included"))),
    special("remoteClient", "host:port, port above 0", storePeer, nothing,
            "a peer that searches along; may stand up to 128 times"),
    unused("minNodesRemoteSearch", 6000000),
    unused("minDepthRemoteSearch", 8),
    withRange(anyLeast, anyMost,
              number("kingSafety", &kingSafety, "stored and reported only; the option `KingSafety` has the effect",
                     spin("KingSafety", 16, 100, 1, 999, applyKingSafety, "percentage of the king attack table"))),
    unused("dummy2", 100, anyTime(string("Dummy2", 0, "", nullptr, "no effect"))),
    unused("dummy3", 100, anyTime(string("Dummy3", 0, "", nullptr, "no effect"))),
    withRange(0, anyMost,
              number("TBdistance", &TBdistance, "remaining depth in plies from which endgame tables are probed",
                     spin("TBDistance", 7, 8, 1, 99, applyTBDistance, "`TBdistance`; not once tables are found"))),
    withRange(0, anyMost,
              number("TBCacheSize", &TBCacheSize, "bytes of the endgame table cache",
                     spin("NalimovCache", 6, 1, 1, 32, applyNalimovCache,
                          "mebibytes of the endgame table cache; not once tables are found"))),
    special("TBPath", "text", storePath<TBPath>, textOf<TBPath>,
            "directories of the endgame tables, 255 characters at most",
            string("NalimovPath", 5, "<empty>", applyNalimovPath, "`TBPath`; not once tables are found")),
    special("bookFile", "text", storePath<bookFile>, textOf<bookFile>,
            "path of the opening book, 255 characters at most"),
    number("factorForAnotherIteration", &factorForAnotherIteration,
           "percent; an iteration begins while the time used, times this, is below the scheduled time",
           spin("TimeUsage", 17, 100, 50, 400, applyTimeUsage,
                "percent; `factorForAnotherIteration` becomes 150 * 100 / value")),
    number("weightA", &bookWeights[int{'a'}], "weight of a book move of value a"),
    number("weightB", &bookWeights[int{'b'}], "of value b"),
    number("weightC", &bookWeights[int{'c'}], "of value c"),
    number("weightD", &bookWeights[int{'d'}], "of value d"),
    number("weightE", &bookWeights[int{'e'}], "of value e"),
    number("weightF", &bookWeights[int{'f'}], "of value f"),
    number("weightG", &bookWeights[int{'g'}], "of value g"),
    unused("showCurrentMove", 0),
    number("resignValue", &resignValue, "the engine resigns at a score of minus this; 0 for never"),
    special("writeLogFile", "number", storeLogging, nullptr, "log on if not 0, off if 0",
            anyTime(check("WriteLog", 19, false, applyWriteLog, "log on or off"))),
    special("listenAddress", "text", storePath<listenAddress>, textOf<listenAddress>,
            "the one address of this machine on which a peer listens; all of them if empty"),
    special("acceptFrom", "text", storeAcceptFrom, nothing,
            "further callers of a peer: addresses, or networks such as `203.0.113.0/24`, with commas or blanks between; may stand several times"),

    optionOnly(string("UCI_SetPositionValue", 2, "", applyPositionValue,
                      "`<value> <FEN>` fixes the value of a position, White's view; `clear <FEN>` and `clearall` undo that")),
    optionOnly(check("UCI_Chess960", 3, false, applyChess960, "Chess960 castling")),
    optionOnly(check("Ponder", 4, false, nullptr, "no effect: the engine ponders when told `go ponder`")),
    optionOnly(percentOf("TwoKnightsMalus", 8, applyWeight, "percent of 6, the penalty for two knights in endgames"),
               &twoKnightsMalus),
    optionOnly(anyTime(check("BestBookMovesOnly", 15, true, applyBestBookMovesOnly,
                             "of the book moves of a position play those of the best value only"))),
    optionOnly(anyTime(check("PreserveHash", 18, true, applyPreserveHash,
                             "keep hash table and pawn table from one search to the next"))),
    optionOnly(button("ClearHash", 21, applyClearHash, "clears hash table, pawn table and history")),
    optionOnly(check("ArenaChess960", 0, false, applyArenaChess960, "castling moves are written O-O and O-O-O")),
    optionOnly(check("ReactionOnShowEval", 0, false, nullptr, "no effect")),
};
// clang-format on

void storeNumber(const Parameter& parameter, std::string_view value) {
    const Setting& setting = parameter.setting;
    const i32 given = readNumber(value);
    if (given >= setting.least || setting.smallerMeansLeast)
        *parameter.target = std::clamp(given, setting.least, setting.most);
}

// What follows an option's name in its declaration.
std::string declarationOf(const Option& option) {
    switch (option.type) {
        case OptionType::spin:
            return "type spin default " + std::to_string(option.standard) + " min " +
                   std::to_string(option.least) + " max " + std::to_string(option.most);
        case OptionType::check:
            return option.standard ? "type check default true" : "type check default false";
        case OptionType::string:
            return "type string" +
                   (option.standardText.empty() ? "" : " default " + std::string(option.standardText));
        default:
            return "type button";
    }
}

}  // namespace

void initParameters() {
    for (Parameter& parameter : table) {
        if (parameter.target) parameter.standard = *parameter.target;
    }
}

std::span<const Parameter> allParameters() {
    return table;
}

std::vector<const Option*> declaredOptions() {
    std::vector<const Option*> declared;
    for (const Parameter& parameter : table) {
        if (parameter.option.place > 0) declared.push_back(&parameter.option);
    }
    std::ranges::sort(declared, {}, &Option::place);
    return declared;
}

std::string optionDeclarations() {
    std::string text;
    for (const Option* option : declaredOptions())
        text.append("option name ").append(option->name).append(" " + declarationOf(*option) + "\n");
    return text;
}

void applySettingsLine(std::string_view line) {
    for (const Parameter& parameter : table) {
        const Setting& setting = parameter.setting;
        if (setting.key.empty()) continue;
        const std::string assignment = std::string(setting.key) + "=";
        const std::size_t at = line.find(assignment);
        if (at == std::string_view::npos) continue;
        // As many characters go as the key's end is away from the start of the line, counted from the key's
        // own start.
        std::string value(line);
        value.erase(at, at + assignment.size());
        if (setting.store) {
            setting.store(value);
        } else {
            storeNumber(parameter, value);
        }
    }
}

bool needsIdleEngine(std::string_view name) {
    return std::ranges::any_of(table, [&](const Parameter& parameter) {
        const Option& option = parameter.option;
        return option.name == name && option.apply && option.needsIdleEngine;
    });
}

void setOption(std::string_view name, std::string_view value) {
    for (Parameter& parameter : table) {
        if (parameter.option.name == name && parameter.option.apply) parameter.option.apply(parameter, value);
    }
}

}  // namespace valku
