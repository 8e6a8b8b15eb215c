/** @file
 * Self-describing data objects: keyed records that agents build, change and hand to each other.
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

/** @defgroup sdo_config Records in memory
 * Building, changing and reading records entry by entry.
 *
 * An ID is valid when it is not 0, 0xFFFE or 0xFFFF.
 * @{ */

/** The type byte of an entry: a base type in bits 0 to 3, the array flag in bit 4, and bits 5 to 7
 * that are stored and reported unchanged for the caller's own use. A type byte of 0 is refused. The
 * base types 0 to 11, 14 and 15 mean what the callers agree on: their bytes are stored as given. */
enum {
  /** The value is a record in binary form, a single one or an array. */
  SDO_TYPE_BINARY = 12,
  /** The value is a record in memory: a child that belongs to the record that holds it. */
  SDO_TYPE_CONFIG = 13,
  /** The value is an array. With SDO_TYPE_CONFIG: packed pointers, sizeof(void*) per element. */
  SDO_TYPE_FLAG_ARRAY = 0x10
};

/** A record in memory. */
typedef struct SMSDOConfig SMSDOConfig;

/** Makes a new empty record: no entries, binary size 8.
 * @return The record, which the caller releases with SMSDOConfigFree; NULL when memory is short. */
KQSUPT_API SMSDOConfig* SMSDOConfigAlloc(void);

/** Frees a record, its entries and, recursively, its children.
 * @param[in] config the record, which the call takes over and frees; NULL is ignored. */
KQSUPT_API void SMSDOConfigFree(SMSDOConfig* config);

/** Makes a deep copy of a record.
 * @param[in] config the record, borrowed for the call; may be NULL.
 * @return The copy, which the caller releases with SMSDOConfigFree; NULL when `config` is NULL,
 *     memory is short or the record cannot be serialized. */
KQSUPT_API SMSDOConfig* SMSDOConfigClone(const SMSDOConfig* config);

/** Tells whether two records serialize to the same bytes. The order in which entries were added
 * does not matter.
 * @param[in] a a record, borrowed for the call; may be NULL.
 * @param[in] b the other record, borrowed for the call; may be NULL.
 * @return 1 when the bytes are the same, or when both pointers are NULL; else 0. Also 0 when memory
 *     is short or a record cannot be serialized. */
KQSUPT_API uint32_t SMSDOConfigCompareByValue(const SMSDOConfig* a, const SMSDOConfig* b);

/** Counts the entries of a record.
 * @param[in] config the record, borrowed for the call; may be NULL.
 * @return The number of entries; 0xFFFFFFFF when `config` is NULL. */
KQSUPT_API uint32_t SMSDOConfigGetCount(const SMSDOConfig* config);

/** Adds an entry with a copy of a value, or with children that the record takes over.
 *
 * Base type SDO_TYPE_CONFIG takes children over: without the array flag `data` is the child itself,
 * with it `data` is an array of `SMSDOConfig*`. On success they belong to `config`; on failure they
 * stay the caller's. Base type SDO_TYPE_BINARY converts the block at `data`, which lies within
 * `size` bytes, and adds the result as a child or an array of children of its own.
 *
 * A replaced entry's children are freed when the new value is made of children too, but for those
 * that it holds again. When the new value is of another type they are not freed: look them up
 * first.
 *
 * When an add fails after a single block was converted, the converted record is lost to its caller:
 * test for the ID first where that matters.
 * @param[in,out] config the record, which stays the caller's.
 * @param[in] id the ID of the entry.
 * @param[in] type the type byte of the entry.
 * @param[in] data the value, `size` bytes that stay the caller's and are copied; for
 *     SDO_TYPE_CONFIG the child, or an array of pointers to children that stays the caller's, of
 *     which the record takes the children over on success.
 * @param[in] size the size of the value; for a single child any value but 0; for an array of
 *     children the bytes of the array, a whole number of pointers.
 * @param[in] replace 1 to replace an entry with that ID; with any other value its presence is an
 *     error.
 * @retval SM_STATUS_SUCCESS the entry was added or replaced.
 * @retval SM_STATUS_INVALID_PARAMETER `config` or `data` NULL, ID not valid, `type` or `size` 0, an
 *     array of children that is not a whole number of pointers, a block without a record's
 *     signature or larger than `size`, or `config` itself as a child.
 * @retval SM_STATUS_OUT_OF_SPACE the record has 65,535 entries or would grow to 65,536 bytes or
 *     more with this entry, not counting what a replaced one would give back, or the array has more
 *     than 65,535 children, NULLs included.
 * @retval SM_STATUS_NO_MEMORY memory is short.
 * @retval SM_STATUS_ALREADY_EXISTS an entry has the ID and `replace` is not 1.
 * @retval SM_STATUS_OPERATION_FAILED an element of an array of blocks is not a record, as
 *     SMSDOBinaryArrayToConfigArray has it.
 * @retval 0xFFFFFFFF a block, or an element of an array of blocks, could not be converted. */
