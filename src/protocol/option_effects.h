#pragma once

#include <string_view>

// What the UCI options do. Each takes its row of the parameter table and the value's text; the engine is
// idle, unless the row says that it need not be.

namespace valku {

struct Parameter;

// Finds the tables of TBPath. One that does not fit ends the process with code 1 and a line on standard
// output.
void registerTablebases();

void applyHash(Parameter& parameter, std::string_view value);
void applyWeight(Parameter& parameter, std::string_view value);      // percent of the default
void applyPieceValue(Parameter& parameter, std::string_view value);  // percent of the default
void applyKingSafety(Parameter& parameter, std::string_view value);
void applyTimeUsage(Parameter& parameter, std::string_view value);
void applyTBDistance(Parameter& parameter, std::string_view value);
void applyNalimovPath(Parameter& parameter, std::string_view value);
void applyNalimovCache(Parameter& parameter, std::string_view value);
void applyCpus(Parameter& parameter, std::string_view value);
void applyWriteLog(Parameter& parameter, std::string_view value);
void applyPositionValue(Parameter& parameter, std::string_view value);
void applyChess960(Parameter& parameter, std::string_view value);
void applyArenaChess960(Parameter& parameter, std::string_view value);
void applyBestBookMovesOnly(Parameter& parameter, std::string_view value);
void applyPreserveHash(Parameter& parameter, std::string_view value);
void applyClearHash(Parameter& parameter, std::string_view value);

}  // namespace valku
