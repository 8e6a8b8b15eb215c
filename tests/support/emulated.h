// What the host that runs the test does not do.
#pragma once

#include <cstdlib>
#include <cstring>

namespace kqsupt::tests {

inline bool is_emulated() {
  const char* runner = std::getenv("KQSUPT_RUNNER");
  return runner != nullptr && std::strstr(runner, "qemu") != nullptr;
}

// The heap of the address sanitizer, and the emulator where it looks paths up, have mutexes that a
// child finds taken for ever when another thread of its parent held them.
inline bool survives_forks() {
#ifdef __SANITIZE_ADDRESS__
  return false;
#endif
  return !is_emulated();
}

}  // namespace kqsupt::tests
