// The digits of most doubles in one step: a product of a few words that knows when it is not
// enough. std::to_chars has all of them, but takes three times as long.
#pragma once

#include <cstdint>

namespace kqsupt::text {

// `magnitude`, which is finite and not negative, times 10 to the power of `power`, from 0 to 17,
// rounded to the nearest integer. False, with nothing told, when that is 2^62 or more, or when the
// product is too close to halfway between two integers to tell the nearer one.
[[nodiscard]] bool scale(double magnitude, int32_t power, uint64_t& result);

// The first digits of a number as one integer, and the power of ten of the first one.
struct LeadingDigits {
  uint64_t value;
  int32_t power;
};

// The first `count` digits of `magnitude`, from 1 to 17, rounded to the nearest. False, with
// nothing told, for 0 and where it is too close to halfway.
[[nodiscard]] bool find_leading_digits(double magnitude, int32_t count, LeadingDigits& result);

}  // namespace kqsupt::text
