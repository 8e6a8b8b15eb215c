// How many blocks of memory a record takes, and which calls take none.

#include "gtest/gtest.h"
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

}  // namespace
}  // namespace kqsupt::tests
