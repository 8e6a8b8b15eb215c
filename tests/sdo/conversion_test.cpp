// From records in memory to blocks and back.

#include "gtest/gtest.h"
#include "support/records.h"

namespace {

using namespace kqsupt::tests;

TEST(SdoToBinary, RefusesNullForEachArgument) {
  const Record record = record_of(4);
  uint8_t block[16];
  uint32_t size = sizeof block;
  EXPECT_EQ(SMSDOConfigToBinary(nullptr, block, &size), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), nullptr, &size), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block, nullptr), SM_STATUS_INVALID_PARAMETER);
}

TEST(SdoToBinary, ABufferOneByteTooSmallIsLeftAloneWithItsSize) {
  const Record record = record_of(4);
  Bytes block(16, 0x55);
  uint32_t size = 15;
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 15U);
  EXPECT_EQ(block, Bytes(16, 0x55));
}

TEST(SdoToBinary, WritesNothingBeyondTheBlock) {
  const Record record = record_of(5);
  Bytes block(100, 0x55);
  auto size = static_cast<uint32_t>(block.size());
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 21U);
  EXPECT_EQ(Bytes(block.begin() + 21, block.end()), Bytes(79, 0x55));
}

TEST(SdoToBinary, EmptyRecordIsItsHeader) {
  EXPECT_EQ(serialized(new_record()), header(kObjectSignature, 0, 8));
}

TEST(SdoToBinary, FirstOutOfLineValueLiesBehindTheRecords) {
  constexpr uint16_t kEntries = 6;
  constexpr uint16_t kFirst = 2;
  const Record record = new_record();
  for (uint16_t i = 0; i < kEntries; ++i) {
    ASSERT_EQ(add_sized(record, static_cast<uint16_t>(i + 1), i < kFirst ? 4 : 5),
              SM_STATUS_SUCCESS);
  }
  const Bytes block = serialized(record);
  const size_t place = 8 + 8 * kFirst;
  EXPECT_EQ(block[place + 3], 0x04);
  EXPECT_EQ(word_at<uint16_t>(block, place + 4), 5U);
  EXPECT_EQ(word_at<uint16_t>(block, place + 6), 8U * (kEntries - kFirst));
}

TEST(SdoToBinary, InlineSizesStandInTheFlags) {
  for (uint8_t size = 1; size <= 4; ++size) {
    EXPECT_EQ(serialized(record_of(size))[11], size - 1);
  }
}

TEST(SdoToBinary, ChildThatHasGrownIsRefusedAndNeverOverruns) {
  const Record record = new_record();
  Record child = record_of(5);
  SMSDOConfig* borrowed = child.get();
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  const Bytes value(1000, 7);
  ASSERT_EQ(SMSDOConfigAddData(borrowed, 2, 1, value.data(), 1000, 0), SM_STATUS_SUCCESS);
  Bytes block(SMSDOConfigGetBinarySize(record.get()) + 8, 0x55);
  uint32_t size = SMSDOConfigGetBinarySize(record.get());
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), kFailed);
  EXPECT_EQ(Bytes(block.end() - 8, block.end()), Bytes(8, 0x55));
  size = 5000;
  block.resize(size);
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), kFailed);
}

TEST(SdoToBinary, ChildThatHasShrunkIsRefused) {
  const Record record = new_record();
  Record child = record_of(5);
  SMSDOConfig* borrowed = child.get();
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(SMSDOConfigRemoveData(borrowed, 1, 0, 0), SM_STATUS_SUCCESS);
  Bytes block(SMSDOConfigGetBinarySize(record.get()));
  auto size = static_cast<uint32_t>(block.size());
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), kFailed);
  EXPECT_EQ(size, 8U + 8 + 8) << "what was written";
}

TEST(SdoToBinary, RecordOfAStaleGrandchildIsRefused) {
  const Record record = new_record();
  Record child = new_record();
  Record grandchild = record_of(5);
  SMSDOConfig* borrowed = grandchild.get();
  ASSERT_EQ(add_child(child, 1, grandchild), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_children(record, 1, {child.release()}), SM_STATUS_SUCCESS);
  ASSERT_EQ(SMSDOConfigRemoveData(borrowed, 1, 0, 0), SM_STATUS_SUCCESS);
  Bytes block(SMSDOConfigGetBinarySize(record.get()));
  auto size = static_cast<uint32_t>(block.size());
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), kFailed);
}

