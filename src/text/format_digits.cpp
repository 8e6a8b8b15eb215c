// Doubles times powers of ten, in 128 bits.

#include "text/format_digits.h"

#include <array>
#include <bit>
#include <cstddef>

namespace kqsupt::text {
namespace {

struct Wide {
  uint64_t high;
  uint64_t low;
};

constexpr Wide product(uint64_t a, uint64_t b) {
  const uint64_t a_high = a >> 32, a_low = a & UINT32_MAX;
  const uint64_t b_high = b >> 32, b_low = b & UINT32_MAX;
  const uint64_t middle = a_high * b_low + (a_low * b_low >> 32);
  const uint64_t other_middle = a_low * b_high + (middle & UINT32_MAX);
  return {a_high * b_high + (middle >> 32) + (other_middle >> 32), a * b};
}

// ---- Powers of ten ----
//
// From what leaves the first digit of the largest double before the point to what brings 17 digits
// of the smallest one there. A power is `bits` times 2^`exponent`, bits from 2^127 to 2^128. Each
// is made from its neighbour on the side of 1 and cut, never rounded up: it is short of the true
// power by less than two units of the last bit for every step from 1.

constexpr int32_t kLeastPower = -308;
constexpr int32_t kGreatestPower = 340;
constexpr uint64_t kLargestError = 2 * kGreatestPower;

struct Power {
  Wide bits;
  int32_t exponent;
};

constexpr Power ten_times(const Power& power) {
  const Wide low = product(power.bits.low, 10);
  Wide high = product(power.bits.high, 10);
  high.low += low.high;
  high.high += high.low < low.high ? 1 : 0;
  const int shift = high.high < 8 ? 3 : 4;
  return {
      {high.high << (64 - shift) | high.low >> shift, high.low << (64 - shift) | low.low >> shift},
      power.exponent + shift};
}

constexpr Power a_tenth_of(const Power& power) {
  // 8 or 16 times the bits, whichever has a tenth of 128 bits.
  const int shift = power.bits.high < 0xA000000000000000 ? 4 : 3;
  uint64_t rest = power.bits.high >> (64 - shift);
  const uint64_t words[] = {power.bits.high << shift | power.bits.low >> (64 - shift),
                            power.bits.low << shift};
  uint64_t tenths[2] = {};
  for (int i = 0; i < 4; ++i) {
    const int half = 32 * (1 - i % 2);
    rest = rest << 32 | (words[i / 2] >> half & UINT32_MAX);
    tenths[i / 2] |= rest / 10 << half;
    rest %= 10;
  }
  return {{tenths[0], tenths[1]}, power.exponent - shift};
}

using Powers = std::array<Power, kGreatestPower - kLeastPower + 1>;

constexpr Powers all_powers() {
  constexpr Power kOne = {{uint64_t{1} << 63, 0}, -127};
  Powers powers{};
  powers[-kLeastPower] = kOne;
  for (int32_t i = -kLeastPower + 1; i < static_cast<int32_t>(powers.size()); ++i) {
    powers[i] = ten_times(powers[i - 1]);
  }
  for (int32_t i = -kLeastPower; i > 0; --i) {
    powers[i - 1] = a_tenth_of(powers[i]);
  }
  return powers;
}

constexpr Powers kPowers = all_powers();

// ---- Products ----

// A double is `bits` times 2^`exponent`, bits from 2^63 to 2^64.
struct Binary {
  uint64_t bits;
  int32_t exponent;
};

Binary binary_of(double magnitude) {
  constexpr int32_t kFractionBits = 52;
  const auto word = std::bit_cast<uint64_t>(magnitude);
  const auto biased = static_cast<int32_t>(word >> kFractionBits);
  uint64_t bits = word & ((uint64_t{1} << kFractionBits) - 1);
  if (biased != 0) {
    bits |= uint64_t{1} << kFractionBits;
  }
  const int lead = std::countl_zero(bits);
  return {bits << lead, (biased != 0 ? biased : 1) - 1075 - lead};
}

// The product is cut to 128 bits, of which the last one is worth at most half of a unit of the
// fraction below, 2^-64. It is short of the true one by less than the power's error and one for the
// cut in these bits, and then by less than one of those units for the cut of the fraction. A
// fraction that passes 1 by this is rounded up either way, so that only those matter that may pass
// one half.
constexpr uint64_t kDoubt = (kLargestError + 1) / 2 + 1;

bool rounded_product(const Binary& number, int32_t power, uint64_t& result) {
  const Power& ten = kPowers[power - kLeastPower];
  const Wide upper = product(number.bits, ten.bits.high);
  const uint64_t low = upper.low + product(number.bits, ten.bits.low).high;
  const uint64_t high = upper.high + (low < upper.low ? 1 : 0);
  // The point stands before the last `places` of the 128 bits.
  const int32_t places = -(number.exponent + ten.exponent + 64);
  uint64_t integer = 0;
  uint64_t fraction = 0;
  if (places <= 64) {
    return false;  // 2^62 or more
  }
  if (places < 128) {
    integer = high >> (places - 64);
    fraction = high << (128 - places) | low >> (places - 64);
  } else if (places < 192) {
    fraction = high >> (places - 128);
  }
  constexpr uint64_t kHalf = uint64_t{1} << 63;
  if (fraction <= kHalf && kHalf - fraction <= kDoubt) {
    return false;
  }
  result = integer + (fraction > kHalf ? 1 : 0);
  return true;
}

constexpr std::array<uint64_t, 18> kTens = [] {
  std::array<uint64_t, 18> tens{1};
  for (size_t i = 1; i < tens.size(); ++i) {
    tens[i] = tens[i - 1] * 10;
  }
  return tens;
}();

}  // namespace

bool scale(double magnitude, int32_t power, uint64_t& result) {
  if (magnitude == 0) {
    result = 0;
    return true;
  }
  return rounded_product(binary_of(magnitude), power, result);
}

bool find_leading_digits(double magnitude, int32_t count, LeadingDigits& result) {
  if (magnitude == 0) {
    return false;
  }
  const Binary number = binary_of(magnitude);
  // The power of the largest power of ten that is not above 2^exponent is the one looked for or
  // the one below it: then there is a digit too many.
  constexpr int32_t kLog2 = 1262611;  // of 2 to the base 10, times 2^22
  int32_t power = (number.exponent + 63) * kLog2 >> 22;
  uint64_t value = 0;
  if (!rounded_product(number, count - 1 - power, value)) {
    return false;
  }
  if (value >= kTens[count]) {
    ++power;
    if (!rounded_product(number, count - 1 - power, value)) {
      return false;
    }
  }
  result = {value, power};
  return true;
}

}  // namespace kqsupt::text
