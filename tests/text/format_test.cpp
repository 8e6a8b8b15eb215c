// The format language: what each part of a specification means.

#include <cstdint>
#include <cstring>
#include <limits>

#include "support/guarded.h"
#include "text/formatted.h"

namespace {

using kqsupt::tests::formatted;
using kqsupt::tests::Guarded;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Pointers that an argument list takes as they are.
const char* const kNoText = nullptr;
const ustring* const kNoWideText = nullptr;

TEST(Format, TextWithoutSpecificationsIsCopied) {
  EXPECT_EQ(formatted("plain text, \xC3\xA9"), "plain text, \xC3\xA9");
  EXPECT_EQ(formatted(""), "");
}

TEST(Format, TextAroundSpecificationsIsCopied) {
  EXPECT_EQ(formatted("a%db%dc", 1, 2), "a1b2c");
  EXPECT_EQ(formatted("%d%d", 1, 2), "12");
}

// ---- Flags ----

TEST(FormatFlags, MinusLeftAdjusts) {
  EXPECT_EQ(formatted("%-6d|", 42), "42    |");
  EXPECT_EQ(formatted("%-6s|", "ab"), "ab    |");
  EXPECT_EQ(formatted("%-8.2f|", 1.5), "1.50    |");
}

TEST(FormatFlags, PlusAlwaysShowsASign) {
  EXPECT_EQ(formatted("%+d", 5), "+5");
  EXPECT_EQ(formatted("%+d", 0), "+0");
  EXPECT_EQ(formatted("%+d", -5), "-5");
  EXPECT_EQ(formatted("%+.1f", 2.0), "+2.0");
}

TEST(FormatFlags, SpaceStandsInThePlaceOfPlus) {
  EXPECT_EQ(formatted("% d", 5), " 5");
  EXPECT_EQ(formatted("% d", -5), "-5");
  EXPECT_EQ(formatted("% .1f", 2.0), " 2.0");
}

TEST(FormatFlags, PlusOverrulesSpace) {
  EXPECT_EQ(formatted("% +d", 5), "+5");
  EXPECT_EQ(formatted("%+ d", 5), "+5");
}

TEST(FormatFlags, SignsMeanNothingToUnsignedConversions) {
  EXPECT_EQ(formatted("%+u% o%+x", 5U, 5U, 5U), "555");
}

TEST(FormatFlags, ZeroPadsBehindTheSign) {
  EXPECT_EQ(formatted("%05d", 42), "00042");
  EXPECT_EQ(formatted("%05d", -42), "-0042");
  EXPECT_EQ(formatted("%+05d", 42), "+0042");
  EXPECT_EQ(formatted("%#08x", 0xABU), "0x0000ab");
  EXPECT_EQ(formatted("%08.2f", -3.14159), "-0003.14");
  EXPECT_EQ(formatted("%012e", -1.5), "-1.500000e+00");
  EXPECT_EQ(formatted("%015e", -1.5), "-001.500000e+00");
}

TEST(FormatFlags, MinusOverrulesZero) {
  EXPECT_EQ(formatted("%-05d|", 42), "42   |");
  EXPECT_EQ(formatted("%0-5d|", 42), "42   |");
  EXPECT_EQ(formatted("%-08.2f|", 1.5), "1.50    |");
}

TEST(FormatFlags, PrecisionOfAnIntegerOverrulesZero) {
  EXPECT_EQ(formatted("%05.3d", 7), "  007");
  EXPECT_EQ(formatted("%05.0d", 7), "    7");
  EXPECT_EQ(formatted("%08.3x", 7U), "     007");
  EXPECT_EQ(formatted("%05.*d", -1, 7), "00007");
}

TEST(FormatFlags, PrecisionOfADoubleDoesNotOverruleZero) {
  EXPECT_EQ(formatted("%07.2f", 1.5), "0001.50");
}

TEST(FormatFlags, ZeroPadsTextsAndCharacters) {
  EXPECT_EQ(formatted("%05s", "ab"), "000ab");
  EXPECT_EQ(formatted("%05.1s", "ab"), "0000a");
  EXPECT_EQ(formatted("%03c", 'x'), "00x");
}

TEST(FormatFlags, AlternateOctalBeginsWithZero) {
  EXPECT_EQ(formatted("%#o", 8U), "010");
  EXPECT_EQ(formatted("%#o", 0U), "0");
  EXPECT_EQ(formatted("%#.3o", 8U), "010");
  EXPECT_EQ(formatted("%#.2o", 8U), "010");
  EXPECT_EQ(formatted("%#.0o", 0U), "0");
}

TEST(FormatFlags, AlternateHexadecimalHasAPrefix) {
  EXPECT_EQ(formatted("%#x", 255U), "0xff");
  EXPECT_EQ(formatted("%#X", 255U), "0XFF");
  EXPECT_EQ(formatted("%#.4x", 255U), "0x00ff");
}

TEST(FormatFlags, AlternateHexadecimalOfZeroHasNone) {
  EXPECT_EQ(formatted("%#x", 0U), "0");
  EXPECT_EQ(formatted("%#X", 0U), "0");
  EXPECT_EQ(formatted("%#.0x", 0U), "");
}

TEST(FormatFlags, AlternateDoublesHaveAPoint) {
  EXPECT_EQ(formatted("%#.0f", 3.0), "3.");
  EXPECT_EQ(formatted("%#.0e", 3.0), "3.e+00");
  EXPECT_EQ(formatted("%#g", 1.0), "1.00000");
  EXPECT_EQ(formatted("%#.1g", 1.0), "1.");
  EXPECT_EQ(formatted("%#.1g", 10.0), "1.e+01");
  EXPECT_EQ(formatted("%#g", 1e10), "1.00000e+10");
}

TEST(FormatFlags, MayBeRepeatedAndMixed) {
  EXPECT_EQ(formatted("%--0+ +#5d|", 42), "+42  |");
}

// ---- Width ----

TEST(FormatWidth, PadsWithSpacesOnTheLeft) {
  EXPECT_EQ(formatted("%5d", 42), "   42");
  EXPECT_EQ(formatted("%5s", "ab"), "   ab");
  EXPECT_EQ(formatted("%3c", 'x'), "  x");
  EXPECT_EQ(formatted("%5.2f", 3.14159), " 3.14");
}

TEST(FormatWidth, DoesNotCut) {
  EXPECT_EQ(formatted("%2d", 12345), "12345");
  EXPECT_EQ(formatted("%1s", "abc"), "abc");
}

TEST(FormatWidth, MayBeAnArgument) {
  EXPECT_EQ(formatted("%*d", 5, 42), "   42");
  EXPECT_EQ(formatted("%0*d", 5, 42), "00042");
  EXPECT_EQ(formatted("%*d", 0, 42), "42");
}

TEST(FormatWidth, NegativeArgumentLeftAdjusts) {
  EXPECT_EQ(formatted("%*d|", -5, 42), "42   |");
  EXPECT_EQ(formatted("%0*d|", -5, 42), "42   |");
}

TEST(FormatWidth, LongRunsAreComplete) {
  EXPECT_EQ(formatted("%100d", 1), std::string(99, ' ') + "1");
  EXPECT_EQ(formatted("%0100d", 1), std::string(99, '0') + "1");
  EXPECT_EQ(formatted("%-100d|", 1), "1" + std::string(99, ' ') + "|");
}

// ---- Precision ----

TEST(FormatPrecision, IsTheFewestDigitsOfAnInteger) {
  EXPECT_EQ(formatted("%.5d", 42), "00042");
  EXPECT_EQ(formatted("%.5d", -42), "-00042");
  EXPECT_EQ(formatted("%.1d", 42), "42");
  EXPECT_EQ(formatted("%+.3u", 42U), "042");
}

TEST(FormatPrecision, ZeroWithPrecisionZeroHasNoDigits) {
  EXPECT_EQ(formatted("%.0d", 0), "");
  EXPECT_EQ(formatted("%.d", 0), "");
  EXPECT_EQ(formatted("%.0u%.0o%.0x%.0X", 0U, 0U, 0U, 0U), "");
  EXPECT_EQ(formatted("%+.0d", 0), "+");
  EXPECT_EQ(formatted("%3.0d", 0), "   ");
  EXPECT_EQ(formatted("%.0d", 1), "1");
}

TEST(FormatPrecision, PointAloneMeansZero) {
  EXPECT_EQ(formatted("%.f", 1.75), "2");
  EXPECT_EQ(formatted("%.s|", "abc"), "|");
}

TEST(FormatPrecision, MayBeAnArgument) {
  EXPECT_EQ(formatted("%.*f", 3, 1.5), "1.500");
  EXPECT_EQ(formatted("%.*s", 2, "abc"), "ab");
  EXPECT_EQ(formatted("%*.*f|", 8, 2, 1.5), "    1.50|");
}

TEST(FormatPrecision, NegativeArgumentIsNone) {
  EXPECT_EQ(formatted("%.*f", -1, 1.5), "1.500000");
  EXPECT_EQ(formatted("%.*s", -5, "abc"), "abc");
  EXPECT_EQ(formatted("%.*d", -1, 0), "0");
}

TEST(FormatPrecision, SignBehindThePointIsNoPartOfIt) {
  EXPECT_EQ(formatted("%.-5d"), "-5d");
}

// ---- Size ----

TEST(FormatSize, ShortTakesTheLowSixteenBits) {
  EXPECT_EQ(formatted("%hd", 0x12345), "9029");
  EXPECT_EQ(formatted("%hd", 0x18000), "-32768");
  EXPECT_EQ(formatted("%hi", -1), "-1");
  EXPECT_EQ(formatted("%hu", -1), "65535");
  EXPECT_EQ(formatted("%ho", -1), "177777");
  EXPECT_EQ(formatted("%hx", -1), "ffff");
  EXPECT_EQ(formatted("%hX", -1), "FFFF");
}

TEST(FormatSize, LongHasThirtyTwoBits) {
  EXPECT_EQ(formatted("%ld|%d", -1, 7), "-1|7");
  EXPECT_EQ(formatted("%lu", 0xFFFFFFFFU), "4294967295");
  EXPECT_EQ(formatted("%lx", 0xFFFFFFFFU), "ffffffff");
  EXPECT_EQ(formatted("%lo", 8U), "10");
}

TEST(FormatSize, LongLongIsLong) {
  EXPECT_EQ(formatted("%lld|%d", 5, 7), "5|7");
  EXPECT_EQ(formatted("%llu|%llx", 5U, 0xFFFFFFFFU), "5|ffffffff");
}

TEST(FormatSize, LargeDoubleIsADouble) {
  EXPECT_EQ(formatted("%Lf|%Lg", 1.5, 2.5), "1.500000|2.5");
  EXPECT_EQ(formatted("%Ld", 5), "5");
}

TEST(FormatSize, LastOneCounts) {
  EXPECT_EQ(formatted("%hhd", 0x12345), "9029");
  EXPECT_EQ(formatted("%hld", 0x12345), "74565");
  EXPECT_EQ(formatted("%lhd", 0x12345), "9029");
  EXPECT_EQ(formatted("%hLd", 0x12345), "9029");
}

TEST(FormatSize, MeansNothingToOtherConversions) {
  EXPECT_EQ(formatted("%ls|%hs|%lc|%lf", "ab", "cd", 'e', 1.0), "ab|cd|e|1.000000");
}

TEST(FormatSize, OthersDoNotExist) {
  EXPECT_EQ(formatted("%zu"), "zu");
  EXPECT_EQ(formatted("%qd"), "qd");
  EXPECT_EQ(formatted("%jd"), "jd");
  EXPECT_EQ(formatted("%td"), "td");
}

// ---- Integers ----

TEST(FormatInteger, SignedDecimal) {
  EXPECT_EQ(formatted("%d", 0), "0");
  EXPECT_EQ(formatted("%d", 123456), "123456");
  EXPECT_EQ(formatted("%i", -7), "-7");
  EXPECT_EQ(formatted("%d", INT32_MAX), "2147483647");
  EXPECT_EQ(formatted("%d", INT32_MIN), "-2147483648");
}

TEST(FormatInteger, Unsigned) {
  EXPECT_EQ(formatted("%u", 0U), "0");
  EXPECT_EQ(formatted("%u", 0xFFFFFFFFU), "4294967295");
  EXPECT_EQ(formatted("%o", 0xFFFFFFFFU), "37777777777");
  EXPECT_EQ(formatted("%x", 0x89ABCDEFU), "89abcdef");
  EXPECT_EQ(formatted("%X", 0x89ABCDEFU), "89ABCDEF");
}

TEST(FormatInteger, CapitalsAreLong) {
  EXPECT_EQ(formatted("%D", -70000), "-70000");
  EXPECT_EQ(formatted("%U", 70000U), "70000");
  EXPECT_EQ(formatted("%O", 8U), "10");
  EXPECT_EQ(formatted("%#O", 8U), "010");
  EXPECT_EQ(formatted("%hD|%hU|%hO", 70000, 70000U, 70000U), "70000|70000|210560");
}

TEST(FormatPointer, IsAlternateHexadecimal) {
  EXPECT_EQ(formatted("%p", reinterpret_cast<void*>(0xABCU)), "0xabc");
  EXPECT_EQ(formatted("%10p|", reinterpret_cast<void*>(0xABCU)), "     0xabc|");
  EXPECT_EQ(formatted("%010p", reinterpret_cast<void*>(0xABCU)), "0x00000abc");
  EXPECT_EQ(formatted("%hp", reinterpret_cast<void*>(0x12345U)), "0x12345");
}

TEST(FormatPointer, IsWhole) {
  const std::string all(sizeof(void*) * 2, 'f');
  EXPECT_EQ(formatted("%p", reinterpret_cast<void*>(UINTPTR_MAX)), "0x" + all);
}

TEST(FormatPointer, NullIsZero) {
  EXPECT_EQ(formatted("%p", static_cast<void*>(nullptr)), "0");
}

// ---- Characters and texts ----

TEST(FormatCharacter, IsTheLowByte) {
  EXPECT_EQ(formatted("%c", 'x'), "x");
  EXPECT_EQ(formatted("%c", 0x4142), "B");
  EXPECT_EQ(formatted("%c%c", 0xC3, -87), "\xC3\xA9");
}

TEST(FormatCharacter, MayBeZero) {
  EXPECT_EQ(formatted("a%cb", 0), std::string("a\0b", 3));
}

TEST(FormatCharacter, HasNoPrecision) {
  EXPECT_EQ(formatted("%.0c", 'x'), "x");
}

TEST(FormatText, EndsWithItsTerminator) {
  EXPECT_EQ(formatted("%s", "text"), "text");
  EXPECT_EQ(formatted("%s", ""), "");
  EXPECT_EQ(formatted("%s", "\xC3\xA9"), "\xC3\xA9");
}

TEST(FormatText, PrecisionCountsBytes) {
  EXPECT_EQ(formatted("%.2s", "abc"), "ab");
  EXPECT_EQ(formatted("%.9s", "abc"), "abc");
  EXPECT_EQ(formatted("%.1s", "\xC3\xA9"), "\xC3");
  EXPECT_EQ(formatted("%5.2s|%-5.2s|", "abc", "abc"), "   ab|ab   |");
}

TEST(FormatText, NotMoreIsReadThanThePrecision) {
  const Guarded<char> unterminated("abcd", 4);
  EXPECT_EQ(formatted("%.4s", unterminated.data()), "abcd");
  EXPECT_EQ(formatted("%.3s", unterminated.data()), "abc");
  EXPECT_EQ(formatted("%.0s", unterminated.end()), "");
}

TEST(FormatText, NothingIsReadBehindTheTerminator) {
  const Guarded<char> text("abcd", 5);
  EXPECT_EQ(formatted("%s", text.data()), "abcd");
  EXPECT_EQ(formatted("%.100s", text.data()), "abcd");
  const Guarded<char> format("%s%", 4);
  EXPECT_EQ(formatted(format.data(), text.data()), "abcd");
}

TEST(FormatText, NullIsShown) {
  EXPECT_EQ(formatted("%s", kNoText), "(null)");
  EXPECT_EQ(formatted("%.3s", kNoText), "(nu");
  EXPECT_EQ(formatted("%8s", kNoText), "  (null)");
}

TEST(FormatWideText, BecomesUtf8) {
  const ustring e_acute[] = {0xE9, 0};
  EXPECT_EQ(formatted("%S", e_acute), "\xC3\xA9");
  const ustring mixed[] = {'a', 0x20AC, 'b', 0};
  EXPECT_EQ(formatted("<%S>", mixed),
            "<a\xE2\x82\xAC"
            "b>");
  const ustring empty[] = {0};
  EXPECT_EQ(formatted("<%S>", empty), "<>");
}

TEST(FormatWideText, PrecisionAndWidthCountBytes) {
  const ustring text[] = {'a', 0xE9, 'b', 0};
  EXPECT_EQ(formatted("%.2S", text), "a\xC3");
  EXPECT_EQ(formatted("%6S|", text),
            "  a\xC3\xA9"
            "b|");
  EXPECT_EQ(formatted("%-6.3S|", text), "a\xC3\xA9   |");
}

TEST(FormatWideText, NothingIsReadBehindTheTerminator) {
  const ustring text[] = {'a', 'b', 0};
  const Guarded<ustring> guarded(text, 3);
  EXPECT_EQ(formatted("%S", guarded.data()), "ab");
}

TEST(FormatWideText, OneThatDoesNotConvertEndsTheOutput) {
  const ustring lone_surrogate[] = {0xDC00, 'a', 0};
  EXPECT_EQ(formatted("before %5S after %d", lone_surrogate, 1), "before ");
}

TEST(FormatWideText, NullIsShown) {
  EXPECT_EQ(formatted("%S|%d", kNoWideText, 7), "(null)|7");
  EXPECT_EQ(formatted("%.3S", kNoWideText), "(nu");
}

// ---- Doubles ----

TEST(FormatDouble, Fixed) {
  EXPECT_EQ(formatted("%f", 1.5), "1.500000");
  EXPECT_EQ(formatted("%.2f", 3.14159), "3.14");
  EXPECT_EQ(formatted("%.0f", 1e22), "10000000000000000000000");
  EXPECT_EQ(formatted("%.10f", 0.1), "0.1000000000");
  EXPECT_EQ(formatted("%.3f", 2.5), "2.500");
}

TEST(FormatDouble, WithExponent) {
  EXPECT_EQ(formatted("%e", 12345.678), "1.234568e+04");
  EXPECT_EQ(formatted("%E", 12345.678), "1.234568E+04");
  EXPECT_EQ(formatted("%.0e", 12345.678), "1e+04");
  EXPECT_EQ(formatted("%.3e", 1e-7), "1.000e-07");
}

TEST(FormatDouble, ExponentHasTwoDigitsOrThree) {
  EXPECT_EQ(formatted("%.0e %.0e %.0e", 1.0, 1e99, 1e100), "1e+00 1e+99 1e+100");
  EXPECT_EQ(formatted("%.0e %.0e", 1e-99, 1e-100), "1e-99 1e-100");
}

TEST(FormatDouble, Shorter) {
  EXPECT_EQ(formatted("%g", 0.0001), "0.0001");
  EXPECT_EQ(formatted("%g", 0.00001), "1e-05");
  EXPECT_EQ(formatted("%g", 0.00012345), "0.00012345");
  EXPECT_EQ(formatted("%g", 123456.0), "123456");
  EXPECT_EQ(formatted("%g", 1234567.0), "1.23457e+06");
  EXPECT_EQ(formatted("%g", 100000.0), "100000");
  EXPECT_EQ(formatted("%g", 1000000.0), "1e+06");
  EXPECT_EQ(formatted("%G", 1e-10), "1E-10");
  EXPECT_EQ(formatted("%g", 1.5), "1.5");
}

TEST(FormatDouble, ShorterDecidesByTheRoundedExponent) {
  EXPECT_EQ(formatted("%g", 999999.5), "1e+06");
  EXPECT_EQ(formatted("%.3g", 999.5), "1e+03");
  EXPECT_EQ(formatted("%.3g", 999.4), "999");
  EXPECT_EQ(formatted("%g", 0.000099999996), "0.0001");
}

TEST(FormatDouble, ShorterWithPrecisionZeroHasOneDigit) {
  EXPECT_EQ(formatted("%.0g", 3.7), "4");
  EXPECT_EQ(formatted("%.0g", 37.0), "4e+01");
}

TEST(FormatDouble, TiesGoToTheEvenDigit) {
  EXPECT_EQ(formatted("%.0f %.0f %.0f %.0f", 0.5, 1.5, 2.5, 3.5), "0 2 2 4");
  EXPECT_EQ(formatted("%.2f %.2f", 0.125, 0.375), "0.12 0.38");
  EXPECT_EQ(formatted("%.0e %.0e", 2.5, 3.5), "2e+00 4e+00");
  EXPECT_EQ(formatted("%.1g %.1g", 2.5, 3.5), "2 4");
}

TEST(FormatDouble, AlmostTiesGoToTheNearer) {
  EXPECT_EQ(formatted("%.2f", 2.675), "2.67");
  EXPECT_EQ(formatted("%.2f", 1.005), "1.00");
  EXPECT_EQ(formatted("%.0f", 0.49999999999999994), "0");
  EXPECT_EQ(formatted("%.1f", 0.25000000000000006), "0.3");
}

TEST(FormatDouble, DigitsAreExact) {
  EXPECT_EQ(formatted("%.55f", 0.1), "0.1000000000000000055511151231257827021181583404541015625");
  EXPECT_EQ(formatted("%.17g", 0.1), "0.10000000000000001");
  EXPECT_EQ(formatted("%.17g", 1.7976931348623157e308), "1.7976931348623157e+308");
  EXPECT_EQ(formatted("%.17g", 5e-324), "4.9406564584124654e-324");
}

TEST(FormatDouble, ZeroIsZerosInTheForm) {
  EXPECT_EQ(formatted("%f %e %g", 0.0, 0.0, 0.0), "0.000000 0.000000e+00 0");
  EXPECT_EQ(formatted("%.0f %.0e %.0g", 0.0, 0.0, 0.0), "0 0e+00 0");
  EXPECT_EQ(formatted("%#g", 0.0), "0.00000");
}

TEST(FormatDouble, NegativeZeroKeepsItsSign) {
  EXPECT_EQ(formatted("%f %e %g", -0.0, -0.0, -0.0), "-0.000000 -0.000000e+00 -0");
  EXPECT_EQ(formatted("%.1f", -0.01), "-0.0");
}

TEST(FormatDouble, LargestAndSmallest) {
  const std::string largest = formatted("%.0f", 1.7976931348623157e308);
  EXPECT_EQ(largest.size(), 309U);
  EXPECT_EQ(largest.substr(0, 17), "17976931348623157");
  const std::string smallest = formatted("%.1074f", 5e-324);
  EXPECT_EQ(smallest.size(), 1076U);
  EXPECT_EQ(smallest.substr(1066), "3447265625");
}

TEST(FormatInfinite, PrintsInf) {
  EXPECT_EQ(formatted("%f", kInfinity), "Inf");
  EXPECT_EQ(formatted("%f", -kInfinity), "-Inf");
  EXPECT_EQ(formatted("%e %E %g %G", kInfinity, kInfinity, -kInfinity, -kInfinity),
            "Inf Inf -Inf -Inf");
}

TEST(FormatInfinite, NaNPrintsInfWithoutASign) {
  EXPECT_EQ(formatted("%f", kNaN), "Inf");
  EXPECT_EQ(formatted("%f", -kNaN), "Inf");
  EXPECT_EQ(formatted("%e %E %g %G", kNaN, kNaN, kNaN, kNaN), "Inf Inf Inf Inf");
  EXPECT_EQ(formatted("%+f % f", kNaN, kNaN), "Inf Inf");
}

TEST(FormatInfinite, HasAPositiveSignWhereOneIsAskedFor) {
  EXPECT_EQ(formatted("%+f|% f", kInfinity, kInfinity), "+Inf| Inf");
  EXPECT_EQ(formatted("%+f|% f", -kInfinity, -kInfinity), "-Inf|-Inf");
}

TEST(FormatInfinite, IsPaddedButHasNoPrecision) {
  EXPECT_EQ(formatted("%6.1f|%-6f|", kInfinity, kInfinity), "   Inf|Inf   |");
  EXPECT_EQ(formatted("%.0f%.50e", kInfinity, kInfinity), "InfInf");
  EXPECT_EQ(formatted("%#.0f", kInfinity), "Inf");
}

TEST(FormatInfinite, IsPaddedWithZerosToo) {
  EXPECT_EQ(formatted("%06f|%06f", kInfinity, -kInfinity), "000Inf|-00Inf");
}

// ---- The count ----

TEST(FormatCount, StoresTheCharactersProducedSoFar) {
  int32_t first = -1, second = -1;
  EXPECT_EQ(formatted("%nabc%5d%n", &first, 42, &second), "abc   42");
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 8);
}

