// rotated-worker append PATH SIZE COUNT GO NAME MESSAGES: appends so many numbered lines to a
// rotated log. rotated-worker rotate PATH SIZE COUNT GO: rotates it, again and again, until it is
// killed. Either says that it is ready, and begins when the file GO is there.

#include <kqsupt/log.h>
#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int count, char** arguments) {
  const std::string command = count > 1 ? arguments[1] : "";
  if (!(command == "append" && count == 8) && !(command == "rotate" && count == 6)) {
    return 2;
  }
  alarm(300);
  const char* path = arguments[2];
  const auto size = static_cast<uint32_t>(std::strtoul(arguments[3], nullptr, 10));
  const auto generations = static_cast<uint32_t>(std::strtoul(arguments[4], nullptr, 10));
  std::puts("ready");
  std::fflush(stdout);
  while (access(arguments[5], F_OK) != 0) {
    sched_yield();
  }
  while (command == "rotate") {
    SMFileRotateCheck(path, size, generations);
  }
  const int messages = std::atoi(arguments[7]);
  for (int i = 1; i <= messages; ++i) {
    const std::string line = std::string(arguments[6]) + " " + std::to_string(i) + " end";
    if (SMFileLogMsgToRotatedLog(line.c_str(), path, size, generations, SM_LOG_SUFFIX_NEWLINE) !=
        SM_STATUS_SUCCESS) {
      return 1;
    }
  }
  return 0;
}
