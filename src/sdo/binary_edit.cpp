// Changing a value inside a record's block.

#include "sdo/binary.h"
#include "sdo/config.h"
#include "sdo/conversion.h"
#include "sdo/wire.h"

namespace kqsupt::sdo {
namespace {

// Overwrites the value where it lies. False when it does not fit there as it is.
bool overwrite(uint8_t* place, const void* data, uint32_t size) {
  auto record = load<EntryRecord>(place);
  const bool out_of_line = (record.flags & kFlagOutOfLine) != 0;
  const Value value = value_of(place, record);
  if (out_of_line ? size != value.size : size > kSlotSize) {
    return false;
  }
  // The rest of a slot keeps what it held, and the data may lie inside the block itself.
  std::memmove(place + (value.bytes - place), data, size);
  if (!out_of_line) {
    place[offsetof(EntryRecord, flags)] = (size - 1) & kFlagInlineSize;
  }
  return true;
}

SMStatus rebuild(void* block, uint32_t* capacity, uint16_t id, uint8_t type, const void* data,
                 uint32_t size) {
  const ConfigPtr config(to_config(block));
  if (config == nullptr) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  const SMStatus status = add_data(config.get(), id, type, data, size, 1, UnaddedChild::kFree);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  if (config->binary_size > *capacity) {
    *capacity = config->binary_size;
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  return to_binary(config.get(), block, capacity);
}

}  // namespace

SMStatus block_set(void* block, uint32_t* capacity, uint16_t id, uint8_t type, const void* data,
                   uint32_t size) {
  // A value of no bytes has no form in a block.
  if (block == nullptr || capacity == nullptr || data == nullptr || type == 0 || !is_valid_id(id) ||
      size == 0) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (*capacity < kSmallestEdited) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  if (!is_object(block)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const uint8_t* found = find_record(block, id);
  if (found == nullptr || load<EntryRecord>(found).type != type) {
    return SM_STATUS_DATA_NOT_FOUND;
  }
  uint8_t* place = advance(block, static_cast<size_t>(found - advance(block, 0)));
  if (!overwrite(place, data, size)) {
    return rebuild(block, capacity, id, type, data, size);
  }
  *capacity = header_of(block).size;
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::sdo
