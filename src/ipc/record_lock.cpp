// Locking and unlocking whole files.

#include "ipc/record_lock.h"

#include <unistd.h>

#include <cerrno>

#include "frame/status.h"
#include "ipc/poll.h"

namespace kqsupt::ipc {
namespace {

struct flock whole_file(int16_t type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return lock;
}

}  // namespace

SMStatus lock_file(int fd, int16_t type, int32_t timeout_ms) {
  Poll poll(timeout_ms);
  for (;;) {
    struct flock lock = whole_file(type);
    if (fcntl(fd, timeout_ms == kForever ? F_SETLKW : F_SETLK, &lock) == 0) {
      return SM_STATUS_SUCCESS;
    }
    switch (errno) {
      case EINTR:
      case EDEADLK:  // the kernel sees one between processes of several threads where there is none
        break;
      case EAGAIN:
      case EACCES:
        if (!poll.sleep()) {
          return SM_STATUS_TIMEOUT;
        }
        break;
      default:
        return frame::kFailed;
    }
  }
}

void unlock_file(int fd) {
  struct flock lock = whole_file(F_UNLCK);
  while (fcntl(fd, F_SETLKW, &lock) != 0 && errno == EINTR) {
  }
}

}  // namespace kqsupt::ipc
