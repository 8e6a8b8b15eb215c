// Texts by their numbers, in the language that is wanted or else in the default one.
#pragma once

#include <cstdint>

#include "kqsupt/text.h"

namespace kqsupt::config {

// The exported operations: the size of the text in bytes with its terminator, 0 when there is none.
uint32_t get_utf8_string(uint32_t id, uint32_t* language, const char* path, char* buffer,
                         uint32_t* size);
uint32_t get_ucs2_string(uint32_t id, uint32_t* language, ustring* buffer, uint32_t* size);

}  // namespace kqsupt::config
