// Doubles of every kind in every form, beside the C library.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "text/formatted.h"

namespace {

using kqsupt::tests::cut_to_every_size;
using kqsupt::tests::expected;
using kqsupt::tests::formatted;
using kqsupt::tests::is_emulated;

class Random {
 public:
  uint32_t below(uint32_t limit) { return static_cast<uint32_t>(words_() % limit); }
  int32_t between(int32_t low, int32_t high) {
    return low + static_cast<int32_t>(below(static_cast<uint32_t>(high - low + 1)));
  }
  uint64_t word() { return words_(); }

 private:
  std::mt19937_64 words_{20};
};

// Any finite double.
double any_bits(Random& random) {
  double value = 0;
  do {
    value = std::bit_cast<double>(random.word());
  } while (!std::isfinite(value));
  return value;
}

// What people write: a few digits with a point among them.
double short_decimal(Random& random) {
  const double digits = random.below(1000000);
  return digits / std::pow(10, random.between(0, 8));
}

// Halfway between two texts of few digits, or a neighbour of that.
double tie(Random& random) {
  double value = (2.0 * random.below(100000) + 1) / std::exp2(random.between(1, 12));
  if (random.below(3) == 0) {
    value = std::nextafter(value, random.below(2) == 0 ? 0 : 1e300);
  }
  return value;
}

// A power of ten or a neighbour of it, where a number gets one digit more.
double power_of_ten(Random& random) {
  double value = std::pow(10, random.between(-30, 30));
  for (int32_t steps = random.between(-3, 3); steps != 0; steps += steps < 0 ? 1 : -1) {
    value = std::nextafter(value, steps < 0 ? 0 : 1e300);
  }
  return value;
}

// Nines that a rounding turns into one digit more.
double nines(Random& random) {
  return std::pow(10, random.between(-6, 12)) * (1 - std::pow(10, -random.between(1, 15)));
}

double integer(Random& random) {
  return static_cast<double>(random.word() >> random.below(64));
}

double subnormal(Random& random) {
  return std::bit_cast<double>(random.word() >> random.between(12, 63));
}

double any_double(Random& random) {
  constexpr double (*kKinds[])(Random&) = {any_bits,     short_decimal, short_decimal, tie,
                                           power_of_ten, nines,         integer,       subnormal};
  const double value = kKinds[random.below(std::size(kKinds))](random);
  return random.below(2) == 0 ? value : -value;
}

struct Form {
  std::string layout;  // flags and width
  int32_t precision;   // -1 for none
  char conversion;

