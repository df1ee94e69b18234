#pragma once

#include <stdexcept>

namespace valku {

// The only exception of this program: what went wrong, in the words that the user will see, without a line
// end. Libraries throw it or return an empty result; only the shell and the front-ends end the process.
class Fault : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;

    std::string text() const { return what(); }
};

}  // namespace valku
