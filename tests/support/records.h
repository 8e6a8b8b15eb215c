// Records in tests: owned, built in a line, and compared as bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/sdo.h"

namespace kqsupt::tests {

using Bytes = std::vector<uint8_t>;

struct RecordFree {
  void operator()(SMSDOConfig* config) const { SMSDOConfigFree(config); }
};
using Record = std::unique_ptr<SMSDOConfig, RecordFree>;

inline Record new_record() {
  return Record(SMSDOConfigAlloc());
}
inline Record clone_of(const Record& record) {
  return Record(SMSDOConfigClone(record.get()));
}

constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr uint8_t kOpaque = 1;
constexpr uint8_t kChild = SDO_TYPE_CONFIG;
constexpr uint8_t kChildren = SDO_TYPE_CONFIG | SDO_TYPE_FLAG_ARRAY;
constexpr uint8_t kBlock = SDO_TYPE_BINARY;
constexpr uint8_t kBlocks = SDO_TYPE_BINARY | SDO_TYPE_FLAG_ARRAY;

inline SMStatus add(const Record& record, uint16_t id, uint8_t type, const Bytes& value,
                    uint32_t replace = 0) {
  return SMSDOConfigAddData(record.get(), id, type, value.data(),
                            static_cast<uint32_t>(value.size()), replace);
}

// An opaque value of `size` bytes, each of them `size` too.
inline SMStatus add_sized(const Record& record, uint16_t id, uint32_t size, uint32_t replace = 0) {
  return add(record, id, kOpaque, Bytes(size, static_cast<uint8_t>(size)), replace);
}

// Hands the child over; it stays the caller's when that fails.
inline SMStatus add_child(const Record& record, uint16_t id, Record& child, uint32_t replace = 0,
                          uint32_t size = 4) {
  const SMStatus status = SMSDOConfigAddData(record.get(), id, kChild, child.get(), size, replace);
  if (status == SM_STATUS_SUCCESS) {
    (void)child.release();
  }
  return status;
}

inline SMStatus add_children(const Record& record, uint16_t id,
                             const std::vector<SMSDOConfig*>& children, uint32_t replace = 0) {
  return SMSDOConfigAddData(record.get(), id, kChildren, children.data(),
                            static_cast<uint32_t>(children.size() * sizeof(SMSDOConfig*)), replace);
}

// A record with one opaque entry, ID 1, of `size` bytes.
inline Record record_of(uint32_t size) {
  Record record = new_record();
  EXPECT_EQ(add_sized(record, 1, size), SM_STATUS_SUCCESS);
  return record;
}

inline Bytes serialized(const Record& record) {
  Bytes block(SMSDOConfigGetBinarySize(record.get()));
  auto size = static_cast<uint32_t>(block.size());
  EXPECT_EQ(SMSDOConfigToBinary(record.get(), block.data(), &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, block.size());
  return block;
}

inline bool equal(const Record& a, const Record& b) {
  return SMSDOConfigCompareByValue(a.get(), b.get()) == 1;
}

// A block is host-order words: tests build and read them with these.
template <class T>
void put(Bytes& bytes, T value) {
  const size_t end = bytes.size();
  bytes.resize(end + sizeof value);
  std::memcpy(bytes.data() + end, &value, sizeof value);
}
template <class T>
T word_at(const Bytes& bytes, size_t offset) {
  T value;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

inline Bytes bytes_of(std::string_view text) {
  return Bytes(text.begin(), text.end());
}

// The header of a block that a test makes up.
inline Bytes header(uint32_t signature, uint16_t count, uint16_t size) {
  Bytes block;
  put(block, signature);
  put(block, count);
  put(block, size);
  return block;
}
constexpr uint32_t kObjectSignature = 0x53444F42;
constexpr uint32_t kArraySignature = 0x53444142;

}  // namespace kqsupt::tests
