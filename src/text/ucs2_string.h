// Strings of 16-bit units that end with a unit of 0. Every unit counts as one character.
#pragma once

#include <cstdint>

#include "kqsupt/text.h"

namespace kqsupt::text {

// The terminator of `s`.
[[nodiscard]] const ustring* ucs2_end(const ustring* s);
[[nodiscard]] uint32_t ucs2_length(const ustring* s);

ustring* ucs2_copy(ustring* dst, const ustring* src);
ustring* ucs2_append(ustring* dst, const ustring* src);
ustring* ucs2_copy_at_most(ustring* dst, const ustring* src, uint32_t n);
ustring* ucs2_append_at_most(ustring* dst, const ustring* src, uint32_t n);

// Null when there is none.
[[nodiscard]] const ustring* ucs2_find_unit(const ustring* s, uint32_t c);
[[nodiscard]] const ustring* ucs2_find(const ustring* s, const ustring* sub);

// The number of leading units of `s` that are not in `set`, or that are.
[[nodiscard]] uint32_t ucs2_span_outside(const ustring* s, const ustring* set);
[[nodiscard]] uint32_t ucs2_span_inside(const ustring* s, const ustring* set);

// The next token of `s`, or with `s` null of the text that the whole process was last at.
[[nodiscard]] ustring* ucs2_token(ustring* s, const ustring* delimiters);

ustring* ucs2_fill(ustring* s, uint32_t c);
ustring* ucs2_fill_first(ustring* s, uint32_t c, uint32_t n);
ustring* ucs2_reverse(ustring* s);

// 0 when equal; else the difference of the first two units that differ, reduced to 16 bits.
[[nodiscard]] uint32_t ucs2_difference(const ustring* a, const ustring* b);

}  // namespace kqsupt::text