KQSUPT_API SMStatus SMSDOConfigAddData(SMSDOConfig* config, uint16_t id, uint8_t type,
                                       const void* data, uint32_t size, uint32_t replace);

/** Copies the value of the entry with an ID.
 *
 * The value of a nested entry is the pointer, or the pointers, to its children: they stay the
 * record's.
 * @param[in] config the record, borrowed for the call.
 * @param[in] id the ID of the entry.
 * @param[out] typeOut the caller's; receives the type byte, also with SM_STATUS_BUFFER_TOO_SMALL.
 *     May be NULL.
 * @param[out] buffer the caller's; receives the value when `*size` is enough. NULL to ask for the
 *     size.
 * @param[in,out] size the caller's; the size of `buffer`, and receives the size of the value, also
 *     with SM_STATUS_BUFFER_TOO_SMALL.
 * @retval SM_STATUS_SUCCESS the value was copied.
 * @retval SM_STATUS_INVALID_PARAMETER `config` or `size` NULL, ID not valid.
 * @retval SM_STATUS_DATA_NOT_FOUND no entry has the ID.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `buffer` NULL or `*size` too small. */
KQSUPT_API SMStatus SMSDOConfigGetDataByID(const SMSDOConfig* config, uint16_t id, uint8_t* typeOut,
                                           void* buffer, uint32_t* size);

/** Copies the value of the entry at an index, as SMSDOConfigGetDataByID does. Takes time linear in
 * `index`.
 * @param[in] config the record, borrowed for the call.
 * @param[in] index the position in ascending order of IDs, from 0.
 * @param[out] idOut the caller's; receives the ID, also with SM_STATUS_BUFFER_TOO_SMALL.
 * @param[out] typeOut the caller's; receives the type byte, also with SM_STATUS_BUFFER_TOO_SMALL.
 *     May be NULL.
 * @param[out] buffer the caller's; receives the value when `*size` is enough. NULL to ask for the
 *     size. Pointers to children that it receives stay the record's.
 * @param[in,out] size the caller's; the size of `buffer`, and receives the size of the value, also
 *     with SM_STATUS_BUFFER_TOO_SMALL.
 * @retval SM_STATUS_SUCCESS the value was copied.
 * @retval SM_STATUS_INVALID_PARAMETER `config`, `idOut` or `size` NULL.
 * @retval SM_STATUS_INDEX_OUT_OF_RANGE `index` is not below the count.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `buffer` NULL or `*size` too small. */
KQSUPT_API SMStatus SMSDOConfigGetDataByIndex(const SMSDOConfig* config, uint32_t index,
                                              uint16_t* idOut, uint8_t* typeOut, void* buffer,
                                              uint32_t* size);

/** Removes entries and frees their children.
 * @param[in,out] config the record, which stays the caller's. Children of removed entries belong to
 *     it and are freed.
 * @param[in] id the ID of the entry to remove. When it is not valid (0, say), `index` counts.
 * @param[in] index the position in ascending order of IDs of the entry to remove.
 * @param[in] removeAll not 0 to remove all entries, whatever `id` and `index` are.
 * @retval SM_STATUS_SUCCESS the entry is gone, or all of them.
 * @retval SM_STATUS_INVALID_PARAMETER `config` NULL.
 * @retval SM_STATUS_DATA_NOT_FOUND no entry has the ID.
 * @retval SM_STATUS_INDEX_OUT_OF_RANGE `index` is not below the count. */
