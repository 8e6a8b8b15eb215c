// Waiting for a mutex of the process with a limit.

#include "ipc/local_mutex.h"

#include "frame/status.h"
#include "ipc/poll.h"

namespace kqsupt::ipc {

SMStatus LocalMutex::lock_within(int32_t timeout_ms) {
  if (timeout_ms == kForever) {
    return pthread_mutex_lock(&mutex_) == 0 ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
  }
  Poll poll(timeout_ms);
  while (pthread_mutex_trylock(&mutex_) != 0) {
    if (!poll.sleep()) {
      return SM_STATUS_TIMEOUT;
    }
  }
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::ipc
