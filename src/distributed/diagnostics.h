#pragma once

#include <string>

// The small files in the working directory that tell of clients in trouble. Nothing of it reaches the user's
// interface, and no failure of a client stops a search.

namespace valku {

constexpr const char* connectionErrors = "connerr";   // clients that failed in a job, and came back
constexpr const char* startErrors = "starterr";       // connections that could not be made
constexpr const char* raceErrors = "nonewresulterr";  // races without a winner

// Appends the text and a line end; a failure to do so is passed over. Any thread.
void appendDiagnostic(const char* file, const std::string& text);

// The system time in whole seconds, as these files tell it.
std::string diagnosticTime();

}  // namespace valku