KQSUPT_API SMStatus SMSDOConfigRemoveData(SMSDOConfig* config, uint16_t id, uint32_t index,
                                          uint32_t removeAll);

/** Gives the size of the binary form, kept current by adding and removing. It does not follow a
 * child that is changed after it was added.
 * @param[in] config the record, borrowed for the call; may be NULL.
 * @return The size in bytes; 0 when `config` is NULL. */
KQSUPT_API uint32_t SMSDOConfigGetBinarySize(const SMSDOConfig* config);

/** Recomputes the binary size and stores it.
 *
 * The sum counts 8 bytes and 8 more with the value for each entry, also for values of up to 4 bytes
 * and without the header of an array of children. A record that holds such entries then no longer
 * serializes: use it where only larger values and single children are held and a child has changed.
 * @param[in,out] config the record, which stays the caller's; may be NULL.
 * @return The size in bytes; 0 when `config` is NULL. */
KQSUPT_API uint32_t SMSDOConfigReCalcBinarySize(SMSDOConfig* config);

/** @} */

/** @defgroup sdo_conversion Between the two forms
 * Serializing records to blocks and rebuilding them.
 * @{ */

/** Serializes a record to a block.
 * @param[in] config the record, borrowed for the call.
 * @param[out] buffer the caller's; receives the block. On any failure but
 *     SM_STATUS_INVALID_PARAMETER its content is unspecified up to the `*size` given.
 * @param[in,out] size the caller's; the size of `buffer`, and receives the number of bytes written.
 * @retval SM_STATUS_SUCCESS the block was written.
 * @retval SM_STATUS_INVALID_PARAMETER an argument is NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*size` is below the binary size; it is not changed.
 * @retval 0xFFFFFFFF what was written is not what the binary size says, because a child has changed
 *     since it was added or the size was recomputed; `*size` then receives what was written. Also,
 *     with `*size` 0, when the record is larger than a block can be. */
KQSUPT_API SMStatus SMSDOConfigToBinary(const SMSDOConfig* config, void* buffer, uint32_t* size);

/** Rebuilds a record from a block.
 * @param[in] binary the block, borrowed for the call; may be NULL.
 * @return The record, which the caller releases with SMSDOConfigFree; NULL when `binary` is NULL or
 *     not a single record, holds an entry that no record can hold, or memory is short. */
KQSUPT_API SMSDOConfig* SMSDOBinaryToConfig(const void* binary);

/** Serializes records to an array block.
 *
 * Records that do not fit, or that would make the array 65,536 bytes or larger, are left out
 * without an error: compare the size that all of them need with that of the buffer.
 * @param[in] configs `count` records, borrowed for the call; NULL pointers among them are skipped.
 * @param[in] count the number of pointers at `configs`.
 * @param[out] buffer the caller's; receives the array. NULL to ask for the size.
 * @param[in,out] size the caller's; the size of `buffer`, and receives the size that all records
 *     need. With `buffer` NULL it receives 8 bytes less than the array needs. On failure it is not
 *     changed.
 * @retval SM_STATUS_SUCCESS the array was written, or the size is known.
 * @retval SM_STATUS_INVALID_PARAMETER `configs` or `size` NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*size` is below the 8 bytes of an empty array.
 * @retval SM_STATUS_OUT_OF_SPACE the sizes add up to 4 GiB or more.
 * @retval 0xFFFFFFFF a record cannot be serialized. */
KQSUPT_API SMStatus SMSDOConfigArrayToBinaryArray(SMSDOConfig* const* configs, uint32_t count,
                                                  void* buffer, uint32_t* size);

