// Starts the library when it is loaded into a process and stops it when it is unloaded.

#include <array>

#include "containers/crc32.h"
#include "frame/attach_sequence.h"
#include "net/network_layer.h"
#include "text/format.h"

namespace kqsupt::frame {
namespace {

// The modules that a process starts, in order. None of these depends on another one. Records, trees and
// text keep nothing between two calls and need none. Each export works, or says that it cannot, whether
// or not the start succeeded and also before the constructor below has run.
constexpr std::array<Module, 3> kModules{{
    {"network", net::start, net::stop},
    {"formatter", text::start_formatter, text::stop_formatter},
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
