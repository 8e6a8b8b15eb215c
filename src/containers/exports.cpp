// The containers' exported functions.

#include "kqsupt/containers.h"

#include "containers/base64.h"
#include "containers/crc32.h"
#include "containers/md5.h"
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

uint32_t SMCRC32Compute_vn(const void* data, uint32_t length) {
  return containers::crc32_of_bytes(data, length);
}
uint32_t SMCRC32Compute_str(const char* text) {
  return containers::crc32_of_text(text);
}
uint32_t SMCRC32Compute_strncase(const char* text) {
  return containers::crc32_of_lowered_text(text);
}
uint32_t SMGenerateCRC32(const void* data, uint32_t dataLength, int32_t totalLength) {
  return containers::generate_crc32(data, dataLength, totalLength);
}

void SMRFC1321Load(SMRFC1321Context* ctx) {
  containers::load_digest(ctx);
}
void SMRFC1321AddMsg(SMRFC1321Context* ctx, const void* data, uint32_t length) {
  containers::add_message(ctx, data, length);
}
void SMRFC1321ComputeMsgDigest(SMRFC1321Context* ctx) {
  containers::compute_digest(ctx);
}
void SMRFC1321UnLoad(SMRFC1321Context* ctx) {
  containers::unload_digest(ctx);
}

uint32_t SMBase64Encode(char* out, const void* in, int32_t length, const char* alphabet) {
  return containers::base64_encode(out, in, length, alphabet);
}
uint32_t SMBase64Decode(void* out, const char* in, int32_t length) {
  return containers::base64_decode(out, in, length);
}

}  // extern "C"
