// Reading text from INI files: values and lists.

#include <fcntl.h>
#include <sys/stat.h>

#include <string>

#include "config/ini_fixture.h"
#include "kqsupt/frame.h"

namespace {

using namespace std::string_literals;
using kqsupt::tests::Guarded;
using kqsupt::tests::Ini;
using kqsupt::tests::Reading;

class IniRead : public Ini {};

TEST_F(IniRead, FindsTheValueOfAKeyInItsSection) {
  put_file("[one]\nkey=a\n[two]\nkey=b\nother=c\n");
  EXPECT_EQ(read("one", "key"), found("a"));
  EXPECT_EQ(read("two", "key"), found("b"));
  EXPECT_EQ(read("two", "other"), found("c"));
}

TEST_F(IniRead, TheFirstOfTwoSectionsOrKeysCounts) {
  put_file("[s]\nk=1\nk=2\n[s]\nk=3\nm=4\n");
  EXPECT_EQ(read("s", "k"), found("1"));
  EXPECT_EQ(read("s", "m").status, SM_STATUS_KEY_NOT_FOUND);
}

TEST_F(IniRead, NamesAreComparedByteByByte) {
  put_file("[S]\nKey=1\n");
  EXPECT_EQ(read("s", "Key").status, SM_STATUS_SECTION_NOT_FOUND);
  EXPECT_EQ(read("S", "key").status, SM_STATUS_KEY_NOT_FOUND);
  EXPECT_EQ(read("S", "Ke").status, SM_STATUS_KEY_NOT_FOUND);
  EXPECT_EQ(read("S", "Keys").status, SM_STATUS_KEY_NOT_FOUND);
}

TEST_F(IniRead, NothingIsTrimmedButBlanksBeforeTheKey) {
  put_file("[s]\nKey = V\nK= V\r\n \t indented=x \n");
  EXPECT_EQ(read("s", "Key").status, SM_STATUS_KEY_NOT_FOUND);
  EXPECT_EQ(read("s", "Key "), found(" V"));
  EXPECT_EQ(read("s", "K"), found(" V\r"));
  EXPECT_EQ(read("s", "indented"), found("x "));
}

TEST_F(IniRead, AHeaderMayBeIndentedAndEndsAtItsFirstBracket) {
  put_file(" \t[a b ] tail]\nk=1\n");
  EXPECT_EQ(read("a b ", "k"), found("1"));
  EXPECT_EQ(read("a b", "k").status, SM_STATUS_SECTION_NOT_FOUND);
}

TEST_F(IniRead, CommentsBeginInTheFirstColumn) {
  put_file("[s]\n;k=1\n#k=2\n ;k=3\nk=4\n");
  EXPECT_EQ(read("s", "k"), found("4"));
  EXPECT_EQ(read("s", ";k"), found("3"));
  EXPECT_EQ(read("s", "#k").status, SM_STATUS_KEY_NOT_FOUND);
}

TEST_F(IniRead, ACommentedHeaderIsNone) {
  put_file(";[a]\n#[a]\n[s]\nk=1\n");
  EXPECT_EQ(read("a", "k").status, SM_STATUS_SECTION_NOT_FOUND);
}

TEST_F(IniRead, AValueGoesToTheLineEndAndMayHoldEqualSigns) {
  put_file("[s]\nk=a=b;c#d\nempty=\n=nameless\n");
  EXPECT_EQ(read("s", "k"), found("a=b;c#d"));
  EXPECT_EQ(read("s", "empty"), found(""));
  EXPECT_EQ(read("s", ""), found("nameless"));
  EXPECT_EQ(read("s", "k=a").status, SM_STATUS_KEY_NOT_FOUND);
}

TEST_F(IniRead, LinesWithoutAnEqualSignAreIgnored) {
  put_file("[s]\nk\nnoise\nk=1\n");
  EXPECT_EQ(read("s", "k"), found("1"));
}

TEST_F(IniRead, TheLastLineNeedsNoEnd) {
  put_file("[s]\nk=last");
  EXPECT_EQ(read("s", "k"), found("last"));
}

TEST_F(IniRead, ANulEndsTheTextOfItsLine) {
  put_file("[s\0]\n[t]\nk=a\0b\nl=c\n"s);
  EXPECT_EQ(read("t", "k").status, SM_STATUS_END_OF_FILE);
  put_file("[t]\nk=a\0b\n\0m=d\nl=c\n"s);
  EXPECT_EQ(read("t", "k"), found("a"));
  EXPECT_EQ(read("t", "m").status, SM_STATUS_KEY_NOT_FOUND);
  EXPECT_EQ(read("t", "l"), found("c"));
}

TEST_F(IniRead, AHeaderWithoutItsBracketEndsTheSearchForASection) {
  put_file("[a\n[b]\nk=1\n");
  EXPECT_EQ(read("a", "k"), (Reading{SM_STATUS_END_OF_FILE, "\0"s, 0}));
  EXPECT_EQ(read("b", "k").status, SM_STATUS_END_OF_FILE);
  put_file("[b]\nk=1\n[a\nm=2\n");
  EXPECT_EQ(read("b", "k"), found("1"));
  EXPECT_EQ(read("b", "m").status, SM_STATUS_KEY_NOT_FOUND);
}

TEST_F(IniRead, ALineOfMoreThanTheLimitCountsAsSeveral) {
  // The value lies in the first part of the line; the second part is a line of its own.
  const std::string first = "k=" + std::string(8448, 'a');
  put_file("[s]\n" + first + "m=2\nn=3\n");
  EXPECT_EQ(read("s", "k", 9000), found(std::string(8448, 'a')));
  EXPECT_EQ(read("s", "m"), found("2"));
  EXPECT_EQ(read("s", "n"), found("3"));
}

TEST_F(IniRead, AnEndlessLineAndManyLinesAreRead) {
  put_file("[s]\n" + std::string(100000, 'x') + "\nk=1\n");
  EXPECT_EQ(read("s", "k"), found("1"));
  std::string many = "[s]\n";
  for (int i = 0; i < 20000; ++i) {
    many += "key" + std::to_string(i) + "=" + std::to_string(i * 7) + "\n";
  }
  put_file(many);
  for (const int i : {0, 1, 2500, 7777, 19999}) {
    EXPECT_EQ(read("s", ("key" + std::to_string(i)).c_str()), found(std::to_string(i * 7)));
  }
  EXPECT_EQ(read("s", "key20000").status, SM_STATUS_KEY_NOT_FOUND);
}

TEST_F(IniRead, TheBufferMustHoldTheValueAndItsTerminator) {
  put_file("[s]\nk=value\n");
  for (uint32_t capacity = 1; capacity <= 7; ++capacity) {
    EXPECT_EQ(read("s", "k", capacity),
              capacity < 6 ? (Reading{SM_STATUS_BUFFER_TOO_SMALL, "", 6}) : found("value"));
  }
}

TEST_F(IniRead, ADefaultIsCopiedWhenSectionOrKeyIsMissing) {
  put_file("[s]\nk=1\n");
  const Reading expected_key = {SM_STATUS_KEY_NOT_FOUND, "dflt\0"s, 5};
  EXPECT_EQ(read("s", "x", 100, "dflt", 5), expected_key);
  const Reading expected_section = {SM_STATUS_SECTION_NOT_FOUND, "dflt\0"s, 5};
  EXPECT_EQ(read("x", "x", 100, "dflt", 5), expected_section);
  EXPECT_EQ(read("s", "k", 100, "dflt", 5), found("1"));
}

TEST_F(IniRead, ADefaultIsCutToTheBufferAndAlwaysTerminated) {
  put_file("[s]\n");
  EXPECT_EQ(read("s", "x", 3, "dflt", 5), (Reading{SM_STATUS_KEY_NOT_FOUND, "df\0"s, 3}));
  EXPECT_EQ(read("s", "x", 100, "dflt", 2), (Reading{SM_STATUS_KEY_NOT_FOUND, "d\0"s, 2}));
}

TEST_F(IniRead, WithoutADefaultTheTextIsEmpty) {
  put_file("[s]\n");
  EXPECT_EQ(read("s", "x"), (Reading{SM_STATUS_KEY_NOT_FOUND, "\0"s, 0}));
  EXPECT_EQ(read("s", "x", 100, "dflt", 0), (Reading{SM_STATUS_KEY_NOT_FOUND, "\0"s, 0}));
  EXPECT_EQ(read("s", "x", 100, nullptr, 5), (Reading{SM_STATUS_KEY_NOT_FOUND, "\0"s, 0}));
}

TEST_F(IniRead, AMissingFileLeavesTheBufferAlone) {
  EXPECT_EQ(read("s", "k", 100, "dflt", 5), (Reading{SM_STATUS_FILE_OPEN_FAILED, "", 100}));
}

TEST_F(IniRead, AnEmptyFileHasNoSection) {
  put_file("");
  EXPECT_EQ(read("s", "k").status, SM_STATUS_SECTION_NOT_FOUND);
  EXPECT_EQ(read(nullptr, nullptr), (Reading{SM_STATUS_SECTION_NOT_FOUND, "", 100}));
}

TEST_F(IniRead, ADirectoryCannotBeReadAndAPipeDoesNotBlock) {
  mkdir(path_.c_str(), 0755);
  EXPECT_EQ(read("s", "k", 100, "dflt", 5), (Reading{SM_STATUS_UNSUCCESSFUL, "", 100}));
  EXPECT_EQ(read(nullptr, nullptr).status, SM_STATUS_UNSUCCESSFUL);
  rmdir(path_.c_str());
  mkfifo(path_.c_str(), 0600);
  EXPECT_EQ(read("s", "k").status, SM_STATUS_SECTION_NOT_FOUND);
}

TEST_F(IniRead, RequiresABufferASizeAndAPath) {
  put_file("[s]\nk=1\n");
  char buffer[8] = "~";
  uint32_t size = sizeof buffer;
  const char* path = path_.c_str();
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 1, nullptr, &size, nullptr, 0, path, 1), 2U);
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 1, buffer, nullptr, nullptr, 0, path, 1), 2U);
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 1, buffer, &size, nullptr, 0, nullptr, 1), 2U);
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 1, buffer, &size, nullptr, 0, "", 1), 2U);
  size = 0;
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 1, buffer, &size, nullptr, 0, path, 1), 2U);
  EXPECT_STREQ(buffer, "~");
}

