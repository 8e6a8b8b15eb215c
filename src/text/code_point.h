// One code point in each encoding.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "kqsupt/text.h"

namespace kqsupt::text {

inline constexpr uint32_t kMostUtf8Bytes = 6;  // the original form, which is read and not written
inline constexpr uint32_t kMostUcs2Units = 2;

// A unit at any address: a value inside a block of bytes lies as it comes.
[[nodiscard]] inline ustring unit_at(const ustring* at) {
  ustring unit;
  std::memcpy(&unit, at, sizeof unit);
  return unit;
}
inline void put_unit(ustring* at, uint32_t unit) {
  const auto value = static_cast<ustring>(unit);
  std::memcpy(at, &value, sizeof value);
}

// The number of bytes that a code point of UCS-2 text, with its surrogates, takes in UTF-8.
[[nodiscard]] constexpr uint32_t utf8_length(uint32_t code_point) {
  if (code_point < 0x80) {
    return 1;
  }
  if (code_point < 0x800) {
    return 2;
  }
  if (code_point < 0x10000) {
    return 3;
  }
  return 4;
}

// Writes the `length` bytes of a code point.
inline void write_utf8(char* to, uint32_t code_point, uint32_t length) {
  if (length == 1) {
    to[0] = static_cast<char>(code_point);
    return;
  }
  for (uint32_t i = length - 1; i > 0; --i) {
    to[i] = static_cast<char>(0x80 | (code_point & 0x3F));
    code_point >>= 6;
  }
  const uint32_t lead = 0xFF00U >> length & 0xFFU;
  to[0] = static_cast<char>(lead | code_point);
}

// A code point and the number of bytes it was read from; 0 bytes when it could not be read.
struct Decoded {
  uint32_t code_point;
  uint32_t length;
};

// Reads the sequence at `from`, which ends at a zero byte. The bytes behind the lead byte are not
// checked for their pattern and over-long forms pass: agents exchange texts that rely on it.
[[nodiscard]] inline Decoded read_utf8(const char* from) {
  const auto lead = static_cast<uint8_t>(from[0]);
  const auto length = static_cast<uint32_t>(std::countl_one(lead));
  if (length == 0) {
    return {lead, 1};
  }
  if (length == 1 || length > kMostUtf8Bytes) {
    return {0, 0};
  }
  uint32_t code_point = lead & (0x7FU >> length);
  for (uint32_t i = 1; i < length; ++i) {
    if (from[i] == '\0') {
      return {0, 0};
    }
    code_point = code_point << 6 | (static_cast<uint8_t>(from[i]) & 0x3FU);
  }
  return {code_point, length};
}

// The number of units that a code point takes in UCS-2; 0 for one that has no form. Surrogates
// among them pass through as units of their own.
[[nodiscard]] constexpr uint32_t ucs2_length_of(uint32_t code_point) {
  return code_point < 0x10000 ? 1 : code_point < 0x110000 ? 2 : 0;
}

// Writes the units of a code point. The value of a pair is not reduced by 0x10000 first: that is
// the form in which such text has always been stored, and its readers expect it.
inline void write_ucs2(ustring* to, uint32_t code_point, uint32_t length) {
  if (length == 1) {
    put_unit(to, code_point);
    return;
  }
  put_unit(to, 0xD800 | (code_point >> 10 & 0x3FF));
  put_unit(to + 1, 0xDC00 | (code_point & 0x3FF));
}

[[nodiscard]] constexpr bool is_surrogate(ustring unit) {
  return (unit & 0xF800) == 0xD800;
}
[[nodiscard]] constexpr bool is_high_surrogate(ustring unit) {
  return (unit & 0xFC00) == 0xD800;
}
[[nodiscard]] constexpr bool is_low_surrogate(ustring unit) {
  return (unit & 0xFC00) == 0xDC00;
}

}  // namespace kqsupt::text
