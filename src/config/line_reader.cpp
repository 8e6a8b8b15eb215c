// Reading lines.

#include "config/line_reader.h"

#include <algorithm>
#include <cstring>

namespace kqsupt::config {

bool LineReader::next(std::string_view& line) {
  do {
    const size_t look = std::min(static_cast<size_t>(end_ - begin_), kLongestLine);
    // An empty content need not be anywhere.
    const void* found = look != 0 ? std::memchr(begin_, '\n', look) : nullptr;
    const auto* end = static_cast<const char*>(found);
    if (end == nullptr && look < kLongestLine && file_ != nullptr) {
      continue;
    }
    const size_t length = end != nullptr ? static_cast<size_t>(end + 1 - begin_) : look;
    line = {begin_, length};
    begin_ += length;
    return length != 0;
  } while (refill());
  return false;
}

// Moves what is left to the front of the buffer and reads on behind it. True unless that failed.
bool LineReader::refill() {
  const auto left = static_cast<size_t>(end_ - begin_);
  std::memmove(buffer_.data(), begin_, left);
  const size_t room = buffer_.size() - left;
  const ssize_t count = file_->read_all(buffer_.data() + left, room);
  failed_ = count < 0;
  begin_ = buffer_.data();
  end_ = begin_ + left + (failed_ ? 0 : static_cast<size_t>(count));
  // Only its end leaves room: one read may bring less than there is.
  if (failed_ || static_cast<size_t>(count) < room) {
    file_ = nullptr;
  }
  return !failed_;
}

std::string_view text_of(std::string_view line) {
  return line.substr(0, std::min(line.find_first_of(std::string_view("\n\0", 2)), line.size()));
}

std::string_view skip_blanks(std::string_view text) {
  return from(text, std::min(text.find_first_not_of(" \t"), text.size()));
}

}  // namespace kqsupt::config
