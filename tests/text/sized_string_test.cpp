// Sized strings of both kinds: one list of facts, run over each.

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/text.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;

// The functions of a kind under one name.
struct Ucs2Kind {
  using String = SMSSUCS2Str;
  using Unit = ustring;
  static Unit* alloc(String* s, uint32_t capacity) { return SMSSUCS2StrAlloc(s, capacity); }
  static void free(String* s) { SMSSUCS2StrFree(s); }
  static Unit* cat(String* s, const Unit* text) { return SMSSUCS2StrCatUCS2Str(s, text); }
  static Unit* cat(String* s, const Unit* text, uint32_t n) {
    return SMSSUCS2StrNCatUCS2Str(s, text, n);
  }
};
struct Utf8Kind {
  using String = SMSSUTF8Str;
  using Unit = char;
  static Unit* alloc(String* s, uint32_t capacity) { return SMSSUTF8StrAlloc(s, capacity); }
  static void free(String* s) { SMSSUTF8StrFree(s); }
  static Unit* cat(String* s, const Unit* text) { return SMSSUTF8StrCatUTF8Str(s, text); }
  static Unit* cat(String* s, const Unit* text, uint32_t n) {
    return SMSSUTF8StrNCatUTF8Str(s, text, n);
  }
};

template <class Unit>
std::vector<Unit> units(const std::string& text) {
  std::vector<Unit> result(text.begin(), text.end());
  result.push_back(0);
  return result;
}

template <class Kind>
class SizedString : public testing::Test {
 protected:
  using Unit = typename Kind::Unit;
  static constexpr uint32_t kUnit = sizeof(Unit);

  ~SizedString() override { Kind::free(&string_); }

  Unit* cat(const std::string& text) { return Kind::cat(&string_, units<Unit>(text).data()); }
  Unit* cat(const std::string& text, uint32_t n) {
    return Kind::cat(&string_, units<Unit>(text).data(), n);
  }
  std::string content() const {
    return std::string(string_.content, string_.content + string_.length);
  }

  typename Kind::String string_{};
};
using Kinds = testing::Types<Ucs2Kind, Utf8Kind>;
TYPED_TEST_SUITE(SizedString, Kinds);

TYPED_TEST(SizedString, AllocMakesAnEmptyTerminatedText) {
  auto* content = TypeParam::alloc(&this->string_, 16);
  ASSERT_NE(content, nullptr);
  EXPECT_EQ(content, this->string_.content);
  EXPECT_EQ(content[0], 0);
  EXPECT_EQ(this->string_.capacity, 16U);
  EXPECT_EQ(this->string_.length, 0U);
}

TYPED_TEST(SizedString, AllocOfNoCapacitySetsTheContentOnly) {
  this->string_.capacity = 7;
  this->string_.length = 8;
  EXPECT_EQ(TypeParam::alloc(&this->string_, 0), nullptr);
  EXPECT_EQ(this->string_.content, nullptr);
  EXPECT_EQ(this->string_.capacity, 7U);
  EXPECT_EQ(this->string_.length, 8U);
}

TYPED_TEST(SizedString, AllocOfOneByteHoldsATerminator) {
  ASSERT_NE(TypeParam::alloc(&this->string_, 1), nullptr);
  EXPECT_EQ(this->string_.content[0], 0);
  this->cat("a");
  EXPECT_EQ(this->content(), "a");
}

TYPED_TEST(SizedString, GrowsToTwiceItsCapacity) {
  TypeParam::alloc(&this->string_, 4 * this->kUnit);
  EXPECT_EQ(this->cat("abcdef"), this->string_.content);
  EXPECT_EQ(this->string_.capacity, 8 * this->kUnit);
  EXPECT_EQ(this->string_.length, 6U);
  EXPECT_EQ(this->content(), "abcdef");
  EXPECT_EQ(this->string_.content[6], 0);
}

TYPED_TEST(SizedString, GrowsToWhatIsNeededWhenThatIsMore) {
  TypeParam::alloc(&this->string_, 4);
  this->cat(std::string(100, 'x'));
  EXPECT_EQ(this->string_.capacity, 101 * this->kUnit);
}

TYPED_TEST(SizedString, KeepsItsCapacityWhileTheTextFits) {
  TypeParam::alloc(&this->string_, 4 * this->kUnit);
  this->cat("abc");
  EXPECT_EQ(this->string_.capacity, 4 * this->kUnit);
}

