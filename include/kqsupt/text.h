/* Text in UCS-2 and UTF-8. */
#ifndef KQSUPT_TEXT_H
#define KQSUPT_TEXT_H

#include <kqsupt/frame.h>
#include <stdarg.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One unit of UCS-2 text in host byte order. A string of them ends with a unit of value 0. */
typedef uint16_t ustring;

/* ---- UCS-2 strings -----------------------------------------------------------------------------
 *
 * Every unit counts as one character: there is no pairing of surrogates, no case, no locale.
 * Lengths and counts `n` are in units. No argument is checked: strings must not be NULL and
 * destinations must have room. Of a character `c` the low 16 bits count. Pointers that are returned
 * point into the caller's strings.
 *
 * The functions whose names end in _s are the same as those without, and do not look at `size`. */

/* The number of units before the terminator. */
KQSUPT_API uint32_t SMUCS2Strlen(const ustring* s);

/* Copies `src` with its terminator to `dst`, which is returned. */
KQSUPT_API ustring* SMUCS2Strcpy(ustring* dst, const ustring* src);
KQSUPT_API ustring* SMUCS2Strcpy_s(ustring* dst, uint32_t size, const ustring* src);

/* Appends `src` with its terminator to the string in `dst`, which is returned. */
KQSUPT_API ustring* SMUCS2Strcat(ustring* dst, const ustring* src);
KQSUPT_API ustring* SMUCS2Strcat_s(ustring* dst, uint32_t size, const ustring* src);

/* Copies units of `src` until the terminator or `n` of them have been copied, and returns `dst`. A
 * longer `src` leaves `dst` without a terminator, a shorter one leaves the units behind it alone.
 */
KQSUPT_API ustring* SMUCS2Strncpy(ustring* dst, const ustring* src, uint32_t n);
KQSUPT_API ustring* SMUCS2Strncpy_s(ustring* dst, uint32_t size, const ustring* src, uint32_t n);

/* Appends at most `n` units of `src` and a terminator to the string in `dst`, which is returned.
 * With `n` 0 nothing is read or written. */
KQSUPT_API ustring* SMUCS2Strncat(ustring* dst, const ustring* src, uint32_t n);
KQSUPT_API ustring* SMUCS2Strncat_s(ustring* dst, uint32_t size, const ustring* src, uint32_t n);

/* The first place of `c` in `s`, its terminator for 0; NULL when there is none. */
KQSUPT_API ustring* SMUCS2Strchr(const ustring* s, uint32_t c);

/* The first place of `sub` in `s`, `s` itself for an empty `sub`; NULL when there is none. */
KQSUPT_API ustring* SMUCS2Strstr(const ustring* s, const ustring* sub);

/* The number of leading units of `s` that are not in `set`, and of those that are. */
KQSUPT_API uint32_t SMUCS2Strcspn(const ustring* s, const ustring* set);
KQSUPT_API uint32_t SMUCS2Strspn(const ustring* s, const ustring* set);

/* The next token of `s` between units of `delim`, terminated in place; with `s` NULL the next one
 * of the string that was cut last. NULL when there is none. There is one place where the process
 * left off, for both functions and all threads: one string at a time is cut. `context` is not used.
 */
KQSUPT_API ustring* SMUCS2Strtok(ustring* s, const ustring* delim);
KQSUPT_API ustring* SMUCS2Strtok_s(ustring* s, const ustring* delim, ustring** context);

/* Overwrites every unit before the terminator of `s` with `c`, and returns `s`. */
KQSUPT_API ustring* SMUCS2Strset(ustring* s, uint32_t c);
KQSUPT_API ustring* SMUCS2Strset_s(ustring* s, uint32_t size, uint32_t c);

/* Overwrites exactly `n` units of `s` with `c`, a terminator among them too, and returns `s`. */
KQSUPT_API ustring* SMUCS2Strnset(ustring* s, uint32_t c, uint32_t n);
KQSUPT_API ustring* SMUCS2Strnset_s(ustring* s, uint32_t size, uint32_t c, uint32_t n);

