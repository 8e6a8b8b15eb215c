// Writing text to INI files: what changes, and what stays byte by byte.

#include <sys/stat.h>

#include <string>

#include "config/ini_fixture.h"
#include "kqsupt/frame.h"

namespace {

using namespace std::string_literals;
using kqsupt::tests::content_of;
using kqsupt::tests::Ini;
using kqsupt::tests::mode_of;
using kqsupt::tests::put;

constexpr SMStatus kFailed = 0xFFFFFFFF;

class IniWrite : public Ini {};

TEST_F(IniWrite, AMissingFileIsMadeWithItsDirectory) {
  path_ = scratch_.file("new/b.ini");
  umask(077);
  EXPECT_EQ(write("S", "K", "V"), 0U);
  umask(022);
  EXPECT_EQ(file(), "[S]\nK=V\n");
  EXPECT_EQ(mode_of(path_), 0644U);
  EXPECT_EQ(mode_of(scratch_.file("new")) & 0700, 0700U);
}

TEST_F(IniWrite, ADirectoryIsMadeWithTheMode0755) {
  path_ = scratch_.file("new/b.ini");
  umask(0);
  EXPECT_EQ(write("S", "K", "V"), 0U);
  umask(022);
  EXPECT_EQ(mode_of(scratch_.file("new")), 0755U);
}

TEST_F(IniWrite, ADirectoryWhoseParentIsMissingCannotBeMade) {
  path_ = scratch_.file("no/such/b.ini");
  EXPECT_EQ(write("S", "K", "V"), kFailed);
}

TEST_F(IniWrite, ANewSectionFollowsAnEmptyLine) {
  EXPECT_EQ(written("[S]\nK=V\n", "S2", "K", "V"), "[S]\nK=V\n\n[S2]\nK=V\n");
  EXPECT_EQ(written("", "S2", "K", "V"), "[S2]\nK=V\n");
  EXPECT_EQ(written("[S]\nK=V", "S2", "K", "V"), "[S]\nK=V\n[S2]\nK=V\n");
}

TEST_F(IniWrite, AnExistingKeyKeepsItsPlaceAndAllElseItsBytes) {
  const std::string before = "; first\n\n[S]\r\n# note\n A=1\n";
  const std::string behind = "\n\n;x\nB=3\n[T]\nK=0\n\n; last\n";
  EXPECT_EQ(written(before + "K=old\r\n" + behind, "S", "K", "new"), before + "K=new\n" + behind);
  EXPECT_EQ(written(before + "  K=old\n" + behind, "S", "K", ""), before + "K=\n" + behind);
}

TEST_F(IniWrite, OnlyTheFirstLineOfAKeyIsChanged) {
  EXPECT_EQ(written("[S]\nK=1\nK=2\n[S]\nK=3\n", "S", "K", "x"), "[S]\nK=x\nK=2\n[S]\nK=3\n");
}

TEST_F(IniWrite, TheRunBeforeAMatchStays) {
  EXPECT_EQ(written("[S]\n\n;c\n  # d\nK=1\nL=2\n", "S", "K", "x"), "[S]\n\n;c\n  # d\nK=x\nL=2\n");
}

TEST_F(IniWrite, ANewKeyGoesBeforeTheLinesThatLeadToTheNextSection) {
  EXPECT_EQ(written("[S]\nA=1\n\n; comment\n[Next]\nB=2\n", "S", "K", "V"),
            "[S]\nA=1\nK=V\n\n; comment\n[Next]\nB=2\n");
  EXPECT_EQ(written("[S]\nA=1\n[Next]\nB=2\n", "S", "K", "V"), "[S]\nA=1\nK=V\n[Next]\nB=2\n");
  EXPECT_EQ(written("[S]\n[Next]\n", "S", "K", "V"), "[S]\nK=V\n[Next]\n");
  EXPECT_EQ(written("[S]\nA=1\n \t\r\n [Next]\n", "S", "K", "V"),
            "[S]\nA=1\nK=V\n \t\r\n [Next]\n");
}

TEST_F(IniWrite, ANewKeyOfTheLastSectionDropsWhatEndsTheFile) {
  EXPECT_EQ(written("[S]\nA=1\n\n; the end\n\n", "S", "K", "V"), "[S]\nA=1\nK=V\n");
  EXPECT_EQ(written("[S]\n", "S", "K", "V"), "[S]\nK=V\n");
  EXPECT_EQ(written("[S]", "S", "K", "V"), "[S]\nK=V\n");
  EXPECT_EQ(written("[S]\nA=1", "S", "K", "V"), "[S]\nA=1\nK=V\n");
}

TEST_F(IniWrite, ABracketBehindACarriageReturnEndsNoSection) {
  EXPECT_EQ(written("[S]\nA=1\n\r[x]\nK=2\n", "S", "K", "V"), "[S]\nA=1\n\r[x]\nK=V\n");
  EXPECT_EQ(read("S", "K"), found("V"));
  EXPECT_EQ(written("[S]\nA=1\n\n\r[x]\n[T]\n", "S", "K", "V"), "[S]\nA=1\n\n\r[x]\nK=V\n[T]\n");
}

TEST_F(IniWrite, AKeyWithAnEqualSignIsThatOfNoLine) {
  EXPECT_EQ(written("[S]\na=b=1\n", "S", "a=b", "2"), "[S]\na=b=1\na=b=2\n");
  EXPECT_EQ(written("[S]\na=b=1\n", "S", "a=b", nullptr), "[S]\na=b=1\n");
}

TEST_F(IniWrite, LongLinesStayByteByByte) {
  for (const size_t length : {8448U, 8449U, 8450U, 8451U, 16900U, 40000U}) {
    const std::string comment = ";" + std::string(length - 1, 'c') + "\n";
    const std::string value = "L=" + std::string(length - 2, 'v') + "\n";
    EXPECT_EQ(
        written(comment + "[S]\n" + value + "K=1\n" + value + "[T]\n" + comment, "S", "K", "2"),
        comment + "[S]\n" + value + "K=2\n" + value + "[T]\n" + comment)
        << length;
    EXPECT_EQ(written(comment + "[S]\nK=1\n[T]\n" + value, "S", nullptr, nullptr),
              comment + "[T]\n" + value)
        << length;
  }
}

TEST_F(IniWrite, LinesThatAreNoKeysStay) {
  EXPECT_EQ(written("[S]\nnoise\nA=1\nmore noise\n\n[T]\n", "S", "K", "V"),
            "[S]\nnoise\nA=1\nmore noise\nK=V\n\n[T]\n");
}

TEST_F(IniWrite, TakingAKeyOutRemovesItsLine) {
  EXPECT_EQ(written("[S]\nA=1\n;c\nK=2\nB=3\n", "S", "K", nullptr), "[S]\nA=1\n;c\nB=3\n");
  EXPECT_EQ(written("[S]\nA=1\n[T]\n", "S", "K", nullptr), "[S]\nA=1\n[T]\n");
  EXPECT_EQ(written("[S]\nA=1\n\n;c\n", "S", "K", nullptr), "[S]\nA=1\n");
}

TEST_F(IniWrite, TakingASectionOutStopsAtABracketOrHashInTheFirstColumn) {
  EXPECT_EQ(written("a\n[S]\nA=1\n;c\n\n [x]\n[T]\nB=2\n", "S", nullptr, nullptr), "a\n[T]\nB=2\n");
  EXPECT_EQ(written("[S]\nA=1\n#c\nB=2\n[T]\n", "S", nullptr, nullptr), "#c\nB=2\n[T]\n");
  EXPECT_EQ(written("[R]\n[S]\nA=1\n;c\n", "S", nullptr, nullptr), "[R]\n");
}

TEST_F(IniWrite, AValueWithoutAKeyTakesTheSectionOutToo) {
  EXPECT_EQ(written("[S]\nA=1\n[T]\nB=2\n", "S", nullptr, "value"), "[T]\nB=2\n");
  EXPECT_EQ(written("[T]\nB=2\n", "S", nullptr, "value"), "status 264");
}

TEST_F(IniWrite, TakingOutWhatHasNoSectionIsAnError) {
  EXPECT_EQ(written("[S]\nA=1\n", "T", "K", nullptr), "status 264");
  EXPECT_EQ(written("[S]\nA=1\n", "T", nullptr, nullptr), "status 264");
  EXPECT_EQ(file(), "[S]\nA=1\n");
  unlink(path_.c_str());
  EXPECT_EQ(write("T", "K", nullptr), SM_STATUS_BAD_LENGTH);
  EXPECT_EQ(write("T", nullptr, nullptr), SM_STATUS_BAD_LENGTH);
  EXPECT_EQ(file(), "(no file)");
}

TEST_F(IniWrite, AHeaderWithoutItsBracketEndsTheChange) {
  EXPECT_EQ(written("[S\nA=1\n[T]\nB=1\n", "T", "B", "2"), "status 261");
  EXPECT_EQ(file(), "[S\nA=1\n[T]\nB=1\n");
  EXPECT_EQ(written("[T]\nB=1\n[S\n", "T", "B", "2"), "[T]\nB=2\n[S\n");
}

TEST_F(IniWrite, NamesHaveAtMost255Bytes) {
  const std::string longest(255, 'n');
  const std::string longer(256, 'n');
  put_file("");
  EXPECT_EQ(write(longest.c_str(), longest.c_str(), "V"), 0U);
  EXPECT_EQ(read(longest.c_str(), longest.c_str()), found("V"));
  const std::string before = file();
  EXPECT_EQ(write(longer.c_str(), "K", "V"), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(write("S", longer.c_str(), "V"), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(write("", "", "V"), 0U);
  EXPECT_EQ(file(), before + "\n[]\n=V\n");
}

TEST_F(IniWrite, ValuesHaveAtMost8192Bytes) {
  const std::string longest(8192, 'v');
  put_file("");
  EXPECT_EQ(write("S", "K", longest.c_str()), 0U);
  EXPECT_EQ(read("S", "K", 8193), found(longest));
  EXPECT_EQ(write("S", "K", (longest + "v").c_str()), SM_STATUS_BAD_LENGTH);
}

TEST_F(IniWrite, TheSizeOfTextMustBeItsOwn) {
  put_file("[S]\nK=1\n");
  const char* path = path_.c_str();
  EXPECT_EQ(SMWriteINIPathFileValue("S", "K", 1, "abc", 3, path, 1), SM_STATUS_BAD_LENGTH);
  EXPECT_EQ(SMWriteINIPathFileValue("S", "K", 1, "abc", 5, path, 1), SM_STATUS_BAD_LENGTH);
  EXPECT_EQ(SMWriteINIPathFileValue("S", "K", 1, "abc", 0, path, 1), SM_STATUS_BAD_LENGTH);
  EXPECT_EQ(SMWriteINIPathFileValue("S", "K", 1, nullptr, 1, path, 1), SM_STATUS_BAD_LENGTH);
  EXPECT_EQ(file(), "[S]\nK=1\n");
}

TEST_F(IniWrite, NamesAreCheckedBeforeTheValue) {
  EXPECT_EQ(SMWriteINIPathFileValue(nullptr, "K", 1, "abc", 0, path_.c_str(), 1), 2U);
  EXPECT_EQ(SMWriteINIPathFileValue("S", "K", 1, "abc", 0, nullptr, 1), 2U);
  EXPECT_EQ(SMWriteINIPathFileValue("S", "K", 1, "abc", 0, "", 1), 2U);
  EXPECT_EQ(SMWriteINIPathFileValue("S", "K", 1, "abc", 4, (path_ + "/").c_str(), 1), 2U);
  EXPECT_EQ(SMWriteINIPathFileValue("S", "K", 0, "abc", 4, path_.c_str(), 1), 2U);
  EXPECT_EQ(SMWriteINIPathFileValue("S", "K", 10, "abc", 4, path_.c_str(), 1), 2U);
  EXPECT_EQ(file(), "(no file)");
}

TEST_F(IniWrite, ADirectoryIsNoFile) {
  mkdir(path_.c_str(), 0755);
  EXPECT_EQ(write("S", "K", "V"), SM_STATUS_UNSUCCESSFUL);
}

TEST_F(IniWrite, APathWithoutADirectoryIsInTheCurrentOne) {
  const std::string directory = std::getenv("TMPDIR");
  ASSERT_EQ(chdir(directory.c_str()), 0);
  path_ = "plain.ini";
  EXPECT_EQ(written("[S]\nK=1\n", "S", "K", "2"), "[S]\nK=2\n");
  unlink("plain.ini");
}

TEST_F(IniWrite, AChangedFileKeepsItsBitsForReadingAndWriting) {
  for (const unsigned mode : {0644U, 0600U, 0666U, 0755U, 04755U, 0460U}) {
    put_file("[S]\nK=1\n");
    chmod(path_.c_str(), mode);
    EXPECT_EQ(write("S", "K", "2"), 0U);
    EXPECT_EQ(mode_of(path_), mode & 01666);
    EXPECT_EQ(file(), "[S]\nK=2\n");
    unlink(path_.c_str());
  }
}

TEST_F(IniWrite, AFileThatIsAddedToKeepsItsBitsForReadingAndWriting) {
  for (const unsigned mode : {0644U, 0600U, 0666U, 0755U, 04755U, 0460U}) {
    put_file("[S]\nK=1\n");
    chmod(path_.c_str(), mode);
    EXPECT_EQ(write("T", "K", "2"), 0U);
    EXPECT_EQ(mode_of(path_), mode & 01666);
    EXPECT_EQ(file(), "[S]\nK=1\n\n[T]\nK=2\n");
    unlink(path_.c_str());
  }
}

TEST_F(IniWrite, AFileThatNoMemoryHoldsStaysAsItIs) {
  for (const off_t size : {off_t{0x7FFFFFFF}, off_t{0x100000003}}) {
    put_file("[S]\nK=1\n");
    chmod(path_.c_str(), 0755);
    ASSERT_EQ(truncate(path_.c_str(), size), 0);
    EXPECT_EQ(write("S", "K", "2"), SM_STATUS_NO_MEMORY);
    EXPECT_EQ(write("T", "K", "2"), SM_STATUS_NO_MEMORY);
    struct stat about {};
    ASSERT_EQ(stat(path_.c_str(), &about), 0);
    EXPECT_EQ(about.st_size, size);
    EXPECT_EQ(mode_of(path_), 0755U);
    EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.ini"});
    ASSERT_EQ(truncate(path_.c_str(), 8), 0);
    EXPECT_EQ(file(), "[S]\nK=1\n");
  }
}

TEST_F(IniWrite, NothingElseIsLeftInTheDirectory) {
  EXPECT_EQ(written("[S]\nK=1\n", "S", "K", "2"), "[S]\nK=2\n");
  EXPECT_EQ(written("[S\n", "S", "K", "2"), "status 261");
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.ini"});
}

// ---- Backups ----

TEST_F(IniWrite, ALeftOverBackupIsRenamedOverTheFileByTheNextRead) {
  put_file("[S]\nK=torn\n");
  put(scratch_.file("a.bak"), "[S]\nK=old\n");
  EXPECT_EQ(read("S", "K"), found("old"));
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.ini"});
}

TEST_F(IniWrite, ALeftOverBackupIsRenamedOverAMissingFileByTheNextWrite) {
  put(scratch_.file("a.bak"), "[S]\nK=old\nL=1\n");
  EXPECT_EQ(write("S", "K", "new"), 0U);
  EXPECT_EQ(file(), "[S]\nK=new\nL=1\n");
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.ini"});
}

TEST_F(IniWrite, ABackupThatCannotBeRenamedIsReadPastAndNotWrittenPast) {
  put_file("[S]\nK=1\n");
  mkdir(scratch_.file("a.bak").c_str(), 0755);
  EXPECT_EQ(read("S", "K"), found("1"));
  EXPECT_EQ(write("S", "K", "2"), kFailed);
  EXPECT_EQ(write("T", "K", "2"), kFailed);
  EXPECT_EQ(file(), "[S]\nK=1\n");
  EXPECT_EQ(scratch_.names(), (std::vector<std::string>{"a.bak", "a.ini"}));
}

TEST_F(IniWrite, AFileThatIsNamedAsItsOwnBackupIsKept) {
  path_ = scratch_.file("b.bak");
  EXPECT_EQ(written("[S]\nK=1\n", "S", "K", "2"), "[S]\nK=2\n");
  EXPECT_EQ(read("S", "K"), found("2"));
}

TEST_F(IniWrite, AFileWithoutADotIsChangedToo) {
  path_ = scratch_.file("plain");
  put(scratch_.file("plain.bak"), "[S]\nK=old\n");
  EXPECT_EQ(read("S", "K"), found("old"));
  EXPECT_EQ(write("S", "K", "2"), 0U);
  EXPECT_EQ(file(), "[S]\nK=2\n");
}

TEST_F(IniWrite, TheBackupOfALongPathHasItsFirst252Bytes) {
  for (const size_t length : {250U, 251U, 252U, 253U, 255U, 260U}) {
    const std::string directory = scratch_.file("d");
    mkdir(directory.c_str(), 0755);
    path_ = directory + "/" + std::string(length - directory.size() - 5, 'n') + ".ini";
    ASSERT_EQ(path_.size(), length);
    const std::string backup =
        length < 251 ? path_.substr(0, length - 3) + "bak" : path_.substr(0, 252) + "bak";
    put(backup, "[S]\nK=old\n");
    EXPECT_EQ(read("S", "K"), found("old")) << length;
    EXPECT_EQ(write("S", "K", "new"), 0U);
    EXPECT_EQ(file(), "[S]\nK=new\n") << length;
  }
}

// ---- The family's own directory ----

TEST_F(IniWrite, PlainNamesLieInTheDirectoryOfTheFamily) {
  EXPECT_EQ(SMWriteINIFileValue("S", "K", 1, "V", 2, "plain.ini", 1), 0U);
  const std::string path = std::getenv("KQSUPT_SANDBOX") + "/install/Quillance/ini/ini/plain.ini"s;
  EXPECT_EQ(content_of(path), "[S]\nK=V\n");
  char text[8];
  uint32_t size = sizeof text;
  EXPECT_EQ(SMReadINIFileValue("S", "K", 1, text, &size, nullptr, 0, "plain.ini", 1), 0U);
  EXPECT_STREQ(text, "V");
}

TEST_F(IniWrite, APlainNameMustLeaveTwoOf256BytesWithItsDirectory) {
  const std::string directory = std::getenv("KQSUPT_SANDBOX") + "/install/Quillance/ini/ini/"s;
  const std::string longest(254 - directory.size(), 'n');
  EXPECT_EQ(SMWriteINIFileValue("S", "K", 1, "V", 2, longest.c_str(), 1), 0U);
  EXPECT_EQ(content_of(directory + longest), "[S]\nK=V\n");
  EXPECT_EQ(SMWriteINIFileValue("S", "K", 1, "V", 2, (longest + "n").c_str(), 1),
            SM_STATUS_BUFFER_TOO_SMALL);
  char text[8];
  uint32_t size = sizeof text;
  EXPECT_EQ(SMReadINIFileValue("S", "K", 1, text, &size, nullptr, 0, longest.c_str(), 1), 0U);
  EXPECT_EQ(SMReadINIFileValue("S", "K", 1, text, &size, nullptr, 0, (longest + "n").c_str(), 1),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(SMWriteINIFileValue("S", "K", 1, "V", 2, nullptr, 1), SM_STATUS_UNSUCCESSFUL);
}

}  // namespace
