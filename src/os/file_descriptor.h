// A file descriptor with one owner. What the library opens is closed when another program is
// started, and a signal that interrupts a call has it repeated, here and nowhere else.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string_view>
#include <utility>

namespace kqsupt::os {

class FileDescriptor {
 public:
  constexpr FileDescriptor() = default;
  explicit constexpr FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
      close();
      fd_ = other.release();
    }
    return *this;
  }
  ~FileDescriptor() { close(); }

  // As open() does, without a descriptor on failure: errno says why.
  [[nodiscard]] static FileDescriptor open(const char* path, int flags, mode_t mode = 0);

  [[nodiscard]] bool is_open() const { return fd_ >= 0; }
  [[nodiscard]] int get() const { return fd_; }
  [[nodiscard]] int release() { return std::exchange(fd_, -1); }
  // False when what was written turns out to be lost.
  bool close();

  // Reads once. The number of bytes, 0 at the end of the file; -1 on failure.
  [[nodiscard]] ssize_t read_some(void* buffer, size_t size) const;
  // Reads until `size` bytes are there or the file ends. The number of bytes; -1 on failure.
  [[nodiscard]] ssize_t read_all(void* buffer, size_t size) const;

  // The same at an offset, wherever the descriptor stands.
  [[nodiscard]] ssize_t read_all_at(void* buffer, size_t size, off_t offset) const;

  // Writes once. The number of bytes, which may be fewer; -1 on failure.
  [[nodiscard]] ssize_t write_some(const void* bytes, size_t size) const;
  // False, with a part of it written, when the file takes no more.
  [[nodiscard]] bool write_all(std::string_view bytes) const;
  // The same at an offset, which a file that is open for appending does not heed.
  [[nodiscard]] bool write_all_at(std::string_view bytes, off_t offset) const;

  // Both as the calls of their names do; errno says why not.
  [[nodiscard]] bool truncate(off_t size) const;
  [[nodiscard]] bool sync() const;

 private:
  int fd_ = -1;
};

}  // namespace kqsupt::os
