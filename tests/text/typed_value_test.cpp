// Typed values from text and to text.

#include <arpa/inet.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/text.h"
#include "support/child.h"
#include "support/emulated.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;
using kqsupt::tests::in_child;
using kqsupt::tests::survives_forks;

constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr SMStatus kNotRead = 1;
using Bytes = std::vector<uint8_t>;

// ---- From text

// What reading a value of one size came to: the value as it was before when it was not written.
template <class T>
struct Read {
  SMStatus status;
  T value;
  uint32_t size;
};

template <class T>
constexpr T kUntouched = static_cast<T>(0x55);

template <class T>
Read<T> read(const std::string& text, uint32_t type) {
  const Guarded<char> guarded(text.c_str(), text.size() + 1);
  const Guarded<T> value(1);
  *value.data() = kUntouched<T>;
  Read<T> result{0, 0, sizeof(T)};
  result.status = SMXLTUTF8ToTypeValue(guarded.data(), value.data(), &result.size, type);
  result.value = *value.data();
  EXPECT_EQ(result.size, sizeof(T)) << text;
  return result;
}

template <class T>
void expect_value(const std::string& text, uint32_t type, T expected) {
  const Read<T> result = read<T>(text, type);
  EXPECT_EQ(result.status, SM_STATUS_SUCCESS) << text;
  EXPECT_EQ(result.value, expected) << text;
}

template <class T>
void expect_refusal(const std::string& text, uint32_t type, SMStatus status) {
  const Read<T> result = read<T>(text, type);
  EXPECT_EQ(result.status, status) << text;
  EXPECT_EQ(result.value, kUntouched<T>) << text;
}

TEST(TextToInteger, ReadsDecimalWithAnOptionalSign) {
  for (const uint32_t format : {SMXLT_FMT_DEFAULT, SMXLT_FMT_DECIMAL}) {
    expect_value<int32_t>("12", SMXLT_TYPE_S32 | format, 12);
    expect_value<int32_t>("+12", SMXLT_TYPE_S32 | format, 12);
    expect_value<int32_t>("-12", SMXLT_TYPE_S32 | format, -12);
    expect_value<uint16_t>("007", SMXLT_TYPE_U16 | format, 7);
  }
}

TEST(TextToInteger, ALoneSignIsZero) {
  expect_value<int8_t>("-", SMXLT_TYPE_S8, 0);
  expect_value<uint32_t>("+", SMXLT_TYPE_U32, 0);
  expect_value<int64_t>("-", SMXLT_TYPE_S64, 0);
  expect_value<uint64_t>("+", SMXLT_TYPE_U64, 0);
}

TEST(TextToInteger, OtherTextIsInvalid) {
  for (const char* text : {"", " 1", "1 ", "1F", "0x1", "--1", "+-1", "1-", "1.0", "a"}) {
    expect_refusal<int8_t>(text, SMXLT_TYPE_S8, SM_STATUS_INVALID_PARAMETER);
    expect_refusal<uint32_t>(text, SMXLT_TYPE_U32, SM_STATUS_INVALID_PARAMETER);
    expect_refusal<int64_t>(text, SMXLT_TYPE_S64, SM_STATUS_INVALID_PARAMETER);
    expect_refusal<uint64_t>(text, SMXLT_TYPE_U64, SM_STATUS_INVALID_PARAMETER);
  }
}

TEST(TextToInteger, SmallTypesHaveARange) {
  expect_value<int8_t>("127", SMXLT_TYPE_S8, 127);
  expect_refusal<int8_t>("128", SMXLT_TYPE_S8, SM_STATUS_VALUE_TOO_LARGE);
  expect_value<int8_t>("-128", SMXLT_TYPE_S8, -128);
  expect_refusal<int8_t>("-129", SMXLT_TYPE_S8, SM_STATUS_VALUE_TOO_SMALL);
  expect_value<int16_t>("32767", SMXLT_TYPE_S16, 32767);
  expect_refusal<int16_t>("32768", SMXLT_TYPE_S16, SM_STATUS_VALUE_TOO_LARGE);
  expect_value<int16_t>("-32768", SMXLT_TYPE_S16, -32768);
  expect_refusal<int16_t>("-32769", SMXLT_TYPE_S16, SM_STATUS_VALUE_TOO_SMALL);
  expect_value<uint8_t>("255", SMXLT_TYPE_U8, 255);
  expect_refusal<uint8_t>("256", SMXLT_TYPE_U8, SM_STATUS_VALUE_TOO_LARGE);
  expect_value<uint16_t>("65535", SMXLT_TYPE_U16, 65535);
  expect_refusal<uint16_t>("65536", SMXLT_TYPE_U16, SM_STATUS_VALUE_TOO_LARGE);
  expect_refusal<int8_t>("99999999999999999999", SMXLT_TYPE_S8, SM_STATUS_VALUE_TOO_LARGE);
  expect_refusal<int8_t>("-99999999999999999999", SMXLT_TYPE_S8, SM_STATUS_VALUE_TOO_SMALL);
}

