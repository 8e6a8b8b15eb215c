#include "sdo_reader.h"

#include <algorithm>
#include <cstdio>

#include "listing.h"
#include "utf16_text.h"

namespace kqsup {

namespace {

using nlohmann::ordered_json;

constexpr uint32_t kRecordSignature = 0x53444F42;
constexpr uint32_t kArraySignature = 0x53444142;
constexpr size_t kHeaderSize = 8;
constexpr size_t kEntrySize = 8;
constexpr unsigned kOutOfLine = 0x04;
constexpr unsigned kBlockType = 12;    // base type: the value is a block
constexpr unsigned kPointerType = 13;  // base type: in memory only, never in a block
constexpr unsigned kArrayFlag = 0x10;

// An unsigned word of up to 8 bytes.
uint64_t word(std::string_view bytes, bool is_big_endian) {
  uint64_t value = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const char byte = bytes[is_big_endian ? i : bytes.size() - 1 - i];
    value = value << 8 | static_cast<unsigned char>(byte);
  }
  return value;
}

std::string said(const char* format, auto... values) {
  char text[160];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {
    if (bytes.size() < kHeaderSize) {
      throw SdoDamage(bytes.size(), "the file ends within the header of a block");
    }
    is_big_endian_ = is_signature(word(bytes.substr(0, 4), true));
    if (!is_big_endian_ && !is_signature(word(bytes.substr(0, 4), false))) {
      throw SdoDamage(0, "there is no signature of a record or of an array of records");
    }
  }

  [[nodiscard]] bool is_big_endian() const { return is_big_endian_; }

  // The block at `offset`, which has `room` bytes.
  SdoBlock block(size_t offset, size_t room, unsigned depth) const {
    if (depth == kDeepestSdo) {
      throw SdoDamage(offset, said("blocks lie deeper in each other than %u levels", kDeepestSdo));
    }
    if (room < kHeaderSize) {
      throw SdoDamage(offset, said("%zu bytes are too few for a block", room));
    }
    const uint64_t signature = at(offset, 4);
    if (!is_signature(signature)) {
      throw SdoDamage(offset, "there is no signature of a record or of an array of records");
    }
    SdoBlock block;
    block.offset = offset;
    block.is_array = signature == kArraySignature;
    block.size = at(offset + 6, 2);
    if (block.size < kHeaderSize || block.size > room) {
      throw SdoDamage(offset + 6, said("the block tells a size of %zu bytes, and has room for %zu",
                                       block.size, room));
    }
    const size_t count = at(offset + 4, 2);
    if (block.is_array) {
      read_elements(block, count, depth);
    } else {
      read_entries(block, count, depth);
    }
    return block;
  }

 private:
  static bool is_signature(uint64_t value) {
    return value == kRecordSignature || value == kArraySignature;
  }

  // Only of bytes that are known to be there.
  [[nodiscard]] size_t at(size_t offset, size_t size) const {
    return static_cast<size_t>(word(bytes_.substr(offset, size), is_big_endian_));
  }

  void read_elements(SdoBlock& array, size_t count, unsigned depth) const {
    const size_t end = array.offset + array.size;
    size_t offset = array.offset + kHeaderSize;
    if (count * kHeaderSize > end - offset) {
      throw SdoDamage(array.offset + 4,
                      said("%zu records do not fit into %zu bytes", count, array.size));
    }
    for (size_t i = 0; i < count; ++i) {
      SdoBlock element = block(offset, end - offset, depth + 1);
      if (element.is_array) {
        throw SdoDamage(offset, "an element of an array is an array itself");
      }
      offset += element.size;
      array.elements.push_back(std::move(element));
    }
  }

  void read_entries(SdoBlock& record, size_t count, unsigned depth) const {
    if (count * kEntrySize > record.size - kHeaderSize) {
      throw SdoDamage(record.offset + 4,
                      said("%zu entries do not fit into %zu bytes", count, record.size));
    }
    const size_t end = record.offset + record.size;
    size_t free_from = record.offset + kHeaderSize + count * kEntrySize;
    size_t last_id = 0;
    for (size_t i = 0; i < count; ++i) {
      SdoEntry entry = entry_at(record.offset + kHeaderSize + i * kEntrySize, &free_from, end);
      if (entry.id <= last_id || entry.id >= 0xFFFE) {
        throw SdoDamage(entry.offset, said("the ID %u stands behind the ID %zu",
                                           static_cast<unsigned>(entry.id), last_id));
      }
      last_id = entry.id;
      if ((entry.type & 0x0FU) == kBlockType) {
        SdoBlock nested = block(entry.value_offset, entry.value.size(), depth + 1);
        if (nested.size != entry.value.size()) {
          throw SdoDamage(entry.value_offset + 6,
                          said("the block tells a size of %zu bytes, and its "
                               "entry one of %zu",
                               nested.size, entry.value.size()));
        }
        entry.nested = std::make_unique<SdoBlock>(std::move(nested));
      }
      record.entries.push_back(std::move(entry));
    }
  }

  // `*free_from` is where values may lie that no entry before has.
  SdoEntry entry_at(size_t offset, size_t* free_from, size_t end) const {
    SdoEntry entry;
    entry.offset = offset;
    entry.id = static_cast<uint16_t>(at(offset, 2));
    entry.type = static_cast<uint8_t>(bytes_[offset + 2]);
    const unsigned flags = static_cast<unsigned char>(bytes_[offset + 3]);
    if (entry.type == 0 || (entry.type & 0x0FU) == kPointerType) {
      throw SdoDamage(offset + 2, said("no entry of a block has the type 0x%02X",
                                       static_cast<unsigned>(entry.type)));
    }
    if ((flags & kOutOfLine) == 0) {
      entry.value_offset = offset + 4;
      entry.value = bytes_.substr(offset + 4, (flags & 3U) + 1);
      return entry;
    }
    const size_t size = at(offset + 4, 2);
    entry.value_offset = offset + at(offset + 6, 2);
    if (size == 0) {
      throw SdoDamage(offset + 4, "a value has no bytes");
    }
    if (entry.value_offset < *free_from) {
      throw SdoDamage(offset + 6, said("a value at %zu lies within what ends at %zu",
                                       entry.value_offset, *free_from));
    }
    if (entry.value_offset > end || size > end - entry.value_offset) {
      throw SdoDamage(offset + 4,
                      said("%zu bytes of value at %zu go beyond the block, which ends at "
                           "%zu",
                           size, entry.value_offset, end));
    }
    entry.value = bytes_.substr(entry.value_offset, size);
    *free_from = entry.value_offset + size;
    return entry;
  }

  std::string_view bytes_;
  bool is_big_endian_;
};

// ---- Values ----

// Whether all of it may be printed, but for line ends and tabs, and something may. No character goes
// on behind one of those.
bool is_text(std::string_view utf8) {
  bool has_any = false;
  while (!utf8.empty()) {
    const std::string_view line = utf8.substr(0, utf8.find_first_of("\t\n\r"));
    if (printable(line) != line) {
      return false;
    }
    has_any = has_any || !line.empty();
    utf8.remove_prefix(std::min(line.size() + 1, utf8.size()));
  }
  return has_any;
}

// Nearly any even number of bytes is characters of some writing: without a terminator only those of
// Latin ones are taken for text.
std::string ucs2_text(std::string_view value, bool is_big_endian) {
  constexpr unsigned kBeyondLatin = 0x250;
  constexpr unsigned kUnknown = 0xFFFD;  // and what is no character at all behind it
  constexpr size_t kFewest = 2;
  if (value.size() % 2 != 0) {
    return {};
  }
  const auto unit_at = [&](size_t place) { return word(value.substr(place, 2), is_big_endian); };
  const bool is_terminated = !value.empty() && unit_at(value.size() - 2) == 0;
  value.remove_suffix(is_terminated ? 2 : 0);
  for (size_t i = 0; i < value.size(); i += 2) {
    if (unit_at(i) >= kUnknown || (!is_terminated && unit_at(i) >= kBeyondLatin)) {
      return {};
    }
  }
  std::string text;
  decode_utf16(value, is_big_endian ? ByteOrder::kBig : ByteOrder::kLittle, text);
  const bool has_half_a_character = text.find("\xEF\xBF\xBD") != std::string::npos;
  return value.size() >= 2 * kFewest && !has_half_a_character ? text : std::string();
}

bool is_number(std::string_view value) {
  return value.size() == 1 || value.size() == 2 || value.size() == 4 || value.size() == 8;
}

std::string hex(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += said("%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
  }
  return text;
}

// ---- The tree ----

std::string of_entries(const SdoBlock& block) {
  return block.is_array ? said("array of %zu, %zu bytes", block.elements.size(), block.size)
                        : said("record of %zu, %zu bytes", block.entries.size(), block.size);
}

std::string value_line(std::string_view value, bool is_big_endian) {
  constexpr size_t kShown = 32;
  std::string line = said("%zu byte%s", value.size(), value.size() == 1 ? "" : "s");
  if (is_number(value)) {
    line += said("  %llu", static_cast<unsigned long long>(word(value, is_big_endian)));
  }
  if (const std::string text = sdo_text(value, is_big_endian); !text.empty()) {
    line += "  \"" + printable(text) + "\"";
  } else if (!is_number(value)) {
    line += "  " + hex(value.substr(0, kShown)) + (value.size() > kShown ? "..." : "");
  }
  return line;
}

void add_tree(const SdoBlock& block, bool is_big_endian, size_t indent, std::string& tree) {
  const std::string margin(indent, ' ');
  for (size_t i = 0; i < block.elements.size(); ++i) {
    tree += margin + said("[%zu]  ", i) + of_entries(block.elements[i]) + "\n";
    add_tree(block.elements[i], is_big_endian, indent + 2, tree);
  }
  for (const SdoEntry& entry : block.entries) {
    tree += margin + said("%u  type 0x%02X  ", static_cast<unsigned>(entry.id),
                          static_cast<unsigned>(entry.type));
    if (entry.nested == nullptr) {
      tree += value_line(entry.value, is_big_endian) + "\n";
    } else {
      tree += of_entries(*entry.nested) + "\n";
      add_tree(*entry.nested, is_big_endian, indent + 2, tree);
    }
  }
}

ordered_json json_of(const SdoBlock& block, bool is_big_endian) {
  ordered_json json;
  json["kind"] = block.is_array ? "array" : "record";
  json["offset"] = block.offset;
  json["size"] = block.size;
  if (block.is_array) {
    ordered_json& elements = json["elements"] = ordered_json::array();
    for (const SdoBlock& element : block.elements) {
      elements.push_back(json_of(element, is_big_endian));
    }
    return json;
  }
  ordered_json& entries = json["entries"] = ordered_json::array();
  for (const SdoEntry& entry : block.entries) {
    ordered_json one;
    one["id"] = entry.id;
    one["type"] = entry.type;
    one["base_type"] = entry.type & 0x0FU;
    one["is_array"] = (entry.type & kArrayFlag) != 0;
    one["offset"] = entry.value_offset;
    one["size"] = entry.value.size();
    if (entry.nested != nullptr) {
      one["value"] = json_of(*entry.nested, is_big_endian);
    } else {
      if (is_number(entry.value)) {
        one["number"] = word(entry.value, is_big_endian);
      }
      if (std::string text = sdo_text(entry.value, is_big_endian); !text.empty()) {
        one["text"] = std::move(text);
      }
      one["hex"] = hex(entry.value);
    }
    entries.push_back(std::move(one));
  }
  return json;
}

}  // namespace

Sdo read_sdo(std::string_view bytes) {
  const Reader reader(bytes);
  return {reader.is_big_endian(), reader.block(0, std::min(bytes.size(), kLargestSdo), 0)};
}

std::string sdo_text(std::string_view value, bool is_big_endian) {
  std::string_view utf8 = value;
  if (utf8.ends_with('\0')) {
    utf8.remove_suffix(1);
  }
  if (value.size() > 1 && is_text(utf8)) {
    return std::string(utf8);
  }
  std::string text = ucs2_text(value, is_big_endian);
  return is_text(text) ? text : std::string();
}

std::string sdo_tree(const Sdo& sdo) {
  std::string tree =
      of_entries(sdo.block) + (sdo.is_big_endian ? ", big-endian\n" : ", little-endian\n");
  add_tree(sdo.block, sdo.is_big_endian, 2, tree);
  return tree;
}

ordered_json sdo_json(const Sdo& sdo) {
  ordered_json json;
  json["byte_order"] = sdo.is_big_endian ? "big" : "little";
  json.update(json_of(sdo.block, sdo.is_big_endian));
  return json;
}

}  // namespace kqsup
