// Between a record in memory and its block.
#pragma once

#include <cstdint>

#include "kqsupt/sdo.h"

namespace kqsupt::sdo {

[[nodiscard]] SMStatus to_binary(const SMSDOConfig* config, void* buffer, uint32_t* size);
[[nodiscard]] SMSDOConfig* to_config(const void* block);

// Whether the record would serialize to exactly its binary size. It does not when a child has
// changed since it was added or the size was recomputed by the other rule.
[[nodiscard]] bool is_serializable(const SMSDOConfig& config);

// What a serialization came to.
struct Written {
  uint32_t bytes;
  bool complete;  // and the bytes are the record's binary size
};

// Serializes to `out`, which has room for `room` bytes, and never beyond.
[[nodiscard]] Written write_object(const SMSDOConfig& config, uint8_t* out, uint32_t room);

}  // namespace kqsupt::sdo
