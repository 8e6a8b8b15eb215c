// Mutexes: a mutex of the process and, with a name, a record lock on a lock file.

#include "ipc/mutex.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "frame/status.h"
#include "ipc/permission.h"
#include "ipc/record_lock.h"

namespace kqsupt::ipc {
namespace {

using os::FileDescriptor;

// The directory of lock files may be shared by several users: no link that one of them put there is
// followed, and no pipe waited for.
constexpr int kLockFileFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

bool is_named(const SMMutex& mutex) {
  return mutex.header.name != nullptr;
}

// Opens the lock file for writing or else for reading, as far as this process may. `create` is
// O_CREAT or 0.
void open_lock_file(SMMutex& mutex, int create, mode_t mode) {
  const bool is_new = create != 0 && access(mutex.header.name, F_OK) != 0;
  mutex.lock_type = F_WRLCK;
  mutex.file = FileDescriptor::open(mutex.header.name, O_WRONLY | create | kLockFileFlags, mode);
  if (mutex.file.is_open()) {
    if (is_new) {
      (void)fchmod(mutex.file.get(), mode);  // whatever the umask took away
    }
    return;
  }
  mutex.lock_type = F_RDLCK;
  mutex.file = FileDescriptor::open(mutex.header.name, O_RDONLY | create | kLockFileFlags, mode);
}

bool reopen_lock_file(SMMutex& mutex) {
  static_cast<void>(mutex.file.release());  // somebody else closed it
  const int access_mode = mutex.lock_type == F_WRLCK ? O_WRONLY : O_RDONLY;
  mutex.file = FileDescriptor::open(mutex.header.name, access_mode | kLockFileFlags);
  return mutex.file.is_open();
}

SMMutex* make_mutex(const char* name, int create, mode_t mode) {
  ObjectPtr<SMMutex> mutex = make_object<SMMutex>(name);
  if (mutex == nullptr) {
    return nullptr;
  }
  if (is_named(*mutex)) {
    open_lock_file(*mutex, create, mode);
    if (!mutex->file.is_open()) {
      return nullptr;
    }
  }
  return mutex.release();
}

SMStatus lock_across_processes(SMMutex& mutex, int32_t timeout_ms) {
  for (;;) {
    const SMStatus status = lock_file(mutex.file.get(), mutex.lock_type, timeout_ms);
    if (status != frame::kFailed || errno != EBADF) {
      return status;
    }
    if (!reopen_lock_file(mutex)) {
      return frame::kFailed;
    }
  }
}

// In a child process the mutex is free, whoever held it in the parent when that forked: the lock on
// the file is the parent's.
bool renew_in_child(SMMutex& mutex) {
  return !mutex.used_in.is_of_this_process() &&
         mutex.used_in.renew_after_fork([&mutex] { mutex.local.renew(); });
}

// Apart from the mutexes without a name, which take little more time than the system's own.
[[gnu::noinline]] SMStatus lock_named(SMMutex& mutex, int32_t timeout_ms) {
  renew_in_child(mutex);
  SMStatus status = mutex.local.lock_within(timeout_ms);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  status = lock_across_processes(mutex, timeout_ms);
  if (status != SM_STATUS_SUCCESS) {
    mutex.local.unlock();
  }
  return status;
}

[[gnu::noinline]] void unlock_named(SMMutex& mutex) {
  if (renew_in_child(mutex)) {
    return;
  }
  unlock_file(mutex.file.get());
  mutex.local.unlock();
}

}  // namespace

SMMutex* create_mutex(const char* name, int32_t permission) {
  return make_mutex(name, O_CREAT, mode_of_permission(permission));
}

SMMutex* open_mutex(const char* name) {
  return name != nullptr ? make_mutex(name, 0, 0) : nullptr;
}

SMStatus lock_mutex(SMMutex* mutex, int32_t timeout_ms) {
  if (!is_object(mutex)) [[unlikely]] {
    return check_object(mutex);
  }
  return is_named(*mutex) ? lock_named(*mutex, timeout_ms) : mutex->local.lock_within(timeout_ms);
}

SMStatus unlock_mutex(SMMutex* mutex) {
  if (!is_object(mutex)) [[unlikely]] {
    return check_object(mutex);
  }
  if (is_named(*mutex)) {
    unlock_named(*mutex);
  } else {
    mutex->local.unlock();
  }
  return SM_STATUS_SUCCESS;
}

void destroy_mutex(SMMutex* mutex) {
  const ObjectPtr<SMMutex> taken = take_object(mutex);
}

}  // namespace kqsupt::ipc
