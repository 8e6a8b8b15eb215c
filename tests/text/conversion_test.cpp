// Text between UCS-2 and UTF-8.

#include <cstring>
#include <random>
#include <string>

#include "gtest/gtest.h"
#include "support/guarded.h"
#include "support/ucs2.h"

namespace {

using namespace kqsupt::tests;

// Converts at every room from none to one more than needed, the source ending at an inaccessible page.
void expect_utf8(const std::u16string& text, const std::string& expected) {
  const Guarded<ustring> src(ucs2(text).data(), text.size() + 1);
  const auto needed = static_cast<uint32_t>(expected.size()) + 1;
  uint32_t size = 77;
  EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, src.data()), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, needed);
  for (uint32_t room = 0; room <= needed + 1; ++room) {
    const Guarded<char> dst(room);
    size = room;
    const SMStatus status = SMUCS2StrToUTF8Str(dst.data(), &size, src.data());
    if (room < needed) {
      EXPECT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL);
      EXPECT_EQ(size, room) << "not changed";
    } else {
      EXPECT_EQ(status, SM_STATUS_SUCCESS);
      EXPECT_EQ(size, needed);
      EXPECT_EQ(std::string(dst.data()), expected);
    }
  }
}

void expect_ucs2(const std::string& text, const std::u16string& expected) {
  const Guarded<char> src(text.c_str(), text.size() + 1);
  const auto needed = static_cast<uint32_t>(expected.size()) * 2 + 2;
  uint32_t size = 77;
  EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, src.data()), SM_STATUS_SUCCESS) << text;
  EXPECT_EQ(size, needed);
  for (uint32_t room = 0; room <= needed + 2; ++room) {
    const Guarded<ustring> dst(room / 2);
    size = room;
    const SMStatus status = SMUTF8StrToUCS2Str(dst.data(), &size, src.data());
    if (room < needed) {
      EXPECT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL);
      EXPECT_EQ(size, room) << "not changed";
    } else {
      EXPECT_EQ(status, SM_STATUS_SUCCESS);
      EXPECT_EQ(size, needed);
      EXPECT_EQ(units_of(dst.data()), expected);
    }
  }
}

void expect_no_utf8(const std::u16string& text) {
  const Guarded<ustring> src(ucs2(text).data(), text.size() + 1);
  char dst[100];
  uint32_t size = sizeof dst;
  EXPECT_EQ(SMUCS2StrToUTF8Str(dst, &size, src.data()), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, src.data()), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(size, sizeof dst);
}

void expect_no_ucs2(const std::string& text) {
  const Guarded<char> src(text.c_str(), text.size() + 1);
  ustring dst[100];
  uint32_t size = sizeof dst;
  EXPECT_EQ(SMUTF8StrToUCS2Str(dst, &size, src.data()), SM_STATUS_OPERATION_FAILED) << text;
  EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, src.data()), SM_STATUS_OPERATION_FAILED) << text;
  EXPECT_EQ(size, sizeof dst);
}

TEST(Ucs2ToUtf8, WritesOneToThreeBytesAUnit) {
  expect_utf8(u"", "");
  expect_utf8(u"AB", "AB");
  expect_utf8(u"\x7F\x80\x7FF\x800\xFFFF", "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF");
}

TEST(Ucs2ToUtf8, AsksForTwoBytesAndATerminator) {
  uint32_t size = 2;
  char dst[2];
  EXPECT_EQ(SMUCS2StrToUTF8Str(dst, &size, ucs2(u"\xE9").data()), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 2U);
  EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, ucs2(u"\xE9").data()), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 3U);
}

TEST(Ucs2ToUtf8, EverySurrogateIsThePairAtTheHead) {
  // 0x10000 + (0x83D & 0x3FF) << 10 | 0x200: the code point of the pair D83D DE00.
  const std::string pair = "\xF0\x9F\x98\x80";
  expect_utf8(u"\xD83D\xDE00", pair + pair);
  expect_utf8(
      u"\xD83D\xDE00"
      u"a\xD800",
      pair + pair + "a" + pair);
}

TEST(Ucs2ToUtf8, ASurrogateBehindAPlainHeadIsTheHead) {
  expect_utf8(u"ab\xD83D\xDE00", "abaa");
  expect_utf8(u"\xE9\xDC00", "\xC3\xA9\xC3\xA9");
}

TEST(Ucs2ToUtf8, HalfAPairAtTheHeadFails) {
  expect_no_utf8(u"\xD83D");
  expect_no_utf8(u"\xD83Dx");
  expect_no_utf8(u"\xDE00\xD83D");
  expect_no_utf8(u"\xDC00");
  expect_no_utf8(u"\xD83D\xD83D");
}

TEST(Ucs2ToUtf8, ErrorsComeInTheOrderOfTheText) {
  char dst[2] = {'x', 'x'};
  uint32_t size = 1;
  EXPECT_EQ(SMUCS2StrToUTF8Str(dst, &size, ucs2(u"\xDC00").data()), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMUCS2StrToUTF8Str(dst, &size, ucs2(u"ab\xDC00").data()), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 1U);
}

