// kqsup paths: the install registry, and what of it is on disk.
#include <sys/stat.h>

#include <cerrno>
#include <memory>

#include "command.h"
#include "host_paths.h"
#include "listing.h"

namespace kqsup {

namespace {

// The library asks for no more than that something of that name exists; what is no directory is of
// no use to an agent all the same.
const char* state_of(const std::string& path) {
  struct stat about {};
  if (stat(path.c_str(), &about) == 0) {
    return S_ISDIR(about.st_mode) ? "ok" : "no directory";
  }
  return errno == ENOENT || errno == ENOTDIR ? "missing" : "not reachable";
}

void list_paths(const std::string& root_directory, Run& run) {
  const Root root(root_directory);
  const HostPaths paths(root);
  if (!paths.why().empty()) {
    run.complain(paths.registry().empty() ? Outcome::kFoundWrong : Outcome::kCouldNotLook,
                 paths.why());
  }
  Listing listing({{"PRODUCT", "product"},
                   {"KIND", "kind"},
                   {"PATH", "path"},
                   {"FROM", "from"},
                   {"STATE", "state"}});
  for (const HostPath& one : paths.all()) {
    const std::string state = state_of(root.at(one.path));
    if (state != "ok") {
      run.tell(Outcome::kFoundWrong);
    }
    listing.add({one.product, one.kind, one.path, one.from, state});
  }
  listing.print(run.as_json);
}

}  // namespace

void add_paths_command(CLI::App& app, Run& run) {
  CLI::App* command =
      app.add_subcommand("paths", "List the products' directories, and which are missing");
  const auto root = std::make_shared<std::string>();
  command->add_option("--root", *root, "Look below this directory instead of /")
      ->check(CLI::ExistingDirectory);
  command->footer(
      "Reads the install registry; ends with 1 when a directory of it is missing.\n\n"
      "Example: kqsup paths --json");
  command->callback([root, &run] { list_paths(*root, run); });
}

}  // namespace kqsup
