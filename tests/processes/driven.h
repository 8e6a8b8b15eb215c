// Running a program of the build under the driver of system calls.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "support/emulated.h"
#include "support/program.h"

namespace kqsupt::tests {

// How the driver exits when the program makes fewer calls than it was to act on.
inline constexpr int kNotReached = 99;

// The driver is of the machine's own build, whatever the program is.
inline Outcome driven(const std::string& action, long place, const std::string& name,
                      const std::vector<std::string>& arguments) {
#ifdef KQSUPT_SANITIZED
  setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // which asks for the driver's place
#endif
  const std::string beside = built_program("system-call-driver");
  Command command{access(beside.c_str(), X_OK) == 0
                      ? beside
                      : std::string(KQSUPT_DEFAULT_NATIVE_BIN) + "/system-call-driver",
                  action, std::to_string(place)};
  Command program{built_program(name)};
  program.insert(program.end(), arguments.begin(), arguments.end());
  for (const std::string& word : with_runner(program)) {
    command.push_back(word);
  }
  return run_native(command);
}

}  // namespace kqsupt::tests
