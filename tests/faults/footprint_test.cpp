// How many blocks of memory a record takes, and which calls take none.

#include <algorithm>
#include <iterator>

#include "gtest/gtest.h"
#include "kqsupt/containers.h"
#include "support/failing_heap.h"
#include "support/records.h"

namespace kqsupt::tests {
namespace {

constexpr uint16_t kEntries = 200;
constexpr uint64_t kBlocksOfRecord = 1 + 2 * kEntries;  // itself, its entries, their nodes

template <class Body>
uint64_t allocations_of(Body body) {
  fail_allocation(0, Fault::kOnce);
  body();
  return stop_failing();
}

Record record_of_many() {
  Record record = new_record();
  const uint8_t value[16] = {};
  for (uint16_t id = 1; id <= kEntries; ++id) {
    (void)SMSDOConfigAddData(record.get(), id, kOpaque, value, id % 16U + 1, 0);
  }
  return record;
}

TEST(Footprint, RecordAllocatesItsNodesItsEntriesAndItself) {
  const int64_t before = live_blocks();
  EXPECT_EQ(allocations_of([] { (void)record_of_many(); }), kBlocksOfRecord);
  EXPECT_EQ(live_blocks(), before);
}

TEST(Footprint, CloneAddsOneBuffer) {
  const Record record = record_of_many();
  Record copy;
  EXPECT_EQ(allocations_of([&] { copy = clone_of(record); }), kBlocksOfRecord + 1);
}

TEST(Footprint, CompareTakesTwoBuffers) {
  const Record record = record_of_many();
  EXPECT_EQ(allocations_of([&] { EXPECT_TRUE(equal(record, record)); }), 2U);
}

TEST(Footprint, SerializingAndReadingAllocateNothing) {
  Record record = record_of_many();
  Record child = record_of_many();
  ASSERT_EQ(add_child(record, 1000, child), SM_STATUS_SUCCESS);
  SMSDOConfig* const records[] = {record.get(), record.get()};
  Bytes block(100000);
  Bytes array(100000);
  EXPECT_EQ(allocations_of([&] {
              auto size = static_cast<uint32_t>(block.size());
              EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), SM_STATUS_SUCCESS);
              size = static_cast<uint32_t>(array.size());
              EXPECT_EQ(SMSDOConfigArrayToBinaryArray(records, 2, array.data(), &size),
                        SM_STATUS_SUCCESS);
              uint8_t value[16];
              uint16_t id = 0;
              size = sizeof value;
              EXPECT_EQ(SMSDOBinaryGetDataByID(block.data(), 7, nullptr, value, &size),
                        SM_STATUS_SUCCESS);
              size = sizeof value;
              EXPECT_EQ(SMSDOBinaryGetDataByIndex(block.data(), 7, &id, nullptr, value, &size),
                        SM_STATUS_SUCCESS);
              size = sizeof value;
              EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 7, nullptr, value, &size),
                        SM_STATUS_SUCCESS);
              size = sizeof value;
              EXPECT_EQ(SMSDOConfigGetDataByIndex(record.get(), 7, &id, nullptr, value, &size),
                        SM_STATUS_SUCCESS);
              EXPECT_EQ(
                  SMSDOBinaryWalk(array.data(), nullptr, nullptr, nullptr, nullptr, nullptr, 1),
                  SM_STATUS_SUCCESS);
            }),
            0U);
}

TEST(Footprint, AnAddOfASingleBlockThatFailsLosesTheConvertedRecord) {
  const Record record = record_of(4);
  const Bytes block = serialized(record_of(5));
  const int64_t before = live_blocks();
  EXPECT_EQ(add(record, 1, kBlock, block), SM_STATUS_ALREADY_EXISTS);
  EXPECT_EQ(live_blocks() - before, 3) << "the record, its entry, its node";
}

int32_t by_key(void* key, SMDLListEntry* entry, uint32_t) {
  return *static_cast<int*>(key) - *static_cast<int*>(entry->data);
}

TEST(Footprint, ListsAllocateTheirHeadsAndEntriesAlone) {
  SMDLList* list = nullptr;
  SMDLListEntry* entries[3] = {};
  EXPECT_EQ(allocations_of([&] { list = SMDLListAlloc(); }), 1U);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(allocations_of([&] { entries[i] = SMDLListEntryAlloc(sizeof i); }), 1U);
    *static_cast<int*>(entries[i]->data) = i;
  }
  EXPECT_EQ(allocations_of([&] {
              int key = 1;
              SMDLListInsertEntryAtHead(list, entries[0]);
              SMDLListInsertEntryAtTail(list, entries[2]);
              EXPECT_EQ(SMDLListInsertEntry(list, entries[1], &key, by_key), SM_STATUS_SUCCESS);
              EXPECT_EQ(SMDLListWalkAtHead(list, &key, by_key), entries[1]);
              EXPECT_EQ(SMDLListWalkAtTail(list, &key, by_key), entries[1]);
              EXPECT_EQ(SMDLListReplaceEntry(list, entries[1], &key, by_key), entries[1]);
              SMDLListDeleteEntry(list, entries[1]);
              EXPECT_EQ(SMDLListRemoveEntryAtHead(list), entries[0]);
              EXPECT_EQ(SMDLListRemoveEntryAtTail(list), entries[2]);
            }),
            0U);
  std::for_each(std::begin(entries), std::end(entries), SMDLListEntryFree);
  SMDLListFree(list);
}

TEST(Footprint, IdsAllocateNothing) {
  uint32_t table[4];
  EXPECT_EQ(allocations_of([&] {
              uint32_t word = 0;
              uint32_t bit = 0;
              SMClearHashTable(table, sizeof table);
              EXPECT_EQ(SMAcquireHashID(table, sizeof table, SM_HASH_ID_LOWEST_FREE), 1U);
              EXPECT_EQ(SMAcquireHashID(table, sizeof table, SM_HASH_ID_AFTER_HIGHEST), 2U);
              EXPECT_EQ(SMAcquireHashIDByID(table, sizeof table, 9), SM_STATUS_SUCCESS);
              EXPECT_EQ(SMVerifyHashID(table, sizeof table, 9), SM_STATUS_SUCCESS);
              EXPECT_EQ(SMFindFirstHashID(table, sizeof table, &word, &bit), 1U);
              EXPECT_EQ(SMFindNextHashID(table, sizeof table, &word, &bit), 2U);
              EXPECT_EQ(SMGetMinInUseID(table, sizeof table), 1U);
              EXPECT_EQ(SMGetMaxInUseID(table, sizeof table), 9U);
              EXPECT_EQ(SMReleaseHashID(table, sizeof table, 9), SM_STATUS_SUCCESS);
            }),
            0U);
}

}  // namespace
}  // namespace kqsupt::tests
