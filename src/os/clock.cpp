// Reading the clock.

#include "os/clock.h"

#include <sys/time.h>

#include <algorithm>

namespace kqsupt::os {
namespace {

template <class Output>
void put(Output* output, Output value) {
  if (output != nullptr) {
    *output = value;
  }
}

}  // namespace

uint64_t ticks_now() {
  timeval now{};
  if (gettimeofday(&now, nullptr) != 0) {
    return kNoTicks;
  }
  // In double precision at each step, whatever the registers of the host hold: agents of different
  // hosts compare these numbers.
  const volatile double fraction = static_cast<double>(now.tv_usec) * 0.000001;
  const volatile double seconds = static_cast<double>(now.tv_sec) + fraction;
  const volatile double milliseconds = seconds * 1000;
  // Through the signed type, so that times before the epoch too are as far apart as they were.
  return static_cast<uint64_t>(static_cast<int64_t>(milliseconds));
}

void check_elapsed(uint64_t start, uint64_t current, uint64_t limit, uint64_t* elapsed,
                   uint16_t* first, uint16_t* second) {
  if (start == kNoTicks || current == kNoTicks) {
    return;
  }
  // A clock that went back has not moved.
  const int64_t passed = std::max<int64_t>(static_cast<int64_t>(current - start), 0);
  const bool is_over = passed > static_cast<int64_t>(limit);
  const bool has_limit = limit != kNoTicks;
  put(elapsed, static_cast<uint64_t>(passed));
  put(first, static_cast<uint16_t>(has_limit ? is_over : passed != 0));
  put(second, static_cast<uint16_t>(has_limit && is_over));
}

}  // namespace kqsupt::os
