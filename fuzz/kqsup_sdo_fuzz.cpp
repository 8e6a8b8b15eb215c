// Records of any bytes, as the operators' tool reads and prints them: whatever is accepted lies
// within the block, and takes no more room than in proportion to it.

#include "exact_input.h"
#include "sdo_reader.h"

using kqsup::SdoBlock;
using kqsup::SdoEntry;
using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;

namespace {

struct Seen {
  size_t blocks = 0;
  size_t entries = 0;
};

void look_over(const SdoBlock& block, size_t begin, size_t end, Seen* seen) {
  require(block.offset >= begin && block.size >= 8 && block.offset + block.size <= end);
  ++seen->blocks;
  for (const SdoBlock& element : block.elements) {
    look_over(element, block.offset + 8, block.offset + block.size, seen);
  }
  for (const SdoEntry& entry : block.entries) {
    ++seen->entries;
    require(entry.value_offset >= block.offset + 8 && !entry.value.empty() &&
            entry.value_offset + entry.value.size() <= block.offset + block.size);
    if (entry.nested != nullptr) {
      look_over(*entry.nested, entry.value_offset, entry.value_offset + entry.value.size(), seen);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto bytes = Input(data, size).bytes();
  const std::string_view block(reinterpret_cast<const char*>(bytes.get()), size);
  try {
    const kqsup::Sdo sdo = kqsup::read_sdo(block);
    Seen seen;
    look_over(sdo.block, 0, size, &seen);
    require((seen.blocks + seen.entries) * 8 <= sdo.block.size);
    const std::string tree = kqsup::sdo_tree(sdo);
    require(tree.find('\x1B') == std::string::npos);
    // Text in it is UTF-8, or this would throw.
    require(!kqsup::sdo_json(sdo).dump(2).empty());
  } catch (const kqsup::SdoDamage& damage) {
    require(damage.offset() <= size);
  }
  return 0;
}
