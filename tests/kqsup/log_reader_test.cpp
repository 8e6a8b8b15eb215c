// Events from logs that are whole, cut, damaged and hostile.

#include "gtest/gtest.h"
#include "log_bytes.h"
#include "log_filter.h"

namespace kqsupt::tests {
namespace {

using kqsup::EventReader;
using Found = EventReader::Found;

// Two records of both kinds of data, as units of either order behind the header.
std::string first_record() {
  return text_record(u"1001", u"hot \x20AC\r\nand loud", kDump);
}
std::string second_record() {
  return text_record(u"4294967295", u"cold");
}
std::string text_log() {
  return text_header() + first_record() + second_record();
}
std::string xml_log() {
  return kXmlBegin + xml_element("1001", "hot \xE2\x82\xAC", "0x00,0xFF") +
         xml_element("4294967295", "cold") + kXmlEnd;
}
const Texts kBoth{"1001:hot \xE2\x82\xAC\r\nand loud", "4294967295:cold"};
const Texts kBothOfXml{"1001:hot \xE2\x82\xAC", "4294967295:cold"};

TEST(KqsupLog, ReadsEveryFieldOfATextRecord) {
  Bytes bytes(text_log());
  EventReader reader(bytes);
  ASSERT_EQ(reader.next(true), Found::kEvent);
  const kqsup::LogEvent& event = reader.event();
  EXPECT_EQ(event.offset, 256U);
  EXPECT_EQ(event.size, first_record().size());
  EXPECT_EQ(event.id, 1001U);
  EXPECT_EQ(event.type, 16);
  EXPECT_EQ(event.category, "Pellum");
  EXPECT_EQ(event.source, "pump");
  EXPECT_EQ(event.computer, "host");
  EXPECT_EQ(event.description, "hot \xE2\x82\xAC\r\nand loud");
  EXPECT_EQ(event.data, std::string("\0\x05\x0A\x0F\x14\x19\x1E\x23(-27<AFKPU", 18));
  ASSERT_TRUE(event.time.has_value());
  EXPECT_EQ(kqsup::calendar_text(*event.time, 'T'), "2026-11-21T12:48:33");
  EXPECT_FALSE(event.user.has_value());
}

TEST(KqsupLog, ReadsEveryFieldOfAnXmlElement) {
  Bytes bytes(xml_log());
  EventReader reader(bytes);
  ASSERT_EQ(reader.next(true), Found::kEvent);
  const kqsup::LogEvent& event = reader.event();
  EXPECT_EQ(event.offset, 48U);
  EXPECT_EQ(event.type, 2);
  EXPECT_EQ(event.category, "Talmere");
  EXPECT_EQ(event.data, std::string("\0\xFF", 2));
  EXPECT_EQ(event.seconds, 1795265313);
  EXPECT_EQ(event.user, "me");
  EXPECT_EQ(event.link, "a&b");
}

TEST(KqsupLog, ReadsRecordsOfEitherByteOrder) {
  EXPECT_EQ(contents(text_log()).events, kBoth);
  EXPECT_EQ(contents(text_log()).damage, Texts{});
  const std::string other = text_header() + swapped(first_record() + second_record());
  EXPECT_EQ(contents(other).events, kBoth);
  EXPECT_EQ(contents(other).damage, Texts{});
}

TEST(KqsupLog, ReadsALogThatHostsOfBothByteOrdersWroteTo) {
  const std::string log =
      text_header() + swapped(first_record()) + second_record() + swapped(second_record());
  EXPECT_EQ(contents(log).events, (Texts{kBoth[0], kBoth[1], kBoth[1]}));
  EXPECT_EQ(contents(log).damage, Texts{});
}

TEST(KqsupLog, ReadsTheSameWhenItBeginsAgain) {
  Bytes bytes(text_header() + "junk" + swapped(first_record()) + second_record() +
              swapped(second_record()));
  EventReader reader(bytes);
  for (int i = 0; i < 2; ++i) {
    reader.go_to(0);
    EXPECT_EQ(reader.next(true), Found::kDamage);
    EXPECT_EQ(reader.damage().size, 4U);
    EXPECT_EQ(reader.next(true), Found::kEvent);
    EXPECT_EQ(reader.event().id, 1001U);
    EXPECT_EQ(reader.next(true), Found::kEvent);
    EXPECT_EQ(reader.event().id, 4294967295U);
  }
}

TEST(KqsupLog, AnEmptyLogHasNoEventsAndNoDamage) {
  EXPECT_EQ(contents("").events, Texts{});
  EXPECT_EQ(contents("").damage, Texts{});
  EXPECT_EQ(contents(text_header()).damage, Texts{});
  EXPECT_EQ(contents(kXmlBegin + kXmlEnd).damage, Texts{});
}

// Cuts the log behind each byte. `ends` are the places where whole events end, the first being that
// of its beginning.
void expect_whole_ones_at_every_cut(const std::string& log, const Texts& events,
                                    const std::vector<size_t>& ends, size_t rest) {
  for (size_t size = 1; size < log.size(); ++size) {
    SCOPED_TRACE(size);
    size_t whole = 0;
    while (whole + 1 < ends.size() && ends[whole + 1] <= size) {
      ++whole;
    }
    const Contents found = contents(log.substr(0, size));
    EXPECT_EQ(found.events, Texts(events.begin(), events.begin() + static_cast<long>(whole)));
    const size_t begin = size < ends[0] ? 0 : ends[whole];
    const Texts damage{std::to_string(begin) + "+" + std::to_string(size - begin)};
    EXPECT_EQ(found.damage, rest == 0 && size == begin ? Texts{} : damage);
    EXPECT_EQ(contents(log.substr(0, size), false).damage, Texts{}) << "it may be going on";
  }
}

TEST(KqsupLog, ShowsWhatIsWholeOfATextLogThatIsCutAnywhere) {
  const size_t first = 256 + first_record().size();
  const std::vector<size_t> ends{256, first, first + second_record().size()};
  expect_whole_ones_at_every_cut(text_log(), kBoth, ends, 0);
  expect_whole_ones_at_every_cut(text_header() + swapped(first_record() + second_record()), kBoth,
                                 ends, 0);
}

TEST(KqsupLog, ShowsWhatIsWholeOfAnXmlLogThatIsCutAnywhere) {
  const std::string log = xml_log();
  const size_t first = log.find("</LogEntry>") + 11;
  expect_whole_ones_at_every_cut(log, kBothOfXml, {48, first, log.size() - kXmlEnd.size()},
                                 kXmlEnd.size());
}

// Takes away the first bytes, more of them each time. A record of ASCII with a byte more or less in
// front of it is one of the other order.
TEST(KqsupLog, ShowsWhatIsWholeOfALogThatLacksItsBeginning) {
  for (const std::string& log :
       {text_log(), text_header() + swapped(first_record() + second_record())}) {
    const size_t second = log.size() - second_record().size();
    for (size_t begin = 258; begin + 1 < second; ++begin) {
      SCOPED_TRACE(begin);
      const Contents found = contents(log.substr(begin));
      EXPECT_EQ(found.events, Texts{kBoth[1]});
      EXPECT_EQ(found.damage, Texts{"0+" + std::to_string(second - begin)});
    }
  }
}

// Takes one byte out of the first record, or puts zeros in its place.
TEST(KqsupLog, SkipsADamagedRecord) {
  for (size_t at = 256; at < 256 + first_record().size(); ++at) {
    SCOPED_TRACE(at);
    std::string log = text_log();
    log.erase(at, 1);
    const Contents without = contents(log);
    ASSERT_FALSE(without.events.empty());
    EXPECT_EQ(without.events.back(), kBoth[1]);
    EXPECT_LE(without.events.size(), 2U);
  }
  for (size_t at = 256; at + 64 < 256 + first_record().size(); ++at) {
    SCOPED_TRACE(at);
    std::string log = text_log();
    std::fill_n(log.begin() + static_cast<long>(at), 64, '\xEE');
    const Contents found = contents(log);
    ASSERT_FALSE(found.events.empty());
    EXPECT_EQ(found.events.back(), kBoth[1]);
  }
}

TEST(KqsupLog, SkipsADamagedElement) {
  const std::string log = xml_log();
  const size_t second = log.rfind("<LogEntry>");
  for (size_t at = 48; at < second; ++at) {
    SCOPED_TRACE(at);
    std::string damaged = log;
    damaged.erase(at, 1);
    const Contents found = contents(damaged);
    ASSERT_FALSE(found.events.empty());
    EXPECT_EQ(found.events.back(), kBoth[1]);
  }
}

TEST(KqsupLog, ShowsARecordBehindOneThatWasCut) {
  const std::string first = first_record();
  for (size_t size = 1; size < first.size(); ++size) {
    SCOPED_TRACE(size);
    const Contents found = contents(text_header() + first.substr(0, size) + second_record());
    EXPECT_EQ(found.events, Texts{kBoth[1]});
    EXPECT_EQ(found.damage, Texts{"256+" + std::to_string(size)});
  }
}

TEST(KqsupLog, ADescriptionMayHoldWhatEndsARecord) {
  const std::u16string text = u"see\r\nData: Bytes in Hex\r\n\r\nbelow";
  const Contents found = contents(text_header() + text_record(u"7", text) + second_record());
  EXPECT_EQ(found.events, (Texts{"7:see\r\nData: Bytes in Hex\r\n\r\nbelow", kBoth[1]}));
  EXPECT_EQ(found.damage, Texts{});
}

TEST(KqsupLog, ADescriptionMayHoldTheNumberOfAnEvent) {
  EXPECT_EQ(contents(text_header() + text_record(u"7", u"EventID: 8\r\nwas it")).events,
            Texts{"7:EventID: 8\r\nwas it"});
}

TEST(KqsupLog, HalvesOfPairsBecomeTheUnknownCharacter) {
  const std::u16string text{u'a', char16_t{0xD83D}, char16_t{0xDE00}, u'b', char16_t{0xDC00}, u'c'};
  EXPECT_EQ(contents(text_header() + text_record(u"7", text)).events, Texts{"7:a\xF0\x9F\x98\x80"
                                                                            "b\xEF\xBF\xBD"
                                                                            "c"});
}

TEST(KqsupLog, MarkupInADescriptionIsAsItWasGiven) {
  EXPECT_EQ(contents(kXmlBegin + xml_element("7", "<b></Data></b>") + kXmlEnd).events,
            Texts{"7:<b></Data></b>"});
}

TEST(KqsupLog, JunkWithoutEndTakesLittleMemory) {
  const std::string junk(24 << 20, '\0');
  const Contents found = contents(text_header() + junk + second_record());
  EXPECT_EQ(found.events, Texts{kBoth[1]});
  EXPECT_EQ(found.damage, Texts{"256+25165824"});
}

TEST(KqsupLog, AnEventWithoutEndTakesLittleMemory) {
  const std::string first = first_record().substr(0, 400);
  const std::string junk = little_endian(std::u16string(6 << 20, u'x'));
  const Contents found = contents(text_header() + first + junk + second_record());
  EXPECT_EQ(found.events, Texts{kBoth[1]});
  EXPECT_EQ(found.damage, Texts{"256+12583312"});
}

// Events with junk behind each, of sizes around those of the pieces that are looked through.
// The log begins with two bytes of junk and the first of them, which tells the order of the others.
void expect_events_between_junk(std::string log, const Texts& events, const std::string& end = "") {
  Texts expected{"0:x"};
  Texts damage{std::to_string(log.size()) + "+2"};
  log += "jj" + events[0];
  size_t next = 1;
  for (const size_t around : {1U, 4096U, 4U * 4096U, 16U * 4096U}) {
    for (size_t size = around - std::min<size_t>(around - 1, 70); size < around + 8; ++size) {
      damage.push_back(std::to_string(log.size()) + "+" + std::to_string(size));
      log.append(size, 'j');
      log += events[next % events.size()];
      expected.push_back(std::to_string(next % events.size()) + ":x");
      ++next;
    }
  }
  const Contents found = contents(log + end);
  EXPECT_EQ(found.events, expected);
  EXPECT_EQ(found.damage, damage);
}

TEST(KqsupLog, ReadsTextRecordsBetweenJunk) {
  const Texts records{text_record(u"0", u"x"), text_record(u"1", u"x", kDump)};
  expect_events_between_junk(text_header(), records);
}

TEST(KqsupLog, ReadsTextRecordsOfTheOtherOrderBetweenJunk) {
  const Texts records{swapped(text_record(u"0", u"x")), swapped(text_record(u"1", u"x", kDump))};
  expect_events_between_junk(text_header(), records);
}

TEST(KqsupLog, ReadsElementsBetweenJunk) {
  expect_events_between_junk(kXmlBegin, {xml_element("0", "x"), xml_element("1", "x", "0x00")},
                             kXmlEnd);
}

TEST(KqsupLog, TheEndOfALogTellsTheOrderOfARecordFarBehindJunk) {
  for (size_t size = 4096 - 70; size < 4096 + 8; ++size) {
    SCOPED_TRACE(size);
    for (const std::string& record : {second_record(), swapped(second_record())}) {
      const Contents found = contents(std::string(size, 'j') + record);
      EXPECT_EQ(found.events, Texts{kBoth[1]});
      EXPECT_EQ(found.damage, Texts{"0+" + std::to_string(size)});
    }
  }
}

TEST(KqsupLog, OfTwoKindsBehindJunkTheFirstOneCounts) {
  const std::string element = xml_element("7", "x");
  for (size_t size = 4096 - 600; size < 4096 + 8; ++size) {
    SCOPED_TRACE(size);
    const std::string junk(size / 2 * 2, 'j');
    EXPECT_EQ(contents(junk + second_record() + element).events, (Texts{kBoth[1], "7:x"}));
    EXPECT_EQ(contents(junk + element + second_record()).events, (Texts{"7:x", kBoth[1]}));
  }
}

TEST(KqsupLog, ReadsALargeLogOfOneKindWithJunkBehindEachEvent) {
  const std::string element = xml_element("7", "x");
  std::string log((size_t{11} << 20) / 10, 'j');
  size_t count = 0;
  for (; log.size() < size_t{5} << 20; ++count) {
    log += element + "j";
  }
  const Contents found = contents(log);
  EXPECT_EQ(found.events.size(), count);
  EXPECT_EQ(found.damage.size(), count + 1);
}

TEST(KqsupLog, AnEventMayBeginAnywhereInWhatIsReadAtOnce) {
  std::string log = text_header();
  size_t count = 0;
  for (; log.size() < (size_t{5} << 20) / 2; ++count) {
    log += text_record(u"7", std::u16string(count % 57 + 1, u'x'));
  }
  const Contents found = contents(log);
  EXPECT_EQ(found.events.size(), count);
  EXPECT_EQ(found.damage, Texts{});
}

TEST(KqsupLogTime, ReadsWhatCalendarsWrite) {
  EXPECT_EQ(kqsup::parse_calendar("Thu Jan  1 00:00:01 1970"), 1);
  EXPECT_EQ(kqsup::parse_calendar("Sat Nov 21 12:48:33 2026"), 1795265313);
  for (const char* text :
       {"", "Sat Nov 31 12:48:33 2026", "Sat Nov 21 24:48:33 2026", "Sat Nov 21 12:48:33 -026",
        "Sxt Nov 21 12:48:33 2026", "Sat Nov 21 12:48:33 20266"}) {
    EXPECT_EQ(kqsup::parse_calendar(text), std::nullopt) << text;
  }
}

TEST(KqsupLogTime, ReadsWhatPeopleGive) {
  EXPECT_EQ(kqsup::parse_moment("1970-01-02", 0), 86400);
  EXPECT_EQ(kqsup::parse_moment("1970-01-02 01:00", 0), 90000);
  EXPECT_EQ(kqsup::parse_moment("1970-01-02T01:00:05", 0), 90005);
  EXPECT_EQ(kqsup::parse_moment("90s", 100), 10);
  EXPECT_EQ(kqsup::parse_moment("2h", 10000), 2800);
  for (const char* text : {"", "h", "-1h", "1970", "1970-13-01", "1970-01-02x01:00", "xh"}) {
    EXPECT_EQ(kqsup::parse_moment(text, 0), std::nullopt) << text;
  }
}

TEST(KqsupLogFilter, ReadsNamesAndNumbers) {
  kqsup::LogFilter filter;
  EXPECT_TRUE(filter.add_type("audit-FAILURE"));
  EXPECT_TRUE(filter.add_type("3"));
  EXPECT_EQ(filter.types, (std::vector<uint16_t>{16, 3}));
  EXPECT_TRUE(filter.add_category("quistel"));
  EXPECT_TRUE(filter.add_category("1"));
  EXPECT_EQ(filter.categories, (std::vector<std::string>{"Quistel", "Talmere"}));
  EXPECT_TRUE(filter.add_id("7"));
  EXPECT_TRUE(filter.add_id("100-4294967295"));
  for (const char* text : {"", "x", "-", "9-8", "1-2-3", "4294967296"}) {
    EXPECT_FALSE(filter.add_id(text)) << text;
  }
  EXPECT_FALSE(filter.add_type("loud"));
  EXPECT_FALSE(filter.add_category("7"));
}

}  // namespace
}  // namespace kqsupt::tests
