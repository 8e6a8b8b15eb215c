// Starting modules in order, and unwinding what was started.

#include "frame/attach_sequence.h"

#include <atomic>
#include <cstddef>

#include "frame/stopping.h"

namespace kqsupt::frame {
namespace {

constinit std::atomic<bool> stopping{false};

}  // namespace

bool is_stopping() {
  return stopping.load(std::memory_order_acquire);
}

bool AttachSequence::attach() {
  if (++attached_ > 1) {
    return true;
  }
  stopping.store(false, std::memory_order_release);
  for (size_t i = 0; i < modules_.size(); ++i) {
    if (!modules_[i].start()) {
      stop_in_reverse(modules_.first(i));
      return false;
    }
  }
  return true;
}

void AttachSequence::detach() {
  if (--attached_ < 1) {
    stopping.store(true, std::memory_order_release);
    stop_in_reverse(modules_);
  }
}

void AttachSequence::stop_in_reverse(std::span<const Module> modules) {
  for (size_t i = modules.size(); i-- > 0;) {
    modules[i].stop();
  }
}

}  // namespace kqsupt::frame
