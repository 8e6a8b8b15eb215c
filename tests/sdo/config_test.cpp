// Records in memory: adding, reading, replacing, removing, and the size they keep.

#include "gtest/gtest.h"
#include "support/records.h"

namespace {

using namespace kqsupt::tests;

uint32_t binary_size(const Record& record) {
  return SMSDOConfigGetBinarySize(record.get());
}
uint32_t count(const Record& record) {
  return SMSDOConfigGetCount(record.get());
}

// The pointer that a child entry holds.
SMSDOConfig* child_of(const Record& record, uint16_t id) {
  SMSDOConfig* child = nullptr;
  uint32_t size = sizeof child;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), id, nullptr, &child, &size), SM_STATUS_SUCCESS);
  return child;
}

TEST(SdoConfig, NewRecordIsEmptyAndCostsItsHeader) {
  const Record record = new_record();
  EXPECT_EQ(count(record), 0U);
  EXPECT_EQ(binary_size(record), 8U);
}

TEST(SdoConfig, NullHasNoCountAndNoSize) {
  EXPECT_EQ(SMSDOConfigGetCount(nullptr), 0xFFFFFFFFU);
  EXPECT_EQ(SMSDOConfigGetBinarySize(nullptr), 0U);
  EXPECT_EQ(SMSDOConfigReCalcBinarySize(nullptr), 0U);
  SMSDOConfigFree(nullptr);
}