TEST_F(IniRead, UnknownTypesAreRefused) {
  put_file("[s]\nk=1\n");
  for (const uint32_t type : {0U, 10U, 11U, 257U, 0xFFFFFFFFU}) {
    uint64_t value = 7;
    uint32_t size = sizeof value;
    EXPECT_EQ(SMReadINIPathFileValue("s", "k", type, &value, &size, nullptr, 0, path_.c_str(), 1),
              2U);
    EXPECT_EQ(value, 7U);
  }
}

// ---- Lists ----

TEST_F(IniRead, ListsTheSections) {
  put_file("x=1\n[one]\na=1\n;[no]\n [two] x\n[]\n");
  EXPECT_EQ(read(nullptr, "ignored"), (Reading{SM_STATUS_SUCCESS, "one\0two\0\0\0"s, 10}));
}

TEST_F(IniRead, ListsTheKeysOfASection) {
  put_file("[s]\none=1\n;no=2\n#no=3\n two =4\nnoise\none=5\n[t]\nthree=6\n");
  EXPECT_EQ(read("s", nullptr), (Reading{SM_STATUS_SUCCESS, "one\0two \0one\0\0"s, 14}));
  EXPECT_EQ(read("t", nullptr), (Reading{SM_STATUS_SUCCESS, "three\0\0"s, 7}));
}