TYPED_TEST(SizedString, GrowsByAQuarterFromOneMebibyteOn) {
  const std::string full(0x100000 / this->kUnit - 1, 'x');
  TypeParam::alloc(&this->string_, 0x100000);
  this->cat(full);
  EXPECT_EQ(this->string_.capacity, 0x100000U);
  this->cat("y");
  EXPECT_EQ(this->string_.capacity, 0x140000U);
  TypeParam::free(&this->string_);
  TypeParam::alloc(&this->string_, 0xFFFFF);
  this->cat(full);
  this->cat("yy");
  EXPECT_EQ(this->string_.capacity, 0x1FFFFEU);
}

// The product of the growth target has 32 bits: from one byte on it wraps, and what is needed counts.
TYPED_TEST(SizedString, GrowsToWhatIsNeededWhereAQuarterMoreWraps) {
  constexpr uint32_t kLast = 34359738;
  // Zeros that nobody writes take no memory.
  const std::unique_ptr<void, decltype(&std::free)> zeros(std::calloc(kLast + 2, 1), std::free);
  ASSERT_NE(zeros, nullptr);
  for (const uint32_t more : {0U, 2U}) {
    const uint32_t capacity = kLast + more;
    const uint32_t units = capacity / this->kUnit - 1;
    const auto* text = static_cast<const typename TypeParam::Unit*>(zeros.get());
    ASSERT_NE(TypeParam::alloc(&this->string_, capacity), nullptr);
    TypeParam::cat(&this->string_, text, units);
    ASSERT_EQ(this->string_.capacity, capacity);
    TypeParam::cat(&this->string_, text, 1);
    EXPECT_EQ(this->string_.length, units + 1);
    EXPECT_EQ(this->string_.capacity, more == 0 ? 42949672U : capacity + this->kUnit);
    TypeParam::free(&this->string_);
  }
}

TYPED_TEST(SizedString, AppendsExactlyNUnits) {
  TypeParam::alloc(&this->string_, 4);
  this->cat("xyz", 2);
  EXPECT_EQ(this->content(), "xy");
}

TYPED_TEST(SizedString, NStopsAtNoTerminator) {
  TypeParam::alloc(&this->string_, 4);
  this->cat(std::string("a\0b", 3), 3);
  EXPECT_EQ(this->content(), std::string("a\0b", 3));
  EXPECT_EQ(this->string_.length, 3U);
}

TYPED_TEST(SizedString, NOfZeroStandsForAllOfIt) {
  TypeParam::alloc(&this->string_, 4);
  this->cat("xyz", 0);
  this->cat("", 0);
  EXPECT_EQ(this->content(), "xyz");
}

TYPED_TEST(SizedString, ReadsNoUnitBehindN) {
  const Guarded<typename TypeParam::Unit> text(units<typename TypeParam::Unit>("xyz").data(), 3);
  TypeParam::alloc(&this->string_, 4);
  TypeParam::cat(&this->string_, text.data(), 3);
  EXPECT_EQ(this->content(), "xyz");
}

TYPED_TEST(SizedString, TakesItsOwnText) {
  TypeParam::alloc(&this->string_, 4);
  this->cat("abc");
  TypeParam::cat(&this->string_, this->string_.content);
  TypeParam::cat(&this->string_, this->string_.content + 1, 2);
  EXPECT_EQ(this->content(), "abcabcbc");
}

TYPED_TEST(SizedString, WithoutABufferTakesNothing) {
  EXPECT_EQ(this->cat("abc"), nullptr);
  EXPECT_EQ(this->string_.length, 0U);
  TypeParam::alloc(&this->string_, 4);
  TypeParam::free(&this->string_);
  EXPECT_EQ(this->cat("abc", 2), nullptr);
}

TYPED_TEST(SizedString, NullTextChangesNothing) {
  TypeParam::alloc(&this->string_, 4);
  this->cat("a");
  EXPECT_EQ(TypeParam::cat(&this->string_, nullptr), this->string_.content);
  EXPECT_EQ(TypeParam::cat(&this->string_, nullptr, 3), this->string_.content);
  EXPECT_EQ(this->content(), "a");
}

