/** @file
 * Text in UCS-2 and UTF-8. */
#ifndef KQSUPT_TEXT_H
#define KQSUPT_TEXT_H

#include <kqsupt/frame.h>
#include <stdarg.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup ucs2 UCS-2 strings
 * Strings of 16-bit units.
 *
 * Every unit counts as one character: there is no pairing of surrogates, no case, no locale.
 * Lengths and counts `n` are in units. No argument is checked: strings must not be NULL and
 * destinations must have room. Of a character `c` the low 16 bits count. Pointers that are returned
 * point into the caller's strings.
 *
 * The functions whose names end in _s are the same as those without, and do not look at `size`.
 * @{ */

/** One unit of UCS-2 text in host byte order. A string of them ends with a unit of value 0. */
typedef uint16_t ustring;

/** Counts the units before the terminator.
 * @param[in] s the string, borrowed for the call.
 * @return The number of units. */
KQSUPT_API uint32_t SMUCS2Strlen(const ustring* s);

/** Copies a string with its terminator.
 * @param[out] dst the caller's; has room for the string and its terminator.
 * @param[in] src the string, borrowed for the call.
 * @return `dst`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strcpy(ustring* dst, const ustring* src);

/** The same as SMUCS2Strcpy, under another name: it does not look at `size`.
 * @param[out] dst the caller's; has room for the string and its terminator.
 * @param[in] size not looked at.
 * @param[in] src the string, borrowed for the call.
 * @return `dst`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strcpy_s(ustring* dst, uint32_t size, const ustring* src);

/** Appends a string with its terminator to another.
 * @param[in,out] dst the caller's; a string with room behind it.
 * @param[in] src the string, borrowed for the call.
 * @return `dst`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strcat(ustring* dst, const ustring* src);

/** The same as SMUCS2Strcat, under another name: it does not look at `size`.
 * @param[in,out] dst the caller's; a string with room behind it.
 * @param[in] size not looked at.
 * @param[in] src the string, borrowed for the call.
 * @return `dst`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strcat_s(ustring* dst, uint32_t size, const ustring* src);

/** Copies units until the terminator or `n` of them have been copied. A longer `src` leaves `dst`
 * without a terminator, a shorter one leaves the units behind it alone.
 * @param[out] dst the caller's; has room for what is copied.
 * @param[in] src the string, borrowed for the call.
 * @param[in] n the most units to copy.
 * @return `dst`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strncpy(ustring* dst, const ustring* src, uint32_t n);

/** The same as SMUCS2Strncpy, under another name: it does not look at `size`.
 * @param[out] dst the caller's; has room for what is copied.
 * @param[in] size not looked at.
 * @param[in] src the string, borrowed for the call.
 * @param[in] n the most units to copy.
 * @return `dst`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strncpy_s(ustring* dst, uint32_t size, const ustring* src, uint32_t n);

/** Appends at most `n` units of a string and a terminator to another. With `n` 0 nothing is read or
 * written.
 * @param[in,out] dst the caller's; a string with room behind it.
 * @param[in] src the string, borrowed for the call.
 * @param[in] n the most units to append.
 * @return `dst`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strncat(ustring* dst, const ustring* src, uint32_t n);

/** The same as SMUCS2Strncat, under another name: it does not look at `size`.
 * @param[in,out] dst the caller's; a string with room behind it.
 * @param[in] size not looked at.
 * @param[in] src the string, borrowed for the call.
 * @param[in] n the most units to append.
 * @return `dst`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strncat_s(ustring* dst, uint32_t size, const ustring* src, uint32_t n);

/** Finds the first place of a unit in a string, its terminator for 0.
 * @param[in] s the string, borrowed for the call.
 * @param[in] c the unit, in the low 16 bits.
 * @return The place, which points into `s`; NULL when there is none. */
KQSUPT_API ustring* SMUCS2Strchr(const ustring* s, uint32_t c);

/** Finds the first place of a string in another.
 * @param[in] s the string to search, borrowed for the call.
 * @param[in] sub the string to find, borrowed for the call.
 * @return The place, which points into `s`, `s` itself for an empty `sub`; NULL when there is none.
 *     */
KQSUPT_API ustring* SMUCS2Strstr(const ustring* s, const ustring* sub);

/** Counts the leading units of a string that are not in a set.
 * @param[in] s the string, borrowed for the call.
 * @param[in] set the units of the set, as a string, borrowed for the call.
 * @return The number of units. */
KQSUPT_API uint32_t SMUCS2Strcspn(const ustring* s, const ustring* set);

/** Counts the leading units of a string that are in a set.
 * @param[in] s the string, borrowed for the call.
 * @param[in] set the units of the set, as a string, borrowed for the call.
 * @return The number of units. */
KQSUPT_API uint32_t SMUCS2Strspn(const ustring* s, const ustring* set);

/** Cuts the next token of a string between units of `delim`, terminated in place.
 *
 * There is one place where the process left off, for this function and SMUCS2Strtok_s and all
 * threads: one string at a time is cut.
 * @param[in,out] s the string, which stays the caller's and is kept until it is cut up; NULL for
 *     the one that was cut last.
 * @param[in] delim the units that part tokens, as a string, borrowed for the call.
 * @return The token, which points into the string; NULL when there is none. */
KQSUPT_API ustring* SMUCS2Strtok(ustring* s, const ustring* delim);

/** Cuts the next token of a string between units of `delim`, terminated in place.
 *
 * There is one place where the process left off, for this function and SMUCS2Strtok and all
 * threads: one string at a time is cut.
 * @param[in,out] s the string, which stays the caller's and is kept until it is cut up; NULL for
 *     the one that was cut last.
 * @param[in] delim the units that part tokens, as a string, borrowed for the call.
 * @param[in] context not used; stays the caller's, and may be NULL.
 * @return The token, which points into the string; NULL when there is none. */
KQSUPT_API ustring* SMUCS2Strtok_s(ustring* s, const ustring* delim, ustring** context);

/** Overwrites every unit before the terminator of a string.
 * @param[in,out] s the caller's; the string.
 * @param[in] c the unit to write, in the low 16 bits.
 * @return `s`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strset(ustring* s, uint32_t c);

/** The same as SMUCS2Strset, under another name: it does not look at `size`.
 * @param[in,out] s the caller's; the string.
 * @param[in] size not looked at.
 * @param[in] c the unit to write, in the low 16 bits.
 * @return `s`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strset_s(ustring* s, uint32_t size, uint32_t c);

/** Overwrites exactly `n` units of a string, a terminator among them too.
 * @param[in,out] s the caller's; the string, or room for `n` units.
 * @param[in] c the unit to write, in the low 16 bits.
 * @param[in] n how many units.
 * @return `s`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strnset(ustring* s, uint32_t c, uint32_t n);

/** The same as SMUCS2Strnset, under another name: it does not look at `size`.
 * @param[in,out] s the caller's; the string, or room for `n` units.
 * @param[in] size not looked at.
 * @param[in] c the unit to write, in the low 16 bits.
 * @param[in] n how many units.
 * @return `s`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strnset_s(ustring* s, uint32_t size, uint32_t c, uint32_t n);

/** Reverses the units before the terminator in place.
 * @param[in,out] s the caller's; the string.
 * @return `s`, which stays the caller's. */
KQSUPT_API ustring* SMUCS2Strrev(ustring* s);

/** Compares two strings. It tells equal from different and gives no order.
 * @param[in] a a string, borrowed for the call.
 * @param[in] b the other string, borrowed for the call.
 * @return 0 when the strings are equal; else the difference of the first two units that differ,
 *     that of `a` less that of `b`, in 16 bits: 1 to 65535. */
KQSUPT_API uint32_t SMUCS2Strcmp(const ustring* a, const ustring* b);

/** @} */

/** @defgroup conversion Conversion
 * Between UCS-2, UTF-8 and printable ASCII.
 * @{ */

/** Makes UTF-8 text from UCS-2.
 *
 * Every surrogate of the text, wherever it is, is written as the code point of the pair at the head
 * of the text, or as the first unit when that is no surrogate.
 * @param[out] dst the caller's; receives the text with its terminator, in part when the room is too
 *     small or the conversion fails. NULL to ask for the size.
 * @param[in,out] size the caller's; the room in bytes, and receives the bytes written, terminator
 *     included. With `dst` NULL it receives the bytes needed: that is the only way to ask, as a
 *     room that is too small leaves it as it is.
 * @param[in] src the text, borrowed for the call.
 * @retval SM_STATUS_SUCCESS the text was converted, or the size is known.
 * @retval SM_STATUS_INVALID_PARAMETER `src` or `size` NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the room is too small; `dst` is partly written.
 * @retval SM_STATUS_OPERATION_FAILED there is a surrogate, and the text begins with half a pair. */
KQSUPT_API SMStatus SMUCS2StrToUTF8Str(char* dst, uint32_t* size, const ustring* src);

/** Makes UCS-2 text from UTF-8.
 *
 * Over-long forms are accepted, and the bytes behind a lead byte are not checked for their pattern.
 * A code point from 0x10000 on becomes two units, 0xD800 and 0xDC00 with 10 of its low 20 bits
 * each.
 * @param[out] dst the caller's; receives the text with its terminator, in part when the room is too
 *     small or the conversion fails. NULL to ask for the size.
 * @param[in,out] size the caller's; the room in bytes, and receives the bytes written, terminator
 *     included. With `dst` NULL it receives the bytes needed: that is the only way to ask, as a
 *     room that is too small leaves it as it is.
 * @param[in] src the text, borrowed for the call.
 * @retval SM_STATUS_SUCCESS the text was converted, or the size is known.
 * @retval SM_STATUS_INVALID_PARAMETER `src` or `size` NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the room is too small; `dst` is partly written.
 * @retval SM_STATUS_OPERATION_FAILED a byte that begins no sequence, a sequence that the text cuts
 *     off, or a code point from 0x110000 on. */
KQSUPT_API SMStatus SMUTF8StrToUCS2Str(ustring* dst, uint32_t* size, const char* src);

/** Makes printable ASCII from UCS-2.
 *
 * A backslash is doubled, TAB, LF and CR become `\t`, `\n` and `\r`, any other unit outside 0x20 to
 * 0x7F becomes `\u` and four lower-case hexadecimal digits.
 * @param[out] dst the caller's; receives the text with its terminator when the room is enough. May
 *     be NULL.
 * @param[in,out] size the caller's; the room of `dst` in bytes, and receives the bytes needed with
 *     the terminator, also when the room is too small. With NULL `dst` is trusted to have room.
 * @param[in] src the text, borrowed for the call.
 * @retval SM_STATUS_SUCCESS the text was written, or `dst` is NULL.
 * @retval SM_STATUS_UNSUCCESSFUL `src` NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the room is too small.
 * @retval 0xFFFFFFFF memory is short. */
KQSUPT_API SMStatus SMUCS2ToEscape(char* dst, uint32_t* size, const ustring* src);

/** @} */

/** @defgroup utf8 UTF-8 strings
 * These work on bytes: a sequence of several bytes is nothing to them.
 * @{ */

/** Overwrites blanks (TAB, LF, CR, space) at the left with zeros. The text is not moved.
 * @param[in,out] s the caller's; the text. May be NULL.
 * @return Where the trimmed text begins, which points into `s`; NULL for NULL. */
KQSUPT_API char* SMUTF8ltrim(char* s);

/** Overwrites blanks (TAB, LF, CR, space) at the right with zeros. The text is not moved.
 * @param[in,out] s the caller's; the text. May be NULL.
 * @return Where the trimmed text begins, which points into `s`; NULL for NULL. */
KQSUPT_API char* SMUTF8rtrim(char* s);

/** Overwrites blanks (TAB, LF, CR, space) at both ends with zeros. The text is not moved.
 * @param[in,out] s the caller's; the text. May be NULL.
 * @return Where the trimmed text begins, which points into `s`; NULL for NULL. */
KQSUPT_API char* SMUTF8trim(char* s);

/** Maps each byte in place to upper case as the C library's locale has it.
 * @param[in,out] s the caller's; the text, not NULL.
 * @return `s`, which stays the caller's. */
KQSUPT_API char* SMUTF8StrUpperCase(char* s);

/** Maps each byte in place to lower case as the C library's locale has it.
 * @param[in,out] s the caller's; the text, not NULL.
 * @return `s`, which stays the caller's. */
KQSUPT_API char* SMUTF8StrLowerCase(char* s);

/** Reverses the bytes in place.
 * @param[in,out] s the caller's; the text, not NULL.
 * @return `s`, which stays the caller's. */
KQSUPT_API char* SMUTF8Strrev(char* s);

/** Copies a text to the heap.
 * @param[in] s the text, borrowed for the call; may be NULL.
 * @return The copy, which the caller releases with SMFreeMem; NULL when `s` is NULL or memory is
 *     short. */
KQSUPT_API char* SMUTF8Strdup(const char* s);

/** Compares at most `n` bytes with A to Z folded to lower case, in no locale.
 * @param[in] a a text, borrowed for the call; not NULL unless `n` is 0.
 * @param[in] b the other text, borrowed for the call; not NULL unless `n` is 0.
 * @param[in] n the most bytes to compare.
 * @return 0 when they are equal, else the folded byte of `a` less that of `b` where they first
 *     differ. */
KQSUPT_API int32_t SMUTF8Strnicmp(const char* a, const char* b, uint32_t n);

/** Finds the first place of a text in another in any case of letters, as the C library's locale has
 * it.
 * @param[in] haystack the text to search, borrowed for the call; may be NULL.
 * @param[in] needle the text to find, borrowed for the call; may be NULL.
 * @return The place, which points into `haystack`, `haystack` itself for an empty needle; NULL when
 *     there is none or an argument is NULL. */
KQSUPT_API char* SMUTF8Strstri(const char* haystack, const char* needle);

/** Gives the numeric ID of the language that the environment variable LANG names, read at every
 * call.
 * @return The ID; 1033 when LANG is not set or is not exactly the name of one that the agents have
 *     texts in. */
KQSUPT_API uint32_t SMGetLocalLanguageID(void);

/** @} */

/** @defgroup sized_string Sized strings
 * A record that holds a heap buffer of text and grows as text is appended.
 *
 * The caller owns the record, usually on its stack, makes it with the Alloc function of its kind
 * and releases it with the Free function. While `content` is not NULL the text is terminated.
 * Copies of a record share its buffer: do not make any while it is in use. A record belongs to one
 * thread at a time.
 *
 * The functions that append return the content. Nothing happens when `text` is NULL or the string
 * has no buffer. A failure, for lack of memory or of a text that does not convert, leaves the
 * string as it was and is not reported: compare the lengths where that matters.
 * @{ */

/** A sized string of UCS-2 text. */
typedef struct SMSSUCS2Str {
  ustring* content;  /**< from the heap; NULL when there is no buffer */
  uint32_t capacity; /**< of the buffer, in bytes */
  uint32_t length;   /**< of the text, in units without the terminator */
} SMSSUCS2Str;

/** A sized string of UTF-8 text. */
typedef struct SMSSUTF8Str {
  char* content;     /**< from the heap; NULL when there is no buffer */
  uint32_t capacity; /**< of the buffer, in bytes */
  uint32_t length;   /**< of the text, in bytes without the terminator */
} SMSSUTF8Str;

/** Makes an empty string of UCS-2 text with a buffer.
 * @param[out] string the record, which stays the caller's; its buffer is released with
 *     SMSSUCS2StrFree. Without a buffer its content is NULL and the other fields are not set.
 * @param[in] capacity the size of the buffer in bytes.
 * @return The content, which belongs to the record; NULL when `capacity` is 0 or memory is short.
 *     */
KQSUPT_API ustring* SMSSUCS2StrAlloc(SMSSUCS2Str* string, uint32_t capacity);

/** Makes an empty string of UTF-8 text with a buffer.
 * @param[out] string the record, which stays the caller's; its buffer is released with
 *     SMSSUTF8StrFree. Without a buffer its content is NULL and the other fields are not set.
 * @param[in] capacity the size of the buffer in bytes.
 * @return The content, which belongs to the record; NULL when `capacity` is 0 or memory is short.
 *     */
KQSUPT_API char* SMSSUTF8StrAlloc(SMSSUTF8Str* string, uint32_t capacity);

/** Frees the buffer of a string of UCS-2 text and sets content NULL, capacity and length 0. May be
 * called again.
 * @param[in,out] string the record, which stays the caller's; its buffer is freed. */
KQSUPT_API void SMSSUCS2StrFree(SMSSUCS2Str* string);

/** Frees the buffer of a string of UTF-8 text and sets content NULL, capacity and length 0. May be
 * called again.
 * @param[in,out] string the record, which stays the caller's; its buffer is freed. */
KQSUPT_API void SMSSUTF8StrFree(SMSSUTF8Str* string);

/** Appends the whole of a UCS-2 text to a string of UCS-2 text.
 * @param[in,out] string the record, which stays the caller's.
 * @param[in] text the text, borrowed for the call; with NULL nothing happens.
 * @return The content, which belongs to the record; NULL when it has no buffer. */
KQSUPT_API ustring* SMSSUCS2StrCatUCS2Str(SMSSUCS2Str* string, const ustring* text);

/** Appends exactly `n` units of a UCS-2 text to a string of UCS-2 text, its terminator not being an
 * end.
 * @param[in,out] string the record, which stays the caller's.
 * @param[in] text the text, borrowed for the call; with NULL nothing happens.
 * @param[in] n how many units; 0 stands for the whole text.
 * @return The content, which belongs to the record; NULL when it has no buffer. */
KQSUPT_API ustring* SMSSUCS2StrNCatUCS2Str(SMSSUCS2Str* string, const ustring* text, uint32_t n);

/** Appends the whole of a UTF-8 text to a string of UTF-8 text.
 * @param[in,out] string the record, which stays the caller's.
 * @param[in] text the text, borrowed for the call; with NULL nothing happens.
 * @return The content, which belongs to the record; NULL when it has no buffer. */
KQSUPT_API char* SMSSUTF8StrCatUTF8Str(SMSSUTF8Str* string, const char* text);

/** Appends exactly `n` bytes of a UTF-8 text to a string of UTF-8 text, its terminator not being an
 * end.
 * @param[in,out] string the record, which stays the caller's.
 * @param[in] text the text, borrowed for the call; with NULL nothing happens.
 * @param[in] n how many bytes; 0 stands for the whole text.
 * @return The content, which belongs to the record; NULL when it has no buffer. */
KQSUPT_API char* SMSSUTF8StrNCatUTF8Str(SMSSUTF8Str* string, const char* text, uint32_t n);

/** Converts the whole of a UTF-8 text and appends as many units of the result as the text has
 * bytes.
 *
 * For plain ASCII that is the text; other text is followed by as many units of 0 as it has fewer
 * units than bytes, and the length counts them.
 * @param[in,out] string the record, which stays the caller's.
 * @param[in] text the text, borrowed for the call; with NULL nothing happens.
 * @return The content, which belongs to the record; NULL when it has no buffer. */
KQSUPT_API ustring* SMSSUCS2StrCatUTF8Str(SMSSUCS2Str* string, const char* text);

/** Converts the whole of a UTF-8 text and appends `n` units of the result.
 *
 * For plain ASCII and all of its bytes that is the text; other text is followed by as many units of
 * 0 as it has fewer units than bytes, and the length counts them. Nothing is appended when `n`
 * bytes are less than the text needs.
 * @param[in,out] string the record, which stays the caller's.
 * @param[in] text the text, borrowed for the call; with NULL nothing happens.
 * @param[in] n in bytes of the text; 0 stands for all of them.
 * @return The content, which belongs to the record; NULL when it has no buffer. */
KQSUPT_API ustring* SMSSUCS2StrNCatUTF8Str(SMSSUCS2Str* string, const char* text, uint32_t n);

/** Converts the whole of a UCS-2 text into as many bytes as it has units and appends them. So it
 * takes plain ASCII only, and nothing is appended of any other text.
 * @param[in,out] string the record, which stays the caller's.
 * @param[in] text the text, borrowed for the call; with NULL nothing happens.
 * @return The content, which belongs to the record; NULL when it has no buffer. */
KQSUPT_API char* SMSSUTF8StrCatUCS2Str(SMSSUTF8Str* string, const ustring* text);

/** Converts the whole of a UCS-2 text into `n` bytes and appends them. A shorter result is followed
 * by zeros, which the length counts; nothing is appended when the text takes more than `n` bytes.
 * With `n` 0 that is so of all but plain ASCII.
 * @param[in,out] string the record, which stays the caller's.
 * @param[in] text the text, borrowed for the call; with NULL nothing happens.
 * @param[in] n how many bytes; 0 stands for as many as the text has units.
 * @return The content, which belongs to the record; NULL when it has no buffer. */
KQSUPT_API char* SMSSUTF8StrNCatUCS2Str(SMSSUTF8Str* string, const ustring* text, uint32_t n);

/** @} */

/** @defgroup format Formatted output
 * Text from a format and arguments.
 *
 * A format is UTF-8 text with conversion specifications. A specification is
 *
 *     %  flags  width  .precision  size  conversion
 *
 * and all but the first and the last may be left out. It differs from the C library's in what long
 * means, in "S", in infinities and in what does not convert: a compiler cannot check such calls.
 *
 * Flags, any of them in any order:
 *
 *     -      left-adjust in the width
 *     +      a sign also for what is not negative
 *     space  a space in the place of that sign; "+" overrules it
 *     #      alternate form: "o" begins with 0; "x" and "X" of other values than 0 begin with 0x or
 *            0X; "e", "E", "f", "g" and "G" always have a point, "g" and "G" keep trailing zeros
 *     0      zeros instead of spaces before the text and behind its sign; ignored with "-", and for
 *            integers with a precision. It fills up texts and infinities as well.
 *
 * Width: the fewest characters to produce; digits, or "*" for an int argument, of which a negative
 * one means "-" and its magnitude.
 *
 * Precision: "." with digits, none of which means 0, or "*" for an int argument, of which a
 * negative one means no precision. At least this many digits of an integer, 0 having none with
 * precision 0; for the others see below.
 *
 * Size: "h" for a short integer, "l" for a long one. A long has 32 bits on every host and there is
 * no larger integer: pass an int for it. Repeated sizes count as the last one. "L" has no effect.
 *
 * Conversion, with its argument:
 *
 *     d i   int                signed decimal
 *     u     unsigned           decimal
 *     o x X unsigned           octal, hexadecimal in lower or upper case
 *     D U O int, unsigned      as "ld", "lu" and "lo"
 *     p     void*              as "#x" of the address; 0 for NULL
 *     c     int                its low byte
 *     s     const char*        bytes up to the terminator, at most "precision" of them, of which no
 *                              more are read; "(null)" for NULL
 *     S     const ustring*     UCS-2 text as UTF-8, by the rules of SMUCS2StrToUTF8Str, then as
 *                              "s"; "(null)" for NULL. When it cannot be converted, or memory is
 *                              short, the output ends there.
 *     e E   double             d.ddde+dd, with "precision" (6) digits behind the point
 *     f     double             ddd.ddd, the same
 *     g G   double             "precision" (6) significant digits, as "e" when the exponent is
 *                              below -4 or not below the precision, else as "f"; no trailing zeros
 *     n     int*, short* for h stores the number of characters produced so far, counting what did
 *                              not fit, and produces nothing
 *     other                    the character itself in its width, without an argument: "%%" is "%",
 *                              and so "%zu" is "zu"
 *
 * A format that ends in a specification ends the output. Digits of doubles are those of the exact
 * value, rounded to the nearest and from halfway to even. Infinities and what is not a number
 * produce Inf, with a sign in the case of infinities only.
 *
 * A width or precision may have any size; a number of characters beyond INT32_MAX counts as that.
 * Calls from several threads wait for each other. Do not call these functions from a signal
 * handler; a child of fork() may call them.
 * @{ */

/** Writes what a format makes of the arguments to a buffer: as many characters as fit, wherever
 * that cuts a UTF-8 sequence, and always a terminator.
 * @param[out] dst the caller's; receives at most `size` - 1 characters and a terminator, also when
 *     `size` is 0. May be NULL: nothing is written.
 * @param[in] size the size of `dst` in bytes.
 * @param[in] format the format, borrowed for the call; not NULL.
 * @param[in] ... what the specifications ask for. What pointers point to is borrowed for the call,
 *     but for "n", where it receives a number and stays the caller's.
 * @return The number of characters written, or with `dst` NULL of those that would have been,
 *     without the terminator: never more than `size` - 1, even if the whole output has more. */
KQSUPT_API int32_t SMsnprintf(char* dst, uint32_t size, const char* format, ...);

/** Writes what a format makes of a list of arguments, as SMsnprintf does.
 * @param[out] dst the caller's; receives at most `size` - 1 characters and a terminator, also when
 *     `size` is 0. May be NULL: nothing is written.
 * @param[in] size the size of `dst` in bytes.
 * @param[in] format the format, borrowed for the call; not NULL.
 * @param[in] args what the specifications ask for, which stays the caller's: all that it may do
 *     with it afterwards is va_end.
 * @return The number of characters written, or with `dst` NULL of those that would have been,
 *     without the terminator: never more than `size` - 1, even if the whole output has more. */
KQSUPT_API int32_t SMvsnprintf(char* dst, uint32_t size, const char* format, va_list args);

/** @} */

/** @defgroup typed_value Typed values
 * Values of a type from text, and as text.
 *
 * A type argument has a value type in its low byte and a format in the next one; other bits are
 * ignored.
 * @{ */

/** The value types and the formats. */
enum {
  SMXLT_TYPE_BOOLEAN = 0,      /**< uint16_t, 1 or 0 */
  SMXLT_TYPE_S8 = 1,           /**< int8_t */
  SMXLT_TYPE_S16 = 2,          /**< int16_t */
  SMXLT_TYPE_S32 = 3,          /**< int32_t */
  SMXLT_TYPE_S64 = 4,          /**< int64_t */
  SMXLT_TYPE_U8 = 5,           /**< uint8_t */
  SMXLT_TYPE_U16 = 6,          /**< uint16_t */
  SMXLT_TYPE_U32 = 7,          /**< uint32_t */
  SMXLT_TYPE_U64 = 8,          /**< uint64_t */
  SMXLT_TYPE_DOUBLE = 9,       /**< double */
  SMXLT_TYPE_LANGUAGE_ID = 10, /**< uint32_t, as from SMGetLocalLanguageID */
  SMXLT_TYPE_TIME = 11,        /**< int32_t, seconds since the epoch; to text only */
  SMXLT_TYPE_BINARY = 12,      /**< bytes */
  SMXLT_TYPE_UTF8 = 13,        /**< UTF-8 text with its terminator */
  SMXLT_TYPE_UCS2 = 14,        /**< UCS-2 text with its terminator */
  SMXLT_TYPE_IPV4 = 15,        /**< uint32_t in network byte order */
  SMXLT_TYPE_HEX_BYTES = 16,   /**< bytes, as hexadecimal pairs */

  SMXLT_FMT_DEFAULT = 0x0000, /**< decimal; hexadecimal pairs for bytes */
  SMXLT_FMT_BASE2 = 0x0100,   /**< binary digits, to text only; a hex dump for bytes */
  SMXLT_FMT_OCTAL = 0x0200,   /**< octal digits */
  SMXLT_FMT_DECIMAL = 0x0300, /**< decimal digits */
  SMXLT_FMT_HEX = 0x0400      /**< hexadecimal; for bytes a list as in "0x0A,0xFF" */
};

/** Reads a text as a value of a type.
 *
 * Integers: decimal with an optional sign, octal, or hexadecimal with an optional "0x" and at most
 * 8 digits, 16 for U64. S64 is read in decimal only, U64 in decimal and hexadecimal. Double: any
 * text, 0 for what is no number. Boolean: "true" or "false" in any case. Language ID: a locale name
 * such as "de". Bytes: pairs of hexadecimal digits up to the first that is none; BINARY with
 * SMXLT_FMT_HEX: a list. UCS-2 text: what SMUTF8StrToUCS2Str makes of it. Address: as
 * SMIPAddrASCIIToNetwork reads it.
 * @param[in] text the text, borrowed for the call.
 * @param[out] value the caller's; receives the value on success only, but for UCS-2 text: of that
 *     the units that come before what fails or does not fit are written. May be NULL when `*size`
 *     is 0.
 * @param[in,out] size the caller's; the size of `value` in bytes, and receives the size of the
 *     value, also when the status is an error: the size of the type; for bytes their number; for
 *     text its size with the terminator; 0 for a type that cannot be read. For UCS-2 text it is
 *     what SMUTF8StrToUCS2Str makes of it.
 * @param[in] type the value type and the format.
 * @retval SM_STATUS_SUCCESS the value was read.
 * @retval SM_STATUS_INVALID_PARAMETER `text` or `size` NULL; `value` NULL with a `*size` other than
 *     0; text that is not a value of the type in this format, or a format that the type cannot be
 *     read in.
 * @retval SM_STATUS_UNSUCCESSFUL a type that cannot be read, or bytes in another format.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*size` is less than the value needs.
 * @retval SM_STATUS_VALUE_TOO_LARGE above the maximum of an 8- or 16-bit type; the wider ones
 *     saturate.
 * @retval SM_STATUS_VALUE_TOO_SMALL below the minimum of a signed 8- or 16-bit type; the wider
 *     signed ones saturate. A negative number for an unsigned type of up to 32 bits is first taken
 *     modulo 2^32, and for one of 64 bits it is 0.
 * @retval 1 a signed 64-bit integer in octal or hexadecimal, or an unsigned one in octal.
 * @retval SM_STATUS_OPERATION_FAILED a text that does not become UCS-2.
 * @retval SM_STATUS_NO_MEMORY memory is short while an address is read.
 * @retval 17 an address, and the library has not started.
 * @retval 0xFFFFFFFF no such language, a malformed list of bytes, no address. */
KQSUPT_API SMStatus SMXLTUTF8ToTypeValue(const char* text, void* value, uint32_t* size,
                                         uint32_t type);

/** Writes a value of a type as text.
 *
 * Each type needs a smallest room whatever its value: BOOLEAN 5 or 6, S8 to S32 17, U8 to U32 16,
 * those in binary digits 33, S64 33, U64 and DOUBLE 32, LANGUAGE_ID 16, TIME 64. A double whose
 * text is longer than the room is cut. BINARY with SMXLT_FMT_BASE2 is a hex dump: lines of 81
 * characters for 16 bytes each, ending in CR and LF. UTF-8 text is copied as it is. HEX_BYTES
 * writes the first 63 bytes; when the room for them is too small, nothing is written, the status is
 * success and `*size` receives the size of the text that `text` holds.
 * @param[in] value the value, borrowed for the call.
 * @param[in] valueSize the size of the value in bytes; it counts for bytes and UTF-8 text.
 * @param[out] text the caller's; receives the text with its terminator. NULL to ask for the size,
 *     which gives SM_STATUS_BUFFER_TOO_SMALL, but for UCS-2 text, where it gives the size and
 *     success.
 * @param[in,out] size the caller's; the size of `text` in bytes, and receives the size of the text
 *     with its terminator on success; with SM_STATUS_BUFFER_TOO_SMALL the size that is needed, but
 *     for UCS-2 text, where it is not changed.
 * @param[in] type the value type and the format.
 * @retval SM_STATUS_SUCCESS the text was written.
 * @retval SM_STATUS_INVALID_PARAMETER `value` or `size` NULL.
 * @retval SM_STATUS_UNSUCCESSFUL no such type, or bytes in another format.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the room is too small, or `text` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED a UCS-2 text that does not become UTF-8, as SMUCS2StrToUTF8Str
 *     has it.
 * @retval SM_STATUS_NO_MEMORY memory is short for HEX_BYTES.
 * @retval 17 an address, and the library has not started.
 * @retval 0xFFFFFFFF memory is short for BINARY. */
KQSUPT_API SMStatus SMXLTTypeValueToUTF8(const void* value, uint32_t valueSize, char* text,
                                         uint32_t* size, uint32_t type);

/** @} */

/** @defgroup parameters Parameters
 * Texts of the form "name=value".
 *
 * The name is what stands before the first "=" and is not empty; the value may be. A list of
 * parameters is a count and that many pointers, none of them NULL.
 * @{ */

/** Cuts the name of a parameter off its value, by overwriting the "=" with 0.
 * @param[in,out] param the caller's; the parameter. May be NULL.
 * @return The name, `param` itself, which stays the caller's; NULL, and nothing changed, when it is
 *     no parameter. */
KQSUPT_API char* SMNVPGetUTF8ParamName(char* param);

/** Finds the value inside a parameter.
 * @param[in] param the parameter, borrowed for the call; may be NULL.
 * @return The value, which points into `param`; NULL when it is no parameter. */
KQSUPT_API char* SMNVPGetUTF8ParamValue(char* param);

/** Tells whether a text is a parameter.
 * @param[in] param the text, borrowed for the call; may be NULL.
 * @return 1 when it is a parameter, else 0. */
KQSUPT_API uint32_t SMIsValidParam(const char* param);

/** Finds the first parameter with a name. Texts that are no parameters are passed over.
 * @param[in] count how many pointers there are at `params`.
 * @param[in] params the list of parameters, borrowed for the call; may be NULL.
 * @param[in] name the name to find, borrowed for the call; may be NULL.
 * @param[in] ignoreCase 1 to take the name in any case of letters.
 * @return The index of the parameter; -1 when there is none. */
KQSUPT_API int32_t SMNVPGetParamIndexByUTF8Name(int32_t count, char* const* params,
                                                const char* name, uint32_t ignoreCase);

/** Finds the value inside the first parameter with a name.
 * @param[in] count how many pointers there are at `params`.
 * @param[in] params the list of parameters, borrowed for the call; may be NULL.
 * @param[in] name the name to find, borrowed for the call; may be NULL.
 * @param[in] ignoreCase 1 to take the name in any case of letters.
 * @return The value, which points into the parameter; NULL when there is none. */
KQSUPT_API char* SMNVPGetUTF8ParamValueByUTF8Name(int32_t count, char* const* params,
                                                  const char* name, uint32_t ignoreCase);

/** Reads the value of the first parameter with a name as SMXLTUTF8ToTypeValue does.
 * @param[in] count how many pointers there are at `params`.
 * @param[in] params the list of parameters, borrowed for the call; not NULL.
 * @param[in] name the name to find, borrowed for the call; with NULL there is no such parameter.
 * @param[in] ignoreCase 1 to take the name in any case of letters.
 * @param[out] value the caller's; receives the value. Not NULL.
 * @param[in,out] size the caller's; the size of `value` in bytes, and receives the size of the
 *     value, as SMXLTUTF8ToTypeValue has it.
 * @param[in] type the value type and the format.
 * @retval SM_STATUS_SUCCESS the value was read.
 * @retval SM_STATUS_INVALID_PARAMETER `params` or `value` NULL; `size` NULL; text that is not a
 *     value of the type in this format, or a format that the type cannot be read in.
 * @retval SM_STATUS_DATA_NOT_FOUND no such parameter.
 * @retval SM_STATUS_UNSUCCESSFUL a type that cannot be read, or bytes in another format.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*size` is less than the value needs.
 * @retval SM_STATUS_VALUE_TOO_LARGE above the maximum of an 8- or 16-bit type.
 * @retval SM_STATUS_VALUE_TOO_SMALL below the minimum of a signed 8- or 16-bit type.
 * @retval 1 a signed 64-bit integer in octal or hexadecimal, or an unsigned one in octal.
 * @retval SM_STATUS_OPERATION_FAILED a text that does not become UCS-2.
 * @retval SM_STATUS_NO_MEMORY memory is short while an address is read.
 * @retval 17 an address, and the library has not started.
 * @retval 0xFFFFFFFF no such language, a malformed list of bytes, no address. */
KQSUPT_API SMStatus SMNVPUTF8ToTypeValue(int32_t count, char* const* params, const char* name,
                                         uint32_t ignoreCase, void* value, uint32_t* size,
                                         uint32_t type);

/** A name for a value. The first entry of a table stands for "no match" and only its value counts.
 */
typedef struct SMEnums32 {
  const char* name;  /**< the name, which stays the caller's */
  uint32_t value;    /**< its value */
  uint32_t reserved; /**< not read */
} SMEnums32;

/** Gives the value that a table has for the text of the first parameter with a name, in any case of
 * letters.
 * @param[in] count how many pointers there are at `params`.
 * @param[in] params the list of parameters, borrowed for the call.
 * @param[in] name the name to find, borrowed for the call.
 * @param[in] ignoreCase 1 to take the name in any case of letters.
 * @param[in] table the names and their values, borrowed for the call.
 * @param[in] tableCount how many entries the table has, at least 2.
 * @param[in] multiple 1 when the text is a list of names separated by "|", or by "," when it has no
 *     "|"; the values of those that match are combined, 0 when none does.
 * @return The value. That of entry 1 when there is no such parameter, that of entry 0 when no name
 *     matches. 0x80000000: `params`, `name` or `table` NULL, a table of less than 2 entries, or
 *     memory is short. */
KQSUPT_API uint32_t SMNVPGetEnums32Value(int32_t count, char* const* params, const char* name,
                                         uint32_t ignoreCase, const SMEnums32* table,
                                         uint32_t tableCount, uint32_t multiple);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
