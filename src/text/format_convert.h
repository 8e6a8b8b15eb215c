// The second step of formatting: a value becomes the text of a field, before it is padded.
#pragma once

#include <cstddef>
#include <cstdint>

#include "text/format_parse.h"

namespace kqsupt::text {

// The text of a value: characters with a run of zeros behind the first few of them, and another one
// before the last few. The runs are only counted, for a precision may ask for two thousand million.
struct Field {
  const char* text;
  size_t size;
  uint32_t prefix = 0;  // of the characters: a sign, "0x" or "0X"
  uint32_t suffix = 0;  // of the characters: an exponent
  uint32_t zeros_behind_prefix = 0;
  uint32_t zeros_before_suffix = 0;
  bool zero_fill = false;  // the width is made up with zeros behind the prefix
};

// The largest double has 309 digits before its point, the smallest one 1074 behind it; none has
// more than 767 from its first digit other than 0 to its last. All that a precision asks for beyond
// these is zeros.
inline constexpr int32_t kMostDecimals = 1074;
inline constexpr int32_t kMostDigits = 767;

// Where the text of a number is made.
struct NumberText {
  static constexpr size_t kLead = 24;  // for zeros, a point and a sign before digits
  char lead[kLead + 309 + 1 + kMostDecimals + 24];

  char* digits() { return lead + kLead; }
  char* end() { return lead + sizeof lead; }
};

// Puts the sign of a signed conversion before its digits at `first`. Returns where the text begins,
// and how many characters the sign has.
inline char* prepend_sign(const Spec& spec, bool negative, char* first, uint32_t& prefix) {
  const char sign = negative ? '-' : spec.plus ? '+' : spec.space ? ' ' : '\0';
  if (sign == '\0') {
    return first;
  }
  first[-1] = sign;
  prefix = 1;
  return first - 1;
}

// "d".
[[nodiscard]] Field convert_signed(const Spec& spec, int32_t value, NumberText& room);

// "u".
[[nodiscard]] Field convert_decimal(const Spec& spec, uint32_t value, NumberText& room);

// "o".
[[nodiscard]] Field convert_octal(const Spec& spec, uint32_t value, NumberText& room);

// "x" and "X"; "p" is the alternate form of "x".
[[nodiscard]] Field convert_hexadecimal(const Spec& spec, uintptr_t value, NumberText& room);

// "e", "E", "f", "g" and "G". The digits are those of the exact value, rounded to the nearest, a
// tie to the even digit.
[[nodiscard]] Field convert_double(const Spec& spec, double value, NumberText& room);

// "c".
[[nodiscard]] Field convert_character(const Spec& spec, int32_t value, NumberText& room);

// "s". At most `precision` bytes of the text are read; null stands for "(null)".
[[nodiscard]] Field convert_text(const Spec& spec, const char* text);

}  // namespace kqsupt::text
