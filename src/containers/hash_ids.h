// IDs in use, one bit each, in memory of the caller.
#pragma once

#include <cstdint>

#include "kqsupt/containers.h"

namespace kqsupt::containers {

// The exported operations. Of `bytes` bytes only the whole 32-bit words count; the table may lie at
// any address.
[[nodiscard]] uint32_t bytes_for_ids(uint32_t max_id);
SMStatus clear_ids(void* table, uint32_t bytes);
[[nodiscard]] uint32_t acquire_id(void* table, uint32_t bytes, int32_t mode);
[[nodiscard]] SMStatus acquire_id_by_id(void* table, uint32_t bytes, uint32_t id);
[[nodiscard]] SMStatus verify_id(const void* table, uint32_t bytes, uint32_t id);
[[nodiscard]] SMStatus release_id(void* table, uint32_t bytes, uint32_t id);
[[nodiscard]] uint32_t min_id_in_use(const void* table, uint32_t bytes);
[[nodiscard]] uint32_t max_id_in_use(const void* table, uint32_t bytes);
[[nodiscard]] uint32_t find_first_id(const void* table, uint32_t bytes, uint32_t* word_cursor,
                                     uint32_t* bit_cursor);
[[nodiscard]] uint32_t find_next_id(const void* table, uint32_t bytes, uint32_t* word_cursor,
                                    uint32_t* bit_cursor);

}  // namespace kqsupt::containers
