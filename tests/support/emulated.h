// What the host that runs the test does not do.
#pragma once

#include <cstdlib>
#include <cstring>

namespace kqsupt::tests {

inline bool is_emulated() {
  const char* runner = std::getenv("KQSUPT_RUNNER");
  return runner != nullptr && std::strstr(runner, "qemu") != nullptr;
}

// The heaps of the sanitizers, and the emulator where it looks paths up, have mutexes that a child
// finds taken for ever when another thread of its parent held them.
inline bool survives_forks() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return false;
#endif
  return !is_emulated();
}

}  // namespace kqsupt::tests
