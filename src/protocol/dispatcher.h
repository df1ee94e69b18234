#pragma once

#include <string>

namespace valku {

// Carries a line out. One chain of comparisons serves all protocols and roles; the first word that fits ends
// it, and a line that fits none is passed over in silence. Returns when the line is finished. Called by the
// thread that reads the commands.
void dispatch(const std::string& line);

}  // namespace valku
