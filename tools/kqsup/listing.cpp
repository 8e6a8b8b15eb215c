#include "listing.h"

#include <cstdio>
#include <string_view>

namespace kqsup {

namespace {

using nlohmann::ordered_json;

std::string cell(const ordered_json& value) {
  if (value.is_null()) {
    return "-";
  }
  return printable(value.is_string() ? value.get<std::string>() : value.dump());
}

// How many columns of a terminal a text takes, which is one a character.
size_t width(std::string_view text) {
  size_t columns = 0;
  for (const char c : text) {
    columns += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
  }
  return columns;
}

// How many bytes at the start of the text are one character that may be printed; 0 for none.
size_t character(std::string_view text) {
  const auto at = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = at(0);
  if (first < 0x80) {
    return first >= 0x20 && first != 0x7F ? 1 : 0;
  }
  const size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < size) {
    return 0;
  }
  unsigned code = first & (0xFFU >> (size + 1));
  for (size_t i = 1; i < size; ++i) {
    if ((at(i) & 0xC0) != 0x80) {
      return 0;
    }
    code = code << 6 | (at(i) & 0x3F);
  }
  const bool is_overlong = (size == 3 && code < 0x800) || (size == 4 && code < 0x10000);
  const bool is_control = code < 0xA0;
  const bool is_surrogate = code >= 0xD800 && code < 0xE000;
  return is_overlong || is_control || is_surrogate || code > 0x10FFFF ? 0 : size;
}

}  // namespace

std::string printable(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const size_t size = character(bytes);
    if (size != 0) {
      text.append(bytes.substr(0, size));
    } else {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned char>(bytes[0]));
      text += escaped;
    }
    bytes.remove_prefix(size != 0 ? size : 1);
  }
  return text;
}

std::string json_text(const ordered_json& value, int indent) {
  const std::string text = value.dump(indent, ' ', false, ordered_json::error_handler_t::replace);
  std::string safe;
  safe.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
    const bool is_control = byte == 0xC2 && next < 0xA0;
    if (!is_control && byte != 0x7F) {
      safe += text[i];
      continue;
    }
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, "\\u%04x", is_control ? next : byte);
    safe += escaped;
    i += is_control ? 1 : 0;
  }
  return safe;
}

void Listing::add(std::vector<ordered_json> values) {
  rows_.push_back(std::move(values));
}

std::string Listing::table() const {
  // A cell beyond this stands out of its column: one of a hostile file does not pad every row.
  constexpr size_t kWidestColumn = 80;
  std::vector<std::vector<std::string>> cells{{}};
  std::vector<bool> is_number(columns_.size(), false);
  for (const Column& column : columns_) {
    cells[0].push_back(column.title);
  }
  for (const auto& row : rows_) {
    std::vector<std::string> line;
    for (size_t i = 0; i < columns_.size(); ++i) {
      line.push_back(cell(row[i]));
      is_number[i] = is_number[i] || row[i].is_number();
    }
    cells.push_back(std::move(line));
  }
  std::vector<size_t> widths(columns_.size(), 0);
  for (const auto& line : cells) {
    for (size_t i = 0; i < line.size(); ++i) {
      widths[i] = std::max(widths[i], std::min(width(line[i]), kWidestColumn));
    }
  }
  std::string table;
  for (const auto& line : cells) {
    std::string text;
    for (size_t i = 0; i < line.size(); ++i) {
      const std::string gap(widths[i] - std::min(width(line[i]), widths[i]), ' ');
      text += (i != 0 ? "  " : "") + (is_number[i] ? gap + line[i] : line[i] + gap);
    }
    text.erase(text.find_last_not_of(' ') + 1);
    table += text + "\n";
  }
  return table;
}

std::string Listing::json() const {
  ordered_json all = ordered_json::array();
  for (const auto& row : rows_) {
    ordered_json object = ordered_json::object();
    for (size_t i = 0; i < columns_.size(); ++i) {
      object[columns_[i].key] = row[i];
    }
    all.push_back(std::move(object));
  }
  return json_text(all) + "\n";
}

void Listing::print(bool as_json) const {
  const std::string text = as_json ? json() : table();
  std::fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace kqsup
