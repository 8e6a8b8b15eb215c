// Path locks: a mutex of the process, then a record lock on a lock file.

#include "ipc/path_lock.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "containers/red_black_tree.h"
#include "frame/status.h"
#include "ipc/forks.h"
#include "ipc/local_mutex.h"
#include "ipc/object.h"
#include "ipc/path_lock_table.h"
#include "ipc/poll.h"
#include "ipc/record_lock.h"
#include "os/file_descriptor.h"

namespace kqsupt::ipc {

using os::FileDescriptor;

struct PathLock {
  static constexpr ObjectType kType = ObjectType::kPathLock;
  ObjectHeader header;
  frame::HeapPtr<char> path;  // the guarded file
  LocalMutex mutex;
  uint32_t state = kUnlocked;  // or the mode it is locked in; changes while `mutex` is held
  FileDescriptor file;         // the lock file, while it is locked

  static constexpr uint32_t kUnlocked = 0;
};

namespace {

struct Table {
  containers::Node* locks = nullptr;  // by path
  PathLock* last_found = nullptr;
  bool started = false;
};
constinit LocalMutex table_mutex;
constinit Table table;

// ---- Permission bits ----
// A lock file has those of the file that it guards, so that whoever may change the file may lock it.

constexpr mode_t kPermissionBits = 07777;

mode_t guarded_mode(const char* path) {
  struct stat about {};
  return stat(path, &about) == 0 ? about.st_mode & kPermissionBits : 0644;
}

void align_permissions(const FileDescriptor& lock_file, mode_t mode) {
  struct stat about {};
  if (fstat(lock_file.get(), &about) == 0 && (about.st_mode & kPermissionBits) != mode) {
    // Only its owner may; whoever else could lock it goes on doing so.
    (void)fchmod(lock_file.get(), mode);
  }
}

// The directory of lock files may be shared by several users: no link that one of them put there is
// followed, and no pipe waited for.
constexpr int kLockFileFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

// Makes the lock file, where it is missing, and aligns its bits, also where these keep this process
// from opening it.
void prepare_lock_file(const PathLock& lock) {
  const FileDescriptor file =
      FileDescriptor::open(lock.header.name, O_RDONLY | O_CREAT | kLockFileFlags, 0600);
  if (file.is_open()) {
    align_permissions(file, guarded_mode(lock.path.get()));
    return;
  }
  const FileDescriptor place = FileDescriptor::open(lock.header.name, O_PATH | O_NOFOLLOW);
  struct stat about {};
  if (place.is_open() && fstat(place.get(), &about) == 0 && S_ISREG(about.st_mode)) {
    char name[32];
    std::snprintf(name, sizeof name, "/proc/self/fd/%d", place.get());
    (void)chmod(name, guarded_mode(lock.path.get()));
  }
}

PathLock* add_lock(const char* path, const containers::Place& place) {
  ObjectPtr<PathLock> lock = make_object<PathLock>(path);
  if (lock == nullptr) {
    return nullptr;
  }
  lock->path.reset(strdup(path));
  if (lock->path == nullptr) {
    return nullptr;
  }
  prepare_lock_file(*lock);
  return containers::insert_at(&table.locks, place, lock.get()) ? lock.release() : nullptr;
}

FileDescriptor open_lock_file(const PathLock& lock, PathLockMode mode) {
  const int access = mode == PathLockMode::kShared ? O_RDONLY : O_WRONLY;
  return FileDescriptor::open(lock.header.name, access | O_CREAT | kLockFileFlags, 0600);
}

SMStatus lock_opened(PathLock& lock, PathLockMode mode, int32_t timeout) {
  FileDescriptor file = open_lock_file(lock, mode);
  if (!file.is_open()) {
    return errno == EACCES ? SMStatus{SM_STATUS_ACCESS_DENIED} : frame::kFailed;
  }
  const int16_t type = mode == PathLockMode::kShared ? F_RDLCK : F_WRLCK;
  const SMStatus status = lock_file(file.get(), type, timeout);
  if (status == SM_STATUS_SUCCESS) {
    lock.file = std::move(file);
    lock.state = static_cast<uint32_t>(mode);
  }
  return status;
}

// A child process has none of the locks that its parent had when it forked.
void renew_locks() {
  for (containers::Node* node = containers::first(table.locks); node != nullptr;
       node = containers::next(node)) {
    auto* const lock = static_cast<PathLock*>(node->data);
    lock->state = PathLock::kUnlocked;
    lock->file.close();  // the record lock is the parent's and stays
    lock->mutex.renew();
  }
}

}  // namespace

PathLock* path_lock_of(const char* path) {
  const LocalMutexGuard guard(table_mutex);
  if (!table.started) {
    return nullptr;
  }
  if (table.last_found != nullptr && std::strcmp(table.last_found->path.get(), path) == 0) {
    return table.last_found;
  }
  const containers::Place place = containers::locate(table.locks, [path](void* data) {
    return std::strcmp(path, static_cast<PathLock*>(data)->path.get());
  });
  PathLock* const lock =
      place.match != nullptr ? static_cast<PathLock*>(place.match->data) : add_lock(path, place);
  if (lock != nullptr) {
    table.last_found = lock;
  }
  return lock;
}

SMStatus lock_path(PathLock* lock, PathLockMode mode, bool wait) {
  if (!is_object(lock) || (mode != PathLockMode::kShared && mode != PathLockMode::kExclusive)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const int32_t timeout = wait ? kForever : kOnce;
  SMStatus status = lock->mutex.lock_within(timeout);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  status = lock_opened(*lock, mode, timeout);
  if (status != SM_STATUS_SUCCESS) {
    lock->mutex.unlock();
  }
  return status;
}

SMStatus unlock_path(PathLock* lock) {
  if (!is_object(lock)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const bool is_exclusive = lock->state == static_cast<uint32_t>(PathLockMode::kExclusive);
  return unlock_path(lock, is_exclusive ? guarded_mode(lock->path.get()) : 0);
}

SMStatus unlock_path(PathLock* lock, mode_t guarded_mode) {
  if (!is_object(lock)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (lock->state == static_cast<uint32_t>(PathLockMode::kExclusive)) {
    align_permissions(lock->file, guarded_mode & kPermissionBits);
  }
  lock->state = PathLock::kUnlocked;
  unlock_file(lock->file.get());
  lock->file.close();
  lock->mutex.unlock();
  return SM_STATUS_SUCCESS;
}

bool start_path_locks() {
  renew_in_children(renew_locks);
  if (!hold_over_forks(table_mutex)) {
    return false;
  }
  const LocalMutexGuard guard(table_mutex);
  table.started = true;
  return true;
}

void stop_path_locks() {
  const LocalMutexGuard guard(table_mutex);
  table.started = false;
  table.last_found = nullptr;
  containers::erase_all(&table.locks,
                        [](void* data) { ObjectPtr<PathLock> lock(static_cast<PathLock*>(data)); });
}

}  // namespace kqsupt::ipc