/* Reverses the units before the terminator in place, and returns `s`. */
KQSUPT_API ustring* SMUCS2Strrev(ustring* s);

/* 0 when the strings are equal; else the difference of the first two units that differ, that of `a`
 * less that of `b`, in 16 bits: 1 to 65535. It tells equal from different and gives no order. */
KQSUPT_API uint32_t SMUCS2Strcmp(const ustring* a, const ustring* b);

/* ---- Conversion --------------------------------------------------------------------------------
 *
 * `*size` holds the room in bytes and receives the bytes written, terminator included. With `dst`
 * NULL it receives the bytes needed: that is the only way to ask, as a room that is too small
 * leaves it as it is and `dst` partly written. SM_STATUS_INVALID_PARAMETER: `src` or `size` NULL.
 * SM_STATUS_BUFFER_TOO_SMALL. */

/* UTF-8 text from UCS-2. Every surrogate of the text, wherever it is, is written as the code point
 * of the pair at the head of the text, or as the first unit when that is no surrogate.
 * SM_STATUS_OPERATION_FAILED: there is a surrogate, and the text begins with half a pair. */
KQSUPT_API SMStatus SMUCS2StrToUTF8Str(char* dst, uint32_t* size, const ustring* src);

/* UCS-2 text from UTF-8. Over-long forms are accepted, and the bytes behind a lead byte are not
 * checked for their pattern. A code point from 0x10000 on becomes two units, 0xD800 and 0xDC00 with
 * 10 of its low 20 bits each. SM_STATUS_OPERATION_FAILED: a byte that begins no sequence, a
 * sequence that the text cuts off, or a code point from 0x110000 on. */
KQSUPT_API SMStatus SMUTF8StrToUCS2Str(ustring* dst, uint32_t* size, const char* src);

/* Printable ASCII from UCS-2: a backslash doubled, TAB, LF and CR as "\t", "\n" and "\r", any other
 * unit outside 0x20 to 0x7F as "\u" and four lower-case hexadecimal digits. `*size` holds the room
 * of `dst` in bytes and receives the bytes needed with the terminator, also when the room is too
 * small. With `size` NULL `dst` is trusted to have room; `dst` may be NULL. SM_STATUS_UNSUCCESSFUL:
 * `src` NULL. SM_STATUS_BUFFER_TOO_SMALL. 0xFFFFFFFF: memory is short. */
KQSUPT_API SMStatus SMUCS2ToEscape(char* dst, uint32_t* size, const ustring* src);

/* ---- UTF-8 strings -----------------------------------------------------------------------------
 *
 * These work on bytes: a sequence of several bytes is nothing to them. */

/* Overwrites blanks (TAB, LF, CR, space) at the left, at the right or at both ends with zeros. The
 * text is not moved: the trimmed one begins at the pointer that is returned. NULL gives NULL. */
KQSUPT_API char* SMUTF8ltrim(char* s);
KQSUPT_API char* SMUTF8rtrim(char* s);
KQSUPT_API char* SMUTF8trim(char* s);

/* Maps each byte in place to upper or lower case as the C library's locale has it, and returns `s`,
 * which must not be NULL. */
KQSUPT_API char* SMUTF8StrUpperCase(char* s);
KQSUPT_API char* SMUTF8StrLowerCase(char* s);

/* Reverses the bytes in place and returns `s`, which must not be NULL. */
KQSUPT_API char* SMUTF8Strrev(char* s);

/* A copy of `s`, which the caller releases with SMFreeMem. NULL when `s` is NULL or memory is
 * short. */
KQSUPT_API char* SMUTF8Strdup(const char* s);

/* Compares at most `n` bytes with A to Z folded to lower case, in no locale: 0 when they are equal,
 * else the folded byte of `a` less that of `b` where they first differ. Neither may be NULL unless
 * `n` is 0. */
KQSUPT_API int32_t SMUTF8Strnicmp(const char* a, const char* b, uint32_t n);

/* The first place of `needle` in `haystack` in any case of letters, as the C library's locale has
 * it; `haystack` itself for an empty needle. NULL when there is none or an argument is NULL. */
