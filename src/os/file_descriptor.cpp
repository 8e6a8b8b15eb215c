// Opening, reading and writing files.

#include "os/file_descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace kqsupt::os {

FileDescriptor FileDescriptor::open(const char* path, int flags, mode_t mode) {
  int fd;
  do {
    fd = ::open(path, flags | O_CLOEXEC, mode);
  } while (fd < 0 && errno == EINTR);
  return FileDescriptor(fd);
}

// The descriptor is gone whatever the call says, also when a signal interrupts it.
bool FileDescriptor::close() {
  return !is_open() || ::close(release()) == 0 || errno == EINTR;
}

ssize_t FileDescriptor::read_some(void* buffer, size_t size) const {
  ssize_t count;
  do {
    count = ::read(fd_, buffer, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

ssize_t FileDescriptor::read_all(void* buffer, size_t size) const {
  size_t done = 0;
  while (done < size) {
    const ssize_t count = read_some(static_cast<uint8_t*>(buffer) + done, size - done);
    if (count < 0) {
      return -1;
    }
    if (count == 0) {
      break;
    }
    done += static_cast<size_t>(count);
  }
  return static_cast<ssize_t>(done);
}

ssize_t FileDescriptor::write_some(const void* bytes, size_t size) const {
  ssize_t count;
  do {
    count = ::write(fd_, bytes, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

bool FileDescriptor::write_all(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = write_some(bytes.data(), bytes.size());
    if (count <= 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

}  // namespace kqsupt::os
