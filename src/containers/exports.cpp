// The containers' exported functions.

#include "kqsupt/containers.h"

#include "containers/base64.h"
#include "containers/crc32.h"
#include "containers/hash_ids.h"
#include "containers/linked_list.h"
#include "containers/md5.h"
#include "containers/red_black_tree.h"
#include "frame/heap.h"

using namespace kqsupt;

extern "C" {

SMSLList* SMSLListAlloc() {
  return containers::list_alloc<SMSLList>();
}
void SMSLListInitNoAlloc(SMSLList* list) {
  containers::list_set_empty(list);
}
void SMSLListFree(SMSLList* list) {
  frame::release(list);
}
SMSLListEntry* SMSLListEntryAlloc(uint32_t payloadSize) {
  return containers::list_entry_alloc<SMSLList>(payloadSize);
}
void SMSLListEntryInitNoAlloc(SMSLListEntry* entry) {
  containers::list_entry_clear_links(entry);
}
void SMSLListEntryFree(SMSLListEntry* entry) {
  containers::list_entry_free(entry);
}
void SMSLListInsertEntryAtHead(SMSLList* list, SMSLListEntry* entry) {
  containers::list_insert_at_head(list, entry);
}
void SMSLListInsertEntryAtTail(SMSLList* list, SMSLListEntry* entry) {
  containers::list_insert_at_tail(list, entry);
}
SMStatus SMSLListInsertEntry(SMSLList* list, SMSLListEntry* entry, void* key,
                             SMSLListCallback compare) {
  return containers::list_insert(list, entry, key, compare);
}
SMSLListEntry* SMSLListWalkAtHead(const SMSLList* list, void* context, SMSLListCallback visit) {
  return containers::list_walk_at_head(list, context, visit);
}
SMSLListEntry* SMSLListReplaceEntry(SMSLList* list, SMSLListEntry* newEntry, void* key,
                                    SMSLListCallback compare) {
  return containers::list_replace(list, newEntry, key, compare);
}
void SMSLListDeleteEntry(SMSLList* list, SMSLListEntry* previousEntry, SMSLListEntry* entry) {
  containers::list_delete(list, previousEntry, entry);
}
SMSLListEntry* SMSLListRemoveEntryAtHead(SMSLList* list) {
  return containers::list_remove_at_head(list);
}
SMSLListEntry* SMSLListRemoveEntryAtTail(SMSLList* list) {
  return containers::list_remove_at_tail(list);
}
uint32_t SMSLListIsEmpty(const SMSLList* list) {
  return containers::list_is_empty(list);
}

SMDLList* SMDLListAlloc() {
  return containers::list_alloc<SMDLList>();
}
void SMDLListInitNoAlloc(SMDLList* list) {
  containers::list_set_empty(list);
}
void SMDLListFree(SMDLList* list) {
  frame::release(list);
}
SMDLListEntry* SMDLListEntryAlloc(uint32_t payloadSize) {
  return containers::list_entry_alloc<SMDLList>(payloadSize);
}
void SMDLListEntryInitNoAlloc(SMDLListEntry* entry) {
  containers::list_entry_clear_links(entry);
}
void SMDLListEntryFree(SMDLListEntry* entry) {
  containers::list_entry_free(entry);
}
void SMDLListInsertEntryAtHead(SMDLList* list, SMDLListEntry* entry) {
  containers::list_insert_at_head(list, entry);
}
void SMDLListInsertEntryAtTail(SMDLList* list, SMDLListEntry* entry) {
  containers::list_insert_at_tail(list, entry);
}
SMStatus SMDLListInsertEntry(SMDLList* list, SMDLListEntry* entry, void* key,
                             SMDLListCallback compare) {
  return containers::list_insert(list, entry, key, compare);
}
SMDLListEntry* SMDLListWalkAtHead(const SMDLList* list, void* context, SMDLListCallback visit) {
  return containers::list_walk_at_head(list, context, visit);
}
SMDLListEntry* SMDLListWalkAtTail(const SMDLList* list, void* context, SMDLListCallback visit) {
  return containers::list_walk_at_tail(list, context, visit);
}
SMDLListEntry* SMDLListReplaceEntry(SMDLList* list, SMDLListEntry* newEntry, void* key,
                                    SMDLListCallback compare) {
  return containers::list_replace(list, newEntry, key, compare);
}
void SMDLListDeleteEntry(SMDLList* list, SMDLListEntry* entry) {
  containers::list_delete(list, entry);
}
SMDLListEntry* SMDLListRemoveEntryAtHead(SMDLList* list) {
  return containers::list_remove_at_head(list);
}
SMDLListEntry* SMDLListRemoveEntryAtTail(SMDLList* list) {
  return containers::list_remove_at_tail(list);
}
uint32_t SMDLListIsEmpty(const SMDLList* list) {
  return containers::list_is_empty(list);
}

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

uint32_t SMHashTableBytesNeeded(uint32_t maxID) {
  return containers::bytes_for_ids(maxID);
}
SMStatus SMClearHashTable(void* table, uint32_t bytes) {
  return containers::clear_ids(table, bytes);
}
uint32_t SMAcquireHashID(void* table, uint32_t bytes, int32_t mode) {
  return containers::acquire_id(table, bytes, mode);
}
SMStatus SMAcquireHashIDByID(void* table, uint32_t bytes, uint32_t id) {
  return containers::acquire_id_by_id(table, bytes, id);
}
SMStatus SMVerifyHashID(const void* table, uint32_t bytes, uint32_t id) {
  return containers::verify_id(table, bytes, id);
}
SMStatus SMReleaseHashID(void* table, uint32_t bytes, uint32_t id) {
  return containers::release_id(table, bytes, id);
}
uint32_t SMGetMinInUseID(const void* table, uint32_t bytes) {
  return containers::min_id_in_use(table, bytes);
}
uint32_t SMGetMaxInUseID(const void* table, uint32_t bytes) {
  return containers::max_id_in_use(table, bytes);
}
uint32_t SMFindFirstHashID(const void* table, uint32_t bytes, uint32_t* wordCursor,
                           uint32_t* bitCursor) {
  return containers::find_first_id(table, bytes, wordCursor, bitCursor);
}
uint32_t SMFindNextHashID(const void* table, uint32_t bytes, uint32_t* wordCursor,
                          uint32_t* bitCursor) {
  return containers::find_next_id(table, bytes, wordCursor, bitCursor);
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
