// Loading the library while memory is short: its start fails, and its functions answer all the
// same.

#include <dlfcn.h>

#include <cstdint>

#include "gtest/gtest.h"
#include "support/failing_heap.h"

namespace kqsupt::tests {
namespace {

void expect_answers(void* library) {
  using Checksum = uint32_t (*)(const char*);
  const auto checksum = reinterpret_cast<Checksum>(dlsym(library, "SMCRC32Compute_str"));
  ASSERT_NE(checksum, nullptr);
  EXPECT_EQ(checksum("123456789"), 0xCBF43926U);
}

void load_with_every_allocation_failing(Fault fault) {
  uint64_t started_without_memory = 0;
  bool reached = true;
  for (uint64_t n = 1; reached; ++n) {
    fail_allocation(n, fault);
    void* library = dlopen(KQSUPT_LIB_DIR "/libkqsupt.so.9", RTLD_NOW);
    reached = stop_failing() >= n;
    if (library != nullptr) {
      expect_answers(library);
      dlclose(library);
      started_without_memory += reached ? 1 : 0;
    } else {
      // The loader itself needs memory too, and says so.
      ASSERT_TRUE(reached) << dlerror();
    }
  }
  EXPECT_GE(started_without_memory, 1U) << "the start of the library allocates nothing";
}

TEST(LoadingWithoutMemory, LeavesALibraryThatAnswersOrNone) {
  load_with_every_allocation_failing(Fault::kOnce);
}

TEST(LoadingWithoutMemory, LeavesALibraryThatAnswersOrNoneWhenAllFurtherMemoryIsShortToo) {
  load_with_every_allocation_failing(Fault::kFromThen);
}

}  // namespace
}  // namespace kqsupt::tests
