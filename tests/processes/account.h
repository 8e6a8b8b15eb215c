// An account that processes change under one mutex, and that is right although they are killed in
// the middle of a change.
#pragma once

#include <cstdint>

namespace kqsupt::tests {

// Lives in shared memory and begins as zeros. Every member is volatile, so that a process that is
// killed has done the steps of a change up to one of them and none after it.
struct Account {
  static constexpr uint32_t kParties = 5;

  volatile uint32_t sum;
  volatile uint32_t shares[kParties];  // what each party added
  volatile uint32_t undone;            // how many changes were found half done

  // Adds 1 for the party. Only who holds the mutex may: two at a time make the sum and the shares
  // differ, or leave a change open that is not theirs.
  void add(uint32_t party) {
    undo();
    before_.party = party;
    before_.sum = sum;
    before_.share = shares[party];
    open_ = 1;
    sum = sum + 1;
    shares[party] = shares[party] + 1;
    open_ = 0;
  }

  // Takes back a change that a process was killed in.
  void undo() {
    if (open_ != 0) {
      sum = before_.sum;
      shares[before_.party] = before_.share;
      undone = undone + 1;
      open_ = 0;
    }
  }

 private:
  struct {
    volatile uint32_t party;
    volatile uint32_t sum;
    volatile uint32_t share;
  } before_;
  volatile uint32_t open_;
};

}  // namespace kqsupt::tests
