// Runs the sweep over every row of every room.

#include "faults/sweep.h"

#include <cstdio>

#include "gtest/gtest.h"
#include "support/failing_heap.h"

namespace kqsupt::tests {
namespace {

uint64_t points_swept = 0;

// Runs the call with the n-th allocation failing. False when the call made fewer allocations.
bool sweep_point(const Row& row, uint64_t n, Fault fault) {
  const int64_t live_before = live_blocks();
  int64_t lost = 0;
  bool reached = false;
  {
    const std::shared_ptr<void> state = row.prepare();
    const int64_t live_before_call = live_blocks();
    fail_allocation(n, fault);
    const SMStatus status = row.call(state.get());
    reached = stop_failing() >= n;
    if (!reached) {
      EXPECT_EQ(status, SM_STATUS_SUCCESS);
    } else {
      const auto failure = row.failures.find(status);
      EXPECT_NE(failure, row.failures.end()) << "answers " << status;
      lost = failure != row.failures.end() ? failure->second : 0;
      EXPECT_EQ(live_blocks() - live_before_call, lost) << "blocks lost";
      EXPECT_TRUE(row.unchanged(state.get()));
      EXPECT_EQ(row.call(state.get()), SM_STATUS_SUCCESS) << "when it is tried again";
      ++points_swept;
    }
  }
  EXPECT_EQ(live_blocks() - live_before, lost) << "blocks lost in the end";
  return reached;
}

std::vector<Row> all_rows() {
  std::vector<Row> rows;
  for (const auto& room : {frame_rows(), containers_rows(), sdo_rows(), text_rows(), os_rows(),
                           net_rows(), ipc_rows(), log_rows(), config_rows()}) {
    rows.insert(rows.end(), room.begin(), room.end());
  }
  return rows;
}

class AllocationFault : public testing::TestWithParam<Row> {};

TEST_P(AllocationFault, ChangesNothingLosesNothingAndMayBeTriedAgain) {
  for (const Fault fault : {Fault::kOnce, Fault::kFromThen}) {
    uint64_t n = 1;
    for (; sweep_point(GetParam(), n, fault) && !HasFailure(); ++n) {
    }
    EXPECT_GT(n, 1U) << "the call allocates nothing";
    if (HasFailure()) {
      ADD_FAILURE() << "at allocation " << n
                    << (fault == Fault::kOnce ? "" : " and all later ones");
      break;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, AllocationFault, testing::ValuesIn(all_rows()),
                         [](const testing::TestParamInfo<Row>& row_info) {
                           return row_info.param.name;
                         });

class PrintPoints : public testing::Environment {
 public:
  void TearDown() override {
    std::printf("[   FACT   ] %llu allocation failures swept\n",
                static_cast<unsigned long long>(points_swept));
  }
};
[[maybe_unused]] const testing::Environment* const kPrintPoints =
    testing::AddGlobalTestEnvironment(new PrintPoints);

}  // namespace
}  // namespace kqsupt::tests
