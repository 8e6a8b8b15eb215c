// kqsup doctor: what on this host would break agents.
#include <ctime>
#include <memory>

#include "command.h"
#include "doctor_checks.h"
#include "listing.h"

namespace kqsup {

namespace {

void list_findings(const std::string& root_directory, Run& run) {
  const Root root(root_directory);
  const Host host{root, HostPaths(root), std::time(nullptr)};
  Listing listing({{"CHECK", "check"},
                   {"STATE", "state"},
                   {"FOUND", "found"},
                   {"WHY IT MATTERS", "why"},
                   {"WHAT TO DO", "to_do"}});
  for (const Finding& one : examine(host)) {
    if (one.health == Health::kWrong) {
      run.tell(Outcome::kFoundWrong);
    }
    listing.add({one.check, name_of(one.health), one.found, one.why,
                 one.to_do.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(one.to_do)});
  }
  listing.print(run.as_json);
}

}  // namespace

void add_doctor_command(CLI::App& app, Run& run) {
  CLI::App* command = app.add_subcommand("doctor", "Tell what on this host would break agents");
  const auto root = std::make_shared<std::string>();
  command->add_option("--root", *root, "Look below this directory instead of /")
      ->check(CLI::ExistingDirectory);
  command->footer(
      "Run it as the user that agents run as. Ends with 1 when something is wrong; warnings are\n"
      "told only.\n\n"
      "Example: kqsup doctor --json");
  command->callback([root, &run] { list_findings(*root, run); });
}

}  // namespace kqsup