TEST_F(IniRead, AListThatDoesNotFitHasTheNamesThatDoAndTellsItsWholeSize) {
  put_file("[s]\naa=1\nb=2\nccc=3\n");
  const std::string whole = "aa\0b\0ccc\0\0"s;
  for (uint32_t capacity = 1; capacity <= 11; ++capacity) {
    std::string expected = "\0"s;
    if (capacity >= 10) {
      expected = whole;
    } else if (capacity >= 6) {
      expected = "aa\0b\0\0"s;
    } else if (capacity >= 4) {
      expected = "aa\0\0"s;
    }
    EXPECT_EQ(read("s", nullptr, capacity),
              (Reading{capacity < 10 ? SMStatus{SM_STATUS_BUFFER_TOO_SMALL} : 0, expected, 10}))
        << capacity;
  }
}

TEST_F(IniRead, AFailedListLeavesTheBufferAlone) {
  put_file("[s]\n[one]\n[two\n");
  EXPECT_EQ(read(nullptr, nullptr, 100, "dflt", 5), (Reading{SM_STATUS_END_OF_FILE, "", 100}));
  EXPECT_EQ(read("s", nullptr, 100, "dflt", 5), (Reading{SM_STATUS_KEY_NOT_FOUND, "", 100}));
  EXPECT_EQ(read("x", nullptr), (Reading{SM_STATUS_END_OF_FILE, "", 100}));
  put_file("[s]\n");
  EXPECT_EQ(read("x", nullptr), (Reading{SM_STATUS_SECTION_NOT_FOUND, "", 100}));
}

