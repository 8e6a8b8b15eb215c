// The lock of one file, by its path: it excludes the threads of this process and all others.
//
//   PathLockGuard lock(path, PathLockMode::kShared, wait);
//   if (lock.status() != SM_STATUS_SUCCESS) return lock.status();
//
// This header and ipc/local_mutex.h are all that the configuration files see of named objects.
// Named objects in turn see config/ini_file.h and config/install_paths.h, for their keys are kept
// in an INI file. The ring does not close on itself: a path lock needs no key, only the directory
// of lock files and a digest, so to lock a file never reads one; and whoever allocates a key takes
// the lock of the registry as a whole before the one of the INI file in it, while nobody who holds
// the lock of an INI file asks for another lock. Locks are so always taken in the same order: the
// mutex of the table for a moment, then the registry's, then one INI file's.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

#include "kqsupt/frame.h"

namespace kqsupt::ipc {

struct PathLock;

enum class PathLockMode : uint32_t { kShared = 1, kExclusive = 2 };

// The lock of `path`, which stays valid until the library stops. Null when memory is short, when
// the library has not started, or when the path of the lock file gets too long.
[[nodiscard]] PathLock* path_lock_of(const char* path);

// Waits without limit, or tries once. SM_STATUS_TIMEOUT when somebody else holds it,
// SM_STATUS_ACCESS_DENIED when this process may not, 0xFFFFFFFF when the system refuses otherwise,
// SM_STATUS_INVALID_PARAMETER for no lock or another mode.
[[nodiscard]] SMStatus lock_path(PathLock* lock, PathLockMode mode, bool wait);
SMStatus unlock_path(PathLock* lock);
// The same for who has the guarded file open and knows its permission bits, which the lock file
// takes over: they are not looked up once more.
SMStatus unlock_path(PathLock* lock, mode_t guarded_mode);

// Holds the lock of a path for a scope.
class PathLockGuard {
 public:
  PathLockGuard(const char* path, PathLockMode mode, bool wait)
      : lock_(path_lock_of(path)),
        status_(lock_ != nullptr ? lock_path(lock_, mode, wait) : SMStatus{SM_STATUS_NO_MEMORY}) {}
  ~PathLockGuard() {
    if (status_ == SM_STATUS_SUCCESS) {
      (void)(mode_.has_value() ? unlock_path(lock_, *mode_) : unlock_path(lock_));
    }
  }
  PathLockGuard(const PathLockGuard&) = delete;
  PathLockGuard& operator=(const PathLockGuard&) = delete;

  // SM_STATUS_NO_MEMORY when there is no lock for the path, else what locking it answered.
  [[nodiscard]] SMStatus status() const { return status_; }

  // Tells the bits that the file has at the end of the scope, or that they are not known.
  void tell_mode(std::optional<mode_t> mode) { mode_ = mode; }

 private:
  PathLock* lock_;
  SMStatus status_;
  std::optional<mode_t> mode_;
};

}  // namespace kqsupt::ipc
