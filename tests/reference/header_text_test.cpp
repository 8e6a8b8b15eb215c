// What the reader of headers sees, and what it must not pass over.

#include "reference/header_text.h"
#include "gtest/gtest.h"

namespace {

using kqsupt::tests::Function;
using kqsupt::tests::functions_of;

const char kHeader[] =
    "/** Takes the\n"
    " * lock. Waits.\n"
    " * @param[in,out] lock the lock,\n"
    " *     which stays the caller's.\n"
    " * @param[in] timeout in milliseconds.\n"
    " * @retval SM_STATUS_SUCCESS held.\n"
    " * @retval 0xFFFFFFFF not held. */\n"
    "KQSUPT_API SMStatus SMTake(SMLock* const* lock,\n"
    "                           int32_t timeout);\n"
    "/** @} */\n"
    "\n"
    "/* Plain. */\n"
    "KQSUPT_API void SMPlain(void);\n"
    "\n"
    "KQSUPT_API char* SMNone(const char* format, ...);\n";

TEST(HeaderText, FindsEveryFunction) {
  const auto functions = functions_of("lock.h", kHeader);
  ASSERT_EQ(functions.size(), 3U);
  EXPECT_EQ(functions[0].name, "SMTake");
  EXPECT_EQ(functions[1].name, "SMPlain");
  EXPECT_EQ(functions[2].name, "SMNone");
  EXPECT_EQ(functions[2].result, "char*");
}

TEST(HeaderText, TakesAPrototypeApart) {
  const Function take = functions_of("lock.h", kHeader)[0];
  EXPECT_EQ(take.result, "SMStatus");
  ASSERT_EQ(take.arguments.size(), 2U);
  EXPECT_EQ(take.arguments[0].type, "SMLock* const*");
  EXPECT_EQ(take.arguments[0].name, "lock");
  EXPECT_EQ(take.arguments[1].type, "int32_t");
  EXPECT_EQ(take.arguments[1].name, "timeout");
}

TEST(HeaderText, TakesVoidForNoArguments) {
  EXPECT_TRUE(functions_of("lock.h", kHeader)[1].arguments.empty());
}

TEST(HeaderText, KeepsArgumentsWithoutNames) {
  EXPECT_EQ(functions_of("lock.h", kHeader)[2].arguments.back().name, "...");
}

TEST(HeaderText, TakesACommentApart) {
  const Function take = functions_of("lock.h", kHeader)[0];
  EXPECT_TRUE(take.described);
  EXPECT_EQ(take.description, "Takes the lock. Waits.");
  ASSERT_EQ(take.notes.size(), 4U);
  EXPECT_EQ(take.notes[0].kind, "param");
  EXPECT_EQ(take.notes[0].direction, "in,out");
  EXPECT_EQ(take.notes[0].name, "lock");
  EXPECT_EQ(take.notes[0].text, "the lock, which stays the caller's.");
  EXPECT_EQ(take.notes[3].kind, "retval");
  EXPECT_EQ(take.notes[3].name, "0xFFFFFFFF");
  EXPECT_EQ(take.notes[3].text, "not held.");
}

TEST(HeaderText, TakesNoPlainCommentForADescription) {
  EXPECT_FALSE(functions_of("lock.h", kHeader)[1].described);
}

TEST(HeaderText, TakesNoCommentOfAnotherFunctionForADescription) {
  EXPECT_FALSE(functions_of("lock.h", kHeader)[2].described);
}

}  // namespace