TEST(SdoConfigAdd, TakesEveryIdButThreeAtTheEnds) {
  const Record record = new_record();
  EXPECT_EQ(add_sized(record, 0, 1), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(add_sized(record, 0xFFFE, 1), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(add_sized(record, 0xFFFF, 1), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(add_sized(record, 1, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(add_sized(record, 0xFFFD, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(count(record), 2U);
}

TEST(SdoConfigAdd, RefusesWhatIsMissing) {
  const Record record = new_record();
  const uint8_t value = 1;
  EXPECT_EQ(SMSDOConfigAddData(nullptr, 1, 1, &value, 1, 0), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigAddData(record.get(), 1, 0, &value, 1, 0), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigAddData(record.get(), 1, 1, nullptr, 1, 0), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigAddData(record.get(), 1, 1, &value, 0, 0), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(count(record), 0U);
}

TEST(SdoConfigAdd, TakesBaseTypeZeroWithAFlag) {
  const Record record = new_record();
  EXPECT_EQ(add(record, 1, 0x20, {1}), SM_STATUS_SUCCESS);
  uint8_t type = 0;
  uint32_t size = 0;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, &type, nullptr, &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(type, 0x20);
}

TEST(SdoConfigAdd, FourByteValueCostsEightBytes) {
  for (uint32_t size = 1; size <= 4; ++size) {
    EXPECT_EQ(binary_size(record_of(size)), 16U) << size;
  }
}

TEST(SdoConfigAdd, FiveByteValueCostsThirteenBytes) {
  EXPECT_EQ(binary_size(record_of(5)), 8U + 13U);
}

TEST(SdoConfigAdd, EqualIdIsRefusedAndTheFirstValueStays) {
  const Record record = record_of(4);
  const Record before = clone_of(record);
  EXPECT_EQ(add_sized(record, 1, 5), SM_STATUS_ALREADY_EXISTS);
  EXPECT_TRUE(equal(record, before));
  EXPECT_EQ(add_sized(record, 1, 5, 2), SM_STATUS_ALREADY_EXISTS) << "only replace 1 replaces";
  EXPECT_TRUE(equal(record, before));
}

TEST(SdoConfigAdd, ReplaceKeepsTheCountAndMovesTheSize) {
  const Record record = record_of(4);
  EXPECT_EQ(add_sized(record, 1, 20, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(count(record), 1U);
  EXPECT_EQ(binary_size(record), 8U + 28U);
  EXPECT_EQ(add_sized(record, 1, 2, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 16U);
}

TEST(SdoConfigAdd, ReplaceOfAnAbsentIdInserts) {
  const Record record = record_of(4);
  EXPECT_EQ(add_sized(record, 2, 6, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(count(record), 2U);
  EXPECT_EQ(binary_size(record), 16U + 14U);
}

TEST(SdoConfigAdd, ALastByteBelowSixtyFourKibFits) {
  const Record record = new_record();
  EXPECT_EQ(add_sized(record, 1, 65535 - 8 - 8 + 1), SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(binary_size(record), 8U);
  EXPECT_EQ(add_sized(record, 1, 65535 - 8 - 8), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 65535U);
  EXPECT_EQ(add_sized(record, 2, 1), SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(count(record), 1U);
  EXPECT_EQ(serialized(record).size(), 65535U);
}

TEST(SdoConfigAdd, RoomIsTestedBeforeTheReplacedValueGivesItBack) {
  const Record record = new_record();
  ASSERT_EQ(add_sized(record, 1, 40000), SM_STATUS_SUCCESS);
  const Record before = clone_of(record);
  EXPECT_EQ(add_sized(record, 1, 40000, 1), SM_STATUS_OUT_OF_SPACE);
  EXPECT_TRUE(equal(record, before));
}

TEST(SdoConfigAdd, SizesThatWouldWrapAreOutOfSpace) {
  const Record record = record_of(4);
  const uint8_t value = 1;
  for (const uint32_t size : {0xFFFFFFFFU, 0xFFFFFFF8U, 0xFFFFFFF0U, 0x80000000U}) {
    EXPECT_EQ(SMSDOConfigAddData(record.get(), 2, 1, &value, size, 0), SM_STATUS_OUT_OF_SPACE);
    EXPECT_EQ(SMSDOConfigAddData(record.get(), 2, kChildren, &value, size & 0xFFFFFFF8U, 0),
              SM_STATUS_OUT_OF_SPACE);
  }
  EXPECT_EQ(count(record), 1U);
}

TEST(SdoConfigAdd, HoldsAsManySmallEntriesAsBytesAllow) {
  const Record record = new_record();
  uint16_t id = 0;
  while (add_sized(record, ++id, 1) == SM_STATUS_SUCCESS) {
  }
  EXPECT_EQ(count(record), (65535U - 8U) / 8U);
  EXPECT_EQ(binary_size(record), 8U + 8U * 8190U);
}

TEST(SdoConfigChild, BelongsToTheRecordWhateverSizeTheCallerPasses) {
  for (const uint32_t size : {1U, 4U, 8U, 1000U}) {
    const Record record = new_record();
    Record child = record_of(5);
    const SMSDOConfig* pointer = child.get();
    ASSERT_EQ(add_child(record, 1, child, 0, size), SM_STATUS_SUCCESS);
    uint8_t type = 0;
    uint32_t value_size = 0;
    EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, &type, nullptr, &value_size),
              SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(value_size, sizeof(void*));
    EXPECT_EQ(type, kChild);
    EXPECT_EQ(child_of(record, 1), pointer);
    EXPECT_EQ(binary_size(record), 8U + 8U + 21U);
  }
}

TEST(SdoConfigChild, StaysTheCallersWhenTheAddFails) {
  const Record record = record_of(4);
  Record child = record_of(4);
  EXPECT_EQ(add_child(record, 1, child), SM_STATUS_ALREADY_EXISTS);
  EXPECT_EQ(count(child), 1U);
}

TEST(SdoConfigChild, EmptyOneCostsSixteenBytes) {
  const Record record = new_record();
  Record child = new_record();
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 16U);
}

TEST(SdoConfigChildren, CostTheirSizesAndAnArrayHeader) {
  const Record record = new_record();
  ASSERT_EQ(add_children(record, 1, {record_of(4).release(), record_of(5).release()}),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 8U + 8U + 16U + 21U);
  uint32_t size = 0;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, nullptr, nullptr, &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 2 * sizeof(void*));
}

TEST(SdoConfigChildren, NullsAmongThemCostNothingAndAreLeftOut) {
  const Record record = new_record();
  ASSERT_EQ(add_children(record, 1, {nullptr, record_of(4).release(), nullptr}), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 8U + 8U + 16U);
  const Bytes block = serialized(record);
  EXPECT_EQ(word_at<uint16_t>(block, 16 + 4), 1U) << "elements of the array block";
}

TEST(SdoConfigChildren, PartOfAPointerIsRefused) {
  const Record record = new_record();
  SMSDOConfig* child = nullptr;
  EXPECT_EQ(SMSDOConfigAddData(record.get(), 1, kChildren, &child, sizeof child - 1, 0),
            SM_STATUS_INVALID_PARAMETER);
}

TEST(SdoConfigChildren, MoreThanAnArrayCountsAreOutOfSpace) {
  const Record record = new_record();
  const std::vector<SMSDOConfig*> nulls(65536);
  EXPECT_EQ(add_children(record, 1, nulls), SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(add_children(record, 1, {nulls.begin(), nulls.end() - 1}), SM_STATUS_SUCCESS);
}

TEST(SdoConfigReplace, FreesTheOldChild) {  // the address sanitizer would tell if it did not
  const Record record = new_record();
  Record old_child = record_of(5);
  Record new_child = record_of(6);
  ASSERT_EQ(add_child(record, 1, old_child), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_child(record, 1, new_child, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 8U + 22U);
  EXPECT_EQ(count(record), 1U);
}

TEST(SdoConfigReplace, TheSameChildIsKept) {
  const Record record = new_record();
  Record child = record_of(5);
  SMSDOConfig* pointer = child.get();
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigAddData(record.get(), 1, kChild, pointer, 4, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigGetCount(child_of(record, 1)), 1U);
}

TEST(SdoConfigReplace, ChildrenThatTheNewArraySharesAreKept) {
  const Record record = new_record();
  SMSDOConfig* shared = record_of(5).release();
  ASSERT_EQ(add_children(record, 1, {record_of(4).release(), shared}), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_children(record, 1, {shared, record_of(6).release()}, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigGetCount(shared), 1U);
  EXPECT_EQ(binary_size(record), 8U + 8U + 8U + 21U + 22U);
}

TEST(SdoConfigReplace, AnotherTypeDoesNotFreeTheOldChild) {
  const Record record = new_record();
  Record child = record_of(5);
  const Record kept(child.get());  // what the replacement leaves is this test's to free
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  EXPECT_EQ(add_sized(record, 1, 4, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(count(kept), 1U);
  EXPECT_EQ(binary_size(record), 16U);
}

TEST(SdoConfigReplace, AChildInPlaceOfAnOpaqueValueFreesNothingElse) {
  const Record record = record_of(sizeof(void*));
  Record child = record_of(5);
  EXPECT_EQ(add_child(record, 1, child, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 8U + 21U);
}

TEST(SdoConfigGetById, CopiesValueTypeAndSize) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 7, 0xE3, {1, 2, 3}), SM_STATUS_SUCCESS);
  uint8_t type = 0;
  uint8_t value[4] = {9, 9, 9, 9};
  uint32_t size = sizeof value;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 7, &type, value, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(type, 0xE3);
  EXPECT_EQ(size, 3U);
  EXPECT_EQ(Bytes(value, value + 4), (Bytes{1, 2, 3, 9}));
}

TEST(SdoConfigGetById, ReportsTypeAndSizeWithoutABufferOrWithASmallOne) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 7, 0x23, {1, 2, 3}), SM_STATUS_SUCCESS);
  uint8_t type = 0;
  uint32_t size = 100;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 7, &type, nullptr, &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 3U);
  EXPECT_EQ(type, 0x23);
  uint8_t value[3] = {9, 9, 9};
  size = 2;
  type = 0;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 7, &type, value, &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 3U);
  EXPECT_EQ(type, 0x23);
  EXPECT_EQ(value[0], 9);
}

TEST(SdoConfigGetById, TheTypeNeedNotBeAsked) {
  const Record record = record_of(4);
  uint8_t value[4];
  uint32_t size = sizeof value;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, nullptr, value, &size), SM_STATUS_SUCCESS);
}

TEST(SdoConfigGetById, RefusesWhatIsMissingBeforeItLooks) {
  const Record record = new_record();
  uint32_t size = 77;
  EXPECT_EQ(SMSDOConfigGetDataByID(nullptr, 1, nullptr, nullptr, &size),
            SM_STATUS_INVALID_PARAMETER);
  for (const uint16_t id : {uint16_t{0}, uint16_t{0xFFFE}, uint16_t{0xFFFF}}) {
    EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), id, nullptr, nullptr, &size),
              SM_STATUS_INVALID_PARAMETER);
  }
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, nullptr, nullptr, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, nullptr, nullptr, &size),
            SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(size, 77U);
}

TEST(SdoConfigGetByIndex, CountsInAscendingOrderOfIds) {
  const Record record = new_record();
  for (const uint16_t id : {uint16_t{500}, uint16_t{3}, uint16_t{0xFFFD}, uint16_t{40}}) {
    ASSERT_EQ(add_sized(record, id, 4), SM_STATUS_SUCCESS);
  }
  const uint16_t expected[] = {3, 40, 500, 0xFFFD};
  for (uint32_t index = 0; index < 4; ++index) {
    uint16_t id = 0;
    uint8_t type = 0;
    uint8_t value[4];
    uint32_t size = sizeof value;
    EXPECT_EQ(SMSDOConfigGetDataByIndex(record.get(), index, &id, &type, value, &size),
              SM_STATUS_SUCCESS);
    EXPECT_EQ(id, expected[index]);
    EXPECT_EQ(type, kOpaque);
    EXPECT_EQ(size, 4U);
  }
}

TEST(SdoConfigGetByIndex, ReportsIdTypeAndSizeAlsoWhenTheBufferDoesNotDo) {
  const Record record = record_of(3);
  uint16_t id = 0;
  uint8_t type = 0;
  uint32_t size = 0;
  EXPECT_EQ(SMSDOConfigGetDataByIndex(record.get(), 0, &id, &type, nullptr, &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(id, 1U);
  EXPECT_EQ(type, kOpaque);
  EXPECT_EQ(size, 3U);
}

TEST(SdoConfigGetByIndex, RefusesWhatIsMissingBeforeTheIndex) {
  const Record record = record_of(3);
  uint16_t id = 77;
  uint32_t size = 77;
  EXPECT_EQ(SMSDOConfigGetDataByIndex(nullptr, 9, &id, nullptr, nullptr, &size),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigGetDataByIndex(record.get(), 9, nullptr, nullptr, nullptr, &size),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigGetDataByIndex(record.get(), 9, &id, nullptr, nullptr, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigGetDataByIndex(record.get(), 1, &id, nullptr, nullptr, &size),
            SM_STATUS_INDEX_OUT_OF_RANGE);
  EXPECT_EQ(id, 77U);
  EXPECT_EQ(size, 77U);
}

TEST(SdoConfigRemove, ByIdGivesBackTheCost) {
  const Record record = new_record();
  ASSERT_EQ(add_sized(record, 1, 4), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_sized(record, 2, 50), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 2, 0, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(count(record), 1U);
  EXPECT_EQ(binary_size(record), 16U);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 2, 0, 0), SM_STATUS_DATA_NOT_FOUND);
}

TEST(SdoConfigRemove, AnInvalidIdRemovesByIndex) {
  const Record record = new_record();
  for (const uint16_t id : {uint16_t{30}, uint16_t{10}, uint16_t{20}}) {
    ASSERT_EQ(add_sized(record, id, 4), SM_STATUS_SUCCESS);
  }
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 0, 0, 0), SM_STATUS_SUCCESS);
  uint32_t size = 0;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 10, nullptr, nullptr, &size),
            SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 0xFFFE, 2, 0), SM_STATUS_INDEX_OUT_OF_RANGE);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 0xFFFF, 1, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 30, nullptr, nullptr, &size),
            SM_STATUS_DATA_NOT_FOUND);
}

