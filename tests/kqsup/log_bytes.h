// Logs as bytes, and what is read from them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "event_reader.h"

namespace kqsupt::tests {

inline std::string swapped(std::string bytes) {
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    std::swap(bytes[i], bytes[i + 1]);
  }
  return bytes;
}

inline std::string little_endian(std::u16string_view units) {
  std::string bytes;
  for (const char16_t unit : units) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return bytes;
}

// The block that a text log begins with.
inline std::string text_header() {
  return "\xFF\xFE" + little_endian(
                          u"#-------------------------------\r\n"
                          u"# Do not remove this block\r\n"
                          u"# This data file is parsed\r\n"
                          u"#------------------------------- \r\n\r\n");
}

// A record in little-endian order; `dump` is the lines of its data.
inline std::string text_record(std::u16string_view id, std::u16string_view description,
                               std::u16string_view dump = u"") {
  return little_endian(u"EventID: " + std::u16string(id) +
                       u"\r\nSource: pump\r\nCategory: Pellum\r\nType: Audit Failure\r\n"
                       u"Date and Time: Sat Nov 21 12:48:33 2026\r\nComputer: host\r\n"
                       u"Description:\r\n" +
                       std::u16string(description) + u"\r\nData: Bytes in Hex\r\n" +
                       std::u16string(dump) + u"\r\n");
}
inline constexpr std::u16string_view kDump =
    u"0x00000000: 00 05 0A 0F:14 19 1E 23:28 2D 32 37:3C 41 46 4B   .......#(-27<AFK \r\n"
    u"0x00000010: 50 55                                             PU               \r\n";

inline const std::string kXmlBegin = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog>";
inline const std::string kXmlEnd = "</EventLog>";
inline std::string xml_element(const std::string& id, const std::string& description,
                               const std::string& data = "") {
  return "<LogEntry><TimeStamp>1795265313</TimeStamp><DateTime>Sat Nov 21 12:48:33 2026</DateTime>"
         "<ComputerName>host</ComputerName><Type>2</Type><ID>" +
         id +
         "</ID><Link>a&amp;b</Link><UserInfo>me</UserInfo><Source>pump</Source>"
         "<Category>Talmere</Category><Description>" +
         description + "</Description><Data>" + data + "</Data></LogEntry>";
}

class Bytes : public kqsup::LogBytes {
 public:
  explicit Bytes(std::string bytes) : bytes_(std::move(bytes)) {}
  size_t read(uint64_t offset, char* to, size_t size) override {
    const size_t count =
        offset < bytes_.size() ? std::min(size, bytes_.size() - static_cast<size_t>(offset)) : 0;
    std::memcpy(to, bytes_.data() + (count != 0 ? offset : 0), count);
    return count;
  }

 private:
  std::string bytes_;
};

// What is in a log: its events as "ID:description", and its damage as "OFFSET+SIZE".
struct Contents {
  std::vector<std::string> events;
  std::vector<std::string> damage;
};

inline Contents contents(const std::string& bytes, bool is_final = true) {
  using Found = kqsup::EventReader::Found;
  Bytes source(bytes);
  kqsup::EventReader reader(source);
  Contents contents;
  for (Found found; (found = reader.next(is_final)) != Found::kNothing;) {
    if (found == Found::kEvent) {
      contents.events.push_back(std::to_string(reader.event().id) + ":" +
                                std::string(reader.event().description));
    } else {
      contents.damage.push_back(std::to_string(reader.damage().offset) + "+" +
                                std::to_string(reader.damage().size));
    }
  }
  return contents;
}

using Texts = std::vector<std::string>;

}  // namespace kqsupt::tests
