#pragma once

namespace valku {

// Reads settings.ini of the working directory, if there is one, and brings the values that follow from others
// in line. Once, early in the start-up.
void loadSettings();

}  // namespace valku