TEST(SdoConfigRemove, AllIgnoresIdAndIndex) {
  const Record record = new_record();
  Record child = record_of(5);
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_sized(record, 2, 50), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 99, 99, 7), SM_STATUS_SUCCESS);
  EXPECT_EQ(count(record), 0U);
  EXPECT_EQ(binary_size(record), 8U);
  EXPECT_EQ(add_sized(record, 1, 4), SM_STATUS_SUCCESS);
}

TEST(SdoConfigRemove, RefusesNullFirst) {
  EXPECT_EQ(SMSDOConfigRemoveData(nullptr, 1, 0, 1), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigRemoveData(new_record().get(), 0, 0, 0), SM_STATUS_INDEX_OUT_OF_RANGE);
}

TEST(SdoConfigRemove, FreesTheChildrenOfTheEntry) {
  const Record record = new_record();
  ASSERT_EQ(add_children(record, 1, {record_of(4).release(), record_of(5).release()}),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 1, 0, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U);
}

TEST(SdoConfigReCalc, CountsSmallValuesInFullAndArraysWithoutTheirHeader) {
  const Record record = new_record();
  ASSERT_EQ(add_sized(record, 1, 3), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_sized(record, 2, 30), SM_STATUS_SUCCESS);
  Record child = record_of(5);
  ASSERT_EQ(add_child(record, 3, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_children(record, 4, {record_of(6).release(), record_of(7).release()}),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 8 + (8 + 30) + (8 + 21) + (8 + 8 + 22 + 23));
  const uint32_t recomputed = 8U + (8 + 3) + (8 + 30) + (8 + 21) + (8 + 22 + 23);
  EXPECT_EQ(SMSDOConfigReCalcBinarySize(record.get()), recomputed);
  EXPECT_EQ(binary_size(record), recomputed);
}

TEST(SdoConfigReCalc, RecordOfSmallValuesNoLongerSerializes) {
  const Record record = record_of(3);
  EXPECT_EQ(SMSDOConfigReCalcBinarySize(record.get()), 19U);
  Bytes block(19);
  uint32_t size = 19;
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), kFailed);
  EXPECT_EQ(size, 16U);
  EXPECT_EQ(SMSDOConfigClone(record.get()), nullptr);
}

