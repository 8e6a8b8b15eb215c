// The logs of events through the exports.

#include <sys/stat.h>
#include <sys/utsname.h>

#include <algorithm>
#include <atomic>
#include <set>
#include <thread>
#include <utility>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "log/event_logs.h"
#include "support/child.h"
#include "support/emulated.h"
#include "support/guarded.h"
#include "support/mounted.h"

namespace {

using kqsupt::tests::backup_of;
using kqsupt::tests::child;
using kqsupt::tests::content_of;
using kqsupt::tests::Guarded;
using kqsupt::tests::header_block;
using kqsupt::tests::in_child;
using kqsupt::tests::is_time_since;
using kqsupt::tests::lock_file_of_path;
using kqsupt::tests::mode_of;
using kqsupt::tests::narrow;
using kqsupt::tests::own_log;
using kqsupt::tests::parse_text_log;
using kqsupt::tests::parse_xml_log;
using kqsupt::tests::put;
using kqsupt::tests::Record;
using kqsupt::tests::Scratch;
using kqsupt::tests::survives_forks;

constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr uint32_t kMiB = 1048576;

// What the host is called while it is not called what it is called.
constinit const char* told_name = nullptr;

std::string host() {
  char name[256] = "";
  gethostname(name, sizeof name);
  return name;
}

std::string repeated(const std::string& text, size_t times) {
  std::string all;
  for (size_t i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

}  // namespace

// In the place of the C library's.
extern "C" int gethostname(char* name, size_t size) noexcept {
  utsname about{};
  if (uname(&about) != 0) {
    return -1;
  }
  std::snprintf(name, size, "%s", told_name != nullptr ? told_name : about.nodename);
  return 0;
}

namespace {

class EventLog : public testing::Test {
 protected:
  EventLog() { remove_all(); }
  ~EventLog() override {
    remove_all();
    SMSetLogMaxSize(text_.c_str(), kMiB);
    SMSetLogMaxSize(xml_.c_str(), kMiB);
  }

  void remove_all() const {
    for (const std::string& path : {text_, xml_, backup_of(text_), backup_of(xml_)}) {
      unlink(path.c_str());
    }
  }

  static SMStatus append(uint32_t logs, const char* source = "source",
                         const char* description = "what happened", uint16_t type = 4,
                         uint16_t category = 1, const std::string& data = "") {
    return SMAppendToLog(logs, type, category, 77, source, description, data.data(),
                         static_cast<uint32_t>(data.size()));
  }

  // The records of the text log, which must be there and whole.
  [[nodiscard]] std::vector<Record> records() const { return records_of(text_); }
  static std::vector<Record> records_of(const std::string& path) {
    const auto records = parse_text_log(content_of(path));
    EXPECT_TRUE(records.has_value()) << content_of(path).substr(0, 100);
    return records.value_or(std::vector<Record>());
  }

  const std::string text_ = own_log(SM_LOG_TEXT);
  const std::string xml_ = own_log(SM_LOG_XML);
};

// ---- Names ----

TEST_F(EventLog, LiesInTheDirectoryLogOfTheLogPath) {
  EXPECT_TRUE(text_.ends_with("/log/kqsys32.log")) << text_;
  EXPECT_TRUE(xml_.ends_with("/log/kqsys32.xml")) << xml_;
  EXPECT_EQ(own_log(SM_LOG_TEXT | SM_LOG_XML), xml_);
}

TEST_F(EventLog, ItsPathNeedsRoomFor256BytesWhateverItsLength) {
  for (auto* query : {SMGetLogPathFileName, SMGetBackupLogPathFileName}) {
    for (const uint32_t capacity : {0U, 1U, 100U, 255U}) {
      const Guarded<char> buffer(capacity, '~');
      uint32_t size = capacity;
      EXPECT_EQ(query(SM_LOG_TEXT, buffer.data(), &size), SMStatus{SM_STATUS_BUFFER_TOO_SMALL});
      EXPECT_EQ(size, 256U);
      if (capacity != 0) {
        EXPECT_EQ(buffer.data()[0], '~');
      }
    }
    uint32_t size = 300;
    EXPECT_EQ(query(SM_LOG_TEXT, nullptr, &size), SMStatus{SM_STATUS_BUFFER_TOO_SMALL});
    EXPECT_EQ(size, 256U);
    const Guarded<char> buffer(256);
    size = 256;
    EXPECT_EQ(query(SM_LOG_TEXT, buffer.data(), &size), 0U);
    EXPECT_EQ(size, std::strlen(buffer.data()) + 1);
    EXPECT_EQ(buffer.data(), query == SMGetLogPathFileName ? text_ : backup_of(text_));
  }
}

TEST_F(EventLog, OfNoFileHasNoPath) {
  char buffer[256] = "~";
  for (auto* query : {SMGetLogPathFileName, SMGetBackupLogPathFileName}) {
    uint32_t size = 1;
    EXPECT_EQ(query(0, buffer, &size), SMStatus{SM_STATUS_UNSUCCESSFUL});
    EXPECT_EQ(query(16, buffer, &size), SMStatus{SM_STATUS_UNSUCCESSFUL});
    EXPECT_EQ(query(SM_LOG_OS, buffer, &size), 1U);
    EXPECT_EQ(query(SM_LOG_OS | SM_LOG_TEXT, buffer, &size), 1U);
    EXPECT_EQ(query(SM_LOG_TEXT, buffer, nullptr), SMStatus{SM_STATUS_INVALID_PARAMETER});
    EXPECT_EQ(size, 1U);
    EXPECT_STREQ(buffer, "~");
  }
}

TEST(BackupName, HasALineForItsLastCharacter) {
  for (const uint32_t capacity : {0U, 1U, 5U, 6U, 7U, 20U}) {
    const Guarded<char> buffer(capacity, '~');
    uint32_t size = capacity;
    const SMStatus status = SMGetBackupXMLLogPathFileName("a.xml", buffer.data(), &size);
    EXPECT_EQ(size, 6U);
    if (capacity < 6) {
      EXPECT_EQ(status, SMStatus{SM_STATUS_BUFFER_TOO_SMALL});
      EXPECT_TRUE(capacity == 0 || buffer.data()[0] == '~');
    } else {
      EXPECT_EQ(status, 0U);
      EXPECT_STREQ(buffer.data(), "a.xm_");
    }
  }
  char buffer[8] = "~";
  uint32_t size = 1;
  EXPECT_EQ(SMGetBackupXMLLogPathFileName("ab", nullptr, &size),
            SMStatus{SM_STATUS_BUFFER_TOO_SMALL});
  EXPECT_EQ(size, 3U);
  for (const char* path : {static_cast<const char*>(nullptr), "", "a"}) {
    EXPECT_EQ(SMGetBackupXMLLogPathFileName(path, buffer, &size),
              SMStatus{SM_STATUS_INVALID_PARAMETER});
  }
  EXPECT_EQ(SMGetBackupXMLLogPathFileName("ab", buffer, nullptr),
            SMStatus{SM_STATUS_INVALID_PARAMETER});
  EXPECT_EQ(size, 3U);
  EXPECT_STREQ(buffer, "~");
}

TEST_F(EventLog, IsNotMadeByLookingForIt) {
  EXPECT_EQ(SMForceXMLLogExists(xml_.c_str()), 0U);
  EXPECT_EQ(SMForceXMLLogExists(nullptr), 0U);
  EXPECT_EQ(content_of(xml_), "(no file)");
}

TEST_F(EventLog, IsNotChangedByLookingForIt) {
  EXPECT_EQ(append(SM_LOG_XML), 0U);
  const std::string before = content_of(xml_);
  for (const char* path : {xml_.c_str(), "", "/"}) {
    EXPECT_EQ(SMForceXMLLogExists(path), 0U);
  }
  EXPECT_EQ(content_of(xml_), before);
}

TEST_F(EventLog, WithoutTheLogPathTellsSo) {
  const std::string logs = text_.substr(0, text_.rfind("/log/"));
  ASSERT_EQ(rename(logs.c_str(), (logs + "-away").c_str()), 0);
  for (const uint32_t log : {SM_LOG_TEXT, SM_LOG_XML}) {
    EXPECT_EQ(append(log), SMStatus{SM_STATUS_OPERATION_FAILED});
    EXPECT_EQ(SMClearLog(log, 1, "s"), SMStatus{SM_STATUS_OPERATION_FAILED});
    for (auto* query : {SMGetLogPathFileName, SMGetBackupLogPathFileName}) {
      char buffer[256] = "~";
      uint32_t size = sizeof buffer;
      EXPECT_EQ(query(log, buffer, &size), SMStatus{SM_STATUS_OPERATION_FAILED});
      EXPECT_EQ(size, sizeof buffer);
      EXPECT_STREQ(buffer, "~");
    }
  }
  EXPECT_EQ(rename((logs + "-away").c_str(), logs.c_str()), 0);
}

// Nothing of it is made anew, and what was logged before is there when the path is.
TEST_F(EventLog, TellsAlsoOfALogPathThatWentAwayBetweenTwoEvents) {
  const std::string logs = text_.substr(0, text_.rfind("/log/"));
  const std::string away = logs + "-away";
  for (const uint32_t log : {SM_LOG_TEXT, SM_LOG_XML}) {
    remove_all();
    EXPECT_EQ(append(log), 0U);
    const std::string before = content_of(own_log(log));
    const auto add = [log](uint16_t type, uint16_t category, const char* description) {
      return SMAppendToLog(log, type, category, 1, "s", description, nullptr, 0);
    };
    ASSERT_EQ(rename(logs.c_str(), away.c_str()), 0);
    EXPECT_EQ(add(4, 1, "d"), SMStatus{SM_STATUS_OPERATION_FAILED});
    ASSERT_EQ(rename(away.c_str(), logs.c_str()), 0);
    EXPECT_EQ(append(log), 0U);
    const std::string after = content_of(own_log(log));
    EXPECT_GT(after.size(), before.size());
    // Whatever else would be wrong with the event.
    ASSERT_EQ(rename(logs.c_str(), away.c_str()), 0);
    EXPECT_EQ(add(4, 7, "d"), SMStatus{SM_STATUS_OPERATION_FAILED});
    ASSERT_EQ(rename(away.c_str(), logs.c_str()), 0);
    EXPECT_EQ(append(log), 0U);
    ASSERT_EQ(rename(logs.c_str(), away.c_str()), 0);
    EXPECT_EQ(add(3, 1, ""), SMStatus{SM_STATUS_OPERATION_FAILED});
    EXPECT_EQ(add(4, 1, "d"), SMStatus{SM_STATUS_OPERATION_FAILED});
    EXPECT_NE(access(logs.c_str(), F_OK), 0);
    ASSERT_EQ(rename(away.c_str(), logs.c_str()), 0);
  }
}

TEST_F(EventLog, AnswersThatTheXmlLogHasLostItsEnd) {
  put(xml_, std::string(60, 'x'));
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), SMStatus{SM_STATUS_OPERATION_FAILED});
  EXPECT_EQ(records().size(), 1U);
}

// ---- Records of the text log ----

TEST_F(EventLog, BeginsWithItsBlockAndOneRecord) {
  const std::string directory = text_.substr(0, text_.rfind('/'));
  ASSERT_EQ(rmdir(directory.c_str()), 0);
  const mode_t mask = umask(077);
  const time_t before = time(nullptr);
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  umask(mask);
  EXPECT_EQ(mode_of(text_), 0664U);
  const std::string bytes = content_of(text_);
  EXPECT_EQ(bytes.substr(0, 6), std::string("\xFF\xFE#\0-\0", 6));
  EXPECT_EQ(bytes.substr(0, 256), header_block());
  const std::string record = narrow(bytes.substr(256));
  const std::string first =
      "EventID: 77\r\nSource: source\r\nCategory: Talmere\r\nType: Information\r\nDate and Time: ";
  const std::string second =
      "\r\nComputer: " + host() + "\r\nDescription:\r\nwhat happened\r\nData: Bytes in Hex\r\n\r\n";
  ASSERT_EQ(record.size(), first.size() + 24 + second.size()) << record;
  EXPECT_EQ(record.substr(0, first.size()), first);
  EXPECT_TRUE(is_time_since(record.substr(first.size(), 24), before));
  EXPECT_EQ(record.substr(first.size() + 24), second);
  chmod(directory.c_str(), 0755);
}

TEST_F(EventLog, ItsMissingDirectoryIsMade) {
  const std::string directory = text_.substr(0, text_.rfind('/'));
  for (const uint32_t log : {SM_LOG_TEXT, SM_LOG_XML}) {
    remove_all();
    ASSERT_EQ(rmdir(directory.c_str()), 0);
    const mode_t mask = umask(0);
    EXPECT_EQ(append(log), 0U);
    umask(mask);
    EXPECT_EQ(mode_of(directory), 0755U);
    EXPECT_EQ(mode_of(own_log(log)), 0664U);
  }
}

TEST_F(EventLog, OneTypeIsOneLabel) {
  const std::pair<uint16_t, const char*> labels[] = {{0, "None"},          {1, "Error"},
                                                     {2, "Warning"},       {4, "Information"},
                                                     {8, "Audit Success"}, {16, "Audit Failure"}};
  for (const auto& [type, label] : labels) {
    EXPECT_EQ(append(SM_LOG_TEXT, "s", "d", type), 0U);
    EXPECT_EQ(records().back().type, label);
  }
  const std::string before = content_of(text_);
  for (const int type : {3, 5, 6, 7, 9, 12, 15, 17, 24, 32, 256, 65535}) {
    EXPECT_EQ(append(SM_LOG_TEXT, "s", "d", static_cast<uint16_t>(type)), 0U);  // silently
  }
  EXPECT_EQ(content_of(text_), before);
}

TEST_F(EventLog, OneCategoryIsOneName) {
  const char* const names[] = {"Talmere", "Drosset", "Pellum", "Zarnith", "Quistel", "Vardeen"};
  for (uint16_t i = 0; i < 6; ++i) {
    EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML, "s", "d", 1, static_cast<uint16_t>(i + 1)), 0U);
    EXPECT_EQ(records().back().category, names[i]);
    EXPECT_EQ(child(parse_xml_log(content_of(xml_)).value().back(), "Category"), names[i]);
  }
  const std::string before = content_of(text_);
  const std::string xml_before = content_of(xml_);
  for (const int number : {0, 7, 257, 65535}) {
    const auto category = static_cast<uint16_t>(number);
    EXPECT_EQ(append(SM_LOG_TEXT, "s", "d", 1, category), 0U);
    EXPECT_EQ(append(SM_LOG_XML, "s", "d", 1, category), kFailed);
  }
  EXPECT_EQ(content_of(text_), before);
  EXPECT_EQ(content_of(xml_), xml_before);
}

