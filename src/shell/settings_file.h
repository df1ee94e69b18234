#pragma once

namespace valku {

// Reads settings.ini of the working directory, if there is one, and brings the values that follow from others
// in line. Once, early in the start-up.
void loadSettings();

// Prints all settings and options with their defaults, as docs/settings.md has them. In place of a start-up.
void printSettings();

}  // namespace valku
