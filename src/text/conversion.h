// Text from one encoding to the other.
#pragma once

#include <cstdint>

#include "kqsupt/text.h"

namespace kqsupt::text {

// `*size` is the room in bytes and receives the bytes written with the terminator, or the bytes
// needed when `dst` is null. It is not changed on failure.
[[nodiscard]] SMStatus ucs2_to_utf8(char* dst, uint32_t* size, const ustring* src);
[[nodiscard]] SMStatus utf8_to_ucs2(ustring* dst, uint32_t* size, const char* src);

}  // namespace kqsupt::text
