// UCS-2 text: ICU's.

#include <unicode/ustring.h>

#include "ucs2_bench.h"

namespace kqbench {
namespace {

constexpr const char* kIcu = "ICU";

void from_utf8(const ConvertedText& text) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = 0;
  u_strFromUTF8(ucs2_room.data(), ucs2_room.size(), &length, text.utf8.c_str(), -1, &status);
  require(U_SUCCESS(status));
  benchmark::DoNotOptimize(ucs2_room);
}

void to_utf8(const ConvertedText& text) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = 0;
  u_strToUTF8(utf8_room.data(), utf8_room.size(), &length, text.ucs2.c_str(), -1, &status);
  require(U_SUCCESS(status));
  benchmark::DoNotOptimize(utf8_room);
}

const bool kAdded = [] {
  for (const Script& script : scripts()) {
    add_conversion(row_from_utf8(script), kIcu, script, from_utf8);
    add_conversion(row_to_utf8(script), kIcu, script, to_utf8);
  }
  for (const Length& length : kLengths) {
    add_search(row_of("strlen", length), kIcu, length, [](const std::u16string& string) {
      require(u_strlen(string.c_str()) == static_cast<int32_t>(string.size()));
    });
    add_search(row_of("strchr", length), kIcu, length, [](const std::u16string& string) {
      require(u_strchr(string.c_str(), kAbsent) == nullptr);
    });
  }
  for (const Length& length : kLengthsOfStrstr) {
    add_search(row_of("strstr", length), kIcu, length, [](const std::u16string& string) {
      require(u_strstr(string.c_str(), kNeedle) != nullptr);
    });
  }
  return true;
}();

}  // namespace
}  // namespace kqbench