// ---- Copies ----

TEST_F(IniRead, ACopyOfAValueHasItsSize) {
  put_file("[s]\nk=value\nempty=\n");
  uint32_t size = 77;
  char* text = SMReadINISectionKeyUTF8Value("s", "k", nullptr, &size, path_.c_str(), 1);
  EXPECT_STREQ(text, "value");
  EXPECT_EQ(size, 6U);
  SMFreeMem(text);
  text = SMReadINISectionKeyUTF8Value("s", "empty", nullptr, nullptr, path_.c_str(), 1);
  EXPECT_STREQ(text, "");
  SMFreeMem(text);
}

TEST_F(IniRead, AMissingKeyGivesACopyOfTheDefault) {
  put_file("[s]\n");
  uint32_t size = 77;
  for (const std::string& fallback : {"dflt"s, ""s, std::string(8192, 'd')}) {
    char* text = SMReadINISectionKeyUTF8Value("s", "k", fallback.c_str(), &size, path_.c_str(), 1);
    EXPECT_EQ(text, fallback);
    EXPECT_EQ(size, fallback.size() + 1);
    SMFreeMem(text);
  }
  EXPECT_EQ(SMReadINISectionKeyUTF8Value("s", "k", nullptr, &size, path_.c_str(), 1), nullptr);
  EXPECT_EQ(size, 0U);
  const std::string long_default(8193, 'd');
  EXPECT_EQ(SMReadINISectionKeyUTF8Value("s", "k", long_default.c_str(), &size, path_.c_str(), 1),
            nullptr);
}

TEST_F(IniRead, AMissingFileGivesNoCopyOfTheDefault) {
  for (const std::string& fallback : {"dflt"s, std::string(8192, 'd')}) {
    uint32_t size = 77;
    EXPECT_EQ(SMReadINISectionKeyUTF8Value("s", "k", fallback.c_str(), &size, path_.c_str(), 1),
              nullptr);
    EXPECT_EQ(size, 0U);
  }
  uint32_t size = 77;
  EXPECT_EQ(SMReadINISectionKeyUTF8Value("s", "k", "d", &size, nullptr, 1), nullptr);
  EXPECT_EQ(size, 0U);
}

