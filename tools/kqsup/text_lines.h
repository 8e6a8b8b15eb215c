// The lines of a text file as the library takes them apart.
#pragma once

#include <algorithm>
#include <string_view>

namespace kqsup {

// A longer line counts as several.
inline constexpr size_t kLongestLine = 8450;

// Takes the next line off `text`, without its end; false when there is none. What stands behind a
// NUL in it does not count.
inline bool next_line(std::string_view& text, std::string_view& line) {
  if (text.empty()) {
    return false;
  }
  line = text.substr(0, kLongestLine);
  line = line.substr(0, line.find('\n'));
  text.remove_prefix(std::min(line.size() + (line.size() < kLongestLine ? 1 : 0), text.size()));
  line = line.substr(0, line.find('\0'));
  return true;
}

inline std::string_view without_blanks_before(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
}

inline std::string_view without_blanks_behind(std::string_view text) {
  return text.substr(0, text.find_last_not_of(" \t") + 1);
}

}  // namespace kqsup
