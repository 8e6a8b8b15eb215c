// The bytes of a record's block. Blocks lie anywhere in a caller's memory, so what is in them is
// copied in and out, never pointed at as an object. All words are in host order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kqsupt/sdo.h"

namespace kqsupt::sdo {

inline constexpr uint32_t kObjectSignature = 0x53444F42;
inline constexpr uint32_t kArraySignature = 0x53444142;

struct BlockHeader {
  uint32_t signature;
  uint16_t count;
  uint16_t size;  // of the whole block
};
static_assert(sizeof(BlockHeader) == 8 && offsetof(BlockHeader, count) == 4 &&
              offsetof(BlockHeader, size) == 6);

// Where a value lies that is not in its record's slot.
struct OutOfLine {
  uint16_t size;
  uint16_t offset;  // from the start of the entry record
};
static_assert(sizeof(OutOfLine) == 4 && offsetof(OutOfLine, offset) == 2);

struct EntryRecord {
  uint16_t id;
  uint8_t type;
  uint8_t flags;
  uint8_t slot[4];  // an inline value, padded with zeros, or an OutOfLine
};
static_assert(sizeof(EntryRecord) == 8 && offsetof(EntryRecord, type) == 2 &&
              offsetof(EntryRecord, flags) == 3 && offsetof(EntryRecord, slot) == 4);

inline constexpr uint32_t kHeaderSize = sizeof(BlockHeader);
inline constexpr uint32_t kRecordSize = sizeof(EntryRecord);
inline constexpr uint32_t kSlotSize = sizeof(EntryRecord::slot);
inline constexpr uint8_t kFlagOutOfLine = 0x04;
inline constexpr uint8_t kFlagInlineSize = 0x03;  // holds the size of an inline value less 1
inline constexpr uint32_t kBlockLimit = 0x10000;  // a block is smaller than this
inline constexpr uint32_t kSmallestEdited = 16;   // no block is edited in a smaller buffer

template <class T>
[[nodiscard]] T load(const void* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

template <class T>
void store(void* to, const T& value) {
  std::memcpy(to, &value, sizeof value);
}

inline uint8_t* advance(void* block, size_t bytes) {
  return static_cast<uint8_t*>(block) + bytes;
}
inline const uint8_t* advance(const void* block, size_t bytes) {
  return static_cast<const uint8_t*>(block) + bytes;
}

inline BlockHeader header_of(const void* block) {
  return load<BlockHeader>(block);
}

inline bool is_object(const void* block) {
  return load<uint32_t>(block) == kObjectSignature;
}
inline bool is_array(const void* block) {
  return load<uint32_t>(block) == kArraySignature;
}

inline const uint8_t* record_at(const void* block, uint32_t index) {
  return advance(block, kHeaderSize + size_t{kRecordSize} * index);
}

inline uint8_t* slot_of(uint8_t* record) {
  return record + offsetof(EntryRecord, slot);
}
inline const uint8_t* slot_of(const uint8_t* record) {
  return record + offsetof(EntryRecord, slot);
}

// The value of an entry, in place.
struct Value {
  const uint8_t* bytes;
  uint32_t size;
};

inline Value value_of(const uint8_t* place, const EntryRecord& record) {
  if ((record.flags & kFlagOutOfLine) == 0) {
    return {slot_of(place), (record.flags & kFlagInlineSize) + 1U};
  }
  const auto where = load<OutOfLine>(record.slot);
  return {place + where.offset, where.size};
}

inline uint8_t base_type(uint8_t type) {
  return type & 0x0F;
}

inline uint8_t with_base(uint8_t type, uint8_t base) {
  return static_cast<uint8_t>((type & 0xF0) | base);
}

}  // namespace kqsupt::sdo
