#pragma once

#include <string>

// The small files in the working directory that tell of clients in trouble. Nothing of it goes to the user's
// interface, and no failure of a client stops a search.

namespace valku {

constexpr const char* connectionErrors = "connerr";   // clients that failed in a job, and came back
constexpr const char* startErrors = "starterr";       // connections that could not be made
constexpr const char* raceErrors = "nonewresulterr";  // races without a winner

// What both sides of a connection may have to write into startErrors.
constexpr const char* startFailure = "Fehler: startWinsock, Fehlercode: ";
constexpr const char* createFailure = "Fehler: Der Socket konnte nicht erstellt werden!";
constexpr const char* noDelayFailure = "Couldn't setsockopt(TCP_NODELAY)";

// Appends the text and a line end; a failure to do so is ignored. Any thread.
void appendDiagnostic(const char* file, const std::string& text);

// The system time in whole seconds since 1970, as these files have it.
std::string diagnosticTime();

}  // namespace valku
