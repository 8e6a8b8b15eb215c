// Integers, doubles and texts as fields.

#include "text/format_convert.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstring>

namespace kqsupt::text {
namespace {

// The sign that stands before a number; 0 for none.
char sign_of(const Spec& spec, bool negative) {
  return negative ? '-' : spec.plus ? '+' : spec.space ? ' ' : '\0';
}

// Puts the sign before the text of the field.
void add_sign(char sign, char* text, Field& field) {
  if (sign != '\0') {
    text[-1] = sign;
    field.text = text - 1;
    field.size += 1;
    field.prefix = 1;
  }
}

// ---- Integers ----

// A value of 0 with a precision of 0 has no digits.
bool has_no_digits(const Spec& spec, uintptr_t value) {
  return value == 0 && spec.precision == 0;
}

// The digits from `first` to `end` with as many zeros as the precision asks for.
Field integer_field(const Spec& spec, const char* first, const char* end) {
  Field field{first, static_cast<size_t>(end - first)};
  if (spec.precision == kNoPrecision) {
    field.zero_fill = spec.zero;
  } else if (static_cast<size_t>(spec.precision) > field.size) {
    field.zeros_behind_prefix =
        static_cast<uint32_t>(spec.precision) - static_cast<uint32_t>(field.size);
  }
  return field;
}

// The digits of a base of 2 to the power of `bits`, which end at the end of the room.
const char* digits_of(const Spec& spec, uintptr_t value, unsigned bits, const char* digits,
                      NumberText& room) {
  char* at = room.end();
  if (!has_no_digits(spec, value)) {
    do {
      *--at = digits[value & ((1U << bits) - 1)];
      value >>= bits;
    } while (value != 0);
  }
  return at;
}

// "00" to "99".
constexpr std::array<char, 200> kPairs = [] {
  std::array<char, 200> pairs{};
  for (size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// The decimal digits, which end at the end of the room.
char* decimal_digits_of(const Spec& spec, uint32_t value, NumberText& room) {
  char* at = room.end();
  if (has_no_digits(spec, value)) {
    return at;
  }
  for (; value >= 100; value /= 100) {
    at -= 2;
    std::memcpy(at, &kPairs[value % 100 * 2], 2);
  }
  if (value >= 10) {
    at -= 2;
    std::memcpy(at, &kPairs[value * 2], 2);
  } else {
    *--at = static_cast<char>('0' + value);
  }
  return at;
}

}  // namespace

Field convert_decimal(const Spec& spec, uint32_t value, NumberText& room) {
  return integer_field(spec, decimal_digits_of(spec, value, room), room.end());
}

Field convert_signed(const Spec& spec, int32_t value, NumberText& room) {
  const auto bits = static_cast<uint32_t>(value);
  char* const first = decimal_digits_of(spec, value < 0 ? 0U - bits : bits, room);
  Field field = integer_field(spec, first, room.end());
  add_sign(sign_of(spec, value < 0), first, field);
  return field;
}

Field convert_octal(const Spec& spec, uint32_t value, NumberText& room) {
  const char* first = digits_of(spec, value, 3, "01234567", room);
  Field field = integer_field(spec, first, room.end());
  if (spec.alternate && field.zeros_behind_prefix == 0 && (field.size == 0 || *first != '0')) {
    field.zeros_behind_prefix = 1;
  }
  return field;
}

Field convert_hexadecimal(const Spec& spec, uintptr_t value, NumberText& room) {
  const bool upper = spec.conversion == 'X';
  const char* first =
      digits_of(spec, value, 4, upper ? "0123456789ABCDEF" : "0123456789abcdef", room);
  Field field = integer_field(spec, first, room.end());
  if (spec.alternate && value != 0) {
    char* prefix = room.end() - field.size - 2;
    prefix[0] = '0';
    prefix[1] = upper ? 'X' : 'x';
    field.text = prefix;
    field.size += 2;
    field.prefix = 2;
  }
  return field;
}

// ---- Doubles ----

namespace {

constexpr int32_t kDefaultPrecision = 6;

// "ddd.ddd"
Field convert_fixed(const Spec& spec, double magnitude, int32_t precision, NumberText& room) {
  const int32_t made = std::min(precision, kMostDecimals);
  char* const first = room.digits();
  char* end = std::to_chars(first, room.end(), magnitude, std::chars_format::fixed, made).ptr;
  if (precision == 0 && spec.alternate) {
    *end++ = '.';
  }
  Field field{first, static_cast<size_t>(end - first)};
  field.zeros_before_suffix = static_cast<uint32_t>(precision - made);
  return field;
}

// A number as it is written with an exponent, "d.ddde+dd"; a lone digit has no point.
struct Scientific {
  char* first;
  char* mark;  // the "e"
  char* end;
  int32_t digits;
};

Scientific to_scientific(const Spec& spec, double magnitude, int32_t digits, NumberText& room) {
  char* const first = room.digits();
  char* const mark = first + digits + (digits > 1 ? 1 : 0);
  char* const end =
      std::to_chars(first, room.end(), magnitude, std::chars_format::scientific, digits - 1).ptr;
  if (spec.conversion == 'E' || spec.conversion == 'G') {
    *mark = 'E';
  }
  return {first, mark, end, digits};
}

int32_t power_of(const Scientific& number) {
  int32_t power = 0;
  for (const char* at = number.mark + 2; at != number.end; ++at) {
    power = power * 10 + (*at - '0');
  }
  return number.mark[1] == '-' ? -power : power;
}

// Moves the exponent to behind the digits that stay, and behind a point where the alternate form
// wants one.
Field with_exponent(const Spec& spec, const Scientific& number) {
  const bool has_point = number.digits > 1 || spec.alternate;
  char* const mark = number.first + number.digits + (has_point ? 1 : 0);
  const auto suffix = static_cast<size_t>(number.end - number.mark);
  if (mark != number.mark) {
    std::memmove(mark, number.mark, suffix);
    if (has_point) number.first[1] = '.';
  }
  Field field{number.first, static_cast<size_t>(mark - number.first) + suffix};
  field.suffix = static_cast<uint32_t>(suffix);
  return field;
}

// "ddd.ddd" of a number whose exponent is not below -4 and which has digits up to its point.
Field without_exponent(const Spec& spec, const Scientific& number, int32_t power) {
  if (power < 0) {
    number.first[1] = number.first[0];
    char* const first = number.first + power;
    std::memset(first, '0', static_cast<size_t>(1 - power));
    first[1] = '.';
    return {first, static_cast<size_t>(1 - power + number.digits)};
  }
  const int32_t whole = power + 1;
  std::memmove(number.first + 1, number.first + 2, static_cast<size_t>(power));
  number.first[whole] = '.';
  const bool has_point = number.digits > whole || spec.alternate;
  return {number.first, static_cast<size_t>(std::max(number.digits, whole) + (has_point ? 1 : 0))};
}

Field convert_scientific(const Spec& spec, double magnitude, int32_t precision, NumberText& room) {
  const int32_t made = std::min(precision, kMostDigits - 1);
  Field field = with_exponent(spec, to_scientific(spec, magnitude, made + 1, room));
  field.zeros_before_suffix = static_cast<uint32_t>(precision - made);
  return field;
}

Field convert_shorter(const Spec& spec, double magnitude, int32_t precision, NumberText& room) {
  const int32_t wanted = std::max(precision, 1);
  Scientific number = to_scientific(spec, magnitude, std::min(wanted, kMostDigits), room);
  const int32_t zeros = spec.alternate ? wanted - number.digits : 0;
  if (!spec.alternate) {
    while (number.digits > 1 && number.first[number.digits] == '0') {
      --number.digits;
    }
  }
  const int32_t power = power_of(number);
  Field field = power < -4 || power >= wanted ? with_exponent(spec, number)
                                              : without_exponent(spec, number, power);
  field.zeros_before_suffix = static_cast<uint32_t>(zeros);
  return field;
}

Field convert_finite(const Spec& spec, double magnitude, NumberText& room) {
  const int32_t precision = spec.precision == kNoPrecision ? kDefaultPrecision : spec.precision;
  switch (spec.conversion) {
    case 'f':
      return convert_fixed(spec, magnitude, precision, room);
    case 'e':
    case 'E':
      return convert_scientific(spec, magnitude, precision, room);
    default:
      return convert_shorter(spec, magnitude, precision, room);
  }
}

// What is not a number counts as an infinity too, but never has a sign: the agents read the text
// back, and know no third word.
Field convert_infinite(const Spec& spec, double value, NumberText& room) {
  char* const first = room.digits();
  std::memcpy(first, "Inf", 3);
  Field field{first, 3};
  field.zero_fill = spec.zero;
  if (value == value) {
    add_sign(sign_of(spec, value < 0), first, field);
  }
  return field;
}

}  // namespace

Field convert_double(const Spec& spec, double value, NumberText& room) {
  const double magnitude = std::fabs(value);
  if (!(magnitude <= DBL_MAX)) {
    return convert_infinite(spec, value, room);
  }
  Field field = convert_finite(spec, magnitude, room);
  field.zero_fill = spec.zero;
  add_sign(sign_of(spec, std::signbit(value)), const_cast<char*>(field.text), field);
  return field;
}

// ---- Characters and texts ----

Field convert_character(const Spec& spec, int32_t value, NumberText& room) {
  *room.digits() = static_cast<char>(value);
  Field field{room.digits(), 1};
  field.zero_fill = spec.zero;
  return field;
}

Field convert_text(const Spec& spec, const char* text) {
  if (text == nullptr) {
    text = "(null)";
  }
  Field field{text, spec.precision == kNoPrecision
                        ? std::strlen(text)
                        : strnlen(text, static_cast<size_t>(spec.precision))};
  field.zero_fill = spec.zero;
  return field;
}

}  // namespace kqsupt::text
