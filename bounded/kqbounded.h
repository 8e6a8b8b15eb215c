/* The bounds-checked "_s" functions that the C library of this platform does not have.
 *
 * Each behaves like the function it is named after, with the size of its destination beside it.
 * Unless stated otherwise the result is 0 on success, EINVAL when a required pointer is null, a
 * size is 0 or an argument is out of range, and ERANGE when the result with its terminator does
 * not fit. A failure that has a text destination to write to leaves an empty text there: a caller
 * that overlooks the result reads nothing rather than half a text. Sizes are in bytes and count
 * the terminator. */
#ifndef KQBOUNDED_H
#define KQBOUNDED_H

#include <stddef.h>
#include <stdio.h>
#include <time.h>

#define KQBOUNDED_API __attribute__((visibility("default")))

/* The library has 64-bit times: a caller on a 32-bit host is built with _TIME_BITS=64. */
typedef char kqbounded_needs_64_bit_times[sizeof(time_t) == 8 ? 1 : -1];

#ifdef __cplusplus
extern "C" {
#endif

/* Copies `source` with its terminator to `destination`. */
KQBOUNDED_API int strcpy_s(char* destination, size_t size, const char* source);

/* Copies at most `count` bytes of `source` and always terminates the copy. */
KQBOUNDED_API int strncpy_s(char* destination, size_t size, const char* source, size_t count);

/* Appends `source` to the text in `destination`, which must be terminated within `size`. */
KQBOUNDED_API int strcat_s(char* destination, size_t size, const char* source);

/* Formats as snprintf does. The result is 0 on success, not a length. */
KQBOUNDED_API int sprintf_s(char* destination, size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/* The next token of `text`, or of the text remembered in `*rest` when `text` is null; null when
 * there is none left or a required pointer is null. Terminates the token in place. */
KQBOUNDED_API char* strtok_s(char* text, const char* delimiters, char** rest);

/* Opens `name` as fopen does; `*file` is null when the result is not 0. The result is the errno of
 * a failed open. */
KQBOUNDED_API int fopen_s(FILE** file, const char* name, const char* mode);

/* Copies the value of the environment variable `name` to `value` and its size with the terminator
 * to `*needed`. A variable that is not set gives 0, an empty text and `*needed` 0. With `value`
 * null and `size` 0 only `*needed` is set. */
KQBOUNDED_API int getenv_s(size_t* needed, char* value, size_t size, const char* name);

/* The local calendar time of `*time`. The result is the errno of a failed conversion. */
KQBOUNDED_API int localtime_s(struct tm* calendar, const time_t* time);

/* The text that ctime makes of `*time`, 26 bytes with the terminator. EINVAL too for years that take more
 * than four digits. */
KQBOUNDED_API int ctime_s(char* destination, size_t size, const time_t* time);

/* The digits of `value` in `radix`, 2 to 36, in lower case. Only radix 10 knows a sign: the others
 * write the value's bits as an unsigned number. */
KQBOUNDED_API int _ltoa_s(long value, char* destination, size_t size, int radix);

#ifdef __cplusplus
}
#endif

#endif
