// What callers do with sized strings: text of either encoding appended to either kind.
#pragma once

#include "kqsupt/text.h"
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

}  // namespace kqsupt::text
