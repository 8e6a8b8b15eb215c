#include "system_table.h"

#include <algorithm>
#include <cstddef>

namespace kqsup {

std::vector<std::string_view> words_of(std::string_view text) {
  constexpr std::string_view kBetween = " \t\r\n";
  std::vector<std::string_view> words;
  for (size_t end = 0, begin = 0; (begin = text.find_first_not_of(kBetween, end)) != text.npos;) {
    end = std::min(text.find_first_of(kBetween, begin), text.size());
    words.push_back(text.substr(begin, end - begin));
  }
  return words;
}

std::vector<Row> rows_of(std::string_view table) {
  std::vector<Row> rows;
  std::vector<std::string_view> titles;
  while (!table.empty()) {
    const size_t end = std::min(table.find('\n'), table.size());
    const std::vector<std::string_view> words = words_of(table.substr(0, end));
    table.remove_prefix(std::min(end + 1, table.size()));
    if (titles.empty()) {
      titles = words;
      continue;
    }
    Row row;
    for (size_t i = 0; i < std::min(titles.size(), words.size()); ++i) {
      row[titles[i]] = words[i];
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

bool read_key(const Row& row, uint32_t* key) {
  int64_t value = 0;
  const bool read = read_field(row, "key", &value);
  *key = static_cast<uint32_t>(value);
  return read;
}

}  // namespace kqsup
