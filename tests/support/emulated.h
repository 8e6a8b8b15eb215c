// Whether what runs the test is an emulator.
#pragma once

#include <cstdlib>
#include <cstring>

namespace kqsupt::tests {

inline bool is_emulated() {
  const char* runner = std::getenv("KQSUPT_RUNNER");
  return runner != nullptr && std::strstr(runner, "qemu") != nullptr;
}

}  // namespace kqsupt::tests
