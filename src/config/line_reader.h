// The lines of a file, one after the other, as everything that reads text files here sees them.
//
//   LineReader lines(file, buffer);            // or: LineReader lines(content);
//   for (std::string_view line; lines.next(line);) …
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "os/file_descriptor.h"

namespace kqsupt::config {

// A longer line counts as several.
inline constexpr size_t kLongestLine = 8450;

class LineReader {
 public:
  // Room for a few of the longest lines: most files fit, and large ones take few reads.
  static constexpr size_t kBufferSize = 32768;

  LineReader(const os::FileDescriptor& file, std::span<char> buffer)
      : file_(&file), buffer_(buffer), begin_(buffer.data()), end_(buffer.data()) {}
  explicit LineReader(std::string_view content)
      : begin_(content.data()), end_(content.data() + content.size()) {}

  // The next line with its "\n", unless the file ends without one or the line is too long. It is
  // valid until the next call.
  [[nodiscard]] bool next(std::string_view& line);

  // Whether the end was not the file's: it could not be read.
  [[nodiscard]] bool failed() const { return failed_; }

 private:
  bool refill();

  const os::FileDescriptor* file_ = nullptr;  // null once all of it is there
  std::span<char> buffer_;
  const char* begin_;  // what is read and not yet handed out
  const char* end_;
  bool failed_ = false;
};

// A line without its end: up to "\n" or a NUL.
[[nodiscard]] std::string_view text_of(std::string_view line);

// The text from a place on, which is not beyond its end.
[[nodiscard]] inline std::string_view from(std::string_view text, size_t place) {
  text.remove_prefix(place);
  return text;
}

// Where `text` goes on after blanks: spaces and tabs.
[[nodiscard]] std::string_view skip_blanks(std::string_view text);

}  // namespace kqsupt::config
