/* Containers of the caller's data items, and digests of bytes. A container never locks: the caller
 * serialises access. */
#ifndef KQSUPT_CONTAINERS_H
#define KQSUPT_CONTAINERS_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Singly and doubly linked lists ------------------------------------------------------------
 *
 * Two families of the same shape: SMSLList, singly linked, and SMDLList, doubly linked. The caller
 * owns the list and its entries; the library links and unlinks them. An entry may carry its payload
 * in the same block:
 *
 *     SMDLList list;
 *     SMDLListInitNoAlloc(&list);
 *     entry = SMDLListEntryAlloc(sizeof(Fan));
 *     fan = entry->data;
 *     SMDLListInsertEntryAtTail(&list, entry);
 *     found = SMDLListWalkAtHead(&list, name, is_fan_of_name);
 *     SMDLListDeleteEntry(&list, found);
 *     SMDLListEntryFree(found);
 *
 * or be a part of the caller's own structure, whose links SMDLListEntryInitNoAlloc clears. An entry
 * is on one list at a time. Every operation takes constant time, except the walks, InsertEntry,
 * ReplaceEntry and the singly linked RemoveEntryAtTail, which go through the list. Operations
 * without a result do nothing when a pointer that they need is NULL. */

typedef struct SMSLListEntry {
  struct SMSLListEntry* next; /* NULL in the last entry */
  void* data;                 /* the payload, the caller's or the one behind the entry */
} SMSLListEntry;

typedef struct SMSLList {
  SMSLListEntry* head; /* both NULL when the list is empty */
  SMSLListEntry* tail;
} SMSLList;

/* Relates `key` to an entry, whose payload it finds at `entry->data`. `reserved` is always 0. It
 * must not change the list. When it orders: negative when the key comes before the entry, positive
 * when after, 0 when they are equal. In a walk: 0 when this entry is the one. */
typedef int32_t (*SMSLListCallback)(void* key, SMSLListEntry* entry, uint32_t reserved);

/* An empty list on the heap, to be released by SMSLListFree; NULL when memory is short. */
KQSUPT_API SMSLList* SMSLListAlloc(void);

/* Makes a list that the caller provides empty, whatever it held. */
KQSUPT_API void SMSLListInitNoAlloc(SMSLList* list);

/* Frees a list of SMSLListAlloc, and none of its entries. NULL is ignored. */
KQSUPT_API void SMSLListFree(SMSLList* list);

/* An entry that is on no list, to be released by SMSLListEntryFree; NULL when memory is short. With
 * a `payloadSize` in bytes, its data pointer points to that many bytes, not cleared, which follow
 * the entry in the same block and are aligned as a pointer is; with 0 it is NULL, for the caller to
 * set. */
KQSUPT_API SMSLListEntry* SMSLListEntryAlloc(uint32_t payloadSize);

/* Clears the links of an entry that the caller provides. Its data pointer stays. */
KQSUPT_API void SMSLListEntryInitNoAlloc(SMSLListEntry* entry);

/* Clears the data pointer of an entry of SMSLListEntryAlloc and frees it, with the payload that
 * follows it. The entry must be on no list. NULL is ignored. */
KQSUPT_API void SMSLListEntryFree(SMSLListEntry* entry);

/* Links the entry before the first one. */
KQSUPT_API void SMSLListInsertEntryAtHead(SMSLList* list, SMSLListEntry* entry);

/* Links the entry after the last one. */
KQSUPT_API void SMSLListInsertEntryAtTail(SMSLList* list, SMSLListEntry* entry);

/* Links the entry after the entries at the head of the list that `compare` orders before `key`, so
 * that a list that is filled this way stays in ascending order. SM_STATUS_INVALID_PARAMETER when an
 * argument is NULL; SM_STATUS_ALREADY_EXISTS, with nothing changed, when one of those entries or
 * the one after them is equal. */
KQSUPT_API SMStatus SMSLListInsertEntry(SMSLList* list, SMSLListEntry* entry, void* key,
                                        SMSLListCallback compare);

