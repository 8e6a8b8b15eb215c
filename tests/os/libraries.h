// The libraries that tests load, and what they are to be called with.
#pragma once

#include <cstdlib>
#include <string>

#include "gtest/gtest.h"
#include "support/scratch.h"

namespace kqsupt::tests {

inline std::string library_named(const std::string& name) {
  return std::string(KQSUPT_LIB_DIR) + "/lib" + name + "-library.so";
}

inline int call(void* function) {
  return reinterpret_cast<int (*)()>(function)();
}

// Has the library that counts do so in a file of the test.
class WithLibraries : public testing::Test {
 protected:
  WithLibraries() { setenv("KQSUPT_LOADS", loads_.c_str(), 1); }
  ~WithLibraries() override { unsetenv("KQSUPT_LOADS"); }

  // A "+" for each load and a "-" for each unload.
  [[nodiscard]] std::string loads() const {
    const std::string text = content_of(loads_);
    return text == "(no file)" ? "" : text;
  }

  const Scratch scratch_;
  const std::string loads_ = scratch_.file("loads");
  const std::string counted_ = library_named("counted");
  const std::string odd_ = library_named("odd");
};

}  // namespace kqsupt::tests
