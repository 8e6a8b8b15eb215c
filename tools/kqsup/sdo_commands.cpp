// kqsup sdo: records as bytes.
#include <cstdio>
#include <memory>

#include "command.h"
#include "listing.h"
#include "looked_at.h"
#include "sdo_reader.h"

namespace kqsup {

namespace {

void dump(const std::string& path, Run& run) {
  const LookedAt file = path == "-" ? look_at_input(kLargestSdo) : look_at(path, kLargestSdo);
  if (!file.ok()) {
    return run.could_not_look(path + ": " + file.why);
  }
  try {
    const Sdo sdo = read_sdo(file.bytes);
    const bool goes_on = file.goes_on || file.bytes.size() > sdo.block.size;
    std::string text;
    if (run.as_json) {
      nlohmann::ordered_json json = sdo_json(sdo);
      json["more_follows"] = goes_on;
      text = json_text(json) + "\n";
    } else {
      text = sdo_tree(sdo);
      if (goes_on) {
        text += "(more follows at byte " + std::to_string(sdo.block.size) + ", not shown)\n";
      }
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
  } catch (const SdoDamage& damage) {
    run.complain(Outcome::kFoundWrong,
                 path + ": at byte " + std::to_string(damage.offset()) + ": " + damage.what());
  }
}

}  // namespace

void add_sdo_commands(CLI::App& app, Run& run) {
  CLI::App* sdo = app.add_subcommand("sdo", "Records as bytes");
  sdo->require_subcommand(1);
  sdo->footer("Example: kqsup sdo dump sensors.sdo");
  CLI::App* command = sdo->add_subcommand("dump", "Show a record, or an array of records");
  const auto path = std::make_shared<std::string>();
  command->add_option("FILE", *path, "The file that begins with it; - is the standard input")
      ->required();
  command->footer(
      "Either byte order. Ends with 1 when the bytes are no record, and tells where.\n\n"
      "Example: kqsup sdo dump --json sensors.sdo");
  command->callback([path, &run] { dump(*path, run); });
}

}  // namespace kqsup
