// The bounds-checked functions: the counterpart's result when there is room, an empty text when
// not.

#include <errno.h>
#include <limits.h>
#include <stdlib.h>

#include <limits>
#include <string>

#include "gtest/gtest.h"
#include "kqbounded.h"

namespace {

TEST(StrcpyS, CopiesWhenTheTerminatorFitsToo) {
  char text[4] = "xxx";
  EXPECT_EQ(strcpy_s(text, sizeof text, "abc"), 0);
  EXPECT_STREQ(text, "abc");
}

TEST(StrcpyS, LeavesAnEmptyTextWhenTheTerminatorDoesNotFit) {
  char text[3] = "xx";
  EXPECT_EQ(strcpy_s(text, sizeof text, "abc"), ERANGE);
  EXPECT_STREQ(text, "");
}

TEST(StrcpyS, RefusesNullAndNoRoom) {
  char text[3] = "xx";
  EXPECT_EQ(strcpy_s(nullptr, 3, "a"), EINVAL);
  EXPECT_EQ(strcpy_s(text, 3, nullptr), EINVAL);
  EXPECT_STREQ(text, "");
  text[0] = 'y';
  EXPECT_EQ(strcpy_s(text, 0, "a"), EINVAL);
  EXPECT_EQ(text[0], 'y');
}

TEST(StrncpyS, TerminatesWhatItCutsAtTheCount) {
  char text[4] = "xxx";
  EXPECT_EQ(strncpy_s(text, sizeof text, "abcdef", 3), 0);
  EXPECT_STREQ(text, "abc");
}

TEST(StrncpyS, ReadsNoFurtherThanTheCount) {
  const char unterminated[2] = {'a', 'b'};
  char text[8];
  EXPECT_EQ(strncpy_s(text, sizeof text, unterminated, 2), 0);
  EXPECT_STREQ(text, "ab");
}

TEST(StrncpyS, RefusesACountThatDoesNotFit) {
  char text[4] = "xxx";
  EXPECT_EQ(strncpy_s(text, sizeof text, "abcdef", 4), ERANGE);
  EXPECT_STREQ(text, "");
}

TEST(StrcatS, AppendsUpToTheLastByte) {
  char text[6] = "ab";
  EXPECT_EQ(strcat_s(text, sizeof text, "cde"), 0);
  EXPECT_STREQ(text, "abcde");
}

TEST(StrcatS, EmptiesTheTextWhenTheResultDoesNotFit) {
  char text[6] = "ab";
  EXPECT_EQ(strcat_s(text, sizeof text, "cdef"), ERANGE);
  EXPECT_STREQ(text, "");
}

TEST(StrcatS, RefusesATextWithoutTerminator) {
  char text[2] = {'a', 'b'};
  EXPECT_EQ(strcat_s(text, sizeof text, "c"), EINVAL);
  EXPECT_EQ(text[0], '\0');
}

TEST(SprintfS, AnswersZeroAndNotALength) {
  char text[8];
  EXPECT_EQ(sprintf_s(text, sizeof text, "%s-%d", "ab", 1234), 0);
  EXPECT_STREQ(text, "ab-1234");
}

TEST(SprintfS, LeavesAnEmptyTextWhenTheResultDoesNotFit) {
  char text[7];
  EXPECT_EQ(sprintf_s(text, sizeof text, "%s-%d", "ab", 1234), ERANGE);
  EXPECT_STREQ(text, "");
}

TEST(StrtokS, WalksTheTokens) {
  char text[] = ",a,,b";
  char* rest = nullptr;
  EXPECT_STREQ(strtok_s(text, ",", &rest), "a");
  EXPECT_STREQ(strtok_s(nullptr, ",", &rest), "b");
  EXPECT_EQ(strtok_s(nullptr, ",", &rest), nullptr);
}

TEST(StrtokS, HasNoTokenInNothing) {
  char* rest = nullptr;
  EXPECT_EQ(strtok_s(nullptr, ",", &rest), nullptr);
}

TEST(FopenS, OpensWhatExists) {
  FILE* file = nullptr;
  ASSERT_EQ(fopen_s(&file, "/proc/self/stat", "r"), 0);
  ASSERT_NE(file, nullptr);
  fclose(file);
}

TEST(FopenS, AnswersTheErrnoAndNoFile) {
  FILE* file = stdin;
  EXPECT_EQ(fopen_s(&file, "/proc/self/no-such-file", "r"), ENOENT);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(fopen_s(nullptr, "/proc/self/stat", "r"), EINVAL);
}

TEST(GetenvS, CopiesTheValueAndItsSizeWithTheTerminator) {
  setenv("KQSUPT_TEST_VARIABLE", "four", 1);
  char value[5];
  size_t needed = 0;
  EXPECT_EQ(getenv_s(&needed, value, sizeof value, "KQSUPT_TEST_VARIABLE"), 0);
  EXPECT_STREQ(value, "four");
  EXPECT_EQ(needed, 5U);
}

TEST(GetenvS, ReportsTheSizeAlsoWhenItDoesNotFit) {
  setenv("KQSUPT_TEST_VARIABLE", "four", 1);
  char value[4] = "xxx";
  size_t needed = 0;
  EXPECT_EQ(getenv_s(&needed, value, sizeof value, "KQSUPT_TEST_VARIABLE"), ERANGE);
  EXPECT_STREQ(value, "");
  EXPECT_EQ(needed, 5U);
  EXPECT_EQ(getenv_s(&needed, nullptr, 0, "KQSUPT_TEST_VARIABLE"), 0);
}

TEST(GetenvS, FindsAnUnsetVariableEmpty) {
  unsetenv("KQSUPT_TEST_VARIABLE");
  char value[4] = "xxx";
  size_t needed = 9;
  EXPECT_EQ(getenv_s(&needed, value, sizeof value, "KQSUPT_TEST_VARIABLE"), 0);
  EXPECT_STREQ(value, "");
  EXPECT_EQ(needed, 0U);
}

TEST(LocaltimeS, FillsTheCalendar) {
  setenv("TZ", "UTC0", 1);
  tzset();
  const time_t time = 86400;
  struct tm calendar {};
  EXPECT_EQ(localtime_s(&calendar, &time), 0);
  EXPECT_EQ(calendar.tm_mday, 2);
  EXPECT_EQ(localtime_s(nullptr, &time), EINVAL);
}

TEST(CtimeS, NeedsRoomForTwentySixBytes) {
  setenv("TZ", "UTC0", 1);
  tzset();
  const time_t time = 0;
  char text[26];
  EXPECT_EQ(ctime_s(text, 26, &time), 0);
  EXPECT_STREQ(text, "Thu Jan  1 00:00:00 1970\n");
  EXPECT_EQ(ctime_s(text, 25, &time), ERANGE);
  EXPECT_STREQ(text, "");
}

TEST(LtoaS, KnowsASignOnlyInDecimal) {
  char text[sizeof(long) * 8 + 1];
  EXPECT_EQ(_ltoa_s(-42, text, sizeof text, 10), 0);
  EXPECT_STREQ(text, "-42");
  EXPECT_EQ(_ltoa_s(-1, text, sizeof text, 16), 0);
  EXPECT_STREQ(text, std::string(sizeof(long) * 2, 'f').c_str());
  EXPECT_EQ(_ltoa_s(-1, text, sizeof text, 2), 0);
  EXPECT_STREQ(text, std::string(sizeof(long) * 8, '1').c_str());
}

TEST(LtoaS, RefusesWhatDoesNotFitAndUnknownRadixes) {
  char text[3];
  EXPECT_EQ(_ltoa_s(100, text, sizeof text, 10), ERANGE);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(_ltoa_s(99, text, sizeof text, 10), 0);
  EXPECT_EQ(_ltoa_s(1, text, sizeof text, 1), EINVAL);
  EXPECT_EQ(_ltoa_s(1, text, sizeof text, 37), EINVAL);
}

TEST(Bounded, NullsAndNoRoomAreRefusedEverywhere) {
  char text[8] = "x";
  char* rest = text;
  FILE* file = stdin;
  size_t needed = 7;
  EXPECT_EQ(strncpy_s(nullptr, 8, "a", 1), EINVAL);
  EXPECT_EQ(strncpy_s(text, 8, nullptr, 1), EINVAL);
  EXPECT_EQ(strncpy_s(text, 0, "a", 1), EINVAL);
  EXPECT_EQ(strcat_s(nullptr, 8, "a"), EINVAL);
  EXPECT_EQ(strcat_s(text, 8, nullptr), EINVAL);
  EXPECT_EQ(strcat_s(text, 0, "a"), EINVAL);
  EXPECT_EQ(sprintf_s(nullptr, 8, "a"), EINVAL);
  EXPECT_EQ(sprintf_s(text, 0, "a"), EINVAL);
  EXPECT_EQ(strtok_s(text, nullptr, &rest), nullptr);
  EXPECT_EQ(strtok_s(text, ",", nullptr), nullptr);
  EXPECT_EQ(fopen_s(&file, nullptr, "r"), EINVAL);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(fopen_s(&file, "/proc/self/stat", nullptr), EINVAL);
  EXPECT_EQ(getenv_s(nullptr, text, 8, "PATH"), EINVAL);
  EXPECT_EQ(getenv_s(&needed, text, 8, nullptr), EINVAL);
  EXPECT_EQ(getenv_s(&needed, text, 0, "PATH"), EINVAL);
  EXPECT_EQ(getenv_s(&needed, nullptr, 8, "PATH"), EINVAL);
  EXPECT_EQ(needed, 7U);
  EXPECT_EQ(localtime_s(nullptr, nullptr), EINVAL);
  EXPECT_EQ(ctime_s(text, 8, nullptr), EINVAL);
  const time_t time = 0;
  EXPECT_EQ(ctime_s(nullptr, 26, &time), EINVAL);
  EXPECT_EQ(_ltoa_s(1, nullptr, 8, 10), EINVAL);
  EXPECT_EQ(_ltoa_s(1, text, 0, 10), EINVAL);
}

TEST(Bounded, TimesFollowTheTimeZoneAsItIsNow) {
  const time_t time = 0;
  struct tm calendar {};
  setenv("TZ", "UTC-5", 1);
  EXPECT_EQ(localtime_s(&calendar, &time), 0);
  EXPECT_EQ(calendar.tm_hour, 5);
  char text[26];
  setenv("TZ", "UTC-6", 1);
  EXPECT_EQ(ctime_s(text, sizeof text, &time), 0);
  EXPECT_STREQ(text, "Thu Jan  1 06:00:00 1970\n");
  setenv("TZ", "UTC0", 1);
  tzset();
}

TEST(Bounded, TimesBeyondTheCalendarFail) {
  const time_t time = std::numeric_limits<time_t>::max();
  struct tm calendar {};
  char text[26] = "x";
  EXPECT_EQ(localtime_s(&calendar, &time), EOVERFLOW);
  EXPECT_EQ(ctime_s(text, sizeof text, &time), EINVAL);
  EXPECT_STREQ(text, "");
}

TEST(LtoaS, WritesEveryRadixAndTheSmallestNumber) {
  char text[sizeof(long) * 8 + 1];
  for (int radix = 2; radix <= 36; ++radix) {
    EXPECT_EQ(_ltoa_s(123456, text, sizeof text, radix), 0);
    EXPECT_EQ(strtol(text, nullptr, radix), 123456);
  }
  EXPECT_EQ(_ltoa_s(LONG_MIN, text, sizeof text, 10), 0);
  EXPECT_EQ(strtol(text, nullptr, 10), LONG_MIN);
}

}  // namespace
