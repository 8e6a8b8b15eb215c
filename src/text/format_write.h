// The third step of formatting: fields and plain text go into the caller's buffer, padded to their
// width and cut at its end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "text/format_convert.h"

namespace kqsupt::text {

// Most texts are short: a call of memcpy costs more than the copy.
inline void copy(char* to, const char* from, size_t size) {
  if (size > 16) {
    std::memcpy(to, from, size);
  } else if (size >= 8) {
    uint64_t first, last;
    std::memcpy(&first, from, 8);
    std::memcpy(&last, from + size - 8, 8);
    std::memcpy(to, &first, 8);
    std::memcpy(to + size - 8, &last, 8);
  } else if (size >= 4) {
    uint32_t first, last;
    std::memcpy(&first, from, 4);
    std::memcpy(&last, from + size - 4, 4);
    std::memcpy(to, &first, 4);
    std::memcpy(to + size - 4, &last, 4);
  } else {
    for (size_t i = 0; i < size; ++i) to[i] = from[i];
  }
}

// Takes any amount of text. Stores what fits, counts the rest.
class BoundedOutput {
 public:
  // `size` in bytes with the terminator. Without a buffer nothing is stored, but counted as if.
  BoundedOutput(char* dst, uint32_t size)
      : start_(dst),
        at_(dst),
        limit_(size == 0 ? 0 : std::min<uint32_t>(size - 1, INT32_MAX)),
        room_(dst == nullptr ? 0 : limit_) {}

  void text(const char* text, size_t size) {
    const size_t stored = std::min(size, room_);
    if (stored != 0) {
      copy(at_, text, stored);
      at_ += stored;
      room_ -= stored;
    }
    dropped_ += size - stored;
  }
  void run(char c, uint64_t count) {
    const auto stored = static_cast<size_t>(std::min<uint64_t>(count, room_));
    if (stored != 0) {
      std::memset(at_, c, stored);
      at_ += stored;
      room_ -= stored;
    }
    dropped_ += count - stored;
  }

  // What came so far, stored or not.
  [[nodiscard]] uint64_t produced() const { return static_cast<uint64_t>(at_ - start_) + dropped_; }
  [[nodiscard]] bool cut() const { return produced() > limit_; }

  // Ends the text and returns the number of characters in it. Also a buffer of 0 bytes gets its
  // terminator: callers pass at least 1 and rely on finding it.
  int32_t finish() {
    if (at_ != nullptr) {
      *at_ = 0;
    }
    return static_cast<int32_t>(std::min<uint64_t>(produced(), limit_));
  }

 private:
  char* start_;
  char* at_;
  uint32_t limit_;
  size_t room_;  // what may still be stored
  uint64_t dropped_ = 0;
};

// Writes a field that has runs of zeros or is shorter than the width of its specification.
void write_padded(BoundedOutput& output, const Spec& spec, const Field& field);

// Writes the field, padded to the width of its specification.
inline void write_field(BoundedOutput& output, const Spec& spec, const Field& field) {
  if ((field.zeros_behind_prefix | field.zeros_before_suffix) == 0 && spec.width <= field.size) {
    output.text(field.text, field.size);
  } else {
    write_padded(output, spec, field);
  }
}

}  // namespace kqsupt::text
