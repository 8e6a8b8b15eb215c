// What every command of kqsup shares. Looking never repairs, creates, locks for writing or waits.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>

#include "listing.h"

namespace kqsup {

// What the program ends with.
enum class Outcome : int {
  kAllRight = 0,
  kFoundWrong = 1,    // what was looked at has something wrong
  kCouldNotLook = 2,  // or the command line asked for what there is not
};

// One run of the program. Commands print to the standard output, and what they have to say about
// what they could not do to the standard error.
struct Run {
  bool as_json = false;  // --json, which may stand behind any command
  Outcome outcome = Outcome::kAllRight;

  // Says what is wrong, or why something could not be looked at, to the standard error.
  void complain(Outcome found, const std::string& what) {
    std::fprintf(stderr, "kqsup: %s\n", printable(what).c_str());
    tell(found);
  }
  void could_not_look(const std::string& why) { complain(Outcome::kCouldNotLook, why); }

  // The worst of what was told is what the program ends with.
  void tell(Outcome found) {
    if (static_cast<int>(found) > static_cast<int>(outcome)) {
      outcome = found;
    }
  }
};

// Each adds its commands, which work on `run` when they are called.
void add_ipc_commands(CLI::App& app, Run& run);
void add_log_commands(CLI::App& app, Run& run);
void add_sdo_commands(CLI::App& app, Run& run);
void add_ini_commands(CLI::App& app, Run& run);
void add_paths_command(CLI::App& app, Run& run);
void add_doctor_command(CLI::App& app, Run& run);

}  // namespace kqsup
