// Reading numbers: first the notation, then the value.

#include "text/parse_number.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace kqsupt::text {
namespace {

constexpr std::string_view kOctalDigits = "01234567";
constexpr std::string_view kDecimalDigits = "0123456789";
constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";

// A number as it stands in a text: its digits without sign and prefix.
struct Notation {
  std::string_view digits;
  uint32_t base;
  bool negative = false;
};

// Splits `text` into sign, prefix and digits. False when it is not a number in the notation
// `format`.
bool split(const char* text, uint32_t format, size_t hex_digits, Notation* number) {
  std::string_view digits(text);
  switch (format) {
    case SMXLT_FMT_DEFAULT:
    case SMXLT_FMT_DECIMAL: {
      const bool negative = digits.starts_with('-');
      const bool empty = digits.empty();
      digits.remove_prefix(negative || digits.starts_with('+') ? 1 : 0);
      *number = {digits, 10, negative};
      // A lone sign passes, as 0.
      return !empty && digits.find_first_not_of(kDecimalDigits) == std::string_view::npos;
    }
    case SMXLT_FMT_OCTAL:
      *number = {digits, 8};
      return !digits.empty() && digits.find_first_not_of(kOctalDigits) == std::string_view::npos;
    case SMXLT_FMT_HEX:
      if (digits.starts_with("0x") || digits.starts_with("0X")) {
        digits.remove_prefix(2);
      }
      *number = {digits, 16};
      return !digits.empty() && digits.size() <= hex_digits &&
             digits.find_first_not_of(kHexDigits) == std::string_view::npos;
    default:
      return false;
  }
}

uint32_t digit_value(char digit) {
  if (digit <= '9') {
    return static_cast<uint32_t>(digit - '0');
  }
  return static_cast<uint32_t>((digit | 0x20) - 'a') + 10;
}

// The magnitude, `limit` when it is greater. `*exact` tells which.
uint64_t magnitude(const Notation& number, uint64_t limit, bool* exact) {
  uint64_t value = 0;
  *exact = true;
  for (const char digit : number.digits) {
    const uint32_t next = digit_value(digit);
    if (value > (limit - next) / number.base) {
      *exact = false;
      return limit;
    }
    value = value * number.base + next;
  }
  return value;
}

// The signed number, the nearest one of the type when it is out of range.
template <class Signed>
Signed signed_value(const Notation& number, bool* exact) {
  using Limits = std::numeric_limits<Signed>;
  const auto maximum = static_cast<uint64_t>(Limits::max());
  const uint64_t value = magnitude(number, maximum + (number.negative ? 1 : 0), exact);
  return static_cast<Signed>(number.negative ? 0 - value : value);
}

constexpr size_t kHexDigits32 = 8;
constexpr size_t kHexDigits64 = 16;

}  // namespace

SMStatus parse_s32(const char* text, uint32_t format, int32_t* value) {
  Notation number;
  if (!split(text, format, kHexDigits32, &number)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  bool exact = true;
  *value = signed_value<int32_t>(number, &exact);
  return SM_STATUS_SUCCESS;
}

SMStatus parse_u32(const char* text, uint32_t format, uint32_t* value) {
  Notation number;
  if (!split(text, format, kHexDigits32, &number)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  bool exact = true;
  const auto parsed = static_cast<uint32_t>(magnitude(number, UINT32_MAX, &exact));
  *value = number.negative && exact ? 0 - parsed : parsed;
  return SM_STATUS_SUCCESS;
}

SMStatus parse_s64(const char* text, uint32_t format, int64_t* value, bool* exact) {
  Notation number;
  if (!split(text, format, kHexDigits32, &number)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (number.base != 10) {
    return kNotationNotRead;
  }
  bool in_range = true;
  *value = signed_value<int64_t>(number, &in_range);
  if (exact != nullptr) {
    *exact = in_range;
  }
  return SM_STATUS_SUCCESS;
}

SMStatus parse_u64(const char* text, uint32_t format, uint64_t* value) {
  Notation number;
  if (!split(text, format, kHexDigits64, &number)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (number.base == 8) {
    return kNotationNotRead;
  }
  bool exact = true;
  *value = number.negative ? 0 : magnitude(number, UINT64_MAX, &exact);
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::text
