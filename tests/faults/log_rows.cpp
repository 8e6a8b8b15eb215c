// XML text and logs under failing allocations.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "faults/open_descriptors.h"
#include "faults/sweep.h"
#include "gtest/gtest.h"
#include "kqsupt/log.h"
#include "support/failing_heap.h"
#include "support/scratch.h"

namespace kqsupt::tests {
namespace {

// A buffer with just its first 64 bytes, almost full.
struct Xml {
  Xml() { (void)SMXGBufCatBeginNode(buffer, before.substr(1, before.size() - 2).c_str(), nullptr); }
  ~Xml() {
    SMXGBufFree(buffer);
    SMXGBufFree(made);
    SMFreeMem(text);
  }
  [[nodiscard]] bool unchanged() const {
    return made == nullptr && text == nullptr && before == buffer->string.content &&
           buffer->string.length == before.size();
  }
  std::string before = "<" + std::string(58, 'n') + ">";
  SMXGBuf* buffer = SMXGBufAlloc(64, 0);
  SMXGBuf* made = nullptr;
  char* text = nullptr;
  uint8_t bytes[100] = {};
  ustring ucs2[4] = {'a', 0xE9, '<', 0};
  SMXGValueFormat escaped{0, 2};
};

Row xml_row(const std::string& name, const Failures& failures, SMStatus (*call)(Xml&)) {
  return row<Xml>(name, failures, call, [](Xml& state) { return state.unchanged(); });
}

const Failures kNoMemory = {{SM_STATUS_NO_MEMORY, 0}};
constexpr SMStatus kFailed = 0xFFFFFFFF;

SMStatus done(bool is_done) {
  return is_done ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
}

// ---- Event logs ----

constexpr uint32_t kTextLog = 4;
constexpr uint32_t kXmlLog = 8;
constexpr uint32_t kMaxSize = 1048576;
constexpr char kNoFile[] = "(no file)";  // what content_of() says

// The rows use the same few paths: the library keeps the lock and the size of a path from its first
// use on.
std::string own_log(const char* name) {
  return std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/Quillance/log/log/" + name;
}
const std::string& text_log() {
  static const std::string path = own_log("kqsys32.log");
  return path;
}
const std::string& xml_log() {
  static const std::string path = own_log("kqsys32.xml");
  return path;
}
const std::string& other_log() {
  static const std::string path = own_log("other.xml");
  return path;
}
std::string backup_of(const std::string& path) {
  return path.substr(0, path.size() - 1) + "_";
}

// As put(), with no allocation.
void put_bytes(const std::string& path, const std::string& content) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  (void)!write(file, content.data(), content.size());
  close(file);
}

void remove_logs() {
  for (const std::string& path : {text_log(), xml_log(), other_log()}) {
    std::filesystem::remove(path);
    std::filesystem::remove(backup_of(path));
  }
}

SMStatus append_event(uint32_t flags) {
  return SMAppendToLog(flags, 1, 2, 7, "source", "description", "0123456789abcdefg", 17);
}
SMStatus append_to_other_log(uint32_t max_size = kMaxSize) {
  return SMAppendToXMLLog(other_log().c_str(), 1, 2, 7, "user", "source", "description", "<link>",
                          "0123456789abcdefg", 17, max_size);
}

// What the logs hold without failures, but for the times.
std::string without_times(std::string content) {
  std::string time;  // "Date and Time: ", as the text log has it
  for (const char16_t unit : std::u16string(u"Date and Time: ")) {
    time.append(reinterpret_cast<const char*>(&unit), 2);
  }
  for (size_t at = content.find(time); at != std::string::npos; at = content.find(time, at + 1)) {
    std::fill_n(content.begin() + static_cast<std::ptrdiff_t>(at + time.size()),
                std::min<size_t>(48, content.size() - at - time.size()), 't');
  }
  for (const std::string element : {"TimeStamp", "DateTime"}) {
    for (size_t at = content.find("<" + element + ">"); at != std::string::npos;
         at = content.find("<" + element + ">", at + 1)) {
      const size_t start = at + element.size() + 2;
      content.replace(start, content.find('<', start) - start, "t");
    }
  }
  return content;
}

struct Contents {
  std::string log;
  std::string backup;
  bool operator==(const Contents&) const = default;
};
Contents contents_of(const std::string& path) {
  return {without_times(content_of(path)), without_times(content_of(backup_of(path)))};
}

// What the rows compare with, made while there is memory.
struct References {
  References() {
    remove_logs();
    (void)append_event(kTextLog | kXmlLog);
    (void)append_to_other_log();
    text = content_of(text_log());
    xml = content_of(xml_log());
    other = content_of(other_log());
    // Full but for less than an event.
    full_text = text + std::string(kMaxSize - text.size(), 'x');
    const size_t end = xml.rfind("</EventLog>");
    full_xml = xml.substr(0, end) + std::string(kMaxSize - xml.size(), 'x') + xml.substr(end);
    (void)SMClearLog(kTextLog | kXmlLog, 1, "source");
    cleared_text = without_times(content_of(text_log()));
    cleared_xml = without_times(content_of(xml_log()));
  }
  std::string text;
  std::string xml;
  std::string other;
  std::string full_text;
  std::string full_xml;
  std::string cleared_text;
  std::string cleared_xml;
};
const References& references() {
  static const References references;
  return references;
}

// The events that follow each other in a log, of one that the log as it is ends with.
std::string last_text_event() {
  return without_times(references().text).substr(256);
}
std::string with_another_xml_event(const std::string& log) {
  const std::string empty = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog>";
  const std::string end = "</EventLog>";
  const std::string event = references().xml.substr(empty.size());
  return without_times(log.substr(0, log.size() - end.size()) + event);
}

enum class Size { kNone, kSmall, kFull };

template <uint32_t kFlags, Size kSize>
class OwnLogs {
 public:
  OwnLogs() {
    remove_logs();
    if (kSize != Size::kNone) {
      put(text_log(), kSize == Size::kFull ? references().full_text : references().text);
      put(xml_log(), kSize == Size::kFull ? references().full_xml : references().xml);
      put(backup_of(text_log()), "old backup");
      put(backup_of(xml_log()), "old backup");
    }
    text_ = contents_of(text_log());
    xml_ = contents_of(xml_log());
    descriptors_ = open_descriptors();
  }
  ~OwnLogs() { remove_logs(); }
  OwnLogs(const OwnLogs&) = delete;
  OwnLogs& operator=(const OwnLogs&) = delete;

