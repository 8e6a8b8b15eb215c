// Array blocks: made by hand, made from records, taken apart.

#include "gtest/gtest.h"
#include "support/records.h"

namespace {

using namespace kqsupt::tests;

Bytes array_of(const std::vector<Bytes>& elements) {
  Bytes array(1000);
  EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 1000), SM_STATUS_SUCCESS);
  for (const Bytes& element : elements) {
    uint32_t capacity = 1000;
    EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, element.data(),
                                      static_cast<uint32_t>(element.size())),
              SM_STATUS_SUCCESS);
  }
  array.resize(SMSDOBinaryGetSize(array.data(), nullptr));
  return array;
}

TEST(SdoArrayInit, WritesAnEmptyArrayOfEightBytes) {
  Bytes array(9, 0x55);
  EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 8), SM_STATUS_SUCCESS);
  Bytes expected = header(kArraySignature, 0, 8);
  expected.push_back(0x55);
  EXPECT_EQ(array, expected);
}

TEST(SdoArrayInit, NeedsEightBytes) {
  Bytes array(8, 0x55);
  EXPECT_EQ(SMSDOBinaryArrayInitHeader(nullptr, 7), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 7), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(array, Bytes(8, 0x55));
}

TEST(SdoArrayAdd, AppendsElementsBackToBack) {
  const Bytes first = serialized(record_of(5));
  const Bytes second = serialized(record_of(3));
  const Bytes array = array_of({first, second});
  Bytes expected = header(kArraySignature, 2, static_cast<uint16_t>(8 + 21 + 16));
  expected.insert(expected.end(), first.begin(), first.end());
  expected.insert(expected.end(), second.begin(), second.end());
  EXPECT_EQ(array, expected);
}

TEST(SdoArrayAdd, ChecksArgumentsThenCapacityThenSignature) {
  Bytes record = header(kObjectSignature, 0, 8);
  const Bytes element = record;
  uint32_t capacity = 15;
  EXPECT_EQ(SMSDOBinaryArrayAddData(nullptr, &capacity, element.data(), 8),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryArrayAddData(record.data(), nullptr, element.data(), 8),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryArrayAddData(record.data(), &capacity, nullptr, 8),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryArrayAddData(record.data(), &capacity, element.data(), 8),
            SM_STATUS_BUFFER_TOO_SMALL);
  capacity = 16;
  EXPECT_EQ(SMSDOBinaryArrayAddData(record.data(), &capacity, element.data(), 8),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(capacity, 16U);
}

TEST(SdoArrayAdd, NoRoomReportsWhatIsNeededAndLeavesTheArray) {
  Bytes array = header(kArraySignature, 0, 8);
  array.resize(100);
  const Bytes before = array;
  const Bytes element = serialized(record_of(5));
  uint32_t capacity = 28;
  EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, element.data(), 21),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(capacity, 29U);
  EXPECT_EQ(array, before);
  EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, element.data(), 21),
            SM_STATUS_SUCCESS);
}

TEST(SdoArrayAdd, NoArrayReachesSixtyFourKib) {
  Bytes array = header(kArraySignature, 0, 8);
  array.resize(70000);
  const Bytes element(65536);
  uint32_t capacity = 70000;
  EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, element.data(), 65528),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(capacity, 70000U);
  EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, element.data(), 0xFFFFFFFF),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(capacity, 0xFFFFFFFFU);
  capacity = 70000;
  EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, element.data(), 65527),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOBinaryGetSize(array.data(), nullptr), 65535U);
}

TEST(SdoArrayAdd, DoesNotLookIntoTheElement) {
  const Bytes array = array_of({Bytes(12, 0x77)});
  EXPECT_EQ(array.size(), 20U);
  EXPECT_EQ(SMSDOBinaryGetCount(array.data(), nullptr), 1U);
}

TEST(SdoArrayGet, CopiesTheElementAtAnIndex) {
  const Bytes first = serialized(record_of(5));
  const Bytes second = serialized(record_of(3));
  const Bytes array = array_of({first, second});
  Bytes element(100, 0x55);
  uint32_t size = 100;
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(array.data(), 0, 1, element.data(), &size),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(size, second.size());
  element.resize(size);
  EXPECT_EQ(element, second);
}

TEST(SdoArrayGet, ReportsTheSizeWhenTheBufferDoesNotDo) {
  const Bytes array = array_of({serialized(record_of(5))});
  Bytes element(21, 0x55);
  uint32_t size = 20;
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(array.data(), 0, 0, element.data(), &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 21U);
  EXPECT_EQ(element, Bytes(21, 0x55));
  size = 0;
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(array.data(), 0, 0, nullptr, &size),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 21U);
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(array.data(), 0, 0, element.data(), &size),
            SM_STATUS_SUCCESS);
}

