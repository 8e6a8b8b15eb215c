// Opening, reading and writing files.

#include "os/file_descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace kqsupt::os {
namespace {

// `call()` again for as long as a signal interrupts it.
template <class Call>
ssize_t repeated(const Call& call) {
  ssize_t result;
  do {
    result = call();
  } while (result < 0 && errno == EINTR);
  return result;
}

// `read(to, left, done)` until all is there.
template <class Read>
ssize_t whole_of(void* buffer, size_t size, const Read& read) {
  size_t done = 0;
  while (done < size) {
    const ssize_t count = read(static_cast<uint8_t*>(buffer) + done, size - done, done);
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

// `write(left, size, done)` until all is written.
template <class Write>
bool wrote_all(std::string_view bytes, const Write& write) {
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t count = write(bytes.data() + done, bytes.size() - done, done);
    if (count <= 0) {
      return false;
    }
    done += static_cast<size_t>(count);
  }
  return true;
}

}  // namespace

FileDescriptor FileDescriptor::open(const char* path, int flags, mode_t mode) {
  return FileDescriptor(
      static_cast<int>(repeated([=] { return ::open(path, flags | O_CLOEXEC, mode); })));
}

// The descriptor is gone whatever the call says, also when a signal interrupts it.
bool FileDescriptor::close() {
  return !is_open() || ::close(release()) == 0 || errno == EINTR;
}

ssize_t FileDescriptor::read_some(void* buffer, size_t size) const {
  return repeated([=, this] { return ::read(fd_, buffer, size); });
}

ssize_t FileDescriptor::read_all(void* buffer, size_t size) const {
  return whole_of(buffer, size,
                  [this](void* to, size_t left, size_t) { return read_some(to, left); });
}

ssize_t FileDescriptor::read_all_at(void* buffer, size_t size, off_t offset) const {
  return whole_of(buffer, size, [=, this](void* to, size_t left, size_t done) {
    return repeated(
        [=, this] { return ::pread(fd_, to, left, offset + static_cast<off_t>(done)); });
  });
}

ssize_t FileDescriptor::write_some(const void* bytes, size_t size) const {
  return repeated([=, this] { return ::write(fd_, bytes, size); });
}

bool FileDescriptor::write_all(std::string_view bytes) const {
  return wrote_all(
      bytes, [this](const char* left, size_t size, size_t) { return write_some(left, size); });
}

bool FileDescriptor::write_all_at(std::string_view bytes, off_t offset) const {
  return wrote_all(bytes, [=, this](const char* left, size_t size, size_t done) {
    return repeated(
        [=, this] { return ::pwrite(fd_, left, size, offset + static_cast<off_t>(done)); });
  });
}

bool FileDescriptor::truncate(off_t size) const {
  return repeated([=, this] { return ftruncate(fd_, size); }) == 0;
}

bool FileDescriptor::sync() const {
  return repeated([this] { return fsync(fd_); }) == 0;
}

}  // namespace kqsupt::os