  // Each log is as it was, or has all of the event.
  [[nodiscard]] bool is_whole() const {
    return is_text_whole() && is_xml_whole() && open_descriptors() == descriptors_;
  }
  // Each log is as it was, or was cleared. One that is missing was deleted, with no memory left for
  // the event that tells so.
  [[nodiscard]] bool is_cleared_or_deleted() const {
    const auto is_one = [](const std::string& path, const Contents& before,
                           const std::string& cleared) {
      const Contents now = contents_of(path);
      return now == before || now.log == cleared || now.log == kNoFile;
    };
    return is_one(text_log(), text_, references().cleared_text) &&
           is_one(xml_log(), xml_, references().cleared_xml) && open_descriptors() == descriptors_;
  }
  // For a call that is made again. Allocates nothing.
  static void restore() {
    put_bytes(text_log(), references().text);
    put_bytes(xml_log(), references().xml);
  }

 private:
  [[nodiscard]] bool is_text_whole() const {
    const Contents now = contents_of(text_log());
    if (now == text_) {
      return true;
    }
    if ((kFlags & kTextLog) == 0) {
      return false;
    }
    const std::string before =
        kSize == Size::kNone ? without_times(references().text).substr(0, 256) : text_.log;
    if (now == Contents{before + last_text_event(), text_.backup}) {
      return true;
    }
    // The backup was made; that it was need not be told.
    return kSize == Size::kFull && now.backup == text_.log &&
           now.log.starts_with(references().text.substr(0, 256)) &&
           now.log.ends_with(last_text_event());
  }
  [[nodiscard]] bool is_xml_whole() const {
    const Contents now = contents_of(xml_log());
    if (now == xml_) {
      return true;
    }
    if ((kFlags & kXmlLog) == 0) {
      return false;
    }
    const std::string alone = without_times(references().xml);
    if (kSize == Size::kNone) {
      return now == Contents{alone, kNoFile};
    }
    if (now == Contents{with_another_xml_event(xml_.log), xml_.backup}) {
      return true;
    }
    const size_t begin = alone.find("<LogEntry>");
    return kSize == Size::kFull && now.backup == xml_.log &&
           now.log.starts_with(alone.substr(0, begin)) && now.log.ends_with(alone.substr(begin));
  }