/* The first entry, from the head, for which `visit` returns 0. NULL when there is none or an
 * argument is NULL. */
KQSUPT_API SMSLListEntry* SMSLListWalkAtHead(const SMSLList* list, void* context,
                                             SMSLListCallback visit);

/* Puts `newEntry` in the place of the first entry that is equal to `key`, wherever it is in the
 * list, and returns that entry, whose links keep their values. NULL, with nothing changed, when
 * there is none or an argument is NULL. */
KQSUPT_API SMSLListEntry* SMSLListReplaceEntry(SMSLList* list, SMSLListEntry* newEntry, void* key,
                                               SMSLListCallback compare);

/* Unlinks `entry`, whose predecessor is `previousEntry`, NULL when the entry is the first. The
 * entry is not freed, and its links keep their values. */
KQSUPT_API void SMSLListDeleteEntry(SMSLList* list, SMSLListEntry* previousEntry,
                                    SMSLListEntry* entry);

/* Unlinks the first entry and returns it; its links keep their values. NULL when the list is empty
 * or NULL. */
KQSUPT_API SMSLListEntry* SMSLListRemoveEntryAtHead(SMSLList* list);

/* The same with the last entry. Goes through the whole list to find the one before it. */
KQSUPT_API SMSLListEntry* SMSLListRemoveEntryAtTail(SMSLList* list);

/* 1 when the list is NULL or has no entry, else 0. */
KQSUPT_API uint32_t SMSLListIsEmpty(const SMSLList* list);

/* The doubly linked family: everything as above, but where something else is said. */

typedef struct SMDLListEntry {
  struct SMDLListEntry* next;     /* NULL in the last entry */
  struct SMDLListEntry* previous; /* NULL in the first entry */
  void* data;
} SMDLListEntry;

typedef struct SMDLList {
  SMDLListEntry* head;
  SMDLListEntry* tail;
} SMDLList;

typedef int32_t (*SMDLListCallback)(void* key, SMDLListEntry* entry, uint32_t reserved);

KQSUPT_API SMDLList* SMDLListAlloc(void);
KQSUPT_API void SMDLListInitNoAlloc(SMDLList* list);
KQSUPT_API void SMDLListFree(SMDLList* list);
KQSUPT_API SMDLListEntry* SMDLListEntryAlloc(uint32_t payloadSize);
KQSUPT_API void SMDLListEntryInitNoAlloc(SMDLListEntry* entry);
KQSUPT_API void SMDLListEntryFree(SMDLListEntry* entry);
KQSUPT_API void SMDLListInsertEntryAtHead(SMDLList* list, SMDLListEntry* entry);
KQSUPT_API void SMDLListInsertEntryAtTail(SMDLList* list, SMDLListEntry* entry);
KQSUPT_API SMStatus SMDLListInsertEntry(SMDLList* list, SMDLListEntry* entry, void* key,
                                        SMDLListCallback compare);
KQSUPT_API SMDLListEntry* SMDLListWalkAtHead(const SMDLList* list, void* context,
                                             SMDLListCallback visit);

/* The last entry for which `visit` returns 0: the walk begins at the tail and goes backwards. NULL
 * when there is none or an argument is NULL. */
KQSUPT_API SMDLListEntry* SMDLListWalkAtTail(const SMDLList* list, void* context,
                                             SMDLListCallback visit);

KQSUPT_API SMDLListEntry* SMDLListReplaceEntry(SMDLList* list, SMDLListEntry* newEntry, void* key,
                                               SMDLListCallback compare);

/* Unlinks `entry`. The entry is not freed, and its links keep their values. Nothing is done when
 * the entry has no predecessor and is not the first one: it is on no list. */
KQSUPT_API void SMDLListDeleteEntry(SMDLList* list, SMDLListEntry* entry);

KQSUPT_API SMDLListEntry* SMDLListRemoveEntryAtHead(SMDLList* list);

/* The last entry, in constant time. */
KQSUPT_API SMDLListEntry* SMDLListRemoveEntryAtTail(SMDLList* list);

