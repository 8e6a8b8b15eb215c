/* Configuration files and the text services that go with them. */
#ifndef KQSUPT_CONFIG_H
#define KQSUPT_CONFIG_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Converts a list of items from one separator to another and returns it, newly allocated; the
 * caller releases it with SMFreeMem. `*count` and `*size`, each optional, receive the number of
 * items and the size of the list in bytes with its terminator.
 *
 * With a `separator`, runs of it count as one, blanks (TAB, LF, CR, space) around an item are cut
 * off, items of nothing else are dropped, and each item that is left is followed by `newSeparator`.
 * With `newSeparator` 0 that makes a list of terminated items that ends with an empty one.
 *
 * With `separator` 0, `text` is such a list of terminated items; every terminator between two items
 * becomes `newSeparator`. `*count` then receives one less than the number of items, and an empty
 * list gives NULL.
 *
 * NULL, with `*count` and `*size` 0, when `text` is NULL or memory is short. */
KQSUPT_API char* SMUTF8ConvertXSVToYSV(const char* text, char separator, char newSeparator,
                                       uint32_t* count, uint32_t* size);

#ifdef __cplusplus
}
#endif

#endif
