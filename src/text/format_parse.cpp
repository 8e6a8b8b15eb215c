// Reading a conversion specification: flags, width, precision, size and conversion, in this order.

#include "text/format_parse.h"

namespace kqsupt::text {
namespace {

const char* parse_flags(const char* at, Spec& spec) {
  for (;; ++at) {
    switch (*at) {
      case '-':
        spec.left = true;
        break;
      case '+':
        spec.plus = true;
        break;
      case ' ':
        spec.space = true;
        break;
      case '#':
        spec.alternate = true;
        break;
      case '0':
        spec.zero = true;
        break;
      default:
        return at;
    }
  }
}

const char* parse_number(const char* at, int32_t& number) {
  number = 0;
  for (; *at >= '0' && *at <= '9'; ++at) {
    const int32_t digit = *at - '0';
    number = number > (INT32_MAX - digit) / 10 ? INT32_MAX : number * 10 + digit;
  }
  return at;
}

const char* parse_width(const char* at, Arguments& arguments, Spec& spec) {
  int32_t width = 0;
  if (*at != '*') {
    at = parse_number(at, width);
    spec.width = static_cast<uint32_t>(width);
    return at;
  }
  width = arguments.next_int();
  spec.left = spec.left || width < 0;
  spec.width = width < 0 ? 0U - static_cast<uint32_t>(width) : static_cast<uint32_t>(width);
  return at + 1;
}

const char* parse_precision(const char* at, Arguments& arguments, Spec& spec) {
  if (*at != '.') {
    return at;
  }
  ++at;
  if (*at != '*') {
    return parse_number(at, spec.precision);
  }
  const int32_t precision = arguments.next_int();
  spec.precision = precision < 0 ? kNoPrecision : precision;
  return at + 1;
}

// Of several sizes the last one counts. There is none above 32 bits, so that "l" only takes back an
// "h", and "L" says nothing: every floating argument is a double.
const char* parse_size(const char* at, Spec& spec) {
  for (;; ++at) {
    switch (*at) {
      case 'h':
        spec.is_short = true;
        break;
      case 'l':
        spec.is_short = false;
        break;
      case 'L':
        break;
      default:
        return at;
    }
  }
}

}  // namespace

const char* parse_spec(const char* format, Arguments& arguments, Spec& spec) {
  spec = {};
  const char* at = format;
  // All characters of flags, widths and precisions come before the letters.
  if (static_cast<unsigned char>(*at) < 'A') {
    at = parse_flags(at, spec);
    at = parse_width(at, arguments, spec);
    at = parse_precision(at, arguments, spec);
  }
  at = parse_size(at, spec);
  spec.conversion = *at;
  switch (*at) {
    case '\0':
      return at;
    case 'i':
      spec.conversion = 'd';
      break;
    case 'D':
    case 'O':
    case 'U':
      spec.conversion = static_cast<char>(*at - 'A' + 'a');
      spec.is_short = false;
      break;
    default:
      break;
  }
  return at + 1;
}

}  // namespace kqsupt::text
