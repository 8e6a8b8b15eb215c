/* Text in UCS-2 and UTF-8. */
#ifndef KQSUPT_TEXT_H
#define KQSUPT_TEXT_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One unit of UCS-2 text in host byte order. A string of them ends with a unit of value 0. */
typedef uint16_t ustring;

/* ---- Sized strings -----------------------------------------------------------------------------
 *
 * A record that holds a heap buffer of text and grows as text is appended. The caller owns the
 * record, usually on its stack, makes it with the Alloc function of its kind and releases it with the
 * Free function. While `content` is not NULL the text is terminated. Copies of a record share its
 * buffer: do not make any while it is in use. A record belongs to one thread at a time. */

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

#ifdef __cplusplus
}
#endif

#endif