TEST(SdoArrayGet, ChecksArgumentsThenSignatureThenIndexThenElement) {
  const Bytes record = header(kObjectSignature, 0, 8);
  const Bytes empty = header(kArraySignature, 0, 8);
  const Bytes odd = array_of({header(kArraySignature, 0, 8)});
  uint32_t size = 77;
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(nullptr, 0, 0, nullptr, &size), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(empty.data(), 0, 0, nullptr, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(record.data(), 0, 0, nullptr, &size),
            SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(empty.data(), 0, 0, nullptr, &size),
            SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(odd.data(), 0, 1, nullptr, &size), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(odd.data(), 0, 0, nullptr, &size),
            SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(size, 77U);
}

class SdoArrayOfRecords : public testing::Test {
 protected:
  SdoArrayOfRecords() : first_(record_of(5)), second_(record_of(3)) {
    pointers_ = {first_.get(), nullptr, second_.get()};
  }
  SMStatus to_array(Bytes& buffer, uint32_t* size) {
    return SMSDOConfigArrayToBinaryArray(pointers_.data(), 3, buffer.data(), size);
  }
  Record first_;
  Record second_;
  std::vector<SMSDOConfig*> pointers_;
};

TEST_F(SdoArrayOfRecords, SerializesAllButTheNulls) {
  Bytes buffer(45);
  uint32_t size = 45;
  EXPECT_EQ(to_array(buffer, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 45U);
  EXPECT_EQ(buffer, array_of({serialized(first_), serialized(second_)}));
}

TEST_F(SdoArrayOfRecords, QuestionForTheSizeLeavesOutTheHeader) {
  uint32_t size = 0;
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers_.data(), 3, nullptr, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 37U);
}

TEST_F(SdoArrayOfRecords, WhatDoesNotFitIsLeftOutAndCounted) {
  Bytes buffer(45, 0x55);
  uint32_t size = 44;
  EXPECT_EQ(to_array(buffer, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 45U);
  EXPECT_EQ(SMSDOBinaryGetCount(buffer.data(), nullptr), 1U);
  EXPECT_EQ(SMSDOBinaryGetSize(buffer.data(), nullptr), 29U);
  EXPECT_EQ(Bytes(buffer.begin() + 29, buffer.end()), Bytes(16, 0x55));
}

TEST_F(SdoArrayOfRecords, NoRoomForTheHeaderIsTooSmall) {
  Bytes buffer(8, 0x55);
  uint32_t size = 7;
  EXPECT_EQ(to_array(buffer, &size), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 7U);
  size = 8;
  EXPECT_EQ(to_array(buffer, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 45U);
  EXPECT_EQ(buffer, header(kArraySignature, 0, 8));
}

TEST_F(SdoArrayOfRecords, NullsAreRefused) {
  uint32_t size = 0;
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(nullptr, 0, nullptr, &size), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers_.data(), 3, nullptr, nullptr),
            SM_STATUS_INVALID_PARAMETER);
}

TEST_F(SdoArrayOfRecords, NoRecordsMakeAnEmptyArray) {
  Bytes buffer(8);
  uint32_t size = 8;
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers_.data(), 0, buffer.data(), &size),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 8U);
}

TEST_F(SdoArrayOfRecords, RecordThatDoesNotSerializeEndsTheCall) {
  SMSDOConfigReCalcBinarySize(second_.get());  // 3 bytes inline: now a wrong size
  for (const uint32_t room : {45U, 20U}) {
    Bytes buffer(100);
    uint32_t size = room;
    EXPECT_EQ(to_array(buffer, &size), kFailed);
    EXPECT_EQ(size, room);
  }
  uint32_t size = 77;
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers_.data(), 3, nullptr, &size), kFailed);
  EXPECT_EQ(size, 77U);
}

TEST(SdoArrayOfManyRecords, LargerThanABlockLeavesOutTheRest) {
  const Record record = record_of(30000);
  SMSDOConfig* const pointers[] = {record.get(), record.get(), record.get()};
  Bytes buffer(100000);
  uint32_t size = 100000;
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers, 3, buffer.data(), &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 8U + 3 * 30016);
  EXPECT_EQ(SMSDOBinaryGetCount(buffer.data(), nullptr), 2U);
  EXPECT_EQ(SMSDOBinaryGetSize(buffer.data(), nullptr), 8U + 2 * 30016);
}

TEST(SdoArrayOfManyRecords, ASmallerOneStillFitsBehindOneThatDoesNot) {
  const Record large = record_of(60000);
  const Record too_large = record_of(10000);
  const Record small = record_of(3000);
  SMSDOConfig* const pointers[] = {large.get(), too_large.get(), small.get()};
  Bytes buffer(100000);
  uint32_t size = 100000;
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers, 3, buffer.data(), &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 8U + 60016 + 10016 + 3016);
  EXPECT_EQ(SMSDOBinaryGetCount(buffer.data(), nullptr), 2U);
  EXPECT_EQ(SMSDOBinaryGetSize(buffer.data(), nullptr), 8U + 60016 + 3016);
}

