// One loop of reads and writes for all copies, and a shorter way for the bulk of large ones.

#include "os/file_copy.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "frame/heap.h"
#include "frame/status.h"
#include "os/file_descriptor.h"

namespace kqsupt::os {
namespace {

constexpr SMStatus kNotExamined = 9;
constexpr size_t kBufferSize = 8192;
constexpr mode_t kPermissionBits = 07777;

struct Destination {
  const char* path;
  bool existed;
  bool is_appended_to;
};

SMStatus status_of_errno() {
  return errno == ENOSPC ? SMStatus{SM_STATUS_OUT_OF_SPACE} : frame::kFailed;
}

bool exists(const char* path) {
  return access(path, F_OK) == 0;
}

// By whatever names they were opened. Only what has content of its own counts.
bool are_same(const struct stat& one, const struct stat& other) {
  return S_ISREG(one.st_mode) && one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Nobody looks how much of a part was written: one that fits in part is taken for written.
SMStatus copy_in_parts(const FileDescriptor& from, const FileDescriptor& to, void* buffer) {
  for (;;) {
    const ssize_t count = from.read_some(buffer, kBufferSize);
    if (count <= 0) {
      return count == 0 ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
    }
    if (to.write_some(buffer, static_cast<size_t>(count)) < 0) {
      return status_of_errno();
    }
  }
}

// Has the kernel copy from file to file, as far as it can and will: it takes two thirds of the time
// that the loop takes. Where it stops is no result. The loop goes on from the beginning of the part
// that it stopped in, finds the end of the source or fails in its own way, and leaves the same file
// behind as if it had done everything. False when the loop cannot be sent there.
bool copy_bulk(const FileDescriptor& from, const FileDescriptor& to) {
  constexpr size_t kMost = 0x7FFFF000;  // of one call, on every kernel
  off_t done = 0;
  ssize_t count;
  do {
    count = sendfile(to.get(), from.get(), nullptr, kMost);
    done += count > 0 ? count : 0;
  } while (count > 0 || (count < 0 && errno == EINTR));
  if (count == 0) {
    return true;
  }
  const off_t begin = done - done % static_cast<off_t>(kBufferSize);
  return lseek(from.get(), begin, SEEK_SET) == begin && lseek(to.get(), begin, SEEK_SET) == begin;
}

SMStatus transfer(const FileDescriptor& from, const struct stat& source, const FileDescriptor& to,
                  const Destination& destination) {
  struct stat target {};
  if (fstat(to.get(), &target) != 0) {
    return frame::kFailed;
  }
  // A copy would lose what it is to read, and an append never come to the end of it.
  if (are_same(source, target)) {
    return destination.is_appended_to && source.st_size == 0 ? SMStatus{SM_STATUS_SUCCESS}
                                                             : frame::kFailed;
  }
  const frame::HeapPtr<void> buffer(std::malloc(kBufferSize));
  if (buffer == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  if (!destination.is_appended_to && S_ISREG(target.st_mode)) {
    if ((destination.existed || target.st_size != 0) && !to.truncate(0)) {
      return status_of_errno();
    }
    // For one part or two the way through the buffer is as short.
    if (S_ISREG(source.st_mode) && source.st_size > off_t{2 * kBufferSize} &&
        !copy_bulk(from, to)) {
      return frame::kFailed;
    }
  }
  return copy_in_parts(from, to, buffer.get());
}

SMStatus finish(FileDescriptor& to, const Destination& destination, mode_t mode, Sync sync) {
  if (!(destination.is_appended_to && destination.existed) && fchmod(to.get(), mode) != 0) {
    return frame::kFailed;
  }
  if ((sync == Sync::kYes && !to.sync()) || !to.close()) {
    return status_of_errno();
  }
  return SM_STATUS_SUCCESS;
}

// The destination is opened without being emptied: first it must be known to be another file than
// the source.
SMStatus write_to(const Destination& destination, const char* path, Sync sync) {
  const FileDescriptor from = FileDescriptor::open(path, O_RDONLY | O_NOCTTY);
  if (!from.is_open()) {
    return SM_STATUS_FILE_NOT_FOUND;
  }
  struct stat source {};
  if (fstat(from.get(), &source) != 0) {
    return kNotExamined;
  }
  const mode_t mode = source.st_mode & kPermissionBits;
  const int flags = O_RDWR | O_CREAT | O_NOCTTY | (destination.is_appended_to ? O_APPEND : 0);
  FileDescriptor to = FileDescriptor::open(destination.path, flags, mode);
  if (!to.is_open()) {
    return status_of_errno();
  }
  const SMStatus status = transfer(from, source, to, destination);
  return status == SM_STATUS_SUCCESS ? finish(to, destination, mode, sync) : status;
}

}  // namespace

SMStatus copy_file(const char* source, const char* destination, uint32_t overwrite, Sync sync) {
  if (source == nullptr || destination == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const bool existed = exists(destination);
  if (existed && overwrite == 0) {
    return SM_STATUS_FILE_EXISTS;
  }
  return write_to({destination, existed, false}, source, sync);
}

SMStatus append_file(const char* source, const char* destination, uint32_t create, Sync sync) {
  if (source == nullptr || destination == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const bool existed = exists(destination);
  if (!existed && create == 0) {
    return SM_STATUS_FILE_NOT_FOUND;
  }
  return write_to({destination, existed, true}, source, sync);
}

}  // namespace kqsupt::os
