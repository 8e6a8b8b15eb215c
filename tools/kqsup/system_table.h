// The tables of System V objects in /proc/sysvipc, whose first line names their columns: newer kernels
// may have more.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "whole_number.h"

namespace kqsup {

// What stands between blanks and line ends.
[[nodiscard]] std::vector<std::string_view> words_of(std::string_view text);

// Fields by the title of their column. They point into the table.
using Row = std::map<std::string_view, std::string_view>;

// The rows behind the titles.
[[nodiscard]] std::vector<Row> rows_of(std::string_view table);

// False when there is no such column, or no such number in it.
template <class Number>
[[nodiscard]] bool read_field(const Row& row, std::string_view title, Number* value) {
  const auto place = row.find(title);
  return place != row.end() && read_number(place->second, *value);
}

// Keys are shown with a sign.
[[nodiscard]] bool read_key(const Row& row, uint32_t* key);

}  // namespace kqsup
