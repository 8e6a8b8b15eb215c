// The growing UTF-8 text that every builder of text in the library stands on. A failed append is
// reported and leaves the text as it was; the text is always terminated.
//
//   TextBuilder text(256);
//   if (!text.append("name=") || !text.append(value)) return SM_STATUS_NO_MEMORY;
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>

#include "text/sized_string.h"

namespace kqsupt::text {

class TextBuilder {
 public:
  // `capacity` in bytes, not 0. Without memory for it the builder is not ok() and takes nothing.
  explicit TextBuilder(uint32_t capacity) { allocate(string_, capacity); }
  ~TextBuilder() { text::release(string_); }
  TextBuilder(const TextBuilder&) = delete;
  TextBuilder& operator=(const TextBuilder&) = delete;

  [[nodiscard]] bool ok() const { return string_.content != nullptr; }

  [[nodiscard]] bool append(std::string_view text) { return text::append(string_, text); }
  [[nodiscard]] bool append(char byte) { return append(std::string_view(&byte, 1)); }

  [[nodiscard]] std::string_view view() const { return {string_.content, string_.length}; }
  [[nodiscard]] const char* c_str() const { return string_.content; }
  [[nodiscard]] uint32_t length() const { return string_.length; }

  // Hands the text over: the caller frees it. The builder is empty-handed afterwards.
  [[nodiscard]] char* release() { return std::exchange(string_, {}).content; }

 private:
  SMSSUTF8Str string_{};
};

}  // namespace kqsupt::text
