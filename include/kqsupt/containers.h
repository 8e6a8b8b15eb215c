/** @file
 * Containers of the caller's data items, and digests of bytes. A container never locks: the caller
 * serialises access. */
#ifndef KQSUPT_CONTAINERS_H
#define KQSUPT_CONTAINERS_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup slist Singly linked lists
 * Lists of the caller's entries, and of two families of the same shape, SMSLList and SMDLList, the
 * singly linked one.
 *
 * The caller owns the list and its entries; the library links and unlinks them. An entry may carry
 * its payload in the same block, or be a part of the caller's own structure, whose links
 * SMSLListEntryInitNoAlloc clears. An entry is on one list at a time. Every operation takes
 * constant time, except the walks, InsertEntry, ReplaceEntry and the singly linked
 * RemoveEntryAtTail, which go through the list. Operations without a result do nothing when a
 * pointer that they need is NULL.
 * @{ */

/** An entry of a singly linked list. */
typedef struct SMSLListEntry {
  struct SMSLListEntry* next; /**< NULL in the last entry */
  void* data;                 /**< the payload, the caller's or the one behind the entry */
} SMSLListEntry;

/** A singly linked list. Both pointers are NULL when it is empty. */
typedef struct SMSLList {
  SMSLListEntry* head; /**< the first entry */
  SMSLListEntry* tail; /**< the last entry */
} SMSLList;

/** Relates a key to an entry. It must not change the list. When it orders: negative when the key
 * comes before the entry, positive when after, 0 when they are equal. In a walk: 0 when this entry
 * is the one.
 * @param[in] key what the caller of the list gave.
 * @param[in] entry the entry, whose payload is at `entry->data`; it stays on the list.
 * @param[in] reserved always 0. */
typedef int32_t (*SMSLListCallback)(void* key, SMSLListEntry* entry, uint32_t reserved);

/** Makes an empty list on the heap.
 * @return The list, which the caller releases with SMSLListFree; NULL when memory is short. */
KQSUPT_API SMSLList* SMSLListAlloc(void);

/** Makes a list that the caller provides empty, whatever it held.
 * @param[out] list the list, which stays the caller's; NULL is ignored. */
KQSUPT_API void SMSLListInitNoAlloc(SMSLList* list);

/** Frees a list of SMSLListAlloc, and none of its entries.
 * @param[in] list the list, which the call takes over and frees; its entries stay the caller's.
 *     NULL is ignored. */
KQSUPT_API void SMSLListFree(SMSLList* list);

/** Makes an entry that is on no list.
 *
 * With a payload, its data pointer points to that many bytes, not cleared, which follow the entry
 * in the same block and are aligned as a pointer is; with `payloadSize` 0 it is NULL, for the
 * caller to set.
 * @param[in] payloadSize the size of the payload in bytes; may be 0.
 * @return The entry, which the caller releases with SMSLListEntryFree; NULL when memory is short.
 *     */
KQSUPT_API SMSLListEntry* SMSLListEntryAlloc(uint32_t payloadSize);

/** Clears the links of an entry that the caller provides. Its data pointer stays.
 * @param[in,out] entry the entry, which stays the caller's; NULL is ignored. */
KQSUPT_API void SMSLListEntryInitNoAlloc(SMSLListEntry* entry);

/** Clears the data pointer of an entry of SMSLListEntryAlloc and frees it, with the payload that
 * follows it.
 * @param[in] entry the entry, on no list, which the call takes over and frees; what the caller set
 *     its data pointer to stays the caller's. NULL is ignored. */
KQSUPT_API void SMSLListEntryFree(SMSLListEntry* entry);

/** Links an entry before the first one.
 * @param[in,out] list the list, which stays the caller's; nothing is done when it is NULL.
 * @param[in,out] entry the entry, on no list. It stays the caller's; the list keeps the pointer
 *     until the entry is taken off. Nothing is done when it is NULL. */
KQSUPT_API void SMSLListInsertEntryAtHead(SMSLList* list, SMSLListEntry* entry);

/** Links an entry after the last one.
 * @param[in,out] list the list, which stays the caller's; nothing is done when it is NULL.
 * @param[in,out] entry the entry, on no list. It stays the caller's; the list keeps the pointer
 *     until the entry is taken off. Nothing is done when it is NULL. */
KQSUPT_API void SMSLListInsertEntryAtTail(SMSLList* list, SMSLListEntry* entry);

/** Links an entry after the entries at the head of the list that `compare` orders before `key`, so
 * that a list that is filled this way stays in ascending order.
 * @param[in,out] list the list, which stays the caller's.
 * @param[in,out] entry the entry, on no list. It stays the caller's; on success the list keeps the
 *     pointer until the entry is taken off.
 * @param[in] key handed to `compare`: the key of the entry. Borrowed for the call.
 * @param[in] compare orders the key against an entry.
 * @retval SM_STATUS_SUCCESS the entry is on the list.
 * @retval SM_STATUS_INVALID_PARAMETER an argument is NULL.
 * @retval SM_STATUS_ALREADY_EXISTS one of those entries or the one after them is equal; nothing was
 *     changed. */
KQSUPT_API SMStatus SMSLListInsertEntry(SMSLList* list, SMSLListEntry* entry, void* key,
                                        SMSLListCallback compare);

/** Finds the first entry, from the head, for which `visit` returns 0.
 * @param[in] list the list, borrowed for the call.
 * @param[in] context handed to `visit` as the key. Borrowed for the call.
 * @param[in] visit tells whether an entry is the one.
 * @return The entry, which stays on the list and the caller's; NULL when there is none or an
 *     argument is NULL. */
KQSUPT_API SMSLListEntry* SMSLListWalkAtHead(const SMSLList* list, void* context,
                                             SMSLListCallback visit);

/** Puts an entry in the place of the first one that is equal to `key`, wherever it is in the list.
 * @param[in,out] list the list, which stays the caller's.
 * @param[in,out] newEntry the entry, on no list. It stays the caller's; the list keeps the pointer
 *     when it took it.
 * @param[in] key handed to `compare`. Borrowed for the call.
 * @param[in] compare orders the key against an entry.
 * @return The entry that was replaced, off the list and the caller's to free; its links keep their
 *     values. NULL, with nothing changed, when there is none or an argument is NULL. */
KQSUPT_API SMSLListEntry* SMSLListReplaceEntry(SMSLList* list, SMSLListEntry* newEntry, void* key,
                                               SMSLListCallback compare);

/** Unlinks an entry. The entry is not freed, and its links keep their values.
 * @param[in,out] list the list, which stays the caller's; nothing is done when it is NULL.
 * @param[in,out] previousEntry the predecessor of `entry`, which stays the caller's; NULL when the
 *     entry is the first.
 * @param[in] entry the entry, which stays the caller's; nothing is done when it is NULL. */
KQSUPT_API void SMSLListDeleteEntry(SMSLList* list, SMSLListEntry* previousEntry,
                                    SMSLListEntry* entry);

/** Unlinks the first entry and returns it; its links keep their values.
 * @param[in,out] list the list, which stays the caller's; may be NULL.
 * @return The entry, off the list and the caller's to free; NULL when the list is empty or NULL. */
KQSUPT_API SMSLListEntry* SMSLListRemoveEntryAtHead(SMSLList* list);

/** Unlinks the last entry and returns it; its links keep their values. Goes through the whole list
 * to find the one before it.
 * @param[in,out] list the list, which stays the caller's; may be NULL.
 * @return The entry, off the list and the caller's to free; NULL when the list is empty or NULL. */
KQSUPT_API SMSLListEntry* SMSLListRemoveEntryAtTail(SMSLList* list);

/** Tells whether a list has no entry.
 * @param[in] list the list, borrowed for the call; may be NULL.
 * @return 1 when the list is NULL or has no entry, else 0. */
KQSUPT_API uint32_t SMSLListIsEmpty(const SMSLList* list);

/** @} */

/** @defgroup dlist Doubly linked lists
 * Lists of the caller's entries, and of two families of the same shape, SMSLList and SMDLList, the
 * doubly linked one.
 *
 * The caller owns the list and its entries; the library links and unlinks them. An entry may carry
 * its payload in the same block:
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
 * is on one list at a time. Every operation takes constant time, except the walks, InsertEntry and
 * ReplaceEntry, which go through the list. Operations without a result do nothing when a pointer
 * that they need is NULL.
 * @{ */

/** An entry of a doubly linked list. */
typedef struct SMDLListEntry {
  struct SMDLListEntry* next;     /**< NULL in the last entry */
  struct SMDLListEntry* previous; /**< NULL in the first entry */
  void* data;                     /**< the payload, the caller's or the one behind the entry */
} SMDLListEntry;

/** A doubly linked list. Both pointers are NULL when it is empty. */
typedef struct SMDLList {
  SMDLListEntry* head; /**< the first entry */
  SMDLListEntry* tail; /**< the last entry */
} SMDLList;

/** Relates a key to an entry. It must not change the list. When it orders: negative when the key
 * comes before the entry, positive when after, 0 when they are equal. In a walk: 0 when this entry
 * is the one.
 * @param[in] key what the caller of the list gave.
 * @param[in] entry the entry, whose payload is at `entry->data`; it stays on the list.
 * @param[in] reserved always 0. */
typedef int32_t (*SMDLListCallback)(void* key, SMDLListEntry* entry, uint32_t reserved);

/** Makes an empty list on the heap.
 * @return The list, which the caller releases with SMDLListFree; NULL when memory is short. */
KQSUPT_API SMDLList* SMDLListAlloc(void);

/** Makes a list that the caller provides empty, whatever it held.
 * @param[out] list the list, which stays the caller's; NULL is ignored. */
KQSUPT_API void SMDLListInitNoAlloc(SMDLList* list);

/** Frees a list of SMDLListAlloc, and none of its entries.
 * @param[in] list the list, which the call takes over and frees; its entries stay the caller's.
 *     NULL is ignored. */
KQSUPT_API void SMDLListFree(SMDLList* list);

/** Makes an entry that is on no list.
 *
 * With a payload, its data pointer points to that many bytes, not cleared, which follow the entry
 * in the same block and are aligned as a pointer is; with `payloadSize` 0 it is NULL, for the
 * caller to set.
 * @param[in] payloadSize the size of the payload in bytes; may be 0.
 * @return The entry, which the caller releases with SMDLListEntryFree; NULL when memory is short.
 *     */
KQSUPT_API SMDLListEntry* SMDLListEntryAlloc(uint32_t payloadSize);

/** Clears the links of an entry that the caller provides. Its data pointer stays.
 * @param[in,out] entry the entry, which stays the caller's; NULL is ignored. */
KQSUPT_API void SMDLListEntryInitNoAlloc(SMDLListEntry* entry);

/** Clears the data pointer of an entry of SMDLListEntryAlloc and frees it, with the payload that
 * follows it.
 * @param[in] entry the entry, on no list, which the call takes over and frees; what the caller set
 *     its data pointer to stays the caller's. NULL is ignored. */
KQSUPT_API void SMDLListEntryFree(SMDLListEntry* entry);

/** Links an entry before the first one.
 * @param[in,out] list the list, which stays the caller's; nothing is done when it is NULL.
 * @param[in,out] entry the entry, on no list. It stays the caller's; the list keeps the pointer
 *     until the entry is taken off. Nothing is done when it is NULL. */
KQSUPT_API void SMDLListInsertEntryAtHead(SMDLList* list, SMDLListEntry* entry);

/** Links an entry after the last one.
 * @param[in,out] list the list, which stays the caller's; nothing is done when it is NULL.
 * @param[in,out] entry the entry, on no list. It stays the caller's; the list keeps the pointer
 *     until the entry is taken off. Nothing is done when it is NULL. */
KQSUPT_API void SMDLListInsertEntryAtTail(SMDLList* list, SMDLListEntry* entry);

/** Links an entry after the entries at the head of the list that `compare` orders before `key`, so
 * that a list that is filled this way stays in ascending order.
 * @param[in,out] list the list, which stays the caller's.
 * @param[in,out] entry the entry, on no list. It stays the caller's; on success the list keeps the
 *     pointer until the entry is taken off.
 * @param[in] key handed to `compare`: the key of the entry. Borrowed for the call.
 * @param[in] compare orders the key against an entry.
 * @retval SM_STATUS_SUCCESS the entry is on the list.
 * @retval SM_STATUS_INVALID_PARAMETER an argument is NULL.
 * @retval SM_STATUS_ALREADY_EXISTS one of those entries or the one after them is equal; nothing was
 *     changed. */
KQSUPT_API SMStatus SMDLListInsertEntry(SMDLList* list, SMDLListEntry* entry, void* key,
                                        SMDLListCallback compare);

/** Finds the first entry, from the head, for which `visit` returns 0.
 * @param[in] list the list, borrowed for the call.
 * @param[in] context handed to `visit` as the key. Borrowed for the call.
 * @param[in] visit tells whether an entry is the one.
 * @return The entry, which stays on the list and the caller's; NULL when there is none or an
 *     argument is NULL. */
KQSUPT_API SMDLListEntry* SMDLListWalkAtHead(const SMDLList* list, void* context,
                                             SMDLListCallback visit);

/** Finds the last entry for which `visit` returns 0: the walk begins at the tail and goes
 * backwards.
 * @param[in] list the list, borrowed for the call.
 * @param[in] context handed to `visit` as the key. Borrowed for the call.
 * @param[in] visit tells whether an entry is the one.
 * @return The entry, which stays on the list and the caller's; NULL when there is none or an
 *     argument is NULL. */
KQSUPT_API SMDLListEntry* SMDLListWalkAtTail(const SMDLList* list, void* context,
                                             SMDLListCallback visit);

/** Puts an entry in the place of the first one that is equal to `key`, wherever it is in the list.
 * @param[in,out] list the list, which stays the caller's.
 * @param[in,out] newEntry the entry, on no list. It stays the caller's; the list keeps the pointer
 *     when it took it.
 * @param[in] key handed to `compare`. Borrowed for the call.
 * @param[in] compare orders the key against an entry.
 * @return The entry that was replaced, off the list and the caller's to free; its links keep their
 *     values. NULL, with nothing changed, when there is none or an argument is NULL. */
KQSUPT_API SMDLListEntry* SMDLListReplaceEntry(SMDLList* list, SMDLListEntry* newEntry, void* key,
                                               SMDLListCallback compare);

/** Unlinks an entry. The entry is not freed, and its links keep their values. Nothing is done when
 * the entry has no predecessor and is not the first one: it is on no list.
 * @param[in,out] list the list, which stays the caller's; nothing is done when it is NULL.
 * @param[in] entry the entry, which stays the caller's; nothing is done when it is NULL. */
KQSUPT_API void SMDLListDeleteEntry(SMDLList* list, SMDLListEntry* entry);

/** Unlinks the first entry and returns it; its links keep their values.
 * @param[in,out] list the list, which stays the caller's; may be NULL.
 * @return The entry, off the list and the caller's to free; NULL when the list is empty or NULL. */
KQSUPT_API SMDLListEntry* SMDLListRemoveEntryAtHead(SMDLList* list);

/** Unlinks the last entry and returns it, in constant time; its links keep their values.
 * @param[in,out] list the list, which stays the caller's; may be NULL.
 * @return The entry, off the list and the caller's to free; NULL when the list is empty or NULL. */
KQSUPT_API SMDLListEntry* SMDLListRemoveEntryAtTail(SMDLList* list);

/** Tells whether a list has no entry.
 * @param[in] list the list, borrowed for the call; may be NULL.
 * @return 1 when the list is NULL or has no entry, else 0. */
KQSUPT_API uint32_t SMDLListIsEmpty(const SMDLList* list);

/** @} */

/** @defgroup tree Red-black tree
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
 * Insert, search and delete take logarithmic time.
 * @{ */

/** A node of a tree, of which only the library knows what is in it. */
typedef struct SMRedBlackTreeNode SMRedBlackTreeNode;

/** A tree: its root, NULL when the tree is empty. */
typedef SMRedBlackTreeNode* SMRedBlackTree;

/** Orders a key against an item: negative when the key comes before it, positive when after, 0 when
 * they are equal.
 * @param[in] key what the caller of the tree gave.
 * @param[in] data the item, which stays the caller's.
 * @param[in] reserved always 0. */
typedef int32_t (*SMRedBlackTreeCompare)(void* key, void* data, uint32_t reserved);

/** Visits an item. What the result means depends on the mode of the walk; 0 stops it.
 * @param[in] context what the caller of the walk gave.
 * @param[in] data the item, which stays the caller's. */
typedef int32_t (*SMRedBlackTreeVisit)(void* context, void* data);

/** Told of an item before its node is freed.
 * @param[in] context what the caller gave.
 * @param[in] data the item, which stays the caller's, and may be released. */
typedef void (*SMRedBlackTreeFreed)(void* context, void* data);

/** How SMRedBlackTreeDataWalk goes through the tree. */
enum {
  /** The root alone. */
  SM_RED_BLACK_TREE_WALK_ROOT = 0,
  /** Every item in ascending order, until the callback returns 0. */
  SM_RED_BLACK_TREE_WALK_ASCENDING = 1,
  /** Every item in descending order, until the callback returns 0. */
  SM_RED_BLACK_TREE_WALK_DESCENDING = 2,
  /** Search: the callback is an SMRedBlackTreeCompare, cast to the type of a visit, and the context
   * its key. */
  SM_RED_BLACK_TREE_WALK_SEARCH = 3,
  /** Every item, each before those below it: the callback's sign chooses which side comes first,
   * negative the smaller items, positive the greater ones, and 0 stops. */
  SM_RED_BLACK_TREE_WALK_GUIDED = 4
};

/** Makes a tree empty without looking at what the cell held. Call it before the first insert.
 * @param[out] tree the cell, which stays the caller's; NULL is ignored. */
KQSUPT_API void SMRedBlackTreeAttach(SMRedBlackTree* tree);

/** Makes a tree empty and frees none of its nodes: for a tree whose nodes another cell now holds.
 * @param[out] tree the cell, which stays the caller's; NULL is ignored. */
KQSUPT_API void SMRedBlackTreeDetach(SMRedBlackTree* tree);

/** Tells whether a tree has no item.
 * @param[in] root the content of the cell, borrowed for the call.
 * @return 1 when the tree with this root has no item, else 0. */
KQSUPT_API uint32_t SMRedBlackTreeIsEmpty(SMRedBlackTree root);

/** Inserts an item at the place that `compare` gives `key`. The tree allocates one node. On failure
 * the tree is as it was.
 * @param[in,out] tree the cell, which stays the caller's.
 * @param[in] data the item. It stays the caller's; on success the tree keeps the pointer.
 * @param[in] key handed to `compare`: the key of the item. Borrowed for the call.
 * @param[in] compare orders the key against an item.
 * @retval SM_STATUS_SUCCESS the item is in the tree.
 * @retval SM_STATUS_INVALID_PARAMETER an argument is NULL.
 * @retval SM_STATUS_ALREADY_EXISTS an item equals the key.
 * @retval SM_STATUS_NO_MEMORY memory is short. */
KQSUPT_API SMStatus SMRedBlackTreeDataInsert(SMRedBlackTree* tree, void* data, void* key,
                                             SMRedBlackTreeCompare compare);

/** Puts an item in the place of the one that equals `key`. The new item must have the place of the
 * old one in the order.
 * @param[in,out] tree the cell, which stays the caller's.
 * @param[in] newData the new item. It stays the caller's; the tree keeps the pointer when it took
 *     it.
 * @param[in] key handed to `compare`. Borrowed for the call.
 * @param[in] compare orders the key against an item.
 * @return The item that was replaced, which is the caller's to release; NULL, with nothing changed,
 *     when an argument is NULL or no item equals the key. */
KQSUPT_API void* SMRedBlackTreeDataReplace(SMRedBlackTree* tree, void* newData, void* key,
                                           SMRedBlackTreeCompare compare);

/** Takes the item that equals `key` out of the tree and frees its node. The item is not freed and
 * not returned: a caller that needs it records it in `compare` when that returns 0.
 * @param[in,out] tree the cell, which stays the caller's, as the item does.
 * @param[in] key handed to `compare`. Borrowed for the call.
 * @param[in] compare orders the key against an item.
 * @retval SM_STATUS_SUCCESS the item is out of the tree.
 * @retval SM_STATUS_INVALID_PARAMETER an argument is NULL.
 * @retval SM_STATUS_DATA_NOT_FOUND no item equals the key. */
KQSUPT_API SMStatus SMRedBlackTreeDataDelete(SMRedBlackTree* tree, void* key,
                                             SMRedBlackTreeCompare compare);

/** Frees every node, the greater items before the smaller ones below the same node, and leaves the
 * tree empty.
 * @param[in,out] tree the cell, which stays the caller's, as the items do; NULL is ignored.
 * @param[in] context handed to `freed`; stays the caller's, and may be NULL.
 * @param[in] freed called with each item before its node goes, and may release the item; it must
 *     not use the tree. May be NULL. */
KQSUPT_API void SMRedBlackTreeDelete(SMRedBlackTree* tree, void* context,
                                     SMRedBlackTreeFreed freed);

/** Walks the tree until the callback stops the walk. The callback must not change the tree.
 * @param[in] root the content of the cell, borrowed for the call.
 * @param[in] context handed to `visit`; stays the caller's, and must not be NULL.
 * @param[in] visit called with the items; what its result means depends on the mode.
 * @param[in] mode one of the SM_RED_BLACK_TREE_WALK_ modes.
 * @return The item where the walk stopped, which stays in the tree and the caller's; NULL when it
 *     did not stop. Also NULL, without a call of `visit`, when `root`, `context` or `visit` is NULL
 *     or the mode is unknown. */
KQSUPT_API void* SMRedBlackTreeDataWalk(SMRedBlackTree root, void* context,
                                        SMRedBlackTreeVisit visit, uint32_t mode);

/** @} */

/** @defgroup hash_id Hash ID table
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
 *
 * @{ */

/** Which ID SMAcquireHashID takes. */
enum {
  /** The lowest one that is free. */
  SM_HASH_ID_LOWEST_FREE = 0,
  /** One above those in use, so that an ID that was released is not taken again at once: in the
   * last word that is used in part, else in the first one that is not used at all, the lowest of
   * the highest IDs in a row that are free. */
  SM_HASH_ID_AFTER_HIGHEST = 1
};

/** Tells how many bytes a table for the IDs 1 to `maxID` has.
 * @param[in] maxID the highest ID.
 * @return The number of bytes, a multiple of 4; 0 when `maxID` is 0 or above 0x3FFFFFFE. */
KQSUPT_API uint32_t SMHashTableBytesNeeded(uint32_t maxID);

/** Sets all bytes of a table to 0: no ID is in use.
 * @param[out] table the table, which stays the caller's.
 * @param[in] bytes the size of the table in bytes.
 * @retval SM_STATUS_SUCCESS always. */
KQSUPT_API SMStatus SMClearHashTable(void* table, uint32_t bytes);

/** Takes an ID that is free.
 * @param[in,out] table the table, which stays the caller's.
 * @param[in] bytes the size of the table in bytes.
 * @param[in] mode which ID: one of the modes SM_HASH_ID_.
 * @return The ID; 0 when none is free or the mode is another number. */
KQSUPT_API uint32_t SMAcquireHashID(void* table, uint32_t bytes, int32_t mode);

/** Takes the ID that the caller names.
 * @param[in,out] table the table, which stays the caller's.
 * @param[in] bytes the size of the table in bytes.
 * @param[in] id the ID, which may be 0.
 * @retval SM_STATUS_SUCCESS the ID was free and is now in use.
 * @retval SM_STATUS_OPERATION_FAILED the table has no such ID.
 * @retval SM_STATUS_ALREADY_EXISTS the ID is in use. */
KQSUPT_API SMStatus SMAcquireHashIDByID(void* table, uint32_t bytes, uint32_t id);

/** Tells whether an ID is in use.
 * @param[in] table the table, borrowed for the call.
 * @param[in] bytes the size of the table in bytes.
 * @param[in] id the ID.
 * @retval SM_STATUS_SUCCESS the ID is in use.
 * @retval SM_STATUS_INDEX_OUT_OF_RANGE the ID is not in use.
 * @retval SM_STATUS_OPERATION_FAILED the table has no such ID. */
KQSUPT_API SMStatus SMVerifyHashID(const void* table, uint32_t bytes, uint32_t id);

/** Makes an ID free again.
 * @param[in,out] table the table, which stays the caller's.
 * @param[in] bytes the size of the table in bytes.
 * @param[in] id the ID.
 * @retval SM_STATUS_SUCCESS the ID was in use and is now free.
 * @retval SM_STATUS_INDEX_OUT_OF_RANGE the ID is not in use.
 * @retval SM_STATUS_OPERATION_FAILED the table has no such ID. */
KQSUPT_API SMStatus SMReleaseHashID(void* table, uint32_t bytes, uint32_t id);

/** Finds the smallest ID in use.
 * @param[in] table the table, borrowed for the call.
 * @param[in] bytes the size of the table in bytes.
 * @return The ID, or 0. Also 0, whatever the other words hold, when ID 0 is the only one in use of
 *     those below 32. */
KQSUPT_API uint32_t SMGetMinInUseID(const void* table, uint32_t bytes);

/** Finds the largest ID in use.
 * @param[in] table the table, borrowed for the call.
 * @param[in] bytes the size of the table in bytes.
 * @return The ID, or 0. */
KQSUPT_API uint32_t SMGetMaxInUseID(const void* table, uint32_t bytes);

/** Begins to go through the IDs in use in ascending order.
 * @param[in] table the table, borrowed for the call.
 * @param[in] bytes the size of the table in bytes.
 * @param[out] wordCursor the caller's; set to 0 first, and receives the word of the ID.
 * @param[out] bitCursor the caller's; set to 0 first, and receives the bit of the ID.
 * @return The first ID, or 0 when there is none. Also 0 when a cursor is NULL. */
KQSUPT_API uint32_t SMFindFirstHashID(const void* table, uint32_t bytes, uint32_t* wordCursor,
                                      uint32_t* bitCursor);

/** Goes on through the IDs in use in ascending order, from behind the one that the last call
 * returned.
 * @param[in] table the table, borrowed for the call.
 * @param[in] bytes the size of the table in bytes.
 * @param[in,out] wordCursor the caller's; holds the word of the last ID, and receives that of the
 *     ID that is returned.
 * @param[in,out] bitCursor the caller's; holds the bit of the last ID, and receives that of the ID
 *     that is returned.
 * @return The ID, or 0 with the cursors as they are when there is none left. Also 0 when a cursor
 *     is NULL. */
KQSUPT_API uint32_t SMFindNextHashID(const void* table, uint32_t bytes, uint32_t* wordCursor,
                                     uint32_t* bitCursor);

/** @} */

/** @defgroup crc32 CRC-32
 *
 * The checksum of ISO-HDLC and zip files: reflected, polynomial 0xEDB88320; the ASCII digits
 * "123456789" give 0xCBF43926 and no bytes at all give 0. Lengths are in bytes. Pointers must not
 * be NULL, except for data of length 0.
 * @{ */

/** Computes the CRC-32 of bytes.
 * @param[in] data the bytes, borrowed for the call. May be NULL for length 0.
 * @param[in] length how many bytes.
 * @return The checksum. */
KQSUPT_API uint32_t SMCRC32Compute_vn(const void* data, uint32_t length);

/** Computes the CRC-32 of the bytes of a text before its NUL.
 * @param[in] text the text, borrowed for the call; not NULL.
 * @return The checksum. */
KQSUPT_API uint32_t SMCRC32Compute_str(const char* text);

/** Computes the CRC-32 of the bytes of a text before its NUL, each lowered first by the C library's
 * tolower in the locale of the process: the same for every spelling of a name that ignores case.
 * @param[in] text the text, borrowed for the call; not NULL.
 * @return The checksum. */
KQSUPT_API uint32_t SMCRC32Compute_strncase(const char* text);

/** Computes a checksum of its own kind, not the CRC-32 of the other functions, over `totalLength`
 * bytes: the first `dataLength` of them from `data` (fewer when `totalLength` is smaller), the
 * others 0.
 * @param[in] data the bytes, borrowed for the call. May be NULL for length 0.
 * @param[in] dataLength how many bytes there are at `data`.
 * @param[in] totalLength how many bytes to compute the checksum of. A negative one stands for 2^32
 *     less its amount: some 2 to 4 thousand million bytes.
 * @return The checksum; 0xFFFFFFFF with `totalLength` 0. */
KQSUPT_API uint32_t SMGenerateCRC32(const void* data, uint32_t dataLength, int32_t totalLength);

/** @} */

/** @defgroup md5 MD5 message digest
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
 * once. Pointers must not be NULL, except for data of length 0.
 * @{ */

/** A message and its digest. */
typedef struct SMRFC1321Context {
  uint32_t messageBitsHigh; /**< the length of the message so far, in bits: the high word */
  uint32_t messageBitsLow;  /**< and the low word */
  uint32_t state[4];        /**< the words A, B, C and D */
  uint32_t bytesInBlock;    /**< how many bytes of `block` are filled, 0 to 63 */
  uint8_t digest[16];       /**< the result: the four words of the state */
  uint8_t block[64];        /**< bytes of the message that do not make a whole block yet */
} SMRFC1321Context;

/** Starts a new message, whatever the context held. Clears the digest; the bytes of `block` stay.
 * @param[out] ctx the context, which stays the caller's; not NULL. */
KQSUPT_API void SMRFC1321Load(SMRFC1321Context* ctx);

/** Adds bytes to the message. Length 0 does nothing.
 * @param[in,out] ctx the context, which stays the caller's; not NULL.
 * @param[in] data the bytes, borrowed for the call. May be NULL for length 0.
 * @param[in] length how many bytes. */
KQSUPT_API void SMRFC1321AddMsg(SMRFC1321Context* ctx, const void* data, uint32_t length);

/** Ends the message and puts its digest into the 16 bytes `digest` of the context. The context is
 * not made ready for another message: call SMRFC1321Load before more is added.
 * @param[in,out] ctx the context, which stays the caller's; not NULL. */
KQSUPT_API void SMRFC1321ComputeMsgDigest(SMRFC1321Context* ctx);

/** Clears all 108 bytes of the context, so that nothing of the message stays in memory.
 * @param[out] ctx the context, which stays the caller's; not NULL. */
KQSUPT_API void SMRFC1321UnLoad(SMRFC1321Context* ctx);

/** @} */

/** @defgroup base64 Base64
 * Text of 64 characters, "=" as padding, without line breaks. Both functions always return 0.
 * Pointers must not be NULL, except for input of length 0.
 * @{ */

/** Encodes bytes as text.
 *
 * When `length` is not a multiple of 3, the byte that follows the input is read too, and its high
 * bits are part of the last character before the padding: it must be readable, and it must be 0 for
 * the text that other encoders give. A text with its NUL has such a byte.
 * @param[out] out the caller's; receives 4 * ceil(length / 3) characters and a NUL, and must have
 *     room for them.
 * @param[in] in the bytes, borrowed for the call. May be NULL for length 0.
 * @param[in] length how many bytes. A negative length is taken as 0: the NUL alone.
 * @param[in] alphabet the 64 characters for the values 0 to 63, borrowed for the call; with NULL
 *     they are those of RFC 4648.
 * @return 0. */
KQSUPT_API uint32_t SMBase64Encode(char* out, const void* in, int32_t length, const char* alphabet);

/** Decodes text in the alphabet of RFC 4648 to bytes.
 *
 * It writes 3 bytes for each whole group of four characters, or 1 when the third character is "=",
 * or 2 when the fourth alone is. A group that has "=" as its first or second character gives
 * nothing. Characters that do not make a whole group are passed over.
 *
 * The number of bytes is not returned: the caller works it out from the input. A character outside
 * the alphabet is not reported; it is taken as the value 0xFF, of which the bits that reach beyond
 * its own six are combined with those of its neighbours or cut off.
 * @param[out] out the caller's; receives the bytes and a NUL after them. It may be `in`, and needs
 *     room for 3 * (length / 4) + 1 bytes at most.
 * @param[in] in the text, borrowed for the call. May be NULL for length 0.
 * @param[in] length how many characters. A negative length is taken as 0.
 * @return 0. */
KQSUPT_API uint32_t SMBase64Decode(void* out, const char* in, int32_t length);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
