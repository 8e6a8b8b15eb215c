// The checksums as callers see them, and the table behind them.

#include <cctype>
#include <clocale>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "containers/crc32.h"
#include "gtest/gtest.h"
#include "kqsupt/containers.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;

constexpr uint32_t kCheckValue = 0xCBF43926;  // of the digits 1 to 9

// The same CRC-32 as a division from the highest bit down: nothing is reflected until the end.
uint32_t model(const std::string& bytes) {
  const auto reflected = [](uint32_t value, int bits) {
    uint32_t result = 0;
    for (int i = 0; i < bits; ++i) {
      result = result << 1 | (value >> i & 1);
    }
    return result;
  };
  uint32_t remainder = 0xFFFFFFFF;
  for (const char byte : bytes) {
    remainder ^= reflected(static_cast<uint8_t>(byte), 8) << 24;
    for (int bit = 0; bit < 8; ++bit) {
      remainder = remainder << 1 ^ ((remainder & 0x80000000) != 0 ? 0x04C11DB7U : 0U);
    }
  }
  return ~reflected(remainder, 32);
}

std::string random_bytes(size_t length) {
  static std::mt19937 random(4);
  std::string bytes;
  while (bytes.size() < length) {
    bytes += static_cast<char>(random());
  }
  return bytes;
}

