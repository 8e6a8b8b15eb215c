// What is stored and returned, at every size of the buffer.

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "support/guarded.h"
#include "text/formatted.h"

namespace {

using kqsupt::tests::formatted;
using kqsupt::tests::Guarded;

// Every size from 0 to one more than the whole output needs, each in a buffer that ends at an
// inaccessible page. A size of 0 has a buffer of one byte, which receives the terminator.
template <class... Arguments>
void expect_cut_at_every_size(const char* format, Arguments... arguments) {
  const std::string whole = formatted(format, arguments...);
  for (size_t size = 0; size <= whole.size() + 2; ++size) {
    const std::string cut = whole.substr(0, size == 0 ? 0 : size - 1);
    const Guarded<char> buffer(std::max<size_t>(size, 1));
    const auto bytes = static_cast<uint32_t>(size);
    EXPECT_EQ(SMsnprintf(buffer.data(), bytes, format, arguments...), cut.size()) << format;
    EXPECT_EQ(std::string(buffer.data(), cut.size()), cut) << format;
    EXPECT_EQ(buffer.data()[cut.size()], '\0') << format;
    for (const char* rest = buffer.data() + cut.size() + 1; rest < buffer.end(); ++rest) {
      EXPECT_EQ(*rest, 0x55) << format;
    }
    EXPECT_EQ(SMsnprintf(nullptr, bytes, format, arguments...), cut.size()) << format;
  }
}

TEST(FormatBuffer, IsFilledToItsSizeAndNotBeyond) {
  const ustring wide[] = {'a', 0xE9, 0x20AC, 0};
  expect_cut_at_every_size("abcdefghijklmnopqrstuvwxyz");
  expect_cut_at_every_size("");
  expect_cut_at_every_size("%d", INT32_MIN);
  expect_cut_at_every_size("ab%-6dcd%06dxy%.5dz", 12, 34, 56);
  expect_cut_at_every_size("%#10x|%#-10X|%#010o", 0xABCU, 0xABCU, 8U);
  expect_cut_at_every_size("%s-%10s-%-10s-%.2s", "texts", "right", "left", "cut");
  expect_cut_at_every_size("%s", "a text of more than a few bytes, copied in one piece");
  expect_cut_at_every_size("%S|%8S", wide, wide);
  expect_cut_at_every_size("%c%5c%-5c", 'a', 'b', 'c');
  expect_cut_at_every_size("%20.3f|%-20.3f|%020.3f", 3.14159, 3.14159, -3.14159);
  expect_cut_at_every_size("%e|%.20e|%g|%.17g", 1e100, 0.1, 1e-5, 0.1);
  expect_cut_at_every_size("%8f|%-8f|", std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN());
  expect_cut_at_every_size("%5%|%-5k|%%", 0);
  expect_cut_at_every_size("%.30d|%40.30d|%-40.30d|", 7, -7, 7);
  expect_cut_at_every_size("%.1080f", 5e-324);
  expect_cut_at_every_size("%.780e", 2.2250738585072009e-308);
  expect_cut_at_every_size("%#.780g", 2.2250738585072009e-308);
}

TEST(FormatBuffer, StoresUpToSizeMinusOne) {
  char text[4];
  EXPECT_EQ(SMsnprintf(text, 4, "%s", "abcdef"), 3);
  EXPECT_STREQ(text, "abc");
}

TEST(FormatBuffer, OfOneByteTakesTheTerminatorOnly) {
  char text[] = "x";
  EXPECT_EQ(SMsnprintf(text, 1, "x"), 0);
  EXPECT_STREQ(text, "");
}

TEST(FormatBuffer, OfNoBytesTakesTheTerminatorToo) {
  char text[] = "xy";
  EXPECT_EQ(SMsnprintf(text, 0, "%d", 123), 0);
  EXPECT_EQ(text[0], '\0');
  EXPECT_EQ(text[1], 'y');
}

TEST(FormatBuffer, NullIsCountedUnderTheSameLimit) {
  EXPECT_EQ(SMsnprintf(nullptr, 4, "%d", 123456), 3);
  EXPECT_EQ(SMsnprintf(nullptr, 7, "%d", 123456), 6);
  EXPECT_EQ(SMsnprintf(nullptr, 100, "%d", 123456), 6);
  EXPECT_EQ(SMsnprintf(nullptr, 1, "%d", 123456), 0);
}

TEST(FormatBuffer, NullOfNoBytesCountsNothing) {
  EXPECT_EQ(SMsnprintf(nullptr, 0, "%d", 123456), 0);
}

TEST(FormatBuffer, MayCutAMultiByteSequence) {
  char text[3];
  EXPECT_EQ(SMsnprintf(text, 3, "a\xC3\xA9"), 2);
  EXPECT_STREQ(text, "a\xC3");
}

TEST(FormatBuffer, MayClaimAnySize) {
  char text[8];
  EXPECT_EQ(SMsnprintf(text, UINT32_MAX, "%d", 42), 2);
  EXPECT_STREQ(text, "42");
}

// ---- Numbers of characters that no buffer has ----

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

TEST(FormatBuffer, LargestWidthIsOnlyCountedWhenTheBufferIsFull) {
  char text[8];
  int32_t count = 0;
  EXPECT_EQ(SMsnprintf(text, sizeof text, "%2147483647d%n", 42, &count), 7);
  EXPECT_STREQ(text, "       ");
  EXPECT_EQ(count, kMost);
  EXPECT_EQ(SMsnprintf(text, sizeof text, "%-2147483647d%n", 42, &count), 7);
  EXPECT_STREQ(text, "42     ");
  EXPECT_EQ(count, kMost);
  EXPECT_EQ(SMsnprintf(text, sizeof text, "%0*d%n", kMost, 42, &count), 7);
  EXPECT_STREQ(text, "0000000");
  EXPECT_EQ(count, kMost);
}

TEST(FormatBuffer, WidthBeyondTheLargestCountsAsTheLargest) {
  int32_t count = 0;
  EXPECT_EQ(SMsnprintf(nullptr, 8, "%2147483648d%n", 42, &count), 7);
  EXPECT_EQ(count, kMost);
  EXPECT_EQ(SMsnprintf(nullptr, 8, "%99999999999999999999d%n", 42, &count), 7);
  EXPECT_EQ(count, kMost);
}

TEST(FormatBuffer, WidthMayBeTheLeastInteger) {
  char text[8];
  int32_t count = 0;
  EXPECT_EQ(SMsnprintf(text, sizeof text, "%*d%n", std::numeric_limits<int32_t>::min(), 42, &count),
            7);
  EXPECT_STREQ(text, "42     ");
  EXPECT_EQ(count, kMost);
}

TEST(FormatBuffer, LargestPrecisionIsOnlyCountedWhenTheBufferIsFull) {
  char text[8];
  for (const char* format : {"%.2147483647d%n", "%.2147483646d%n", "%.99999999999d%n"}) {
    int32_t count = 0;
    EXPECT_EQ(SMsnprintf(text, sizeof text, format, 42, &count), 7);
    EXPECT_STREQ(text, "0000000");
    EXPECT_GE(count, kMost - 1);
  }
  for (const char* format : {"%.2147483647f%n", "%.2147483647e%n", "%#.2147483647g%n"}) {
    int32_t count = 0;
    EXPECT_EQ(SMsnprintf(text, sizeof text, format, 1.5, &count), 7);
    EXPECT_STREQ(text, "1.50000");
    EXPECT_EQ(count, kMost);
  }
  EXPECT_EQ(SMsnprintf(text, sizeof text, "%.2147483647g", 1.5), 3);
  EXPECT_STREQ(text, "1.5");
  EXPECT_EQ(SMsnprintf(text, sizeof text, "%.2147483647s", "abc"), 3);
  EXPECT_STREQ(text, "abc");
}

TEST(FormatBuffer, CountOfSeveralLargestWidthsStaysTheLargest) {
  int32_t count = 0;
  EXPECT_EQ(SMsnprintf(nullptr, 8, "%2147483647d%2147483647d%2147483647d%n", 1, 2, 3, &count), 7);
  EXPECT_EQ(count, kMost);
  EXPECT_EQ(SMsnprintf(nullptr, UINT32_MAX, "%2147483647d%2147483647d%2147483647d", 1, 2, 3),
            kMost);
  EXPECT_EQ(SMsnprintf(nullptr, UINT32_MAX, "%2147483646d", 1), kMost - 1);
}

TEST(FormatBuffer, PrecisionBeyondAllDigitsOfADoubleAddsZeros) {
  const std::string fixed = formatted("%.5000f", 5e-324);
  EXPECT_EQ(fixed.size(), 5002U);
  EXPECT_EQ(fixed.substr(0, 1076), formatted("%.1074f", 5e-324));
  EXPECT_EQ(fixed.find_first_not_of('0', 1076), std::string::npos);
  const std::string exponent = formatted("%.5000e", 2.2250738585072009e-308);
  EXPECT_EQ(exponent.size(), 5002U + 5);
  EXPECT_EQ(exponent.substr(0, 768), formatted("%.766e", 2.2250738585072009e-308).substr(0, 768));
  EXPECT_EQ(exponent.substr(768), std::string(5002 - 768, '0') + "e-308");
  EXPECT_EQ(formatted("%#.3000g", 0.5), "0.5" + std::string(2999, '0'));
  EXPECT_EQ(formatted("%5010.5000f", 0.0), std::string(8, ' ') + "0." + std::string(5000, '0'));
}

// ---- Lists ----

int32_t with_list(char* dst, uint32_t size, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int32_t stored = SMvsnprintf(dst, size, format, args);
  va_end(args);
  return stored;
}

TEST(FormatList, GivesTheSame) {
  char text[64];
  EXPECT_EQ(with_list(text, sizeof text, "%d %s %g %*u %c", -1, "two", 3.5, 4, 4U, '5'), 17);
  EXPECT_STREQ(text, "-1 two 3.5    4 5");
}

TEST(FormatList, MayHaveManyArguments) {
  char text[128];
  with_list(text, sizeof text, "%d%d%d%d%d%d%d%d%d%d %g%g%g%g%g%g%g%g%g%g", 1, 2, 3, 4, 5, 6, 7, 8,
            9, 10, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0);
  EXPECT_STREQ(text, "12345678910 12345678910");
}

TEST(FormatList, IsCutTheSame) {
  char text[4] = "xyz";
  EXPECT_EQ(with_list(text, sizeof text, "%s", "abcdef"), 3);
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(with_list(text, 0, "%s", "abcdef"), 0);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(with_list(nullptr, 5, "%s", "abcdef"), 4);
}

}  // namespace
