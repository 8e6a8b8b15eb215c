// The containers' exported functions.

#include "kqsupt/containers.h"

#include "containers/red_black_tree.h"

using namespace kqsupt;

extern "C" {

void SMRedBlackTreeAttach(SMRedBlackTree* tree) {
  containers::tree_set_empty(tree);
}
void SMRedBlackTreeDetach(SMRedBlackTree* tree) {
  containers::tree_set_empty(tree);
}
uint32_t SMRedBlackTreeIsEmpty(SMRedBlackTree root) {
  return containers::tree_is_empty(root);
}

SMStatus SMRedBlackTreeDataInsert(SMRedBlackTree* tree, void* data, void* key,
                                  SMRedBlackTreeCompare compare) {
  return containers::tree_insert(tree, data, key, compare);
}

void* SMRedBlackTreeDataReplace(SMRedBlackTree* tree, void* newData, void* key,
                                SMRedBlackTreeCompare compare) {
  return containers::tree_replace(tree, newData, key, compare);
}

SMStatus SMRedBlackTreeDataDelete(SMRedBlackTree* tree, void* key, SMRedBlackTreeCompare compare) {
  return containers::tree_delete(tree, key, compare);
}

void SMRedBlackTreeDelete(SMRedBlackTree* tree, void* context, SMRedBlackTreeFreed freed) {
  containers::tree_delete_all(tree, context, freed);
}

void* SMRedBlackTreeDataWalk(SMRedBlackTree root, void* context, SMRedBlackTreeVisit visit,
                             uint32_t mode) {
  return containers::tree_walk(root, context, visit, mode);
}

}  // extern "C"
