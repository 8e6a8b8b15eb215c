// The numbers of the status codes, which programs have stored and compiled in.

#include "gtest/gtest.h"
#include "kqsupt/frame.h"

namespace {

TEST(StatusCodes, HaveTheirNumbers) {
  const std::pair<uint32_t, uint32_t> codes[] = {
      {SM_STATUS_SUCCESS, 0},
      {SM_STATUS_UNSUCCESSFUL, 2},
      {SM_STATUS_TIMEOUT, 3},
      {SM_STATUS_FILE_NOT_FOUND, 7},
      {SM_STATUS_INDEX_OUT_OF_RANGE, 12},
      {SM_STATUS_BUFFER_TOO_SMALL, 16},
      {SM_STATUS_NEXT_SECTION, 17},
      {SM_STATUS_OUT_OF_SPACE, 19},
      {SM_STATUS_FILE_EXISTS, 20},
      {SM_STATUS_DATA_NOT_FOUND, 256},
      {SM_STATUS_OPERATION_FAILED, 257},
      {SM_STATUS_ALREADY_EXISTS, 258},
      {SM_STATUS_FILE_OPEN_FAILED, 260},
      {SM_STATUS_END_OF_FILE, 261},
      {SM_STATUS_SECTION_NOT_FOUND, 262},
      {SM_STATUS_KEY_NOT_FOUND, 263},
      {SM_STATUS_BAD_LENGTH, 264},
      {SM_STATUS_ACCESS_DENIED, 270},
      {SM_STATUS_INVALID_PARAMETER, 271},
      {SM_STATUS_NO_MEMORY, 272},
      {SM_STATUS_VALUE_TOO_LARGE, 290},
      {SM_STATUS_VALUE_TOO_SMALL, 291},
  };
  for (const auto& [code, number] : codes) {
    EXPECT_EQ(code, number);
  }
}

}  // namespace
