// Waiting for and posting semaphores of the process.

#include "ipc/local_semaphore.h"

#include <sys/time.h>

#include <cerrno>
#include <ctime>

#include "frame/status.h"
#include "ipc/poll.h"

namespace kqsupt::ipc {
namespace {

timespec deadline_after(uint32_t timeout_ms) {
  timeval now{};
  gettimeofday(&now, nullptr);
  timespec deadline{};
  deadline.tv_sec = now.tv_sec + static_cast<time_t>(timeout_ms / 1000);
  const int64_t nanoseconds = int64_t{now.tv_usec} * 1000 + int64_t{timeout_ms % 1000} * 1000000;
  deadline.tv_sec += nanoseconds > 999999999 ? 1 : 0;
  deadline.tv_nsec = static_cast<long>(nanoseconds % 1000000000);
  return deadline;
}

// Repeats a call for as long as signals interrupt it.
template <class Call>
SMStatus repeat(Call call) {
  while (call() != 0) {
    if (errno == ETIMEDOUT) {
      return SM_STATUS_TIMEOUT;
    }
    if (errno != EINTR) {
      return frame::kFailed;
    }
  }
  return SM_STATUS_SUCCESS;
}

}  // namespace

SMStatus LocalSemaphore::take(int32_t timeout_ms) {
  if (timeout_ms == kForever) {
    return repeat([this] { return sem_wait(&semaphore_); });
  }
  const timespec deadline = deadline_after(static_cast<uint32_t>(timeout_ms));
  return repeat([&] { return sem_timedwait(&semaphore_, &deadline); });
}

SMStatus LocalSemaphore::post(int32_t n) {
  for (; n > 0; --n) {
    const SMStatus status = repeat([this] { return sem_post(&semaphore_); });
    if (status != SM_STATUS_SUCCESS) {
      return status;
    }
  }
  return SM_STATUS_SUCCESS;
}

void LocalSemaphore::drain() {
  while (value() > 0 && sem_trywait(&semaphore_) == 0) {
  }
}

uint32_t LocalSemaphore::value() {
  int now = 0;
  sem_getvalue(&semaphore_, &now);
  return static_cast<uint32_t>(now);
}

}  // namespace kqsupt::ipc
