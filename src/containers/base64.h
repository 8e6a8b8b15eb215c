// Base64, encoded and decoded in memory of the caller.
#pragma once

#include <cstdint>

namespace kqsupt::containers {

// The exported operations. Both always answer 0.
uint32_t base64_encode(char* out, const void* in, int32_t length, const char* alphabet);
uint32_t base64_decode(void* out, const char* in, int32_t length);

}  // namespace kqsupt::containers
