// Events in the logs, beside the system calls that one cannot be logged without.

#include <fcntl.h>
#include <kqsupt/log.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "event_log_bench.h"
#include "many_processes.h"
#include "measure.h"
#include "ratio_table.h"

namespace kqbench {
namespace {

constexpr const char* kFloor = "floor";
constexpr const char* kText = "text";
constexpr const char* kOne = "one";
constexpr int kProcesses = 8;
constexpr uint32_t kMaxSize = 4194304;

std::string log_path(uint32_t log) {
  char path[512];
  uint32_t size = sizeof path;
  require(SMGetLogPathFileName(log, path, &size) == 0);
  require(SMSetLogMaxSize(path, kMaxSize) == 0);
  return path;
}

// No log, so that none comes to its backup: that is measured by nobody.
const char* no_log(uint32_t log) {
  static const std::string text = log_path(SM_LOG_TEXT);
  static const std::string xml = log_path(SM_LOG_XML);
  const std::string& path = log == SM_LOG_TEXT ? text : xml;
  unlink(path.c_str());
  return path.c_str();
}

void append(uint32_t log, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    require(SMAppendToLog(log, SM_EVENT_INFORMATION, 1, 1001, "bench", kEventDescription.c_str(),
                          nullptr, 0) == 0);
  }
}

// The size of one event in the text log, its header left out.
size_t event_size() {
  const char* path = no_log(SM_LOG_TEXT);
  append(SM_LOG_TEXT, 2);
  struct stat about {};
  require(stat(path, &about) == 0);
  return (static_cast<size_t>(about.st_size) - 256) / 2;
}

void lock_as(int file, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  require(fcntl(file, F_SETLKW, &lock) == 0);
}

// Opens and locks a lock file, opens the log and looks at its size and bits, writes as many bytes as
// an event has, looks at the bits of the lock file, and gives all of it up.
void do_floor(size_t count) {
  static const std::string log = no_log(SM_LOG_TEXT);
  static const std::string lock_file = log + ".lock";
  static const std::string record(event_size(), 'x');
  unlink(log.c_str());
  close(open(log.c_str(), O_WRONLY | O_CREAT, 0664));
  for (size_t i = 0; i < count; ++i) {
    struct stat about {};
    const int held = open(lock_file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    lock_as(held, F_WRLCK);
    const int file = open(log.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    require(fstat(file, &about) == 0);
    require(write(file, record.data(), record.size()) == static_cast<ssize_t>(record.size()));
    close(file);
    require(fstat(held, &about) == 0);
    lock_as(held, F_UNLCK);
    close(held);
  }
}

constexpr const char* kXmlRow = "events/xml";
constexpr const char* kManyTextRow = "events/text of 8 processes";
constexpr const char* kManyXmlRow = "events/XML of 8 processes";

void add_appends(const char* row, const char* contestant, uint32_t log) {
  add_measurement(
      row, contestant, kEvents, [log] { return no_log(log); },
      [log](const char*) { append(log, kEvents); });
}

// What each event of a log has once.
std::string mark_of(uint32_t log) {
  if (log == SM_LOG_XML) {
    return "<LogEntry>";
  }
  std::string units;
  for (const char16_t unit : std::u16string_view(u"EventID: ")) {
    units.append(reinterpret_cast<const char*>(&unit), sizeof unit);
  }
  return units;
}

// A log that is not there yet, and in the end has each event that was appended to it.
class CountedLog {
 public:
  CountedLog(uint32_t log, size_t events) : log_(log), events_(events), path_(no_log(log)) {}
  ~CountedLog() {
    std::ifstream file(path_, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::string mark = mark_of(log_);
    size_t count = 0;
    for (size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += mark.size()) {
      ++count;
    }
    require(count == events_);
  }
  CountedLog(const CountedLog&) = delete;
  CountedLog& operator=(const CountedLog&) = delete;

 private:
  uint32_t log_;
  size_t events_;
  const char* path_;
};

// By the clock on the wall, and as many events however many processes write them: fewer than come
// to a backup.
void add_processes(const char* row, const char* contestant, uint32_t log, int processes) {
  constexpr size_t kAll = 3200;
  const size_t each = kAll / static_cast<size_t>(processes);
  add_process_measurement(
      row, contestant, processes, each, [log] { return CountedLog(log, kAll); },
      [=](const CountedLog&) { append(log, each); });
}

const bool kAdded = [] {
  add_family({"event log",
              {kFloor, "log4cplus", kText, kOne},
              {{kTextEventRow, "an event of 200 characters, text", 1.3, kFloor},
               {kXmlRow, "the same, XML", 1.5, kText},
               {kManyTextRow, "text, 8 processes at once beside one", 1.25, kOne},
               {kManyXmlRow, "XML, 8 processes at once beside one", 1.25, kOne}}});
  add_appends(kTextEventRow, kOurs, SM_LOG_TEXT);
  add_measurement(
      kTextEventRow, kFloor, kEvents, [] { return kEvents; }, do_floor);
  add_appends(kXmlRow, kOurs, SM_LOG_XML);
  add_appends(kXmlRow, kText, SM_LOG_TEXT);
  add_processes(kManyTextRow, kOurs, SM_LOG_TEXT, kProcesses);
  add_processes(kManyTextRow, kOne, SM_LOG_TEXT, 1);
  add_processes(kManyXmlRow, kOurs, SM_LOG_XML, kProcesses);
  add_processes(kManyXmlRow, kOne, SM_LOG_XML, 1);
  return true;
}();

}  // namespace
}  // namespace kqbench