TEST(SdoArrayOfManyRecords, QuestionForTheSizeLooksIntoChildren) {
  const Record record = new_record();
  ASSERT_EQ(add_children(record, 1, {nullptr, record_of(5).release()}), SM_STATUS_SUCCESS);
  SMSDOConfig* const pointers[] = {record.get()};
  uint32_t size = 0;
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers, 1, nullptr, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, SMSDOConfigGetBinarySize(record.get()));
  Record child = new_record();
  Record grandchild = record_of(5);
  SMSDOConfig* borrowed = grandchild.get();
  ASSERT_EQ(add_child(child, 1, grandchild), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_child(record, 2, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(SMSDOConfigRemoveData(borrowed, 1, 0, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers, 1, nullptr, &size), kFailed);
}

TEST(SdoArrayOfManyRecords, QuestionForTheSizeRefusesWhatNoBlockHolds) {
  const Record record = new_record();
  Record child = new_record();
  SMSDOConfig* borrowed = child.get();
  ASSERT_EQ(add_child(record, 1, child), SM_STATUS_SUCCESS);
  ASSERT_EQ(add_sized(record, 2, 40000), SM_STATUS_SUCCESS);
  const Bytes value(40000, 1);
  ASSERT_EQ(SMSDOConfigAddData(borrowed, 1, 1, value.data(), 40000, 0), SM_STATUS_SUCCESS);
  SMSDOConfigReCalcBinarySize(record.get());
  SMSDOConfig* const pointers[] = {record.get()};
  uint32_t size = 0;
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers, 1, nullptr, &size), kFailed);
}

TEST(SdoArrayAdd, TheElementMayLieInTheArray) {
  Bytes array = array_of({serialized(record_of(5)), serialized(record_of(3))});
  array.resize(200);
  uint32_t capacity = 200;
  EXPECT_EQ(SMSDOBinaryArrayAddData(array.data(), &capacity, array.data() + 8, 21),
            SM_STATUS_SUCCESS);
  uint32_t size = 21;
  Bytes element(21);
  EXPECT_EQ(SMSDOBinaryArrayGetByIndex(array.data(), 0, 2, element.data(), &size),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(element, serialized(record_of(5)));
}

TEST(SdoArrayOfManyRecords, SizesBeyondFourGibAreOutOfSpace) {
  const Record record = record_of(65000);
  const std::vector<SMSDOConfig*> pointers(66200, record.get());
  uint32_t size = 77;
  EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers.data(), 66200, nullptr, &size),
            SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(size, 77U);
}

TEST(SdoArrayToRecords, RebuildsEveryElement) {
  const Record first = record_of(5);
  const Record second = record_of(3);
  const Bytes array = array_of({serialized(first), serialized(second)});
  SMSDOConfig* rebuilt[3] = {};
  uint32_t count = 3;
  ASSERT_EQ(SMSDOBinaryArrayToConfigArray(array.data(), rebuilt, &count), SM_STATUS_SUCCESS);
  EXPECT_EQ(count, 2U);
  EXPECT_EQ(rebuilt[2], nullptr);
  EXPECT_TRUE(equal(Record(rebuilt[0]), first));
  EXPECT_TRUE(equal(Record(rebuilt[1]), second));
}

TEST(SdoArrayToRecords, TooLittleRoomReportsTheCount) {
  const Bytes array = array_of({serialized(record_of(5)), serialized(record_of(3))});
  SMSDOConfig* rebuilt[1] = {};
  uint32_t count = 1;
  EXPECT_EQ(SMSDOBinaryArrayToConfigArray(array.data(), rebuilt, &count),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(count, 2U);
  EXPECT_EQ(rebuilt[0], nullptr);
  count = 0;
  EXPECT_EQ(SMSDOBinaryArrayToConfigArray(array.data(), nullptr, &count),
            SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(SMSDOBinaryArrayToConfigArray(array.data(), nullptr, &count),
            SM_STATUS_INVALID_PARAMETER);
}

TEST(SdoArrayToRecords, ChecksArgumentsThenSignature) {
  const Bytes record = header(kObjectSignature, 0, 8);
  uint32_t count = 0;
  EXPECT_EQ(SMSDOBinaryArrayToConfigArray(nullptr, nullptr, &count), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryArrayToConfigArray(record.data(), nullptr, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryArrayToConfigArray(record.data(), nullptr, &count),
            SM_STATUS_OPERATION_FAILED);
}

TEST(SdoArrayToRecords, FailureFreesEverySlotThatTheCallerNamed) {
  Bytes broken = header(kObjectSignature, 1, 16);
  put(broken, uint16_t{0});
  broken.insert(broken.end(), {1, 0x03, 1, 2, 3, 4});
  for (const auto& [element, status] :
       {std::pair{broken, kFailed},
        std::pair{header(kArraySignature, 0, 8), SMStatus{SM_STATUS_OPERATION_FAILED}}}) {
    const Bytes array = array_of({serialized(record_of(5)), element});
    // A record that the caller left in a slot beyond the elements goes too.
    SMSDOConfig* rebuilt[3] = {nullptr, nullptr, record_of(1).release()};
    uint32_t count = 3;
    EXPECT_EQ(SMSDOBinaryArrayToConfigArray(array.data(), rebuilt, &count), status);
    EXPECT_EQ(count, 3U);
    for (SMSDOConfig* slot : rebuilt) {
      EXPECT_EQ(slot, nullptr);
    }
  }
}

}  // namespace
