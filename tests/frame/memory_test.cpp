// The memory calls are the heap's own.

#include <malloc.h>

#include <cstdlib>
#include <cstring>

#include "gtest/gtest.h"
#include "kqsupt/frame.h"

namespace {

TEST(Memory, FreeingNullDoesNothing) {
  SMFreeMem(nullptr);
  SMFreeGeneric(nullptr);
}

TEST(Memory, AllocatesWhatTheHeapWouldAllocate) {
  void* ours = SMAllocMem(100);
  void* heaps = std::malloc(100);
  ASSERT_NE(ours, nullptr);
  EXPECT_EQ(malloc_usable_size(ours), malloc_usable_size(heaps));
  SMFreeMem(ours);
  std::free(heaps);
}

TEST(Memory, BlocksAreReleasedByEitherSide) {
  std::free(SMAllocMem(8));
  SMFreeMem(std::malloc(8));
  SMFreeGeneric(SMAllocMem(8));
}

TEST(Memory, ZeroBytesMayBeReleased) {
  SMFreeMem(SMAllocMem(0));
}

TEST(Memory, ReallocatingNullAllocates) {
  void* block = SMReAllocMem(nullptr, 16);
  ASSERT_NE(block, nullptr);
  SMFreeMem(block);
}

TEST(Memory, ReallocatingKeepsTheContent) {
  auto* block = static_cast<char*>(SMAllocMem(4));
  ASSERT_NE(block, nullptr);
  std::memcpy(block, "abc", 4);
  block = static_cast<char*>(SMReAllocMem(block, 100000));
  ASSERT_NE(block, nullptr);
  EXPECT_STREQ(block, "abc");
  SMFreeMem(block);
}

}  // namespace
