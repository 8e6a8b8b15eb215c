// Texts by number, in a language or else in the default one.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt.h"
#include "support/guarded.h"
#include "support/program.h"
#include "support/scratch.h"

namespace {

using namespace std::string_literals;
using kqsupt::tests::built_program;
using kqsupt::tests::Command;
using kqsupt::tests::Guarded;
using kqsupt::tests::Outcome;
using kqsupt::tests::put;
using kqsupt::tests::run;
using kqsupt::tests::Scratch;

class StringIds : public testing::Test {
 protected:
  struct Got {
    std::string text;
    uint32_t result;
    bool operator==(const Got&) const = default;
    friend void PrintTo(const Got& got, std::ostream* out) { *out << got.text << got.result; }
  };
  Got get(uint32_t id, uint32_t* language, uint32_t capacity = 3000) {
    const Guarded<char> buffer(capacity, 0);
    uint32_t size = capacity;
    const uint32_t result =
        SMGetUTF8StrFromIDPathFile(id, language, path_.c_str(), buffer.data(), &size);
    EXPECT_EQ(size, result);
    return {capacity != 0 ? buffer.data() : "", result};
  }

  Scratch scratch_;
  std::string path_ = scratch_.file("strings.ini");
};

constexpr char kStrings[] =
    "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1A2B=Disk full\r\n0:1=one\n0:FFFFFFFF=last\n0:0=\n"
    "[MISCELLANEOUS STRING ID SECTION]\n407:1A2B=Platte voll\n40C:1=un\n";

TEST_F(StringIds, TheDefaultLanguageHasSeveralIds) {
  put(path_, kStrings);
  EXPECT_EQ(get(0x1A2B, nullptr), (Got{"Disk full", 10}));
  for (const uint32_t id : {0U, 437U, 1033U}) {
    uint32_t language = id;
    EXPECT_EQ(get(0x1A2B, &language), (Got{"Disk full", 10}));
    EXPECT_EQ(language, 0U);
  }
  EXPECT_EQ(get(0xFFFFFFFF, nullptr), (Got{"last", 5}));
  EXPECT_EQ(get(0, nullptr), (Got{"", 1}));
}

TEST_F(StringIds, AnotherLanguageFallsBackOnTheDefault) {
  put(path_, kStrings);
  uint32_t language = 0x407;
  EXPECT_EQ(get(0x1A2B, &language), (Got{"Platte voll", 12}));
  EXPECT_EQ(language, 0x407U);
  EXPECT_EQ(get(1, &language), (Got{"one", 4}));
  EXPECT_EQ(language, 0U);
  language = 0x40C;
  EXPECT_EQ(get(1, &language), (Got{"un", 3}));
  EXPECT_EQ(get(2, &language), (Got{"", 0}));
  EXPECT_EQ(language, 0U);
}

TEST_F(StringIds, ATextThatDoesNotFitIsNotCopied) {
  put(path_, kStrings);
  for (uint32_t capacity = 0; capacity <= 11; ++capacity) {
    EXPECT_EQ(get(0x1A2B, nullptr, capacity), (capacity >= 10 ? Got{"Disk full", 10} : Got{"", 0}));
  }
  uint32_t size = 100;
  EXPECT_EQ(SMGetUTF8StrFromIDPathFile(1, nullptr, path_.c_str(), nullptr, &size), 0U);
  EXPECT_EQ(size, 0U);
  char buffer[8];
  EXPECT_EQ(SMGetUTF8StrFromIDPathFile(1, nullptr, path_.c_str(), buffer, nullptr), 0U);
}

TEST_F(StringIds, ATextEndsAtItsFirstLineEndAndHasUpTo2047Bytes) {
  put(path_, "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1=a\rb\n0:2=" + std::string(2047, 'x') +
                 "\n0:3=" + std::string(2048, 'x') + "\n");
  EXPECT_EQ(get(1, nullptr), (Got{"a", 2}));
  EXPECT_EQ(get(2, nullptr), (Got{std::string(2047, 'x'), 2048}));
  EXPECT_EQ(get(3, nullptr), (Got{"", 0}));
}

TEST_F(StringIds, WithoutAFileNameTheTextSaysSo) {
  char buffer[64] = "";
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMGetUTF8StrFromIDPathFile(1, nullptr, nullptr, buffer, &size), 23U);
  EXPECT_STREQ(buffer, "Invalid Path File Name");
  EXPECT_EQ(size, 23U);
  EXPECT_EQ(get(1, nullptr), (Got{"", 0}));  // no such file
}

// ---- The library's own texts, as UCS-2 ----

std::string own_file(const char* name) {
  return std::getenv("KQSUPT_SANDBOX") + "/install/Quillance/ini/ini/"s + name;
}

// The text of an ID, each unit as a character; "N" for a size without a text.
std::string own_text(uint32_t id, uint32_t* language = nullptr) {
  ustring buffer[600] = {};
  uint32_t size = sizeof buffer;
  const uint32_t result = SMGetUCS2StrFromID(id, language, buffer, &size);
  EXPECT_EQ(size, result);
  std::string text;
  for (const ustring* unit = buffer; *unit != 0; ++unit) {
    text += static_cast<char>(*unit < 0x80 ? *unit : '?');
  }
  EXPECT_EQ(result, text.empty() ? 0 : 2 * (text.size() + 1));
  return text;
}