TEST(TextToInteger, NegativeTextWrapsInUnsignedTypes) {
  expect_value<uint32_t>("-5", SMXLT_TYPE_U32, 4294967291U);
  expect_refusal<uint8_t>("-5", SMXLT_TYPE_U8, SM_STATUS_VALUE_TOO_LARGE);
  expect_refusal<uint16_t>("-1", SMXLT_TYPE_U16, SM_STATUS_VALUE_TOO_LARGE);
  expect_value<uint32_t>("-4294967296", SMXLT_TYPE_U32, 0xFFFFFFFF);
}

TEST(TextToInteger, ThirtyTwoBitsSaturateAsOnAThirtyTwoBitHost) {
  expect_value<int32_t>("2147483647", SMXLT_TYPE_S32, INT32_MAX);
  expect_value<int32_t>("2147483648", SMXLT_TYPE_S32, INT32_MAX);
  expect_value<int32_t>("-2147483648", SMXLT_TYPE_S32, INT32_MIN);
  expect_value<int32_t>("-2147483649", SMXLT_TYPE_S32, INT32_MIN);
  expect_value<uint32_t>("4294967295", SMXLT_TYPE_U32, UINT32_MAX);
  expect_value<uint32_t>("4294967296", SMXLT_TYPE_U32, UINT32_MAX);
  expect_value<int32_t>("FFFFFFFF", SMXLT_TYPE_S32 | SMXLT_FMT_HEX, INT32_MAX);
  expect_value<uint32_t>("FFFFFFFF", SMXLT_TYPE_U32 | SMXLT_FMT_HEX, UINT32_MAX);
}

TEST(TextToInteger, SixtyFourBitsSaturate) {
  expect_value<int64_t>("9223372036854775807", SMXLT_TYPE_S64, INT64_MAX);
  expect_value<int64_t>("9223372036854775808", SMXLT_TYPE_S64, INT64_MAX);
  expect_value<int64_t>("-9223372036854775808", SMXLT_TYPE_S64, INT64_MIN);
  expect_value<int64_t>("-9223372036854775809", SMXLT_TYPE_S64, INT64_MIN);
  expect_value<uint64_t>("18446744073709551615", SMXLT_TYPE_U64, UINT64_MAX);
  expect_value<uint64_t>("18446744073709551616", SMXLT_TYPE_U64, UINT64_MAX);
}

TEST(TextToInteger, UnsignedSixtyFourBitsKnowNoMinus) {
  expect_value<uint64_t>("-5", SMXLT_TYPE_U64, 0);
  expect_value<uint64_t>("+5", SMXLT_TYPE_U64, 5);
}

TEST(TextToInteger, ReadsOctalDigitsOnly) {
  expect_value<int8_t>("17", SMXLT_TYPE_S8 | SMXLT_FMT_OCTAL, 15);
  expect_value<uint32_t>("37777777777", SMXLT_TYPE_U32 | SMXLT_FMT_OCTAL, UINT32_MAX);
  for (const char* text : {"", "8", "-1", "+1", "0x1", "1 "}) {
    expect_refusal<uint32_t>(text, SMXLT_TYPE_U32 | SMXLT_FMT_OCTAL, SM_STATUS_INVALID_PARAMETER);
    expect_refusal<int64_t>(text, SMXLT_TYPE_S64 | SMXLT_FMT_OCTAL, SM_STATUS_INVALID_PARAMETER);
  }
  expect_refusal<int64_t>("17", SMXLT_TYPE_S64 | SMXLT_FMT_OCTAL, kNotRead);
  expect_refusal<uint64_t>("17", SMXLT_TYPE_U64 | SMXLT_FMT_OCTAL, kNotRead);
}

TEST(TextToInteger, ReadsHexadecimalWithAnOptionalPrefix) {
  expect_value<uint32_t>("0x1F", SMXLT_TYPE_U32 | SMXLT_FMT_HEX, 31);
  expect_value<uint32_t>("0X1f", SMXLT_TYPE_U32 | SMXLT_FMT_HEX, 31);
  expect_value<uint32_t>("1F", SMXLT_TYPE_U32 | SMXLT_FMT_HEX, 31);
  expect_value<uint8_t>("ff", SMXLT_TYPE_U8 | SMXLT_FMT_HEX, 255);
  expect_refusal<int8_t>("FF", SMXLT_TYPE_S8 | SMXLT_FMT_HEX, SM_STATUS_VALUE_TOO_LARGE);
  for (const char* text : {"", "0x", "0X", "x1", "-1", "1G", "123456789", "0x123456789", "0x0x1"}) {
    expect_refusal<uint32_t>(text, SMXLT_TYPE_U32 | SMXLT_FMT_HEX, SM_STATUS_INVALID_PARAMETER);
    expect_refusal<int64_t>(text, SMXLT_TYPE_S64 | SMXLT_FMT_HEX, SM_STATUS_INVALID_PARAMETER);
  }
  expect_refusal<int64_t>("1F", SMXLT_TYPE_S64 | SMXLT_FMT_HEX, kNotRead);
}

