// Statuses as error codes, and results.

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <system_error>
#include <utility>

#include "gtest/gtest.h"
#include "kqsupt.hpp"
#include "second_unit.h"
#include "support/scratch.h"

namespace {

using kqsupt::result;
using kqsupt::status;

TEST(Status, IsAnErrorCodeOfItsOwnCategory) {
  const std::error_code code = status::timeout;
  EXPECT_EQ(code.value(), 3);
  EXPECT_EQ(code.category(), kqsupt::status_category());
  EXPECT_STREQ(code.category().name(), "kqsupt");
  EXPECT_EQ(code, status::timeout);
  EXPECT_NE(code, status::no_memory);
}

TEST(Status, SuccessIsFalseAsAnErrorCode) {
  EXPECT_FALSE(std::error_code(status::success));
  EXPECT_TRUE(std::error_code(status::unsuccessful));
}

TEST(Status, TheHighestIsAnErrorToo) {
  const std::error_code code = status::system_refused;
  EXPECT_TRUE(code);
  EXPECT_EQ(code.value(), -1);
  EXPECT_EQ(code.message(), "the operating system refused");
}

TEST(Status, EachHasAMessageOfItsOwn) {
  std::set<std::string> messages;
  const uint32_t known[] = {0,     1,     2,     3,     7,     9,     0xC,       0x10,  0x11,
                            0x13,  0x14,  0x100, 0x101, 0x102, 0x104, 0x105,     0x106, 0x107,
                            0x108, 0x10E, 0x10F, 0x110, 0x122, 0x123, 0xFFFFFFFF};
  for (const uint32_t number : known) {
    const std::string message = std::error_code(static_cast<status>(number)).message();
    EXPECT_NE(message.substr(0, 7), "status ") << number;
    EXPECT_TRUE(messages.insert(message).second) << message;
  }
}

bool has_message(const std::string& number) {
  const auto code = static_cast<status>(std::stoul(number, nullptr, 0));
  return std::error_code(code).message().substr(0, 7) != "status ";
}

// The statuses that the C interface names, and their numbers.
std::map<std::string, std::string> named_statuses() {
  const std::string header = kqsupt::tests::content_of(KQSUPT_SOURCE_DIR "/include/kqsupt/frame.h");
  const std::regex name("(SM_STATUS_[A-Z_]+) = (0x[0-9A-F]+|[0-9]+)");
  std::map<std::string, std::string> statuses;
  for (std::sregex_iterator found(header.begin(), header.end(), name), end; found != end; ++found) {
    statuses[(*found)[1]] = (*found)[2];
  }
  return statuses;
}

TEST(Status, HasAMessageForEachThatTheHeaderNames) {
  const auto statuses = named_statuses();
  EXPECT_EQ(statuses.size(), 22U);
  for (const auto& [name, number] : statuses) {
    EXPECT_TRUE(has_message(number)) << name;
  }
}

TEST(Status, HasAMessageForEachThatAFunctionCanAnswer) {
  const auto statuses = named_statuses();
  std::ifstream rows(KQSUPT_SOURCE_DIR "/docs/statuses.txt");
  std::string function;
  std::string answer;
  int count = 0;
  for (; rows >> function >> answer; ++count) {
    const auto named = statuses.find(answer);
    EXPECT_TRUE(has_message(named != statuses.end() ? named->second : answer)) << answer;
  }
  EXPECT_GT(count, 300);
}

TEST(Status, AnUnknownOneIsToldByItsNumber) {
  EXPECT_EQ(std::error_code(static_cast<status>(0x200)).message(), "status 512");
}

TEST(Status, EqualsTheConditionThatTheStandardHasForIt) {
  EXPECT_EQ(std::error_code(status::timeout), std::errc::timed_out);
  EXPECT_EQ(std::error_code(status::file_not_found), std::errc::no_such_file_or_directory);
  EXPECT_EQ(std::error_code(status::file_exists), std::errc::file_exists);
  EXPECT_EQ(std::error_code(status::access_denied), std::errc::permission_denied);
  EXPECT_EQ(std::error_code(status::invalid_parameter), std::errc::invalid_argument);
  EXPECT_EQ(std::error_code(status::no_memory), std::errc::not_enough_memory);
  EXPECT_EQ(std::error_code(status::value_too_large), std::errc::result_out_of_range);
  EXPECT_EQ(std::error_code(status::value_too_small), std::errc::result_out_of_range);
  EXPECT_NE(std::error_code(status::data_not_found), std::errc::invalid_argument);
}

TEST(Status, HasOneCategoryInAllUnitsOfAProgram) {
  EXPECT_EQ(&category_of_the_second_unit(), &kqsupt::status_category());
  EXPECT_EQ(error_of_the_second_unit(), status::invalid_parameter);
}

TEST(Result, HoldsAValueOrAStatus) {
  const result<std::string> value(std::string("fan"));
  ASSERT_TRUE(value);
  EXPECT_EQ(*value, "fan");
  EXPECT_EQ(value->size(), 3U);
  EXPECT_FALSE(value.error());
  const result<std::string> failure(status::timeout);
  EXPECT_FALSE(failure);
  EXPECT_EQ(failure.code(), status::timeout);
  EXPECT_EQ(failure.error(), std::errc::timed_out);
  EXPECT_EQ(failure.value_or("none"), "none");
}

TEST(Result, WithoutAValueIsNoSuccess) {
  const result<int> odd(status::success);
  EXPECT_FALSE(odd);
  EXPECT_EQ(odd.code(), status::operation_failed);
}

TEST(Result, HandsOutWhatOnlyMoves) {
  kqsupt::record record = *kqsupt::record::create();
  EXPECT_TRUE(record);
  result<kqsupt::record> second = record.clone();
  kqsupt::record taken = std::move(second).value_or(kqsupt::record());
  EXPECT_TRUE(taken);
}

TEST(Result, OfNothingIsASuccessOrAStatus) {
  EXPECT_TRUE(result<void>());
  EXPECT_TRUE(result<void>(status::success));
  EXPECT_FALSE(result<void>(status::timeout));
}

}  // namespace
