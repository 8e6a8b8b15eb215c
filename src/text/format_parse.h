// The first step of formatting: reading a conversion specification.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace kqsupt::text {

// The arguments of a call, taken one after the other. Whoever makes them starts and ends the list,
// in place if possible: to read what a copy has only just written takes longer than a short output.
struct Arguments {
  va_list list;

  // Also a short, which is passed as an int, and a long, which has 32 bits here.
  int32_t next_int() { return va_arg(list, int); }
  double next_double() { return va_arg(list, double); }
  template <class T>
  T* next_pointer() {
    return static_cast<T*>(va_arg(list, void*));
  }
};

inline constexpr int32_t kNoPrecision = -1;

struct Spec {
  bool left = false;       // "-"
  bool plus = false;       // "+"
  bool space = false;      // " "
  bool alternate = false;  // "#"
  bool zero = false;       // "0"
  bool is_short = false;   // "h"
  char conversion = 0;     // 0: the format ends before it
  uint32_t width = 0;
  int32_t precision = kNoPrecision;
};

// Reads what follows a "%" at `format`, its "*" from the arguments, and returns
// where the format goes on. A width or precision beyond INT32_MAX in the format counts as that.
// "i", "D", "U" and "O" are told as what they stand for: "d", "d", "u" and "o" of a long.
const char* parse_spec(const char* format, Arguments& arguments, Spec& spec);

}  // namespace kqsupt::text
