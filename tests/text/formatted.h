// What a format makes of its arguments, as a string.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/text.h"
#include "support/guarded.h"

namespace kqsupt::tests {

// Room for what the tests produce.
inline constexpr uint32_t kRoom = 8192;

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
  static char text[kRoom];
  const int32_t stored = SMsnprintf(text, kRoom, format, arguments...);
  EXPECT_EQ(text[stored], '\0') << format;
  return {text, static_cast<size_t>(stored)};
}

// The same by the C library.
template <class... Arguments>
std::string expected(const char* format, Arguments... arguments) {
  static char text[kRoom];
  const int stored = std::snprintf(text, kRoom, format, arguments...);
  return {text, static_cast<size_t>(stored)};
}

// Where each case takes a hundred times as long, a sample stands for all.
inline bool is_emulated() {
  const char* emulator = std::getenv("KQSUPT_RUNNER");
  return emulator != nullptr && *emulator != '\0';
}

// The size of a buffer to look at after `size`, for an output of `length` characters: all up to 64,
// then some, and again all around the length.
inline size_t next_size(size_t size, size_t length) {
  constexpr size_t kStep = 23;
  return size < 64 || size + kStep > length ? size + 1 : std::min(size + kStep, length - 1);
}

// Formats into every size from 0 to one more than `whole` needs, each ending at an inaccessible page,
// and expects what of `whole` fits. A size of 0 has one byte, which receives the terminator.
template <class... Arguments>
testing::AssertionResult cut_to_every_size(const std::string& whole, const char* format,
                                           Arguments... arguments) {
  static const Guarded<char> room(kRoom);
  for (size_t size = 0; size <= whole.size() + 2; size = next_size(size, whole.size())) {
    char* text = room.end() - std::max<size_t>(size, 1);
    *text = 0x55;
    const int32_t stored = SMsnprintf(text, static_cast<uint32_t>(size), format, arguments...);
    const size_t fits = std::min(whole.size(), std::max<size_t>(size, 1) - 1);
    if (stored != static_cast<int32_t>(fits) || std::memcmp(text, whole.data(), fits) != 0 ||
        text[fits] != '\0') {
      return testing::AssertionFailure() << format << " in " << size << " bytes: " << stored
                                         << ", not " << fits << " of " << whole;
    }
  }
  return testing::AssertionSuccess();
}

}  // namespace kqsupt::tests
