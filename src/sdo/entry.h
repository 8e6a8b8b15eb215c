// An entry of a record in memory: one heap block of a header and the value behind it.
#pragma once

#include <cstdint>
#include <span>

#include "kqsupt/sdo.h"

namespace kqsupt::sdo {

// A value that is to be stored. Children are always held as pointers, one or many of them.
struct NewValue {
  uint16_t id;
  uint8_t type;
  const void* bytes;
  size_t size;
};

struct Entry {
  uint32_t size;  // of the value
  uint16_t id;
  uint8_t type;
  uint8_t reserved;

  void* value() { return this + 1; }
  const void* value() const { return this + 1; }
};
static_assert(sizeof(Entry) == 8 && sizeof(Entry) % alignof(SMSDOConfig*) == 0);

using Children = std::span<SMSDOConfig* const>;

// The children that a value of base type SDO_TYPE_CONFIG holds; none for any other type. A child
// may be null in an array.
[[nodiscard]] Children children_of(uint8_t type, const void* value, size_t size);
[[nodiscard]] inline Children children_of(const Entry& entry) {
  return children_of(entry.type, entry.value(), entry.size);
}

// The number of bytes that a value takes as the value of an entry of a block, and what the entry
// adds to a record's binary size: values of up to 4 bytes lie in the entry's record. Children count
// as large as they are now.
[[nodiscard]] uint64_t value_length(uint8_t type, const void* value, size_t size);
[[nodiscard]] uint64_t cost_of(uint8_t type, const void* value, size_t size);
[[nodiscard]] inline uint64_t cost_of(const Entry& entry) {
  return cost_of(entry.type, entry.value(), entry.size);
}

// A value shorter than the slot of an entry record has the zeros behind it that a slot has. Null when memory
// is short.
[[nodiscard]] Entry* make_entry(const NewValue& value);

// Frees the entry with its children.
void free_entry(Entry* entry);

// Frees those children of `old` that `kept` does not hold.
void free_children_not_kept(const Entry& old, const Entry& kept);

}  // namespace kqsupt::sdo
