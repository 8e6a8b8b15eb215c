// Building, changing and reading records in memory.

#include "sdo/config.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "frame/heap.h"
#include "sdo/binary_array.h"
#include "sdo/conversion.h"
#include "sdo/wire.h"

namespace kqsupt::sdo {
namespace {

using containers::Node;
using containers::Place;
using frame::HeapPtr;

Place locate_id(const SMSDOConfig& config, uint32_t id) {
  return containers::locate(config.entries, [id](const void* data) {
    return static_cast<int32_t>(id) - static_cast<const Entry*>(data)->id;
  });
}

// The entry at `index` in ascending order of IDs; null when the walk ends before it.
Node* node_at(const SMSDOConfig& config, uint32_t index) {
  Node* node = containers::first(config.entries);
  for (; node != nullptr && index > 0; --index) {
    node = containers::next(node);
  }
  return node;
}

// Moves the binary size by what entries came to cost more or less. A child may have changed since
// it was added, so what is given back may be more than was ever taken: the size of the records
// themselves is what is left then.
void adjust_size(SMSDOConfig* config, uint64_t added, uint64_t removed) {
  const uint64_t smallest = kHeaderSize + uint64_t{kRecordSize} * config->count;
  const uint64_t size = config->binary_size + added;
  const uint64_t kept = config->count == 0 || size < removed ? 0 : size - removed;
  config->binary_size = static_cast<uint32_t>(std::clamp<uint64_t>(kept, smallest, UINT32_MAX));
}

// Puts `entry` in the place of the one at `node`. A child that both hold is not freed, and no child
// is when the new value is of another type: callers keep children across such a replacement.
void replace_entry(SMSDOConfig* config, Node* node, Entry* entry, uint64_t cost) {
  auto* old = static_cast<Entry*>(std::exchange(node->data, entry));
  adjust_size(config, cost, cost_of(*old));
  if (base_type(entry->type) == SDO_TYPE_CONFIG) {
    free_children_not_kept(*old, *entry);
  }
  frame::release(old);
}

SMStatus add_value(SMSDOConfig* config, const NewValue& value, uint32_t replace) {
  // More children than an array block can count never serialize.
  if (value.size / sizeof(SMSDOConfig*) > kEntryLimit && base_type(value.type) == SDO_TYPE_CONFIG) {
    return SM_STATUS_OUT_OF_SPACE;
  }
  for (const SMSDOConfig* child : children_of(value.type, value.bytes, value.size)) {
    if (child == config) {
      return SM_STATUS_INVALID_PARAMETER;
    }
  }
  // The room is tested before a replaced entry gives back its own.
  const uint64_t cost = cost_of(value.type, value.bytes, value.size);
  if (config->count >= kEntryLimit || config->binary_size + cost >= kBlockLimit) {
    return SM_STATUS_OUT_OF_SPACE;
  }
  HeapPtr<Entry> entry(make_entry(value));
  if (entry == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  const Place place = locate_id(*config, value.id);
  if (place.match != nullptr) {
    if (replace != 1) {
      return SM_STATUS_ALREADY_EXISTS;
    }
    replace_entry(config, place.match, entry.release(), cost);
    return SM_STATUS_SUCCESS;
  }
  if (!containers::insert_at(&config->entries, place, entry.get())) {
    return SM_STATUS_NO_MEMORY;
  }
  (void)entry.release();  // the tree's now
  config->count += 1;
  config->binary_size += static_cast<uint32_t>(cost);
  return SM_STATUS_SUCCESS;
}

SMStatus add_array_block(SMSDOConfig* config, const NewValue& block, uint32_t replace) {
  uint32_t count = header_of(block.bytes).count;
  const HeapPtr<SMSDOConfig*[]> children = frame::heap_array<SMSDOConfig*>(count);
  if (children == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  SMStatus status = array_to_configs(block.bytes, children.get(), &count);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  const NewValue value{block.id, with_base(block.type, SDO_TYPE_FLAG_ARRAY | SDO_TYPE_CONFIG),
                       children.get(), sizeof(SMSDOConfig*) * count};
  status = add_value(config, value, replace);
  if (status != SM_STATUS_SUCCESS) {
    free_configs(children.get(), count);
  }
  return status;
}

SMStatus add_object_block(SMSDOConfig* config, const NewValue& block, uint32_t replace,
                          UnaddedChild unadded) {
  ConfigPtr child(to_config(block.bytes));
  if (child == nullptr) {
    return kFailed;
  }
  const SMSDOConfig* pointer = child.get();
  const NewValue value{block.id, with_base(block.type, SDO_TYPE_CONFIG), &pointer, sizeof pointer};
  const SMStatus status = add_value(config, value, replace);
  if (status == SM_STATUS_SUCCESS || unadded == UnaddedChild::kLose) {
    (void)child.release();
  }
  return status;
}

SMStatus add_block(SMSDOConfig* config, const NewValue& block, uint32_t replace,
                   UnaddedChild unadded) {
  // A block that is cut short is not read; what lies inside it is trusted.
  if (block.size < kHeaderSize || block.size < header_of(block.bytes).size) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (is_array(block.bytes)) {
    return add_array_block(config, block, replace);
  }
  if (is_object(block.bytes)) {
    return add_object_block(config, block, replace, unadded);
  }
  return SM_STATUS_INVALID_PARAMETER;
}

// Copies the value of an entry and reports its type and size, also when the buffer does not do.
SMStatus read_entry(const Entry& entry, uint8_t* type_out, void* buffer, uint32_t* size) {
  const bool fits = buffer != nullptr && *size >= entry.size;
  if (fits) {
    std::memcpy(buffer, entry.value(), entry.size);
  }
  if (type_out != nullptr) {
    *type_out = entry.type;
  }
  *size = entry.size;
  return fits ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL;
}

void remove_all_entries(SMSDOConfig* config) {
  containers::erase_all(&config->entries,
                        [](void* data) { free_entry(static_cast<Entry*>(data)); });
  config->count = 0;
  config->binary_size = kHeaderSize;
}

// The record's block; null when memory is short or the record does not serialize.
HeapPtr<uint8_t[]> serialized(const SMSDOConfig& config) {
  HeapPtr<uint8_t[]> block(static_cast<uint8_t*>(frame::allocate(config.binary_size)));
  uint32_t size = config.binary_size;
  if (block != nullptr && to_binary(&config, block.get(), &size) != SM_STATUS_SUCCESS) {
    block.reset();
  }
  return block;
}

}  // namespace

SMSDOConfig* alloc_config() {
  auto* config = static_cast<SMSDOConfig*>(frame::allocate(sizeof(SMSDOConfig)));
  if (config != nullptr) {
    *config = {nullptr, 0, kHeaderSize};
  }
  return config;
}

void free_config(SMSDOConfig* config) {
  if (config != nullptr) {
    remove_all_entries(config);
    frame::release(config);
  }
}

void free_configs(SMSDOConfig** configs, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    free_config(std::exchange(configs[i], nullptr));
  }
}

SMSDOConfig* clone(const SMSDOConfig* config) {
  if (config == nullptr || config->binary_size >= kBlockLimit) {
    return nullptr;
  }
  const auto block = serialized(*config);
  return to_config(block.get());
}

uint32_t compare_by_value(const SMSDOConfig* a, const SMSDOConfig* b) {
  if (a == nullptr || b == nullptr) {
    return a == b ? 1 : 0;
  }
  if (a->binary_size != b->binary_size || a->binary_size >= kBlockLimit) {
    return 0;
  }
  const auto block_a = serialized(*a);
  const auto block_b = serialized(*b);
  if (block_a == nullptr || block_b == nullptr) {
    return 0;
  }
  return std::memcmp(block_a.get(), block_b.get(), a->binary_size) == 0 ? 1 : 0;
}

uint32_t count(const SMSDOConfig* config) {
  return config != nullptr ? config->count : 0xFFFFFFFF;
}

SMStatus add_data(SMSDOConfig* config, uint16_t id, uint8_t type, const void* data, uint32_t size,
                  uint32_t replace, UnaddedChild unadded) {
  if (config == nullptr || !is_valid_id(id) || type == 0 || data == nullptr || size == 0) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  switch (base_type(type)) {
    case SDO_TYPE_BINARY:
      return add_block(config, {id, type, data, size}, replace, unadded);
    case SDO_TYPE_CONFIG:
      if ((type & SDO_TYPE_FLAG_ARRAY) == 0) {
        // The argument is the child, and a pointer's size is the host's, not the caller's.
        return add_value(config, {id, type, &data, sizeof data}, replace);
      }
      return size % sizeof(SMSDOConfig*) == 0 ? add_value(config, {id, type, data, size}, replace)
                                              : SMStatus{SM_STATUS_INVALID_PARAMETER};
    default:
      return add_value(config, {id, type, data, size}, replace);
  }
}

SMStatus get_data_by_id(const SMSDOConfig* config, uint16_t id, uint8_t* type_out, void* buffer,
                        uint32_t* size) {
  if (config == nullptr || !is_valid_id(id) || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const Node* node = locate_id(*config, id).match;
  if (node == nullptr) {
    return SM_STATUS_DATA_NOT_FOUND;
  }
  return read_entry(entry_of(node), type_out, buffer, size);
}

SMStatus get_data_by_index(const SMSDOConfig* config, uint32_t index, uint16_t* id_out,
                           uint8_t* type_out, void* buffer, uint32_t* size) {
  if (config == nullptr || id_out == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (index >= config->count) {
    return SM_STATUS_INDEX_OUT_OF_RANGE;
  }
  const Node* node = node_at(*config, index);
  if (node == nullptr) {
    return SM_STATUS_DATA_NOT_FOUND;
  }
  *id_out = entry_of(node).id;
  return read_entry(entry_of(node), type_out, buffer, size);
}

SMStatus remove_data(SMSDOConfig* config, uint16_t id, uint32_t index, uint32_t remove_all) {
  if (config == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (remove_all != 0) {
    remove_all_entries(config);
    return SM_STATUS_SUCCESS;
  }
  if (!is_valid_id(id) && index >= config->count) {
    return SM_STATUS_INDEX_OUT_OF_RANGE;
  }
  Node* node = is_valid_id(id) ? locate_id(*config, id).match : node_at(*config, index);
  if (node == nullptr) {
    return SM_STATUS_DATA_NOT_FOUND;
  }
  Entry* entry = &entry_of(node);
  containers::erase(&config->entries, node);
  config->count -= 1;
  adjust_size(config, 0, cost_of(*entry));
  free_entry(entry);
  return SM_STATUS_SUCCESS;
}

uint32_t recalc_binary_size(SMSDOConfig* config) {
  if (config == nullptr) {
    return 0;
  }
  // Not the sum that add_data keeps: each value counts in full and an array has no header. Agents
  // compare what this returns with sizes that they have stored, so both rules stay.
  uint64_t sum = kHeaderSize;
  for (const Entry& entry : EntriesInOrder(*config)) {
    sum += kRecordSize;
    if (base_type(entry.type) != SDO_TYPE_CONFIG) {
      sum += entry.size;
    }
    for (const SMSDOConfig* child : children_of(entry)) {
      sum += binary_size(child);
    }
  }
  config->binary_size = static_cast<uint32_t>(std::min<uint64_t>(sum, UINT32_MAX));
  return config->binary_size;
}

}  // namespace kqsupt::sdo
