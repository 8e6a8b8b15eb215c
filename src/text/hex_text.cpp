// Writing and reading bytes as hexadecimal text.

#include "text/hex_text.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace kqsupt::text {
namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

char* write_pair(char* to, uint8_t byte) {
  to[0] = kDigits[byte >> 4];
  to[1] = kDigits[byte & 0x0F];
  return to + 2;
}

// The layout of a line of a dump.
constexpr uint32_t kBytesPerLine = 16;
constexpr uint32_t kLineSize = 81;
constexpr uint32_t kPairColumn = 12;
constexpr uint32_t kCharacterColumn = 62;
constexpr uint32_t kEndColumn = 79;

void write_dump_line(char* line, uint32_t offset, ByteSpan bytes) {
  std::memset(line, ' ', kLineSize);
  line[0] = '0';
  line[1] = 'x';
  for (uint32_t i = 0; i < 4; ++i) {
    write_pair(line + 2 + 2 * i, static_cast<uint8_t>(offset >> (24 - 8 * i)));
  }
  line[10] = ':';
  for (uint32_t i = 0; i < bytes.size(); ++i) {
    char* pair = line + kPairColumn + 3 * i;
    write_pair(pair, bytes[i]);
    if (i == 4 || i == 8 || i == 12) {
      pair[-1] = ':';
    }
    // Characters from "{" on are left to the dot, as in every log that was written so far.
    const bool shown = bytes[i] >= 0x20 && bytes[i] <= 0x7A;
    line[kCharacterColumn + i] = shown ? static_cast<char>(bytes[i]) : '.';
  }
  line[kEndColumn] = '\r';
  line[kEndColumn + 1] = '\n';
}

bool is_hex_digit(char byte) {
  return std::isxdigit(static_cast<unsigned char>(byte)) != 0;
}

// One number as the C library scans it from one or two characters, blanks, signs and prefixes
// included; callers' files were written for that reader.
bool scan_hex(const char* text, size_t digits, uint32_t* value) {
  char item[3];
  std::memcpy(item, text, digits);
  item[digits] = '\0';
  return std::sscanf(item, "%x", value) == 1;
}

}  // namespace

bool append_hex_pairs(TextBuilder& text, ByteSpan bytes) {
  for (const uint8_t byte : bytes) {
    char pair[2];
    write_pair(pair, byte);
    if (!text.append({pair, sizeof pair})) {
      return false;
    }
  }
  return true;
}

bool append_hex_list(TextBuilder& text, ByteSpan bytes) {
  char item[] = {',', '0', 'x', 0, 0};
  for (size_t i = 0; i < bytes.size(); ++i) {
    write_pair(item + 3, bytes[i]);
    const std::string_view whole(item, sizeof item);
    if (!text.append(i == 0 ? whole.substr(1) : whole)) {
      return false;
    }
  }
  return true;
}

bool append_hex_dump(TextBuilder& text, ByteSpan bytes) {
  for (size_t offset = 0; offset < bytes.size(); offset += kBytesPerLine) {
    char line[kLineSize];
    write_dump_line(line, static_cast<uint32_t>(offset),
                    bytes.subspan(offset, std::min<size_t>(kBytesPerLine, bytes.size() - offset)));
    if (!text.append({line, sizeof line})) {
      return false;
    }
  }
  return true;
}

ParsedBytes parse_hex_pairs(const char* text, uint8_t* bytes, uint32_t room) {
  uint32_t count = 0;
  while (*text != '\0') {
    const size_t digits = text[1] != '\0' ? 2 : 1;
    uint32_t value = 0;
    if (!scan_hex(text, digits, &value)) {
      break;
    }
    if (bytes != nullptr && count < room) {
      bytes[count] = static_cast<uint8_t>(value);
    }
    ++count;
    text += digits;
  }
  return {true, count};
}

ParsedBytes parse_hex_list(const char* text, uint8_t* bytes, uint32_t room) {
  constexpr size_t kItemSize = 5;  // "0x0A" and the comma behind it, which the last item has not
  const size_t size = std::strlen(text) + 1;
  if (size % kItemSize != 0) {
    return {false, 0};
  }
  const auto count = static_cast<uint32_t>(size / kItemSize);
  for (uint32_t i = 0; i < count; ++i) {
    const char* item = text + i * kItemSize;
    const char end = i + 1 < count ? ',' : '\0';
    if (item[0] != '0' || (item[1] | 0x20) != 'x' || !is_hex_digit(item[2]) ||
        !is_hex_digit(item[3]) || item[4] != end) {
      return {false, 0};
    }
    if (bytes != nullptr && i < room) {
      uint32_t value = 0;
      (void)scan_hex(item + 2, 2, &value);
      bytes[i] = static_cast<uint8_t>(value);
    }
  }
  return {true, count};
}

}  // namespace kqsupt::text