TEST(SdoConfigReCalc, FollowsAChildThatHasGrown) {
  const Record record = new_record();
  Record child = record_of(5);
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  Record borrowed(child_of(record, 1));
  ASSERT_EQ(add_sized(borrowed, 2, 10), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 8 + 21);
  EXPECT_EQ(SMSDOConfigReCalcBinarySize(record.get()), 8U + 8 + 21 + 18);
  EXPECT_EQ(serialized(record).size(), 8U + 8 + 21 + 18);
  (void)borrowed.release();
}

TEST(SdoConfigClone, IsDeep) {
  const Record record = new_record();
  Record child = record_of(5);
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_sized(record, 2, 3), SM_STATUS_SUCCESS);
  const Record copy = clone_of(record);
  ASSERT_NE(copy, nullptr);
  EXPECT_TRUE(equal(record, copy));
  EXPECT_EQ(count(copy), 2U);
  EXPECT_NE(child_of(copy, 1), child_of(record, 1));
}

TEST(SdoConfigClone, OfNullIsNull) {
  EXPECT_EQ(SMSDOConfigClone(nullptr), nullptr);
}

TEST(SdoConfigClone, OfARecordBeyondABlocksSizeIsNull) {
  const Record record = new_record();
  Record child = new_record();
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_sized(record, 2, 40000), SM_STATUS_SUCCESS);
  Record borrowed(child_of(record, 1));
  ASSERT_EQ(add_sized(borrowed, 1, 40000), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigReCalcBinarySize(record.get()), 8U + 16 + 40008 + 40008);
  EXPECT_EQ(SMSDOConfigClone(record.get()), nullptr);
  EXPECT_EQ(SMSDOConfigCompareByValue(record.get(), record.get()), 0U);
  Bytes block(100000);
  auto size = static_cast<uint32_t>(block.size());
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), kFailed);
  (void)borrowed.release();
}

