// Asking the system.

#include "os/host.h"

#include <strings.h>
#include <sys/select.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace kqsupt::os {

uint32_t host_type() {
  utsname about{};
  return uname(&about) >= 0 && strcasecmp(about.sysname, "VMkernel") == 0 ? kVmKernel : kLinux;
}

bool has_input() {
  fd_set input;
  FD_ZERO(&input);
  FD_SET(STDIN_FILENO, &input);
  timeval at_once{};
  return select(STDIN_FILENO + 1, &input, nullptr, nullptr, &at_once) > 0;
}

void get_export_context(uint32_t* context) {
  if (context != nullptr) {
    *context = 0;
  }
}

}  // namespace kqsupt::os
