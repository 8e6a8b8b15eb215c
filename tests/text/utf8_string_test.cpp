// UTF-8 text changed, copied, compared and escaped.

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string>

#include "gtest/gtest.h"
#include "support/guarded.h"
#include "support/ucs2.h"

namespace {

using namespace kqsupt::tests;

std::string bytes_of(const Guarded<char>& text) {
  return {text.data(), text.size()};
}

TEST(Utf8Trim, BothEndsAreOverwrittenAndNothingMoves) {
  const Guarded<char> text("  x \t", 6);
  EXPECT_EQ(SMUTF8trim(text.data()), text.data() + 2);
  EXPECT_EQ(bytes_of(text), std::string("\0\0x\0\0\0", 6));
}

TEST(Utf8Trim, LeftReturnsWhereItStopped) {
  const Guarded<char> text(" \t\r\nx ", 7);
  EXPECT_EQ(SMUTF8ltrim(text.data()), text.data() + 4);
  EXPECT_EQ(bytes_of(text), std::string("\0\0\0\0x \0", 7));
}

TEST(Utf8Trim, RightReturnsTheText) {
  const Guarded<char> text(" x \n\r\t", 7);
  EXPECT_EQ(SMUTF8rtrim(text.data()), text.data());
  EXPECT_EQ(bytes_of(text), std::string(" x\0\0\0\0\0", 7));
}

TEST(Utf8Trim, TextOfBlanksEndsUpEmpty) {
  const Guarded<char> left("  ", 3);
  EXPECT_EQ(SMUTF8ltrim(left.data()), left.data() + 2);
  const Guarded<char> right("  ", 3);
  EXPECT_EQ(SMUTF8rtrim(right.data()), right.data());
  EXPECT_STREQ(right.data(), "");
  const Guarded<char> both("  ", 3);
  EXPECT_STREQ(SMUTF8trim(both.data()), "");
  const Guarded<char> empty("", 1);
  EXPECT_EQ(SMUTF8trim(empty.data()), empty.data());
}

TEST(Utf8Trim, OtherBlanksStay) {
  char text[] = "\v\fx\f\v";
  EXPECT_EQ(SMUTF8trim(text), text);
  EXPECT_STREQ(text, "\v\fx\f\v");
}

TEST(Utf8Trim, NullGivesNull) {
  EXPECT_EQ(SMUTF8trim(nullptr), nullptr);
  EXPECT_EQ(SMUTF8ltrim(nullptr), nullptr);
  EXPECT_EQ(SMUTF8rtrim(nullptr), nullptr);
}

TEST(Utf8Case, MapsAsciiAndLeavesSequencesAlone) {
  const Guarded<char> upper("aZ1\xC3\xA9", 6);
  EXPECT_EQ(SMUTF8StrUpperCase(upper.data()), upper.data());
  EXPECT_STREQ(upper.data(), "AZ1\xC3\xA9");
  const Guarded<char> lower("aZ1\xC3\x89", 6);
  EXPECT_EQ(SMUTF8StrLowerCase(lower.data()), lower.data());
  EXPECT_STREQ(lower.data(), "az1\xC3\x89");
}

TEST(Utf8Case, AsksTheLocaleAboutEveryByte) {
  std::string text;
  for (int byte = 1; byte < 256; ++byte) {
    text += static_cast<char>(byte);
  }
  std::string lower = text;
  std::string upper = text;
  SMUTF8StrLowerCase(lower.data());
  SMUTF8StrUpperCase(upper.data());
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    EXPECT_EQ(static_cast<unsigned char>(lower[i]), std::tolower(byte));
    EXPECT_EQ(static_cast<unsigned char>(upper[i]), std::toupper(byte));
  }
}

TEST(Utf8Reverse, ReversesBytes) {
  const Guarded<char> text("ab\xC3\xA9", 5);
  EXPECT_EQ(SMUTF8Strrev(text.data()), text.data());
  EXPECT_STREQ(text.data(),
               "\xA9\xC3"
               "ba");
  char empty[] = "";
  EXPECT_EQ(SMUTF8Strrev(empty), empty);
}

TEST(Utf8Duplicate, IsTheCallersToFree) {
  const Guarded<char> text("abc", 4);
  char* copy = SMUTF8Strdup(text.data());
  EXPECT_STREQ(copy, "abc");
  SMFreeMem(copy);
  copy = SMUTF8Strdup("");
  EXPECT_STREQ(copy, "");
  std::free(copy);
  EXPECT_EQ(SMUTF8Strdup(nullptr), nullptr);
}

TEST(Utf8CompareFolded, FoldsAsciiAndCountsBytes) {
  EXPECT_EQ(SMUTF8Strnicmp("ABC", "abd", 2), 0);
  EXPECT_EQ(SMUTF8Strnicmp("ABC", "abd", 3), 'c' - 'd');
  EXPECT_EQ(SMUTF8Strnicmp("abD", "ABc", 3), 'd' - 'c');
  EXPECT_EQ(SMUTF8Strnicmp("a", "b", 0), 0);
  EXPECT_EQ(SMUTF8Strnicmp(nullptr, nullptr, 0), 0);
}

TEST(Utf8CompareFolded, StopsAtTheEndOfTheFirst) {
  EXPECT_EQ(SMUTF8Strnicmp("ab", "ab", 100), 0);
  EXPECT_EQ(SMUTF8Strnicmp("ab", "abc", 100), -'c');
  EXPECT_EQ(SMUTF8Strnicmp("abc", "ab", 100), 'c');
}

