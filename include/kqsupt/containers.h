/* Containers of the caller's data items, and digests of bytes. A container never locks: the caller
 * serialises access. */
#ifndef KQSUPT_CONTAINERS_H
#define KQSUPT_CONTAINERS_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Red-black tree ----------------------------------------------------------------------------
 *
 * A balanced search tree of data items. The tree stores one pointer per item and never looks behind
 * it: a callback tells how a key relates to an item. The items stay the caller's.
 *
 * The caller owns a cell of type SMRedBlackTree, the root of the tree: NULL when the tree is empty.
 * Functions that change the tree take the address of the cell, the others its content:
 *
 *     SMRedBlackTree tree;
 *     SMRedBlackTreeAttach(&tree);
 *     SMRedBlackTreeDataInsert(&tree, item, item->name, compare_name);
 *     found = SMRedBlackTreeDataWalk(tree, name, walk_compare_name, SM_RED_BLACK_TREE_WALK_SEARCH);
 *     SMRedBlackTreeDelete(&tree, NULL, NULL);
 *
 * Insert, search and delete take logarithmic time. */

typedef struct SMRedBlackTreeNode SMRedBlackTreeNode;
typedef SMRedBlackTreeNode* SMRedBlackTree;

/* Orders `key` against the item `data`: negative when the key comes before it, positive when after,
 * 0 when they are equal. `reserved` is always 0. */
typedef int32_t (*SMRedBlackTreeCompare)(void* key, void* data, uint32_t reserved);

/* Visits the item `data`. What the result means depends on the mode of the walk; 0 stops it. */
typedef int32_t (*SMRedBlackTreeVisit)(void* context, void* data);

/* Told of the item `data` before its node is freed. */
typedef void (*SMRedBlackTreeFreed)(void* context, void* data);

/* How SMRedBlackTreeDataWalk goes through the tree. */
enum {
  /* The root alone. */
  SM_RED_BLACK_TREE_WALK_ROOT = 0,
  /* Every item in ascending order, until the callback returns 0. */
  SM_RED_BLACK_TREE_WALK_ASCENDING = 1,
  /* Every item in descending order, until the callback returns 0. */
  SM_RED_BLACK_TREE_WALK_DESCENDING = 2,
  /* Search: the callback is an SMRedBlackTreeCompare, cast to the type of a visit, and the context
   * its key. */
  SM_RED_BLACK_TREE_WALK_SEARCH = 3,
  /* Every item, each before those below it: the callback's sign chooses which side comes first,
   * negative the smaller items, positive the greater ones, and 0 stops. */
  SM_RED_BLACK_TREE_WALK_GUIDED = 4
};

/* Makes the tree empty without looking at what the cell held. Call it before the first insert. A
 * NULL `tree` is ignored. */
KQSUPT_API void SMRedBlackTreeAttach(SMRedBlackTree* tree);

/* Makes the tree empty and frees none of its nodes: for a tree whose nodes another cell now holds.
 * A NULL `tree` is ignored. */
KQSUPT_API void SMRedBlackTreeDetach(SMRedBlackTree* tree);

/* 1 when the tree with this root has no item, else 0. */
KQSUPT_API uint32_t SMRedBlackTreeIsEmpty(SMRedBlackTree root);

/* Inserts the item `data` at the place that `compare` gives `key`. The tree allocates one node.
 * SM_STATUS_INVALID_PARAMETER when an argument is NULL; SM_STATUS_ALREADY_EXISTS when an item
 * equals the key; SM_STATUS_NO_MEMORY. On failure the tree is as it was. */
KQSUPT_API SMStatus SMRedBlackTreeDataInsert(SMRedBlackTree* tree, void* data, void* key,
                                             SMRedBlackTreeCompare compare);

/* Puts `newData` in the place of the item that equals `key` and returns that item, which is the
 * caller's to release. The new item must have the place of the old one in the order. Returns NULL,
 * with nothing changed, when an argument is NULL or no item equals the key. */
KQSUPT_API void* SMRedBlackTreeDataReplace(SMRedBlackTree* tree, void* newData, void* key,
                                           SMRedBlackTreeCompare compare);

/* Takes the item that equals `key` out of the tree and frees its node. The item is not freed and
 * not returned: a caller that needs it records it in `compare` when that returns 0.
 * SM_STATUS_INVALID_PARAMETER when an argument is NULL; SM_STATUS_DATA_NOT_FOUND when no item
 * equals the key. */
KQSUPT_API SMStatus SMRedBlackTreeDataDelete(SMRedBlackTree* tree, void* key,
                                             SMRedBlackTreeCompare compare);

/* Frees every node, the greater items before the smaller ones below the same node, and leaves the
 * tree empty. `freed`, when it is not NULL, is called with `context` and each item before its node
 * goes, and may release the item; it must not use the tree. A NULL `tree` is ignored. */
KQSUPT_API void SMRedBlackTreeDelete(SMRedBlackTree* tree, void* context,
                                     SMRedBlackTreeFreed freed);

/* Walks the tree in one of the SM_RED_BLACK_TREE_WALK_ modes and returns the item where the walk
 * stopped, or NULL when it did not stop. Also NULL, without a call of `visit`, when `root`,
 * `context` or `visit` is NULL or the mode is unknown. The callback must not change the tree. */