TEST_F(EventLog, TextsAreOfAnyCharacters) {
  EXPECT_EQ(append(SM_LOG_TEXT,
                   "Gr\xC3\xB6\xC3\x9F"
                   "e",
                   "\xE6\x97\xA5\xE6\x9C\xAC"),
            0U);
  EXPECT_EQ(records()[0].source,
            "Gr\xC3\xB6\xC3\x9F"
            "e");
  EXPECT_EQ(records()[0].description, "\xE6\x97\xA5\xE6\x9C\xAC");
}

TEST_F(EventLog, TextsHaveTheirLengths) {
  for (const size_t length : {1, 2, 1023}) {
    EXPECT_EQ(append(SM_LOG_TEXT, std::string(length, 's').c_str()), 0U);
    EXPECT_EQ(records().back().source, std::string(length, 's'));
    // Units count, not bytes.
    EXPECT_EQ(append(SM_LOG_TEXT, repeated("\xC3\xA4", length).c_str()), 0U);
    EXPECT_EQ(records().back().source, repeated("\xC3\xA4", length));
  }
  for (const size_t length : {1, 2, 1024, 16383}) {
    EXPECT_EQ(append(SM_LOG_TEXT, "s", std::string(length, 'd').c_str()), 0U);
    EXPECT_EQ(records().back().description, std::string(length, 'd'));
  }
  // However many bytes: forms that are longer than they need to be are read, too.
  for (const char* unit : {"\xE6\x97\xA5", "\xF0\x86\x97\xA5", "\xFC\x80\x80\x86\x97\xA5"}) {
    EXPECT_EQ(append(SM_LOG_TEXT, repeated(unit, 1023).c_str(), repeated(unit, 16383).c_str()), 0U);
    EXPECT_EQ(records().back().source, repeated("\xE6\x97\xA5", 1023));
    EXPECT_EQ(records().back().description, repeated("\xE6\x97\xA5", 16383));
  }
  const std::string before = content_of(text_);
  const std::string long_source(1024, 's');
  const std::string wide_source = repeated("\xE6\x97\xA5", 1024);
  const std::string long_description(16384, 'd');
  const std::string wide_description = repeated("\xE6\x9C\xAC", 16384);
  for (const char* source :
       {static_cast<const char*>(nullptr), "", long_source.c_str(), wide_source.c_str(), "\xFF"}) {
    EXPECT_EQ(append(SM_LOG_TEXT, source), 0U);
  }
  for (const char* text : {static_cast<const char*>(nullptr), "", long_description.c_str(),
                           wide_description.c_str(), "\xC3"}) {
    EXPECT_EQ(append(SM_LOG_TEXT, "s", text), 0U);
  }
  EXPECT_EQ(content_of(text_), before);
}

