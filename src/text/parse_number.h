// Numbers of the typed values, read from text.
#pragma once

#include <cstdint>

#include "kqsupt/text.h"

namespace kqsupt::text {

// What the 64-bit types answer for the notations that they do not read.
inline constexpr SMStatus kNotationNotRead = 1;

// `format` is one of the SMXLT_FMT_ selectors. The text as a whole must be a number in that
// notation: SM_STATUS_INVALID_PARAMETER otherwise, and for any other selector. On a failure
// `*value` is not changed. 32-bit numbers saturate as a 32-bit host's C library has them do; a sign
// before an unsigned number gives its two's complement.
[[nodiscard]] SMStatus parse_s32(const char* text, uint32_t format, int32_t* value);
[[nodiscard]] SMStatus parse_u32(const char* text, uint32_t format, uint32_t* value);

// 64-bit numbers know decimal, the unsigned ones hexadecimal too; they saturate. A "-" before an
// unsigned number gives 0. `*exact`, when given, tells whether the number was in range.
[[nodiscard]] SMStatus parse_s64(const char* text, uint32_t format, int64_t* value,
                                 bool* exact = nullptr);
[[nodiscard]] SMStatus parse_u64(const char* text, uint32_t format, uint64_t* value);

}  // namespace kqsupt::text
