// A heap whose n-th allocation fails. A program that is linked with failing_heap.cpp allocates
// through it, and so do the shared objects that it loads.
#pragma once

#include <cstdint>

namespace kqsupt::tests {

enum class Fault {
  kOnce,      // the n-th allocation fails, later ones do not
  kFromThen,  // the n-th and all later ones fail
};

// Counts the allocations of this thread from now on and fails the n-th, counting from 1. With n 0
// none fails.
void fail_allocation(uint64_t n, Fault fault);

// Ends the counting: how many allocations were asked for.
uint64_t stop_failing();

// The number of blocks that are allocated and not yet freed.
int64_t live_blocks();

}  // namespace kqsupt::tests
