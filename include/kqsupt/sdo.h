/* Self-describing data objects: keyed records that agents build, change and hand to each other.
 *
 * A record is a set of entries, each with an ID, a type byte and a value. It has two forms. In
 * memory, as an SMSDOConfig, it is built and changed entry by entry, and always knows the size of
 * its binary form. The binary form is one contiguous block of at most 65,535 bytes in host byte
 * order, which is stored or sent to another process of the same machine and read there in place.
 *
 * The value of an entry may itself be a record or an array of records, so a record is a tree. A
 * record is held by one other at the most, and once. Rebuilding and freeing nested records takes up
 * to some 350 bytes of stack for each level.
 *
 * Nothing here locks. Use one record from one thread at a time; a block that nobody edits may be
 * read by several threads at once. Readers of blocks trust the offsets in them: hand them only
 * blocks that this library produced.
 *
 * Sizes are in bytes. A `size` that is a pointer holds the size of the caller's buffer on entry.
 * Every failed call leaves the record or block as it was. */
#ifndef KQSUPT_SDO_H
#define KQSUPT_SDO_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The type byte of an entry: a base type in bits 0 to 3, the array flag in bit 4, and bits 5 to 7
 * that are stored and reported unchanged for the caller's own use. A type byte of 0 is refused. The
 * base types 0 to 11, 14 and 15 mean what the callers agree on: their bytes are stored as given. */
enum {
  /* The value is a record in binary form, a single one or an array. */
  SDO_TYPE_BINARY = 12,
  /* The value is a record in memory: a child that belongs to the record that holds it. */
  SDO_TYPE_CONFIG = 13,
  /* The value is an array. With SDO_TYPE_CONFIG: packed pointers, sizeof(void*) per element. */
  SDO_TYPE_FLAG_ARRAY = 0x10
};

/* A record in memory. */
typedef struct SMSDOConfig SMSDOConfig;

/* ---- Records in memory -------------------------------------------------------------------------
 *
 * An ID is valid when it is not 0, 0xFFFE or 0xFFFF. */

/* A new empty record: no entries, binary size 8. The caller releases it with SMSDOConfigFree. NULL
 * when memory is short. */
KQSUPT_API SMSDOConfig* SMSDOConfigAlloc(void);

/* Frees the record, its entries and, recursively, its children. NULL is ignored. */
KQSUPT_API void SMSDOConfigFree(SMSDOConfig* config);

/* A deep copy, which the caller releases with SMSDOConfigFree. NULL when `config` is NULL, memory
 * is short or the record cannot be serialized. */
KQSUPT_API SMSDOConfig* SMSDOConfigClone(const SMSDOConfig* config);

/* 1 when the two records serialize to the same bytes, or when both pointers are NULL; else 0. The
 * order in which entries were added does not matter. Also 0 when memory is short or a record cannot
 * be serialized. */
KQSUPT_API uint32_t SMSDOConfigCompareByValue(const SMSDOConfig* a, const SMSDOConfig* b);

/* The number of entries; 0xFFFFFFFF when `config` is NULL. */
KQSUPT_API uint32_t SMSDOConfigGetCount(const SMSDOConfig* config);

/* Adds an entry with `size` bytes of value copied from `data`. With `replace` 1 an entry with that
 * ID is replaced; with any other value its presence is an error.
 *
 * Base type SDO_TYPE_CONFIG takes children over: without the array flag `data` is the child itself
 * (`size` may be any value but 0), with it `data` is an array of SMSDOConfig* and `size` its bytes,
 * a whole number of pointers. On success they belong to `config`; on failure they stay the
 * caller's. Base type SDO_TYPE_BINARY converts the block at `data`, which lies within
 * `size` bytes, and adds the result as a child or an array of children of its own.
 *
 * A replaced entry's children are freed when the new value is made of children too, but for those
 * that it holds again. When the new value is of another type they are not freed: look them up
 * first.
 *
 * SM_STATUS_INVALID_PARAMETER: `config` or `data` NULL, ID not valid, `type` or `size` 0, an array
 * of children that is not a whole number of pointers, a block without a record's signature or
 * larger than
 * `size`, or `config` itself as a child. SM_STATUS_OUT_OF_SPACE: the record has 65,535 entries or
 * would grow to 65,536 bytes or more with this entry, not counting what a replaced one would give
 * back, or the array has more than 65,535 children, NULLs included.
 * SM_STATUS_NO_MEMORY. SM_STATUS_ALREADY_EXISTS: an entry has the ID and `replace` is not 1.
 * 0xFFFFFFFF: a block could not be converted; for an array of blocks also the status of
 * SMSDOBinaryArrayToConfigArray. When an add fails after a single block was converted, the
 * converted record is lost to its caller: test for the ID first where that matters. */
