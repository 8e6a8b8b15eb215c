// Walking blocks: what is called, in which order, and what ends a walk.

#include <cstdio>
#include <string>

#include "gtest/gtest.h"
#include "support/records.h"

namespace {

using namespace kqsupt::tests;

// Writes down every call; answers what the test asks for at one of them.
struct Trace {
  std::string calls;
  std::string answer_at;  // the call, as written down, that answers `answer`
  SMStatus answer = 0;

  SMStatus note(const std::string& call) {
    calls += (calls.empty() ? "" : " ") + call;
    return call == answer_at ? answer : 0;
  }
};

std::string number(uint32_t value) {
  return value == 0xFFFFFFFF ? "none" : std::to_string(value);
}

SMStatus begin(void* context, uint32_t parent, uint32_t is_array, uint32_t count, uint32_t index,
               const void* block) {
  EXPECT_EQ(SMSDOBinaryGetCount(block, nullptr), count);
  return static_cast<Trace*>(context)->note((is_array == 1 ? "array(" : "record(") +
                                            number(parent) + "," + number(count) + "," +
                                            number(index) + ")");
}

// The token of an entry is its ID times ten.
SMStatus entry(void* context, uint32_t* token, uint32_t id, uint32_t user_bits, uint32_t user_flag,
               uint32_t is_array, uint32_t base_type, uint32_t size, const void* value) {
  EXPECT_EQ(*token, 0U);
  EXPECT_NE(value, nullptr);
  *token = id * 10;
  return static_cast<Trace*>(context)->note("entry(" + number(id) + ":" + number(user_bits) +
                                            number(user_flag) + number(is_array) + ":" +
                                            number(base_type) + "," + number(size) + ")");
}

SMStatus after(void* context, uint32_t token) {
  return static_cast<Trace*>(context)->note("after(" + number(token) + ")");
}

SMStatus end(void* context, uint32_t parent, uint32_t is_array) {
  return static_cast<Trace*>(context)->note((is_array == 1 ? "end-array(" : "end(") +
                                            number(parent) + ")");
}

class SdoWalk : public testing::Test {
 protected:
  SdoWalk() {
    const Record record = new_record();
    EXPECT_EQ(add(record, 1, 0xE3, {1, 2}), SM_STATUS_SUCCESS);
    Record child = record_of(5);
    EXPECT_EQ(add_child(record, 2, child), SM_STATUS_SUCCESS);
    EXPECT_EQ(
        add_children(record, 3,
                     {record_of(1).release(), new_record().release(), record_of(2).release()}),
        SM_STATUS_SUCCESS);
    block_ = serialized(record);
  }
  SMStatus walk(uint16_t recurse) {
    return SMSDOBinaryWalk(block_.data(), &trace_, begin, entry, after, end, recurse);
  }
  Bytes block_;
  Trace trace_;
};

TEST_F(SdoWalk, VisitsNestedBlocksInOrderWithTheirTokens) {
  EXPECT_EQ(walk(1), SM_STATUS_SUCCESS);
  EXPECT_EQ(trace_.calls,
            "record(0,3,none) entry(1:310:3,2) after(10) "
            "entry(2:000:12,21) record(20,1,none) entry(1:000:1,5) after(10) end(20) after(20) "
            "entry(3:001:12,48) array(30,3,none) "
            "record(30,1,0) entry(1:000:1,1) after(10) end(30) "
            "record(30,1,2) entry(1:000:1,2) after(10) end(30) "
            "end-array(30) after(30) end(0)");
}

TEST_F(SdoWalk, StaysInTheOuterBlockUnlessRecurseIsOne) {
  const std::string flat =
      "record(0,3,none) entry(1:310:3,2) after(10) entry(2:000:12,21) after(20) "
      "entry(3:001:12,48) after(30) end(0)";
  EXPECT_EQ(walk(0), SM_STATUS_SUCCESS);
  EXPECT_EQ(trace_.calls, flat);
  trace_ = {};
  EXPECT_EQ(walk(2), SM_STATUS_SUCCESS);
  EXPECT_EQ(trace_.calls, flat);
}

TEST_F(SdoWalk, ElementsOfAnArrayOnlyBeginAndEndWithoutRecursion) {
  const Bytes array(block_.end() - 48, block_.end());
  EXPECT_EQ(SMSDOBinaryWalk(array.data(), &trace_, begin, entry, after, end, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(trace_.calls, "array(0,3,none) record(0,1,0) end(0) record(0,1,2) end(0) end-array(0)");
}

TEST_F(SdoWalk, EmptyBlocksCallNothing) {
  for (const uint32_t signature : {kObjectSignature, kArraySignature}) {
    const Bytes empty = header(signature, 0, 8);
    EXPECT_EQ(SMSDOBinaryWalk(empty.data(), &trace_, begin, entry, after, end, 1),
              SM_STATUS_SUCCESS);
  }
  EXPECT_EQ(trace_.calls, "");
}

TEST_F(SdoWalk, NullAndOtherBytesAreRefused) {
  const Bytes other = header(0x12345678, 1, 16);
  EXPECT_EQ(SMSDOBinaryWalk(nullptr, &trace_, begin, entry, after, end, 1),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSDOBinaryWalk(other.data(), &trace_, begin, entry, after, end, 1),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(trace_.calls, "");
}

TEST_F(SdoWalk, NestedBytesThatAreNoBlockEndTheWalk) {
  block_[block_.size() - 48] ^= 0xFF;
  EXPECT_EQ(walk(1), SM_STATUS_INVALID_PARAMETER);
  EXPECT_TRUE(trace_.calls.ends_with("entry(3:001:12,48)")) << trace_.calls;
}

TEST_F(SdoWalk, ResultOfBeginEndsTheWalk) {
  trace_.answer_at = "record(20,1,none)";
  trace_.answer = 42;
  EXPECT_EQ(walk(1), 42U);
  EXPECT_TRUE(trace_.calls.ends_with(trace_.answer_at)) << trace_.calls;
}

TEST_F(SdoWalk, ResultOfEntryEndsTheWalk) {
  trace_.answer_at = "entry(1:000:1,1)";
  trace_.answer = 42;
  EXPECT_EQ(walk(1), 42U);
  EXPECT_TRUE(trace_.calls.ends_with(trace_.answer_at)) << trace_.calls;
}

TEST_F(SdoWalk, ResultOfANestedEndEndsTheWalk) {
  trace_.answer_at = "end(20)";
  trace_.answer = 42;
  EXPECT_EQ(walk(1), 42U);
  EXPECT_TRUE(trace_.calls.ends_with(trace_.answer_at)) << trace_.calls;
}

TEST_F(SdoWalk, ResultOfAnElementsEndEndsTheWalk) {
  trace_.answer_at = "end(30)";
  trace_.answer = 42;
  EXPECT_EQ(walk(1), 42U);
  EXPECT_TRUE(trace_.calls.ends_with("after(10) end(30)")) << trace_.calls;
}

TEST_F(SdoWalk, ResultOfTheOuterEndIsTheWalks) {
  trace_.answer_at = "end(0)";
  trace_.answer = 42;
  EXPECT_EQ(walk(0), 42U);
}

TEST_F(SdoWalk, ResultOfAfterStopsNothingWhileThereIsAnEnd) {
  trace_.answer_at = "after(20)";
  trace_.answer = 42;
  EXPECT_EQ(walk(1), SM_STATUS_SUCCESS);
  EXPECT_TRUE(trace_.calls.ends_with("end(0)")) << trace_.calls;
}

TEST_F(SdoWalk, LastResultOfAfterIsTheWalksWithoutAnEnd) {
  trace_.answer = 42;
  trace_.answer_at = "after(20)";
  EXPECT_EQ(SMSDOBinaryWalk(block_.data(), &trace_, begin, entry, after, nullptr, 0),
            SM_STATUS_SUCCESS);
  trace_.answer_at = "after(30)";
  EXPECT_EQ(SMSDOBinaryWalk(block_.data(), &trace_, begin, entry, after, nullptr, 0), 42U);
}

TEST_F(SdoWalk, LastResultOfAfterInANestedBlockEndsTheWalkWithoutAnEnd) {
  trace_.answer = 42;
  trace_.answer_at = "after(10)";
  EXPECT_EQ(SMSDOBinaryWalk(block_.data(), &trace_, begin, entry, after, nullptr, 1), 42U);
  EXPECT_TRUE(trace_.calls.ends_with("entry(1:000:1,5) after(10)")) << trace_.calls;
}

TEST_F(SdoWalk, EveryCallbackMayBeMissing) {
  EXPECT_EQ(SMSDOBinaryWalk(block_.data(), nullptr, nullptr, nullptr, nullptr, nullptr, 1),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(SMSDOBinaryWalk(block_.data(), &trace_, nullptr, nullptr, after, nullptr, 0),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(trace_.calls, "after(0) after(0) after(0)");
}

TEST(SdoWalkValues, PointIntoTheBlock) {
  const Record record = new_record();
  ASSERT_EQ(add(record, 1, 1, {1, 2}), SM_STATUS_SUCCESS);
  ASSERT_EQ(add(record, 2, 1, bytes_of("hello")), SM_STATUS_SUCCESS);
  const Bytes block = serialized(record);
  std::vector<Bytes> values;
  const SMSDOBinaryWalkEntry collect = [](void* context, uint32_t*, uint32_t, uint32_t, uint32_t,
                                          uint32_t, uint32_t, uint32_t size, const void* value) {
    const auto* bytes = static_cast<const uint8_t*>(value);
    static_cast<std::vector<Bytes>*>(context)->emplace_back(bytes, bytes + size);
    return SMStatus{0};
  };
  EXPECT_EQ(SMSDOBinaryWalk(block.data(), &values, nullptr, collect, nullptr, nullptr, 0),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(values, (std::vector<Bytes>{{1, 2}, bytes_of("hello")}));
}

}  // namespace
