// The memory calls under failing allocations.

#include <cstring>

#include "faults/sweep.h"

namespace kqsupt::tests {
namespace {

struct Block {
  ~Block() { SMFreeMem(block); }
  char* block = nullptr;
};

struct FilledBlock : Block {
  FilledBlock() {
    block = static_cast<char*>(SMAllocMem(4));
    std::memcpy(block, "abc", 4);
  }
};

}  // namespace

std::vector<Row> frame_rows() {
  return {
      row<Block>(
          "SMAllocMem", {{SM_STATUS_NO_MEMORY, 0}},
          [](Block& state) -> SMStatus {
            state.block = static_cast<char*>(SMAllocMem(100));
            return state.block != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
          },
          [](Block& state) { return state.block == nullptr; }),
      row<FilledBlock>(
          "SMReAllocMem", {{SM_STATUS_NO_MEMORY, 0}},
          [](FilledBlock& state) -> SMStatus {
            void* moved = SMReAllocMem(state.block, 100000);
            if (moved == nullptr) {
              return SM_STATUS_NO_MEMORY;
            }
            state.block = static_cast<char*>(moved);
            return SM_STATUS_SUCCESS;
          },
          [](FilledBlock& state) { return std::strcmp(state.block, "abc") == 0; }),
  };
}

}  // namespace kqsupt::tests