TEST(SdoToConfig, RefusesNullArraysAndWhatIsNoBlock) {
  EXPECT_EQ(SMSDOBinaryToConfig(nullptr), nullptr);
  EXPECT_EQ(SMSDOBinaryToConfig(header(kArraySignature, 0, 8).data()), nullptr);
  EXPECT_EQ(SMSDOBinaryToConfig(header(0x12345678, 0, 8).data()), nullptr);
}

TEST(SdoToConfig, GivesBackSizesTypesAndChildren) {
  const Record record = new_record();
  for (uint16_t size = 1; size <= 64; ++size) {
    ASSERT_EQ(add(record, size, 0x21, Bytes(size, 3)), SM_STATUS_SUCCESS);
  }
  Record child = record_of(9);
  ASSERT_EQ(add_child(record, 100, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_children(record, 101, {}), SM_STATUS_INVALID_PARAMETER);
  ASSERT_EQ(add_children(record, 101, {nullptr}), SM_STATUS_SUCCESS) << "an empty array";
  const Record rebuilt(SMSDOBinaryToConfig(serialized(record).data()));
  ASSERT_NE(rebuilt, nullptr);
  EXPECT_EQ(serialized(rebuilt), serialized(record));
  uint8_t type = 0;
  uint32_t size = 0;
  EXPECT_EQ(SMSDOConfigGetDataByID(rebuilt.get(), 3, &type, nullptr, &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 3U);
  EXPECT_EQ(type, 0x21);
  EXPECT_EQ(SMSDOConfigGetDataByID(rebuilt.get(), 100, &type, nullptr, &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(type, kChild);
}

TEST(SdoToConfig, ABlockNeedNoAlignment) {
  const Record record = record_of(5);
  Bytes shifted(1);
  const Bytes block = serialized(record);
  shifted.insert(shifted.end(), block.begin(), block.end());
  const Record rebuilt(SMSDOBinaryToConfig(shifted.data() + 1));
  EXPECT_TRUE(equal(rebuilt, record));
}

// A block of one inline entry, made up by hand.
Bytes block_with(uint16_t id, uint8_t type) {
  Bytes block = header(kObjectSignature, 1, 16);
  put(block, id);
  block.insert(block.end(), {type, 0x03, 1, 2, 3, 4});
  return block;
}

TEST(SdoToConfig, EntriesThatNoRecordCanHoldRefuseTheBlock) {
  EXPECT_NE(Record(SMSDOBinaryToConfig(block_with(1, 1).data())), nullptr);
  EXPECT_EQ(SMSDOBinaryToConfig(block_with(0, 1).data()), nullptr);
  EXPECT_EQ(SMSDOBinaryToConfig(block_with(0xFFFE, 1).data()), nullptr);
  EXPECT_EQ(SMSDOBinaryToConfig(block_with(1, 0).data()), nullptr);
  EXPECT_EQ(SMSDOBinaryToConfig(block_with(1, kBlock).data()), nullptr);
}

TEST(SdoToConfig, PointersInABlockAreNotFollowed) {
  EXPECT_EQ(SMSDOBinaryToConfig(block_with(1, kChild).data()), nullptr);
  EXPECT_EQ(SMSDOBinaryToConfig(block_with(1, kChildren).data()), nullptr);
}

TEST(SdoToConfig, DuplicateIdsRefuseTheBlock) {
  Bytes block = header(kObjectSignature, 2, 24);
  for (int i = 0; i < 2; ++i) {
    put(block, uint16_t{1});
    block.insert(block.end(), {1, 0x03, 1, 2, 3, 4});
  }
  EXPECT_EQ(SMSDOBinaryToConfig(block.data()), nullptr);
}

TEST(SdoAddBlock, SingleRecordBecomesAChild) {
  const Record record = new_record();
  const Bytes block = serialized(record_of(5));
  ASSERT_EQ(add(record, 1, kBlock | 0xA0, block), SM_STATUS_SUCCESS);
  uint8_t type = 0;
  SMSDOConfig* child = nullptr;
  uint32_t size = sizeof child;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, &type, &child, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(type, kChild | 0xA0);
  EXPECT_EQ(SMSDOConfigGetCount(child), 1U);
  EXPECT_EQ(SMSDOConfigGetBinarySize(record.get()), 8U + 8 + 21);
}

TEST(SdoAddBlock, SingleRecordWithTheArrayFlagBecomesAnArrayOfOne) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 1, kBlocks, serialized(record_of(5))), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigGetBinarySize(record.get()), 8U + 8 + 8 + 21);
  EXPECT_EQ(word_at<uint32_t>(serialized(record), 16), kArraySignature);
}

TEST(SdoAddBlock, ArrayBecomesChildrenWithTheArrayFlag) {
  const Record record = new_record();
  const std::vector<Record> children = [] {
    std::vector<Record> made;
    made.push_back(record_of(5));
    made.push_back(record_of(6));
    return made;
  }();
  SMSDOConfig* const pointers[] = {children[0].get(), children[1].get()};
  Bytes array(100);
  uint32_t size = 100;
  ASSERT_EQ(SMSDOConfigArrayToBinaryArray(pointers, 2, array.data(), &size), SM_STATUS_SUCCESS);
  ASSERT_EQ(add(record, 1, kBlock, array), SM_STATUS_SUCCESS);
  uint8_t type = 0;
  uint32_t value_size = 0;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, &type, nullptr, &value_size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(type, kChildren);
  EXPECT_EQ(value_size, 2 * sizeof(void*));
}

TEST(SdoAddBlock, EmptyArrayIsAnEntryOfNoBytes) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 1, kBlocks, header(kArraySignature, 0, 8)), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigGetBinarySize(record.get()), 8U + 16U);
  uint8_t value = 0;
  uint32_t size = 1;
  EXPECT_EQ(SMSDOConfigGetDataByID(record.get(), 1, nullptr, &value, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 0U);
  EXPECT_EQ(serialized(record).size(), 24U);
}

