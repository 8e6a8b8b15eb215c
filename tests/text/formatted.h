// What a format makes of its arguments, as a string.
#pragma once

#include <cstdio>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/text.h"

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

}  // namespace kqsupt::tests
