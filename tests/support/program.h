// Running further programs from a test, as processes of their own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kqsupt::tests {

struct Outcome {
  int exit_status;  // -1 when a signal ended the program; 127 when it could not be started
  int signal;       // 0 when it exited
  std::string out;  // what it wrote to standard output and standard error
  std::string err;
};

using Command = std::vector<std::string>;  // a path, or a name to find in $PATH, and arguments

// Runs a program of this build's host to its end, with `input` as its standard input. Where the
// host is emulated, $KQSUPT_RUNNER has the words that start the emulator.
Outcome run(const Command& command, std::string_view input = {});

// Runs a program of the machine that the test runs on.
Outcome run_native(const Command& command, std::string_view input = {});

// `command` as run() starts it.
Command with_runner(const Command& command);

// The path of a program of this build.
std::string built_program(const std::string& name);

}  // namespace kqsupt::tests