uint32_t of_bytes(const std::string& bytes) {
  return SMCRC32Compute_vn(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

TEST(Crc32, OfTheDigitsIsTheCheckValueInEveryForm) {
  EXPECT_EQ(SMCRC32Compute_vn("123456789", 9), kCheckValue);
  EXPECT_EQ(SMCRC32Compute_str("123456789"), kCheckValue);
  EXPECT_EQ(SMCRC32Compute_strncase("123456789"), kCheckValue);
}

TEST(Crc32, OfNothingIsZeroInEveryForm) {
  EXPECT_EQ(SMCRC32Compute_vn(nullptr, 0), 0U);
  EXPECT_EQ(SMCRC32Compute_vn("123", 0), 0U);
  EXPECT_EQ(SMCRC32Compute_str(""), 0U);
  EXPECT_EQ(SMCRC32Compute_strncase(""), 0U);
}

TEST(Crc32, OfEachSingleByteIsThatOfTheModel) {
  for (int value = 0; value < 256; ++value) {
    const std::string byte(1, static_cast<char>(value));
    EXPECT_EQ(of_bytes(byte), model(byte)) << value;
  }
}

TEST(Crc32, OfEveryLengthIsThatOfTheModel) {
  for (size_t length = 0; length <= 300; ++length) {
    const std::string bytes = random_bytes(length);
    EXPECT_EQ(of_bytes(bytes), model(bytes)) << length;
  }
}

TEST(Crc32, OfBytesCountsNuls) {
  EXPECT_EQ(of_bytes(std::string("ab\0cd\0", 6)), model(std::string("ab\0cd\0", 6)));
}

TEST(Crc32, OfATextEndsBeforeItsNul) {
  EXPECT_EQ(SMCRC32Compute_str("ab\0cd"), model("ab"));
  EXPECT_EQ(SMCRC32Compute_strncase("ab\0cd"), model("ab"));
}

TEST(Crc32, OfATextTakesHighBytesAsTheyAre) {
  EXPECT_EQ(SMCRC32Compute_str("\xC3\x84\x80\xFF"), model("\xC3\x84\x80\xFF"));
}

TEST(Crc32, ReadsNoFurtherThanTheLengthOrTheNul) {
  for (size_t length = 0; length <= 70; ++length) {
    std::string bytes(length, 'x');
    const Guarded<char> data(bytes.data(), length);
    EXPECT_EQ(SMCRC32Compute_vn(data.data(), static_cast<uint32_t>(length)), model(bytes));
    const Guarded<char> text(bytes.c_str(), length + 1);
    EXPECT_EQ(SMCRC32Compute_str(text.data()), model(bytes));
    EXPECT_EQ(SMCRC32Compute_strncase(text.data()), model(bytes));
  }
}

TEST(Crc32, IgnoringCaseIsThatOfTheLowerCaseText) {
  const uint32_t lower = SMCRC32Compute_str("wexlib/mutex-17");
  EXPECT_EQ(SMCRC32Compute_strncase("wexlib/mutex-17"), lower);
  EXPECT_EQ(SMCRC32Compute_strncase("WEXLIB/MUTEX-17"), lower);
  EXPECT_EQ(SMCRC32Compute_strncase("WexLib/Mutex-17"), lower);
  EXPECT_NE(SMCRC32Compute_str("WEXLIB/MUTEX-17"), lower);
}

// In each locale that the host has, single-byte ones among them where they are installed.
TEST(Crc32, IgnoringCaseLowersEveryByteAsTheLocaleDoes) {
  for (const char* locale : {"C", "C.UTF-8", "en_US.UTF-8", "de_DE.ISO-8859-1", "en_US.ISO-8859-1",
                             "tr_TR.ISO-8859-9"}) {
    if (std::setlocale(LC_CTYPE, locale) == nullptr) {
      continue;
    }
    std::string all;
    std::string lowered;
    for (int value = 1; value < 256; ++value) {
      all += static_cast<char>(value);
      lowered += static_cast<char>(std::tolower(value));
    }
    EXPECT_EQ(SMCRC32Compute_strncase(all.c_str()), model(lowered)) << locale;
  }
  std::setlocale(LC_CTYPE, "C");
}

// Before the start of the library, after it, and after its end. The object under test is
// linked into this program, beside the library's own.
TEST(Crc32Table, ChecksumsAreTheSameWithAndWithoutIt) {
  namespace containers = kqsupt::containers;
  const std::string bytes = random_bytes(1000);
  const auto expect_right = [&] {
    EXPECT_EQ(containers::crc32_of_bytes("123456789", 9), kCheckValue);
    EXPECT_EQ(containers::crc32_of_bytes(bytes.data(), 1000), model(bytes));
    EXPECT_EQ(containers::crc32_of_text("123456789"), kCheckValue);
    EXPECT_EQ(containers::crc32_of_lowered_text("ABC"), model("abc"));
  };
  containers::stop_crc32_table();  // which was never started
  expect_right();
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(containers::start_crc32_table());
    expect_right();
    containers::stop_crc32_table();
    expect_right();
  }
}

uint32_t generate(const std::string& data, int32_t total) {
  return SMGenerateCRC32(data.data(), static_cast<uint32_t>(data.size()), total);
}

TEST(GeneratedCrc32, OfNoBytesIsAllOnes) {
  EXPECT_EQ(SMGenerateCRC32(nullptr, 0, 0), 0xFFFFFFFFU);
  EXPECT_EQ(generate("123456789", 0), 0xFFFFFFFFU);
}

TEST(GeneratedCrc32, HasTheValuesThatCallersHaveKept) {
  EXPECT_EQ(generate("1", 1), 0x169330BAU);
  EXPECT_EQ(generate("\x02", 1), 0xC3F3715EU);
  EXPECT_EQ(generate("123456789", 9), 0x5B531060U);
  EXPECT_EQ(generate("\xFF\xFF\xFF\xFF", 4), 0xB6D0FDC0U);
  std::string all;
  for (int value = 0; value < 256; ++value) {
    all += static_cast<char>(value);
  }
  EXPECT_EQ(generate(all, 256), 0xB6D01095U);
}

TEST(GeneratedCrc32, WithoutDataRunsOverZeroBytes) {
  EXPECT_EQ(generate("", 1), 0x2DFD1072U);
  EXPECT_EQ(generate("", 3), 0x00BE26EDU);
  EXPECT_EQ(generate("", 4), 0xDEBB20E3U);
}

TEST(GeneratedCrc32, OfZeroBytesIsTheUninvertedCrc32OfThem) {
  EXPECT_EQ(generate("", 100), ~model(std::string(100, '\0')));
}

TEST(GeneratedCrc32, FillsShortDataUpWithZeroBytes) {
  EXPECT_EQ(generate("123456789", 16), 0xEBDF73C6U);
  EXPECT_EQ(generate("123456789", 16), generate(std::string("123456789\0\0\0\0\0\0\0", 16), 16));
}

TEST(GeneratedCrc32, TakesNoMoreOfLongDataThanTheTotal) {
  EXPECT_EQ(generate("123456789", 4), 0xC0AC60C4U);
  const Guarded<char> data("1234", 4);
  EXPECT_EQ(SMGenerateCRC32(data.data(), 0xFFFFFFFF, 4), 0xC0AC60C4U);
}

TEST(GeneratedCrc32, ReadsNoFurtherThanTheData) {
  for (size_t length = 0; length <= 20; ++length) {
    const std::string bytes(length, 'x');
    const Guarded<char> data(bytes.data(), length);
    for (int32_t total = 0; total <= 24; ++total) {
      std::string whole = bytes;
      whole.resize(static_cast<size_t>(total));
      EXPECT_EQ(SMGenerateCRC32(data.data(), static_cast<uint32_t>(length), total),
                generate(whole, total));
    }
  }
}

TEST(GeneratedCrc32, IsNotTheCrc32) {
  EXPECT_NE(generate("123456789", 9), kCheckValue);
  EXPECT_NE(generate("123456789", 9), ~kCheckValue);
}

}  // namespace
