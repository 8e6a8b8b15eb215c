/* Containers of the caller's data items. A container never locks: the caller serialises access. */
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

#ifdef __cplusplus
}
#endif

#endif