  Contents text_;
  Contents xml_;
  int descriptors_ = 0;
};

const Failures kNoMemoryOrFailed = {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}};
const Failures kLogFailures = {{SM_STATUS_SUCCESS, 0}, {SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}};

template <uint32_t kFlags, Size kSize>
Row append_row(const std::string& name) {
  using Logs = OwnLogs<kFlags, kSize>;
  // The text log does not tell what became of the event, and a log that cannot be backed up grows.
  Failures failures = {{SM_STATUS_NO_MEMORY, 0}};
  if (kFlags != kXmlLog || kSize == Size::kFull) {
    failures[SM_STATUS_SUCCESS] = 0;
  }
  if ((kFlags & kXmlLog) != 0) {
    failures[kFailed] = 0;
  }
  return row<Logs>(
      name, failures, [](Logs&) { return append_event(kFlags); },
      [](Logs& logs) { return logs.is_whole(); });
}

// An XML log of the caller's, with a backup when it is full.
template <bool kIsFull>
class OtherLog {
 public:
  OtherLog() {
    remove_logs();
    put(other_log(), references().other);
    put(backup_of(other_log()), "old backup");
    descriptors_ = open_descriptors();
  }
  ~OtherLog() { remove_logs(); }
  OtherLog(const OtherLog&) = delete;
  OtherLog& operator=(const OtherLog&) = delete;

  [[nodiscard]] bool is_whole() const {
    const std::string one = without_times(references().other);
    const size_t begin = one.find("<LogEntry>");
    const Contents now = contents_of(other_log());
    const bool has_backup = kIsFull && now.backup == one;
    return open_descriptors() == descriptors_ && now.log.starts_with(one.substr(0, begin)) &&
           now.log.ends_with(one.substr(begin)) && (has_backup || now.backup == "old backup");
  }
  [[nodiscard]] bool is_whole_or_deleted() const {
    return is_whole() ||
           (open_descriptors() == descriptors_ && !std::filesystem::exists(other_log()));
  }

 private:
  int descriptors_ = 0;
};

struct PathOfLog {
  [[nodiscard]] bool unchanged() const {
    return std::all_of(std::begin(buffer), std::end(buffer), [](char byte) { return byte == 0; });
  }
  char buffer[300] = {};
  uint32_t size = sizeof buffer;
};

Row path_row(const std::string& name, SMStatus (*call)(PathOfLog&)) {
  return row<PathOfLog>(name, kNoMemory, call, [](PathOfLog& state) { return state.unchanged(); });
}

