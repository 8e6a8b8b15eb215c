// The family's own logs, and what is in them.
#pragma once

#include <unistd.h>

#include <cstring>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kqsupt/log.h"
#include "kqsupt/text.h"
#include "log/header_block.h"
#include "support/scratch.h"

namespace kqsupt::tests {

inline std::string own_log(uint32_t log) {
  char path[512] = "";
  uint32_t size = sizeof path;
  return SMGetLogPathFileName(log, path, &size) == SM_STATUS_SUCCESS ? path : "";
}
inline std::string backup_of(std::string path) {
  path.back() = '_';
  return path;
}

// Records, from units in the host's order, as UTF-8.
inline std::string narrow(const std::string& bytes) {
  std::vector<ustring> units(bytes.size() / sizeof(ustring) + 1);
  std::memcpy(units.data(), bytes.data(), bytes.size());
  uint32_t size = 0;
  if (SMUCS2StrToUTF8Str(nullptr, &size, units.data()) != SM_STATUS_SUCCESS) {
    return "(not UCS-2)";
  }
  std::string text(size, '\0');
  (void)SMUCS2StrToUTF8Str(text.data(), &size, units.data());
  text.resize(size - 1);
  return text;
}

struct Record {
  uint32_t id;
  std::string source;
  std::string category;
  std::string type;
  std::string time;
  std::string computer;
  std::string description;
  std::string dump;
};

// Takes "`label`…\r\n" off the text, and gives what stands between. None when it is not there.
inline std::optional<std::string> take_line(std::string_view& text, std::string_view label) {
  const size_t end = text.find("\r\n");
  if (!text.starts_with(label) || end == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string value(text.substr(label.size(), end - label.size()));
  text.remove_prefix(end + 2);
  return value;
}

// Reads a text log record by record. None when it is not one from its first to its last byte.
// Descriptions must be of one line.
inline std::optional<std::vector<Record>> parse_text_log(const std::string& bytes) {
  if (!bytes.starts_with(header_block()) || bytes.size() % 2 != 0) {
    return std::nullopt;
  }
  const std::string all = narrow(bytes.substr(256));
  std::string_view text = all;
  std::vector<Record> records;
  while (!text.empty()) {
    const auto id = take_line(text, "EventID: ");
    const auto source = take_line(text, "Source: ");
    const auto category = take_line(text, "Category: ");
    const auto type = take_line(text, "Type: ");
    const auto time = take_line(text, "Date and Time: ");
    const auto computer = take_line(text, "Computer: ");
    const auto heading = take_line(text, "Description:");
    const auto description = take_line(text, "");
    const auto data = take_line(text, "Data: Bytes in Hex");
    if (!id || !source || !category || !type || !time || !computer || !heading || !description ||
        !data || !heading->empty() || !data->empty()) {
      return std::nullopt;
    }
    std::string dump;
    for (auto line = take_line(text, ""); !line || !line->empty(); line = take_line(text, "")) {
      if (!line || line->size() != 79) {
        return std::nullopt;
      }
      dump += *line + "\r\n";
    }
    records.push_back({static_cast<uint32_t>(std::stoul(*id)), *source, *category, *type, *time,
                       *computer, *description, dump});
  }
  return records;
}

// The elements of an XML log, each from "<LogEntry>" to "</LogEntry>". None when there is anything
// else in it.
inline std::optional<std::vector<std::string>> parse_xml_log(std::string_view text) {
  constexpr std::string_view kBegin = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog>";
  constexpr std::string_view kEnd = "</EventLog>";
  constexpr std::string_view kElement = "<LogEntry>";
  constexpr std::string_view kElementEnd = "</LogEntry>";
  if (!text.starts_with(kBegin) || !text.ends_with(kEnd)) {
    return std::nullopt;
  }
  text.remove_prefix(kBegin.size());
  text.remove_suffix(kEnd.size());
  std::vector<std::string> elements;
  while (!text.empty()) {
    const size_t end = text.find(kElementEnd);
    if (!text.starts_with(kElement) || end == std::string_view::npos) {
      return std::nullopt;
    }
    elements.emplace_back(text.substr(0, end + kElementEnd.size()));
    text.remove_prefix(end + kElementEnd.size());
  }
  return elements;
}

// The text of a child of an element; none when it does not have exactly one.
inline std::optional<std::string> child(const std::string& element, const std::string& name) {
  const std::string begin = "<" + name + ">";
  const size_t at = element.find(begin);
  const size_t end = element.find("</" + name + ">");
  if (at == std::string::npos || end == std::string::npos ||
      element.find(begin, at + 1) != std::string::npos) {
    return std::nullopt;
  }
  return element.substr(at + begin.size(), end - at - begin.size());
}

// Whether it is the time, as calendars write it, of a moment from `before` to now.
inline bool is_time_since(const std::string& text, time_t before) {
  for (time_t moment = before; moment <= time(nullptr); ++moment) {
    std::string calendar = std::ctime(&moment);
    calendar.pop_back();
    if (text == calendar) {
      return true;
    }
  }
  return false;
}

}  // namespace kqsupt::tests
