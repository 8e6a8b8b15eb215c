// Conversions: the C library's.

#include <iconv.h>

#include "ucs2_bench.h"

namespace kqbench {
namespace {

constexpr const char* kIconv = "iconv";

void convert(iconv_t descriptor, const void* text, size_t size, void* room, size_t room_size) {
  auto* from = static_cast<char*>(const_cast<void*>(text));
  auto* to = static_cast<char*>(room);
  require(iconv(descriptor, &from, &size, &to, &room_size) != static_cast<size_t>(-1));
  benchmark::DoNotOptimize(room);
}

void from_utf8(const ConvertedText& text) {
  static const iconv_t descriptor = iconv_open("UTF-16LE", "UTF-8");
  convert(descriptor, text.utf8.c_str(), text.utf8.size() + 1, ucs2_room.data(), sizeof ucs2_room);
}

void to_utf8(const ConvertedText& text) {
  static const iconv_t descriptor = iconv_open("UTF-8", "UTF-16LE");
  convert(descriptor, text.ucs2.c_str(), 2 * (text.ucs2.size() + 1), utf8_room.data(),
          sizeof utf8_room);
}

const bool kAdded = [] {
  for (const Script& script : scripts()) {
    add_conversion(row_from_utf8(script), kIconv, script, from_utf8);
    add_conversion(row_to_utf8(script), kIconv, script, to_utf8);
  }
  return true;
}();

}  // namespace
}  // namespace kqbench