TEST(TextToInteger, UnsignedSixtyFourBitsTakeSixteenHexadecimalDigits) {
  expect_value<uint64_t>("0x123456789", SMXLT_TYPE_U64 | SMXLT_FMT_HEX, 0x123456789);
  expect_value<uint64_t>("FEDCBA9876543210", SMXLT_TYPE_U64 | SMXLT_FMT_HEX, 0xFEDCBA9876543210);
  expect_value<uint64_t>("12345678", SMXLT_TYPE_U64 | SMXLT_FMT_HEX, 0x12345678);
  expect_refusal<uint64_t>("00000000000000001", SMXLT_TYPE_U64 | SMXLT_FMT_HEX,
                           SM_STATUS_INVALID_PARAMETER);
}

TEST(TextToInteger, OtherFormatsAreInvalid) {
  for (const uint32_t format : {0x0100U, 0x0500U, 0xFF00U}) {
    expect_refusal<uint32_t>("1", SMXLT_TYPE_U32 | format, SM_STATUS_INVALID_PARAMETER);
    expect_refusal<int64_t>("1", SMXLT_TYPE_S64 | format, SM_STATUS_INVALID_PARAMETER);
  }
}

TEST(TextToValue, IgnoresTheUpperHalfOfTheType) {
  expect_value<uint32_t>("1F", 0xABCD0000U | SMXLT_TYPE_U32 | SMXLT_FMT_HEX, 31);
}

TEST(TextToBoolean, ReadsTrueAndFalseInAnyCase) {
  expect_value<uint16_t>("TRUE", SMXLT_TYPE_BOOLEAN, 1);
  expect_value<uint16_t>("true", SMXLT_TYPE_BOOLEAN | SMXLT_FMT_HEX, 1);
  expect_value<uint16_t>("False", SMXLT_TYPE_BOOLEAN, 0);
  for (const char* text : {"", "yes", "1", "true ", "tru"}) {
    expect_refusal<uint16_t>(text, SMXLT_TYPE_BOOLEAN, SM_STATUS_INVALID_PARAMETER);
  }
}

TEST(TextToDouble, TakesAnyText) {
  expect_value<double>("2.5", SMXLT_TYPE_DOUBLE, 2.5);
  expect_value<double>("-17", SMXLT_TYPE_DOUBLE, -17.0);
  expect_value<double>("1e3", SMXLT_TYPE_DOUBLE, 1000.0);
  expect_value<double>("words", SMXLT_TYPE_DOUBLE, 0.0);
  expect_value<double>("", SMXLT_TYPE_DOUBLE, 0.0);
  expect_value<double>("3 apples", SMXLT_TYPE_DOUBLE, 3.0);
}

TEST(TextToDouble, WholeNumbersBeyondSixtyFourBitsKeepTheirValue) {
  expect_value<double>("100000000000000000000", SMXLT_TYPE_DOUBLE, 1e20);
}

TEST(TextToDouble, FormatsThatSixtyFourBitsDoNotReadAreLeftToTheCLibrary) {
  expect_value<double>("17", SMXLT_TYPE_DOUBLE | SMXLT_FMT_OCTAL, 17.0);
  expect_value<double>("0x1F", SMXLT_TYPE_DOUBLE | SMXLT_FMT_HEX, 31.0);
  expect_value<double>("12", SMXLT_TYPE_DOUBLE | 0x0500, 12.0);
}

TEST(TextToLanguage, KnowsTheLocaleNamesExactly) {
  expect_value<uint32_t>("de", SMXLT_TYPE_LANGUAGE_ID, 1031);
  expect_value<uint32_t>("ko", SMXLT_TYPE_LANGUAGE_ID, 2066);
  expect_value<uint32_t>("zh_TW", SMXLT_TYPE_LANGUAGE_ID, 1028);
  for (const char* text : {"", "DE", "de_DE", "en_US.UTF-8", "en"}) {
    expect_refusal<uint32_t>(text, SMXLT_TYPE_LANGUAGE_ID, kFailed);
  }
}

TEST(TextToAddress, IsReadAsAnIpv4Address) {
  expect_value<uint32_t>("010.000.0.1", SMXLT_TYPE_IPV4, htonl(0x0A000001));
  expect_refusal<uint32_t>("nowhere", SMXLT_TYPE_IPV4, kFailed);
}