TEST_F(IniRead, ACopyGrowsToAListOf32768Bytes) {
  std::string keys = "[s]\n";
  uint32_t list_size = 1;
  for (int i = 0; list_size + 16 <= 32768; ++i) {
    char key[16];
    std::snprintf(key, sizeof key, "key%012d", i);
    keys += std::string(key) + "=\n";
    list_size += 16;
  }
  put_file(keys + "abcdefghijklmn=\n");
  uint32_t size = 0;
  char* text = SMReadINISectionKeyUTF8Value("s", nullptr, nullptr, &size, path_.c_str(), 1);
  EXPECT_NE(text, nullptr);
  EXPECT_EQ(size, 32768U);
  SMFreeMem(text);
  put_file(keys + "abcdefghijklmno=\n");
  EXPECT_EQ(SMReadINISectionKeyUTF8Value("s", nullptr, nullptr, &size, path_.c_str(), 1), nullptr);
  EXPECT_EQ(size, 0U);
}

// ---- Tables of names ----

const SMEnums32 kTable[] = {
    {"never", 100, 0}, {"a", 1, 0}, {"B", 2, 0}, {"c c", 4, 0}, {"a", 8, 0}};

TEST_F(IniRead, ATableGivesTheValueOfAName) {
  put_file("[s]\none=A\ntwo=b\nthree=c c\nfour=x\nfive= a\nsix=never\n");
  const auto value = [this](const char* key) {
    return SMReadINIEnums32Value("s", key, kTable, 5, 0, path_.c_str(), 1);
  };
  EXPECT_EQ(value("one"), 1U);
  EXPECT_EQ(value("two"), 2U);
  EXPECT_EQ(value("three"), 4U);
  EXPECT_EQ(value("four"), 100U);
  EXPECT_EQ(value("five"), 100U);
  EXPECT_EQ(value("six"), 100U);
  EXPECT_EQ(value("absent"), 1U);
}

TEST_F(IniRead, ABitMaskCombinesTheNamesOfAList) {
  put_file("[s]\none= a,,B , zz\ntwo=c c,b\nthree=x\nfour=\n");
  const auto value = [this](const char* key) {
    return SMReadINIEnums32Value("s", key, kTable, 5, 1, path_.c_str(), 1);
  };
  EXPECT_EQ(value("one"), 3U);
  EXPECT_EQ(value("two"), 6U);
  EXPECT_EQ(value("three"), 0U);
  EXPECT_EQ(value("four"), 0U);
  EXPECT_EQ(value("absent"), 1U);
}

TEST_F(IniRead, OnlyOneMakesABitMask) {
  put_file("[s]\nk=a,b\n");
  const char* path = path_.c_str();
  EXPECT_EQ(SMReadINIEnums32Value("s", "k", kTable, 5, 1, path, 1), 3U);
  for (const uint16_t other : {uint16_t{0}, uint16_t{2}, uint16_t{0x101}, uint16_t{0xFFFF}}) {
    EXPECT_EQ(SMReadINIEnums32Value("s", "k", kTable, 5, other, path, 1), 100U) << other;
  }
}

TEST_F(IniRead, ATableNeedsTwoEntriesAndAllPointers) {
  put_file("[s]\nk=a\n");
  const char* path = path_.c_str();
  EXPECT_EQ(SMReadINIEnums32Value(nullptr, "k", kTable, 5, 0, path, 1), 0x80000000U);
  EXPECT_EQ(SMReadINIEnums32Value("s", nullptr, kTable, 5, 0, path, 1), 0x80000000U);
  EXPECT_EQ(SMReadINIEnums32Value("s", "k", nullptr, 5, 0, path, 1), 0x80000000U);
  EXPECT_EQ(SMReadINIEnums32Value("s", "k", kTable, 1, 0, path, 1), 0x80000000U);
  EXPECT_EQ(SMReadINIEnums32Value("s", "k", kTable, 5, 0, nullptr, 1), 0x80000000U);
}

}  // namespace
