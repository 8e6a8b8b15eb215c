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
  for (uint32_t size = 0; size <= 256; ++size) {
    void* ours = SMAllocMem(size);
    void* heaps = std::malloc(size);
    EXPECT_EQ(malloc_usable_size(ours), malloc_usable_size(heaps)) << size;
    SMFreeMem(ours);
    std::free(heaps);
  }
}

#ifndef KQSUPT_SANITIZED  // whose heap fills every block
TEST(Memory, IsNotZeroed) {
  // The heap hands out the block again that was released last, as it was.
  auto* block = static_cast<volatile unsigned char*>(SMAllocMem(64));
  for (int i = 0; i < 64; ++i) {
    block[i] = 0x55;
  }
  SMFreeMem(const_cast<unsigned char*>(block));
  auto* again = static_cast<volatile unsigned char*>(SMAllocMem(64));
  EXPECT_EQ(again, block);
  EXPECT_EQ(again[63], 0x55);
  SMFreeMem(const_cast<unsigned char*>(again));
}
#endif

TEST(Memory, ReallocatingToNothingDoesWhatTheHeapDoes) {
  EXPECT_EQ(SMReAllocMem(SMAllocMem(8), 0), nullptr);  // and has released the block
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
