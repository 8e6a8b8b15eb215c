// Reading, changing and walking the block of a record in place.
#pragma once

#include <cstdint>

#include "kqsupt/sdo.h"

namespace kqsupt::sdo {

[[nodiscard]] uint32_t block_count(const void* block, uint16_t* is_array_out);
[[nodiscard]] uint32_t block_size(const void* block, uint16_t* is_array_out);
[[nodiscard]] SMStatus block_get_by_id(const void* block, uint16_t id, uint8_t* type_out,
                                       void* buffer, uint32_t* size);
[[nodiscard]] SMStatus block_get_by_index(const void* block, uint32_t index, uint16_t* id_out,
                                          uint8_t* type_out, void* buffer, uint32_t* size);
[[nodiscard]] SMStatus block_set(void* block, uint32_t* capacity, uint16_t id, uint8_t type,
                                 const void* data, uint32_t size);
[[nodiscard]] SMStatus block_walk(const void* block, void* context, SMSDOBinaryWalkBegin begin,
                                  SMSDOBinaryWalkEntry entry, SMSDOBinaryWalkAfter after,
                                  SMSDOBinaryWalkEnd end, uint16_t recurse);

// The entry record with this ID, by binary search; null when there is none.
[[nodiscard]] const uint8_t* find_record(const void* block, uint16_t id);

}  // namespace kqsupt::sdo
