// Locking, backing up and writing.

#include "log/event_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include "config/directories.h"
#include "config/file_commit.h"
#include "frame/status.h"

namespace kqsupt::log {
namespace {

using ipc::PathLockGuard;
using ipc::PathLockMode;
using os::FileDescriptor;

constexpr mode_t kNewMode = 0664;
constexpr mode_t kAllBits = 07777;
constexpr mode_t kKeptBits = 01666;

}  // namespace

void make_backup_name(char* path) {
  path[std::strlen(path) - 1] = '_';
}

SMStatus make_directory_of(const char* path) {
  const config::DirectoryName directory(path);
  return directory.ok() ? config::make_directory(directory.c_str()) : frame::kFailed;
}

SMStatus delete_log(const char* path, SMStatus ready) {
  const PathLockGuard lock(path, PathLockMode::kExclusive, true);
  if (lock.status() != SM_STATUS_SUCCESS) {
    return lock.status();
  }
  struct stat about {};
  if (lstat(path, &about) != 0) {
    return frame::kFailed;
  }
  return ready == SM_STATUS_SUCCESS ? config::delete_file(path) : ready;
}

LockedLog::LockedLog(const char* path, int access, Missing missing)
    : path_(path), lock_(path, PathLockMode::kExclusive, true), status_(lock_.status()) {
  if (status_ != SM_STATUS_SUCCESS) {
    return;
  }
  // A pipe is no log, and none is waited for.
  struct stat about {};
  if (!open(access | O_NONBLOCK | O_NOCTTY, missing) || fstat(file_.get(), &about) != 0 ||
      S_ISFIFO(about.st_mode)) {
    status_ = frame::kFailed;
    return;
  }
  size_ = about.st_size;
  is_regular_ = S_ISREG(about.st_mode);
  found_mode_ = about.st_mode & kAllBits;
}

bool LockedLog::open(int flags, Missing missing) {
  file_ = FileDescriptor::open(path_, flags);
  if (!file_.is_open() && errno == EACCES && (flags & O_APPEND) != 0) {
    // What can only be written can still be appended to.
    file_ = FileDescriptor::open(path_, (flags & ~O_ACCMODE) | O_WRONLY);
  }
  if (missing == Missing::kLeave) {
    return file_.is_open();
  }
  if (!file_.is_open() && errno == ENOENT) {
    create(flags);
  }
  if (!file_.is_open() && errno == ENOENT && make_directory_of(path_) == SM_STATUS_SUCCESS) {
    create(flags);
  }
  return file_.is_open();
}

// Only what is made here is this one's to take back: somebody may have made a file meanwhile, and a
// link may lead to one that is not there.
void LockedLog::create(int flags) {
  file_ = FileDescriptor::open(path_, flags | O_CREAT | O_EXCL, kNewMode);
  is_new_ = file_.is_open();
  if (!is_new_ && errno == EEXIST) {
    file_ = FileDescriptor::open(path_, flags | O_CREAT, kNewMode);
  }
}

bool LockedLog::back_up_when_full(uint64_t growth, uint32_t max_size) {
  if (is_new_ || !is_regular_ || static_cast<uint64_t>(size_) + growth < max_size) {
    return false;
  }
  const frame::HeapPtr<char> backup(strdup(path_));
  if (backup == nullptr) {
    return false;
  }
  make_backup_name(backup.get());
  // The name goes over to the new backup in one step: there is no moment without one.
  lock_.tell_mode(std::nullopt);
  return rename(path_, backup.get()) == 0;
}

void LockedLog::settle_mode() {
  const mode_t mode = is_new_ ? kNewMode : found_mode_ & kKeptBits;
  if (found_mode_ == mode || fchmod(file_.get(), mode) == 0) {  // only its owner may
    lock_.tell_mode(mode);
  }
}

bool LockedLog::cut_to(off_t size) {
  if (!file_.truncate(size)) {
    return false;
  }
  size_ = size;
  return true;
}

SMStatus LockedLog::write(off_t offset, std::string_view bytes, std::string_view replaced) {
  if (!file_.write_all_at(bytes, offset)) {
    take_back(offset, replaced);
    return SM_STATUS_OUT_OF_SPACE;
  }
  return file_.close() ? SMStatus{SM_STATUS_SUCCESS} : SMStatus{SM_STATUS_OUT_OF_SPACE};
}

// What is left of the bytes is nobody's yet: the file is still locked.
void LockedLog::take_back(off_t offset, std::string_view replaced) {
  if (is_new_) {
    lock_.tell_mode(std::nullopt);
    unlink(path_);
    return;
  }
  (void)file_.write_all_at(replaced, offset);
  (void)cut_to(size_);
}

Tail::Tail(const LockedLog& log) {
  constexpr off_t kMost = 512 * 1024;
  offset_ = std::max<off_t>(log.size() - kMost, 0);
  const auto wanted = static_cast<size_t>(log.size() - offset_);
  bytes_ = frame::heap_array<char>(wanted);
  if (bytes_ != nullptr &&
      log.file().read_all_at(bytes_.get(), wanted, offset_) == static_cast<ssize_t>(wanted)) {
    size_ = wanted;
  }
}

}  // namespace kqsupt::log
