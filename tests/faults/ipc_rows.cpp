// Locks under failing allocations.

#include "kqsupt/ipc.h"

#include "faults/sweep.h"

namespace kqsupt::tests {
namespace {

const Failures kNoMemory = {{SM_STATUS_NO_MEMORY, 0}};

SMStatus done(bool is_done) {
  return is_done ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
}

struct Lock {
  ~Lock() { SMRWLDestroy(lock); }
  SMRWLock* lock = nullptr;
};

struct Section {
  bool ran = false;
};

void* run(void* section) {
  static_cast<Section*>(section)->ran = true;
  return nullptr;
}

}  // namespace

std::vector<Row> ipc_rows() {
  // What the library keeps from the first use of a name on is not the calls'.
  SMRWLDestroy(SMRWLCreate("row"));
  return {
      row<Lock>(
          "SMRWLCreate", kNoMemory,
          [](Lock& state) { return done((state.lock = SMRWLCreate(nullptr)) != nullptr); },
          [](Lock& state) { return state.lock == nullptr; }),
      row<Lock>(
          "SMRWLCreate_named", kNoMemory,
          [](Lock& state) { return done((state.lock = SMRWLCreate("row")) != nullptr); },
          [](Lock& state) { return state.lock == nullptr; }),
      // The call itself answers 0 whether or not the routine has run.
      row<Section>(
          "SMCriticalSectionExecute", kNoMemory,
          [](Section& state) {
            const SMStatus status = SMCriticalSectionExecute(run, &state, -1);
            return status == SM_STATUS_SUCCESS ? done(state.ran) : status;
          },
          [](Section& state) { return !state.ran; }),
  };
}

}  // namespace kqsupt::tests
