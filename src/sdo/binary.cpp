// Looking things up in a record's block.

#include "sdo/binary.h"

#include "sdo/config.h"
#include "sdo/value_copy.h"
#include "sdo/wire.h"

namespace kqsupt::sdo {
namespace {

// True when the block has either signature; `*is_array_out`, when given, tells which.
bool is_block(const void* block, uint16_t* is_array_out) {
  const bool array = block != nullptr && is_array(block);
  if (is_array_out != nullptr) {
    *is_array_out = array ? 1 : 0;
  }
  return array || (block != nullptr && is_object(block));
}

// The value, or for an inline one the whole slot, whatever the size that was stored: readers fetch 1-, 2-
// and 4-byte numbers alike into a zero-padded word. The reader by index gives the size that was stored.
// Without a branch on which it is: one entry is as likely as the other.
Value value_or_slot(const uint8_t* place, const EntryRecord& record) {
  const auto where = load<OutOfLine>(record.slot);
  const uint32_t out_of_line = (record.flags / kFlagOutOfLine) & 1U;
  const uint32_t mask = 0U - out_of_line;
  constexpr uint32_t kSlot = offsetof(EntryRecord, slot);
  return {place + kSlot + ((where.offset - kSlot) & mask),
          kSlotSize + ((where.size - kSlotSize) & mask)};
}

}  // namespace

uint32_t block_count(const void* block, uint16_t* is_array_out) {
  return is_block(block, is_array_out) ? header_of(block).count : 0xFFFFFFFF;
}

uint32_t block_size(const void* block, uint16_t* is_array_out) {
  return is_block(block, is_array_out) ? header_of(block).size : 0;
}

const uint8_t* find_record(const void* block, uint16_t id) {
  const uint8_t* low = record_at(block, 0);
  uint32_t count = header_of(block).count;
  if (count == 0) {
    return nullptr;
  }
  // The last record whose ID is not above the one sought. How many steps this takes depends on the count
  // alone, so that there is no branch on what is compared.
  while (count > 1) {
    const uint32_t half = count / 2;
    const uint8_t* middle = low + size_t{kRecordSize} * half;
    low = load<uint16_t>(middle) <= id ? middle : low;
    count -= half;
  }
  return load<uint16_t>(low) == id ? low : nullptr;
}

SMStatus block_get_by_id(const void* block, uint16_t id, uint8_t* type_out, void* buffer,
                         uint32_t* size) {
  if (block == nullptr || size == nullptr || !is_valid_id(id)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (!is_object(block)) {
    return SM_STATUS_OPERATION_FAILED;
  }
  const uint8_t* place = find_record(block, id);
  if (place == nullptr) {
    return SM_STATUS_DATA_NOT_FOUND;
  }
  const auto record = load<EntryRecord>(place);
  const Value value = value_or_slot(place, record);
  const bool fits = buffer != nullptr && *size >= value.size;
  *size = value.size;
  if (!fits) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  if (type_out != nullptr) {
    *type_out = record.type;
  }
  copy_value(static_cast<uint8_t*>(buffer), value.bytes, value.size, advance(block, 0));
  return SM_STATUS_SUCCESS;
}

SMStatus block_get_by_index(const void* block, uint32_t index, uint16_t* id_out, uint8_t* type_out,
                            void* buffer, uint32_t* size) {
  if (block == nullptr || id_out == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (index >= header_of(block).count) {
    return SM_STATUS_INDEX_OUT_OF_RANGE;
  }
  if (!is_object(block)) {
    return SM_STATUS_OPERATION_FAILED;
  }
  const uint8_t* place = record_at(block, index);
  const auto record = load<EntryRecord>(place);
  const Value value = value_of(place, record);
  const bool fits = buffer != nullptr && *size >= value.size;
  *size = value.size;
  if (!fits) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer, value.bytes, value.size);
  *id_out = record.id;
  if (type_out != nullptr) {
    *type_out = record.type;
  }
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::sdo
