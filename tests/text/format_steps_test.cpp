// The steps of formatting each on its own, and what callers inside the library see.

#include <cmath>
#include <string>

#include "gtest/gtest.h"
#include "text/format.h"
#include "text/format_convert.h"
#include "text/format_digits.h"
#include "text/format_parse.h"
#include "text/format_write.h"

namespace kqsupt::text {
namespace {

// Parses what stands behind the "%" at the beginning of `format`.
struct Parsed {
  Spec spec;
  std::string rest;
};
Parsed parse(const char* format, ...) {
  Arguments arguments;
  va_start(arguments.list, format);
  Parsed parsed;
  parsed.rest = parse_spec(format + 1, arguments, parsed.spec);
  va_end(arguments.list);
  return parsed;
}

TEST(FormatParse, PlainConversion) {
  const Parsed parsed = parse("%d rest");
  EXPECT_EQ(parsed.spec.conversion, 'd');
  EXPECT_EQ(parsed.spec.width, 0U);
  EXPECT_EQ(parsed.spec.precision, kNoPrecision);
  EXPECT_EQ(parsed.rest, " rest");
}

TEST(FormatParse, EveryPart) {
  const Parsed parsed = parse("%-+ #012.34hx!");
  EXPECT_TRUE(parsed.spec.left && parsed.spec.plus && parsed.spec.space && parsed.spec.alternate &&
              parsed.spec.zero && parsed.spec.is_short);
  EXPECT_EQ(parsed.spec.width, 12U);
  EXPECT_EQ(parsed.spec.precision, 34);
  EXPECT_EQ(parsed.spec.conversion, 'x');
  EXPECT_EQ(parsed.rest, "!");
}

TEST(FormatParse, StarsTakeArguments) {
  const Parsed parsed = parse("%*.*f", -7, 3);
  EXPECT_TRUE(parsed.spec.left);
  EXPECT_EQ(parsed.spec.width, 7U);
  EXPECT_EQ(parsed.spec.precision, 3);
}

TEST(FormatParse, WidthOfTheLeastIntegerKeepsItsMagnitude) {
  EXPECT_EQ(parse("%*d", INT32_MIN).spec.width, 0x80000000U);
}

TEST(FormatParse, NumbersSaturate) {
  EXPECT_EQ(parse("%2147483647d").spec.width, 2147483647U);
  EXPECT_EQ(parse("%2147483648d").spec.width, 2147483647U);
  EXPECT_EQ(parse("%.99999999999999999999d").spec.precision, 2147483647);
}

TEST(FormatParse, SynonymsAreTold) {
  EXPECT_EQ(parse("%i").spec.conversion, 'd');
  EXPECT_EQ(parse("%hD").spec.conversion, 'd');
  EXPECT_FALSE(parse("%hD").spec.is_short);
  EXPECT_EQ(parse("%U").spec.conversion, 'u');
  EXPECT_EQ(parse("%O").spec.conversion, 'o');
}

TEST(FormatParse, EndOfTheFormatIsNotPassed) {
  for (const char* format : {"%", "%-", "%5", "%5.", "%5.2", "%hh"}) {
    const Parsed parsed = parse(format);
    EXPECT_EQ(parsed.spec.conversion, '\0');
    EXPECT_EQ(parsed.rest, "");
  }
}

TEST(FormatConvert, RunsOfZerosAreOnlyCounted) {
  NumberText room;
  Spec spec;
  spec.conversion = 'd';
  spec.precision = 2000000000;
  const Field integer = convert_signed(spec, -5, room);
  EXPECT_EQ(std::string(integer.text, integer.size), "-5");
  EXPECT_EQ(integer.prefix, 1U);
  EXPECT_EQ(integer.zeros_behind_prefix, 1999999999U);
  spec.conversion = 'e';
  const Field exponent = convert_double(spec, 1.5, room);
  EXPECT_EQ(exponent.suffix, 4U);
  EXPECT_EQ(exponent.size + exponent.zeros_before_suffix, 2000000000U + 2 + 4);
}

TEST(FormatDigits, ScaledNumbersAreRoundedToTheNearest) {
  uint64_t result = 0;
  EXPECT_TRUE(scale(3.14159, 2, result));
  EXPECT_EQ(result, 314U);
  EXPECT_TRUE(scale(0.99999, 2, result));
  EXPECT_EQ(result, 100U);
  EXPECT_TRUE(scale(0.1, 17, result));
  EXPECT_EQ(result, 10000000000000001U);
  EXPECT_TRUE(scale(5e-324, 17, result));
  EXPECT_EQ(result, 0U);
  EXPECT_TRUE(scale(0, 2, result));
  EXPECT_EQ(result, 0U);
}

TEST(FormatDigits, HalfwayIsLeftToOthers) {
  uint64_t result = 0;
  EXPECT_FALSE(scale(0.125, 2, result));
  EXPECT_FALSE(scale(2.5, 0, result));
  EXPECT_TRUE(scale(std::nextafter(2.5, 2.0), 0, result));
  EXPECT_EQ(result, 2U);
  EXPECT_TRUE(scale(std::nextafter(2.5, 3.0), 0, result));
  EXPECT_EQ(result, 3U);
  LeadingDigits leading;
  EXPECT_FALSE(find_leading_digits(0.125, 2, leading));
}

TEST(FormatDigits, LargeNumbersAreLeftToOthers) {
  uint64_t result = 0;
  EXPECT_TRUE(scale(4e18, 0, result));
  EXPECT_EQ(result, 4000000000000000000U);
  EXPECT_FALSE(scale(1e18, 1, result));
  EXPECT_FALSE(scale(1e300, 17, result));
}

TEST(FormatDigits, LeadingDigitsComeWithThePowerOfTheFirst) {
  LeadingDigits leading;
  EXPECT_TRUE(find_leading_digits(12345.678, 7, leading));
  EXPECT_EQ(leading.value, 1234568U);
  EXPECT_EQ(leading.power, 4);
  EXPECT_TRUE(find_leading_digits(5e-324, 17, leading));
  EXPECT_EQ(leading.value, 49406564584124654U);
  EXPECT_EQ(leading.power, -324);
  EXPECT_TRUE(find_leading_digits(1.7976931348623157e308, 17, leading));
  EXPECT_EQ(leading.value, 17976931348623157U);
  EXPECT_EQ(leading.power, 308);
  EXPECT_TRUE(find_leading_digits(1.7976931348623157e308, 1, leading));
  EXPECT_EQ(leading.value, 2U);
  EXPECT_EQ(leading.power, 308);
}

TEST(FormatDigits, RoundingUpToOneDigitMoreRaisesThePower) {
  LeadingDigits leading;
  EXPECT_TRUE(find_leading_digits(9.9996, 4, leading));
  EXPECT_EQ(leading.value, 1000U);
  EXPECT_EQ(leading.power, 1);
}

TEST(FormatWrite, ZerosGoBehindThePrefixAndBeforeTheSuffix) {
  const char text[] = "-1.5e+00";
  Field field{text, 8};
  field.prefix = 1;
  field.suffix = 4;
  field.zeros_behind_prefix = 2;
  field.zeros_before_suffix = 3;
  Spec spec;
  spec.width = 15;
  char buffer[32];
  BoundedOutput output(buffer, sizeof buffer);
  write_field(output, spec, field);
  spec.left = true;
  write_field(output, spec, field);
  EXPECT_EQ(output.finish(), 30);
  EXPECT_STREQ(buffer, "  -001.5000e+00-001.5000e+00  ");
}

TEST(FormatWrite, ZeroFillMakesUpTheWidth) {
  Field field{"-5", 2};
  field.prefix = 1;
  field.zero_fill = true;
  Spec spec;
  spec.width = 6;
  char buffer[16];
  BoundedOutput output(buffer, sizeof buffer);
  write_field(output, spec, field);
  EXPECT_EQ(output.finish(), 6);
  EXPECT_STREQ(buffer, "-00005");
}

TEST(FormatWrite, CharactersThatAreDroppedCount) {
  char buffer[4];
  BoundedOutput output(buffer, sizeof buffer);
  const std::string abc = "abc";
  output.text(abc.data(), abc.size());
  output.run('d', 1);
  EXPECT_EQ(output.produced(), 4U);
  EXPECT_EQ(output.finish(), 3);
  EXPECT_STREQ(buffer, "abc");
}

TEST(FormatInside, ArgumentsMayFollowTheFormat) {
  char buffer[32];
  EXPECT_EQ(format(buffer, sizeof buffer, "%s.%d.%.1f", "a", 7, 2.5), 7);
  EXPECT_STREQ(buffer, "a.7.2.5");
}

TEST(FormatInside, ModuleStartsAgainAndAgain) {
  EXPECT_TRUE(start_formatter());
  stop_formatter();
  EXPECT_TRUE(start_formatter());
  stop_formatter();
  char buffer[4];
  EXPECT_EQ(format(buffer, sizeof buffer, "%d", 7), 1);
}

}  // namespace
}  // namespace kqsupt::text
