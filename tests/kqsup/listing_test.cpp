#include "listing.h"

#include "gtest/gtest.h"

namespace {

using kqsup::Listing;
using kqsup::printable;
using nlohmann::ordered_json;

Listing two_objects() {
  Listing listing({{"NAME", "name"}, {"COUNT", "count"}, {"STATE", "state"}});
  listing.add({"a", 5, nullptr});
  listing.add({"longer", 1234, "held"});
  return listing;
}

TEST(Listing, ColumnsAreAlignedAndNumbersStandOnTheRight) {
  EXPECT_EQ(two_objects().table(),
            "NAME    COUNT  STATE\n"
            "a           5  -\n"
            "longer   1234  held\n");
}

TEST(Listing, AColumnIsAsWideAsItsCharacters) {
  Listing listing({{"N", "n"}, {"M", "m"}});
  listing.add({"\xC3\xA4\xC3\xB6", "x"});
  listing.add({"abc", "y"});
  EXPECT_EQ(listing.table(), "N    M\n\xC3\xA4\xC3\xB6   x\nabc  y\n");
}

TEST(Listing, WithoutRowsHasItsTitles) {
  const Listing listing({{"NAME", "name"}, {"KEY", "key"}});
  EXPECT_EQ(listing.table(), "NAME  KEY\n");
  EXPECT_EQ(listing.json(), "[]\n");
}

TEST(Listing, IsAnArrayOfObjectsInJson) {
  const ordered_json all = ordered_json::parse(two_objects().json());
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].dump(), R"({"name":"a","count":5,"state":null})");
  EXPECT_EQ(all[1].dump(), R"({"name":"longer","count":1234,"state":"held"})");
}

TEST(Listing, BytesThatAreNoTextAreNoTroubleInJson) {
  Listing listing(std::vector<Listing::Column>{{"NAME", "name"}});
  listing.add({std::string("a\xFF")});
  EXPECT_EQ(ordered_json::parse(listing.json())[0]["name"], "a\xEF\xBF\xBD");
}

TEST(Listing, WhatIsPrintedMovesNoCursor) {
  EXPECT_EQ(printable("plain \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80"),
            "plain \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80");
  EXPECT_EQ(printable("\x1B[2J\n\t\x7F"), "\\x1B[2J\\x0A\\x09\\x7F");
  EXPECT_EQ(printable(std::string("\0a", 2)), "\\x00a");
  EXPECT_EQ(printable("\xC2\x9B"), "\\xC2\\x9B");
}

TEST(Listing, WhatIsNoTextIsPrintedByteByByte) {
  EXPECT_EQ(printable("\xC0\x80"), "\\xC0\\x80");
  EXPECT_EQ(printable("\xE2\x82"), "\\xE2\\x82");
  EXPECT_EQ(printable("\xED\xA0\x80"), "\\xED\\xA0\\x80");
  EXPECT_EQ(printable("\xE0\x80\x80"), "\\xE0\\x80\\x80");
  EXPECT_EQ(printable("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");
  EXPECT_EQ(printable("\x80z"), "\\x80z");
  EXPECT_EQ(printable("\xC3z"), "\\xC3z");
}

TEST(Listing, AWideCellDoesNotWidenEveryRow) {
  Listing listing({{"A", "a"}, {"B", "b"}});
  listing.add({std::string(10000, 'x'), 1});
  for (int i = 0; i < 1000; ++i) {
    listing.add({"y", 2});
  }
  EXPECT_LT(listing.table().size(), 200000U);
  EXPECT_TRUE(listing.table().starts_with("A" + std::string(79, ' ') + "  B\n" +
                                          std::string(10000, 'x') + "  1\n"));
}

TEST(Listing, JsonMovesNoCursorEither) {
  Listing listing({{"A", "a"}, {"B", "b"}});
  listing.add(
      {"x\xC2\x9B"
       "2J\x7F",
       "\x1B\xC3\xA4"});
  const std::string text = listing.json();
  EXPECT_EQ(text.find('\x9B'), std::string::npos);
  EXPECT_EQ(text.find('\x7F'), std::string::npos);
  EXPECT_EQ(text.find('\x1B'), std::string::npos);
  EXPECT_EQ(ordered_json::parse(text)[0]["a"],
            "x\xC2\x9B"
            "2J\x7F");
  EXPECT_EQ(ordered_json::parse(text)[0]["b"], "\x1B\xC3\xA4");
}

}  // namespace