// What a process of its own, with this configuration, is told of texts.
std::string texts_with(const char* configuration, const std::vector<std::string>& ids) {
  if (configuration != nullptr) {
    put(own_file("kqisdy32.ini"), "[OEM Configuration]\n"s + configuration);
  } else {
    unlink(own_file("kqisdy32.ini").c_str());
  }
  Command command{built_program("registry-probe"), "texts"};
  command.insert(command.end(), ids.begin(), ids.end());
  const Outcome outcome = run(command);
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  unlink(own_file("kqisdy32.ini").c_str());
  return outcome.out;
}

// Each text is its number.
void put_numbered(const std::vector<std::string>& ids) {
  std::string texts = "[ASCII EN_US DEFAULT STRING ID SECTION]\n";
  for (const std::string& id : ids) {
    texts += "0:" + id + "=" + id + "\n";
  }
  put(own_file("kqsdst32.ini"), texts);
}

TEST(OwnStringIds, AreThemselvesWithoutAConfiguration) {
  put_numbered({"8FF", "900", "920", "921"});
  EXPECT_EQ(texts_with(nullptr, {"8FF", "900", "920", "921"}), "8FF\n900\n920\n921\n");
}

TEST(OwnStringIds, HaveARangeThatIncludesBothOfItsEnds) {
  put_numbered({"F", "10", "12", "13", "110", "112"});
  EXPECT_EQ(texts_with("BaseID=16\noemRange=2\noffset=256\n", {"F", "10", "12", "13"}),
            "F\n110\n112\n13\n");
}

TEST(OwnStringIds, HaveARangeThatEndsWithTheNumbers) {
  put_numbered({"0", "1", "4", "5", "FFFFFFFE", "FFFFFFFF"});
  EXPECT_EQ(
      texts_with("BaseID=4294967295\noemRange=5\noffset=1\n", {"FFFFFFFE", "FFFFFFFF", "0", "4"}),
      "FFFFFFFE\n0\n0\n4\n");
}

// In one test: the range is read once for the process.
TEST(OwnStringIds, AreMappedFromTheRangeThatIsReadOnce) {
  put(own_file("kqsdst32.ini"),
      "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:900=base\n0:1900=mapped\n0:1920=end\n"
      "0:921=behind\n0:8FF=before\n0:5=gr\xC3\xBC\xC3\x9F"
      "e\n0:6=bad\xFF\n0:7=" +
          std::string(1023, 'x') + "\n0:8=" + std::string(1024, 'x') +
          "\n[MISCELLANEOUS STRING ID SECTION]\n407:5=deutsch\n");
  // As long as the directory of the file is not there, nothing is known of the range.
  put(own_file("kqisdy32.ini"), "[OEM Configuration]\noffset=4096\n");
  const std::string directory = std::getenv("KQSUPT_SANDBOX") + "/install/Quillance/ini"s;
  ASSERT_EQ(std::rename(directory.c_str(), (directory + "x").c_str()), 0);
  EXPECT_EQ(own_text(0x900), "");
  ASSERT_EQ(std::rename((directory + "x").c_str(), directory.c_str()), 0);
  // A base of 0 has the file read again.
  put(own_file("kqisdy32.ini"), "[OEM Configuration]\nBaseID=0\noemRange=1\noffset=1\n");
  EXPECT_EQ(own_text(0x8FF), "before");
  put(own_file("kqisdy32.ini"), "[OEM Configuration]\noffset=4096\n");
  EXPECT_EQ(own_text(0x900), "mapped");
  EXPECT_EQ(own_text(0x920), "end");
  EXPECT_EQ(own_text(0x921), "behind");
  EXPECT_EQ(own_text(0x8FF), "before");
  unlink(own_file("kqisdy32.ini").c_str());
  EXPECT_EQ(own_text(0x900), "mapped");

  EXPECT_EQ(own_text(5), "gr??e");
  uint32_t language = 0x407;
  EXPECT_EQ(own_text(5, &language), "deutsch");
  EXPECT_EQ(own_text(6), "");
  EXPECT_EQ(own_text(99), "");
  // Without a buffer or a size it is the size in UTF-8, and with too little room twice that.
  uint32_t size = 1000;
  EXPECT_EQ(SMGetUCS2StrFromID(5, nullptr, nullptr, &size), 8U);
  EXPECT_EQ(size, 8U);
  ustring buffer[8] = {77};
  EXPECT_EQ(SMGetUCS2StrFromID(5, nullptr, buffer, nullptr), 8U);
  size = 15;
  EXPECT_EQ(SMGetUCS2StrFromID(5, nullptr, buffer, &size), 16U);
  EXPECT_EQ(size, 16U);
  EXPECT_EQ(buffer[0], 77);
  size = 16;
  EXPECT_EQ(SMGetUCS2StrFromID(5, nullptr, buffer, &size), 12U);
  EXPECT_EQ(SMGetUCS2StrFromID(7, nullptr, nullptr, nullptr), 1024U);
  EXPECT_EQ(SMGetUCS2StrFromID(8, nullptr, nullptr, nullptr), 0U);
}

}  // namespace
