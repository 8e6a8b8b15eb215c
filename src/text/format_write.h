// The third step of formatting: fields and plain text go into the caller's buffer, padded to their
// width and cut at its end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "text/format_convert.h"

namespace kqsupt::text {

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
      std::memcpy(at_, text, stored);
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
