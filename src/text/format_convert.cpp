// Integers, characters and texts as fields.

#include "text/format_convert.h"

#include <cstring>

#include "text/decimal.h"

namespace kqsupt::text {
namespace {

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

// The decimal digits, the same.
char* decimal_digits_of(const Spec& spec, uint32_t value, NumberText& room) {
  return has_no_digits(spec, value) ? room.end() : write_decimal(value, room.end());
}

}  // namespace

Field convert_decimal(const Spec& spec, uint32_t value, NumberText& room) {
  return integer_field(spec, decimal_digits_of(spec, value, room), room.end());
}

Field convert_signed(const Spec& spec, int32_t value, NumberText& room) {
  const auto bits = static_cast<uint32_t>(value);
  char* const first = decimal_digits_of(spec, value < 0 ? 0U - bits : bits, room);
  Field field = integer_field(spec, first, room.end());
  field.text = prepend_sign(spec, value < 0, first, field.prefix);
  field.size += field.prefix;
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
