// Starting and stopping modules in order, with modules that write down what happens to them.

#include "frame/attach_sequence.h"

#include <array>
#include <string>

#include "frame/stopping.h"
#include "gtest/gtest.h"

namespace {

using kqsupt::frame::AttachSequence;
using kqsupt::frame::Module;

std::string events;
char failing = 0;

template <char Name>
bool start() {
  events += Name;
  return Name != failing;
}

template <char Name>
void stop() {
  events += static_cast<char>(Name - 'a' + 'A');
}

template <char... Names>
constexpr std::array<Module, sizeof...(Names)> modules() {
  return {Module{"module", start<Names>, stop<Names>}...};
}

class AttachSequenceTest : public testing::Test {
 protected:
  void SetUp() override {
    events.clear();
    failing = 0;
  }
  static constexpr auto kThree = modules<'a', 'b', 'c'>();
  AttachSequence sequence_{kThree};
};

TEST_F(AttachSequenceTest, FirstAttachStartsTheModulesInOrder) {
  EXPECT_TRUE(sequence_.attach());
  EXPECT_EQ(events, "abc");
}

TEST_F(AttachSequenceTest, SecondAttachStartsNothing) {
  (void)sequence_.attach();
  EXPECT_TRUE(sequence_.attach());
  EXPECT_EQ(events, "abc");
}

TEST_F(AttachSequenceTest, LastDetachStopsInReverse) {
  (void)sequence_.attach();
  (void)sequence_.attach();
  sequence_.detach();
  EXPECT_EQ(events, "abc");
  sequence_.detach();
  EXPECT_EQ(events, "abcCBA");
}

TEST_F(AttachSequenceTest, FailedStartStopsTheEarlierOnesTheLatestFirst) {
  failing = 'c';
  EXPECT_FALSE(sequence_.attach());
  EXPECT_EQ(events, "abcBA");
}

TEST_F(AttachSequenceTest, FailureOfTheFirstModuleStopsNone) {
  failing = 'a';
  EXPECT_FALSE(sequence_.attach());
  EXPECT_EQ(events, "a");
}

TEST_F(AttachSequenceTest, AttachAfterAFailedOneReportsSuccessAndStartsNothing) {
  failing = 'b';
  EXPECT_FALSE(sequence_.attach());
  events.clear();
  failing = 0;
  EXPECT_TRUE(sequence_.attach());
  EXPECT_EQ(events, "");
}

TEST_F(AttachSequenceTest, DetachAfterAFailedAttachRunsEveryStop) {
  failing = 'b';
  EXPECT_FALSE(sequence_.attach());
  events.clear();
  sequence_.detach();
  EXPECT_EQ(events, "CBA");
}

TEST_F(AttachSequenceTest, LibraryAttachesAgainAfterTheLastDetach) {
  (void)sequence_.attach();
  sequence_.detach();
  events.clear();
  EXPECT_TRUE(sequence_.attach());
  EXPECT_EQ(events, "abc");
}

bool stopping_in_start = false;
bool stopping_in_stop = false;

TEST_F(AttachSequenceTest, IsStoppingFromBeforeTheFirstModuleStopsUntilTheNextStart) {
  static constexpr std::array<Module, 1> kLooking{
      {{"looking",
        [] {
          stopping_in_start = kqsupt::frame::is_stopping();
          return true;
        },
        [] { stopping_in_stop = kqsupt::frame::is_stopping(); }}}};
  AttachSequence sequence{kLooking};
  for (int round = 0; round < 2; ++round) {
    stopping_in_start = true;
    stopping_in_stop = false;
    (void)sequence.attach();
    (void)sequence.attach();
    EXPECT_FALSE(stopping_in_start);
    sequence.detach();
    EXPECT_FALSE(kqsupt::frame::is_stopping());
    sequence.detach();
    EXPECT_TRUE(stopping_in_stop);
    EXPECT_TRUE(kqsupt::frame::is_stopping());
  }
}

}  // namespace
