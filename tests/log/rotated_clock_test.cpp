// Times that cannot be told. This program has a calendar of its own in front of the C library's.

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/log.h"
#include "support/scratch.h"

namespace {

bool is_calendar_known = true;
std::string formatted;  // what strftime makes of every time; it fails with an empty one

}  // namespace

extern "C" {

tm* localtime_r(const time_t* /*seconds*/, tm* broken) noexcept {
  errno = is_calendar_known ? 0 : EOVERFLOW;
  return is_calendar_known ? broken : nullptr;
}

size_t strftime(char* text, size_t size, const char* format, const tm* /*broken*/) noexcept {
  EXPECT_STREQ(format, "[%b %d %Y %H:%M:%S] ");
  std::memset(text, '?', size);
  if (formatted.empty() || formatted.size() >= size) {
    return 0;
  }
  std::memcpy(text, formatted.c_str(), formatted.size() + 1);
  return formatted.size();
}

}  // extern "C"

namespace {

using kqsupt::tests::content_of;
using kqsupt::tests::Scratch;

std::string written(uint32_t flags) {
  const Scratch scratch;
  const std::string path = scratch.file("trace");
  EXPECT_EQ(SMFileLogMsgToRotatedLog("text", path.c_str(), 0, 3, flags), 0U);
  return content_of(path);
}

TEST(TimeOfAMessage, IsWhatTheCalendarSays) {
  is_calendar_known = true;
  formatted = "[time] ";
  EXPECT_EQ(written(1), "[time] text");
}

TEST(TimeOfAMessage, WithoutALocalTimeIsAnError) {
  is_calendar_known = false;
  formatted = "[time] ";
  EXPECT_EQ(written(1), "[localtime error] text");
  EXPECT_EQ(written(5), "[localtime error] text\n");
  EXPECT_EQ(written(7).find("[localtime error] ["), 0U);
  EXPECT_EQ(written(0), "text");
}

TEST(TimeOfAMessage, ThatCannotBeFormattedIsAnError) {
  is_calendar_known = true;
  formatted = "";
  EXPECT_EQ(written(1), "[strftime error] text");
  EXPECT_EQ(written(5), "[strftime error] text\n");
  EXPECT_EQ(written(7).find("[strftime error] ["), 0U);
  EXPECT_EQ(written(4), "text\n");
}

// All that stands before a message has 127 bytes.
TEST(TimeOfAMessage, TakesItsRoomFromTheProcessAndTheThread) {
  is_calendar_known = true;
  formatted = std::string(125, 't');
  const std::string text = written(3);
  EXPECT_EQ(text.size(), 131U);
  EXPECT_EQ(text.substr(0, 126), formatted + "[");
  EXPECT_EQ(text.substr(127), "text");
  formatted = std::string(127, 't');
  EXPECT_EQ(written(7), formatted + "text\n");
  formatted = std::string(128, 't');
  EXPECT_EQ(written(1), "[strftime error] text");
}

}  // namespace