TEST(SdoConfigCompare, OrderOfAddingDoesNotMatter) {
  const Record a = new_record();
  const Record b = new_record();
  for (uint16_t id = 1; id <= 50; ++id) {
    ASSERT_EQ(add_sized(a, id, id), SM_STATUS_SUCCESS);
    ASSERT_EQ(add_sized(b, static_cast<uint16_t>(51 - id), 51U - id), SM_STATUS_SUCCESS);
  }
  EXPECT_TRUE(equal(a, b));
}

TEST(SdoConfigCompare, SeesValueTypeIdAndSize) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 1, 1, {1, 2}), SM_STATUS_SUCCESS);
  const auto differs = [&](uint16_t id, uint8_t type, const Bytes& value) {
    const Record other = new_record();
    EXPECT_EQ(add(other, id, type, value), SM_STATUS_SUCCESS);
    return !equal(record, other);
  };
  EXPECT_FALSE(differs(1, 1, {1, 2}));
  EXPECT_TRUE(differs(2, 1, {1, 2}));
  EXPECT_TRUE(differs(1, 2, {1, 2}));
  EXPECT_TRUE(differs(1, 1, {1, 3}));
  EXPECT_TRUE(differs(1, 1, {1, 2, 0}));
}

TEST(SdoConfigCompare, NullEqualsOnlyNull) {
  const Record record = new_record();
  EXPECT_EQ(SMSDOConfigCompareByValue(nullptr, nullptr), 1U);
  EXPECT_EQ(SMSDOConfigCompareByValue(record.get(), nullptr), 0U);
  EXPECT_EQ(SMSDOConfigCompareByValue(nullptr, record.get()), 0U);
}