TEST(SdoAddBlock, UnknownSignatureAndLessThanAHeaderAreRefused) {
  const Record record = new_record();
  EXPECT_EQ(add(record, 1, kBlock, header(0x12345678, 0, 8)), SM_STATUS_INVALID_PARAMETER);
  const Bytes block = header(kObjectSignature, 0, 8);
  EXPECT_EQ(add(record, 1, kBlock, {block.begin(), block.end() - 1}), SM_STATUS_INVALID_PARAMETER);
}

TEST(SdoAddBlock, BlocksThatDoNotConvertLeaveTheRecordAsItWas) {
  const Record record = record_of(4);
  const Record before = clone_of(record);
  EXPECT_EQ(add(record, 2, kBlock, block_with(0, 1)), kFailed);
  Bytes array = header(kArraySignature, 1, 24);
  const Bytes element = block_with(0, 1);
  array.insert(array.end(), element.begin(), element.end());
  EXPECT_EQ(add(record, 2, kBlock, array), kFailed);
  array = header(kArraySignature, 1, 16);
  const Bytes nested_array = header(kArraySignature, 0, 8);
  array.insert(array.end(), nested_array.begin(), nested_array.end());
  EXPECT_EQ(add(record, 2, kBlock, array), SM_STATUS_OPERATION_FAILED);
  EXPECT_TRUE(equal(record, before));
}

TEST(SdoAddBlock, ArrayThatIsNotAddedIsFreed) {
  const Record record = record_of(4);
  Bytes array = header(kArraySignature, 1, 24);
  const Bytes element = block_with(1, 1);
  array.insert(array.end(), element.begin(), element.end());
  EXPECT_EQ(add(record, 1, kBlock, array), SM_STATUS_ALREADY_EXISTS);
}

TEST(SdoAddBlock, ArrayKeepsTheUsersBitsOfTheType) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 1, 0xE0 | kBlock, header(kArraySignature, 0, 8)), SM_STATUS_SUCCESS);
  uint8_t type = 0;
  uint32_t size = 0;
  (void)SMSDOConfigGetDataByID(record.get(), 1, &type, nullptr, &size);
  EXPECT_EQ(type, 0xE0 | kChildren);
}

TEST(SdoAddBlock, BlocksThatAreCutShortAreRefused) {
  const Record record = new_record();
  const Bytes block = serialized(record_of(5));
  EXPECT_EQ(SMSDOConfigAddData(record.get(), 1, kBlock, block.data(), 20, 0),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigAddData(record.get(), 1, kBlock, block.data(), 22, 0), SM_STATUS_SUCCESS);
}

TEST(SdoToBinary, GrownByAFewBytesNeverOverruns) {
  for (uint32_t growth = 1; growth <= 8; ++growth) {
    const Record record = new_record();
    Record child = record_of(8);
    SMSDOConfig* borrowed = child.get();
    ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
    const Bytes value(8 + growth, 1);
    ASSERT_EQ(SMSDOConfigAddData(borrowed, 1, 1, value.data(), 8 + growth, 1), SM_STATUS_SUCCESS);
    uint32_t size = SMSDOConfigGetBinarySize(record.get());
    Bytes block(size + 16, 0x55);
    EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), kFailed);
    EXPECT_EQ(Bytes(block.end() - 16, block.end()), Bytes(16, 0x55)) << growth;
  }
}

}  // namespace