/** Rebuilds the records of an array block.
 *
 * When an element fails, every record among the first `*count` slots is freed and its slot NULL.
 * @param[in] array the array, borrowed for the call.
 * @param[out] configsOut the caller's; room for `*count` pointers, all NULL on entry. Each record
 *     that it receives is the caller's, to be released with SMSDOConfigFree. May be NULL when there
 *     are no elements or `*count` is below their number.
 * @param[in,out] count the caller's; the room at `configsOut` in pointers, and receives the number
 *     of elements, also with SM_STATUS_BUFFER_TOO_SMALL; with 0 that is the way to ask for it.
 * @retval SM_STATUS_SUCCESS the records were rebuilt.
 * @retval SM_STATUS_INVALID_PARAMETER `array` or `count` NULL, or there are elements and room for
 *     them, and `configsOut` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED not an array block, or an element is not a record.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*count` is below the number of elements.
 * @retval 0xFFFFFFFF an element could not be rebuilt. */
KQSUPT_API SMStatus SMSDOBinaryArrayToConfigArray(const void* array, SMSDOConfig** configsOut,
                                                  uint32_t* count);

/** @} */

/** @defgroup sdo_binary Blocks
 * Reading, changing and walking the binary form in place.
 *
 * An ID is valid when it is not 0, 0xFFFE or 0xFFFF.
 * @{ */

/** Counts the entries of a record or the elements of an array.
 * @param[in] binary the block, borrowed for the call; may be NULL.
 * @param[out] isArray the caller's; receives 1 for an array and else 0. May be NULL.
 * @return The number; 0xFFFFFFFF when `binary` is NULL or has neither signature. */
KQSUPT_API uint32_t SMSDOBinaryGetCount(const void* binary, uint16_t* isArray);

/** Gives the size of a block.
 * @param[in] binary the block, borrowed for the call; may be NULL.
 * @param[out] isArray the caller's; receives 1 for an array and else 0. May be NULL.
 * @return The size in bytes; 0 when `binary` is NULL or has neither signature. */
KQSUPT_API uint32_t SMSDOBinaryGetSize(const void* binary, uint16_t* isArray);

/** Copies the value of the entry with an ID out of a block. Takes logarithmic time and allocates
 * nothing.
 *
 * A value of up to 4 bytes is reported and copied as its whole slot of 4, the unused bytes 0.
 * @param[in] binary the block, borrowed for the call.
 * @param[in] id the ID of the entry.
 * @param[out] typeOut the caller's; receives the type byte on success. May be NULL.
 * @param[out] buffer the caller's; receives the value when `*size` is enough. NULL to ask for the
 *     size.
 * @param[in,out] size the caller's; the size of `buffer`, and receives the size of the value, also
 *     with SM_STATUS_BUFFER_TOO_SMALL.
 * @retval SM_STATUS_SUCCESS the value was copied.
 * @retval SM_STATUS_INVALID_PARAMETER `binary` or `size` NULL, ID not valid.
 * @retval SM_STATUS_OPERATION_FAILED not a record.
 * @retval SM_STATUS_DATA_NOT_FOUND no entry has the ID.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `buffer` NULL or `*size` too small. */
KQSUPT_API SMStatus SMSDOBinaryGetDataByID(const void* binary, uint16_t id, uint8_t* typeOut,
                                           void* buffer, uint32_t* size);

/** Copies the value of the entry at an index out of a block, with the size it was added with.
 * @param[in] binary the block, borrowed for the call.
 * @param[in] index the position in ascending order of IDs, from 0.
 * @param[out] idOut the caller's; receives the ID on success.
 * @param[out] typeOut the caller's; receives the type byte on success. May be NULL.
 * @param[out] buffer the caller's; receives the value when `*size` is enough. NULL to ask for the
 *     size.
 * @param[in,out] size the caller's; the size of `buffer`, and receives the size of the value, also
 *     with SM_STATUS_BUFFER_TOO_SMALL.
 * @retval SM_STATUS_SUCCESS the value was copied.
 * @retval SM_STATUS_INVALID_PARAMETER `binary`, `idOut` or `size` NULL.
 * @retval SM_STATUS_INDEX_OUT_OF_RANGE `index` is not below the count.
 * @retval SM_STATUS_OPERATION_FAILED not a record.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `buffer` NULL or `*size` too small. */
