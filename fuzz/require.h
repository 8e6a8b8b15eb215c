// How a fuzz target says that it has found something.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace kqsupt::fuzz {

// Ends the program, with a line that tells what should hold, when it does not.
inline void require(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
  }
}

}  // namespace kqsupt::fuzz