KQSUPT_API char* SMUTF8Strstri(const char* haystack, const char* needle);

/* The numeric ID of the language that the environment variable LANG names, read at every call: 1033
 * when it is not set or is not exactly the name of one that the agents have texts in. */
KQSUPT_API uint32_t SMGetLocalLanguageID(void);

/* ---- Sized strings -----------------------------------------------------------------------------
 *
 * A record that holds a heap buffer of text and grows as text is appended. The caller owns the
 * record, usually on its stack, makes it with the Alloc function of its kind and releases it with
 * the Free function. While `content` is not NULL the text is terminated. Copies of a record share
 * its buffer: do not make any while it is in use. A record belongs to one thread at a time. */

/* A sized string of UCS-2 text. */
typedef struct SMSSUCS2Str {
  ustring* content;  /* from the heap; NULL when there is no buffer */
  uint32_t capacity; /* of the buffer, in bytes */
  uint32_t length;   /* of the text, in units without the terminator */
} SMSSUCS2Str;

/* A sized string of UTF-8 text. */
typedef struct SMSSUTF8Str {
  char* content;     /* from the heap; NULL when there is no buffer */
  uint32_t capacity; /* of the buffer, in bytes */
  uint32_t length;   /* of the text, in bytes without the terminator */
} SMSSUTF8Str;

/* Makes `string` an empty string with a buffer of `capacity` bytes and returns its content. Without
 * a buffer, content NULL, when `capacity` is 0 or memory is short; the other fields are then not
 * set. */
KQSUPT_API ustring* SMSSUCS2StrAlloc(SMSSUCS2Str* string, uint32_t capacity);
KQSUPT_API char* SMSSUTF8StrAlloc(SMSSUTF8Str* string, uint32_t capacity);

/* Frees the buffer and sets content NULL, capacity and length 0. May be called again. */
KQSUPT_API void SMSSUCS2StrFree(SMSSUCS2Str* string);
KQSUPT_API void SMSSUTF8StrFree(SMSSUTF8Str* string);

/* The functions that append return the content. Nothing happens when `text` is NULL or the string
 * has no buffer. A failure, for lack of memory or of a text that does not convert, leaves the
 * string as it was and is not reported: compare the lengths where that matters. */

/* Appends the whole text, or exactly `n` units or bytes of it, its terminator not being an end; `n`
 * 0 stands for the whole text. */
KQSUPT_API ustring* SMSSUCS2StrCatUCS2Str(SMSSUCS2Str* string, const ustring* text);
KQSUPT_API ustring* SMSSUCS2StrNCatUCS2Str(SMSSUCS2Str* string, const ustring* text, uint32_t n);
KQSUPT_API char* SMSSUTF8StrCatUTF8Str(SMSSUTF8Str* string, const char* text);
KQSUPT_API char* SMSSUTF8StrNCatUTF8Str(SMSSUTF8Str* string, const char* text, uint32_t n);

/* Converts the whole UTF-8 text and appends `n` units of the result, `n` being in bytes of the text
 * and 0 standing for all of them. For plain ASCII that is the text; other text is followed by as
 * many units of 0 as it has fewer units than bytes, and the length counts them. Nothing is appended
 * when `n` bytes are less than the text needs. */
KQSUPT_API ustring* SMSSUCS2StrCatUTF8Str(SMSSUCS2Str* string, const char* text);
KQSUPT_API ustring* SMSSUCS2StrNCatUTF8Str(SMSSUCS2Str* string, const char* text, uint32_t n);

/* Converts the whole UCS-2 text into `n` bytes and appends them, `n` 0 standing for as many bytes
 * as the text has units. So it takes plain ASCII only, and nothing is appended of any other text or
 * when `n` is less than its length. */
KQSUPT_API char* SMSSUTF8StrCatUCS2Str(SMSSUTF8Str* string, const ustring* text);
KQSUPT_API char* SMSSUTF8StrNCatUCS2Str(SMSSUTF8Str* string, const ustring* text, uint32_t n);

