// Rows with the same fields: a table with aligned columns for people, an array of objects for
// programs.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace kqsup {

class Listing {
 public:
  struct Column {
    std::string title;  // above the column; two words have a space between them
    std::string key;    // of the field in JSON
  };

  explicit Listing(std::vector<Column> columns) : columns_(std::move(columns)) {}

  // As many values as columns. Null is "-" in the table; numbers stand on the right.
  void add(std::vector<nlohmann::ordered_json> values);

  // The whole table, or the whole array; each ends with a line end. No rows are a table of its
  // titles, or an empty array.
  [[nodiscard]] std::string table() const;
  [[nodiscard]] std::string json() const;

  void print(bool as_json) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<nlohmann::ordered_json>> rows_;
};

// What stands for bytes that are no text: each byte that is a control character, or no UTF-8, is
// "\xHH", so that what a file says cannot move a terminal's cursor.
[[nodiscard]] std::string printable(std::string_view bytes);

// JSON without the control characters that its own rules leave as they are, and with what stands for
// unknown characters in the place of bytes that are no text. `indent` -1 is one line.
[[nodiscard]] std::string json_text(const nlohmann::ordered_json& value, int indent = 2);

}  // namespace kqsup