  [[nodiscard]] std::string format() const {
    return "%" + layout + (precision < 0 ? "" : "." + std::to_string(precision)) + conversion;
  }
};

Form any_form(Random& random) {
  Form form;
  for (const char flag : {'-', '+', ' ', '#', '0'}) {
    if (random.below(4) == 0) {
      form.layout += flag;
    }
  }
  if (random.below(2) == 0) {
    form.layout += std::to_string(random.between(1, 40));
  }
  form.precision = random.below(8) == 0   ? -1
                   : random.below(8) == 0 ? random.between(20, 50)
                                          : random.between(0, 19);
  form.conversion = "eEfgG"[random.below(5)];
  return form;
}

// What the C library gives. Some versions lose the zeros of "%#g" where rounding adds a digit, so
// that this form is made of "%#e" and "%#f" by its definition.
std::string expected_form(const Form& form, double value) {
  const bool shorter = form.conversion == 'g' || form.conversion == 'G';
  if (!shorter || form.layout.find('#') == std::string::npos) {
    return expected(form.format().c_str(), value);
  }
  const int32_t digits = form.precision < 0 ? 6 : std::max(form.precision, 1);
  const std::string rounded = expected("%.*e", digits - 1, value);
  const int32_t power = std::stoi(rounded.substr(rounded.find('e') + 1));
  if (power < -4 || power >= digits) {
    const char conversion = form.conversion == 'G' ? 'E' : 'e';
    return expected(Form{form.layout, digits - 1, conversion}.format().c_str(), value);
  }
  return expected(Form{form.layout, digits - 1 - power, 'f'}.format().c_str(), value);
}

void expect_like_the_c_library(const Form& form, double value) {
  ASSERT_EQ(formatted(form.format().c_str(), value), expected_form(form, value))
      << form.format() << " of " << expected("%a", value);
}

TEST(FormatDouble, RandomCasesAreWhatTheCLibraryGives) {
  Random random;
  const uint32_t cases = is_emulated() ? 25000 : 1500000;
  for (uint32_t i = 0; i < cases && !HasFailure(); ++i) {
    const Form form = any_form(random);
    expect_like_the_c_library(form, any_double(random));
  }
  std::printf("[   FACT   ] %u random doubles in random forms like the C library's\n", cases);
}

TEST(FormatDouble, RandomCasesAreCutToEverySizeOfTheBuffer) {
  Random random;
  const uint32_t cases = is_emulated() ? 2000 : 100000;
  for (uint32_t i = 0; i < cases; ++i) {
    const Form form = any_form(random);
    const double value = any_double(random);
    ASSERT_TRUE(cut_to_every_size(expected_form(form, value), form.format().c_str(), value));
  }
  std::printf("[   FACT   ] %u random doubles cut to every size\n", cases);
}

TEST(FormatDouble, EveryPrecisionIsExact) {
  for (const double value : {0.1, 1.0 / 3, 1e23, 123456789.123456789, 1.7976931348623157e308,
                             2.2250738585072014e-308, 2.2250738585072009e-308, 5e-324, 0.5, 9.5}) {
    for (const char conversion : {'e', 'f', 'g'}) {
      for (const char* flags : {"", "#"}) {
        for (int32_t precision = 0; precision < 1200; precision += precision < 40 ? 1 : 29) {
          expect_like_the_c_library({flags, precision, conversion}, value);
        }
      }
    }
  }
}

TEST(FormatDouble, EveryPowerOfTwoIsExact) {
  for (int32_t power = -1074; power < 1024; ++power) {
    const double value = std::ldexp(1.0, power);
    for (const char* format : {"%.16e", "%.15e", "%g", "%.17g", "%.2f", "%.0f"}) {
      ASSERT_EQ(formatted(format, value), expected(format, value)) << format << " of 2^" << power;
    }
  }
}

// Doubles that lie very close to the middle between two texts of some number of digits.
TEST(FormatDouble, HardCasesAreExact) {
  struct Product {
    double integer;
    int32_t power;
  };
  constexpr Product kHard[] = {
      {8511030020275656, -342}, {5201988407066741, -824},  {6406892948269899, 237},
      {8431154198732492, 72},   {6475049196144587, 99},    {8274307542972842, 726},
      {5381065484265332, -456}, {6761728585499734, -1057}, {7976538478610756, 376},
      {5982403858958067, 377},  {5536995190630837, 93},    {7225450889282194, 710},
      {7225450889282194, 709},  {8703372741147379, 117},   {8944262675275217, -1001},
      {7459803696087692, -707}, {6080469016670379, -381},  {8385515147034757, 721},
      {7514216811389786, -587}, {8397297803260511, -202},  {6733459239310543, 202},
      {8091450587292794, -473}, {6567258882077402, 952},   {6712731423444934, 535},
      {6712731423444934, 534},  {5298405411573037, -957},  {5137311167659507, -144},
      {6722280709661868, 363},  {5344436398034927, -169},  {8369123604277281, -853},
      {8995822108487663, -780}, {8942832835564782, -383},  {8942832835564782, -384},
      {8942832835564782, -385}, {6965949469487146, -249},  {6965949469487146, -250},
      {6965949469487146, -251}, {7487252720986826, 548},   {5592117679628511, 164},
      {8887055249355788, 665},  {6994187472632449, 690},   {8797576579012143, 588},
      {7363326733505337, 272},  {8549497411294502, -448},  {9007199254740991, 971},
      {4503599627370497, -1074}};
  for (const Product& hard : kHard) {
    const double value = std::ldexp(hard.integer, hard.power);
    for (int32_t precision = 0; precision < 25; ++precision) {
      for (const char conversion : {'e', 'g'}) {
        expect_like_the_c_library({"", precision, conversion}, value);
      }
    }
  }
}

TEST(FormatDouble, EveryFlagWidthAndPrecisionIsWhatTheCLibraryGives) {
  for (unsigned set = 0; set < 32; ++set) {
    std::string flags;
    for (unsigned i = 0; i < 5; ++i) {
      if ((set >> i & 1) != 0) {
        flags += "-+ #0"[i];
      }
    }
    for (const char* width : {"", "1", "9", "20"}) {
      for (const int32_t precision : {-1, 0, 1, 2, 17, 30}) {
        for (const char conversion : {'e', 'E', 'f', 'g', 'G'}) {
          for (const double value :
               {0.0, -0.0, 1.0, -1.5, 0.000123456789, 99999.95, 1e15, -1e-300}) {
            expect_like_the_c_library({flags + width, precision, conversion}, value);
          }
        }
      }
    }
  }
}

}  // namespace