KQSUPT_API uint32_t SMDLListIsEmpty(const SMDLList* list);

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

/* ---- Hash ID table -----------------------------------------------------------------------------
 *
 * Hands out small IDs, and knows which are in use. A table is memory of the caller, one bit per ID:
 * ID k is bit k % 32, counted from the least significant one, of the 32-bit word k / 32 in the byte
 * order of the host. There is no header; a copy of the bytes is a copy of the table. Every function
 * takes the size of the table in bytes, of which only whole words count: fewer than 4 bytes make an
 * empty table. The table pointer is not checked, and may have any alignment.
 *
 * ID 0 is never handed out and never reported, so that 0 says "none" in every result.
 *
 *     bytes = SMHashTableBytesNeeded(1000);
 *     table = SMAllocMem(bytes);
 *     SMClearHashTable(table, bytes);
 *     id = SMAcquireHashID(table, bytes, SM_HASH_ID_LOWEST_FREE);
 *     SMReleaseHashID(table, bytes, id);
 */

/* Which ID SMAcquireHashID takes. */
enum {
  /* The lowest one that is free. */
  SM_HASH_ID_LOWEST_FREE = 0,
  /* One above those in use, so that an ID that was released is not taken again at once: in the last
   * word that is used in part, else in the first one that is not used at all, the lowest of the
   * highest IDs in a row that are free. */
  SM_HASH_ID_AFTER_HIGHEST = 1
};

/* How many bytes a table for the IDs 1 to `maxID` has: a multiple of 4. 0 when `maxID` is 0 or
 * above 0x3FFFFFFE. */
KQSUPT_API uint32_t SMHashTableBytesNeeded(uint32_t maxID);

/* Sets all `bytes` bytes to 0: no ID is in use. Always SM_STATUS_SUCCESS. */
KQSUPT_API SMStatus SMClearHashTable(void* table, uint32_t bytes);

/* Takes an ID, chosen by one of the modes SM_HASH_ID_, and returns it. 0 when none is free or the
 * mode is another number. */
KQSUPT_API uint32_t SMAcquireHashID(void* table, uint32_t bytes, int32_t mode);

/* Takes this ID, which may be 0. SM_STATUS_OPERATION_FAILED when the table has no such ID;
 * SM_STATUS_ALREADY_EXISTS when it is in use. */
KQSUPT_API SMStatus SMAcquireHashIDByID(void* table, uint32_t bytes, uint32_t id);

/* SM_STATUS_SUCCESS when the ID is in use, SM_STATUS_INDEX_OUT_OF_RANGE when it is not,
 * SM_STATUS_OPERATION_FAILED when the table has no such ID. */
KQSUPT_API SMStatus SMVerifyHashID(const void* table, uint32_t bytes, uint32_t id);

/* Makes the ID free again. SM_STATUS_INDEX_OUT_OF_RANGE when it is not in use,
 * SM_STATUS_OPERATION_FAILED when the table has no such ID. */
KQSUPT_API SMStatus SMReleaseHashID(void* table, uint32_t bytes, uint32_t id);

/* The smallest ID in use, or 0. Also 0, whatever the other words hold, when ID 0 is the only one in
 * use of those below 32. */
KQSUPT_API uint32_t SMGetMinInUseID(const void* table, uint32_t bytes);

/* The largest ID in use, or 0. */
KQSUPT_API uint32_t SMGetMaxInUseID(const void* table, uint32_t bytes);

/* Goes through the IDs in use in ascending order, from the first or from behind the one that the
 * last call returned. The two cursors are the caller's and hold the word and the bit of that ID;
 * SMFindFirstHashID sets them to 0 first. Returns the ID, or 0 with the cursors as they are when
 * there is none left. Also 0 when a cursor is NULL. */
KQSUPT_API uint32_t SMFindFirstHashID(const void* table, uint32_t bytes, uint32_t* wordCursor,
                                      uint32_t* bitCursor);
KQSUPT_API uint32_t SMFindNextHashID(const void* table, uint32_t bytes, uint32_t* wordCursor,
                                     uint32_t* bitCursor);

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