std::vector<Row> event_log_rows() {
  // Without a time zone of its own the process has the C library look for the machine's again and
  // again, and allocate.
  setenv("TZ", "UTC0", 1);
  (void)references();
  return {
      append_row<kTextLog, Size::kNone>("SMAppendToLog_text_new"),
      append_row<kTextLog, Size::kSmall>("SMAppendToLog_text"),
      append_row<kTextLog, Size::kFull>("SMAppendToLog_text_full"),
      append_row<kXmlLog, Size::kNone>("SMAppendToLog_xml_new"),
      append_row<kXmlLog, Size::kSmall>("SMAppendToLog_xml"),
      append_row<kXmlLog, Size::kFull>("SMAppendToLog_xml_full"),
      append_row<kTextLog | kXmlLog, Size::kSmall>("SMAppendToLog_both"),
      append_row<kTextLog | kXmlLog, Size::kFull>("SMAppendToLog_both_full"),
      row<OtherLog<false>>(
          "SMAppendToXMLLog", kNoMemoryOrFailed,
          [](OtherLog<false>&) { return append_to_other_log(); },
          [](OtherLog<false>& log) { return log.is_whole(); }),
      row<OtherLog<true>>(
          "SMAppendToXMLLog_full", kLogFailures,
          [](OtherLog<true>&) { return append_to_other_log(1); },
          [](OtherLog<true>& log) { return log.is_whole(); }),
      row<OwnLogs<0, Size::kSmall>>(
          "SMClearLog_text", kNoMemoryOrFailed,
          [](OwnLogs<0, Size::kSmall>& logs) {
            logs.restore();
            return SMClearLog(kTextLog, 1, "source");
          },
          [](OwnLogs<0, Size::kSmall>& logs) { return logs.is_cleared_or_deleted(); }),
      row<OwnLogs<0, Size::kSmall>>(
          "SMClearLog_both", kNoMemoryOrFailed,
          [](OwnLogs<0, Size::kSmall>& logs) {
            logs.restore();
            return SMClearLog(kTextLog | kXmlLog, 1, "source");
          },
          [](OwnLogs<0, Size::kSmall>& logs) { return logs.is_cleared_or_deleted(); }),
      row<OtherLog<false>>(
          "SMClearXMLLog", kNoMemoryOrFailed,
          [](OtherLog<false>&) {
            put_bytes(other_log(), references().other);
            return SMClearXMLLog(other_log().c_str(), 1, "user", "source");
          },
          [](OtherLog<false>& log) { return log.is_whole_or_deleted(); }),
      path_row("SMGetLogPathFileName",
               [](PathOfLog& state) {
                 return SMGetLogPathFileName(kTextLog, state.buffer, &state.size);
               }),
      path_row("SMGetBackupLogPathFileName",
               [](PathOfLog& state) {
                 return SMGetBackupLogPathFileName(kXmlLog, state.buffer, &state.size);
               }),
  };
}

// ---- Sizes, which are kept to the end: each path can be new only once ----

template <class Call>
void sweep_new_paths(const std::string& kind, Call call) {
  int paths = 0;
  for (const Fault fault : {Fault::kOnce, Fault::kFromThen}) {
    bool reached = true;
    for (uint64_t n = 1; reached; ++n) {
      const std::string path = "/" + kind + "/" + std::to_string(++paths);
      const int64_t live_before = live_blocks();
      fail_allocation(n, fault);
      const SMStatus status = call(path.c_str());
      reached = stop_failing() >= n;
      EXPECT_EQ(status, reached ? SM_STATUS_NO_MEMORY : SM_STATUS_SUCCESS);
      EXPECT_EQ(live_blocks() != live_before, !reached) << "blocks lost";
      EXPECT_EQ(call(path.c_str()), SM_STATUS_SUCCESS) << "when it is tried again";
      EXPECT_FALSE(n == 1 && !reached) << "the call allocates nothing";
    }
  }
}

TEST(LogSizeFault, ChangesNothingLosesNothingAndMayBeTriedAgain) {
  sweep_new_paths("set", [](const char* path) { return SMSetLogMaxSize(path, 2000000); });
  sweep_new_paths("get", [](const char* path) {
    uint32_t size = 7;
    const SMStatus status = SMGetLogMaxSize(path, &size);
    return size == (status == SM_STATUS_SUCCESS ? kMaxSize : 7) ? status : kFailed;
  });
}

TEST(LogSizeFault, OfAPathThatIsKnownIsNone) {
  EXPECT_EQ(SMSetLogMaxSize("/sweep/known", 2000000), 0U);
  fail_allocation(1, Fault::kFromThen);
  uint32_t size = 0;
  const SMStatus asked = SMGetLogMaxSize("/sweep/known", &size);
  const SMStatus set = SMSetLogMaxSize("/sweep/known", 3000000);
  EXPECT_EQ(stop_failing(), 0U);
  EXPECT_EQ(asked, 0U);
  EXPECT_EQ(size, 2000000U);
  EXPECT_EQ(set, 0U);
}

// ---- Rotated logs ----