TEST_F(EventLog, NoEventIsLostToANameOfTheHostThatIsNoText) {
  for (const char* name : {"\xFF", "h\xC3", ""}) {
    told_name = name;
    EXPECT_EQ(append(SM_LOG_TEXT), 0U);
    told_name = nullptr;
    EXPECT_EQ(records().back().computer, "");
    EXPECT_EQ(records().back().description, "what happened");
  }
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  EXPECT_EQ(records().back().computer, host());
}

TEST_F(EventLog, DataAreDumped) {
  std::string data;
  for (int i = 0; i < 20; ++i) {
    data += static_cast<char>(i < 16 ? 0x1E + i : 0x78 + i - 16);
  }
  EXPECT_EQ(append(SM_LOG_TEXT, "s", "d", 1, 1, data), 0U);
  EXPECT_EQ(records()[0].dump,
            "0x00000000: 1E 1F 20 21:22 23 24 25:26 27 28 29:2A 2B 2C 2D   .. !\"#$%&'()*+,- \r\n"
            "0x00000010: 78 79 7A 7B                                       xyz.             \r\n");
}

TEST_F(EventLog, DataHave32768BytesAtMost) {
  const std::string most(32768, '\x01');
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML, "s", "d", 1, 1, most), 0U);
  EXPECT_EQ(records()[0].dump.size(), 32768U / 16 * 81);
  const std::string before = content_of(text_);
  const std::string xml_before = content_of(xml_);
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML, "s", "d", 1, 1, most + "x"),
            SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT | SM_LOG_XML, 1, 1, 1, "s", "d", nullptr, 1),
            SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(content_of(text_), before);
  EXPECT_EQ(content_of(xml_), xml_before);
  EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, 1, 1, 4294967295U, "s", "d", most.data(), 0), 0U);
  EXPECT_EQ(records()[1].dump, "");
  EXPECT_EQ(records()[1].id, 4294967295U);
}

TEST_F(EventLog, AShortFileGetsItsBlock) {
  for (const size_t size : {1, 100, 254, 255, 256, 300}) {
    const std::string before(size, 'x');
    put(text_, before);
    EXPECT_EQ(append(SM_LOG_TEXT), 0U);
    const std::string after = content_of(text_);
    EXPECT_EQ(after.substr(0, size), before);
    EXPECT_EQ(after.substr(size, 256) == header_block(), size < 256) << size;
  }
}

TEST_F(EventLog, KeepsTheBitsForReadingAndWriting) {
  for (const unsigned mode : {0600U, 0644U, 0666U, 0755U, 04755U, 01640U}) {
    EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
    chmod(text_.c_str(), mode);
    chmod(xml_.c_str(), mode);
    EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
    EXPECT_EQ(mode_of(text_), mode & 01666);
    EXPECT_EQ(mode_of(xml_), mode & 01666);
  }
}

// Whoever may write to the log may lock it.
TEST_F(EventLog, ItsLockFileHasItsBits) {
  for (const unsigned mode : {0600U, 0640U, 0666U, 0755U}) {
    for (const std::string& path : {text_, xml_}) {
      EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
      chmod(path.c_str(), mode);
      EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
      EXPECT_EQ(mode_of(lock_file_of_path(path)), mode & 01666);
      unlink(path.c_str());
      EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
      EXPECT_EQ(mode_of(lock_file_of_path(path)), 0664U);
    }
  }
}

TEST_F(EventLog, TellsTheLocalTimeOfEachEvent) {
  struct Zone {
    const char* name;
    time_t seconds;  // east
  };
  const std::string long_name = "<" + std::string(70, 'A') + ">-5:30";
  // All of them in a second or two.
  for (const Zone& zone : {Zone{"XYZ-5:30", 19800},
                           {"", 0},
                           {"ABC3", -10800},
                           {long_name.c_str(), 19800},
                           {"XYZ-5:30", 19800}}) {
    setenv("TZ", zone.name, 1);
    const time_t before = time(nullptr);
    EXPECT_EQ(append(SM_LOG_TEXT), 0U);
    bool is_told = false;
    for (time_t second = before; second <= time(nullptr); ++second) {
      char expected[64];
      const time_t shifted = second + zone.seconds;
      tm broken{};
      std::strftime(expected, sizeof expected, "%a %b %e %H:%M:%S %Y", gmtime_r(&shifted, &broken));
      is_told = is_told || records().back().time == expected;
    }
    EXPECT_TRUE(is_told) << zone.name << ": " << records().back().time;
  }
  unsetenv("TZ");
  tzset();
}

