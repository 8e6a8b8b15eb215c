// The version that callers ask for.

#include "gtest/gtest.h"
#include "kqsupt/frame.h"

namespace {

TEST(Version, IsOneOneOneOnEveryCall) {
  for (int call = 0; call < 2; ++call) {
    EXPECT_EQ(SUPTGetMajorVersion(), 1U);
    EXPECT_EQ(SUPTGetMinorVersion(), 1U);
    EXPECT_EQ(SUPTGetRevision(), 1U);
  }
}

}  // namespace
