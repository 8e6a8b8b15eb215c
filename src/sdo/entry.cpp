// Entries, what they cost in a block, and the children that they own.

#include "sdo/entry.h"

#include <algorithm>
#include <cstring>

#include "frame/heap.h"
#include "sdo/config.h"
#include "sdo/wire.h"

namespace kqsupt::sdo {

Children children_of(uint8_t type, const void* value, size_t size) {
  if (base_type(type) != SDO_TYPE_CONFIG) {
    return {};
  }
  return {static_cast<SMSDOConfig* const*>(value), size / sizeof(SMSDOConfig*)};
}

uint64_t value_length(uint8_t type, const void* value, size_t size) {
  if (base_type(type) != SDO_TYPE_CONFIG) {
    return size;
  }
  uint64_t length = (type & SDO_TYPE_FLAG_ARRAY) != 0 ? kHeaderSize : 0;
  for (const SMSDOConfig* child : children_of(type, value, size)) {
    length += binary_size(child);
  }
  return length;
}

uint64_t cost_of(uint8_t type, const void* value, size_t size) {
  const uint64_t length = value_length(type, value, size);
  return length <= kSlotSize ? kRecordSize : kRecordSize + length;
}

Entry* make_entry(const NewValue& value) {
  // What is shorter than a slot is padded to one, so that it is copied there without a look at its size.
  struct Shortest {
    Entry entry;
    uint8_t slot[kSlotSize];
  };
  // A value that comes here has been found small enough for a block.
  const auto size = static_cast<uint32_t>(value.size);
  auto* shortest = static_cast<Shortest*>(
      frame::allocate(static_cast<uint32_t>(sizeof(Entry)) + std::max(size, kSlotSize)));
  if (shortest == nullptr) {
    return nullptr;
  }
  *shortest = {{size, value.id, value.type, 0}, {}};
  std::memcpy(shortest->entry.value(), value.bytes, size);
  return &shortest->entry;
}

void free_entry(Entry* entry) {
  for (SMSDOConfig* child : children_of(*entry)) {
    free_config(child);
  }
  frame::release(entry);
}

void free_children_not_kept(const Entry& old, const Entry& kept) {
  const Children still_held = children_of(kept);
  for (SMSDOConfig* child : children_of(old)) {
    if (std::find(still_held.begin(), still_held.end(), child) == still_held.end()) {
      free_config(child);
    }
  }
}

}  // namespace kqsupt::sdo