TEST(SdoTypes, HaveTheirNumbers) {
  EXPECT_EQ(SDO_TYPE_BINARY, 12);
  EXPECT_EQ(SDO_TYPE_CONFIG, 13);
  EXPECT_EQ(SDO_TYPE_FLAG_ARRAY, 0x10);
}

TEST(SdoConfigAdd, NoRoomComesBeforeAnEqualId) {
  const Record record = record_of(60000);
  EXPECT_EQ(add_sized(record, 1, 60000), SM_STATUS_OUT_OF_SPACE);
}

TEST(SdoConfigAdd, ARecordIsNotItsOwnChild) {
  const Record record = record_of(4);
  EXPECT_EQ(SMSDOConfigAddData(record.get(), 2, kChild, record.get(), 4, 0),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(add_children(record, 2, {nullptr, record.get()}), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(count(record), 1U);
}

TEST(SdoConfigReplace, FewerChildrenFreeTheOthers) {
  const Record record = new_record();
  SMSDOConfig* kept = record_of(5).release();
  ASSERT_EQ(add_children(record, 1, {record_of(4).release(), kept}), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_children(record, 1, {kept}, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 8 + 8 + 21);
  Record single = record_of(6);
  ASSERT_EQ(add_child(record, 1, single, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 8 + 22);
}

TEST(SdoConfigReplace, AnArrayBlockTakesThePlaceOfChildren) {
  const Record record = new_record();
  Record child = record_of(5);
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(add(record, 1, kBlocks, header(kArraySignature, 0, 8), 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 16);
}

TEST(SdoConfigGetById, CopiesEveryByteOfASmallValue) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 1, 1, {1, 2, 3, 4}), SM_STATUS_SUCCESS);
  uint8_t value[4] = {};
  uint32_t size = 4;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, nullptr, value, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(Bytes(value, value + 4), (Bytes{1, 2, 3, 4}));
}

TEST(SdoConfigGetByIndex, CopiesTheValueOfThatEntry) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 20, 2, {5, 6}), SM_STATUS_SUCCESS);
  ASSERT_EQ(add(record, 10, 1, {1, 2, 3, 4}), SM_STATUS_SUCCESS);
  uint16_t id = 0;
  uint8_t value[4] = {9, 9, 9, 9};
  uint32_t size = 4;
  EXPECT_EQ(SMSDOConfigGetDataByIndex(record.get(), 1, &id, nullptr, value, &size),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(Bytes(value, value + 4), (Bytes{5, 6, 9, 9}));
  size = 1;
  uint8_t type = 0;
  EXPECT_EQ(SMSDOConfigGetDataByIndex(record.get(), 0, &id, &type, value, &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 4U);
  EXPECT_EQ(id, 10U);
  EXPECT_EQ(type, 1U);
  EXPECT_EQ(value[0], 5);
}

TEST(SdoConfigCompare, SeesWhatIsNestedAndWhatLiesOutOfLine) {
  const auto record_with = [](uint8_t nested, uint8_t out_of_line) {
    Record record = new_record();
    Record child = new_record();
    EXPECT_EQ(add(child, 1, 1, {nested}), SM_STATUS_SUCCESS);
    EXPECT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
    EXPECT_EQ(add(record, 2, 1, Bytes(9, out_of_line)), SM_STATUS_SUCCESS);
    return record;
  };
  EXPECT_TRUE(equal(record_with(1, 1), record_with(1, 1)));
  EXPECT_FALSE(equal(record_with(1, 1), record_with(2, 1)));
  EXPECT_FALSE(equal(record_with(1, 1), record_with(1, 2)));
}

TEST(SdoConfigRemove, AValidIdIgnoresTheIndex) {
  const Record record = record_of(4);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 1, 99, 0), SM_STATUS_SUCCESS);
}