TEST_F(EventLog, GoesToTheLogsThatAreMeant) {
  EXPECT_EQ(append(0), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(append(16), 0U);
  EXPECT_EQ(content_of(text_), "(no file)");
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  EXPECT_EQ(content_of(xml_), "(no file)");
  EXPECT_EQ(append(SM_LOG_XML), 0U);
  EXPECT_EQ(records().size(), 1U);
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
  EXPECT_EQ(records().size(), 2U);
  EXPECT_EQ(parse_xml_log(content_of(xml_))->size(), 2U);
}

TEST_F(EventLog, AnswersForTheXmlLogAlone) {
  ASSERT_EQ(mkdir(text_.c_str(), 0755), 0);
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
  ASSERT_EQ(rmdir(text_.c_str()), 0);
  unlink(xml_.c_str());
  ASSERT_EQ(mkdir(xml_.c_str(), 0755), 0);
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), kFailed);
  EXPECT_EQ(records().size(), 1U);
  ASSERT_EQ(rmdir(xml_.c_str()), 0);
}

// ---- Backups ----

// A text log of `size` bytes: its block and no record.
void fill(const std::string& path, size_t size) {
  put(path, header_block() + std::string(size - 256, '\0'));
}

TEST_F(EventLog, BecomesItsBackupWhenItWouldReachItsSize) {
  // (1 + (20 / 16 + 1) * 83 + 1024 + 2) * 2
  constexpr size_t kEstimate = 2386;
  const std::string data(20, 'x');
  fill(text_, kMiB - kEstimate - 1);
  EXPECT_EQ(append(SM_LOG_TEXT, "s", "de", 1, 1, data), 0U);
  EXPECT_EQ(content_of(backup_of(text_)), "(no file)");
  put(backup_of(text_), "the one before");
  fill(text_, kMiB - kEstimate);
  const std::string full = content_of(text_);
  EXPECT_EQ(append(SM_LOG_TEXT, "s", "de", 1, 3, data), 0U);
  EXPECT_EQ(content_of(backup_of(text_)), full);
  const std::vector<Record> made = records();
  ASSERT_EQ(made.size(), 2U);
  EXPECT_EQ(made[0].id, 1U);
  EXPECT_EQ(made[0].source, "s");
  EXPECT_EQ(made[0].category, "Talmere");
  EXPECT_EQ(made[0].type, "Information");
  EXPECT_EQ(made[0].description, "Log backup created");
  EXPECT_EQ(made[0].dump, "");
  EXPECT_EQ(made[1].id, 77U);
  EXPECT_EQ(made[1].category, "Pellum");
}

TEST_F(EventLog, IsBackedUpForAnEventOfAnotherTypeToo) {
  fill(text_, kMiB);
  EXPECT_EQ(append(SM_LOG_TEXT, "s", "d", 3), 0U);
  ASSERT_EQ(records().size(), 1U);
  EXPECT_EQ(records()[0].description, "Log backup created");
}

TEST_F(EventLog, HasTheSizeThatWasSet) {
  EXPECT_EQ(SMSetLogMaxSize(text_.c_str(), 2 * kMiB), 0U);
  fill(text_, kMiB);
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  EXPECT_EQ(content_of(backup_of(text_)), "(no file)");
  fill(text_, 2 * kMiB);
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  EXPECT_EQ(records().size(), 2U);
}

TEST_F(EventLog, ItsXmlHasTheSizeThatWasSet) {
  EXPECT_EQ(SMSetLogMaxSize(xml_.c_str(), 2 * kMiB), 0U);
  const auto fill_xml = [this](size_t size) {
    put(xml_, std::string(size - 11, 'x') + "</EventLog>");
  };
  fill_xml(kMiB);
  EXPECT_EQ(append(SM_LOG_XML), 0U);
  EXPECT_EQ(content_of(backup_of(xml_)), "(no file)");
  fill_xml(2 * kMiB);
  EXPECT_EQ(append(SM_LOG_XML), 0U);
  EXPECT_EQ(content_of(backup_of(xml_)).size(), 2 * kMiB);
  EXPECT_EQ(parse_xml_log(content_of(xml_)).value().size(), 2U);
}

