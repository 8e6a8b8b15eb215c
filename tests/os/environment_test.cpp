// Copies of the environment's variables.

#include <atomic>
#include <cstdlib>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/frame.h"
#include "kqsupt/os.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;

constexpr char kName[] = "KQSUPT_TESTED_VARIABLE";

class Variable : public testing::Test {
 protected:
  ~Variable() override { unsetenv(kName); }
};

TEST_F(Variable, IsCopiedWithItsSize) {
  setenv(kName, "a value", 1);
  const Guarded<uint32_t> size(1);
  char* value = SMEnvDup(kName, size.data());
  ASSERT_STREQ(value, "a value");
  EXPECT_NE(value, getenv(kName));
  EXPECT_EQ(*size.data(), 8U);
  SMFreeMem(value);
}

TEST_F(Variable, MayBeCopiedWithoutASize) {
  setenv(kName, "a value", 1);
  char* value = SMEnvDup(kName, nullptr);
  EXPECT_STREQ(value, "a value");
  SMFreeMem(value);
}

TEST_F(Variable, ThatIsEmptyHasTheSizeOfItsTerminator) {
  setenv(kName, "", 1);
  uint32_t size = 7;
  char* value = SMEnvDup(kName, &size);
  EXPECT_STREQ(value, "");
  EXPECT_EQ(size, 1U);
  SMFreeMem(value);
}

TEST_F(Variable, ThatIsLongIsCopiedWhole) {
  const std::string text(100000, 'x');
  setenv(kName, text.c_str(), 1);
  uint32_t size = 0;
  char* value = SMEnvDup(kName, &size);
  EXPECT_EQ(value, text);
  EXPECT_EQ(size, 100001U);
  SMFreeMem(value);
}

TEST_F(Variable, ThatIsNotSetIsNullAndLeavesTheSize) {
  uint32_t size = 7;
  EXPECT_EQ(SMEnvDup(kName, &size), nullptr);
  EXPECT_EQ(SMEnvDup("", &size), nullptr);
  EXPECT_EQ(SMEnvDup(nullptr, &size), nullptr);
  EXPECT_EQ(SMEnvDup(nullptr, nullptr), nullptr);
  EXPECT_EQ(size, 7U);
}

}  // namespace