KQSUPT_API SMStatus SMSDOConfigAddData(SMSDOConfig* config, uint16_t id, uint8_t type,
                                       const void* data, uint32_t size, uint32_t replace);

/* Copies the value of the entry with this ID to `buffer` when that is not NULL and `*size` is
 * enough. `*size` receives the size of the value and `*typeOut`, when given, the type byte, also
 * with SM_STATUS_BUFFER_TOO_SMALL. The value of a nested entry is the pointer, or the pointers, to
 * its children: they stay the record's.
 * SM_STATUS_INVALID_PARAMETER: `config` or `size` NULL, ID not valid. SM_STATUS_DATA_NOT_FOUND: no
 * entry has the ID. SM_STATUS_BUFFER_TOO_SMALL: `buffer` NULL or `*size` too small. */
KQSUPT_API SMStatus SMSDOConfigGetDataByID(const SMSDOConfig* config, uint16_t id, uint8_t* typeOut,
                                           void* buffer, uint32_t* size);

/* As SMSDOConfigGetDataByID for the entry at `index` in ascending order of IDs; `*idOut` receives
 * its ID, also with SM_STATUS_BUFFER_TOO_SMALL. Takes time linear in `index`.
 * SM_STATUS_INVALID_PARAMETER: `config`, `idOut` or `size` NULL. SM_STATUS_INDEX_OUT_OF_RANGE:
 * `index` is not below the count. SM_STATUS_BUFFER_TOO_SMALL: `buffer` NULL or `*size` too
 * small. */
KQSUPT_API SMStatus SMSDOConfigGetDataByIndex(const SMSDOConfig* config, uint32_t index,
                                              uint16_t* idOut, uint8_t* typeOut, void* buffer,
                                              uint32_t* size);

/* Removes entries and frees their children: all of them when `removeAll` is not 0; else the entry
 * with this ID; or, when the ID is not valid (0, say), the entry at `index` in ascending order of
 * IDs.
 * SM_STATUS_INVALID_PARAMETER: `config` NULL. SM_STATUS_DATA_NOT_FOUND: no entry has the ID.
 * SM_STATUS_INDEX_OUT_OF_RANGE: `index` is not below the count. */
KQSUPT_API SMStatus SMSDOConfigRemoveData(SMSDOConfig* config, uint16_t id, uint32_t index,
                                          uint32_t removeAll);

/* The size of the binary form, kept current by adding and removing; 0 when `config` is NULL. It
 * does not follow a child that is changed after it was added. */
KQSUPT_API uint32_t SMSDOConfigGetBinarySize(const SMSDOConfig* config);

/* Recomputes the binary size, stores and returns it; 0 when `config` is NULL. The sum counts 8
 * bytes and 8 more with the value for each entry, also for values of up to 4 bytes and without the
 * header of an array of children. A record that holds such entries then no longer serializes: use
 * it where only larger values and single children are held and a child has changed. */
KQSUPT_API uint32_t SMSDOConfigReCalcBinarySize(SMSDOConfig* config);

/* ---- Between the two forms ------------------------------------------------------------------ */

/* Serializes the record to `buffer`. `*size` receives the number of bytes written.
 * SM_STATUS_INVALID_PARAMETER: an argument is NULL. SM_STATUS_BUFFER_TOO_SMALL: `*size` is below
 * the binary size; it is not changed. 0xFFFFFFFF: what was written is not what the binary size
 * says, because a child has changed since it was added or the size was recomputed; `*size` then
 * receives what was written. Also, with `*size` 0, when the record is larger than a block can be.
 * On any of these failures the content of `buffer` is unspecified up to the `*size` given. */
KQSUPT_API SMStatus SMSDOConfigToBinary(const SMSDOConfig* config, void* buffer, uint32_t* size);

/* Rebuilds a record from a block. The caller releases it with SMSDOConfigFree. NULL when `binary`
 * is NULL or not a single record, holds an entry that no record can hold, or memory is short. */
KQSUPT_API SMSDOConfig* SMSDOBinaryToConfig(const void* binary);