KQSUPT_API SMStatus SMSDOBinaryGetDataByIndex(const void* binary, uint32_t index, uint16_t* idOut,
                                              uint8_t* typeOut, void* buffer, uint32_t* size);

/** Changes the value of an entry inside a block.
 *
 * A value of the same size, or one of up to 4 bytes for another such, is overwritten in its place,
 * a shorter one leaving the rest of its slot as it was; otherwise the block is rebuilt, with the
 * new value added as SMSDOConfigAddData does.
 * @param[in,out] binary the block, in a buffer of `*capacity` bytes that stays the caller's.
 * @param[in,out] capacity the caller's; the size of the buffer, and receives the size of the block
 *     on success.
 * @param[in] id the ID of the entry.
 * @param[in] type the type byte of the entry.
 * @param[in] data the new value, `size` bytes that stay the caller's and are copied; they may lie
 *     inside the block. For SDO_TYPE_BINARY a block.
 * @param[in] size the size of the value.
 * @retval SM_STATUS_SUCCESS the value was changed.
 * @retval SM_STATUS_INVALID_PARAMETER `binary`, `capacity` or `data` NULL, `type` or `size` 0, ID
 *     not valid, or not a record; or the new value is a block with neither a record's nor an
 *     array's signature or larger than `size`.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*capacity` below 16; or below the size that the block would
 *     have, which it receives; or the block cannot be rebuilt, for lack of memory, say.
 * @retval SM_STATUS_DATA_NOT_FOUND no entry has both the ID and the type.
 * @retval SM_STATUS_OUT_OF_SPACE the record would grow to 65,536 bytes or more with the new value,
 *     not counting what the old one would give back, or has 65,535 entries.
 * @retval SM_STATUS_NO_MEMORY memory is short while the new value is added.
 * @retval SM_STATUS_OPERATION_FAILED an element of an array of blocks is not a record.
 * @retval 0xFFFFFFFF a block could not be converted. */
KQSUPT_API SMStatus SMSDOBinarySetData(void* binary, uint32_t* capacity, uint16_t id, uint8_t type,
                                       const void* data, uint32_t size);

/** Called once per block before its contents. A result other than 0 ends the walk.
 * @param[in] context what the caller of the walk gave, and stays its own.
 * @param[in] parentToken the token of the entry that holds the block, 0 for the outermost.
 * @param[in] isArray 1 or 0.
 * @param[in] count the number of entries or elements.
 * @param[in] index the position in an array for an element of one, else 0xFFFFFFFF.
 * @param[in] block points into the outermost block, with no alignment. */
typedef SMStatus (*SMSDOBinaryWalkBegin)(void* context, uint32_t parentToken, uint32_t isArray,
                                         uint32_t count, uint32_t index, const void* block);

/** Called once per entry. A result other than 0 ends the walk.
 * @param[in] context what the caller of the walk gave, and stays its own.
 * @param[in,out] tokenOut the walk's; receives a token of its own for the entry, 0 on entry.
 * @param[in] id the ID of the entry.
 * @param[in] userBits bits 6 and 7 of the type (0 to 3).
 * @param[in] userFlag bit 5 of the type.
 * @param[in] isArray bit 4 of the type.
 * @param[in] baseType bits 0 to 3 of the type.
 * @param[in] size the size of the value.
 * @param[in] value points at the value inside the block, with no alignment. */
typedef SMStatus (*SMSDOBinaryWalkEntry)(void* context, uint32_t* tokenOut, uint32_t id,
                                         uint32_t userBits, uint32_t userFlag, uint32_t isArray,
                                         uint32_t baseType, uint32_t size, const void* value);

/** Called after each entry and its nested walk. Its result does not stop the walk of the block.
 * @param[in] context what the caller of the walk gave, and stays its own.
 * @param[in] token the entry's token. */
typedef SMStatus (*SMSDOBinaryWalkAfter)(void* context, uint32_t token);

