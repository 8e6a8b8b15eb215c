// UTF-8 text changed, copied and compared byte by byte.
#pragma once

#include <cstdint>

namespace kqsupt::text {

// Trimming overwrites blanks (TAB, LF, CR, space) with zeros and moves nothing: the trimmed text
// begins at the pointer that is returned. Null gives null.
[[nodiscard]] char* trim_left(char* text);
char* trim_right(char* text);
[[nodiscard]] char* trim(char* text);

// In place, each returning the text. The case of a byte is the C library's, by its locale.
char* to_upper(char* text);
char* to_lower(char* text);
char* reverse(char* text);

// A copy on the heap; null for null or when memory is short.
[[nodiscard]] char* duplicate(const char* text);

// The difference of the first two bytes that differ once A to Z are folded to lower case, of `n` at
// most.
[[nodiscard]] int32_t compare_folded(const char* a, const char* b, uint32_t n);

// The first place of `needle` in `text` in any case of letters, by the C library's locale.
[[nodiscard]] char* find_folded(const char* text, const char* needle);

}  // namespace kqsupt::text
