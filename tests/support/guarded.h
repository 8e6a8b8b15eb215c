// Memory that ends exactly where an inaccessible page begins: a read or write one element too far
// is the end of the test.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace kqsupt::tests {

template <class T>
class Guarded {
 public:
  // `count` elements, each of which has the bytes `fill`.
  explicit Guarded(size_t count, uint8_t fill = 0x55) : count_(count) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t room = (count * sizeof(T) + page - 1) / page * page;
    mapped_ = room + page;
    void* start =
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) {
      throw std::runtime_error("no guarded memory");
    }
    start_ = static_cast<char*>(start);
    mprotect(start_ + room, page, PROT_NONE);
    data_ = reinterpret_cast<T*>(start_ + room - count * sizeof(T));
    std::memset(data_, fill, count * sizeof(T));
  }

  // A copy of `count` elements at `from`.
  Guarded(const T* from, size_t count) : Guarded(count) { std::copy(from, from + count, data_); }

  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;
  ~Guarded() { munmap(start_, mapped_); }

  [[nodiscard]] T* data() const { return data_; }
  [[nodiscard]] size_t size() const { return count_; }
  [[nodiscard]] T* end() const { return data_ + count_; }

 private:
  size_t count_;
  size_t mapped_ = 0;
  char* start_ = nullptr;
  T* data_ = nullptr;
};

// The same the other way round: memory that begins right behind an inaccessible page.
template <class T>
class GuardedBefore {
 public:
  // A copy of `count` elements at `from`, of less than a page in all.
  GuardedBefore(const T* from, size_t count) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    mapped_ = 2 * page;
    void* start =
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED || count * sizeof(T) > page) {
      throw std::runtime_error("no guarded memory");
    }
    start_ = static_cast<char*>(start);
    mprotect(start_, page, PROT_NONE);
    data_ = reinterpret_cast<T*>(start_ + page);
    std::copy(from, from + count, data_);
  }

  GuardedBefore(const GuardedBefore&) = delete;
  GuardedBefore& operator=(const GuardedBefore&) = delete;
  ~GuardedBefore() { munmap(start_, mapped_); }

  [[nodiscard]] T* data() const { return data_; }

 private:
  size_t mapped_ = 0;
  char* start_ = nullptr;
  T* data_ = nullptr;
};

}  // namespace kqsupt::tests
