// Parts of a test that run in a process of their own.
#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kqsupt::tests {

// Runs `body` in a child process, whose exit status is what it returns; -1 when a signal ended it.
// The child ends when it has hung for a minute.
template <class Body>
int in_child(Body body) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    _exit(body());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// From here on the permission bits of a file bind this process, which is for children alone.
inline bool give_up_privileges() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  const __user_cap_data_struct none[2] = {};
  return syscall(SYS_capset, &header, none) == 0;
}

}  // namespace kqsupt::tests
