// An agent in C++, built from the installed files alone: a record, its block, a named mutex and an
// event.
#include <cstdint>
#include <cstdio>
#include <kqsupt.hpp>
#include <system_error>

namespace {

std::error_code run() {
  auto sensor = kqsupt::record::create();
  auto mutex = kqsupt::mutex::create("installed-agent");
  if (!sensor || !mutex) {
    return !sensor ? sensor.error() : mutex.error();
  }
  if (const auto added = sensor->add_value(1, 1, uint32_t{24}); !added) {
    return added.error();
  }
  const auto block = sensor->to_block();
  const auto held = mutex->lock();
  if (!block || !held) {
    return !block ? block.error() : held.error();
  }
  const auto celsius = kqsupt::block_view(*block).value<uint32_t>(1);
  if (!celsius) {
    return celsius.error();
  }
  kqsupt::log_event event;
  event.id = 1;
  event.source = "agent";
  event.description = "started";
  if (const auto logged = kqsupt::append_to_log(SM_LOG_TEXT, event); !logged) {
    return logged.error();
  }
  std::printf("%u degrees\n", static_cast<unsigned>(*celsius));
  return {};
}

}  // namespace

int main() {
  const std::error_code error = run();
  if (error) {
    std::fprintf(stderr, "agent: %s\n", error.message().c_str());
    return 1;
  }
  return 0;
}
