// The decimal digits of an integer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kqsupt::text {

// "00" to "99".
inline constexpr std::array<char, 200> kDigitPairs = [] {
  std::array<char, 200> pairs{};
  for (size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Writes the digits of `value`, "0" for 0, in front of `end` and returns the first one.
inline char* write_decimal(uint32_t value, char* end) {
  for (; value >= 100; value /= 100) {
    end -= 2;
    std::memcpy(end, &kDigitPairs[value % 100 * 2], 2);
  }
  if (value < 10) {
    *--end = static_cast<char>('0' + value);
    return end;
  }
  end -= 2;
  std::memcpy(end, &kDigitPairs[value * 2], 2);
  return end;
}

inline char* write_decimal(uint64_t value, char* end) {
  // Division of 32 bits is the cheaper one.
  constexpr uint32_t kEightDigits = 100000000;
  for (; value > UINT32_MAX; value /= kEightDigits) {
    auto eight = static_cast<uint32_t>(value % kEightDigits);
    for (int pair = 0; pair < 4; ++pair, eight /= 100) {
      end -= 2;
      std::memcpy(end, &kDigitPairs[eight % 100 * 2], 2);
    }
  }
  return write_decimal(static_cast<uint32_t>(value), end);
}

}  // namespace kqsupt::text
