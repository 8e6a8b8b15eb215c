// Whole blocks, byte for byte, as each kind of host writes them.

#include <bit>

#include "gtest/gtest.h"
#include "support/records.h"

namespace {

using namespace kqsupt::tests;

// Five entries: two inline values, one out of line, a child and an array of two children.
const Bytes kBigEndian = {'S', 'D', 'O', 'B', 0x00, 0x05, 0x00, 0x6A,  // five entries, 106 bytes
                                                                       // 0x0001: two bytes inline
                          0x00, 0x01, 0x01, 0x01, 0xAA, 0xBB, 0x00, 0x00,
                          // 0x0002: "hello" out of line, 32 bytes from here
                          0x00, 0x02, 0x03, 0x04, 0x00, 0x05, 0x00, 0x20,
                          // 0x0300: four bytes inline, bits 5 and 7 of the type set
                          0x03, 0x00, 0xA1, 0x03, 0xDE, 0xAD, 0xBE, 0xEF,
                          // 0x0400: a child of 16 bytes, 21 bytes from here
                          0x04, 0x00, 0x4C, 0x04, 0x00, 0x10, 0x00, 0x15,
                          // 0x0500: an array of 37 bytes, 29 bytes from here
                          0x05, 0x00, 0x1C, 0x04, 0x00, 0x25, 0x00, 0x1D,
                          // the data: "hello"
                          'h', 'e', 'l', 'l', 'o',
                          // the child: one entry of one byte
                          'S', 'D', 'O', 'B', 0x00, 0x01, 0x00, 0x10,  //
                          0x00, 0x07, 0x01, 0x00, 0x2A, 0x00, 0x00, 0x00,
                          // the array: an empty record and one of five bytes out of line
                          'S', 'D', 'A', 'B', 0x00, 0x02, 0x00, 0x25,  //
                          'S', 'D', 'O', 'B', 0x00, 0x00, 0x00, 0x08,  //
                          'S', 'D', 'O', 'B', 0x00, 0x01, 0x00, 0x15,  //
                          0x00, 0x09, 0x02, 0x04, 0x00, 0x05, 0x00, 0x08, 'w', 'o', 'r', 'l', 'd'};

const Bytes kLittleEndian = {'B',  'O',  'D',  'S',  0x05, 0x00, 0x6A, 0x00,  //
                             0x01, 0x00, 0x01, 0x01, 0xAA, 0xBB, 0x00, 0x00,  //
                             0x02, 0x00, 0x03, 0x04, 0x05, 0x00, 0x20, 0x00,  //
                             0x00, 0x03, 0xA1, 0x03, 0xDE, 0xAD, 0xBE, 0xEF,  //
                             0x00, 0x04, 0x4C, 0x04, 0x10, 0x00, 0x15, 0x00,  //
                             0x00, 0x05, 0x1C, 0x04, 0x25, 0x00, 0x1D, 0x00,  //
                             'h',  'e',  'l',  'l',  'o',                     //
                             'B',  'O',  'D',  'S',  0x01, 0x00, 0x10, 0x00,  //
                             0x07, 0x00, 0x01, 0x00, 0x2A, 0x00, 0x00, 0x00,  //
                             'B',  'A',  'D',  'S',  0x02, 0x00, 0x25, 0x00,  //
                             'B',  'O',  'D',  'S',  0x00, 0x00, 0x08, 0x00,  //
                             'B',  'O',  'D',  'S',  0x01, 0x00, 0x15, 0x00,  //
                             0x09, 0x00, 0x02, 0x04, 0x05, 0x00, 0x08, 0x00,
                             'w',  'o',  'r',  'l',  'd'};

const Bytes& golden() {
  return std::endian::native == std::endian::big ? kBigEndian : kLittleEndian;
}

Record golden_record() {
  Record record = new_record();
  EXPECT_EQ(add(record, 0x0300, 0xA1, {0xDE, 0xAD, 0xBE, 0xEF}), SM_STATUS_SUCCESS);
  EXPECT_EQ(add(record, 0x0002, 3, bytes_of("hello")), SM_STATUS_SUCCESS);
  EXPECT_EQ(add(record, 0x0001, 1, {0xAA, 0xBB}), SM_STATUS_SUCCESS);
  Record world = new_record();
  EXPECT_EQ(add(world, 9, 2, bytes_of("world")), SM_STATUS_SUCCESS);
  EXPECT_EQ(add_children(record, 0x0500, {new_record().release(), world.release()}),
            SM_STATUS_SUCCESS);
  Record child = new_record();
  EXPECT_EQ(add(child, 7, 1, {42}), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOConfigAddData(record.get(), 0x0400, 0x40 | SDO_TYPE_CONFIG, child.release(), 4, 0),
            SM_STATUS_SUCCESS);
  return record;
}

TEST(SdoGolden, SerializesToTheBytesOfTheHost) {
  EXPECT_EQ(serialized(golden_record()), golden());
}

TEST(SdoGolden, RebuildsToTheSameRecord) {
  const Record rebuilt(SMSDOBinaryToConfig(golden().data()));
  ASSERT_NE(rebuilt, nullptr);
  EXPECT_TRUE(equal(rebuilt, golden_record()));
  EXPECT_EQ(serialized(rebuilt), golden());
}

TEST(SdoGolden, BothHostsAgreeButForTheOrderInWords) {
  ASSERT_EQ(kBigEndian.size(), kLittleEndian.size());
  Bytes big = kBigEndian;
  Bytes little = kLittleEndian;
  std::sort(big.begin(), big.end());
  std::sort(little.begin(), little.end());
  EXPECT_EQ(big, little);
}

TEST(SdoGolden, BlockOfTheOtherByteOrderIsNoBlock) {
  const Bytes& other = std::endian::native == std::endian::big ? kLittleEndian : kBigEndian;
  EXPECT_EQ(SMSDOBinaryGetCount(other.data(), nullptr), 0xFFFFFFFFU);
  EXPECT_EQ(SMSDOBinaryToConfig(other.data()), nullptr);
}

TEST(SdoGolden, OneTwoByteEntryTakesSixteenBytes) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 1, 1, {0xAB, 0xCD}), SM_STATUS_SUCCESS);
  Bytes expected = header(kObjectSignature, 1, 16);
  put(expected, uint16_t{1});
  expected.insert(expected.end(), {1, 0x01, 0xAB, 0xCD, 0, 0});
  EXPECT_EQ(serialized(record), expected);
}

}  // namespace