TYPED_TEST(SizedString, FreeMayBeCalledTwice) {
  TypeParam::alloc(&this->string_, 4);
  TypeParam::free(&this->string_);
  EXPECT_EQ(this->string_.content, nullptr);
  EXPECT_EQ(this->string_.capacity, 0U);
  EXPECT_EQ(this->string_.length, 0U);
  TypeParam::free(&this->string_);
}

TYPED_TEST(SizedString, NullRecordIsTolerated) {
  EXPECT_EQ(TypeParam::alloc(nullptr, 4), nullptr);
  EXPECT_EQ(TypeParam::cat(nullptr, units<typename TypeParam::Unit>("a").data()), nullptr);
  TypeParam::free(nullptr);
}

class Utf8String : public testing::Test {
 protected:
  Utf8String() { SMSSUTF8StrAlloc(&string_, 4); }
  ~Utf8String() override { SMSSUTF8StrFree(&string_); }
  std::string content() const { return {string_.content, string_.length}; }
  SMSSUTF8Str string_{};
};

TEST_F(Utf8String, TakesAsciiFromUcs2) {
  const ustring text[] = {'a', 'b', 'c', 0};
  EXPECT_EQ(SMSSUTF8StrCatUCS2Str(&string_, text), string_.content);
  EXPECT_EQ(content(), "abc");
}

TEST_F(Utf8String, TakesNothingThatGrowsFromUcs2) {
  const ustring text[] = {0xE9, 0};
  char* before = string_.content;
  EXPECT_EQ(SMSSUTF8StrCatUCS2Str(&string_, text), before);
  EXPECT_EQ(content(), "");
}

TEST_F(Utf8String, TakesUcs2WithRoomForAllOfIt) {
  const ustring text[] = {'a', 'b', 'c', 0};
  SMSSUTF8StrNCatUCS2Str(&string_, text, 2);
  EXPECT_EQ(content(), "") << "two bytes are less than it needs";
  SMSSUTF8StrNCatUCS2Str(&string_, text, 0);
  EXPECT_EQ(content(), "abc");
  SMSSUTF8StrNCatUCS2Str(&string_, text, 5);
  EXPECT_EQ(content(), std::string("abcabc\0\0", 8)) << "what lies behind it is counted";
  const ustring accent[] = {0xE9, 0};
  SMSSUTF8StrFree(&string_);
  SMSSUTF8StrAlloc(&string_, 4);
  SMSSUTF8StrNCatUCS2Str(&string_, accent, 2);
  EXPECT_EQ(content(), "\xC3\xA9");
}

class Ucs2String : public testing::Test {
 protected:
  Ucs2String() { SMSSUCS2StrAlloc(&string_, 4); }
  ~Ucs2String() override { SMSSUCS2StrFree(&string_); }
  std::vector<ustring> content() const {
    return {string_.content, string_.content + string_.length};
  }
  SMSSUCS2Str string_{};
};

TEST_F(Ucs2String, TakesAsciiFromUtf8UnitByUnit) {
  EXPECT_EQ(SMSSUCS2StrCatUTF8Str(&string_, "abc"), string_.content);
  EXPECT_EQ(string_.length, 3U);
  EXPECT_EQ(content(), (std::vector<ustring>{'a', 'b', 'c'}));
}

TEST_F(Ucs2String, CountsTheBytesOfUtf8AsUnits) {
  SMSSUCS2StrCatUTF8Str(&string_, "\xC3\xA9x");
  EXPECT_EQ(content(), (std::vector<ustring>{0xE9, 'x', 0}));
  EXPECT_EQ(string_.content[3], 0);
}

TEST_F(Ucs2String, TakesUtf8WithRoomForAllOfIt) {
  SMSSUCS2StrNCatUTF8Str(&string_, "abc", 2);
  EXPECT_EQ(string_.length, 0U);
  SMSSUCS2StrNCatUTF8Str(&string_, "abc", 4);
  EXPECT_EQ(content(), (std::vector<ustring>{'a', 'b', 'c', 0}));
}

TEST_F(Ucs2String, TakesNothingThatDoesNotConvert) {
  SMSSUCS2StrCatUTF8Str(&string_, "ab\xC3");
  SMSSUCS2StrCatUTF8Str(&string_, nullptr);
  EXPECT_EQ(string_.length, 0U);
}

}  // namespace
