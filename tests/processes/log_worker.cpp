// log-worker WORKER COUNT LENGTH [KEEP]: one of several processes that append events to both logs of
// the family: COUNT events, or as many as it gets to when that is 0. KEEP is a directory that gets a
// further name of each file that was a log, so that none is lost when it is no backup any more.

#include <kqsupt/log.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string path_of(uint32_t log) {
  char path[512];
  uint32_t size = sizeof path;
  return SMGetLogPathFileName(log, path, &size) == 0 ? path : "";
}

void keep(const std::string& log, const std::string& directory, const char* kind) {
  struct stat about {};
  if (stat(log.c_str(), &about) == 0) {
    // Between the two another file may take its place, which then has this name, too.
    (void)!link(log.c_str(), (directory + "/" + kind + std::to_string(about.st_ino)).c_str());
  }
}

}  // namespace

int main(int count, char** arguments) {
  alarm(300);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (count < 4) {
    return 2;
  }
  const uint32_t events = static_cast<uint32_t>(std::atoi(arguments[2]));
  const std::string padding(static_cast<size_t>(std::atoi(arguments[3])), '.');
  const std::string data(2000, '\x7F');
  const std::string text = path_of(SM_LOG_TEXT);
  const std::string xml = path_of(SM_LOG_XML);
  std::puts("ready");
  std::fflush(stdout);
  for (uint32_t i = 0; events == 0 || i < events; ++i) {
    if (count > 4) {
      keep(text, arguments[4], "text");
      keep(xml, arguments[4], "xml");
    }
    const std::string description =
        "worker " + std::string(arguments[1]) + " event " + std::to_string(i) + " " + padding;
    const auto size = static_cast<uint32_t>(i % 100 == 0 ? data.size() : 0);
    if (SMAppendToLog(SM_LOG_TEXT | SM_LOG_XML, 1, 1, i, "log-worker", description.c_str(),
                      data.data(), size) != 0) {
      std::fprintf(stderr, "log-worker: not appended\n");
      return 1;
    }
  }
  return 0;
}