/* ---- Formatted output --------------------------------------------------------------------------
 *
 * A format is UTF-8 text with conversion specifications. A specification is
 *
 *   %  flags  width  .precision  size  conversion
 *
 * and all but the first and the last may be left out. It differs from the C library's in what long
 * means, in "S", in infinities and in what does not convert: a compiler cannot check such calls.
 *
 * Flags, any of them in any order:
 *   -      left-adjust in the width
 *   +      a sign also for what is not negative
 *   space  a space in the place of that sign; "+" overrules it
 *   #      alternate form: "o" begins with 0; "x" and "X" of other values than 0 begin with 0x or
 *          0X; "e", "E", "f", "g" and "G" always have a point, "g" and "G" keep trailing zeros
 *   0      zeros instead of spaces before the text and behind its sign; ignored with "-", and for
 *          integers with a precision. It fills up texts and infinities as well.
 * Width: the fewest characters to produce; digits, or "*" for an int argument, of which a negative
 *   one means "-" and its magnitude.
 * Precision: "." with digits, none of which means 0, or "*" for an int argument, of which a negative
 *   one means no precision. At least this many digits of an integer, 0 having none with precision
 *   0; for the others see below.
 * Size: "h" for a short integer, "l" for a long one. A long has 32 bits on every host and there is
 *   no larger integer: pass an int for it. Repeated sizes count as the last one. "L" has no effect.
 * Conversion, with its argument:
 *   d i    int                 signed decimal
 *   u      unsigned            decimal
 *   o x X  unsigned            octal, hexadecimal in lower or upper case
 *   D U O  int, unsigned       as "ld", "lu" and "lo"
 *   p      void*               as "#x" of the address; 0 for NULL
 *   c      int                 its low byte
 *   s      const char*         bytes up to the terminator, at most "precision" of them, of which no
 *                              more are read; "(null)" for NULL
 *   S      const ustring*      UCS-2 text as UTF-8, by the rules of SMUCS2StrToUTF8Str, then as
 *                              "s"; "(null)" for NULL. When it cannot be converted, or memory is
 *                              short, the output ends there.
 *   e E    double              d.ddde+dd, with "precision" (6) digits behind the point
 *   f      double              ddd.ddd, the same
 *   g G    double              "precision" (6) significant digits, as "e" when the exponent is below
 *                              -4 or not below the precision, else as "f"; no trailing zeros
 *   n      int*, short* for h  stores the number of characters produced so far, counting what did
 *                              not fit, and produces nothing
 *   other                      the character itself in its width, without an argument: "%%" is "%",
 *                              and so "%zu" is "zu"
 * A format that ends in a specification ends the output. Digits of doubles are those of the exact
 * value, rounded to the nearest and from halfway to even. Infinities and what is not a number
 * produce Inf, with a sign in the case of infinities only.
 *
 * A width or precision may have any size; a number of characters beyond INT32_MAX counts as that.
 * Calls from several threads wait for each other. Do not call these functions from a signal
 * handler; a child of fork() may call them. */

/* Writes what `format` makes of the arguments to `dst`, a buffer of `size` bytes: at most `size` - 1
 * of the characters, wherever that cuts a UTF-8 sequence, and always a terminator, also when `size`
 * is 0. `dst` may be NULL: nothing is written. `format` is not NULL.
 *
 * Returns the number of characters written, or with `dst` NULL of those that would have been,
 * without the terminator: never more than `size` - 1, even if the whole output has more. */
KQSUPT_API int32_t SMsnprintf(char* dst, uint32_t size, const char* format, ...);

/* The same with a list of arguments. All that the caller may do with `args` afterwards is va_end. */
KQSUPT_API int32_t SMvsnprintf(char* dst, uint32_t size, const char* format, va_list args);

/* ---- Typed values ------------------------------------------------------------------------------
 *
 * A type argument has a value type in its low byte and a format in the next one; other bits are
 * ignored. */