// Of a log that is full, only what comes before the check for a backup is refused without one.
TEST_F(EventLog, IsNotBackedUpForAnEventThatItRefusesBefore) {
  put(text_, std::string(kMiB, 'x'));
  put(xml_, std::string(kMiB, 'x'));
  EXPECT_EQ(append(SM_LOG_TEXT, "s", "d", 1, 7), 0U);
  EXPECT_EQ(append(SM_LOG_TEXT, "", "d"), 0U);
  EXPECT_EQ(append(SM_LOG_TEXT, "s", ""), 0U);
  EXPECT_EQ(append(SM_LOG_XML, "s", "d", 1, 7), kFailed);
  EXPECT_EQ(append(SM_LOG_XML, "", "d"), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(content_of(text_).size(), kMiB);
  EXPECT_EQ(content_of(xml_).size(), kMiB);
  EXPECT_EQ(content_of(backup_of(text_)), "(no file)");
  EXPECT_EQ(content_of(backup_of(xml_)), "(no file)");
}

TEST_F(EventLog, ItsGrowthIsReckonedInUnits) {
  constexpr size_t kEstimate = (1 + 83 + 1024 + 2) * 2;
  const auto add = [] { return append(SM_LOG_TEXT, "\xC3\xA4", "\xE6\x97\xA5\xE6\x9C\xAC"); };
  put(text_, std::string(kMiB - kEstimate - 1, 'x'));
  EXPECT_EQ(add(), 0U);
  EXPECT_EQ(content_of(backup_of(text_)), "(no file)");
  put(text_, std::string(kMiB - kEstimate, 'x'));
  EXPECT_EQ(add(), 0U);
  EXPECT_EQ(content_of(backup_of(text_)).size(), kMiB - kEstimate);
}

TEST_F(EventLog, ItsBackupKeepsAllItsBits) {
  put(text_, std::string(kMiB, 'x'));
  put(xml_, std::string(kMiB, 'x'));
  chmod(text_.c_str(), 0755);
  chmod(xml_.c_str(), 0755);
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
  for (const std::string& path : {text_, xml_}) {
    EXPECT_EQ(mode_of(backup_of(path)), 0755U);
    EXPECT_EQ(mode_of(path), 0664U);
  }
}

TEST_F(EventLog, KeepsItsBitsForAnEventThatItRefuses) {
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  chmod(text_.c_str(), 0755);
  EXPECT_EQ(append(SM_LOG_TEXT, "s", "d", 3), 0U);
  EXPECT_EQ(mode_of(text_), 0755U);
}

TEST_F(EventLog, GrowsOnWhenItsBackupCannotBeMade) {
  ASSERT_EQ(mkdir(backup_of(text_).c_str(), 0755), 0);
  fill(text_, kMiB);
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  EXPECT_GT(content_of(text_).size(), kMiB);
  ASSERT_EQ(rmdir(backup_of(text_).c_str()), 0);
}

// ---- The XML log ----

class XmlLog : public EventLog {
 protected:
  SMStatus add(const char* user = "user", const char* source = "source",
               const char* description = "text", const char* link = nullptr,
               const std::string& data = "", uint32_t max_size = kMiB) {
    return SMAppendToXMLLog(path_.c_str(), 3, 6, 5, user, source, description, link, data.data(),
                            static_cast<uint32_t>(data.size()), max_size);
  }
  [[nodiscard]] std::vector<std::string> elements() const {
    const auto elements = parse_xml_log(content_of(path_));
    EXPECT_TRUE(elements.has_value()) << content_of(path_);
    return elements.value_or(std::vector<std::string>());
  }

  const Scratch scratch_;
  const std::string path_ = scratch_.file("a.xml");
};

TEST_F(XmlLog, HasAnElementForEachEvent) {
  const time_t before = time(nullptr);
  EXPECT_EQ(add("user", "source", "text", "a&b<c", "\x01\xFE"), 0U);
  const std::string text = content_of(path_);
  const std::string begin =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog><LogEntry><TimeStamp>";
  ASSERT_EQ(text.substr(0, begin.size()), begin);
  const auto seconds = static_cast<time_t>(std::stoll(text.substr(begin.size(), 20)));
  EXPECT_GE(seconds, before);
  EXPECT_LE(seconds, time(nullptr));
  std::string calendar = std::ctime(&seconds);
  calendar.pop_back();
  EXPECT_EQ(text, begin + std::to_string(seconds) + "</TimeStamp><DateTime>" + calendar +
                      "</DateTime><ComputerName>" + host() +
                      "</ComputerName><Type>3</Type><ID>5</ID><Link>a&amp;b&lt;c</Link>"
                      "<UserInfo>user</UserInfo><Source>source</Source><Category>Vardeen</Category>"
                      "<Description>text</Description><Data>" +
                      "0x01,0xFE</Data></LogEntry></EventLog>");
  EXPECT_EQ(mode_of(path_), 0664U);
}

TEST_F(XmlLog, TextsThatAreNotGivenAreEmpty) {
  EXPECT_EQ(add(nullptr, nullptr, nullptr), 0U);
  for (const char* name : {"Link", "UserInfo", "Source", "Description", "Data"}) {
    EXPECT_EQ(child(elements()[0], name), "") << name;
  }
  EXPECT_EQ(add(nullptr, nullptr, nullptr, ""), 0U);
  EXPECT_EQ(child(elements()[1], "Link"), "");
}

TEST_F(XmlLog, TextsHaveTheirLengths) {
  const std::string name(511, 'n');
  const std::string text(8191, 't');
  EXPECT_EQ(add(name.c_str(), name.c_str(), text.c_str()), 0U);
  EXPECT_EQ(child(elements()[0], "UserInfo"), name);
  EXPECT_EQ(child(elements()[0], "Source"), name);
  EXPECT_EQ(child(elements()[0], "Description"), text);
  const std::string before = content_of(path_);
  EXPECT_EQ(add((name + "n").c_str()), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(add(""), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(add("u", (name + "n").c_str()), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(add("u", ""), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(add("u", "s", (text + "t").c_str()), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(add("u", "s", ""), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(SMAppendToXMLLog(nullptr, 1, 1, 1, "u", "s", "d", nullptr, nullptr, 0, kMiB),
            SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(content_of(path_), before);
}

TEST_F(XmlLog, TextsAreWrittenAsTheyAre) {
  EXPECT_EQ(add("<a>&", "\xFF\xC3", "]]>"), 0U);
  EXPECT_EQ(child(elements()[0], "UserInfo"), "<a>&");
  EXPECT_EQ(child(elements()[0], "Source"), "\xFF\xC3");
  EXPECT_EQ(child(elements()[0], "Description"), "]]>");
  EXPECT_EQ(add("u", "<s>&", "<d>&\"'"), 0U);
  EXPECT_EQ(child(elements()[1], "Source"), "<s>&");
  EXPECT_EQ(child(elements()[1], "Description"), "<d>&\"'");
}

TEST_F(XmlLog, NumbersAreUnsigned) {
  EXPECT_EQ(SMAppendToXMLLog(path_.c_str(), 65535, 1, 4294967295U, "u", "s", "d", nullptr, nullptr,
                             0, kMiB),
            0U);
  EXPECT_EQ(child(elements()[0], "Type"), "65535");
  EXPECT_EQ(child(elements()[0], "ID"), "4294967295");
}

TEST_F(XmlLog, HasAName) {
  EXPECT_EQ(SMAppendToXMLLog("", 1, 1, 1, "u", "s", "d", nullptr, nullptr, 0, kMiB), kFailed);
  EXPECT_EQ(SMClearXMLLog("", 1, "u", "s"), kFailed);
}

TEST_F(XmlLog, GoesOnInFrontOfTheLastEnd) {
  EXPECT_EQ(add(), 0U);
  const std::string one = content_of(path_);
  const std::string begin = one.substr(0, 48);
  for (const size_t junk : {0, 1, 10, 11, 4000, 4085, 4086, 4096, 4097, 9000}) {
    put(path_, one + std::string(junk, 'j'));
    EXPECT_EQ(add("u", "s", "second"), 0U) << junk;
    const std::string after = content_of(path_);
    const std::string kept = one.substr(0, one.size() - 11);
    EXPECT_EQ(after.substr(0, kept.size()), kept);
    const size_t end = after.find("</EventLog>");
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(parse_xml_log(after.substr(0, end + 11))->size(), 2U) << junk;
    const size_t size = std::max(one.size() + junk, end + 11);
    EXPECT_EQ(after.size(), size);
    EXPECT_EQ(after.substr(end + 11), std::string(size - end - 11, 'j'));
  }
}

TEST_F(XmlLog, ThatLostItsEndIsNeverAppendedTo) {
  for (const std::string& text :
       {std::string(38, 'x'), std::string(48, 'x'), std::string(49, 'x'), std::string(9000, 'x'),
        "</EventLog>" + std::string(60, 'x'), std::string(37, 'x') + "</EventLog>"}) {
    put(path_, text);
    EXPECT_EQ(add(), SMStatus{SM_STATUS_OPERATION_FAILED}) << text.size();
    EXPECT_EQ(content_of(path_), text);
  }
  put(path_, std::string(38, 'x') + "</EventLog>");
  EXPECT_EQ(add(), 0U);
}

TEST_F(XmlLog, OfLessThan38BytesBeginsAnew) {
  for (const size_t size : {0, 1, 11, 37}) {
    put(path_, std::string(size, 'x'));
    EXPECT_EQ(add(), 0U);
    EXPECT_EQ(elements().size(), 1U);
  }
}

TEST_F(XmlLog, BecomesItsBackupWhenItWouldReachItsSize) {
  EXPECT_EQ(add(), 0U);
  const std::string one = content_of(path_);
  const auto element = static_cast<uint32_t>(one.size() - 48 - 11);
  // All elements are of one length, but for the name of the day and the number of seconds.
  EXPECT_EQ(
      add("user", "source", "text", nullptr, "", static_cast<uint32_t>(one.size()) + element + 1),
      0U);
  EXPECT_EQ(content_of(backup_of(path_)), "(no file)");
  const std::string two = content_of(path_);
  EXPECT_EQ(add("user", "source", "text", "link", "", static_cast<uint32_t>(two.size()) + element),
            0U);
  EXPECT_EQ(content_of(backup_of(path_)), two);
  ASSERT_EQ(elements().size(), 2U);
  EXPECT_EQ(child(elements()[0], "Description"), "Log backup created");
  EXPECT_EQ(child(elements()[0], "Type"), "4");
  EXPECT_EQ(child(elements()[0], "ID"), "1");
  EXPECT_EQ(child(elements()[0], "Category"), "Talmere");
  EXPECT_EQ(child(elements()[0], "UserInfo"), "user");
  EXPECT_EQ(child(elements()[0], "Source"), "source");
  EXPECT_EQ(child(elements()[0], "Link"), "");
  EXPECT_EQ(child(elements()[0], "Data"), "");
  EXPECT_EQ(child(elements()[1], "Link"), "link");
  // A log that is not there has no backup to make.
  unlink(path_.c_str());
  EXPECT_EQ(add("user", "source", "text", nullptr, "", 0), 0U);
  EXPECT_EQ(content_of(backup_of(path_)), two);
}

TEST_F(XmlLog, MayHaveItsPathInTheCurrentDirectory) {
  ASSERT_EQ(chdir(scratch_.file("").c_str()), 0);
  EXPECT_EQ(SMAppendToXMLLog("b.xml", 1, 1, 1, "u", "s", "d", nullptr, nullptr, 0, kMiB), 0U);
  ASSERT_EQ(chdir("/"), 0);
  EXPECT_TRUE(parse_xml_log(content_of(scratch_.file("b.xml"))).has_value());
}

TEST_F(XmlLog, ThatIsAPipeIsNotWrittenToAndKeepsItsBits) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  chmod(path_.c_str(), 0755);
  EXPECT_EQ(add(), kFailed);
  EXPECT_EQ(mode_of(path_), 0755U);
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.xml"});
}

TEST_F(XmlLog, IsNotBackedUpForDataThatItRefuses) {
  put(path_, std::string(100, 'x'));
  EXPECT_EQ(add("u", "s", "d", nullptr, std::string(32769, 'x'), 1),
            SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(SMAppendToXMLLog(path_.c_str(), 1, 1, 1, "u", "s", "d", nullptr, nullptr, 1, 1),
            SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"a.xml"});
  EXPECT_EQ(content_of(path_), std::string(100, 'x'));
}

TEST_F(XmlLog, HasItsDirectoryMadeBeforeItShowsThatTheCategoryIsUnknown) {
  const std::string path = scratch_.file("made/b.xml");
  EXPECT_EQ(SMAppendToXMLLog(path.c_str(), 1, 7, 1, "u", "s", "d", nullptr, nullptr, 0, kMiB),
            kFailed);
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"made"});
}

TEST_F(XmlLog, IsNoDirectoryAndInNoFile) {
  ASSERT_EQ(mkdir(path_.c_str(), 0755), 0);
  EXPECT_EQ(add(), kFailed);
  ASSERT_EQ(rmdir(path_.c_str()), 0);
  put(scratch_.file("file"), "x");
  EXPECT_EQ(SMAppendToXMLLog(scratch_.file("file/b.xml").c_str(), 1, 1, 1, "u", "s", "d", nullptr,
                             nullptr, 0, kMiB),
            kFailed);
  EXPECT_EQ(SMAppendToXMLLog(scratch_.file("no/such/b.xml").c_str(), 1, 1, 1, "u", "s", "d",
                             nullptr, nullptr, 0, kMiB),
            kFailed);
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"file"});
}

// ---- What killed processes left ----

TEST_F(EventLog, TakesTheRestOfAnUnfinishedRecordAway) {
  EXPECT_EQ(append(SM_LOG_TEXT, "first", "a\r\n\r\nb"), 0U);
  const size_t one = content_of(text_).size();
  EXPECT_EQ(append(SM_LOG_TEXT, "second", "c\r\n\r\nd", 4, 1, "data"), 0U);
  const std::string both = content_of(text_);
  remove_all();
  EXPECT_EQ(append(SM_LOG_TEXT, "third"), 0U);
  const std::string third = content_of(text_).substr(256);
  for (size_t size = 256; size < both.size(); ++size) {
    put(text_, both.substr(0, size));
    EXPECT_EQ(append(SM_LOG_TEXT, "third"), 0U);
    const std::string kept = both.substr(0, size < one ? 256 : one);
    const std::string after = content_of(text_);
    ASSERT_EQ(after.size(), kept.size() + third.size()) << size;
    ASSERT_EQ(after.substr(0, kept.size()), kept) << size;
  }
}

TEST_F(EventLog, TakesTheRestOfAnUnfinishedBlockAway) {
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  const std::string one = content_of(text_);
  for (size_t size = 1; size < 256; ++size) {
    put(text_, one.substr(0, size));
    EXPECT_EQ(append(SM_LOG_TEXT), 0U);
    ASSERT_EQ(records().size(), 1U) << size;
  }
}

TEST_F(EventLog, TakesNothingElseAway) {
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  const std::string one = content_of(text_);
  for (const std::string& foreign : {std::string("x"), std::string("foreign\r\n"),
                                     std::string(9, '\0'), std::string(600000, 'E')}) {
    put(text_, one + foreign);
    EXPECT_EQ(append(SM_LOG_TEXT), 0U);
    EXPECT_EQ(content_of(text_).substr(0, one.size() + foreign.size()), one + foreign);
  }
}

TEST_F(XmlLog, TakesTheRestOfAnUnfinishedElementAway) {
  EXPECT_EQ(add("user", "first"), 0U);
  const std::string one = content_of(path_);
  EXPECT_EQ(add("user", "second", "text", nullptr, "data"), 0U);
  const std::string two = content_of(path_);
  const std::string begin = one.substr(0, 48);
  for (const std::string& before : {begin + "</EventLog>", one}) {
    const std::string after = before == one ? two : one;
    const size_t place = before.size() - 11;
    for (size_t written = 1; written < after.size() - place; ++written) {
      std::string torn = after.substr(0, place + written);
      if (torn.size() < before.size()) {
        torn += before.substr(torn.size());
      }
      // What ends with an element lost its end alone, which nobody mends.
      const bool is_lost = torn.ends_with("</LogEntry>");
      put(path_, torn);
      EXPECT_EQ(add("user", "third"), is_lost ? SMStatus{SM_STATUS_OPERATION_FAILED} : 0U) << torn;
      if (is_lost) {
        EXPECT_EQ(content_of(path_), torn);
        continue;
      }
      const size_t whole =
          place + written > after.size() - 11 ? elements().size() - 1 : before == one;
      ASSERT_EQ(elements().size(), whole + 1) << torn;
      EXPECT_EQ(child(elements().back(), "Source"), "third");
    }
  }
}

// ---- Clearing ----

TEST_F(EventLog, IsClearedWithAnEvent) {
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
  EXPECT_EQ(SMClearLog(SM_LOG_TEXT | SM_LOG_XML, 2, "who"), 0U);
  const std::vector<Record> made = records();
  ASSERT_EQ(made.size(), 1U);
  EXPECT_EQ(made[0].id, 0U);
  EXPECT_EQ(made[0].source, "who");
  EXPECT_EQ(made[0].category, "Drosset");
  EXPECT_EQ(made[0].type, "Information");
  EXPECT_EQ(made[0].description, "Log was cleared");
  const auto elements = parse_xml_log(content_of(xml_));
  ASSERT_TRUE(elements.has_value());
  ASSERT_EQ(elements->size(), 1U);
  EXPECT_EQ(child(elements->at(0), "ID"), "0");
  EXPECT_EQ(child(elements->at(0), "Type"), "4");
  EXPECT_EQ(child(elements->at(0), "UserInfo"), "Local System");
  EXPECT_EQ(child(elements->at(0), "Source"), "who");
  EXPECT_EQ(child(elements->at(0), "Category"), "Drosset");
  EXPECT_EQ(child(elements->at(0), "Description"), "Log was cleared");
  EXPECT_EQ(child(elements->at(0), "Link"),
            "help/qor/en/msgguide/wwhelp/wwhimpl/common/html/"
            "wwhelp.htm?context=Messages_Guide&amp;topic=0000");
}

TEST_F(EventLog, ThatIsNotThereCannotBeCleared) {
  EXPECT_EQ(SMClearLog(SM_LOG_TEXT, 1, "s"), kFailed);
  EXPECT_EQ(SMClearLog(SM_LOG_XML, 1, "s"), kFailed);
  EXPECT_EQ(SMClearXMLLog(xml_.c_str(), 1, "u", "s"), kFailed);
  EXPECT_EQ(content_of(text_), "(no file)");
  EXPECT_EQ(content_of(xml_), "(no file)");
  EXPECT_EQ(SMClearLog(0, 1, "s"), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(SMClearLog(SM_LOG_OS, 1, "s"), 1U);
  EXPECT_EQ(SMClearLog(SM_LOG_OS | SM_LOG_XML, 1, "s"), 1U);
  // Both are tried.
  EXPECT_EQ(append(SM_LOG_XML), 0U);
  EXPECT_EQ(SMClearLog(SM_LOG_TEXT | SM_LOG_XML, 1, "s"), kFailed);
  EXPECT_EQ(child(parse_xml_log(content_of(xml_)).value()[0], "Description"), "Log was cleared");
}

TEST_F(EventLog, IsNotClearedWhenThatCouldNotBeTold) {
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
  const std::string before = content_of(text_);
  const std::string xml_before = content_of(xml_);
  const std::string too_long(1024, 's');
  EXPECT_EQ(SMClearLog(SM_LOG_TEXT, 1, nullptr), SMStatus{SM_STATUS_UNSUCCESSFUL});
  for (const char* source : {"", too_long.c_str()}) {
    EXPECT_EQ(SMClearLog(SM_LOG_TEXT, 1, source), SMStatus{SM_STATUS_UNSUCCESSFUL});
    EXPECT_EQ(SMClearLog(SM_LOG_XML, 1, source), SMStatus{SM_STATUS_UNSUCCESSFUL});
    EXPECT_EQ(SMClearXMLLog(xml_.c_str(), 1, source, "s"), SMStatus{SM_STATUS_UNSUCCESSFUL});
  }
  EXPECT_EQ(SMClearXMLLog(nullptr, 1, "u", "s"), SMStatus{SM_STATUS_UNSUCCESSFUL});
  EXPECT_EQ(SMClearLog(SM_LOG_XML, 7, "s"), kFailed);
  EXPECT_EQ(content_of(text_), before);
  EXPECT_EQ(content_of(xml_), xml_before);
}

TEST_F(EventLog, ThatIsNotThereCannotBeClearedWhateverIsToBeTold) {
  EXPECT_EQ(SMClearLog(SM_LOG_TEXT, 1, ""), kFailed);
  EXPECT_EQ(SMClearLog(SM_LOG_XML, 1, ""), kFailed);
  EXPECT_EQ(SMClearXMLLog(xml_.c_str(), 1, "", "s"), kFailed);
}

TEST_F(EventLog, KeepsItsBackupWhenItIsCleared) {
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
  put(backup_of(text_), "text");
  put(backup_of(xml_), "xml");
  EXPECT_EQ(SMClearLog(SM_LOG_TEXT | SM_LOG_XML, 1, "s"), 0U);
  EXPECT_EQ(content_of(backup_of(text_)), "text");
  EXPECT_EQ(content_of(backup_of(xml_)), "xml");
}

TEST_F(EventLog, ThatIsNotMeantIsNotCleared) {
  EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML), 0U);
  const std::string before = content_of(text_);
  const std::string xml_before = content_of(xml_);
  EXPECT_EQ(SMClearLog(16, 1, "s"), 0U);
  EXPECT_EQ(content_of(text_), before);
  EXPECT_EQ(SMClearLog(SM_LOG_TEXT, 1, "s"), 0U);
  EXPECT_EQ(content_of(xml_), xml_before);
}

TEST_F(EventLog, OfAnUnknownCategoryIsClearedSilently) {
  EXPECT_EQ(append(SM_LOG_TEXT), 0U);
  EXPECT_EQ(SMClearLog(SM_LOG_TEXT, 7, "s"), 0U);
  EXPECT_EQ(content_of(text_), "(no file)");
}

// ---- Sizes ----

TEST(LogSize, IsOneMebibyteUntilItIsSet) {
  const std::string path = "/some/log" + std::to_string(getpid());
  uint32_t size = 0;
  EXPECT_EQ(SMGetLogMaxSize(path.c_str(), &size), 0U);
  EXPECT_EQ(size, kMiB);
  for (const uint32_t set : {4194304U, kMiB, 2000000U}) {
    EXPECT_EQ(SMSetLogMaxSize(path.c_str(), set), 0U);
    EXPECT_EQ(SMGetLogMaxSize(path.c_str(), &size), 0U);
    EXPECT_EQ(size, set);
  }
  for (const uint32_t wrong : {0U, 131072U, 1048575U, 4194305U, 4294967295U}) {
    EXPECT_EQ(SMSetLogMaxSize(path.c_str(), wrong), SMStatus{SM_STATUS_INVALID_PARAMETER});
  }
  EXPECT_EQ(SMGetLogMaxSize(path.c_str(), &size), 0U);
  EXPECT_EQ(size, 2000000U);
  EXPECT_EQ(SMGetLogMaxSize((path + "x").c_str(), &size), 0U);
  EXPECT_EQ(size, kMiB);
}

TEST(LogSize, IsOfAPathOf1To255Bytes) {
  uint32_t size = 5;
  const std::string longest(255, 'p');
  EXPECT_EQ(SMSetLogMaxSize(longest.c_str(), 2 * kMiB), 0U);
  EXPECT_EQ(SMGetLogMaxSize(longest.c_str(), &size), 0U);
  EXPECT_EQ(size, 2 * kMiB);
  const std::string too_long(256, 'p');
  for (const char* path : {static_cast<const char*>(nullptr), "", too_long.c_str()}) {
    EXPECT_EQ(SMSetLogMaxSize(path, kMiB), SMStatus{SM_STATUS_INVALID_PARAMETER});
    EXPECT_EQ(SMGetLogMaxSize(path, &size), SMStatus{SM_STATUS_INVALID_PARAMETER});
  }
  EXPECT_EQ(SMGetLogMaxSize("p", nullptr), SMStatus{SM_STATUS_INVALID_PARAMETER});
  EXPECT_EQ(size, 2 * kMiB);
}

TEST(LogSize, OfManyLogsIsKeptForEach) {
  for (uint32_t i = 0; i < 500; ++i) {
    EXPECT_EQ(SMSetLogMaxSize(("many" + std::to_string(i)).c_str(), kMiB + i), 0U);
  }
  for (uint32_t i = 0; i < 500; ++i) {
    uint32_t size = 0;
    EXPECT_EQ(SMGetLogMaxSize(("many" + std::to_string(i)).c_str(), &size), 0U);
    EXPECT_EQ(size, kMiB + i);
  }
}

// ---- Threads ----

TEST_F(EventLog, IsAppendedToByAChildThatWasMadeWhileAThreadAppended) {
  if (!survives_forks()) {
    GTEST_SKIP() << "what runs this does not survive such a fork";
  }
  std::atomic<bool> done = false;
  std::thread appending([&] {
    while (!done) {
      append(SM_LOG_TEXT | SM_LOG_XML, "parent");
    }
  });
  int status = 0;
  for (int i = 0; i < 500 && status == 0; ++i) {
    status = in_child([] { return append(SM_LOG_TEXT | SM_LOG_XML, "child") == 0U ? 0 : 1; });
  }
  done = true;
  appending.join();
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(parse_text_log(content_of(text_)).has_value());
  EXPECT_TRUE(parse_xml_log(content_of(xml_)).has_value());
}

TEST_F(EventLog, IsAppendedToByManyThreads) {
  constexpr unsigned kThreads = 4;
  constexpr unsigned kEvents = 100;
  std::vector<std::thread> threads;
  for (unsigned thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([this, thread] {
      for (unsigned i = 0; i < kEvents; ++i) {
        const std::string description = std::to_string(thread * kEvents + i);
        EXPECT_EQ(append(SM_LOG_TEXT | SM_LOG_XML, "s", description.c_str()), 0U);
        EXPECT_EQ(SMSetLogMaxSize(text_.c_str(), kMiB + i), 0U);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  std::set<std::string> texts;
  for (const Record& record : records()) {
    EXPECT_TRUE(texts.insert(record.description).second) << record.description;
  }
  EXPECT_EQ(texts.size(), kThreads * kEvents);
  EXPECT_EQ(parse_xml_log(content_of(xml_)).value().size(), kThreads * kEvents);
}

// ---- Disks ----

// The text log has one place, over which a small disk is laid.
TEST_F(EventLog, KeepsItsRecordsOnAFullDisk) {
  const std::string directory = text_.substr(0, text_.rfind('/'));
  const auto run = [](const kqsupt::tests::Command& command) {
    return kqsupt::tests::run_native(command).exit_status == 0;
  };
  ASSERT_TRUE(run({"mount", "-t", "tmpfs", "-o", "size=64k", "full", directory}));
  const std::string description(1000, 'd');
  std::string before;
  std::string after;
  for (int i = 0; i < 100 && after.size() >= before.size(); ++i) {
    before = std::exchange(after, std::string());
    EXPECT_EQ(append(SM_LOG_TEXT, "s", description.c_str()), 0U);  // silently
    after = content_of(text_);
    if (after == before) {
      break;
    }
  }
  EXPECT_EQ(after, before);
  const auto records = parse_text_log(after);
  EXPECT_TRUE(records.has_value());
  EXPECT_GT(records.value_or(std::vector<Record>()).size(), 10U);
  EXPECT_TRUE(run({"umount", "-l", directory}));
}

class FullDisk : public kqsupt::tests::FullDisk {};

TEST_F(FullDisk, LeavesTheEventsAsTheyAre) {
  const std::string path = scratch_.file("a.xml");
  const std::string text(8000, 't');
  const auto add = [&] {
    return SMAppendToXMLLog(path.c_str(), 1, 1, 1, "u", "s", text.c_str(), nullptr, nullptr, 0,
                            kMiB);
  };
  // In a file of its own, in the midst of an element, and when the end alone found no room.
  for (const int left : {0, 1, 2}) {
    for (const bool is_new : {true, false}) {
      unlink(path.c_str());
      if (!is_new) {
        EXPECT_EQ(add(), 0U);
      }
      const std::string before = content_of(path);
      const auto names_before = names();
      fill(left);
      SMStatus status = add();
      while (!is_new && status == SM_STATUS_SUCCESS) {
        status = add();  // what is left of the last page may be enough for one
      }
      if (status == SM_STATUS_SUCCESS) {
        EXPECT_TRUE(parse_xml_log(content_of(path)).has_value());
      } else {
        EXPECT_EQ(status, SMStatus{SM_STATUS_OUT_OF_SPACE});
        EXPECT_TRUE(!is_new ? parse_xml_log(content_of(path)).has_value()
                            : content_of(path) == before);
        EXPECT_EQ(names(), names_before);
      }
      make_room();
      EXPECT_EQ(add(), 0U);
      EXPECT_TRUE(parse_xml_log(content_of(path)).has_value());
    }
  }
}

TEST_F(FullDisk, LeavesWhatIsBehindTheEndOfTheEventsAsItIs) {
  const std::string path = scratch_.file("a.xml");
  const std::string text(8000, 't');
  const auto add = [&] {
    return SMAppendToXMLLog(path.c_str(), 1, 1, 1, "u", "s", text.c_str(), nullptr, nullptr, 0,
                            kMiB);
  };
  EXPECT_EQ(add(), 0U);
  for (const size_t behind : {1, 20, 5000, 9000}) {
    const std::string before = content_of(path) + std::string(behind, 'j');
    put(path, before);
    fill(0);
    const SMStatus status = add();
    EXPECT_TRUE(status == SM_STATUS_OUT_OF_SPACE ? content_of(path) == before
                                                 : status == SM_STATUS_SUCCESS)
        << behind << ": " << status;
    make_room();
    EXPECT_EQ(add(), 0U);
  }
}

TEST_F(FullDisk, LeavesALinkToNothingAsItIs) {
  const std::string path = scratch_.file("a.xml");
  ASSERT_EQ(symlink("b.xml", path.c_str()), 0);
  const std::string text(8000, 't');
  fill(1);
  EXPECT_EQ(
      SMAppendToXMLLog(path.c_str(), 1, 1, 1, "u", "s", text.c_str(), nullptr, nullptr, 0, kMiB),
      SMStatus{SM_STATUS_OUT_OF_SPACE});
  struct stat about {};
  EXPECT_EQ(lstat(path.c_str(), &about), 0);
  const std::string left = content_of(scratch_.file("b.xml"));
  EXPECT_TRUE(left.empty() || left == "(no file)") << left;
}

class ReadOnly : public kqsupt::tests::ReadOnly {};

TEST_F(ReadOnly, TakesNoEvents) {
  const std::string path = scratch_.file("a.xml");
  const auto add = [](const std::string& to) {
    return SMAppendToXMLLog(to.c_str(), 1, 1, 1, "u", "s", "d", nullptr, nullptr, 0, kMiB);
  };
  EXPECT_EQ(add(path), 0U);
  const std::string before = content_of(path);
  close_for_writing();
  EXPECT_EQ(add(path), kFailed);
  EXPECT_EQ(add(scratch_.file("b.xml")), kFailed);
  EXPECT_EQ(add(scratch_.file("directory/b.xml")), kFailed);
  EXPECT_EQ(SMClearXMLLog(path.c_str(), 1, "u", "s"), kFailed);
  EXPECT_EQ(content_of(path), before);
}

}  // namespace
