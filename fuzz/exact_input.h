// Input for a target in heap blocks of exactly its size, so that a read behind it is found.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace kqsupt::fuzz {

// Takes the input apart from the front.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  // The next byte; 0 when there is none left.
  uint8_t byte() {
    if (size_ == 0) {
      return 0;
    }
    --size_;
    return *data_++;
  }

  // What is left, as a terminated text without zeros inside it.
  [[nodiscard]] std::unique_ptr<char[]> text() const {
    std::unique_ptr<char[]> copy(new char[size_ + 1]);
    for (size_t i = 0; i < size_; ++i) {
      copy[i] = data_[i] != 0 ? static_cast<char>(data_[i]) : ' ';
    }
    copy[size_] = '\0';
    return copy;
  }

  [[nodiscard]] std::unique_ptr<uint8_t[]> bytes() const {
    std::unique_ptr<uint8_t[]> copy(new uint8_t[size_]);
    if (size_ != 0) {
      std::memcpy(copy.get(), data_, size_);
    }
    return copy;
  }
  [[nodiscard]] uint32_t size() const { return static_cast<uint32_t>(size_); }

 private:
  const uint8_t* data_;
  size_t size_;
};

// Ends the run where the library broke a promise.
inline void require(bool kept) {
  if (!kept) {
    std::abort();
  }
}

}  // namespace kqsupt::fuzz