enum {
  SMXLT_TYPE_BOOLEAN = 0,      /* uint16_t, 1 or 0 */
  SMXLT_TYPE_S8 = 1,           /* int8_t */
  SMXLT_TYPE_S16 = 2,          /* int16_t */
  SMXLT_TYPE_S32 = 3,          /* int32_t */
  SMXLT_TYPE_S64 = 4,          /* int64_t */
  SMXLT_TYPE_U8 = 5,           /* uint8_t */
  SMXLT_TYPE_U16 = 6,          /* uint16_t */
  SMXLT_TYPE_U32 = 7,          /* uint32_t */
  SMXLT_TYPE_U64 = 8,          /* uint64_t */
  SMXLT_TYPE_DOUBLE = 9,       /* double */
  SMXLT_TYPE_LANGUAGE_ID = 10, /* uint32_t, as from SMGetLocalLanguageID */
  SMXLT_TYPE_TIME = 11,        /* int32_t, seconds since the epoch; to text only */
  SMXLT_TYPE_BINARY = 12,      /* bytes */
  SMXLT_TYPE_UTF8 = 13,        /* UTF-8 text with its terminator */
  SMXLT_TYPE_UCS2 = 14,        /* UCS-2 text with its terminator */
  SMXLT_TYPE_IPV4 = 15,        /* uint32_t in network byte order */
  SMXLT_TYPE_HEX_BYTES = 16,   /* bytes, as hexadecimal pairs */

  /* The formats. */
  SMXLT_FMT_DEFAULT = 0x0000, /* decimal; hexadecimal pairs for bytes */
  SMXLT_FMT_BASE2 = 0x0100,   /* binary digits, to text only; a hex dump for bytes */
  SMXLT_FMT_OCTAL = 0x0200,
  SMXLT_FMT_DECIMAL = 0x0300,
  SMXLT_FMT_HEX = 0x0400 /* hexadecimal; for bytes a list as in "0x0A,0xFF" */
};

/* Reads `text` as a value of `type` into `value`, which has `*size` bytes and may be NULL when that
 * is 0.
 * `*size` receives the size of the value, also when the status is an error: the size of the type;
 * for bytes their number; for text its size with the terminator; 0 for a type that cannot be read.
 * For UCS-2 text it is what SMUTF8StrToUCS2Str makes of it. `value` is written on success only, but
 * for UCS-2 text: of that the units that come before what fails or does not fit are written.
 *
 * Integers: decimal with an optional sign, octal, or hexadecimal with an optional "0x" and at most
 * 8 digits, 16 for U64. S64 is read in decimal only, U64 in decimal and hexadecimal. Double: any
 * text, 0 for what is no number. Boolean: "true" or "false" in any case. Language ID: a locale name
 * such as "de". Bytes: pairs of hexadecimal digits up to the first that is none; BINARY with
 * SMXLT_FMT_HEX: a list.
 *
 * SM_STATUS_INVALID_PARAMETER: `text` or `size` NULL; `value` NULL with a `*size` other than 0;
 * text that is not a value of the type in this format, or a format that the type cannot be read in.
 * SM_STATUS_UNSUCCESSFUL: a type that cannot be read, or bytes in another format.
 * SM_STATUS_BUFFER_TOO_SMALL: `*size` is less than the value needs. SM_STATUS_VALUE_TOO_LARGE and
 * SM_STATUS_VALUE_TOO_SMALL: outside an 8- or 16-bit type; the wider ones saturate. 1: a 64-bit
 * integer in a format that it is not read in. 0xFFFFFFFF: no such language, a malformed list of
 * bytes, no address. Otherwise the status of SMUTF8StrToUCS2Str or SMIPAddrASCIIToNetwork. */
KQSUPT_API SMStatus SMXLTUTF8ToTypeValue(const char* text, void* value, uint32_t* size,
                                         uint32_t type);