TEST(TextToValue, FixedSizesNeedTheirRoomBeforeTheTextIsRead) {
  const std::pair<uint32_t, uint32_t> sizes[] = {
      {SMXLT_TYPE_BOOLEAN, 2}, {SMXLT_TYPE_S8, 1},          {SMXLT_TYPE_S16, 2},
      {SMXLT_TYPE_S32, 4},     {SMXLT_TYPE_S64, 8},         {SMXLT_TYPE_U8, 1},
      {SMXLT_TYPE_U16, 2},     {SMXLT_TYPE_U32, 4},         {SMXLT_TYPE_U64, 8},
      {SMXLT_TYPE_DOUBLE, 8},  {SMXLT_TYPE_LANGUAGE_ID, 4}, {SMXLT_TYPE_IPV4, 4}};
  for (const auto& [type, needed] : sizes) {
    for (uint32_t room = 0; room < needed; ++room) {
      const Guarded<uint8_t> value(room);
      uint32_t size = room;
      EXPECT_EQ(SMXLTUTF8ToTypeValue("no value", room != 0 ? value.data() : nullptr, &size, type),
                SM_STATUS_BUFFER_TOO_SMALL)
          << type;
      EXPECT_EQ(size, needed) << type;
    }
  }
}

TEST(TextToValue, NullsAreRefusedFirst) {
  uint32_t size = 4;
  uint32_t value = 0;
  EXPECT_EQ(SMXLTUTF8ToTypeValue(nullptr, &value, &size, 99), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXLTUTF8ToTypeValue("1", &value, nullptr, 99), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXLTUTF8ToTypeValue("1", nullptr, &size, 99), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(size, 4U);
}

TEST(TextToValue, TypesThatAreNotReadHaveNoSize) {
  for (const uint32_t type : {uint32_t{SMXLT_TYPE_TIME}, 17U, 255U}) {
    uint32_t size = 4;
    uint32_t value = 0;
    EXPECT_EQ(SMXLTUTF8ToTypeValue("1", &value, &size, type), SM_STATUS_UNSUCCESSFUL);
    EXPECT_EQ(size, 0U);
  }
}

// Reads bytes at every room from none to one more than needed, and expects what `expected` says.
void expect_bytes(const std::string& text, uint32_t type, const Bytes& expected) {
  const Guarded<char> guarded(text.c_str(), text.size() + 1);
  const auto needed = static_cast<uint32_t>(expected.size());
  for (uint32_t room = 0; room <= needed + 1; ++room) {
    const Guarded<uint8_t> value(room);
    uint32_t size = room;
    const SMStatus status =
        SMXLTUTF8ToTypeValue(guarded.data(), room != 0 ? value.data() : nullptr, &size, type);
    EXPECT_EQ(size, needed) << text;
    if (room < needed) {
      EXPECT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL) << text;
      EXPECT_EQ(Bytes(value.data(), value.end()), Bytes(room, 0x55)) << text;
    } else {
      EXPECT_EQ(status, SM_STATUS_SUCCESS) << text;
      EXPECT_EQ(Bytes(value.data(), value.data() + needed), expected) << text;
    }
  }
}

void expect_no_bytes(const std::string& text, uint32_t type, SMStatus status) {
  const Guarded<char> guarded(text.c_str(), text.size() + 1);
  const Guarded<uint8_t> value(64);
  uint32_t size = 64;
  EXPECT_EQ(SMXLTUTF8ToTypeValue(guarded.data(), value.data(), &size, type), status) << text;
  EXPECT_EQ(size, 0U) << text;
  EXPECT_EQ(Bytes(value.data(), value.end()), Bytes(64, 0x55)) << text;
}

TEST(TextToBytes, ReadsPairsUpToTheFirstThatIsNone) {
  for (const uint32_t type : {uint32_t{SMXLT_TYPE_BINARY}, uint32_t{SMXLT_TYPE_HEX_BYTES},
                              uint32_t{SMXLT_TYPE_HEX_BYTES | SMXLT_FMT_HEX}}) {
    expect_bytes("0AFF", type, {0x0A, 0xFF});
    expect_bytes("0affz1", type, {0x0A, 0xFF});
    expect_bytes("", type, {});
    expect_bytes("zz", type, {});
  }
}

TEST(TextToBytes, ASingleLastDigitIsAByte) {
  expect_bytes("0AF", SMXLT_TYPE_BINARY, {0x0A, 0x0F});
}

TEST(TextToBytes, APairIsWhatTheCLibraryScansFromTwoCharacters) {
  for (const char* pair : {"1G", "0x", " 1", "+1", "-1", "G1", "1 ", "0G", "x1", "- "}) {
    unsigned int value = 0;
    if (std::sscanf(pair, "%x", &value) == 1) {
      expect_bytes(pair, SMXLT_TYPE_BINARY, {static_cast<uint8_t>(value)});
    } else {
      expect_bytes(pair, SMXLT_TYPE_BINARY, {});
    }
  }
}

