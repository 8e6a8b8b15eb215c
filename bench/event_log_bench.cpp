// Events in the logs, beside the system calls that one cannot be logged without.

#include <fcntl.h>
#include <kqsupt/log.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

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

// Opens and locks a lock file, opens the log and looks at it, writes as many bytes as an event has,
// and gives all of it up, when the bits of the lock file are compared with those of the log.
void do_floor(size_t count) {
  static const std::string log = no_log(SM_LOG_TEXT);
  static const std::string lock_file = log + ".lock";
  static const std::string record(event_size(), 'x');
  unlink(log.c_str());
  close(open(log.c_str(), O_WRONLY | O_CREAT, 0664));
  for (size_t i = 0; i < count; ++i) {
    struct stat about {};
    const int held = open(lock_file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    require(fcntl(held, F_SETLKW, &lock) == 0);
    const int file = open(log.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    require(fstat(file, &about) == 0);
    require(write(file, record.data(), record.size()) == static_cast<ssize_t>(record.size()));
    close(file);
    require(stat(log.c_str(), &about) == 0 && fstat(held, &about) == 0);
    lock.l_type = F_UNLCK;
    require(fcntl(held, F_SETLKW, &lock) == 0);
    close(held);
  }
}

constexpr const char* kXmlRow = "events/xml";
constexpr const char* kManyRow = "events/8 processes";

void add_appends(const char* row, const char* contestant, uint32_t log) {
  add_measurement(
      row, contestant, kEvents, [log] { return no_log(log); },
      [log](const char*) { append(log, kEvents); });
}

// By the clock on the wall; every event is there at the end.
void add_processes(const char* contestant, int processes) {
  add_process_measurement(
      kManyRow, contestant, processes, kEvents * kProcesses / static_cast<size_t>(processes),
      [] { return no_log(SM_LOG_TEXT); },
      [processes](const char*) {
        append(SM_LOG_TEXT, kEvents * kProcesses / static_cast<size_t>(processes));
      });
}

const bool kAdded = [] {
  add_family({"event log",
              {kFloor, "log4cplus", kText, kOne},
              {{kTextEventRow, "an event of 200 characters, text", 1.3, kFloor},
               {kXmlRow, "the same, XML", 1.5, kText},
               {kManyRow, "8 processes at once, beside one", 1.25, kOne}}});
  add_appends(kTextEventRow, kOurs, SM_LOG_TEXT);
  add_measurement(
      kTextEventRow, kFloor, kEvents, [] { return kEvents; }, do_floor);
  add_appends(kXmlRow, kOurs, SM_LOG_XML);
  add_appends(kXmlRow, kText, SM_LOG_TEXT);
  add_processes(kOurs, kProcesses);
  add_processes(kOne, 1);
  return true;
}();

}  // namespace
}  // namespace kqbench
