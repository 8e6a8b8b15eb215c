// Threads under failing allocations.

#include "faults/sweep.h"
#include "kqsupt/os.h"

namespace kqsupt::tests {
namespace {

void* do_nothing(void*) {
  return nullptr;
}

struct Thread {
  ~Thread() { SMThreadStop(thread); }
  SMThread* thread = nullptr;
};

}  // namespace

std::vector<Row> os_rows() {
  // The C library keeps what it allocates for the first thread, and uses it for the next one.
  SMThreadStop(SMThreadStart(do_nothing, nullptr));
  return {
      row<Thread>(
          "SMThreadStart", {{SM_STATUS_NO_MEMORY, 0}},
          [](Thread& state) {
            state.thread = SMThreadStart(do_nothing, nullptr);
            return SMStatus{state.thread != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY};
          },
          [](Thread& state) { return state.thread == nullptr; }),
  };
}

}  // namespace kqsupt::tests
