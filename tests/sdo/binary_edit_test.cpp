// Changing values inside a block.

#include "gtest/gtest.h"
#include "support/records.h"

namespace {

using namespace kqsupt::tests;

class SdoBinarySet : public testing::Test {
 protected:
  SdoBinarySet() {
    const Record record = new_record();
    EXPECT_EQ(add(record, 1, 1, {1, 2, 3}), SM_STATUS_SUCCESS);
    EXPECT_EQ(add(record, 2, 2, bytes_of("hello")), SM_STATUS_SUCCESS);
    Record child = record_of(6);
    EXPECT_EQ(add_child(record, 3, child), SM_STATUS_SUCCESS);
    block_ = serialized(record);
    original_ = block_;
  }
  SMStatus set(uint16_t id, uint8_t type, const Bytes& value) {
    return SMSDOBinarySetData(block_.data(), &capacity_, id, type, value.data(),
                              static_cast<uint32_t>(value.size()));
  }
  // Room for `capacity` bytes and an untouched byte behind them.
  void give_room(uint32_t capacity) {
    block_.resize(capacity + 1, 0x55);
    capacity_ = capacity;
  }
  Bytes block() const { return Bytes(block_.begin(), block_.begin() + capacity_); }

  Bytes block_;
  Bytes original_;
  uint32_t capacity_ = 500;
};

TEST_F(SdoBinarySet, SameSizeIsOverwrittenInPlace) {
  EXPECT_EQ(set(2, 2, bytes_of("world")), SM_STATUS_SUCCESS);
  EXPECT_EQ(capacity_, original_.size());
  Bytes expected = original_;
  std::memcpy(expected.data() + 32, "world", 5);
  EXPECT_EQ(block_, expected);
}

TEST_F(SdoBinarySet, SmallValueMayTakeAnySmallSizeAndKeepsTheRestOfItsSlot) {
  EXPECT_EQ(set(1, 1, {9}), SM_STATUS_SUCCESS);
  EXPECT_EQ(Bytes(block_.begin() + 11, block_.begin() + 16), (Bytes{0x00, 9, 2, 3, 0}));
  EXPECT_EQ(set(1, 1, {5, 6, 7, 8}), SM_STATUS_SUCCESS);
  EXPECT_EQ(Bytes(block_.begin() + 11, block_.begin() + 16), (Bytes{0x03, 5, 6, 7, 8}));
  EXPECT_EQ(capacity_, original_.size());
}

TEST_F(SdoBinarySet, InPlaceNeedsNoRoomForTheBlock) {
  capacity_ = 16;
  EXPECT_EQ(set(2, 2, bytes_of("world")), SM_STATUS_SUCCESS);
  EXPECT_EQ(capacity_, original_.size());
}

TEST_F(SdoBinarySet, AnotherSizeRebuildsTheBlock) {
  const auto grown = static_cast<uint32_t>(original_.size()) + 3;
  give_room(grown);
  EXPECT_EQ(set(2, 2, bytes_of("hello123")), SM_STATUS_SUCCESS);
  EXPECT_EQ(capacity_, grown);
  EXPECT_EQ(block_[grown], 0x55);
  const Record expected = new_record();
  ASSERT_EQ(add(expected, 1, 1, {1, 2, 3}), SM_STATUS_SUCCESS);
  ASSERT_EQ(add(expected, 2, 2, bytes_of("hello123")), SM_STATUS_SUCCESS);
  ASSERT_EQ(add(expected, 3, kBlock, serialized(record_of(6))), SM_STATUS_SUCCESS);
  EXPECT_EQ(block(), serialized(expected));
}

TEST_F(SdoBinarySet, ShrinkingToASmallValueMovesItIntoItsSlot) {
  give_room(500);
  EXPECT_EQ(set(2, 2, {7}), SM_STATUS_SUCCESS);
  EXPECT_EQ(capacity_, original_.size() - 5);
  EXPECT_EQ(SMSDOBinaryGetSize(block_.data(), nullptr), capacity_);
}

TEST_F(SdoBinarySet, GrowingASmallValueMovesItOutOfItsSlot) {
  give_room(500);
  EXPECT_EQ(set(1, 1, bytes_of("12345")), SM_STATUS_SUCCESS);
  EXPECT_EQ(capacity_, original_.size() + 5);
}

TEST_F(SdoBinarySet, NestedBlockIsReplacedByAnother) {
  give_room(500);
  EXPECT_EQ(set(3, kBlock, serialized(record_of(60))), SM_STATUS_SUCCESS);
  EXPECT_EQ(capacity_, original_.size() + 54);
}

TEST_F(SdoBinarySet, TooSmallARoomLearnsTheSizeAndTheBlockStays) {
  give_room(static_cast<uint32_t>(original_.size()) + 2);
  const Bytes before = block_;
  EXPECT_EQ(set(2, 2, bytes_of("hello123")), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(capacity_, original_.size() + 3);
  EXPECT_EQ(block_, before);
}

TEST_F(SdoBinarySet, ChecksArgumentsThenCapacityThenSignature) {
  const uint8_t value[5] = {};
  Bytes array = header(kArraySignature, 0, 8);
  uint32_t capacity = 15;
  const auto set_in = [&](void* block, uint32_t* room, uint16_t id, uint8_t type,
                          const void* data) {
    return SMSDOBinarySetData(block, room, id, type, data, 5);
  };
  EXPECT_EQ(set_in(nullptr, &capacity, 1, 1, value), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(set_in(array.data(), nullptr, 1, 1, value), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(set_in(array.data(), &capacity, 1, 1, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(set_in(array.data(), &capacity, 1, 0, value), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(set_in(array.data(), &capacity, 0, 1, value), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(set_in(array.data(), &capacity, 1, 1, value), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(capacity, 15U);
  capacity = 16;
  EXPECT_EQ(set_in(array.data(), &capacity, 1, 1, value), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(capacity, 16U);
}

TEST_F(SdoBinarySet, AValueOfNoBytesIsRefused) {
  const uint8_t value = 0;
  EXPECT_EQ(SMSDOBinarySetData(block_.data(), &capacity_, 1, 1, &value, 0),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(block_, original_);
}

TEST_F(SdoBinarySet, AnotherTypeOrIdIsNotFound) {
  EXPECT_EQ(set(1, 2, {1, 2, 3}), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(set(4, 1, {1, 2, 3}), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(set(3, kChild, {1, 2, 3}), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(capacity_, 500U);
  EXPECT_EQ(block_, original_);
}

TEST_F(SdoBinarySet, BeyondABlocksSizeIsOutOfSpace) {
  capacity_ = 100000;
  EXPECT_EQ(set(2, 2, Bytes(65500, 1)), SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(block_, original_);
}

TEST_F(SdoBinarySet, ABlockThatDoesNotConvertIsTooSmallABuffer) {
  Bytes broken = header(kObjectSignature, 2, 24);
  for (const uint16_t id : {uint16_t{1}, uint16_t{0xFFFE}}) {
    put(broken, id);
    broken.insert(broken.end(), {1, 0x03, 1, 2, 3, 4});
  }
  broken.resize(500);
  uint32_t capacity = 500;
  const uint8_t value[5] = {};
  EXPECT_EQ(SMSDOBinarySetData(broken.data(), &capacity, 1, 1, value, 5),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(capacity, 500U);
}

TEST_F(SdoBinarySet, TheNewValueMayLieInTheBlock) {
  give_room(500);
  EXPECT_EQ(SMSDOBinarySetData(block_.data(), &capacity_, 1, 1, block_.data() + 32, 5),
            SM_STATUS_SUCCESS);
  uint8_t value[5];
  uint32_t size = 5;
  EXPECT_EQ(SMSDOBinaryGetDataByID(block_.data(), 1, nullptr, value, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(Bytes(value, value + 5), bytes_of("hello"));
}

TEST_F(SdoBinarySet, EveryBitOfTheTypeCounts) {
  EXPECT_EQ(set(1, 0x81, {1, 2, 3}), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(set(1, 0x21, {1, 2, 3}), SM_STATUS_DATA_NOT_FOUND);
}

TEST_F(SdoBinarySet, RebuiltValuesReadBack) {
  give_room(500);
  const Bytes nested = serialized(record_of(60));
  for (const auto& [id, type, value] : {std::tuple{uint16_t{2}, uint8_t{2}, Bytes{7, 8}},
                                        {1, 1, bytes_of("12345")},
                                        {3, kBlock, nested}}) {
    capacity_ = 500;
    EXPECT_EQ(set(id, type, value), SM_STATUS_SUCCESS);
    Bytes read(100);
    auto size = static_cast<uint32_t>(read.size());
    uint16_t read_id = 0;
    uint8_t read_type = 0;
    EXPECT_EQ(
        SMSDOBinaryGetDataByIndex(block_.data(), id - 1U, &read_id, &read_type, read.data(), &size),
        SM_STATUS_SUCCESS);
    read.resize(size);
    EXPECT_EQ(read, value);
    EXPECT_EQ(read_id, id);
    EXPECT_EQ(read_type, type);
  }
}

TEST_F(SdoBinarySet, NestedBlockThatDoesNotFitIsFreed) {  // as the address sanitizer sees
  capacity_ = 100000;
  EXPECT_EQ(set(3, kBlock, serialized(record_of(65500))), SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(block_, original_);
}

}  // namespace
