// Lists between separators.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/config.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;
using std::string_literals::operator""s;

// A converted list with all its bytes, as many as the size says.
struct Converted {
  std::string bytes;
  uint32_t count = 77;
  uint32_t size = 77;
  bool is_null = false;
};

Converted convert(const char* text, char separator, char new_separator) {
  Converted converted;
  const std::unique_ptr<char, void (*)(void*)> list(
      SMUTF8ConvertXSVToYSV(text, separator, new_separator, &converted.count, &converted.size),
      SMFreeMem);
  converted.is_null = list == nullptr;
  if (list != nullptr) {
    converted.bytes.assign(list.get(), converted.size);
  }
  return converted;
}

TEST(ItemList, SplitsTrimsAndDropsEmptyItems) {
  const Converted list = convert(" a ,, b ,", ',', '\0');
  EXPECT_EQ(list.bytes, "a\0b\0\0"s);
  EXPECT_EQ(list.count, 2U);
  EXPECT_EQ(list.size, 5U);
}

TEST(ItemList, EndsEachItemWithTheNewSeparator) {
  const Converted list = convert("a|b|c", '|', ';');
  EXPECT_EQ(list.bytes, "a;b;c;\0"s);
  EXPECT_EQ(list.count, 3U);
}

TEST(ItemList, TrimsTheFourBlanksOnly) {
  EXPECT_EQ(convert("\t\r\n a b \n\r\t,\v", ',', '\0').bytes, "a b\0\v\0\0"s);
}

TEST(ItemList, OfNothingButBlanksAndSeparatorsIsEmpty) {
  for (const char* text : {"", " ", ",", " , ,, "}) {
    const Converted list = convert(text, ',', '\0');
    EXPECT_FALSE(list.is_null);
    EXPECT_EQ(list.bytes, "\0"s);
    EXPECT_EQ(list.count, 0U);
    EXPECT_EQ(list.size, 1U);
  }
}

TEST(ItemList, WithoutASeparatorInTheTextIsOneItem) {
  const Converted list = convert("abc", ',', '\0');
  EXPECT_EQ(list.bytes, "abc\0\0"s);
  EXPECT_EQ(list.count, 1U);
}

TEST(ItemList, JoinsTerminatedItemsAndCountsOneLess) {
  const Converted list = convert("a\0bc\0d\0", '\0', ',');
  EXPECT_EQ(list.bytes, "a,bc,d\0"s);
  EXPECT_EQ(list.count, 2U);
  EXPECT_EQ(list.size, 7U);
}

TEST(ItemList, JoinsASingleItem) {
  const Converted list = convert("abc\0", '\0', ',');
  EXPECT_EQ(list.bytes, "abc\0"s);
  EXPECT_EQ(list.count, 0U);
  EXPECT_EQ(list.size, 4U);
}

TEST(ItemList, JoiningNothingGivesNull) {
  const Converted list = convert("\0", '\0', ',');
  EXPECT_TRUE(list.is_null);
  EXPECT_EQ(list.count, 0U);
  EXPECT_EQ(list.size, 0U);
}

TEST(ItemList, OfNullIsNull) {
  const Converted list = convert(nullptr, ',', ';');
  EXPECT_TRUE(list.is_null);
  EXPECT_EQ(list.count, 0U);
  EXPECT_EQ(list.size, 0U);
}

TEST(ItemList, CountAndSizeNeedNotBeAsked) {
  char* list = SMUTF8ConvertXSVToYSV("a,b", ',', ';', nullptr, nullptr);
  EXPECT_STREQ(list, "a;b;");
  SMFreeMem(list);
}

TEST(ItemList, ReadsNoByteBehindTheText) {
  const Guarded<char> text("a , b,c", 8);
  EXPECT_EQ(convert(text.data(), ',', '\0').count, 3U);
  const Guarded<char> list("a\0b\0", 5);
  EXPECT_EQ(convert(list.data(), '\0', ',').bytes, "a,b\0"s);
}

}  // namespace