/* Writes a value of `type` as text to `text`, which has `*size` bytes. `valueSize`, in bytes,
 * counts for bytes and UTF-8 text. On success `*size` receives the size of the text with its
 * terminator; with SM_STATUS_BUFFER_TOO_SMALL the size that is needed. With `text` NULL that is how
 * to ask for it, but for UCS-2 text, where a NULL `text` gives the size and success.
 *
 * Each type needs a smallest room whatever its value: BOOLEAN 5 or 6, S8 to S32 17, U8 to U32 16,
 * those in binary digits 33, S64 33, U64 and DOUBLE 32, LANGUAGE_ID 16, TIME 64. A double whose
 * text is longer than the room is cut. BINARY with SMXLT_FMT_BASE2 is a hex dump: lines of 81
 * characters for 16 bytes each, ending in CR and LF. UTF-8 text is copied as it is. HEX_BYTES
 * writes the first 63 bytes; when the room for them is too small, nothing is written, the status is
 * success and `*size` receives the size of the text that `text` holds.
 *
 * SM_STATUS_INVALID_PARAMETER: `value` or `size` NULL. SM_STATUS_UNSUCCESSFUL: no such type, or
 * bytes in another format. SM_STATUS_BUFFER_TOO_SMALL. SM_STATUS_NO_MEMORY and 0xFFFFFFFF: memory
 * is short. Otherwise the status of SMUCS2StrToUTF8Str; 17 for an address when the library has not
 * started. */
KQSUPT_API SMStatus SMXLTTypeValueToUTF8(const void* value, uint32_t valueSize, char* text,
                                         uint32_t* size, uint32_t type);

/* ---- Parameters --------------------------------------------------------------------------------
 *
 * Texts of the form "name=value". The name is what stands before the first "=" and is not empty;
 * the value may be. A list of parameters is a count and that many pointers, none of them NULL. */

/* Cuts the name off its value, by overwriting the "=" with 0, and returns it: `param` itself. NULL,
 * and nothing changed, when `param` is no parameter. */
KQSUPT_API char* SMNVPGetUTF8ParamName(char* param);

/* The value inside `param`; NULL when it is no parameter. */
KQSUPT_API char* SMNVPGetUTF8ParamValue(char* param);

/* 1 when `param` is a parameter, else 0. */
KQSUPT_API uint32_t SMIsValidParam(const char* param);

/* The index of the first parameter with this name, in any case of letters when `ignoreCase` is 1;
 * -1 when there is none. Texts that are no parameters are passed over. */
KQSUPT_API int32_t SMNVPGetParamIndexByUTF8Name(int32_t count, char* const* params,
                                                const char* name, uint32_t ignoreCase);

/* The value inside the first parameter with this name; NULL when there is none. */
KQSUPT_API char* SMNVPGetUTF8ParamValueByUTF8Name(int32_t count, char* const* params,
                                                  const char* name, uint32_t ignoreCase);

/* Reads the value of the first parameter with this name as SMXLTUTF8ToTypeValue does.
 * SM_STATUS_INVALID_PARAMETER: `params` or `value` NULL. SM_STATUS_DATA_NOT_FOUND: no such
 * parameter. Otherwise the status of that function. */
KQSUPT_API SMStatus SMNVPUTF8ToTypeValue(int32_t count, char* const* params, const char* name,
                                         uint32_t ignoreCase, void* value, uint32_t* size,
                                         uint32_t type);

/* A name for a value. The first entry of a table stands for "no match" and only its value counts.
 */
typedef struct SMEnums32 {
  const char* name;
  uint32_t value;
  uint32_t reserved; /* not read */
} SMEnums32;

/* The value that `table`, of `tableCount` entries, has for the text of the first parameter with
 * this name, in any case of letters. The value of entry 1 when there is no such parameter, that of
 * entry 0 when no name matches. With `multiple` 1 the text is a list of names separated by "|", or
 * by "," when it has no "|"; the values of those that match are combined, 0 when none does.
 * 0x80000000: `params`, `name` or `table` NULL, a table of less than 2 entries, or memory is short.
 */
KQSUPT_API uint32_t SMNVPGetEnums32Value(int32_t count, char* const* params, const char* name,
                                         uint32_t ignoreCase, const SMEnums32* table,
                                         uint32_t tableCount, uint32_t multiple);

#ifdef __cplusplus
}
#endif

#endif
