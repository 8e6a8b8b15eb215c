// Printing a full log by kqsup, beside what only decodes it. Both are whole processes.

#include <fcntl.h>
#include <kqsupt/log.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "event_log_bench.h"
#include "measure.h"
#include "ratio_table.h"

extern char** environ;

namespace kqbench {
namespace {

constexpr const char* kTextRow = "log show/text";
constexpr const char* kXmlRow = "log show/xml";
constexpr const char* kIconv = "iconv";

// A log that takes few more events, and how many bytes it has.
struct FullLog {
  std::string path;
  size_t size = 0;
};

FullLog make_full_log(uint32_t log) {
  constexpr uint32_t kLargest = 4194304;
  char path[512];
  uint32_t size = sizeof path;
  require(SMGetLogPathFileName(log, path, &size) == 0);
  require(SMSetLogMaxSize(path, kLargest) == 0);
  unlink(path);
  struct stat about {};
  while (about.st_size < off_t{kLargest} - 8192) {
    require(SMAppendToLog(log, SM_EVENT_INFORMATION, 1, 1001, "bench", kEventDescription.c_str(),
                          nullptr, 0) == 0);
    require(stat(path, &about) == 0);
  }
  // Other measurements begin with no log.
  const std::string full = std::string(path) + ".full";
  require(rename(path, full.c_str()) == 0);
  return {full, static_cast<size_t>(about.st_size)};
}

template <uint32_t kLog>
const FullLog& full_log() {
  static const FullLog log = make_full_log(kLog);
  return log;
}

double seconds_of(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

// The processor time of a process from its start to its end, the kernel's included.
double run_to_nowhere(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  require(posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ) == 0);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage used{};
  require(wait4(process, &status, 0, &used) == process);
  require(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  return seconds_of(used.ru_utime) + seconds_of(used.ru_stime);
}

// An operation is a byte of the log.
void add_process(const char* row, const FullLog& (*log_of)(), const char* contestant,
                 std::vector<std::string> words) {
  const auto run = [words, log_of](benchmark::State& state) {
    const FullLog& log = log_of();
    std::vector<std::string> command = words;
    command.push_back(log.path);
    for (auto _ : state) {
      state.SetIterationTime(run_to_nowhere(command));
    }
    using benchmark::Counter;
    const double bytes = static_cast<double>(state.iterations()) * static_cast<double>(log.size);
    state.counters[kNanoseconds] = Counter(bytes * 1e-9, Counter::kIsRate | Counter::kInvert);
  };
  benchmark::RegisterBenchmark((std::string(row) + '/' + contestant).c_str(), run)->UseManualTime();
}

const bool kAdded = [] {
  // 100 MB in a second are 10 nanoseconds a byte.
  add_family({"kqsup log show",
              {kIconv},
              {{kTextRow, "a byte of a full text log, of processor time", 3, kIconv},
               {kXmlRow, "a byte of a full XML log, of processor time", 3, kIconv}}});
  const std::vector<std::string> show{std::string(KQSUPT_BIN_DIR) + "/kqsup", "log", "show"};
  add_process(kTextRow, full_log<SM_LOG_TEXT>, kOurs, show);
  add_process(kTextRow, full_log<SM_LOG_TEXT>, kIconv, {"iconv", "-f", "UTF-16LE", "-t", "UTF-8"});
  add_process(kXmlRow, full_log<SM_LOG_XML>, kOurs, show);
  add_process(kXmlRow, full_log<SM_LOG_XML>, kIconv, {"iconv", "-f", "UTF-8", "-t", "UTF-8"});
  return true;
}();

}  // namespace
}  // namespace kqbench
