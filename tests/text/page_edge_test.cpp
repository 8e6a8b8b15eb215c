// Searches and conversions of strings that lie at the edge of what may be read: each string once
// right before an inaccessible page, once at every place of the first bytes behind one.

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "support/conversion_model.h"
#include "support/guarded.h"
#include "support/ucs2.h"

namespace {

using namespace kqsupt::tests;

constexpr size_t kMostLength = 70;

// Elements with the terminator.
template <class Element>
using Terminated = std::vector<Element>;

Terminated<char> terminated(const std::string& text) {
  return {text.c_str(), text.c_str() + text.size() + 1};
}
Terminated<ustring> terminated(const std::u16string& text) {
  return ucs2(text);
}

// Calls `check(string)` for copies of the string at all these places. Right before the edge the
// length decides on the alignment; the other ones come from what lies behind the terminator.
template <class Element, class Check>
void at_edges(const Terminated<Element>& string, Check check) {
  for (size_t behind = 0; behind < 16; ++behind) {
    Terminated<Element> memory = string;
    memory.insert(memory.end(), behind, 'x');
    const Guarded<Element> guarded(memory.data(), memory.size());
    check(guarded.data());
  }
  for (size_t before = 0; before < 64; ++before) {
    Terminated<Element> memory(before, 0);
    memory.insert(memory.end(), string.begin(), string.end());
    const GuardedBefore<Element> guarded(memory.data(), memory.size());
    check(guarded.data() + before);
  }
}

TEST(PageEdge, StrlenAtAnyLengthAndPlace) {
  for (size_t length = 0; length <= kMostLength; ++length) {
    at_edges(ucs2(std::u16string(length, u'x')),
             [&](const ustring* s) { ASSERT_EQ(SMUCS2Strlen(s), length); });
  }
}

TEST(PageEdge, BytesOfZeroInTwoUnitsAreNoTerminator) {
  for (size_t length = 0; length <= 300; ++length) {
    std::u16string text;
    while (text.size() < length) {
      text += text.size() % 3 == 0 ? u'\x0100' : u'\x0001';
    }
    const Guarded<ustring> s(ucs2(text).data(), length + 1);
    EXPECT_EQ(SMUCS2Strlen(s.data()), length);
    EXPECT_EQ(SMUCS2Strchr(s.data(), 0x0101), nullptr);
  }
}

TEST(PageEdge, StrchrAtAnyLengthAndPlace) {
  for (size_t length = 0; length <= kMostLength; ++length) {
    at_edges(ucs2(std::u16string(length, u'x') + u"yxy"), [&](const ustring* s) {
      ASSERT_EQ(SMUCS2Strchr(s, 'y'), s + length);
      ASSERT_EQ(SMUCS2Strchr(s, 'z'), nullptr);
      ASSERT_EQ(SMUCS2Strchr(s, 0), s + length + 3);
    });
  }
}

TEST(PageEdge, StrstrAtAnyLengthAndPlace) {
  for (const std::u16string needle : {u"y", u"xy", u"xxxxxxxy", u"xxxxxxxxxxxxxxxxxxxxy"}) {
    const Terminated<ustring> sub = ucs2(needle);
    const Terminated<ustring> absent = ucs2(needle + u"y");
    for (size_t length = 0; length <= kMostLength; ++length) {
      const std::u16string text = std::u16string(length, u'x') + u"y";
      const size_t place = text.find(needle);
      at_edges(ucs2(text), [&](const ustring* s) {
        ASSERT_EQ(SMUCS2Strstr(s, sub.data()), place != std::u16string::npos ? s + place : nullptr);
        ASSERT_EQ(SMUCS2Strstr(s, absent.data()), nullptr);
      });
    }
  }
}

// Converts to the last `room` elements before an inaccessible page.
template <class From, class Text, class Element>
void expect_conversion(SMStatus (*convert)(Element*, uint32_t*, const From*), const From* from,
                       const Conversion<Text>& expected, const Guarded<Element>& to, size_t room) {
  constexpr uint32_t kOddByte = sizeof(Element) - 1;  // half a unit is no room
  Element* const dst = to.end() - room;
  const auto capacity = static_cast<uint32_t>(room * sizeof(Element)) + kOddByte;
  uint32_t size = capacity;
  ASSERT_EQ(convert(dst, &size, from), expected.status);
  const size_t written = expected.text.size();
  if (expected.status != SM_STATUS_SUCCESS) {
    ASSERT_EQ(size, capacity) << "not changed";
    return;
  }
  ASSERT_EQ(size, (written + 1) * sizeof(Element));
  ASSERT_TRUE(std::equal(dst, dst + written, terminated(expected.text).begin()));
  ASSERT_EQ(dst[written], 0);
}

// At every room from none to one more than needed.
void expect_conversions(const std::string& text) {
  const size_t needed = ucs2_model(text, SIZE_MAX).text.size() + 1;
  const Guarded<ustring> to(needed + 1);
  const Guarded<char> from(text.c_str(), text.size() + 1);
  for (size_t room = 0; room <= needed + 1; ++room) {
    expect_conversion(SMUTF8StrToUCS2Str, from.data(), ucs2_model(text, room), to, room);
  }
}
void expect_conversions(const std::u16string& text) {
  const size_t needed = utf8_model(text, SIZE_MAX).text.size() + 1;
  const Guarded<char> to(needed + 1);
  const Guarded<ustring> from(ucs2(text).data(), text.size() + 1);
  for (size_t room = 0; room <= needed + 1; ++room) {
    expect_conversion(SMUCS2StrToUTF8Str, from.data(), utf8_model(text, room), to, room);
  }
}

// Texts of one kind each, and of the kinds that mix, as far as they are asked for.
std::vector<std::u16string> texts_of(size_t length) {
  const std::u16string kinds[] = {u"a", u"\xE9", u"\x4E2D",
                                  u"a\xE9"
                                  u"bc",
                                  u"abcdefgh\x4E2D\xE9"};
  std::vector<std::u16string> texts;
  for (const std::u16string& kind : kinds) {
    std::u16string& text = texts.emplace_back();
    while (text.size() < length) {
      text += kind[text.size() % kind.size()];
    }
  }
  return texts;
}

TEST(PageEdge, ConversionOfAnyLengthToAnyRoom) {
  for (size_t length = 0; length <= kMostLength; ++length) {
    for (const std::u16string& text : texts_of(length)) {
      expect_conversions(text);
      expect_conversions(utf8_model(text, SIZE_MAX).text);
    }
  }
}

TEST(PageEdge, ConversionFromAnyPlace) {
  for (size_t length = 0; length <= kMostLength; ++length) {
    for (const std::u16string& text : texts_of(length)) {
      const std::string utf8 = utf8_model(text, SIZE_MAX).text;
      const Guarded<ustring> units(length + 1);
      const Guarded<char> bytes(utf8.size() + 1);
      at_edges(ucs2(text), [&](const ustring* s) {
        expect_conversion(SMUCS2StrToUTF8Str, s, utf8_model(text, bytes.size()), bytes,
                          bytes.size());
      });
      at_edges(terminated(utf8), [&](const char* s) {
        expect_conversion(SMUTF8StrToUCS2Str, s, ucs2_model(utf8, units.size()), units,
                          units.size());
      });
    }
  }
}

TEST(PageEdge, MalformedBytesAtAnyPlaceOfAWideStep) {
  for (const std::u16string& plain : texts_of(36)) {
    const std::string text = utf8_model(plain, SIZE_MAX).text;
    for (size_t at = 0; at < text.size(); ++at) {
      for (const char* bad :
           {"a", "\x80", "\xBF", "\xC3", "\xE4", "\xF0", "\xFB", "\xFE", "\xFF"}) {
        std::string malformed = text;
        malformed.replace(at, 1, bad);
        const auto expected = ucs2_model(malformed, 80);
        const Guarded<ustring> to(80);
        const Guarded<char> from(malformed.c_str(), malformed.size() + 1);
        expect_conversion(SMUTF8StrToUCS2Str, from.data(), expected, to, 80);
        uint32_t size = 7;
        ASSERT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, from.data()), expected.status);
      }
      expect_conversions(text.substr(0, at));
    }
  }
}

