// The conversions between UTF-8 and UCS-2, a code point at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "kqsupt/text.h"

namespace kqsupt::tests {

template <class Text>
struct Conversion {
  SMStatus status = SM_STATUS_SUCCESS;
  Text text;  // without a terminator; where it failed, what came before that
};

// What a conversion to `room` elements gives. The text ends where the string does.
inline Conversion<std::u16string> ucs2_model(const std::string& text, size_t room) {
  Conversion<std::u16string> result;
  const auto byte = [&](size_t at) -> uint32_t {
    return at < text.size() ? static_cast<uint8_t>(text[at]) : 0;
  };
  for (size_t at = 0; at < text.size();) {
    const uint32_t lead = byte(at);
    size_t length = 1;
    uint32_t value = lead;
    if (lead >= 0x80) {
      length = lead < 0xC0   ? 0
               : lead < 0xE0 ? 2
               : lead < 0xF0 ? 3
               : lead < 0xF8 ? 4
               : lead < 0xFC ? 5
               : lead < 0xFE ? 6
                             : 0;
      value = lead & (0x7FU >> length);
      for (size_t i = 1; i < length; ++i) {
        if (byte(at + i) == 0) {
          length = 0;
          break;
        }
        value = value << 6 | (byte(at + i) & 0x3F);
      }
    }
    if (length == 0 || value >= 0x110000) {
      result.status = SM_STATUS_OPERATION_FAILED;
      return result;
    }
    std::u16string units(1, static_cast<char16_t>(value));
    if (value >= 0x10000) {
      units = {static_cast<char16_t>(0xD800 | (value >> 10 & 0x3FF)),
               static_cast<char16_t>(0xDC00 | (value & 0x3FF))};
    }
    if (result.text.size() + units.size() > room) {
      result.status = SM_STATUS_BUFFER_TOO_SMALL;
      return result;
    }
    result.text += units;
    at += length;
  }
  if (result.text.size() == room) {
    result.status = SM_STATUS_BUFFER_TOO_SMALL;
  }
  return result;
}

inline Conversion<std::string> utf8_model(const std::u16string& text, size_t room) {
  Conversion<std::string> result;
  for (const char16_t unit : text) {
    uint32_t value = unit;
    if (value >= 0xD800 && value <= 0xDFFF) {  // stands for the head of the text
      value = text[0];
      if (value >= 0xD800 && value <= 0xDFFF) {
        const uint32_t low = text.size() > 1 ? text[1] : 0;
        if (value >= 0xDC00 || low < 0xDC00 || low > 0xDFFF) {
          result.status = SM_STATUS_OPERATION_FAILED;
          return result;
        }
        value = 0x10000 + ((value & 0x3FF) << 10 | (low & 0x3FF));
      }
    }
    std::string bytes;
    const auto follow = [&](int shift) {
      bytes += static_cast<char>(0x80 | (value >> shift & 0x3F));
    };
    if (value < 0x80) {
      bytes += static_cast<char>(value);
    } else if (value < 0x800) {
      bytes += static_cast<char>(0xC0 | value >> 6);
      follow(0);
    } else if (value < 0x10000) {
      bytes += static_cast<char>(0xE0 | value >> 12);
      follow(6);
      follow(0);
    } else {
      bytes += static_cast<char>(0xF0 | value >> 18);
      follow(12);
      follow(6);
      follow(0);
    }
    if (result.text.size() + bytes.size() > room) {
      result.status = SM_STATUS_BUFFER_TOO_SMALL;
      return result;
    }
    result.text += bytes;
  }
  if (result.text.size() == room) {
    result.status = SM_STATUS_BUFFER_TOO_SMALL;
  }
  return result;
}

}  // namespace kqsupt::tests
