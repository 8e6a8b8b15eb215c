// Typed values: text becomes a value of a type, and back.
#pragma once

#include <cstdint>

#include "kqsupt/text.h"

namespace kqsupt::text {

// `type` holds a SMXLT_TYPE_ code in its low byte and a SMXLT_FMT_ selector in the next.
[[nodiscard]] SMStatus value_from_text(const char* text, void* value, uint32_t* size,
                                       uint32_t type);
[[nodiscard]] SMStatus value_to_text(const void* value, uint32_t value_size, char* text,
                                     uint32_t* size, uint32_t type);

}  // namespace kqsupt::text