TEST(Utf8CompareFolded, HighBytesCompareAsUnsigned) {
  EXPECT_EQ(SMUTF8Strnicmp("\xC3", "a", 1), 0xC3 - 'a');
  EXPECT_EQ(SMUTF8Strnicmp("[", "a", 1), '[' - 'a');
  EXPECT_EQ(SMUTF8Strnicmp("Z", "[", 1), 'z' - '[');
}

TEST(Utf8CompareFolded, ReadsNoByteBehindN) {
  const Guarded<char> a("abc", 3);
  const Guarded<char> b("ABC", 3);
  EXPECT_EQ(SMUTF8Strnicmp(a.data(), b.data(), 3), 0);
}

TEST(Utf8FindFolded, FindsTheFirstPlaceInAnyCase) {
  const Guarded<char> text("xAbCabc", 8);
  EXPECT_EQ(SMUTF8Strstri(text.data(), "aBc"), text.data() + 1);
  EXPECT_EQ(SMUTF8Strstri(text.data(), "CABC"), text.data() + 3);
  EXPECT_EQ(SMUTF8Strstri(text.data(), "abcd"), nullptr);
  EXPECT_EQ(SMUTF8Strstri(text.data(), "xAbCabcx"), nullptr);
}

TEST(Utf8FindFolded, EmptyNeedleIsFoundAtOnce) {
  const Guarded<char> text("ab", 3);
  EXPECT_EQ(SMUTF8Strstri(text.data(), ""), text.data());
  const Guarded<char> empty("", 1);
  EXPECT_EQ(SMUTF8Strstri(empty.data(), ""), empty.data());
  EXPECT_EQ(SMUTF8Strstri(empty.data(), "a"), nullptr);
}

TEST(Utf8FindFolded, NullsGiveNull) {
  EXPECT_EQ(SMUTF8Strstri(nullptr, "a"), nullptr);
  EXPECT_EQ(SMUTF8Strstri("a", nullptr), nullptr);
}

uint32_t language_of(const char* locale_name) {
  setenv("LANG", locale_name, 1);
  return SMGetLocalLanguageID();
}

TEST(LocalLanguage, IsTheIdOfTheExactLocaleName) {
  const std::pair<const char*, uint32_t> languages[] = {
      {"es", 1034}, {"de", 1031}, {"en_US", 1033}, {"en_GB", 2057}, {"fr", 1036},
      {"ja", 1041}, {"ko", 2066}, {"pt_BR", 1046}, {"zh", 2052},    {"zh_TW", 1028}};
  for (const auto& [name, id] : languages) {
    EXPECT_EQ(language_of(name), id) << name;
  }
}

TEST(LocalLanguage, IsTheDefaultForAnyOtherName) {
  for (const char* name : {"", "en_US.UTF-8", "de_DE", "DE", "C", "zh_CN"}) {
    EXPECT_EQ(language_of(name), 1033U) << name;
  }
  unsetenv("LANG");
  EXPECT_EQ(SMGetLocalLanguageID(), 1033U);
}

// Escapes at every room from none to one more than needed.
void expect_escaped(const std::u16string& text, const std::string& expected) {
  const Guarded<ustring> src(ucs2(text).data(), text.size() + 1);
  const auto needed = static_cast<uint32_t>(expected.size()) + 1;
  for (uint32_t room = 0; room <= needed + 1; ++room) {
    const Guarded<char> dst(room);
    uint32_t size = room;
    const SMStatus status = SMUCS2ToEscape(dst.data(), &size, src.data());
    EXPECT_EQ(size, needed) << "the need is told in any case";
    if (room < needed) {
      EXPECT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL);
      EXPECT_EQ(bytes_of(dst), std::string(room, 0x55));
    } else {
      EXPECT_EQ(status, SM_STATUS_SUCCESS);
      EXPECT_STREQ(dst.data(), expected.c_str());
    }
  }
}

TEST(Escape, WritesPrintableAscii) {
  expect_escaped(u"a\t\x00E9\\", "a\\t\\u00e9\\\\");
  expect_escaped(u"", "");
  expect_escaped(u" ~\x7F", " ~\x7F");
  expect_escaped(u"\n\r\x01\x1F\x80\xD800\xFFFF", "\\n\\r\\u0001\\u001f\\u0080\\ud800\\uffff");
}

TEST(Escape, WithoutASizeTrustsTheDestination) {
  char dst[12];
  EXPECT_EQ(SMUCS2ToEscape(dst, nullptr, ucs2(u"a\t\x00E9\\").data()), SM_STATUS_SUCCESS);
  EXPECT_STREQ(dst, "a\\t\\u00e9\\\\");
}

TEST(Escape, WithoutADestinationTellsTheSize) {
  uint32_t size = 100;
  EXPECT_EQ(SMUCS2ToEscape(nullptr, &size, ucs2(u"ab").data()), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 3U);
  size = 0;
  EXPECT_EQ(SMUCS2ToEscape(nullptr, &size, ucs2(u"ab").data()), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 3U);
  EXPECT_EQ(SMUCS2ToEscape(nullptr, nullptr, ucs2(u"ab").data()), SM_STATUS_SUCCESS);
}

TEST(Escape, GrowsBeyondItsFirstCapacity) {
  const std::u16string text(5000, u'\xE9');
  uint32_t size = 0;
  EXPECT_EQ(SMUCS2ToEscape(nullptr, &size, ucs2(text).data()), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 30001U);
}

TEST(Escape, NullIsUnsuccessful) {
  uint32_t size = 7;
  EXPECT_EQ(SMUCS2ToEscape(nullptr, &size, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(size, 7U);
}

}  // namespace
