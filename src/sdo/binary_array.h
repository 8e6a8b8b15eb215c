// Array blocks: whole record blocks back to back behind a header.
#pragma once

#include <cstdint>

#include "kqsupt/sdo.h"
#include "sdo/entry.h"

namespace kqsupt::sdo {

[[nodiscard]] SMStatus configs_to_array(SMSDOConfig* const* configs, uint32_t count, void* buffer,
                                        uint32_t* size);
// Serializes children to an array block at `out`, which has room for all of them behind a header.
// False when one of them does not serialize.
[[nodiscard]] bool write_array(Children children, uint8_t* out);

[[nodiscard]] SMStatus array_to_configs(const void* array, SMSDOConfig** configs_out,
                                        uint32_t* count);
[[nodiscard]] SMStatus array_init(void* buffer, uint32_t size);
[[nodiscard]] SMStatus array_add(void* array, uint32_t* capacity, const void* element,
                                 uint32_t element_size);
[[nodiscard]] SMStatus array_get(const void* array, uint32_t array_size, uint32_t index,
                                 void* buffer, uint32_t* size);

}  // namespace kqsupt::sdo
