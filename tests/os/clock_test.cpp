// Time that has passed between two readings of the clock.

#include <sys/time.h>

#include <cstdint>
#include <ostream>

#include "gtest/gtest.h"
#include "kqsupt/os.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;

constexpr uint64_t kNone = UINT64_MAX;
constexpr uint64_t kTopBit = uint64_t{1} << 63U;

struct Passed {
  uint64_t elapsed;
  uint16_t first;
  uint16_t second;

  bool operator==(const Passed&) const = default;
};

void PrintTo(const Passed& passed, std::ostream* out) {
  *out << passed.elapsed << " ms, flags " << passed.first << " and " << passed.second;
}

// What the outputs hold before a call.
constexpr Passed kUnwritten = {0x5555555555555555, 0x5555, 0x5555};

Passed check(uint64_t start, uint64_t current, uint64_t limit) {
  const Guarded<uint64_t> elapsed(1);
  const Guarded<uint16_t> first(1);
  const Guarded<uint16_t> second(1);
  SMRefTicksDiffCheckTimer(start, current, limit, elapsed.data(), first.data(), second.data());
  return {*elapsed.data(), *first.data(), *second.data()};
}

TEST(Clock, CountsMillisecondsSince1970) {
  timeval before{};
  timeval after{};
  ASSERT_EQ(gettimeofday(&before, nullptr), 0);
  const uint64_t ticks = SMRefTicksGet();
  ASSERT_EQ(gettimeofday(&after, nullptr), 0);
  EXPECT_GE(ticks, static_cast<uint64_t>(before.tv_sec) * 1000);
  EXPECT_LE(ticks, (static_cast<uint64_t>(after.tv_sec) + 1) * 1000);
}

TEST(ElapsedTime, IsTheDifferenceOfTheReadings) {
  EXPECT_EQ(check(1000, 1500, 600), (Passed{500, 0, 0}));
  EXPECT_EQ(check(0, 0x123456789ABCDEF0, kTopBit - 1), (Passed{0x123456789ABCDEF0, 0, 0}));
}

TEST(ElapsedTime, IsOverOnlyBeyondTheLimit) {
  EXPECT_EQ(check(1000, 1499, 500), (Passed{499, 0, 0}));
  EXPECT_EQ(check(1000, 1500, 500), (Passed{500, 0, 0}));
  EXPECT_EQ(check(1000, 1501, 500), (Passed{501, 1, 1}));
}

TEST(ElapsedTime, IsOverALimitOf0WithTheFirstMillisecond) {
  EXPECT_EQ(check(1000, 1000, 0), (Passed{0, 0, 0}));
  EXPECT_EQ(check(1000, 1001, 0), (Passed{1, 1, 1}));
}

TEST(ElapsedTime, IsComparedInBothHalvesOfTheLimit) {
  constexpr uint64_t kHigh = uint64_t{1} << 32U;
  EXPECT_EQ(check(0, kHigh, 0xFFFFFFFF), (Passed{kHigh, 1, 1}));
  EXPECT_EQ(check(0, 0xFFFFFFFF, kHigh), (Passed{0xFFFFFFFF, 0, 0}));
  // The low halves have no sign.
  EXPECT_EQ(check(0, kHigh + 0x80000000, kHigh + 0x7FFFFFFF), (Passed{kHigh + 0x80000000, 1, 1}));
  EXPECT_EQ(check(0, kHigh + 0x7FFFFFFF, kHigh + 0x80000000), (Passed{kHigh + 0x7FFFFFFF, 0, 0}));
}

TEST(ElapsedTime, IsNothingWhenTheClockWentBack) {
  EXPECT_EQ(check(1500, 1000, 600), (Passed{0, 0, 0}));
  EXPECT_EQ(check(1500, 1000, 0), (Passed{0, 0, 0}));
  EXPECT_EQ(check(1500, 1000, kNone), (Passed{0, 0, 0}));
  EXPECT_EQ(check(1, 0, 0), (Passed{0, 0, 0}));
}

TEST(ElapsedTime, HasASign) {
  EXPECT_EQ(check(0, kTopBit - 1, 0), (Passed{kTopBit - 1, 1, 1}));
  EXPECT_EQ(check(0, kTopBit, 0), (Passed{0, 0, 0}));
  EXPECT_EQ(check(kTopBit, 0, 0), (Passed{0, 0, 0}));
  // Readings are not compared: only how far they are apart.
  EXPECT_EQ(check(kTopBit - 1, kTopBit + 1, 1), (Passed{2, 1, 1}));
  EXPECT_EQ(check(kNone - 1, 1, 1), (Passed{3, 1, 1}));
}

TEST(ElapsedTime, IsOverEveryLimitWithItsTopBitSet) {
  EXPECT_EQ(check(1000, 1000, kTopBit), (Passed{0, 1, 1}));
  EXPECT_EQ(check(1000, 1001, kNone - 1), (Passed{1, 1, 1}));
  EXPECT_EQ(check(1500, 1000, kNone - 1), (Passed{0, 1, 1}));
  EXPECT_EQ(check(0, kTopBit - 1, kTopBit), (Passed{kTopBit - 1, 1, 1}));
}

TEST(ElapsedTime, SetsTheFirstFlagAloneWithoutALimit) {
  EXPECT_EQ(check(1000, 1000, kNone), (Passed{0, 0, 0}));
  EXPECT_EQ(check(1000, 1001, kNone), (Passed{1, 1, 0}));
  EXPECT_EQ(check(0, 0x100000000, kNone), (Passed{0x100000000, 1, 0}));
}

TEST(ElapsedTime, IsNotWrittenForATimeThatCouldNotBeRead) {
  EXPECT_EQ(check(kNone, 1000, 500), kUnwritten);
  EXPECT_EQ(check(1000, kNone, 500), kUnwritten);
  EXPECT_EQ(check(kNone, kNone, 500), kUnwritten);
  EXPECT_EQ(check(1000, kNone, kNone), kUnwritten);
}

TEST(ElapsedTime, IsWrittenToTheOutputsThatThereAre) {
  for (int mask = 0; mask < 8; ++mask) {
    const Guarded<uint64_t> elapsed(1);
    const Guarded<uint16_t> first(1);
    const Guarded<uint16_t> second(1);
    SMRefTicksDiffCheckTimer(1000, 1501, 500, (mask & 1) != 0 ? elapsed.data() : nullptr,
                             (mask & 2) != 0 ? first.data() : nullptr,
                             (mask & 4) != 0 ? second.data() : nullptr);
    EXPECT_EQ(*elapsed.data(), (mask & 1) != 0 ? 501 : kUnwritten.elapsed);
    EXPECT_EQ(*first.data(), (mask & 2) != 0 ? 1 : kUnwritten.first);
    EXPECT_EQ(*second.data(), (mask & 4) != 0 ? 1 : kUnwritten.second);
  }
}

}  // namespace