TEST(TextToBytes, ReadsTheListThatItWrites) {
  expect_bytes("0x0A,0xFF", SMXLT_TYPE_BINARY | SMXLT_FMT_HEX, {0x0A, 0xFF});
  expect_bytes("0x0a", SMXLT_TYPE_BINARY | SMXLT_FMT_HEX, {0x0A});
}

TEST(TextToBytes, MalformedListsFail) {
  for (const char* text :
       {"", "0", "0x0A,", "0x0A,0xFF,", "0A,FF", "0x100,0x1", "0xZZ", "1,2,3,4,5", ",,,,",
        "0x0A00x1B", "0x0A0xFF,", "0x1,0x100", "0x0A;0xFF", "0x 1", "0x-1"}) {
    expect_no_bytes(text, SMXLT_TYPE_BINARY | SMXLT_FMT_HEX, kFailed);
  }
}

TEST(TextToBytes, OtherFormatsAreUnsuccessful) {
  for (const uint32_t format : {SMXLT_FMT_BASE2, SMXLT_FMT_OCTAL, SMXLT_FMT_DECIMAL}) {
    expect_no_bytes("0A", SMXLT_TYPE_BINARY | format, SM_STATUS_UNSUCCESSFUL);
  }
}

TEST(TextToText, CopiesUtf8WithItsTerminator) {
  expect_bytes("abc", SMXLT_TYPE_UTF8, {'a', 'b', 'c', 0});
  expect_bytes("", SMXLT_TYPE_UTF8, {0});
}

