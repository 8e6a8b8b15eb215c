// Records nested deeply, on the small stack that some agents give their threads.

#include <pthread.h>

#include "gtest/gtest.h"
#include "support/records.h"

namespace {

using namespace kqsupt::tests;

constexpr int kDepth = 200;
#ifdef KQSUPT_SANITIZED  // each frame then carries guard zones around its variables
constexpr size_t kStack = size_t{512} * 1024;
#else
constexpr size_t kStack = size_t{128} * 1024;
#endif

template <class Body>
void on_small_stack(Body body) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
  pthread_t thread;
  const auto run = [](void* argument) -> void* {
    (*static_cast<Body*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// A record in a record in a record …, each level a child or an array of one.
Record nested(int depth, bool arrays) {
  Record record = record_of(5);
  for (int level = 1; level < depth; ++level) {
    Record outer = record_of(3);
    SMSDOConfig* child = record.release();
    const SMStatus status =
        arrays ? add_children(outer, 2, {child})
               : SMSDOConfigAddData(outer.get(), 2, kChild, child, sizeof child, 0);
    EXPECT_EQ(status, SM_STATUS_SUCCESS);
    record = std::move(outer);
  }
  return record;
}

SMStatus count_level(void* context, uint32_t, uint32_t, uint32_t, uint32_t, const void*) {
  ++*static_cast<int*>(context);
  return SM_STATUS_SUCCESS;
}

class SdoNesting : public testing::TestWithParam<bool> {};

TEST_P(SdoNesting, TwoHundredLevelsFitASmallStack) {
  on_small_stack([] {
    const Record record = nested(kDepth, GetParam());
    const Bytes block = serialized(record);
    int levels = 0;
    EXPECT_EQ(SMSDOBinaryWalk(block.data(), &levels, count_level, nullptr, nullptr, nullptr, 1),
              SM_STATUS_SUCCESS);
    EXPECT_EQ(levels, GetParam() ? 2 * kDepth - 1 : kDepth);
    const Record rebuilt(SMSDOBinaryToConfig(block.data()));
    ASSERT_NE(rebuilt, nullptr);
    EXPECT_TRUE(equal(record, rebuilt));
    const Record copy = clone_of(rebuilt);
    EXPECT_TRUE(equal(copy, record));
    SMSDOConfig* const pointers[] = {record.get(), copy.get()};
    uint32_t size = 0;
    EXPECT_EQ(SMSDOConfigArrayToBinaryArray(pointers, 2, nullptr, &size), SM_STATUS_SUCCESS);
    EXPECT_EQ(size, 2 * block.size());
  });
}

TEST_P(SdoNesting, EveryLevelIsEditedInPlace) {
  on_small_stack([] {
    Bytes block = serialized(nested(kDepth, GetParam()));
    block.resize(block.size() + 100);
    auto capacity = static_cast<uint32_t>(block.size());
    const Bytes value(20, 1);
    EXPECT_EQ(SMSDOBinarySetData(block.data(), &capacity, 1, kOpaque, value.data(), 20),
              SM_STATUS_SUCCESS);
    EXPECT_EQ(SMSDOBinaryGetSize(block.data(), nullptr), block.size() - 100 + 20);
  });
}

INSTANTIATE_TEST_SUITE_P(AsChildAndAsArray, SdoNesting, testing::Bool());

}  // namespace