TEST(Ucs2ToUtf8, NullsAreRefused) {
  char dst[4];
  uint32_t size = 4;
  EXPECT_EQ(SMUCS2StrToUTF8Str(dst, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMUCS2StrToUTF8Str(dst, nullptr, ucs2(u"a").data()), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(size, 4U);
}

TEST(Utf8ToUcs2, ReadsOneToFourBytesACharacter) {
  expect_ucs2("", u"");
  expect_ucs2("AB", u"AB");
  expect_ucs2("\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", u"\x7F\x80\x7FF\x800\xFFFF");
}

TEST(Utf8ToUcs2, PairsAreNotReducedFirst) {
  expect_ucs2("\xF0\x9F\x98\x80", u"\xD87D\xDE00");
  expect_ucs2("\xF0\x90\x80\x80", u"\xD840\xDC00");
  expect_ucs2("\xF4\x8F\xBF\xBF", u"\xD83F\xDFFF");  // 0x10FFFF, of which 20 bits count
}

TEST(Utf8ToUcs2, SurrogatesPassAsUnits) {
  expect_ucs2("\xED\xA0\x80", u"\xD800");
  expect_ucs2("\xED\xBF\xBF", u"\xDFFF");
}

TEST(Utf8ToUcs2, OverLongFormsAndOddFollowersPass) {
  expect_ucs2("\xC1\x81", u"A");
  expect_ucs2("\xE0\x81\x81", u"A");
  expect_ucs2("\xF8\x80\x80\x81\x81", u"A");
  expect_ucs2("\xFC\x80\x80\x80\x81\x81", u"A");
  expect_ucs2("\xC3(", u"\xE8");  // the low six bits of any byte
}

TEST(Utf8ToUcs2, AnOverLongZeroIsAUnitOfZero) {
  const Guarded<ustring> dst(3);
  uint32_t size = 6;
  EXPECT_EQ(SMUTF8StrToUCS2Str(dst.data(), &size, "\xC0\x80x"), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 6U);
  EXPECT_EQ(dst.data()[0], 0);
  EXPECT_EQ(dst.data()[1], 'x');
}

TEST(Utf8ToUcs2, BytesThatBeginNoSequenceFail) {
  for (const char* text : {"\x80", "\xBF", "\xFE", "\xFF", "a\x80", "\xC3\xA9\xFF"}) {
    expect_no_ucs2(text);
  }
}

TEST(Utf8ToUcs2, SequencesThatAreCutOffFail) {
  for (const char* text : {"\xC3", "\xE0\xA0", "\xE0", "\xF0\x90\x80", "\xF8\x81\x81\x81",
                           "\xFC\x81\x81\x81\x81", "ab\xC3"}) {
    expect_no_ucs2(text);
  }
}

TEST(Utf8ToUcs2, CodePointsBeyondTheLastFail) {
  for (const char* text : {"\xF4\x90\x80\x80", "\xF7\xBF\xBF\xBF", "\xF8\x88\x80\x80\x80",
                           "\xFD\xBF\xBF\xBF\xBF\xBF"}) {
    expect_no_ucs2(text);
  }
}

TEST(Utf8ToUcs2, NullsAreRefused) {
  ustring dst[4];
  uint32_t size = 8;
  EXPECT_EQ(SMUTF8StrToUCS2Str(dst, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMUTF8StrToUCS2Str(dst, nullptr, "a"), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(size, 8U);
}

TEST(Conversion, RoundTripsTextWithoutSurrogatesAtEveryLength) {
  std::mt19937 random(7);
  for (size_t length = 0; length < 300; ++length) {
    std::u16string text;
    while (text.size() < length) {
      const auto kind = random() % 4;
      const auto most = kind < 2 ? 0x7F : kind == 2 ? 0x7FF : 0xFFFF;
      const auto value = static_cast<char16_t>(1 + static_cast<int>(random() % 0x10000) % most);
      if (value != 0 && (value & 0xF800) != 0xD800) {
        text += value;
      }
    }
    const Guarded<ustring> src(ucs2(text).data(), text.size() + 1);
    uint32_t size = 0;
    ASSERT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, src.data()), SM_STATUS_SUCCESS);
    const Guarded<char> utf8(size);
    ASSERT_EQ(SMUCS2StrToUTF8Str(utf8.data(), &size, src.data()), SM_STATUS_SUCCESS);
    const Guarded<ustring> back(length + 1);
    size = static_cast<uint32_t>(length + 1) * 2;
    ASSERT_EQ(SMUTF8StrToUCS2Str(back.data(), &size, utf8.data()), SM_STATUS_SUCCESS);
    EXPECT_EQ(units_of(back.data()), text);
  }
}

}  // namespace
