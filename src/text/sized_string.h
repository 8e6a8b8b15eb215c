// Sized strings: a heap buffer of text with its capacity and length, which grows as text is
// appended. One template serves both kinds; a kind is the record that callers hold.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "kqsupt/text.h"
#include "text/ucs2_string.h"

namespace kqsupt::text {

template <class String>
using UnitOf = std::remove_pointer_t<decltype(String::content)>;

// The capacity that a string grows to when it has to, unless even that is too little. The product
// wraps at 32 bits for large strings; what is needed then decides.
[[nodiscard]] constexpr uint32_t grown(uint32_t capacity) {
  return capacity <= 0xFFFFF ? capacity * 2 : capacity * 125 / 100;
}

[[nodiscard]] inline uint32_t length_of(const ustring* text) {
  return ucs2_length(text);
}
[[nodiscard]] inline uint32_t length_of(const char* text) {
  return static_cast<uint32_t>(std::strlen(text));
}

// Makes the record an empty string of `capacity` bytes; of no buffer at all when that is 0 or
// memory is short.
template <class String>
void allocate(String& string, uint32_t capacity) {
  using Unit = UnitOf<String>;
  string.content = nullptr;
  if (capacity == 0) {
    return;
  }
  // Room for the terminator, also where the caller asks for less than one unit.
  const size_t size = std::max<size_t>(capacity, sizeof(Unit));
  string.content = static_cast<Unit*>(std::malloc(size));
  if (string.content != nullptr) {
    string.content[0] = 0;
    string.capacity = capacity;
    string.length = 0;
  }
}

template <class String>
void release(String& string) {
  std::free(string.content);
  string = {};
}

// Makes room for `count` more units. False, with the string as it was, when memory is short.
template <class String>
[[nodiscard]] bool make_room(String& string, uint32_t count) {
  using Unit = UnitOf<String>;
  const uint64_t needed = (uint64_t{string.length} + 1 + count) * sizeof(Unit);
  if (needed <= string.capacity) {
    return true;
  }
  if (needed > UINT32_MAX) {
    return false;
  }
  const uint32_t capacity = std::max(static_cast<uint32_t>(needed), grown(string.capacity));
  auto* content = static_cast<Unit*>(std::realloc(string.content, capacity));
  if (content == nullptr) {
    return false;
  }
  string.content = content;
  string.capacity = capacity;
  return true;
}

// Appends exactly `count` units of `text`, terminators among them included. False, with the string
// as it was, when memory is short.
template <class String>
[[nodiscard]] bool append_units(String& string, const UnitOf<String>* text, uint32_t count) {
  using Unit = UnitOf<String>;
  if (count == 0) {
    return true;
  }
  // The text may lie in the string itself, which growing moves.
  const auto offset =
      reinterpret_cast<uintptr_t>(text) - reinterpret_cast<uintptr_t>(string.content);
  const bool inside = offset < string.capacity;
  if (!make_room(string, count)) {
    return false;
  }
  const Unit* from = inside ? string.content + offset / sizeof(Unit) : text;
  std::memmove(string.content + string.length, from, size_t{count} * sizeof(Unit));
  string.length += count;
  string.content[string.length] = 0;
  return true;
}

// Appends a text of known length to a string that has a buffer.
[[nodiscard]] inline bool append(SMSSUTF8Str& string, std::string_view text) {
  return string.content != nullptr && text.size() <= UINT32_MAX &&
         append_units(string, text.data(), static_cast<uint32_t>(text.size()));
}

}  // namespace kqsupt::text
