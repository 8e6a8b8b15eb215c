// Serializing records and rebuilding them.
//
// A record is written straight into the caller's buffer, nested ones at their place in it, so that
// serializing allocates nothing and cannot fail for lack of memory.

#include "sdo/conversion.h"

#include <algorithm>

#include "sdo/binary_array.h"
#include "sdo/config.h"
#include "sdo/wire.h"

namespace kqsupt::sdo {
namespace {

// Children are held as records in memory and stand in a block as blocks.
uint8_t type_in_block(uint8_t type) {
  return base_type(type) == SDO_TYPE_CONFIG ? with_base(type, SDO_TYPE_BINARY) : type;
}

// Writes a value of `length` bytes to `out`. False when a child does not serialize to its size.
bool write_value(const Entry& entry, uint32_t length, uint8_t* out) {
  if (base_type(entry.type) != SDO_TYPE_CONFIG) {
    std::memcpy(out, entry.value(), length);
    return true;
  }
  const Children children = children_of(entry);
  if ((entry.type & SDO_TYPE_FLAG_ARRAY) == 0) {
    return write_object(*children[0], out, length).complete;
  }
  return write_array(children, out);
}

}  // namespace

Written write_object(const SMSDOConfig& config, uint8_t* out, uint32_t room) {
  const uint64_t data_start = kHeaderSize + uint64_t{kRecordSize} * config.count;
  if (config.binary_size >= kBlockLimit || data_start > room) {
    return {0, false};
  }
  store(out, BlockHeader{kObjectSignature, static_cast<uint16_t>(config.count),
                         static_cast<uint16_t>(config.binary_size)});
  uint8_t* place = out + kHeaderSize;
  auto end = static_cast<uint32_t>(data_start);
  for (const Entry& entry : EntriesInOrder(config)) {
    const uint64_t length = value_length(entry.type, entry.value(), entry.size);
    EntryRecord record{entry.id, type_in_block(entry.type), 0, {}};
    if (length <= kSlotSize && children_of(entry).empty()) {
      record.flags = (length - 1) & kFlagInlineSize;
      std::memcpy(record.slot, entry.value(), kSlotSize);  // an entry is padded as its slot is
    } else {
      const auto size = static_cast<uint32_t>(length);
      if (length > room - end || !write_value(entry, size, out + end)) {
        return {end, false};
      }
      record.flags = kFlagOutOfLine;
      store(record.slot,
            OutOfLine{static_cast<uint16_t>(size), static_cast<uint16_t>(out + end - place)});
      end += size;
    }
    store(place, record);
    place += kRecordSize;
  }
  return {end, end == config.binary_size};
}

bool is_serializable(const SMSDOConfig& config) {
  uint64_t size = kHeaderSize;
  for (const Entry& entry : EntriesInOrder(config)) {
    for (const SMSDOConfig* child : children_of(entry)) {
      if (child != nullptr && !is_serializable(*child)) {
        return false;
      }
    }
    size += cost_of(entry);
  }
  return size == config.binary_size && size < kBlockLimit;
}

SMStatus to_binary(const SMSDOConfig* config, void* buffer, uint32_t* size) {
  if (config == nullptr || buffer == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (*size < config->binary_size) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  const Written written = write_object(*config, static_cast<uint8_t*>(buffer), *size);
  *size = written.bytes;
  return written.complete ? SMStatus{SM_STATUS_SUCCESS} : kFailed;
}

SMSDOConfig* to_config(const void* block) {
  if (block == nullptr || !is_object(block)) {
    return nullptr;
  }
  ConfigPtr config(alloc_config());
  if (config == nullptr) {
    return nullptr;
  }
  const uint32_t count = header_of(block).count;
  for (uint32_t i = 0; i < count; ++i) {
    const uint8_t* place = record_at(block, i);
    const auto record = load<EntryRecord>(place);
    const Value value = value_of(place, record);
    // No block holds pointers: what such an entry says would be taken for the address of a child.
    if (base_type(record.type) == SDO_TYPE_CONFIG ||
        add_data(config.get(), record.id, record.type, value.bytes, value.size, 0,
                 UnaddedChild::kFree) != SM_STATUS_SUCCESS) {
      return nullptr;
    }
  }
  return config.release();
}

}  // namespace kqsupt::sdo