/** Called once per block after its contents; its result is the block's.
 * @param[in] context what the caller of the walk gave, and stays its own.
 * @param[in] parentToken the token of the entry that holds the block, 0 for the outermost.
 * @param[in] isArray 1 or 0. */
typedef SMStatus (*SMSDOBinaryWalkEnd)(void* context, uint32_t parentToken, uint32_t isArray);

/** Walks a block, a record or an array, in order. An empty block calls no callback. Allocates
 * nothing.
 *
 * A nested block's result other than 0 ends the walk.
 * @param[in] binary the block, borrowed for the call.
 * @param[in,out] context handed to the callbacks; stays the caller's, and may be NULL.
 * @param[in] begin called before the contents of each block; may be NULL.
 * @param[in] entry called for each entry; may be NULL.
 * @param[in] after called after each entry; may be NULL.
 * @param[in] end called after the contents of each block; may be NULL.
 * @param[in] recurse 1 to walk nested blocks and the entries of an array's elements too.
 * @return What a callback returned, any number: the first result that ended the walk; else the
 *     result of `end` for the outermost block; else, without an `end`, the last result of `after`.
 * @retval SM_STATUS_SUCCESS the walk came to its end, and no callback's result says otherwise.
 * @retval SM_STATUS_INVALID_PARAMETER `binary` NULL or not a block, or a nested value that is
 *     none. */
KQSUPT_API SMStatus SMSDOBinaryWalk(const void* binary, void* context, SMSDOBinaryWalkBegin begin,
                                    SMSDOBinaryWalkEntry entry, SMSDOBinaryWalkAfter after,
                                    SMSDOBinaryWalkEnd end, uint16_t recurse);

/** @} */

/** @defgroup sdo_array Arrays of blocks
 * Building an array of blocks one by one, and taking them out.
 * @{ */

/** Makes an empty array of 8 bytes.
 * @param[out] buffer the caller's; receives the array.
 * @param[in] size the size of `buffer`.
 * @retval SM_STATUS_SUCCESS the array was written.
 * @retval SM_STATUS_INVALID_PARAMETER `buffer` NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `size` below 8. */
KQSUPT_API SMStatus SMSDOBinaryArrayInitHeader(void* buffer, uint32_t size);

/** Appends a record's block to an array.
 *
 * The element is not checked: it must be a whole block of that size, or what comes after it is not
 * found.
 * @param[in,out] array the array, in a buffer of `*capacity` bytes that stays the caller's.
 * @param[in,out] capacity the caller's; the size of the buffer, and receives the size that the
 *     array would have where that is more.
 * @param[in] element the block, which stays the caller's and is copied.
 * @param[in] elementSize the size of the block.
 * @retval SM_STATUS_SUCCESS the element was appended.
 * @retval SM_STATUS_INVALID_PARAMETER a pointer is NULL, or not an array.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*capacity` below 16; or below the size that the array would
 *     have, which it receives; or that size is 65,536 or more. */
KQSUPT_API SMStatus SMSDOBinaryArrayAddData(void* array, uint32_t* capacity, const void* element,
                                            uint32_t elementSize);

/** Copies the element at an index out of an array.
 * @param[in] array the array, borrowed for the call.
 * @param[in] arraySize not used.
 * @param[in] index the position in the array, from 0.
 * @param[out] buffer the caller's; receives the element when `*size` is enough. NULL to ask for the
 *     size.
 * @param[in,out] size the caller's; the size of `buffer`, and receives the size of the element,
 *     also with SM_STATUS_BUFFER_TOO_SMALL.
 * @retval SM_STATUS_SUCCESS the element was copied.
 * @retval SM_STATUS_INVALID_PARAMETER `array` or `size` NULL.
 * @retval SM_STATUS_OPERATION_FAILED not an array, or the element is not a record.
 * @retval SM_STATUS_DATA_NOT_FOUND `index` is not below the count.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `buffer` NULL or `*size` too small. */
KQSUPT_API SMStatus SMSDOBinaryArrayGetByIndex(const void* array, uint32_t arraySize,
                                               uint32_t index, void* buffer, uint32_t* size);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
