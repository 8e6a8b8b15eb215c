// Programs that run beside a test, as processes of their own.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/program.h"

extern char** environ;

namespace kqsupt::tests {

// Started with its standard output connected to this object, and killed when that goes.
class Background {
 public:
  explicit Background(const Command& command) {
    std::vector<std::string> words = with_runner(command);
    std::vector<char*> arguments;
    for (std::string& word : words) {
      arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    output_ = ends[0];
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    const int failed =
        posix_spawnp(&process_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (failed != 0) {
      throw std::runtime_error("cannot start " + words[0]);
    }
  }
  Background(Background&& other) noexcept
      : process_(std::exchange(other.process_, 0)), output_(std::exchange(other.output_, -1)) {}
  Background& operator=(Background&&) = delete;
  ~Background() {
    if (process_ != 0) {
      kill();
      wait();
    }
    if (output_ >= 0) {
      close(output_);
    }
  }

  void kill(int signal = SIGKILL) const { ::kill(process_, signal); }

  // Whether something to read, or the end of it, comes within that time.
  [[nodiscard]] bool has_output(int milliseconds) const {
    pollfd waited{output_, POLLIN, 0};
    return poll(&waited, 1, milliseconds) > 0;
  }

  // The next line that it writes, without its end; "" at the end of its output.
  std::string read_line() {
    std::string line;
    char byte = '\0';
    ssize_t count = 0;
    while ((count = read(output_, &byte, 1)) == 1 || (count < 0 && errno == EINTR)) {
      if (count == 1 && byte == '\n') {
        break;
      }
      line.append(count == 1 ? 1 : 0, byte);
    }
    return line;
  }

  // Its exit status when it has ended; -1 when a signal ended it.
  int wait() {
    int status = 0;
    const pid_t process = std::exchange(process_, 0);
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t process_ = 0;
  int output_ = -1;
};

}  // namespace kqsupt::tests
