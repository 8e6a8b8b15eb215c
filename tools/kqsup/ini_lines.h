// The lines of configuration files, as the library sees them.
//
//   IniLines lines(content);
//   for (std::string_view line; lines.next(&line);) …
#pragma once

#include <algorithm>
#include <string_view>

namespace kqsup {

class IniLines {
 public:
  // A longer line counts as several.
  static constexpr size_t kLongestLine = 8450;

  explicit IniLines(std::string_view content) : rest_(content) {}

  // The next line, without its end and without the blanks before it. False when there is none.
  [[nodiscard]] bool next(std::string_view* line) {
    if (rest_.empty()) {
      return false;
    }
    const std::string_view look = rest_.substr(0, kLongestLine);
    const size_t end = look.find('\n');
    const size_t size = end != std::string_view::npos ? end + 1 : look.size();
    *line = look.substr(0, size);
    rest_.remove_prefix(size);
    is_comment_ = line->starts_with(';') || line->starts_with('#');
    *line = line->substr(0, line->find_first_of(std::string_view("\n\0", 2)));
    line->remove_prefix(std::min(line->find_first_not_of(" \t"), line->size()));
    ++number_;
    return true;
  }

  // Whether the first column of the line that was handed out begins a comment.
  [[nodiscard]] bool is_comment() const { return is_comment_; }
  [[nodiscard]] size_t number() const { return number_; }  // from 1 on

 private:
  std::string_view rest_;
  bool is_comment_ = false;
  size_t number_ = 0;
};

}  // namespace kqsup