KQSUPT_API void* SMRedBlackTreeDataWalk(SMRedBlackTree root, void* context,
                                        SMRedBlackTreeVisit visit, uint32_t mode);

/* ---- CRC-32 ------------------------------------------------------------------------------------
 *
 * The checksum of ISO-HDLC and zip files: reflected, polynomial 0xEDB88320; the ASCII digits
 * "123456789" give 0xCBF43926 and no bytes at all give 0. Lengths are in bytes. Pointers must not
 * be NULL, except for data of length 0. */

/* The CRC-32 of the `length` bytes at `data`. */
KQSUPT_API uint32_t SMCRC32Compute_vn(const void* data, uint32_t length);

/* The CRC-32 of the bytes of `text` before its NUL. */
KQSUPT_API uint32_t SMCRC32Compute_str(const char* text);

/* The CRC-32 of the bytes of `text` before its NUL, each lowered first by the C library's tolower
 * in the locale of the process: the same for every spelling of a name that ignores case. */
KQSUPT_API uint32_t SMCRC32Compute_strncase(const char* text);

/* A checksum of its own kind, not the CRC-32 above, over `totalLength` bytes: the first
 * `dataLength` of them from `data` (fewer when `totalLength` is smaller), the others 0. With
 * `totalLength` 0 it is 0xFFFFFFFF. A negative `totalLength` stands for 2^32 less its amount: some
 * 2 to 4 thousand million bytes. */
KQSUPT_API uint32_t SMGenerateCRC32(const void* data, uint32_t dataLength, int32_t totalLength);

/* ---- MD5 message digest ------------------------------------------------------------------------
 *
 * The algorithm of RFC 1321 with the words of the message, its length (high word first) and the
 * digest in the byte order of the host. Digests therefore differ between hosts of different byte
 * order, and from those of other implementations: compare them only with digests made by this
 * library on the same kind of host.
 *
 *     SMRFC1321Context context;
 *     SMRFC1321Load(&context);
 *     SMRFC1321AddMsg(&context, text, length);      any number of times
 *     SMRFC1321ComputeMsgDigest(&context);
 *     memcpy(digest, context.digest, 16);
 *     SMRFC1321UnLoad(&context);
 *
 * The context is the caller's, and all there is: different ones may be used by several threads at
 * once. Pointers must not be NULL, except for data of length 0. */

typedef struct SMRFC1321Context {
  uint32_t messageBitsHigh; /* the length of the message so far, in bits */
  uint32_t messageBitsLow;
  uint32_t state[4];     /* the words A, B, C and D */
  uint32_t bytesInBlock; /* how many bytes of `block` are filled, 0 to 63 */
  uint8_t digest[16];    /* the result: the four words of the state */
  uint8_t block[64];     /* bytes of the message that do not make a whole block yet */
} SMRFC1321Context;

/* Starts a new message in `ctx`, whatever it held. Clears the digest; the bytes of `block` stay. */
KQSUPT_API void SMRFC1321Load(SMRFC1321Context* ctx);

/* Adds the `length` bytes at `data` to the message. Length 0 does nothing. */
KQSUPT_API void SMRFC1321AddMsg(SMRFC1321Context* ctx, const void* data, uint32_t length);

/* Ends the message and puts its digest into the 16 bytes `digest` of the context. The context is
 * not made ready for another message: call SMRFC1321Load before more is added. */
KQSUPT_API void SMRFC1321ComputeMsgDigest(SMRFC1321Context* ctx);

/* Clears all 108 bytes of the context, so that nothing of the message stays in memory. */
KQSUPT_API void SMRFC1321UnLoad(SMRFC1321Context* ctx);

/* ---- Base64 ------------------------------------------------------------------------------------
 *
 * Text of 64 characters, "=" as padding, without line breaks. Both functions always return 0.
 * Pointers must not be NULL, except for input of length 0. */

/* Encodes the `length` bytes at `in` and writes 4 * ceil(length / 3) characters and a NUL to `out`,
 * which must have room for them. A negative length is taken as 0: the NUL alone. `alphabet` gives
 * the 64 characters for the values 0 to 63; with NULL they are those of RFC 4648.
 *
 * When `length` is not a multiple of 3, the byte that follows the input is read too, and its high
 * bits are part of the last character before the padding: it must be readable, and it must be 0 for
 * the text that other encoders give. A text with its NUL has such a byte. */
KQSUPT_API uint32_t SMBase64Encode(char* out, const void* in, int32_t length, const char* alphabet);

/* Decodes the `length` characters at `in`, in the alphabet of RFC 4648, and writes the bytes and a
 * NUL after them to `out`: 3 bytes for each whole group of four characters, or 1 when the third
 * character is "=", or 2 when the fourth alone is. A group that has "=" as its first or second
 * character gives nothing. Characters that do not make a whole group are passed over; a negative
 * length is taken as 0. `out` may be `in`, and needs room for 3 * (length / 4) + 1 bytes at most.
 *
 * The number of bytes is not returned: the caller works it out from the input. A character outside
 * the alphabet is not reported; it is taken as the value 0xFF, of which the bits that reach beyond
 * its own six are combined with those of its neighbours or cut off. */
KQSUPT_API uint32_t SMBase64Decode(void* out, const char* in, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
