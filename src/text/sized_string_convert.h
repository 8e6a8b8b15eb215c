// What callers do with sized strings: text of either encoding appended to either kind.
#pragma once

#include <string_view>

#include "kqsupt/text.h"
#include "text/hex_text.h"
#include "text/sized_string.h"

namespace kqsupt::text {

// Each returns the string's content. A failure is not reported, as callers have always lived with.
ustring* string_alloc(SMSSUCS2Str* string, uint32_t capacity);
char* string_alloc(SMSSUTF8Str* string, uint32_t capacity);
void string_free(SMSSUCS2Str* string);
void string_free(SMSSUTF8Str* string);

// `count` 0 stands for the whole text.
ustring* string_cat(SMSSUCS2Str* string, const ustring* text, uint32_t count);
ustring* string_cat(SMSSUCS2Str* string, const char* text, uint32_t count);
char* string_cat(SMSSUTF8Str* string, const char* text, uint32_t count);
char* string_cat(SMSSUTF8Str* string, const ustring* text, uint32_t count);

// The same with the failure reported, and the string as it was.
//
// All of a text, of any characters: the status of its conversion, or SM_STATUS_NO_MEMORY.
[[nodiscard]] SMStatus append_converted(SMSSUCS2Str& string, const char* text);
// Text that is known to be ASCII. False when memory is short.
[[nodiscard]] bool append_ascii(SMSSUCS2Str& string, std::string_view text);
// A dump of the bytes: SM_STATUS_NO_MEMORY when there is none for the dump itself, 0xFFFFFFFF when
// there is none for more of it.
[[nodiscard]] SMStatus append_hex_dump(SMSSUCS2Str& string, ByteSpan bytes);

}  // namespace kqsupt::text
