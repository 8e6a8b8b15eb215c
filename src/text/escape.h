// UCS-2 text as printable ASCII.
#pragma once

#include <cstdint>

#include "kqsupt/text.h"

namespace kqsupt::text {

// `size` may be null, and then `dst` is trusted to have room.
[[nodiscard]] SMStatus ucs2_to_escape(char* dst, uint32_t* size, const ustring* src);

}  // namespace kqsupt::text
