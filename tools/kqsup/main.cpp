// kqsup: what operators look at agents with.
#include <cstdio>

#include "command.h"

int main(int argc, char** argv) {
  using kqsup::Outcome;
  CLI::App app("Looks at what server-management agents keep on this host.", "kqsup");
  kqsup::Run run;
  app.require_subcommand(1);
  app.fallthrough();
  app.add_flag("--json", run.as_json, "Print JSON instead of a table");
  app.footer(
      "Ends with 0, with 1 when it found something wrong, with 2 when it could not look.\n\n"
      "Example: kqsup doctor");
  kqsup::add_ipc_commands(app, run);
  kqsup::add_log_commands(app, run);
  kqsup::add_sdo_commands(app, run);
  kqsup::add_ini_commands(app, run);
  kqsup::add_paths_command(app, run);
  kqsup::add_doctor_command(app, run);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // Help ends with 0; a command line that cannot be read is nothing that could be looked at.
    return app.exit(error) == 0 ? static_cast<int>(Outcome::kAllRight)
                                : static_cast<int>(Outcome::kCouldNotLook);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kqsup: %s\n", error.what());
    return static_cast<int>(Outcome::kCouldNotLook);
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "kqsup: what was found could not be written\n");
    run.tell(Outcome::kCouldNotLook);
  }
  return static_cast<int>(run.outcome);
}
