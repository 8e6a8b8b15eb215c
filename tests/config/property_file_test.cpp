// Property files.

#include <sys/stat.h>

#include <cstring>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt.h"
#include "support/guarded.h"
#include "support/scratch.h"

namespace {

using namespace std::string_literals;
using kqsupt::tests::content_of;
using kqsupt::tests::Guarded;
using kqsupt::tests::mode_of;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

class PropertyFile : public testing::Test {
 protected:
  // The text of a key, or "status N".
  std::string read(const char* key) {
    char buffer[16384];
    uint32_t size = sizeof buffer;
    const SMStatus status =
        SMPropertyFileReadValue(key, SMXLT_TYPE_UTF8, buffer, &size, nullptr, 0, path_.c_str(), 1);
    return status == 0 ? std::string(buffer, size - 1) : "status " + std::to_string(status);
  }
  // The content of the file after a text was written to it, or "status N".
  std::string written(const std::string& content, const char* key, const char* value) {
    put(path_, content);
    const SMStatus status =
        SMPropertyFileWriteValue(key, SMXLT_TYPE_UTF8, value,
                                 static_cast<uint32_t>(std::strlen(value) + 1), path_.c_str(), 1);
    return status == 0 ? content_of(path_) : "status " + std::to_string(status);
  }

  Scratch scratch_;
  std::string path_ = scratch_.file("a.properties");
};

TEST_F(PropertyFile, ReadsValuesBehindAnySeparator) {
  put(path_, "a = 1\nb:2\nc 3\nd\t=: \t4 5 \r\n  e=6");
  EXPECT_EQ(read("a"), "1");
  EXPECT_EQ(read("b"), "2");
  EXPECT_EQ(read("c"), "3");
  EXPECT_EQ(read("d"), "4 5");
  EXPECT_EQ(read("e"), "6");
  EXPECT_EQ(read("f"), "status 263");
}

TEST_F(PropertyFile, AValueGoesOnBehindABackslash) {
  put(path_, "a = 1\nb: two \\\n   three\nc=x\\\n  y \\\nz  \nd=e");
  EXPECT_EQ(read("a"), "1");
  EXPECT_EQ(read("b"), "two \n   three");
  EXPECT_EQ(read("c"), "x\n  y \nz");
  EXPECT_EQ(read("d"), "e");
}

TEST_F(PropertyFile, TwoBackslashesEndAValue) {
  put(path_, "a=x\\\\\nb=y\\\\\\\nc=z\\");
  EXPECT_EQ(read("a"), "x\\\\");
  EXPECT_EQ(read("b"), "y\\\\\\");
  EXPECT_EQ(read("c"), "z\n");
}

TEST_F(PropertyFile, ALineThatContinuesAValueIsNoProperty) {
  put(path_, "a=x\\\nb=1\nb=2\n");
  EXPECT_EQ(read("b"), "2");
}

TEST_F(PropertyFile, CommentsAndShortLinesAreNoProperties) {
  put(path_, "! x=1\n// x=2\n  ; x=3\n# x=4\nx\n/ x=5\n\nx=6\n");
  EXPECT_EQ(read("x"), "6");
  EXPECT_EQ(read("/"), "x=5");
}

TEST_F(PropertyFile, AKeyInTheFileAnswersForAllThatBeginWithIt) {
  put(path_, "port=1\nportal=2\n");
  EXPECT_EQ(read("portal"), "1");
  EXPECT_EQ(read("por"), "status 263");
}

TEST_F(PropertyFile, AnEmptyKeyInTheFileAnswersForAll) {
  put(path_, "= x\na=1\n");
  EXPECT_EQ(read("a"), "x");
  EXPECT_EQ(read(""), "x");
  EXPECT_EQ(written("a=1\n: x\nb=2\n", "b", "3"), "a=1\nb=3\nb=2\n");
}

TEST_F(PropertyFile, AKeyWithoutAValueIsEmpty) {
  put(path_, "key\nother=\n");
  EXPECT_EQ(read("key"), "");
  EXPECT_EQ(read("other"), "");
}

TEST_F(PropertyFile, ConvertsToTheTypeThatIsWanted) {
  put(path_, "n=42\nh=0x1F\nb=x\n");
  uint32_t number = 0;
  uint32_t size = sizeof number;
  EXPECT_EQ(
      SMPropertyFileReadValue("n", SMXLT_TYPE_U32, &number, &size, nullptr, 0, path_.c_str(), 1),
      0U);
  EXPECT_EQ(number, 42U);
  EXPECT_EQ(SMPropertyFileReadValue("h", SMXLT_TYPE_U32 | SMXLT_FMT_HEX, &number, &size, nullptr, 0,
                                    path_.c_str(), 1),
            0U);
  EXPECT_EQ(number, 31U);
  EXPECT_EQ(
      SMPropertyFileReadValue("b", SMXLT_TYPE_U32, &number, &size, nullptr, 0, path_.c_str(), 1),
      SM_STATUS_INVALID_PARAMETER);
}

TEST_F(PropertyFile, ADefaultServesForEveryFailureWhenItFits) {
  const uint32_t fallback = 9;
  uint32_t number = 77;
  uint32_t size = sizeof number;
  const char* path = path_.c_str();
  EXPECT_EQ(SMPropertyFileReadValue("n", SMXLT_TYPE_U32, &number, &size, &fallback, 4, path, 1),
            SM_STATUS_FILE_OPEN_FAILED);
  EXPECT_EQ(number, 9U);
  EXPECT_EQ(size, 4U);
  put(path_, "n=x\n");
  number = 77;
  EXPECT_EQ(SMPropertyFileReadValue("m", SMXLT_TYPE_U32, &number, &size, &fallback, 4, path, 1),
            SM_STATUS_KEY_NOT_FOUND);
  EXPECT_EQ(number, 9U);
  number = 77;
  EXPECT_EQ(SMPropertyFileReadValue("n", SMXLT_TYPE_U32, &number, &size, &fallback, 4, path, 1),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(number, 9U);
  number = 77;
  EXPECT_EQ(SMPropertyFileReadValue("m", SMXLT_TYPE_U32, &number, &size, &fallback, 5, path, 1),
            SM_STATUS_KEY_NOT_FOUND);
  EXPECT_EQ(number, 77U);
  EXPECT_EQ(SMPropertyFileReadValue("m", SMXLT_TYPE_U32, nullptr, &size, &fallback, 4, path, 1),
            SM_STATUS_KEY_NOT_FOUND);
}

TEST_F(PropertyFile, ADefaultOfNoBytesTellsTheSizeZero) {
  uint32_t number = 77;
  uint32_t size = sizeof number;
  const char* path = path_.c_str();
  EXPECT_EQ(SMPropertyFileReadValue("n", SMXLT_TYPE_U32, &number, &size, &number, 0, path, 1),
            SM_STATUS_FILE_OPEN_FAILED);
  EXPECT_EQ(number, 77U);
  EXPECT_EQ(size, 0U);
  size = sizeof number;
  EXPECT_EQ(SMPropertyFileReadValue("n", SMXLT_TYPE_U32, &number, &size, nullptr, 0, path, 1),
            SM_STATUS_FILE_OPEN_FAILED);
  EXPECT_EQ(size, sizeof number);
}

TEST_F(PropertyFile, ListsItsKeysInOrder) {
  put(path_, "b=1\n# c=2\na:x\\\nnone=3\nb 4\n");
  const std::string list = "b\0a\0b\0\0"s;
  for (uint32_t capacity = 0; capacity <= 8; ++capacity) {
    const Guarded<char> buffer(capacity);
    uint32_t size = capacity;
    EXPECT_EQ(SMPropertyFileReadValue(nullptr, SMXLT_TYPE_UTF8, buffer.data(), &size, nullptr, 0,
                                      path_.c_str(), 1),
              capacity < 7 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS)
        << capacity;
    EXPECT_EQ(size, 7U);
    if (capacity >= 7) {
      EXPECT_EQ(std::string(buffer.data(), 7), list);
    }
  }
  uint32_t size = 100;
  EXPECT_EQ(SMPropertyFileReadValue(nullptr, SMXLT_TYPE_UTF8, nullptr, &size, nullptr, 0,
                                    path_.c_str(), 1),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 7U);
}

TEST_F(PropertyFile, AFileWithoutPropertiesHasNoList) {
  put(path_, "# a=1\n");
  EXPECT_EQ(read(nullptr), "status 263");
}

TEST_F(PropertyFile, ReadingNeedsASizeAPathAndAKey) {
  put(path_, "n=1\n");
  uint32_t number = 77;
  uint32_t size = sizeof number;
  EXPECT_EQ(SMPropertyFileReadValue("n", 7, &number, nullptr, nullptr, 0, path_.c_str(), 1), 271U);
  EXPECT_EQ(SMPropertyFileReadValue("n", 7, &number, &size, nullptr, 0, nullptr, 1), 271U);
  EXPECT_EQ(SMPropertyFileReadValue(nullptr, 7, &number, &size, nullptr, 0, path_.c_str(), 1),
            271U);
}

TEST_F(PropertyFile, WritingReplacesTheLinesOfAKey) {
  EXPECT_EQ(written("a=1\nb=2\nc=3\n", "b", "NEW"), "a=1\nb=NEW\nc=3\n");
  EXPECT_EQ(written("# x\na=1\n  b : 2 \\\n  more \\\n last\n\nc=3", "b", "NEW"),
            "# x\na=1\nb=NEW\n\nc=3");
  EXPECT_EQ(written("b=2", "b", ""), "b=\n");
  EXPECT_EQ(written("a=x\\\nb=1\nb=2\n", "b", "3"), "a=x\\\nb=1\nb=3\n");
}

TEST_F(PropertyFile, WritingAUnknownKeyEmptiesTheFile) {
  EXPECT_EQ(written("a=1\nb=2\nc=3\n", "z", "NEW"), "");
}

TEST_F(PropertyFile, WritingTakesTheKeyThatIsAskedFor) {
  EXPECT_EQ(written("port=1\n", "portal", "2"), "portal=2\n");
}

TEST_F(PropertyFile, WritesTypedValues) {
  put(path_, "n=1\n");
  const uint32_t number = 0xFF;
  EXPECT_EQ(
      SMPropertyFileWriteValue("n", SMXLT_TYPE_U32 | SMXLT_FMT_HEX, &number, 4, path_.c_str(), 1),
      0U);
  uint32_t back = 0;
  uint32_t size = 4;
  EXPECT_EQ(SMPropertyFileReadValue("n", SMXLT_TYPE_U32 | SMXLT_FMT_HEX, &back, &size, nullptr, 0,
                                    path_.c_str(), 1),
            0U);
  EXPECT_EQ(back, 0xFFU);
}

TEST_F(PropertyFile, AValueThatIsNoneOfItsTypeLeavesTheFile) {
  put(path_, "n=1\n");
  EXPECT_NE(SMPropertyFileWriteValue("n", 200, "abc", 4, path_.c_str(), 1), 0U);
  EXPECT_EQ(content_of(path_), "n=1\n");
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.properties"});
}

TEST_F(PropertyFile, WritingNeedsKeyValueAndPath) {
  EXPECT_EQ(SMPropertyFileWriteValue(nullptr, 13, "a", 2, path_.c_str(), 1), 271U);
  EXPECT_EQ(SMPropertyFileWriteValue("n", 13, nullptr, 0, path_.c_str(), 1), 271U);
  EXPECT_EQ(SMPropertyFileWriteValue("n", 13, "a", 2, nullptr, 1), 271U);
  EXPECT_EQ(SMPropertyFileWriteValue("n", 13, "a", 2, path_.c_str(), 1),
            SM_STATUS_FILE_OPEN_FAILED);
}

TEST_F(PropertyFile, ALeftOverBackupIsNotLookedAt) {
  put(scratch_.file("a.bak"), "a=old\n");
  put(path_, "a=1\n");
  EXPECT_EQ(read("a"), "1");
  EXPECT_EQ(scratch_.names(), (std::vector<std::string>{"a.bak", "a.properties"}));
}

TEST_F(PropertyFile, ALeftOverBackupIsReplacedByAChange) {
  put(scratch_.file("a.bak"), "a=old\n");
  EXPECT_EQ(written("a=1\n", "a", "2"), "a=2\n");
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.properties"});
}

TEST_F(PropertyFile, APathWithoutADirectoryIsInTheCurrentOne) {
  ASSERT_EQ(chdir(scratch_.file("").c_str()), 0);
  path_ = "plain.properties";
  EXPECT_EQ(written("a=1\nb=2\n", "a", "3"), "a=3\nb=2\n");
  EXPECT_EQ(read("a"), "3");
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"plain.properties"});
  ASSERT_EQ(chdir("/"), 0);
}

TEST_F(PropertyFile, AFileThatNoMemoryHoldsStaysAsItIs) {
  put(path_, "a=1\n");
  ASSERT_EQ(truncate(path_.c_str(), off_t{0x100000003}), 0);
  EXPECT_EQ(SMPropertyFileWriteValue("a", 13, "2", 2, path_.c_str(), 1), SM_STATUS_NO_MEMORY);
  struct stat about {};
  ASSERT_EQ(stat(path_.c_str(), &about), 0);
  EXPECT_EQ(about.st_size, off_t{0x100000003});
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.properties"});
}

TEST_F(PropertyFile, AChangedFileKeepsItsBits) {
  put(path_, "a=1\n");
  chmod(path_.c_str(), 0640);
  EXPECT_EQ(SMPropertyFileWriteValue("a", 13, "2", 2, path_.c_str(), 1), 0U);
  EXPECT_EQ(mode_of(path_), 0640U);
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.properties"});
}

}  // namespace