TEST(PageEdge, SurrogatesAtAnyPlaceOfAWideStep) {
  for (const std::u16string& plain : texts_of(36)) {
    for (size_t at = 0; at < plain.size(); ++at) {
      for (const std::u16string bad : {u"\xD800", u"\xDFFF", u"\xD801\xDC01"}) {
        std::u16string malformed = plain;
        malformed.replace(at, 1, bad);
        const auto expected = utf8_model(malformed, 200);
        const Guarded<char> to(200);
        const Guarded<ustring> from(ucs2(malformed).data(), malformed.size() + 1);
        expect_conversion(SMUCS2StrToUTF8Str, from.data(), expected, to, 200);
        uint32_t size = 7;
        ASSERT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, from.data()), expected.status);
      }
    }
  }
}

// What is measured without a destination is put together from several bufferfuls.
TEST(PageEdge, LongTextsAreMeasured) {
  for (size_t length = 160; length < 1300; length += 7) {
    for (const std::u16string& text : texts_of(length)) {
      const std::string utf8 = utf8_model(text, SIZE_MAX).text;
      uint32_t size = 0;
      ASSERT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, ucs2(text).data()), SM_STATUS_SUCCESS);
      ASSERT_EQ(size, utf8.size() + 1);
      ASSERT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, utf8.c_str()), SM_STATUS_SUCCESS);
      ASSERT_EQ(size, 2 * length + 2);
    }
  }
}

TEST(PageEdge, StringsAtOddAddressesAreRead) {
  const std::u16string text(50, u'\xE9');
  std::vector<char> bytes(1 + 2 * (text.size() + 1));
  std::memcpy(bytes.data() + 1, text.c_str(), bytes.size() - 1);
  const auto* odd = reinterpret_cast<const ustring*>(bytes.data() + 1);
  EXPECT_EQ(SMUCS2Strlen(odd), text.size());
  EXPECT_EQ(SMUCS2Strchr(odd, 0xE9), odd);
  EXPECT_EQ(SMUCS2Strchr(odd, 0), odd + text.size());
  EXPECT_EQ(SMUCS2Strchr(odd, 'x'), nullptr);
  char utf8[200];
  uint32_t size = sizeof utf8;
  EXPECT_EQ(SMUCS2StrToUTF8Str(utf8, &size, odd), SM_STATUS_SUCCESS);
  EXPECT_EQ(utf8, utf8_model(text, SIZE_MAX).text);
}

}  // namespace
