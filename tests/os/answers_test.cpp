// What the library makes of answers of the system that a test cannot wait for. The program puts
// functions of its own in the place of the C library's.

#include <sys/select.h>
#include <sys/time.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "gtest/gtest.h"
#include "kqsupt/os.h"

namespace {

struct Answers {
  int result = 0;  // of each call; -1 when it fails
  time_t seconds = 0;
  suseconds_t microseconds = 0;
  const char* name = "";
};
constinit Answers answers;  // the library asks as soon as it is loaded

// What the library asked select() for.
struct Asked {
  int count = 0;
  int descriptors = 0;
  bool reads_input = false;
  bool asks_for_more = false;  // writing, exceptions or a further descriptor
  int64_t wait = -1;           // microseconds; -1 without limit
};
Asked asked;

}  // namespace

extern "C" {

int gettimeofday(timeval* now, void*) noexcept {
  now->tv_sec = answers.seconds;
  now->tv_usec = answers.microseconds;
  return answers.result;
}

int uname(utsname* about) noexcept {
  std::strncpy(about->sysname, answers.name, sizeof about->sysname - 1);
  return answers.result;
}

int select(int descriptors, fd_set* input, fd_set* output, fd_set* exceptions, timeval* wait) {
  ++asked.count;
  asked.descriptors = descriptors;
  asked.reads_input = input != nullptr && FD_ISSET(0, input);
  asked.asks_for_more = output != nullptr || exceptions != nullptr;
  asked.wait = wait != nullptr ? int64_t{wait->tv_sec} * 1000000 + wait->tv_usec : -1;
  errno = EINTR;
  return answers.result;
}

}  // extern "C"

namespace {

class Clock : public testing::Test {
 protected:
  ~Clock() override { answers = {}; }

  static uint64_t ticks_at(time_t seconds, suseconds_t microseconds) {
    answers = {0, seconds, microseconds, ""};
    return SMRefTicksGet();
  }
};

TEST_F(Clock, CountsMillisecondsOfWholeSeconds) {
  EXPECT_EQ(ticks_at(0, 0), 0U);
  EXPECT_EQ(ticks_at(1, 0), 1000U);
  EXPECT_EQ(ticks_at(1700000000, 0), 1700000000000U);
}

TEST_F(Clock, CutsMicrosecondsOff) {
  EXPECT_EQ(ticks_at(0, 999), 0U);
  EXPECT_EQ(ticks_at(0, 1000), 1U);
  EXPECT_EQ(ticks_at(1, 999), 1000U);
  EXPECT_EQ(ticks_at(1, 999999), 1999U);
  EXPECT_EQ(ticks_at(1700000000, 123456), 1700000000123U);
  EXPECT_EQ(ticks_at(1700000000, 999999), 1700000000999U);
}

// The sum of seconds in double precision falls short of these milliseconds.
TEST_F(Clock, IsOneMillisecondBehindWhereTheSumIsRoundedDown) {
  EXPECT_EQ(ticks_at(0, 7000), 6U);
  EXPECT_EQ(ticks_at(0, 14000), 13U);
  EXPECT_EQ(ticks_at(1, 1000), 1000U);
  EXPECT_EQ(ticks_at(1, 2000), 1002U);
  EXPECT_EQ(ticks_at(1, 3000), 1002U);
  EXPECT_EQ(ticks_at(2147483648, 2000), 2147483648001U);
  EXPECT_EQ(ticks_at(4294967296, 4000), 4294967296003U);
}

TEST_F(Clock, IsOneMillisecondAheadWhereTheSumIsRoundedUp) {
  EXPECT_EQ(ticks_at(8589934592, 3999), 8589934592004U);
  EXPECT_EQ(ticks_at(8589934592, 10999), 8589934592011U);
}

TEST_F(Clock, GoesOnBeyond31And32BitsOfSeconds) {
  EXPECT_EQ(ticks_at(2147483647, 999999), 2147483647999U);
  EXPECT_EQ(ticks_at(2147483648, 0), 2147483648000U);
  EXPECT_EQ(ticks_at(4294967296, 0), 4294967296000U);
  EXPECT_EQ(ticks_at(253402300799, 0), 253402300799000U);
}

TEST_F(Clock, KeepsTimesBefore1970AsFarApartAsTheyWere) {
  uint64_t elapsed = 7;
  SMRefTicksDiffCheckTimer(ticks_at(-2, 500000), ticks_at(2, 0), 0, &elapsed, nullptr, nullptr);
  EXPECT_EQ(elapsed, 3500U);
}

// A sum over the readings of all microseconds of a second, in which the order counts.
uint64_t sum_of_second(time_t second, uint64_t (*ticks)(time_t, suseconds_t)) {
  uint64_t sum = 0;
  for (suseconds_t microsecond = 0; microsecond < 1000000; ++microsecond) {
    sum = sum * 31 + ticks(second, microsecond);
  }
  return sum;
}

TEST_F(Clock, ReadsTheSameOnEveryHost) {
  EXPECT_EQ(sum_of_second(1, ticks_at), 0xC8BBE06CCA49E388U);
  EXPECT_EQ(sum_of_second(8589934592, ticks_at), 0xDBBAEF44DE8DE9D8U);
}

TEST_F(Clock, ReadsAllOnesWhenTheTimeCannotBeRead) {
  answers = {-1, 1700000000, 5, ""};
  EXPECT_EQ(SMRefTicksGet(), UINT64_MAX);
}

class Host : public testing::Test {
 protected:
  ~Host() override { answers = {}; }

