// Looking into a record's block in place.

#include "gtest/gtest.h"
#include "support/records.h"

namespace {

using namespace kqsupt::tests;

constexpr uint16_t kUntouched = 77;

TEST(SdoBinaryCount, TellsRecordsFromArrays) {
  uint16_t is_array = kUntouched;
  EXPECT_EQ(SMSDOBinaryGetCount(header(kObjectSignature, 3, 32).data(), &is_array), 3U);
  EXPECT_EQ(is_array, 0U);
  EXPECT_EQ(SMSDOBinaryGetCount(header(kArraySignature, 5, 48).data(), &is_array), 5U);
  EXPECT_EQ(is_array, 1U);
  EXPECT_EQ(SMSDOBinaryGetCount(header(kArraySignature, 5, 48).data(), nullptr), 5U);
}

TEST(SdoBinarySize, TellsRecordsFromArrays) {
  uint16_t is_array = kUntouched;
  EXPECT_EQ(SMSDOBinaryGetSize(header(kObjectSignature, 3, 32).data(), &is_array), 32U);
  EXPECT_EQ(is_array, 0U);
  EXPECT_EQ(SMSDOBinaryGetSize(header(kArraySignature, 5, 65535).data(), &is_array), 65535U);
  EXPECT_EQ(is_array, 1U);
}

TEST(SdoBinaryCountAndSize, HaveNothingToSayOfNullAndOtherBytes) {
  const Bytes other = header(0x12345678, 1, 16);
  for (const uint8_t* block : {static_cast<const uint8_t*>(nullptr), other.data()}) {
    uint16_t is_array = kUntouched;
    EXPECT_EQ(SMSDOBinaryGetCount(block, &is_array), 0xFFFFFFFFU);
    EXPECT_EQ(is_array, 0U);
    is_array = kUntouched;
    EXPECT_EQ(SMSDOBinaryGetSize(block, &is_array), 0U);
    EXPECT_EQ(is_array, 0U);
  }
}

class SdoBinary : public testing::Test {
 protected:
  SdoBinary() {
    const Record record = new_record();
    EXPECT_EQ(add(record, 10, 0x21, {0xAB}), SM_STATUS_SUCCESS);
    EXPECT_EQ(add(record, 20, 2, {1, 2, 3, 4}), SM_STATUS_SUCCESS);
    EXPECT_EQ(add(record, 0xFFFD, 3, bytes_of("hello")), SM_STATUS_SUCCESS);
    block_ = serialized(record);
  }
  Bytes block_;
};

TEST_F(SdoBinary, ByIdGivesTheWholeSlotOfASmallValue) {
  uint8_t type = 0;
  uint8_t value[5] = {9, 9, 9, 9, 9};
  uint32_t size = sizeof value;
  EXPECT_EQ(SMSDOBinaryGetDataByID(block_.data(), 10, &type, value, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 4U);
  EXPECT_EQ(type, 0x21);
  EXPECT_EQ(Bytes(value, value + 5), (Bytes{0xAB, 0, 0, 0, 9}));
}

TEST_F(SdoBinary, ByIndexGivesASmallValueItsOwnSize) {
  uint16_t id = 0;
  uint8_t type = 0;
  uint8_t value[5] = {9, 9, 9, 9, 9};
  uint32_t size = sizeof value;
  EXPECT_EQ(SMSDOBinaryGetDataByIndex(block_.data(), 0, &id, &type, value, &size),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 1U);
  EXPECT_EQ(id, 10U);
  EXPECT_EQ(type, 0x21);
  EXPECT_EQ(Bytes(value, value + 5), (Bytes{0xAB, 9, 9, 9, 9}));
}

TEST_F(SdoBinary, OutOfLineValuesComeWhole) {
  uint16_t id = 0;
  uint8_t value[5];
  uint32_t size = sizeof value;
  EXPECT_EQ(SMSDOBinaryGetDataByID(block_.data(), 0xFFFD, nullptr, value, &size),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(Bytes(value, value + size), bytes_of("hello"));
  EXPECT_EQ(SMSDOBinaryGetDataByIndex(block_.data(), 2, &id, nullptr, value, &size),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(Bytes(value, value + size), bytes_of("hello"));
  EXPECT_EQ(id, 0xFFFD);
}

TEST_F(SdoBinary, TooSmallABufferLearnsTheSizeAndNothingElse) {
  uint8_t value[5] = {9, 9, 9, 9, 9};
  uint8_t type = kUntouched;
  uint16_t id = kUntouched;
  for (uint8_t* buffer : {static_cast<uint8_t*>(nullptr), value}) {
    uint32_t size = 4;
    EXPECT_EQ(SMSDOBinaryGetDataByID(block_.data(), 0xFFFD, &type, buffer, &size),
              SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 5U);
    size = 4;
    EXPECT_EQ(SMSDOBinaryGetDataByIndex(block_.data(), 2, &id, &type, buffer, &size),
              SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 5U);
  }
  uint32_t size = 3;
  EXPECT_EQ(SMSDOBinaryGetDataByID(block_.data(), 10, &type, value, &size),
            SM_STATUS_BUFFER_TOO_SMALL)
      << "a slot has four bytes";
  EXPECT_EQ(size, 4U);
  EXPECT_EQ(type, kUntouched);
  EXPECT_EQ(id, kUntouched);
  EXPECT_EQ(Bytes(value, value + 5), Bytes(5, 9));
}

TEST_F(SdoBinary, ByIdChecksArgumentsThenSignatureThenId) {
  const Bytes array = header(kArraySignature, 0, 8);
  uint32_t size = kUntouched;
  EXPECT_EQ(SMSDOBinaryGetDataByID(nullptr, 10, nullptr, nullptr, &size),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryGetDataByID(block_.data(), 10, nullptr, nullptr, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryGetDataByID(array.data(), 0, nullptr, nullptr, &size),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryGetDataByID(array.data(), 0xFFFE, nullptr, nullptr, &size),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryGetDataByID(array.data(), 10, nullptr, nullptr, &size),
            SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMSDOBinaryGetDataByID(block_.data(), 11, nullptr, nullptr, &size),
            SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(size, kUntouched);
}

TEST_F(SdoBinary, ByIndexChecksArgumentsThenIndexThenSignature) {
  uint16_t id = kUntouched;
  uint32_t size = kUntouched;
  EXPECT_EQ(SMSDOBinaryGetDataByIndex(nullptr, 0, &id, nullptr, nullptr, &size),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryGetDataByIndex(block_.data(), 0, nullptr, nullptr, nullptr, &size),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryGetDataByIndex(block_.data(), 0, &id, nullptr, nullptr, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  const Bytes array = header(kArraySignature, 1, 8);
  EXPECT_EQ(SMSDOBinaryGetDataByIndex(array.data(), 1, &id, nullptr, nullptr, &size),
            SM_STATUS_INDEX_OUT_OF_RANGE);
  EXPECT_EQ(SMSDOBinaryGetDataByIndex(array.data(), 0, &id, nullptr, nullptr, &size),
            SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMSDOBinaryGetDataByIndex(block_.data(), 3, &id, nullptr, nullptr, &size),
            SM_STATUS_INDEX_OUT_OF_RANGE);
  EXPECT_EQ(id, kUntouched);
  EXPECT_EQ(size, kUntouched);
}

TEST(SdoBinarySearch, FindsEveryIdAndNoOther) {
  for (uint16_t entries = 0; entries <= 40; ++entries) {
    const Record record = new_record();
    for (uint16_t i = 1; i <= entries; ++i) {
      ASSERT_EQ(add(record, static_cast<uint16_t>(i * 1600), kOpaque, {static_cast<uint8_t>(i)}),
                SM_STATUS_SUCCESS);
    }
    const Bytes block = serialized(record);
    for (uint16_t i = 1; i <= 40; ++i) {
      const auto id = static_cast<uint16_t>(i * 1600);
      uint8_t value[4] = {};
      uint32_t size = 4;
      EXPECT_EQ(SMSDOBinaryGetDataByID(block.data(), id, nullptr, value, &size),
                i <= entries ? SM_STATUS_SUCCESS : SM_STATUS_DATA_NOT_FOUND);
      EXPECT_EQ(value[0], i <= entries ? i : 0);
      for (const int neighbour : {id - 1, id + 1}) {
        EXPECT_EQ(SMSDOBinaryGetDataByID(block.data(), static_cast<uint16_t>(neighbour), nullptr,
                                         value, &size),
                  SM_STATUS_DATA_NOT_FOUND);
      }
    }
  }
}

}  // namespace
