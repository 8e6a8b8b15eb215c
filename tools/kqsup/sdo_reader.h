// Records as bytes, from anywhere: every offset and size is checked against the block before it is
// followed. The library trusts the blocks that it is handed; this reader trusts none.
#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kqsup {

// Sizes in a block have 16 bits.
inline constexpr size_t kLargestSdo = 65535;
// Blocks in blocks. What is deeper is refused, for whoever walks it needs memory for each level.
inline constexpr unsigned kDeepestSdo = 64;

// What keeps a block from being read.
class SdoDamage : public std::runtime_error {
 public:
  SdoDamage(size_t offset, const std::string& what) : std::runtime_error(what), offset_(offset) {}

  // From the start of the bytes that were read.
  [[nodiscard]] size_t offset() const { return offset_; }

 private:
  size_t offset_;
};

struct SdoBlock;

struct SdoEntry {
  size_t offset = 0;  // of the entry's record; as all offsets, from the start of what was read
  uint16_t id = 0;
  uint8_t type = 0;
  size_t value_offset = 0;
  std::string_view value;
  std::unique_ptr<SdoBlock> nested;  // null when the value is no block
};

struct SdoBlock {
  size_t offset = 0;
  size_t size = 0;
  bool is_array = false;
  std::vector<SdoEntry> entries;   // of a record, in ascending order of IDs
  std::vector<SdoBlock> elements;  // of an array
};

struct Sdo {
  bool is_big_endian = false;
  SdoBlock block;
};

// The block at the start of `bytes`, which must stay; SdoDamage is thrown at the first thing that
// no block has. Bytes behind the block are not looked at. Values must lie in the order of their
// entries and none within another, as the library puts them: so a block takes no more memory, and
// prints no more, than in proportion to its size.
[[nodiscard]] Sdo read_sdo(std::string_view bytes);

// The value as text: UTF-8 or UCS-2 in the order of the block, printable but for line ends and tabs,
// with or without a terminator. Empty when it is no text, or may as well be a number.
[[nodiscard]] std::string sdo_text(std::string_view value, bool is_big_endian);

// An indented tree, a line for each entry and for each element of an array.
[[nodiscard]] std::string sdo_tree(const Sdo& sdo);

[[nodiscard]] nlohmann::ordered_json sdo_json(const Sdo& sdo);

}  // namespace kqsup
