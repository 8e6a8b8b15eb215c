// Starts the library when it is loaded into a process and stops it when it is unloaded.

#include <array>

#include "config/install_paths.h"
#include "config/install_registry.h"
#include "containers/crc32.h"
#include "frame/attach_sequence.h"
#include "ipc/critical_section.h"
#include "ipc/path_lock_table.h"
#include "ipc/registry.h"
#include "log/log_sizes.h"
#include "net/network_layer.h"
#include "os/shared_libraries.h"
#include "text/format.h"

namespace kqsupt::frame {
namespace {

// Two that start as one: either fails both.
void stop_files() {
  ipc::stop_path_locks();
  config::stop_install_registry();
}
bool start_files() {
  const bool started = config::start_install_registry() && ipc::start_path_locks();
  if (!started) {
    stop_files();
  }
  return started;
}

// The modules that a process starts, in order. The file of the install registry comes first, for
// without it the library is of no use; with it the locks of files, for which nothing else is
// needed. The table of paths is read from that file. Named objects have their directory from the
// table, and their start reads an INI file in it, under such a lock. The others depend on nothing.
// Records, trees and text keep nothing between two calls and need no start. Each export works, or
// says that it cannot, whether or not the start succeeded and also before the constructor below has
// run.
constexpr std::array<Module, 9> kModules{{
    {"install registry", start_files, stop_files},
    {"install paths", config::start_install_paths, config::stop_install_paths},
    {"network", net::start, net::stop},
    {"named objects", ipc::start_registry, ipc::stop_registry},
    {"critical sections", ipc::start_critical_sections, ipc::stop_critical_sections},
    {"event log", log::start_log_sizes, log::stop_log_sizes},
    {"formatter", text::start_formatter, text::stop_formatter},
    {"shared libraries", os::start_shared_libraries, os::stop_shared_libraries},
    {"CRC-32 table", containers::start_crc32_table, containers::stop_crc32_table},
}};

constinit AttachSequence process_attach(kModules);

// A failed start is no failure to load: what was not started says so when it is called.
[[gnu::constructor]] void on_load() {
  (void)process_attach.attach();
}

[[gnu::destructor]] void on_unload() {
  process_attach.detach();
}

}  // namespace
}  // namespace kqsupt::frame
