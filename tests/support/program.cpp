// Starting programs, feeding them and collecting what they write.

#include "support/program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <system_error>

namespace kqsupt::tests {
namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// One end of a pipe, or none.
class End {
 public:
  End() = default;
  explicit End(int descriptor) : descriptor_(descriptor) {}
  End(const End&) = delete;
  End& operator=(const End&) = delete;
  ~End() { close(); }

  void reset(int descriptor) {
    close();
    descriptor_ = descriptor;
  }
  void close() {
    if (descriptor_ >= 0) {
      ::close(descriptor_);
      descriptor_ = -1;
    }
  }
  [[nodiscard]] int get() const { return descriptor_; }

 private:
  int descriptor_ = -1;
};

struct Pipe {
  End read;
  End write;

  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
      fail("pipe2");
    }
    read.reset(ends[0]);
    write.reset(ends[1]);
  }
};

// Writing to a program that has stopped reading must be an error here, not the end of the test.
class BrokenPipesIgnored {
 public:
  BrokenPipesIgnored() : before_(std::signal(SIGPIPE, SIG_IGN)) {}
  BrokenPipesIgnored(const BrokenPipesIgnored&) = delete;
  BrokenPipesIgnored& operator=(const BrokenPipesIgnored&) = delete;
  ~BrokenPipesIgnored() { std::signal(SIGPIPE, before_); }

 private:
  void (*before_)(int);
};

[[noreturn]] void become(const Command& command, const Pipe& in, const Pipe& out, const Pipe& err) {
  std::vector<char*> words;
  for (const std::string& word : command) {
    words.push_back(const_cast<char*>(word.c_str()));
  }
  words.push_back(nullptr);
  std::signal(SIGPIPE, SIG_DFL);
  if (dup2(in.read.get(), STDIN_FILENO) >= 0 && dup2(out.write.get(), STDOUT_FILENO) >= 0 &&
      dup2(err.write.get(), STDERR_FILENO) >= 0) {
    execvp(words[0], words.data());
  }
  _exit(127);
}

// Feeds one pipe and drains two until all are at their end: none can fill up and block the program.
void converse(End& in, std::string_view input, End& out, std::string& out_text, End& err,
              std::string& err_text) {
  if (fcntl(in.get(), F_SETFL, O_NONBLOCK) != 0) {
    fail("fcntl");
  }
  const auto drain = [](End& end, std::string& text) {
    std::array<char, 4096> buffer;
    const ssize_t count = read(end.get(), buffer.data(), buffer.size());
    if (count > 0) {
      text.append(buffer.data(), static_cast<size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      end.close();
    }
  };
  while (in.get() >= 0 || out.get() >= 0 || err.get() >= 0) {
    if (input.empty()) {
      in.close();
    }
    // poll() passes over descriptors below 0.
    std::array<pollfd, 3> ends{
        {{in.get(), POLLOUT, 0}, {out.get(), POLLIN, 0}, {err.get(), POLLIN, 0}}};
    if (poll(ends.data(), ends.size(), -1) < 0 && errno != EINTR) {
      fail("poll");
    }
    if (ends[0].revents != 0) {
      const ssize_t count = write(in.get(), input.data(), input.size());
      if (count >= 0) {
        input.remove_prefix(static_cast<size_t>(count));
      } else if (errno != EINTR && errno != EAGAIN) {
        in.close();
      }
    }
    if (ends[1].revents != 0) {
      drain(out, out_text);
    }
    if (ends[2].revents != 0) {
      drain(err, err_text);
    }
  }
}

}  // namespace

Outcome run_native(const Command& command, std::string_view input) {
  const BrokenPipesIgnored ignored;
  Pipe in;
  Pipe out;
  Pipe err;
  const pid_t child = fork();
  if (child < 0) {
    fail("fork");
  }
  if (child == 0) {
    become(command, in, out, err);
  }
  in.read.close();
  out.write.close();
  err.write.close();
  Outcome outcome{-1, 0, {}, {}};
  converse(in.write, input, out.read, outcome.out, err.read, outcome.err);
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) {
      fail("waitpid");
    }
  }
  if (WIFEXITED(status)) {
    outcome.exit_status = WEXITSTATUS(status);
  } else {
    outcome.signal = WTERMSIG(status);
  }
  return outcome;
}

Command with_runner(const Command& command) {
  const char* runner = std::getenv("KQSUPT_RUNNER");
  std::istringstream words(runner != nullptr ? runner : "");
  Command whole{std::istream_iterator<std::string>(words), {}};
  whole.insert(whole.end(), command.begin(), command.end());
  return whole;
}

Outcome run(const Command& command, std::string_view input) {
  return run_native(with_runner(command), input);
}

std::string built_program(const std::string& name) {
  return KQSUPT_BIN_DIR "/" + name;
}

}  // namespace kqsupt::tests