/* Serializes `count` records to an array block in `buffer`; NULL pointers among them are skipped.
 * Records that do not fit, or that would make the array 65,536 bytes or larger, are left out
 * without an error: `*size` receives the size that all of them need, so compare. With `buffer` NULL
 * it receives 8 bytes less than the array needs. SM_STATUS_INVALID_PARAMETER: `configs` or `size`
 * NULL. SM_STATUS_BUFFER_TOO_SMALL: `*size` is below the 8 bytes of an empty array.
 * SM_STATUS_OUT_OF_SPACE: the sizes add up to 4 GiB or more. 0xFFFFFFFF: a record cannot be
 * serialized. On failure `*size` is not changed. */
KQSUPT_API SMStatus SMSDOConfigArrayToBinaryArray(SMSDOConfig* const* configs, uint32_t count,
                                                  void* buffer, uint32_t* size);

/* Rebuilds the records of an array block into `configsOut`, which has room for `*count` pointers,
 * all NULL on entry. `*count` receives the number of elements; each record is the caller's to free.
 * SM_STATUS_INVALID_PARAMETER: `array` or `count` NULL, or there is room and `configsOut` is NULL.
 * SM_STATUS_OPERATION_FAILED: not an array block, or an element is not a record.
 * SM_STATUS_BUFFER_TOO_SMALL: `*count` is below the number of elements, which it receives; with
 * `*count` 0 that is the way to ask for it. 0xFFFFFFFF: an element could not be rebuilt. When an
 * element fails, every record among the first `*count` slots is freed and its slot NULL. */
KQSUPT_API SMStatus SMSDOBinaryArrayToConfigArray(const void* array, SMSDOConfig** configsOut,
                                                  uint32_t* count);

/* ---- Blocks --------------------------------------------------------------------------------- */

/* The number of entries of a record or of elements of an array; 0xFFFFFFFF when `binary` is NULL or
 * has neither signature. `*isArray`, when given, receives 1 for an array and else 0. */
KQSUPT_API uint32_t SMSDOBinaryGetCount(const void* binary, uint16_t* isArray);

/* The size of a block; 0 when `binary` is NULL or has neither signature. `*isArray` as in
 * SMSDOBinaryGetCount. */
KQSUPT_API uint32_t SMSDOBinaryGetSize(const void* binary, uint16_t* isArray);

/* Copies the value of the entry with this ID to `buffer` when that is not NULL and `*size` is
 * enough. Takes logarithmic time and allocates nothing. `*size` receives the size of the value,
 * also with SM_STATUS_BUFFER_TOO_SMALL. A value of up to 4 bytes is reported and copied as its
 * whole slot of 4, the unused bytes 0. `*typeOut`, when given, receives the type byte on success.
 * SM_STATUS_INVALID_PARAMETER: `binary` or `size` NULL, ID not valid. SM_STATUS_OPERATION_FAILED:
 * not a record. SM_STATUS_DATA_NOT_FOUND: no entry has the ID. SM_STATUS_BUFFER_TOO_SMALL: `buffer`
 * NULL or `*size` too small. */
KQSUPT_API SMStatus SMSDOBinaryGetDataByID(const void* binary, uint16_t id, uint8_t* typeOut,
                                           void* buffer, uint32_t* size);

/* Copies the value of the entry at `index`, with the size it was added with. On success `*idOut`
 * and
 * `*typeOut`, when given, receive ID and type. `*size` receives the size of the value, also with
 * SM_STATUS_BUFFER_TOO_SMALL.
 * SM_STATUS_INVALID_PARAMETER: `binary`, `idOut` or `size` NULL. SM_STATUS_INDEX_OUT_OF_RANGE:
 * `index` is not below the count. SM_STATUS_OPERATION_FAILED: not a record.
 * SM_STATUS_BUFFER_TOO_SMALL: `buffer` NULL or `*size` too small. */
KQSUPT_API SMStatus SMSDOBinaryGetDataByIndex(const void* binary, uint32_t index, uint16_t* idOut,
                                              uint8_t* typeOut, void* buffer, uint32_t* size);

/* Changes the value of an entry inside the block, which lies in a buffer of `*capacity` bytes. A
 * value of the same size, or one of up to 4 bytes for another such, is overwritten in its place, a
 * shorter one leaving the rest of its slot as it was; otherwise the block is rebuilt. On success
 * `*capacity` receives the size of the block.
 * SM_STATUS_INVALID_PARAMETER: `binary`, `capacity` or `data` NULL, `type` or `size` 0, ID not
 * valid, or not a record. SM_STATUS_BUFFER_TOO_SMALL: `*capacity` below 16; or below the size that
 * the block would have, which it receives; or the block cannot be rebuilt, for lack of memory, say.
 * SM_STATUS_DATA_NOT_FOUND: no entry has both the ID and the type. Otherwise the status of adding
 * the new value as SMSDOConfigAddData does. */
