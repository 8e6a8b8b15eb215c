// Doubles as fields.

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "text/decimal.h"
#include "text/format_convert.h"
#include "text/format_digits.h"

namespace kqsupt::text {
namespace {

constexpr int32_t kDefaultPrecision = 6;

// Up to so many digits behind the point, or in all, may be found in one step; an integer of all of
// them has at most 19.
constexpr int32_t kFewDigits = 17;
constexpr int32_t kDigitsOfFew = 19;

// A text in the room for it.
struct Span {
  char* first;
  char* end;
};

// Puts a point behind the first `whole` of the digits at `first`, which move to the front by one
// for it. Returns where they begin then.
char* insert_point(char* first, int32_t whole) {
  // Eight are moved in a step, which is one for most numbers; the last step spoils what is behind.
  uint64_t behind;
  std::memcpy(&behind, first + whole, sizeof behind);
  for (int32_t i = 0; i < whole; i += 8) {
    std::memmove(first + i - 1, first + i, 8);
  }
  std::memcpy(first + whole, &behind, sizeof behind);
  first[whole - 1] = '.';
  return first - 1;
}

// Puts `count` zeros before `first`. Returns where they begin.
char* prepend_zeros(char* first, int32_t count) {
  std::memset(first - count, '0', static_cast<size_t>(count));
  return first - count;
}

// ---- "ddd.ddd" ----

Span fixed_text(double magnitude, int32_t precision, NumberText& room, Field& field) {
  uint64_t number = 0;
  if (precision <= kFewDigits && scale(magnitude, precision, number)) {
    char* const end = room.digits() + kDigitsOfFew;
    char* first = write_decimal(number, end);
    const auto whole = static_cast<int32_t>(end - first) - precision;
    if (whole <= 0) {
      first = prepend_zeros(first, 1 - whole);
    }
    return {precision == 0 ? first : insert_point(first, std::max(whole, 1)), end};
  }
  const int32_t made = std::min(precision, kMostDecimals);
  field.zeros_before_suffix = static_cast<uint32_t>(precision - made);
  char* const first = room.digits();
  return {first, std::to_chars(first, room.end(), magnitude, std::chars_format::fixed, made).ptr};
}

Span convert_fixed(const Spec& spec, double magnitude, int32_t precision, NumberText& room,
                   Field& field) {
  Span text = fixed_text(magnitude, precision, room, field);
  if (precision == 0 && spec.alternate) {
    *text.end++ = '.';
  }
  return text;
}

// ---- "d.ddd" and an exponent ----

// The digits of a number, which stand without a point, and the power of ten of the first one.
struct Scientific {
  char* first;
  int32_t digits;
  int32_t power;
};

Scientific to_scientific(double magnitude, int32_t digits, NumberText& room) {
  LeadingDigits leading;
  if (digits <= kFewDigits && find_leading_digits(magnitude, digits, leading)) {
    char* const first = write_decimal(leading.value, room.digits() + digits);
    return {first, digits, leading.power};
  }
  char* const first = room.digits();
  const char* const end =
      std::to_chars(first, room.end(), magnitude, std::chars_format::scientific, digits - 1).ptr;
  const char* const mark = first + digits + (digits > 1 ? 1 : 0);
  int32_t power = 0;
  std::from_chars(mark + 2, end, power);
  power = mark[1] == '-' ? -power : power;
  if (digits == 1) {
    return {first, digits, power};
  }
  first[1] = first[0];  // in the place of the point
  return {first + 1, digits, power};
}

Span with_exponent(const Spec& spec, const Scientific& number, Field& field) {
  char* const mark = number.first + number.digits;
  char* at = mark;
  *at++ = spec.conversion == 'E' || spec.conversion == 'G' ? 'E' : 'e';
  *at++ = number.power < 0 ? '-' : '+';
  const int32_t power = std::abs(number.power);
  if (power >= 100) {
    *at++ = static_cast<char>('0' + power / 100);
  }
  std::memcpy(at, &kDigitPairs[static_cast<size_t>(power % 100 * 2)], 2);
  at += 2;
  field.suffix = static_cast<uint32_t>(at - mark);
  const bool has_point = number.digits > 1 || spec.alternate;
  return {has_point ? insert_point(number.first, 1) : number.first, at};
}

// The digits up to the point are there, also where `number.digits` says that the last ones are
// zeros.
Span without_exponent(const Spec& spec, const Scientific& number) {
  char* const end = number.first + number.digits;
  if (number.power < 0) {
    return {insert_point(prepend_zeros(number.first, -number.power), 1), end};
  }
  const int32_t whole = number.power + 1;
  const bool has_point = number.digits > whole || spec.alternate;
  return {has_point ? insert_point(number.first, whole) : number.first,
          std::max(end, number.first + whole)};
}

Span convert_scientific(const Spec& spec, double magnitude, int32_t precision, NumberText& room,
                        Field& field) {
  const int32_t made = std::min(precision, kMostDigits - 1);
  field.zeros_before_suffix = static_cast<uint32_t>(precision - made);
  return with_exponent(spec, to_scientific(magnitude, made + 1, room), field);
}

Span convert_shorter(const Spec& spec, double magnitude, int32_t precision, NumberText& room,
                     Field& field) {
  const int32_t wanted = std::max(precision, 1);
  Scientific number = to_scientific(magnitude, std::min(wanted, kMostDigits), room);
  if (spec.alternate) {
    field.zeros_before_suffix = static_cast<uint32_t>(wanted - number.digits);
  } else {
    while (number.digits > 1 && number.first[number.digits - 1] == '0') {
      --number.digits;
    }
  }
  return number.power < -4 || number.power >= wanted ? with_exponent(spec, number, field)
                                                     : without_exponent(spec, number);
}

Span convert_finite(const Spec& spec, double magnitude, NumberText& room, Field& field) {
  const int32_t precision = spec.precision == kNoPrecision ? kDefaultPrecision : spec.precision;
  switch (spec.conversion) {
    case 'f':
      return convert_fixed(spec, magnitude, precision, room, field);
    case 'e':
    case 'E':
      return convert_scientific(spec, magnitude, precision, room, field);
    default:
      return convert_shorter(spec, magnitude, precision, room, field);
  }
}

Span infinity(NumberText& room) {
  char* const first = room.digits();
  std::memcpy(first, "Inf", 3);
  return {first, first + 3};
}

}  // namespace

Field convert_double(const Spec& spec, double value, NumberText& room) {
  Field field;
  field.zero_fill = spec.zero;
  const double magnitude = std::fabs(value);
  const Span text =
      magnitude <= DBL_MAX ? convert_finite(spec, magnitude, room, field) : infinity(room);
  // What is not a number counts as an infinity too, but has no sign at all: those who read the text
  // back know no third word.
  field.text = value == value ? prepend_sign(spec, std::signbit(value), text.first, field.prefix)
                              : text.first;
  field.size = static_cast<size_t>(text.end - field.text);
  return field;
}

}  // namespace kqsupt::text
