// The calls on semaphore sets.

#include "ipc/semaphore_set.h"

#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "frame/status.h"
#include "ipc/poll.h"
#include "ipc/semaphore_list.h"
#include "os/system_log.h"

namespace kqsupt::ipc {
namespace {

// The system's own type, which programs have to declare themselves.
union Argument {
  int value;
  semid_ds* about;
  unsigned short* values;
};

int control(SemaphoreSet set, int command, Argument argument = {}) {
  return semctl(set, 0, command, argument);
}

SMStatus status_of(int result) {
  return result >= 0 ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
}

// Of all that can go wrong operators are told what only they can mend.
void report_shortage(int error) {
  const char* message = nullptr;
  if (error == ENOMEM) {
    message =
        "A semaphore set could not be created because the system has not enough memory for the new "
        "data structure\n";
  } else if (error == ENOSPC) {
    message =
        "A semaphore set has to be created but the system limit for the maximum number of "
        "semaphore "
        "sets has been exceeded\n";
  } else {
    return;
  }
  constexpr uint32_t kInformation = 4;
  constexpr uint32_t kSource = 1;
  os::append_to_system_log({kInformation, kSource, 0, "Corvane (Shared Library)", message});
}

// Keeps identifier 0 occupied for as long as another set is made.
class Placeholder {
 public:
  Placeholder() : set_(semget(IPC_PRIVATE, 1, IPC_CREAT | IPC_EXCL | 0600)) {}
  ~Placeholder() {
    if (set_ >= 0) {
      control(set_, IPC_RMID);
    }
  }
  Placeholder(const Placeholder&) = delete;
  Placeholder& operator=(const Placeholder&) = delete;

 private:
  int set_;
};

int64_t milliseconds_now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

SMStatus take_forever(SemaphoreSet set, sembuf* take) {
  int result;
  do {
    result = semop(set, take, 1);
  } while (result != 0 && errno == EINTR);
  return status_of(result);
}

SMStatus take_at_once(SemaphoreSet set, sembuf* take) {
  take->sem_flg = static_cast<int16_t>(take->sem_flg | IPC_NOWAIT);
  int result;
  do {
    result = semop(set, take, 1);
  } while (result != 0 && errno == EINTR);
  return result != 0 && errno == EAGAIN ? SMStatus{SM_STATUS_TIMEOUT} : status_of(result);
}

SMStatus take_within(SemaphoreSet set, sembuf* take, uint32_t timeout) {
  const int64_t start = milliseconds_now();
  for (uint32_t left = timeout;;) {
    const timespec limit{static_cast<time_t>(left / 1000),
                         static_cast<long>(left % 1000 * 1000000)};
    const int result = semtimedop(set, take, 1, &limit);
    if (result == 0) {
      return SM_STATUS_SUCCESS;
    }
    if (errno == EAGAIN) {
      return SM_STATUS_TIMEOUT;
    }
    if (errno != EINTR) {
      return frame::kFailed;
    }
    const int64_t elapsed = milliseconds_now() - start;
    if (elapsed >= timeout) {
      return SM_STATUS_TIMEOUT;
    }
    left = static_cast<uint32_t>(timeout - elapsed);
  }
}

}  // namespace

SemaphoreSet create_set(uint32_t key, int32_t count, uint32_t initial, mode_t mode, bool* is_new) {
  const auto flags = static_cast<int>(mode) | IPC_CREAT | IPC_EXCL;
  const int set = semget(static_cast<key_t>(key), count, flags);
  if (is_new != nullptr) {
    *is_new = set >= 0;
  }
  if (set < 0) {
    const int error = errno;
    report_shortage(error);
    return error == EEXIST ? open_set(key) : kNoSet;
  }
  if (set == kNoSet) {
    control(set, IPC_RMID);
    const Placeholder placeholder;
    return create_set(key, count, initial, mode, is_new);
  }
  control(set, SETVAL, {.value = static_cast<int>(initial)});
  if (key == static_cast<uint32_t>(IPC_PRIVATE)) {
    list_set(set);
  }
  return set;
}

SemaphoreSet open_set(uint32_t key) {
  const int set = semget(static_cast<key_t>(key), 0, 0600);
  return set > 0 ? set : kNoSet;
}

SMStatus take_from_set(SemaphoreSet set, int32_t timeout_ms, Undo undo) {
  sembuf take{0, -1, static_cast<int16_t>(undo == Undo::kNo ? 0 : SEM_UNDO)};
  switch (timeout_ms) {
    case kForever:
      return take_forever(set, &take);
    case kOnce:
      return take_at_once(set, &take);
    default:
      return take_within(set, &take, static_cast<uint32_t>(timeout_ms));
  }
}

SMStatus post_to_set(SemaphoreSet set, int32_t n) {
  for (; n > 0; --n) {
    sembuf post{0, 1, IPC_NOWAIT};
    int result;
    do {
      result = semop(set, &post, 1);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
      return frame::kFailed;
    }
  }
  return SM_STATUS_SUCCESS;
}

SMStatus reset_set(SemaphoreSet set) {
  if (set == kNoSet) {
    return frame::kFailed;
  }
  control(set, SETVAL, {.value = 0});
  return SM_STATUS_SUCCESS;
}

uint32_t value_of_set(SemaphoreSet set) {
  return static_cast<uint32_t>(control(set, GETVAL));
}

uint32_t count_of_set(SemaphoreSet set) {
  semid_ds about{};
  return control(set, IPC_STAT, {.about = &about}) == 0 ? static_cast<uint32_t>(about.sem_nsems)
                                                        : 0;
}

SMStatus remove_set(SemaphoreSet set) {
  if (control(set, IPC_RMID) < 0) {
    return frame::kFailed;
  }
  unlist_set(set);
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::ipc