TEST(FormatCount, CountsWhatWasDropped) {
  int32_t count = -1;
  char text[4];
  EXPECT_EQ(SMsnprintf(text, sizeof text, "abc%dxyz%n", 123, &count), 3);
  EXPECT_EQ(count, 9);
  EXPECT_EQ(SMsnprintf(nullptr, 0, "abc%n", &count), 0);
  EXPECT_EQ(count, 3);
}

TEST(FormatCount, MayBeShort) {
  int16_t counts[] = {-1, -1};
  EXPECT_EQ(formatted("ab%hn", &counts[0]), "ab");
  EXPECT_EQ(counts[0], 2);
  EXPECT_EQ(counts[1], -1);
}

TEST(FormatCount, ShortOneTakesTheLowBits) {
  int16_t count = -1;
  formatted("%65543d%hn", 1, &count);
  EXPECT_EQ(count, 7);
}

TEST(FormatCount, LongOneHasThirtyTwoBits) {
  int32_t counts[] = {-1, -1};
  formatted("ab%ln", &counts[0]);
  EXPECT_EQ(counts[0], 2);
  EXPECT_EQ(counts[1], -1);
}

// ---- What is no conversion ----

TEST(FormatOther, CharacterStandsForItself) {
  EXPECT_EQ(formatted("%k"), "k");
  EXPECT_EQ(formatted("%%"), "%");
  EXPECT_EQ(formatted("100%% of %d", 7), "100% of 7");
  EXPECT_EQ(formatted("%F%a%A%C"), "FaAC");
  EXPECT_EQ(formatted("%\xC3\xA9"), "\xC3\xA9");
}

