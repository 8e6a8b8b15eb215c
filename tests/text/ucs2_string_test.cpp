// Strings of 16-bit units.

#include <random>

#include "gtest/gtest.h"
#include "support/guarded.h"
#include "support/ucs2.h"

namespace {

using namespace kqsupt::tests;
using Units = std::vector<ustring>;

// A string whose terminator is the last unit before an inaccessible page.
class AtPageEnd {
 public:
  explicit AtPageEnd(const std::u16string& text) : memory_(ucs2(text).data(), text.size() + 1) {}
  [[nodiscard]] ustring* get() const { return memory_.data(); }

 private:
  Guarded<ustring> memory_;
};

// The destination of a call and what it holds afterwards.
struct Buffer {
  Units units = Units(12, 0x5555);
  explicit Buffer(const std::u16string& text = u"") {
    std::copy(text.begin(), text.end(), units.begin());
    units[text.size()] = 0;
  }
  ustring* get() { return units.data(); }
};

Units padded(std::initializer_list<ustring> head) {
  Units units(head);
  units.resize(12, 0x5555);
  return units;
}

TEST(Ucs2Strlen, CountsUnitsBeforeTheTerminator) {
  EXPECT_EQ(SMUCS2Strlen(ucs2(u"").data()), 0U);
  EXPECT_EQ(SMUCS2Strlen(ucs2(u"a\xD800\xFFFF").data()), 3U);
}

TEST(Ucs2Strlen, ReadsNothingBehindTheTerminatorAtAnyLengthAndAlignment) {
  for (size_t length = 0; length < 300; ++length) {
    const AtPageEnd text(std::u16string(length, u'x'));
    EXPECT_EQ(SMUCS2Strlen(text.get()), length);
  }
}

TEST(Ucs2Strcpy, CopiesWithTheTerminatorAndNoFurther) {
  Buffer plain;
  EXPECT_EQ(SMUCS2Strcpy(plain.get(), ucs2(u"ab").data()), plain.get());
  EXPECT_EQ(plain.units, padded({'a', 'b', 0}));
  Buffer sized;
  EXPECT_EQ(SMUCS2Strcpy_s(sized.get(), 1, ucs2(u"ab").data()), sized.get());
  EXPECT_EQ(sized.units, plain.units) << "the size is not looked at";
}

TEST(Ucs2Strcat, AppendsWithTheTerminator) {
  Buffer plain(u"ab");
  EXPECT_EQ(SMUCS2Strcat(plain.get(), ucs2(u"cd").data()), plain.get());
  EXPECT_EQ(plain.units, padded({'a', 'b', 'c', 'd', 0}));
  Buffer sized(u"ab");
  EXPECT_EQ(SMUCS2Strcat_s(sized.get(), 1, ucs2(u"cd").data()), sized.get());
  EXPECT_EQ(sized.units, plain.units);
}

TEST(Ucs2Strncpy, LeavesALongerTextUnterminated) {
  Buffer buffer;
  EXPECT_EQ(SMUCS2Strncpy(buffer.get(), ucs2(u"abc").data(), 2), buffer.get());
  EXPECT_EQ(buffer.units, padded({'a', 'b'}));
}

TEST(Ucs2Strncpy, PadsNothingBehindAShorterText) {
  Buffer plain;
  SMUCS2Strncpy(plain.get(), ucs2(u"ab").data(), 6);
  EXPECT_EQ(plain.units, padded({'a', 'b', 0}));
  Buffer sized;
  EXPECT_EQ(SMUCS2Strncpy_s(sized.get(), 0, ucs2(u"ab").data(), 6), sized.get());
  EXPECT_EQ(sized.units, plain.units);
}

TEST(Ucs2Strncpy, OfNoUnitsWritesNothing) {
  Buffer buffer(u"x");
  SMUCS2Strncpy(buffer.get(), ucs2(u"ab").data(), 0);
  EXPECT_EQ(buffer.units, padded({'x', 0}));
}

TEST(Ucs2Strncpy, ReadsNoUnitBehindN) {
  const Guarded<ustring> text(ucs2(u"abc").data(), 3);
  Buffer buffer;
  SMUCS2Strncpy(buffer.get(), text.data(), 3);
  EXPECT_EQ(buffer.units, padded({'a', 'b', 'c'}));
}

TEST(Ucs2Strncat, AppendsAtMostNUnitsAndATerminator) {
  Buffer plain(u"x");
  EXPECT_EQ(SMUCS2Strncat(plain.get(), ucs2(u"abc").data(), 2), plain.get());
  EXPECT_EQ(plain.units, padded({'x', 'a', 'b', 0}));
  SMUCS2Strncat(plain.get(), ucs2(u"c").data(), 5);
  EXPECT_EQ(plain.units, padded({'x', 'a', 'b', 'c', 0}));
  Buffer sized(u"x");
  EXPECT_EQ(SMUCS2Strncat_s(sized.get(), 0, ucs2(u"abc").data(), 3), sized.get());
  EXPECT_EQ(sized.units, plain.units);
}

TEST(Ucs2Strncat, OfNoUnitsDoesNotEvenLook) {
  const Guarded<ustring> unterminated(4);
  EXPECT_EQ(SMUCS2Strncat(unterminated.data(), nullptr, 0), unterminated.data());
}

TEST(Ucs2Strncat, ReadsNoUnitBehindN) {
  const Guarded<ustring> text(ucs2(u"abc").data(), 3);
  Buffer buffer(u"x");
  SMUCS2Strncat(buffer.get(), text.data(), 3);
  EXPECT_EQ(buffer.units, padded({'x', 'a', 'b', 'c', 0}));
}

TEST(Ucs2Strchr, FindsTheFirstPlace) {
  const Units text = ucs2(u"abcb");
  EXPECT_EQ(SMUCS2Strchr(text.data(), 'b'), text.data() + 1);
  EXPECT_EQ(SMUCS2Strchr(text.data(), 'x'), nullptr);
}

TEST(Ucs2Strchr, FindsTheTerminator) {
  const Units text = ucs2(u"abc");
  EXPECT_EQ(SMUCS2Strchr(text.data(), 0), text.data() + 3);
}

TEST(Ucs2Strchr, LooksAtTheLowSixteenBitsOnly) {
  const Units text = ucs2(u"abc");
  EXPECT_EQ(SMUCS2Strchr(text.data(), 0xFFFF0062), text.data() + 1);
  EXPECT_EQ(SMUCS2Strchr(text.data(), 0x10000), text.data() + 3);
}

TEST(Ucs2Strchr, ReadsNothingBehindTheTerminator) {
  for (size_t length = 0; length < 80; ++length) {
    const AtPageEnd text(std::u16string(length, u'x') + u"y");
    EXPECT_EQ(SMUCS2Strchr(text.get(), 'y'), text.get() + length);
    EXPECT_EQ(SMUCS2Strchr(text.get(), 'z'), nullptr);
  }
}

TEST(Ucs2Strstr, FindsTheFirstOccurrence) {
  const Units text = ucs2(u"ababac");
  EXPECT_EQ(SMUCS2Strstr(text.data(), ucs2(u"aba").data()), text.data());
  EXPECT_EQ(SMUCS2Strstr(text.data(), ucs2(u"bac").data()), text.data() + 3);
  EXPECT_EQ(SMUCS2Strstr(text.data(), ucs2(u"bad").data()), nullptr);
}

TEST(Ucs2Strstr, EmptyNeedleIsFoundAtOnce) {
  const Units text = ucs2(u"ab");
  EXPECT_EQ(SMUCS2Strstr(text.data(), ucs2(u"").data()), text.data());
  const Units empty = ucs2(u"");
  EXPECT_EQ(SMUCS2Strstr(empty.data(), ucs2(u"").data()), empty.data());
}

TEST(Ucs2Strstr, LongerNeedleIsNotFound) {
  EXPECT_EQ(SMUCS2Strstr(ucs2(u"ab").data(), ucs2(u"abc").data()), nullptr);
}

TEST(Ucs2Strstr, AgreesWithAModelAtTheEndOfMemory) {
  std::mt19937 random(3);
  for (int round = 0; round < 4000; ++round) {
    std::u16string text;
    std::u16string needle;
    for (size_t i = random() % 60; i > 0; --i) {
      text += static_cast<char16_t>(u'a' + random() % 2);
    }
    for (size_t i = random() % 6; i > 0; --i) {
      needle += static_cast<char16_t>(u'a' + random() % 2);
    }
    const AtPageEnd s(text);
    const AtPageEnd sub(needle);
    const size_t place = text.find(needle);
    EXPECT_EQ(SMUCS2Strstr(s.get(), sub.get()),
              place != std::u16string::npos ? s.get() + place : nullptr);
  }
}

TEST(Ucs2Strspn, CountsLeadingUnitsOfTheSet) {
  EXPECT_EQ(SMUCS2Strspn(ucs2(u"aabxa").data(), ucs2(u"ab").data()), 3U);
  EXPECT_EQ(SMUCS2Strspn(ucs2(u"xaa").data(), ucs2(u"ab").data()), 0U);
  EXPECT_EQ(SMUCS2Strspn(ucs2(u"ab").data(), ucs2(u"ab").data()), 2U);
  EXPECT_EQ(SMUCS2Strspn(ucs2(u"ab").data(), ucs2(u"").data()), 0U);
}

TEST(Ucs2Strcspn, CountsLeadingUnitsOutsideTheSet) {
  EXPECT_EQ(SMUCS2Strcspn(ucs2(u"xyab").data(), ucs2(u"ab").data()), 2U);
  EXPECT_EQ(SMUCS2Strcspn(ucs2(u"xyz").data(), ucs2(u"ab").data()), 3U);
  EXPECT_EQ(SMUCS2Strcspn(ucs2(u"xyz").data(), ucs2(u"").data()), 3U);
  EXPECT_EQ(SMUCS2Strcspn(ucs2(u"").data(), ucs2(u"ab").data()), 0U);
}

using Next = ustring* (*)(ustring* s, const ustring* delimiters);
std::vector<std::u16string> tokens(Next next, const std::u16string& text,
                                   const std::u16string& delimiters) {
  Units units = ucs2(text);
  const Units set = ucs2(delimiters);
  std::vector<std::u16string> found;
  for (ustring* token = next(units.data(), set.data()); token != nullptr;
       token = next(nullptr, set.data())) {
    found.push_back(units_of(token));
  }
  EXPECT_EQ(next(nullptr, set.data()), nullptr) << "there is none left either";
  return found;
}

TEST(Ucs2Strtok, CutsBetweenRunsOfDelimiters) {
  for (const Next next : {Next{SMUCS2Strtok}, Next{[](ustring*s, const ustring*set) {
                            ustring* context = s;
                            ustring* token = SMUCS2Strtok_s(s, set, &context);
                            EXPECT_EQ(context, s) << "the context is not written";
                            return token;
                          }}}) {
    EXPECT_EQ(tokens(next, u"  ab,,cd", u" ,"), (std::vector<std::u16string>{u"ab", u"cd"}));
    EXPECT_EQ(tokens(next, u"ab,", u","), (std::vector<std::u16string>{u"ab"}));
    EXPECT_EQ(tokens(next, u",,", u","), (std::vector<std::u16string>{}));
    EXPECT_EQ(tokens(next, u"", u","), (std::vector<std::u16string>{}));
    EXPECT_EQ(tokens(next, u"ab", u""), (std::vector<std::u16string>{u"ab"}));
  }
}

TEST(Ucs2Strtok, HasOnePlaceForTheWholeProcess) {
  Units first = ucs2(u"a,b");
  Units second = ucs2(u"c,d");
  const Units set = ucs2(u",");
  ustring* unused = nullptr;
  EXPECT_EQ(units_of(SMUCS2Strtok(first.data(), set.data())), u"a");
  EXPECT_EQ(units_of(SMUCS2Strtok_s(second.data(), set.data(), &unused)), u"c");
  EXPECT_EQ(units_of(SMUCS2Strtok(nullptr, set.data())), u"d") << "the second string's";
  EXPECT_EQ(SMUCS2Strtok_s(nullptr, set.data(), nullptr), nullptr);
}

TEST(Ucs2Strset, OverwritesUpToTheTerminator) {
  Buffer plain(u"abc");
  EXPECT_EQ(SMUCS2Strset(plain.get(), 0xABCD0078), plain.get());
  EXPECT_EQ(plain.units, padded({'x', 'x', 'x', 0}));
  Buffer sized(u"abc");
  EXPECT_EQ(SMUCS2Strset_s(sized.get(), 1, 'x'), sized.get());
  EXPECT_EQ(sized.units, plain.units);
}

TEST(Ucs2Strnset, OverwritesTheTerminatorToo) {
  Buffer plain(u"ab");
  EXPECT_EQ(SMUCS2Strnset(plain.get(), 'x', 4), plain.get());
  EXPECT_EQ(plain.units, padded({'x', 'x', 'x', 'x'}));
  Buffer sized(u"ab");
  EXPECT_EQ(SMUCS2Strnset_s(sized.get(), 0, 'x', 1), sized.get());
  EXPECT_EQ(sized.units, padded({'x', 'b', 0}));
}

TEST(Ucs2Strrev, ReversesInPlace) {
  for (const auto& [text, reversed] : {std::pair<std::u16string, std::u16string>{u"", u""},
                                       {u"a", u"a"},
                                       {u"ab", u"ba"},
                                       {u"abc", u"cba"}}) {
    Buffer buffer(text);
    EXPECT_EQ(SMUCS2Strrev(buffer.get()), buffer.get());
    EXPECT_EQ(units_of(buffer.get()), reversed);
  }
}

TEST(Ucs2Strcmp, GivesTheDifferenceInSixteenBits) {
  const auto compare = [](const std::u16string& a, const std::u16string& b) {
    return SMUCS2Strcmp(AtPageEnd(a).get(), AtPageEnd(b).get());
  };
  EXPECT_EQ(compare(u"A", u"B"), 65535U);
  EXPECT_EQ(compare(u"B", u"A"), 1U);
  EXPECT_EQ(compare(u"AB", u"AB"), 0U);
  EXPECT_EQ(compare(u"", u""), 0U);
  EXPECT_EQ(compare(u"AB", u"A"), 'B');
  EXPECT_EQ(compare(u"A", u"AB"), 65536U - 'B');
  EXPECT_EQ(compare(u"\xFFFF", u"\x0001"), 0xFFFEU);
}

}  // namespace