  static uint32_t type_of(const char* name, int result) {
    answers = {result, 0, 0, name};
    return SMOSTypeGet();
  }
};

TEST_F(Host, IsOfType4WhereTheKernelIsNamedSoInLettersOfEitherCase) {
  EXPECT_EQ(type_of("VMkernel", 0), 4U);
  EXPECT_EQ(type_of("vmkernel", 0), 4U);
  EXPECT_EQ(type_of("VMKERNEL", 0), 4U);
  EXPECT_EQ(type_of("vMKERNEl", 0), 4U);
}

TEST_F(Host, IsOfType3WhereTheKernelIsNamedOtherwise) {
  for (const char* name : {"Linux", "", "VMkerne", "VMkernel ", "VMkernels", " VMkernel", "VM"}) {
    EXPECT_EQ(type_of(name, 0), 3U) << name;
  }
}

TEST_F(Host, IsOfType3WhereTheSystemDoesNotSay) {
  EXPECT_EQ(type_of("Linux", -1), 3U);
  EXPECT_EQ(type_of("VMkernel", -1), 3U);
}

class Keyboard : public testing::Test {
 protected:
  ~Keyboard() override { answers = {}; }

  static int32_t hit_when(int result) {
    answers = {result, 0, 0, ""};
    asked = {};
    return SMkbhit();
  }
};

TEST_F(Keyboard, IsHitWhenInputIsReady) {
  EXPECT_EQ(hit_when(1), 1);
}

TEST_F(Keyboard, IsNotHitWhenNoneIs) {
  EXPECT_EQ(hit_when(0), 0);
}

TEST_F(Keyboard, IsNotHitWhenTheSystemDoesNotSay) {
  EXPECT_EQ(hit_when(-1), 0);
  EXPECT_EQ(asked.count, 1);
}

TEST_F(Keyboard, IsAskedForReadingStandardInputWithoutWaiting) {
  hit_when(1);
  EXPECT_EQ(asked.count, 1);
  EXPECT_EQ(asked.descriptors, 1);
  EXPECT_TRUE(asked.reads_input);
  EXPECT_FALSE(asked.asks_for_more);
  EXPECT_EQ(asked.wait, 0);
}

}  // namespace
