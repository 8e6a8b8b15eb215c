#include <sys/stat.h>

#include <bit>
#include <fstream>

#include "gtest/gtest.h"
#include "kqsupt/sdo.h"
#include "sdo_reader.h"
#include "support/program.h"
#include "support/records.h"
#include "support/scratch.h"

namespace {

using kqsup::read_sdo;
using kqsup::Sdo;
using kqsup::SdoDamage;
using kqsupt::tests::built_program;
using kqsupt::tests::Bytes;
using kqsupt::tests::bytes_of;
using kqsupt::tests::Outcome;
using kqsupt::tests::put;
using kqsupt::tests::run;
using kqsupt::tests::Scratch;
using nlohmann::ordered_json;
using std::string_literals::operator""s;

// A number 24 with ID 1, and a text with ID 2.
const std::string kBig =
    "SDOB\0\x02\0\x1E"
    "\0\x01\x01\x03\0\0\0\x18"
    "\0\x02\x03\x04\0\x06\0\x08"
    "inlet\0"s;
const std::string kLittle =
    "BODS\x02\0\x1E\0"
    "\x01\0\x01\x03\x18\0\0\0"
    "\x02\0\x03\x04\x06\0\x08\0"
    "inlet\0"s;

std::string text_of(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

// Where the reading of the bytes ends; none when they are a block.
std::optional<size_t> damage_at(const std::string& bytes) {
  try {
    (void)read_sdo(bytes);
    return std::nullopt;
  } catch (const SdoDamage& damage) {
    return damage.offset();
  }
}

// kBig with some bytes replaced.
std::string with(size_t offset, const std::string& bytes) {
  std::string changed = kBig;
  return changed.replace(offset, bytes.size(), bytes);
}

// Records in records, `levels` of them.
std::string nested(unsigned levels) {
  std::string block = "SDOB\0\0\0\x08"s;
  for (unsigned i = 1; i < levels; ++i) {
    const auto size = static_cast<unsigned>(block.size());
    const auto high = [](unsigned value) { return static_cast<char>(value >> 8U); };
    const auto low = [](unsigned value) { return static_cast<char>(value & 0xFFU); };
    block = "SDOB\0\x01"s + high(size + 16) + low(size + 16) + "\0\x01\x0C\x04"s + high(size) +
            low(size) + "\0\x08"s + block;
  }
  return block;
}

TEST(KqsupSdo, BothByteOrdersAreReadEverywhere) {
  const std::string tree =
      "1  type 0x01  4 bytes  24\n"
      "  2  type 0x03  6 bytes  \"inlet\"\n";
  EXPECT_EQ(sdo_tree(read_sdo(kBig)), "record of 2, 30 bytes, big-endian\n  " + tree);
  EXPECT_EQ(sdo_tree(read_sdo(kLittle)), "record of 2, 30 bytes, little-endian\n  " + tree);
}

TEST(KqsupSdo, JsonHasEveryValueAsHex) {
  const ordered_json json = sdo_json(read_sdo(kBig));
  EXPECT_EQ(json["byte_order"], "big");
  EXPECT_EQ(json["kind"], "record");
  EXPECT_EQ(json["size"], 30);
  EXPECT_EQ(json["entries"][0].dump(),
            R"({"id":1,"type":1,"base_type":1,"is_array":false,"offset":12,"size":4,"number":24,)"
            R"("hex":"00000018"})");
  EXPECT_EQ(json["entries"][1].dump(),
            R"({"id":2,"type":3,"base_type":3,"is_array":false,"offset":24,"size":6,)"
            R"("text":"inlet","hex":"696e6c657400"})");
}

TEST(KqsupSdo, WhatTheLibraryWritesIsRead) {
  using namespace kqsupt::tests;
  const Record record = new_record();
  ASSERT_EQ(add(record, 7, kOpaque, {1, 2, 3, 4, 5, 6, 7, 8}), SM_STATUS_SUCCESS);
  ASSERT_EQ(add(record, 9, 0x83, {0xAB}), SM_STATUS_SUCCESS);
  Record child = record_of(12);
  ASSERT_EQ(add_child(record, 10, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_children(record, 11, {record_of(4).release(), record_of(70).release()}),
            SM_STATUS_SUCCESS);
  const std::string block = text_of(serialized(record));
  const Sdo sdo = read_sdo(block);
  EXPECT_EQ(sdo.is_big_endian, std::endian::native == std::endian::big);
  EXPECT_EQ(sdo.block.size, block.size());
  ASSERT_EQ(sdo.block.entries.size(), 4U);
  EXPECT_EQ(sdo.block.entries[0].value, std::string_view("\1\2\3\4\5\6\7\10"));
  EXPECT_EQ(sdo.block.entries[1].type, 0x83);
  EXPECT_EQ(sdo.block.entries[1].value, std::string_view("\xAB"));
  ASSERT_NE(sdo.block.entries[2].nested, nullptr);
  EXPECT_EQ(sdo.block.entries[2].type, 0x0C);
  EXPECT_EQ(sdo.block.entries[2].nested->entries[0].value, std::string(12, '\x0C'));
  ASSERT_NE(sdo.block.entries[3].nested, nullptr);
  EXPECT_EQ(sdo.block.entries[3].type, 0x1C);
  EXPECT_TRUE(sdo.block.entries[3].nested->is_array);
  ASSERT_EQ(sdo.block.entries[3].nested->elements.size(), 2U);
  EXPECT_EQ(sdo.block.entries[3].nested->elements[1].entries[0].value, std::string(70, 'F'));
}

TEST(KqsupSdo, AnArrayIsATreeOfItsRecords) {
  const std::string array = "SDAB\0\x02\0\x2E"s + "SDOB\0\0\0\x08"s + kBig;
  EXPECT_EQ(sdo_tree(read_sdo(array)),
            "array of 2, 46 bytes, big-endian\n"
            "  [0]  record of 0, 8 bytes\n"
            "  [1]  record of 2, 30 bytes\n"
            "    1  type 0x01  4 bytes  24\n"
            "    2  type 0x03  6 bytes  \"inlet\"\n");
  EXPECT_EQ(sdo_json(read_sdo(array))["elements"][1]["entries"][0]["number"], 24);
}

TEST(KqsupSdo, ARecordCutAnywhereIsDamaged) {
  for (const std::string& block : {kBig, kLittle}) {
    for (size_t size = 0; size < block.size(); ++size) {
      const auto offset = damage_at(block.substr(0, size));
      ASSERT_TRUE(offset.has_value()) << size;
      EXPECT_LE(*offset, size);
    }
  }
}

TEST(KqsupSdo, DamageIsToldWithItsOffset) {
  EXPECT_EQ(damage_at(with(0, "x")), 0U);
  EXPECT_EQ(damage_at(with(4, "\0\x03"s)), 4U);     // three entries, the third over the value
  EXPECT_EQ(damage_at(with(4, "\xFF\xFF")), 4U);    // more entries than bytes
  EXPECT_EQ(damage_at(with(6, "\0\x1F"s)), 6U);     // larger than the file
  EXPECT_EQ(damage_at(with(6, "\0\x07"s)), 6U);     // smaller than its own header
  EXPECT_EQ(damage_at(with(8, "\0\0"s)), 8U);       // no ID
  EXPECT_EQ(damage_at(with(8, "\0\x02"s)), 16U);    // twice the same one
  EXPECT_EQ(damage_at(with(16, "\xFF\xFE")), 16U);  // no ID
  EXPECT_EQ(damage_at(with(10, "\0"s)), 10U);       // no type
  EXPECT_EQ(damage_at(with(18, "\x0D")), 18U);      // a pointer
  EXPECT_EQ(damage_at(with(20, "\0\0"s)), 20U);     // no bytes
  EXPECT_EQ(damage_at(with(20, "\0\x07"s)), 20U);   // one too many
  EXPECT_EQ(damage_at(with(22, "\xFF\xFF")), 20U);  // far behind the block
  EXPECT_EQ(damage_at(with(22, "\0\x04"s)), 22U);   // within the entries
  EXPECT_EQ(damage_at(with(10, "\x0C")), 12U);      // a block of four bytes
  EXPECT_EQ(damage_at(with(18, "\x0C")), 24U);      // a block of six
}

TEST(KqsupSdo, ANestedBlockIsAsLargeAsItsValue) {
  EXPECT_EQ(damage_at(nested(2)), std::nullopt);
  std::string larger = nested(2);
  larger[7] = '\x19';
  larger[13] = '\x09';
  larger += '\0';
  EXPECT_EQ(damage_at(larger), 22U);
  std::string smaller = nested(2);
  smaller[23] = '\x09';
  EXPECT_EQ(damage_at(smaller), 22U);
}

TEST(KqsupSdo, ANestedBlockHasTheByteOrderOfTheOuterOne) {
  std::string other = nested(2);
  EXPECT_EQ(damage_at(other.replace(16, 8, "BODS\0\0\x08\0"s)), 16U);
}

// Else two entries for each level would make a tree of any size from some hundred bytes.
TEST(KqsupSdo, NoTwoValuesShareBytes) {
  const std::string twice =
      "SDOB\0\x02\0\x1D"
      "\0\x01\x01\x04\0\x05\0\x10"
      "\0\x02\x01\x04\0\x05\0\x08"
      "abcde"s;
  EXPECT_EQ(damage_at(twice), 22U);
}

TEST(KqsupSdo, BlocksDeepInEachOtherAreRefused) {
  EXPECT_EQ(damage_at(nested(kqsup::kDeepestSdo)), std::nullopt);
  EXPECT_EQ(damage_at(nested(kqsup::kDeepestSdo + 1)), kqsup::kDeepestSdo * 16U);
  EXPECT_EQ(damage_at(nested(4095)), kqsup::kDeepestSdo * 16U);
}

TEST(KqsupSdo, AnArrayHasNoArraysAndNoMoreThanItHolds) {
  EXPECT_EQ(damage_at("SDAB\0\x01\0\x10"s + "SDAB\0\0\0\x08"s), 8U);
  EXPECT_EQ(damage_at("SDAB\0\x02\0\x10"s + "SDOB\0\0\0\x08"s), 4U);
  EXPECT_EQ(damage_at("SDAB\0\x01\0\x10"s + "SDOB\0\0\0\x09"s), 14U);
}

TEST(KqsupSdo, TextIsPrintableInEitherEncoding) {
  EXPECT_EQ(kqsup::sdo_text("inlet", true), "inlet");
  EXPECT_EQ(kqsup::sdo_text("two\nlines\0"s, true), "two\nlines");
  EXPECT_EQ(kqsup::sdo_text("gr\xC3\xBCn\0"s, true), "gr\xC3\xBCn");
  EXPECT_EQ(kqsup::sdo_text("\0g\0\xFC\0n"s, true), "g\xC3\xBCn");
  EXPECT_EQ(kqsup::sdo_text("g\0\xFC\0n\0\0\0"s, false), "g\xC3\xBCn");
  EXPECT_EQ(kqsup::sdo_text("\x20\xAC\0a\0\0"s, true),
            "\xE2\x82\xAC"
            "a");
  EXPECT_EQ(kqsup::sdo_text("\xD8\x3D\xDE\0\0\0"s, true), "\xF0\x9F\x98\x80");
}

TEST(KqsupSdo, WhatMayAsWellBeANumberIsNoText) {
  EXPECT_EQ(kqsup::sdo_text("A", true), "");
  EXPECT_EQ(kqsup::sdo_text("A\0\0\0"s, false), "");
  EXPECT_EQ(kqsup::sdo_text("\x4E\x2D\x65\x87\x12\x34", true), "");  // UCS-2 without an end
  EXPECT_EQ(kqsup::sdo_text("a\x1B[2J", true), "");
  EXPECT_EQ(kqsup::sdo_text("a\xFF", true), "");
  EXPECT_EQ(kqsup::sdo_text("a\0b"s, true), "");
  EXPECT_EQ(kqsup::sdo_text("\0a\xD8\x00\0\0"s, true), "");  // half a character
  EXPECT_EQ(kqsup::sdo_text("\n\n", true), "");
}

// ---- The program ----

class KqsupSdoDump : public testing::Test {
 protected:
  Outcome dump(const std::string& content, const std::vector<std::string>& options = {}) {
    const std::string path = scratch_.file("record");
    kqsupt::tests::put(path, content);
    std::vector<std::string> command{built_program("kqsup"), "sdo", "dump", path};
    command.insert(command.end(), options.begin(), options.end());
    return run(command);
  }
  const Scratch scratch_;
};

TEST_F(KqsupSdoDump, ShowsATree) {
  const Outcome outcome = dump(kBig);
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, sdo_tree(read_sdo(kBig)));
}

TEST_F(KqsupSdoDump, TellsThatMoreFollows) {
  EXPECT_EQ(dump(kBig + "x").out,
            sdo_tree(read_sdo(kBig)) + "(more follows at byte 30, not shown)\n");
  EXPECT_TRUE(
      ordered_json::parse(dump(kBig + std::string(70000, 'x'), {"--json"}).out).at("more_follows"));
  EXPECT_FALSE(ordered_json::parse(dump(kBig, {"--json"}).out).at("more_follows"));
}

TEST_F(KqsupSdoDump, ReadsTheStandardInput) {
  const Outcome outcome = run({built_program("kqsup"), "--json", "sdo", "dump", "-"}, kLittle);
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(ordered_json::parse(outcome.out)["entries"][0]["number"], 24);
}

TEST_F(KqsupSdoDump, EndsWithOneAndTheOffsetWhenDamaged) {
  const Outcome outcome = dump(with(22, "\0\x04"s));
  EXPECT_EQ(outcome.exit_status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find("at byte 22: "), std::string::npos) << outcome.err;
  EXPECT_EQ(dump("").exit_status, 1);
}

TEST_F(KqsupSdoDump, EndsWithTwoWhereThereIsNothingToRead) {
  for (const std::string& path : {scratch_.file("missing"), scratch_.file("")}) {
    EXPECT_EQ(run({built_program("kqsup"), "sdo", "dump", path}).exit_status, 2) << path;
  }
  ASSERT_EQ(mkfifo(scratch_.file("pipe").c_str(), 0600), 0);
  EXPECT_EQ(run({built_program("kqsup"), "sdo", "dump", scratch_.file("pipe")}).exit_status, 2);
}

TEST_F(KqsupSdoDump, TellsHowItIsUsed) {
  const Outcome outcome = run({built_program("kqsup"), "sdo", "dump", "--help"});
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_NE(outcome.out.find("Example: kqsup sdo dump"), std::string::npos);
}

TEST(KqsupSdo, ACharacterThatALineEndDividesIsNoText) {
  EXPECT_EQ(kqsup::sdo_text("\xE2\n\x82\xAC"s, true), "");
}

TEST_F(KqsupSdoDump, BytesThatAreNearlyTextAreNoTroubleInJson) {
  const Outcome outcome = dump(with(24,
                                    "\xE2\n\x82\xAC"
                                    "a\0"s),
                               {"--json"});
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_FALSE(ordered_json::parse(outcome.out)["entries"][1].contains("text"));
}

}  // namespace