TEST(TextToText, Ucs2ThatDoesNotFitIsWrittenAsFarAsItDoes) {
  ustring units[3] = {7, 7, 7};
  uint32_t size = 4;
  EXPECT_EQ(SMXLTUTF8ToTypeValue("abc", units, &size, SMXLT_TYPE_UCS2), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(units[0], 'a');
  EXPECT_EQ(units[1], 'b');
  EXPECT_EQ(units[2], 7);
}

TEST(TextToText, ConvertsToUcs2WithTheConvertersStatusAndSize) {
  ustring units[4] = {};
  uint32_t size = 6;
  EXPECT_EQ(SMXLTUTF8ToTypeValue("\xC3\xA9x", units, &size, SMXLT_TYPE_UCS2), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 6U);
  EXPECT_EQ(units[0], 0xE9);
  size = 5;
  EXPECT_EQ(SMXLTUTF8ToTypeValue("\xC3\xA9x", units, &size, SMXLT_TYPE_UCS2),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 5U) << "the converter does not report its need";
  size = 0;
  EXPECT_EQ(SMXLTUTF8ToTypeValue("\xC3\xA9x", nullptr, &size, SMXLT_TYPE_UCS2), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 6U);
}

// ---- To text

struct Written {
  SMStatus status;
  std::string text;
  uint32_t size;
};

Written write(const void* value, uint32_t value_size, uint32_t type, uint32_t room) {
  const Guarded<char> text(room);
  Written written{0, {}, room};
  written.status = SMXLTTypeValueToUTF8(value, value_size, text.data(), &written.size, type);
  written.text.assign(text.data(), text.end());
  return written;
}

// A value that needs a room of its own whatever its text is.
template <class T>
void expect_text(T value, uint32_t type, const std::string& expected, uint32_t smallest) {
  for (uint32_t room = 0; room < smallest; ++room) {
    const Written small = write(&value, sizeof value, type, room);
    EXPECT_EQ(small.status, SM_STATUS_BUFFER_TOO_SMALL) << expected;
    EXPECT_EQ(small.size, smallest) << expected;
    EXPECT_EQ(small.text, std::string(room, 0x55)) << expected;
  }
  for (uint32_t room = smallest; room <= smallest + 1; ++room) {
    const Written written = write(&value, sizeof value, type, room);
    EXPECT_EQ(written.status, SM_STATUS_SUCCESS) << expected;
    EXPECT_EQ(written.size, expected.size() + 1) << expected;
    EXPECT_STREQ(written.text.c_str(), expected.c_str());
  }
  uint32_t size = 1000;
  EXPECT_EQ(SMXLTTypeValueToUTF8(&value, sizeof value, nullptr, &size, type),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, expected.size() + 1) << "without a buffer";
}

TEST(ValueToText, BooleanIsTrueForOneOnly) {
  expect_text<uint16_t>(1, SMXLT_TYPE_BOOLEAN, "true", 5);
  expect_text<uint16_t>(0, SMXLT_TYPE_BOOLEAN, "false", 6);
  expect_text<uint16_t>(2, SMXLT_TYPE_BOOLEAN, "false", 6);
  expect_text<uint16_t>(0x0101, SMXLT_TYPE_BOOLEAN, "false", 6);
}

TEST(ValueToText, SignedIntegersAreExtendedToThirtyTwoBits) {
  expect_text<int8_t>(-5, SMXLT_TYPE_S8, "-5", 17);
  expect_text<int8_t>(-5, SMXLT_TYPE_S8 | SMXLT_FMT_HEX, "0xfffffffb", 17);
  expect_text<int16_t>(-5, SMXLT_TYPE_S16 | SMXLT_FMT_OCTAL, "37777777773", 17);
  expect_text<int32_t>(-5, SMXLT_TYPE_S32 | SMXLT_FMT_HEX, "0xfffffffb", 17);
  expect_text<int32_t>(INT32_MIN, SMXLT_TYPE_S32 | SMXLT_FMT_DECIMAL, "-2147483648", 17);
}

TEST(ValueToText, UnsignedIntegersAreWhatTheyAre) {
  expect_text<uint8_t>(255, SMXLT_TYPE_U8, "255", 16);
  expect_text<uint16_t>(65535, SMXLT_TYPE_U16 | SMXLT_FMT_HEX, "0xffff", 16);
  expect_text<uint32_t>(UINT32_MAX, SMXLT_TYPE_U32, "4294967295", 16);
  expect_text<uint32_t>(8, SMXLT_TYPE_U32 | SMXLT_FMT_OCTAL, "10", 16);
  expect_text<uint32_t>(0, SMXLT_TYPE_U32 | SMXLT_FMT_HEX, "0", 16);
}

TEST(ValueToText, BinaryDigitsNeedThirtyThreeBytes) {
  expect_text<uint8_t>(5, SMXLT_TYPE_U8 | SMXLT_FMT_BASE2, "101", 33);
  expect_text<int8_t>(-1, SMXLT_TYPE_S8 | SMXLT_FMT_BASE2, std::string(32, '1'), 33);
  expect_text<int32_t>(INT32_MIN, SMXLT_TYPE_S32 | SMXLT_FMT_BASE2, "1" + std::string(31, '0'), 33);
  expect_text<uint32_t>(UINT32_MAX, SMXLT_TYPE_U32 | SMXLT_FMT_BASE2, std::string(32, '1'), 33);
}

TEST(ValueToText, SixtyFourBitsAreDecimalInEveryFormat) {
  for (const uint32_t format : {SMXLT_FMT_DEFAULT, SMXLT_FMT_BASE2, SMXLT_FMT_HEX}) {
    expect_text<int64_t>(INT64_MIN, SMXLT_TYPE_S64 | format, "-9223372036854775808", 33);
    expect_text<uint64_t>(UINT64_MAX, SMXLT_TYPE_U64 | format, "18446744073709551615", 32);
  }
  expect_text<int64_t>(0, SMXLT_TYPE_S64, "0", 33);
}

TEST(ValueToText, DoublesHaveThreeDigitsBehindThePoint) {
  expect_text<double>(2.5, SMXLT_TYPE_DOUBLE, "2.500", 32);
  expect_text<double>(-0.0004, SMXLT_TYPE_DOUBLE, "-0.000", 32);
  expect_text<double>(std::numeric_limits<double>::infinity(), SMXLT_TYPE_DOUBLE, "Inf", 32);
}

TEST(ValueToText, LongDoublesAreCutToTheRoom) {
  const double value = 1e40;
  const Written written = write(&value, sizeof value, SMXLT_TYPE_DOUBLE, 32);
  EXPECT_EQ(written.status, SM_STATUS_SUCCESS);
  EXPECT_EQ(written.size, 32U);
  EXPECT_EQ(std::strlen(written.text.c_str()), 31U);
  uint32_t size = 32;
  EXPECT_EQ(SMXLTTypeValueToUTF8(&value, sizeof value, nullptr, &size, SMXLT_TYPE_DOUBLE),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 41U + 4 + 1);
}

TEST(ValueToText, LanguagesHaveTheirLocaleNames) {
  expect_text<uint32_t>(1031, SMXLT_TYPE_LANGUAGE_ID, "de", 16);
  expect_text<uint32_t>(1028, SMXLT_TYPE_LANGUAGE_ID, "zh_TW", 16);
  expect_text<uint32_t>(4711, SMXLT_TYPE_LANGUAGE_ID, "en_US", 16);
}

TEST(ValueToText, TimesAreTheCLibrarysWithoutTheLineEnd) {
  setenv("TZ", "UTC0", 1);
  tzset();
  expect_text<int32_t>(0, SMXLT_TYPE_TIME, "Thu Jan  1 00:00:00 1970", 64);
  expect_text<int32_t>(-1, SMXLT_TYPE_TIME, "Wed Dec 31 23:59:59 1969", 64);
}

TEST(ValueToText, ATimeIsWrittenInAChildThatWasMadeWhileAThreadWroteOne) {
  if (!survives_forks()) {
    GTEST_SKIP() << "what runs this does not survive such a fork";
  }
  const auto write = [](int32_t time) {
    char text[64];
    uint32_t size = sizeof text;
    return SMXLTTypeValueToUTF8(&time, sizeof time, text, &size, SMXLT_TYPE_TIME);
  };
  std::atomic<bool> done = false;
  std::thread writing([&] {
    for (int32_t time = 0; !done; ++time) {
      write(time);
    }
  });
  int status = 0;
  for (int i = 0; i < 500 && status == 0; ++i) {
    status = in_child([&] { return write(-1) == SM_STATUS_SUCCESS ? 0 : 1; });
  }
  done = true;
  writing.join();
  EXPECT_EQ(status, 0);
}

// Bytes or text, whose room is that of their text.
void expect_text_of_bytes(const Bytes& value, uint32_t type, const std::string& expected) {
  const Guarded<uint8_t> guarded(value.data(), value.size());
  const auto value_size = static_cast<uint32_t>(value.size());
  const auto needed = static_cast<uint32_t>(expected.size()) + 1;
  for (uint32_t room = 0; room <= needed + 1; ++room) {
    const Written written = write(guarded.data(), value_size, type, room);
    EXPECT_EQ(written.size, needed) << expected;
    if (room < needed) {
      EXPECT_EQ(written.status, SM_STATUS_BUFFER_TOO_SMALL) << expected;
      EXPECT_EQ(written.text, std::string(room, 0x55)) << expected;
    } else {
      EXPECT_EQ(written.status, SM_STATUS_SUCCESS) << expected;
      EXPECT_STREQ(written.text.c_str(), expected.c_str());
    }
  }
  uint32_t size = 0;
  EXPECT_EQ(SMXLTTypeValueToUTF8(guarded.data(), value_size, nullptr, &size, type),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, needed);
}

TEST(BytesToText, ArePairsOrAList) {
  expect_text_of_bytes({0x0A, 0xFF}, SMXLT_TYPE_BINARY, "0AFF");
  expect_text_of_bytes({0x0A, 0xFF}, SMXLT_TYPE_BINARY | SMXLT_FMT_HEX, "0x0A,0xFF");
}

TEST(BytesToText, NoBytesAreAnEmptyText) {
  for (const uint32_t format : {SMXLT_FMT_DEFAULT, SMXLT_FMT_HEX, SMXLT_FMT_BASE2}) {
    expect_text_of_bytes({}, SMXLT_TYPE_BINARY | format, "");
  }
}

TEST(BytesToText, OtherFormatsAreUnsuccessful) {
  const uint8_t value = 1;
  for (const uint32_t format : {SMXLT_FMT_OCTAL, SMXLT_FMT_DECIMAL}) {
    EXPECT_EQ(write(&value, 1, SMXLT_TYPE_BINARY | format, 100).status, SM_STATUS_UNSUCCESSFUL);
  }
}

TEST(HexDump, HasLinesOfEightyOneCharacters) {
  Bytes value;
  for (int i = 0; i < 16; ++i) {
    value.push_back(static_cast<uint8_t>(i));
  }
  expect_text_of_bytes(value, SMXLT_TYPE_BINARY | SMXLT_FMT_BASE2,
                       "0x00000000: 00 01 02 03:04 05 06 07:08 09 0A 0B:0C 0D 0E 0F   "
                       "................ \r\n");
}

TEST(HexDump, ShowsCharactersUpToZ) {
  const std::string text = " az{|}~\x7F\x80";
  expect_text_of_bytes(Bytes(text.begin(), text.end()), SMXLT_TYPE_BINARY | SMXLT_FMT_BASE2,
                       "0x00000000: 20 61 7A 7B:7C 7D 7E 7F:80                         az......"
                       "        \r\n");
}

TEST(HexDump, KeepsTheLayoutOfAShortLastLine) {
  const Bytes value(17, 'A');
  expect_text_of_bytes(value, SMXLT_TYPE_BINARY | SMXLT_FMT_BASE2,
                       "0x00000000: 41 41 41 41:41 41 41 41:41 41 41 41:41 41 41 41   "
                       "AAAAAAAAAAAAAAAA \r\n"
                       "0x00000010: 41                                                A"
                       "                \r\n");
}

TEST(TextValueToText, IsCopiedAsItIs) {
  expect_text_of_bytes({'a', 'b', 0}, SMXLT_TYPE_UTF8, "ab");
  const Written cut = write("abc", 3, SMXLT_TYPE_UTF8, 3);
  EXPECT_EQ(cut.status, SM_STATUS_SUCCESS);
  EXPECT_EQ(cut.text, "abc") << "no terminator is added";
  EXPECT_EQ(cut.size, 3U);
}

TEST(TextValueToText, OfNoBytesIsNothing) {
  for (const uint32_t room : {0U, 3U}) {
    const Written none = write("abc", 0, SMXLT_TYPE_UTF8, room);
    EXPECT_EQ(none.status, SM_STATUS_SUCCESS);
    EXPECT_EQ(none.size, 0U);
    EXPECT_EQ(none.text, std::string(room, 0x55));
  }
  uint32_t size = 7;
  EXPECT_EQ(SMXLTTypeValueToUTF8("abc", 0, nullptr, &size, SMXLT_TYPE_UTF8),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 0U);
}

TEST(TextValueToText, IsCopiedWithWhatFollowsAnInnerTerminator) {
  const std::string value("ab\0cd", 6);
  for (uint32_t room = 0; room < 6; ++room) {
    const Written small = write(value.data(), 6, SMXLT_TYPE_UTF8, room);
    EXPECT_EQ(small.status, SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(small.size, 6U);
    EXPECT_EQ(small.text, std::string(room, 0x55));
  }
  const Written written = write(value.data(), 6, SMXLT_TYPE_UTF8, 6);
  EXPECT_EQ(written.status, SM_STATUS_SUCCESS);
  EXPECT_EQ(written.text, value);
  EXPECT_EQ(written.size, 3U) << "that of the text up to its terminator";
}

TEST(TextValueToText, FromUcs2IsTheConverters) {
  const ustring value[] = {0xE9, 0};
  EXPECT_EQ(write(value, 4, SMXLT_TYPE_UCS2, 3).text, std::string("\xC3\xA9\0", 3));
  const Written small = write(value, 4, SMXLT_TYPE_UCS2, 2);
  EXPECT_EQ(small.status, SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(small.size, 2U) << "the converter does not report its need";
  uint32_t size = 0;
  EXPECT_EQ(SMXLTTypeValueToUTF8(value, 4, nullptr, &size, SMXLT_TYPE_UCS2), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 3U);
}

TEST(AddressToText, IsDotted) {
  const uint32_t address = htonl(0x0A000001);
  Bytes value(4);
  std::memcpy(value.data(), &address, 4);
  expect_text_of_bytes(value, SMXLT_TYPE_IPV4, "10.0.0.1");
}

TEST(HexBytesToText, ArePairsOfAtMostSixtyThreeBytes) {
  const Bytes value(70, 0xAB);
  std::string expected;
  for (int i = 0; i < 63; ++i) {
    expected += "AB";
  }
  const Written written = write(value.data(), 70, SMXLT_TYPE_HEX_BYTES, 127);
  EXPECT_EQ(written.status, SM_STATUS_SUCCESS);
  EXPECT_EQ(written.size, 127U);
  EXPECT_STREQ(written.text.c_str(), expected.c_str());
}

TEST(HexBytesToText, AreTheSameInEveryFormat) {
  const uint8_t value[] = {0x0A, 0xFF};
  for (const uint32_t format : {0x0000U, 0x0100U, 0x0200U, 0x0300U, 0x0400U, 0x0500U, 0xFF00U}) {
    const Written written = write(value, 2, SMXLT_TYPE_HEX_BYTES | format, 5);
    EXPECT_EQ(written.status, SM_STATUS_SUCCESS) << format;
    EXPECT_STREQ(written.text.c_str(), "0AFF") << format;
    EXPECT_EQ(written.size, 5U) << format;
  }
}

TEST(HexBytesToText, SucceedWithoutAnEffectWhenTheRoomIsTooSmall) {
  const uint8_t value[] = {0x0A, 0xFF};
  char text[5] = "old";
  uint32_t size = 4;
  EXPECT_EQ(SMXLTTypeValueToUTF8(value, 2, text, &size, SMXLT_TYPE_HEX_BYTES), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 4U) << "the size of the text that was there";
  EXPECT_STREQ(text, "old");
  size = 5;
  EXPECT_EQ(SMXLTTypeValueToUTF8(value, 2, text, &size, SMXLT_TYPE_HEX_BYTES), SM_STATUS_SUCCESS);
  EXPECT_STREQ(text, "0AFF");
  for (uint32_t room = 0; room < 5; ++room) {
    EXPECT_EQ(write(value, 2, SMXLT_TYPE_HEX_BYTES, room).status, SM_STATUS_SUCCESS);
  }
}

TEST(HexBytesToText, WithoutABufferTellTheirSize) {
  const uint8_t value[] = {0x0A, 0xFF};
  uint32_t size = 0;
  EXPECT_EQ(SMXLTTypeValueToUTF8(value, 2, nullptr, &size, SMXLT_TYPE_HEX_BYTES),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 5U);
}

TEST(ValueToText, NullsAndUnknownTypesAreRefused) {
  uint32_t size = 100;
  char text[100];
  EXPECT_EQ(SMXLTTypeValueToUTF8(nullptr, 4, text, &size, 99), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXLTTypeValueToUTF8(text, 4, text, nullptr, 99), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXLTTypeValueToUTF8(text, 4, text, &size, 17), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMXLTTypeValueToUTF8(text, 4, text, &size, 255), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(size, 100U);
}

}  // namespace
