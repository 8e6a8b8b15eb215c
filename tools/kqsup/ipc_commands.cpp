// kqsup ipc: the command line of what is done with named objects.
#include <memory>
#include <string>

#include "command.h"
#include "ipc_list.h"
#include "ipc_reap.h"

namespace kqsup {

void add_ipc_commands(CLI::App& app, Run& run) {
  CLI::App* const ipc = app.add_subcommand("ipc", "Named objects: what there is, and what is left");
  ipc->require_subcommand(1);
  ipc->footer("Example: kqsup ipc list");

  CLI::App* const list = ipc->add_subcommand("list", "Show every named object and its state now");
  const auto name = std::make_shared<std::string>();
  const CLI::Option* const asked =
      list->add_option("--name", *name,
                       "Only what is called NAME by those who use it: for a path "
                       "lock, the path")
          ->type_name("NAME");
  list->footer("Example: kqsup ipc list --name 'example machine record' --json");
  list->callback([&run, name, asked] {
    if (asked->count() != 0 && name->empty()) {
      return run.could_not_look("no object has an empty name");
    }
    list_ipc(run, *name);
  });

  CLI::App* const reap =
      ipc->add_subcommand("reap", "Show what belongs to nobody any more, and remove it with --yes");
  const auto yes = std::make_shared<bool>(false);
  reap->add_flag("--yes", *yes, "Remove it; without, it is only shown");
  reap->footer(
      "Example: kqsup ipc reap && echo nothing is left behind || kqsup ipc reap --yes\n"
      "Ends with 1 when it shows something that could be removed, or could not remove it.");
  reap->callback([&run, yes] { reap_ipc(run, *yes); });
}

}  // namespace kqsup
