// The exported functions on text.

#include "kqsupt/text.h"

#include "text/conversion.h"
#include "text/escape.h"
#include "text/format.h"
#include "text/language.h"
#include "text/parameters.h"
#include "text/sized_string_convert.h"
#include "text/typed_value.h"
#include "text/ucs2_string.h"
#include "text/utf8_string.h"

using namespace kqsupt;

extern "C" {

uint32_t SMUCS2Strlen(const ustring* s) {
  return text::ucs2_length(s);
}

ustring* SMUCS2Strcpy(ustring* dst, const ustring* src) {
  return text::ucs2_copy(dst, src);
}

ustring* SMUCS2Strcpy_s(ustring* dst, uint32_t, const ustring* src) {
  return text::ucs2_copy(dst, src);
}

ustring* SMUCS2Strcat(ustring* dst, const ustring* src) {
  return text::ucs2_append(dst, src);
}

ustring* SMUCS2Strcat_s(ustring* dst, uint32_t, const ustring* src) {
  return text::ucs2_append(dst, src);
}

ustring* SMUCS2Strncpy(ustring* dst, const ustring* src, uint32_t n) {
  return text::ucs2_copy_at_most(dst, src, n);
}

ustring* SMUCS2Strncpy_s(ustring* dst, uint32_t, const ustring* src, uint32_t n) {
  return text::ucs2_copy_at_most(dst, src, n);
}

ustring* SMUCS2Strncat(ustring* dst, const ustring* src, uint32_t n) {
  return text::ucs2_append_at_most(dst, src, n);
}

ustring* SMUCS2Strncat_s(ustring* dst, uint32_t, const ustring* src, uint32_t n) {
  return text::ucs2_append_at_most(dst, src, n);
}

// As in the C library, what is found in a constant string is handed back as the caller may own it.
ustring* SMUCS2Strchr(const ustring* s, uint32_t c) {
  return const_cast<ustring*>(text::ucs2_find_unit(s, c));
}

ustring* SMUCS2Strstr(const ustring* s, const ustring* sub) {
  return const_cast<ustring*>(text::ucs2_find(s, sub));
}

uint32_t SMUCS2Strcspn(const ustring* s, const ustring* set) {
  return text::ucs2_span_outside(s, set);
}

uint32_t SMUCS2Strspn(const ustring* s, const ustring* set) {
  return text::ucs2_span_inside(s, set);
}

ustring* SMUCS2Strtok(ustring* s, const ustring* delim) {
  return text::ucs2_token(s, delim);
}

ustring* SMUCS2Strtok_s(ustring* s, const ustring* delim, ustring**) {
  return text::ucs2_token(s, delim);
}

ustring* SMUCS2Strset(ustring* s, uint32_t c) {
  return text::ucs2_fill(s, c);
}
ustring* SMUCS2Strset_s(ustring* s, uint32_t, uint32_t c) {
  return text::ucs2_fill(s, c);
}

ustring* SMUCS2Strnset(ustring* s, uint32_t c, uint32_t n) {
  return text::ucs2_fill_first(s, c, n);
}

ustring* SMUCS2Strnset_s(ustring* s, uint32_t, uint32_t c, uint32_t n) {
  return text::ucs2_fill_first(s, c, n);
}

ustring* SMUCS2Strrev(ustring* s) {
  return text::ucs2_reverse(s);
}
uint32_t SMUCS2Strcmp(const ustring* a, const ustring* b) {
  return text::ucs2_difference(a, b);
}

SMStatus SMUCS2StrToUTF8Str(char* dst, uint32_t* size, const ustring* src) {
  return text::ucs2_to_utf8(dst, size, src);
}

SMStatus SMUTF8StrToUCS2Str(ustring* dst, uint32_t* size, const char* src) {
  return text::utf8_to_ucs2(dst, size, src);
}

SMStatus SMUCS2ToEscape(char* dst, uint32_t* size, const ustring* src) {
  return text::ucs2_to_escape(dst, size, src);
}

char* SMUTF8ltrim(char* s) {
  return text::trim_left(s);
}
char* SMUTF8rtrim(char* s) {
  return text::trim_right(s);
}
char* SMUTF8trim(char* s) {
  return text::trim(s);
}
char* SMUTF8StrUpperCase(char* s) {
  return text::to_upper(s);
}
char* SMUTF8StrLowerCase(char* s) {
  return text::to_lower(s);
}
char* SMUTF8Strrev(char* s) {
  return text::reverse(s);
}
char* SMUTF8Strdup(const char* s) {
  return text::duplicate(s);
}

int32_t SMUTF8Strnicmp(const char* a, const char* b, uint32_t n) {
  return text::compare_folded(a, b, n);
}

char* SMUTF8Strstri(const char* haystack, const char* needle) {
  return text::find_folded(haystack, needle);
}

uint32_t SMGetLocalLanguageID() {
  return text::local_language();
}

ustring* SMSSUCS2StrAlloc(SMSSUCS2Str* string, uint32_t capacity) {
  return text::string_alloc(string, capacity);
}

char* SMSSUTF8StrAlloc(SMSSUTF8Str* string, uint32_t capacity) {
  return text::string_alloc(string, capacity);
}

void SMSSUCS2StrFree(SMSSUCS2Str* string) {
  text::string_free(string);
}
void SMSSUTF8StrFree(SMSSUTF8Str* string) {
  text::string_free(string);
}

ustring* SMSSUCS2StrCatUCS2Str(SMSSUCS2Str* string, const ustring* text) {
  return text::string_cat(string, text, 0);
}

ustring* SMSSUCS2StrNCatUCS2Str(SMSSUCS2Str* string, const ustring* text, uint32_t n) {
  return text::string_cat(string, text, n);
}

ustring* SMSSUCS2StrCatUTF8Str(SMSSUCS2Str* string, const char* text) {
  return text::string_cat(string, text, 0);
}

ustring* SMSSUCS2StrNCatUTF8Str(SMSSUCS2Str* string, const char* text, uint32_t n) {
  return text::string_cat(string, text, n);
}

char* SMSSUTF8StrCatUTF8Str(SMSSUTF8Str* string, const char* text) {
  return text::string_cat(string, text, 0);
}

char* SMSSUTF8StrNCatUTF8Str(SMSSUTF8Str* string, const char* text, uint32_t n) {
  return text::string_cat(string, text, n);
}

char* SMSSUTF8StrCatUCS2Str(SMSSUTF8Str* string, const ustring* text) {
  return text::string_cat(string, text, 0);
}

char* SMSSUTF8StrNCatUCS2Str(SMSSUTF8Str* string, const ustring* text, uint32_t n) {
  return text::string_cat(string, text, n);
}

int32_t SMsnprintf(char* dst, uint32_t size, const char* format, ...) {
  text::Arguments arguments;
  va_start(arguments.list, format);
  const int32_t stored = text::format_list(dst, size, format, arguments);
  va_end(arguments.list);
  return stored;
}
int32_t SMvsnprintf(char* dst, uint32_t size, const char* format, va_list args) {
  return text::format_list(dst, size, format, args);
}

SMStatus SMXLTUTF8ToTypeValue(const char* text, void* value, uint32_t* size, uint32_t type) {
  return text::value_from_text(text, value, size, type);
}

SMStatus SMXLTTypeValueToUTF8(const void* value, uint32_t valueSize, char* text, uint32_t* size,
                              uint32_t type) {
  return text::value_to_text(value, valueSize, text, size, type);
}

char* SMNVPGetUTF8ParamName(char* param) {
  return text::parameter_name(param);
}
char* SMNVPGetUTF8ParamValue(char* param) {
  return text::parameter_value(param);
}
uint32_t SMIsValidParam(const char* param) {
  return text::is_parameter(param);
}

int32_t SMNVPGetParamIndexByUTF8Name(int32_t count, char* const* params, const char* name,
                                     uint32_t ignoreCase) {
  return text::find_parameter({count, params}, name, ignoreCase);
}

char* SMNVPGetUTF8ParamValueByUTF8Name(int32_t count, char* const* params, const char* name,
                                       uint32_t ignoreCase) {
  return text::find_parameter_value({count, params}, name, ignoreCase);
}

SMStatus SMNVPUTF8ToTypeValue(int32_t count, char* const* params, const char* name,
                              uint32_t ignoreCase, void* value, uint32_t* size, uint32_t type) {
  return text::parameter_to_value({count, params}, name, ignoreCase, value, size, type);
}

uint32_t SMNVPGetEnums32Value(int32_t count, char* const* params, const char* name,
                              uint32_t ignoreCase, const SMEnums32* table, uint32_t tableCount,
                              uint32_t multiple) {
  return text::parameter_enum({count, params}, name, ignoreCase, table, tableCount, multiple);
}

}  // extern "C"
