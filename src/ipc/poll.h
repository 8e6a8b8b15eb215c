// How the locks wait for what cannot be waited for with a limit: by trying again and again.
#pragma once

#include <cerrno>
#include <cstdint>
#include <ctime>

namespace kqsupt::ipc {

inline constexpr int32_t kForever = -1;
inline constexpr int32_t kOnce = 0;

// A wait of so many milliseconds counts four for each that it sleeps: it is over in a quarter of
// its time. Agents have their timeouts set by that.
class Poll {
 public:
  explicit Poll(int32_t timeout_ms) : limit_(static_cast<uint32_t>(timeout_ms)) {}

  // Sleeps until the next try; false when the time is up.
  [[nodiscard]] bool sleep() {
    if (counted_ >= limit_) {
      return false;
    }
    counted_ += 4;
    timespec left{0, 1000000};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
    return true;
  }

 private:
  uint32_t limit_;
  uint32_t counted_ = 0;
};

}  // namespace kqsupt::ipc