TEST(FormatOther, CharacterTakesNoArgument) {
  EXPECT_EQ(formatted("%k%d", 5), "k5");
}

TEST(FormatOther, WidthAndMinusApply) {
  EXPECT_EQ(formatted("%5%|"), "    %|");
  EXPECT_EQ(formatted("%-5k|"), "k    |");
  EXPECT_EQ(formatted("%*k|", -3), "k  |");
}

TEST(FormatOther, OtherFlagsDoNot) {
  EXPECT_EQ(formatted("%05k|"), "    k|");
  EXPECT_EQ(formatted("%+#k|"), "k|");
  EXPECT_EQ(formatted("%.0k|"), "k|");
}

TEST(FormatOther, FormatEndingInASpecificationEndsTheOutput) {
  EXPECT_EQ(formatted("abc%"), "abc");
  EXPECT_EQ(formatted("abc%-"), "abc");
  EXPECT_EQ(formatted("abc%10"), "abc");
  EXPECT_EQ(formatted("abc%."), "abc");
  EXPECT_EQ(formatted("abc%l"), "abc");
  EXPECT_EQ(formatted("abc%*", 5), "abc");
}

TEST(FormatOther, NothingIsReadBehindTheFormat) {
  for (const char* text : {"%", "%-", "%5", "%.", "%.5", "%l", "abc", "%%"}) {
    const Guarded<char> format(text, std::strlen(text) + 1);
    SMsnprintf(nullptr, 10, format.data());
  }
}

}  // namespace