KQSUPT_API SMStatus SMSDOBinarySetData(void* binary, uint32_t* capacity, uint16_t id, uint8_t type,
                                       const void* data, uint32_t size);

/* Called once per block before its contents. `parentToken` is the token of the entry that holds the
 * block, 0 for the outermost; `isArray` is 1 or 0; `count` the number of entries or elements;
 * `index` the position in an array for an element of one, else 0xFFFFFFFF. `block` points into the
 * outermost block, with no alignment. A result other than 0 ends the walk. */
typedef SMStatus (*SMSDOBinaryWalkBegin)(void* context, uint32_t parentToken, uint32_t isArray,
                                         uint32_t count, uint32_t index, const void* block);

/* Called once per entry. It may store a token of its own for the entry in `*tokenOut`, 0 on entry.
 * `userBits` are bits 6 and 7 of the type (0 to 3), `userFlag` bit 5, `isArray` bit 4; `value`
 * points at the value inside the block, with no alignment. A result other than 0 ends the walk. */
typedef SMStatus (*SMSDOBinaryWalkEntry)(void* context, uint32_t* tokenOut, uint32_t id,
                                         uint32_t userBits, uint32_t userFlag, uint32_t isArray,
                                         uint32_t baseType, uint32_t size, const void* value);

/* Called after each entry and its nested walk, with the entry's token. Its result does not stop the
 * walk of the block. */
typedef SMStatus (*SMSDOBinaryWalkAfter)(void* context, uint32_t token);

/* Called once per block after its contents; its result is the block's. */
typedef SMStatus (*SMSDOBinaryWalkEnd)(void* context, uint32_t parentToken, uint32_t isArray);

/* Walks a block, a record or an array, in order; `recurse` 1 walks nested blocks and the entries of
 * an array's elements too. Any callback may be NULL. An empty block calls none. Allocates nothing.
 * Returns the first result that ended the walk; else the result of `end` for the outermost block;
 * else, without an `end`, the last result of `after`; else SM_STATUS_SUCCESS. A nested block's
 * result other than 0 ends the walk. SM_STATUS_INVALID_PARAMETER: `binary` NULL or not a block. */
KQSUPT_API SMStatus SMSDOBinaryWalk(const void* binary, void* context, SMSDOBinaryWalkBegin begin,
                                    SMSDOBinaryWalkEntry entry, SMSDOBinaryWalkAfter after,
                                    SMSDOBinaryWalkEnd end, uint16_t recurse);

/* ---- Arrays of blocks ----------------------------------------------------------------------- */

/* Makes an empty array of 8 bytes in `buffer`.
 * SM_STATUS_INVALID_PARAMETER: `buffer` NULL. SM_STATUS_BUFFER_TOO_SMALL: `size` below 8. */
KQSUPT_API SMStatus SMSDOBinaryArrayInitHeader(void* buffer, uint32_t size);

/* Appends `elementSize` bytes of `element`, a record's block, to the array, which lies in a buffer
 * of
 * `*capacity` bytes. The element is not checked: it must be a whole block of that size, or what
 * comes after it is not found.
 * SM_STATUS_INVALID_PARAMETER: an argument is NULL, or not an array. SM_STATUS_BUFFER_TOO_SMALL:
 * `*capacity` below 16; or below the size that the array would have, which it receives; or that
 * size is 65,536 or more. */
KQSUPT_API SMStatus SMSDOBinaryArrayAddData(void* array, uint32_t* capacity, const void* element,
                                            uint32_t elementSize);

/* Copies the element at `index` to `buffer` when that is not NULL and `*size` is enough. `*size`
 * receives the size of the element, also with SM_STATUS_BUFFER_TOO_SMALL. `arraySize` is not used.
 * SM_STATUS_INVALID_PARAMETER: `array` or `size` NULL. SM_STATUS_OPERATION_FAILED: not an array, or
 * the element is not a record. SM_STATUS_DATA_NOT_FOUND: `index` is not below the count.
 * SM_STATUS_BUFFER_TOO_SMALL: `buffer` NULL or `*size` too small. */
KQSUPT_API SMStatus SMSDOBinaryArrayGetByIndex(const void* array, uint32_t arraySize,
                                               uint32_t index, void* buffer, uint32_t* size);

#ifdef __cplusplus
}
#endif

#endif