// A child of 21 bytes that grows by 1,008 behind its record's back.
SMSDOConfig* add_and_grow_child(const Record& record, uint16_t id) {
  Record child = record_of(5);
  SMSDOConfig* borrowed = child.get();
  EXPECT_EQ(add_child(record, id, child), SM_STATUS_SUCCESS);
  const Bytes value(1000, 1);
  EXPECT_EQ(SMSDOConfigAddData(borrowed, 2, 1, value.data(), 1000, 0), SM_STATUS_SUCCESS);
  return borrowed;
}

TEST(SdoConfigGrownChild, RemovedLeavesAnEmptyRecordOfEightBytes) {
  const Record record = new_record();
  add_and_grow_child(record, 1);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 1, 0, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U);
  EXPECT_EQ(add_sized(record, 1, 4), SM_STATUS_SUCCESS);
}

TEST(SdoConfigGrownChild, RemovedNeverTakesMoreThanTheOtherEntriesLeave) {
  const Record record = new_record();
  add_and_grow_child(record, 1);
  ASSERT_EQ(add_sized(record, 2, 4), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_sized(record, 3, 50), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 1, 0, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 2 * 8) << "the records of two entries";
  Bytes block(200, 0x55);
  uint32_t size = 24;
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), kFailed);
  EXPECT_EQ(Bytes(block.begin() + 24, block.end()), Bytes(176, 0x55));
}

TEST(SdoConfigGrownChild, ReplacedNeverWrapsTheSize) {
  const Record record = new_record();
  add_and_grow_child(record, 1);
  Record child = new_record();
  EXPECT_EQ(add_child(record, 1, child, 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U + 8);
}

TEST(SdoConfigGrownChild, SizeBelowTheRecordsIsNeverWrittenTo) {
  const Record record = new_record();
  ASSERT_EQ(add_children(record, 1, {record_of(5).release()}), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_children(record, 2, {record_of(5).release()}), SM_STATUS_SUCCESS);
  SMSDOConfigReCalcBinarySize(record.get());
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 1, 0, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigRemoveData(record.get(), 2, 0, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(binary_size(record), 8U);
  EXPECT_EQ(serialized(record), header(kObjectSignature, 0, 8));
}

}  // namespace