TEST(RotatedLogFault, IsNone) {
  const Scratch scratch;
  const std::string path = scratch.file("trace");
  // The C library reads the local time's rules once.
  EXPECT_EQ(SMFileLogMsgToRotatedLog("old", path.c_str(), 0, 3, 7), 0U);
  const std::string old = content_of(path);
  fail_allocation(1, Fault::kFromThen);
  const SMStatus status = SMFileLogMsgToRotatedLog("new", path.c_str(), 0, 0xFFFFFFFF, 7);
  SMFileRotateCheck(path.c_str(), 0, 0xFFFFFFFF);
  EXPECT_EQ(stop_failing(), 0U);
  EXPECT_EQ(status, 0U);
  EXPECT_EQ(scratch.names(), (std::vector<std::string>{"trace.1", "trace.2"}));
  EXPECT_EQ(content_of(path + ".2"), old);
  fail_allocation(1, Fault::kFromThen);
  SMFileDeleteRotated(path.c_str(), 1, 0xFFFFFFFF);
  EXPECT_EQ(stop_failing(), 0U);
  EXPECT_EQ(scratch.names(), std::vector<std::string>{});
}

}  // namespace

std::vector<Row> log_rows() {
  std::vector<Row> rows = {
      xml_row("SMXGBufAlloc", kNoMemory,
              [](Xml& state) {
                state.made = SMXGBufAlloc(10, 1);
                return done(state.made != nullptr);
              }),
      xml_row(
          "SMXGBufReAllocContent", kNoMemory,
          [](Xml& state) { return done(SMXGBufReAllocContent(state.buffer, 10, 1) != nullptr); }),
      xml_row("SMXGBufCatBeginNode", kNoMemory,
              [](Xml& state) { return SMXGBufCatBeginNode(state.buffer, "node", nullptr); }),
      xml_row("SMXGBufCatEndNode", kNoMemory,
              [](Xml& state) { return SMXGBufCatEndNode(state.buffer, "node"); }),
      xml_row("SMXGBufCatEmptyNode", kNoMemory,
              [](Xml& state) { return SMXGBufCatEmptyNode(state.buffer, "node", nullptr); }),
      xml_row("SMXGBufCatAttribute", kNoMemory,
              [](Xml& state) {
                return SMXGBufCatAttribute(state.buffer, "a", "<value>", 0, SMXLT_TYPE_UTF8,
                                           &state.escaped);
              }),
      xml_row("SMXGBufCatNode_bytes", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatNode(state.buffer, "n", nullptr, state.bytes, sizeof state.bytes,
                                      SMXLT_TYPE_BINARY, nullptr);
              }),
      xml_row("SMXGBufCatNode_ucs2", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatNode(state.buffer, "n", nullptr, state.ucs2, 0, SMXLT_TYPE_UCS2,
                                      &state.escaped);
              }),
      xml_row("SMXGBufCatNodeValue", kNoMemory,
              [](Xml& state) {
                return SMXGBufCatNodeValue(state.buffer, "<value>", 0, SMXLT_TYPE_UTF8,
                                           &state.escaped);
              }),
      xml_row("SMXGBufCatNodeValue_bytes", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatNodeValue(state.buffer, state.bytes, sizeof state.bytes,
                                           SMXLT_TYPE_BINARY, nullptr);
              }),
      xml_row("SMXGBufCatNodeValue_ucs2", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatNodeValue(state.buffer, state.ucs2, 0, SMXLT_TYPE_UCS2,
                                           &state.escaped);
              }),
      xml_row("SMXGBufCatAttribute_bytes", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatAttribute(state.buffer, "a", state.bytes, sizeof state.bytes,
                                           SMXLT_TYPE_BINARY, nullptr);
              }),
      xml_row("SMXGBufCatAttribute_ucs2", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatAttribute(state.buffer, "a", state.ucs2, 0, SMXLT_TYPE_UCS2,
                                           &state.escaped);
              }),
      xml_row("SMXGEscapeXMLUTF8Str", kNoMemory,
              [](Xml& state) {
                uint32_t size = 2;
                state.text = SMXGEscapeXMLUTF8Str("<&>", &size, 2);
                return done(state.text != nullptr);
              }),
  };
  for (const Row& row : event_log_rows()) {
    rows.push_back(row);
  }
  return rows;
}

}  // namespace kqsupt::tests
