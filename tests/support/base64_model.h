// Base64 as its description reads, a bit at a time.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kqsupt::tests {

inline constexpr std::string_view kStandardAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The text of the first `length` bytes of `bytes`, of which the one after those counts too.
inline std::string base64_model(std::string_view bytes, size_t length,
                                std::string_view alphabet = kStandardAlphabet) {
  const auto bit = [&](size_t at) {
    const size_t byte = at / 8;
    return byte < bytes.size() ? static_cast<uint8_t>(bytes[byte]) >> (7 - at % 8) & 1 : 0;
  };
  std::string text;
  for (size_t at = 0; at < (length + 2) / 3 * 24; at += 6) {
    size_t value = 0;
    for (size_t i = 0; i < 6; ++i) {
      value = value << 1 | static_cast<size_t>(bit(at + i));
    }
    text += alphabet[value];
  }
  for (size_t missing = length % 3 != 0 ? 3 - length % 3 : 0; missing != 0; --missing) {
    text[text.size() - missing] = '=';
  }
  return text;
}

// The bytes that a text decodes to, without the NUL.
inline std::string base64_decoding_model(std::string_view text) {
  const auto value = [](char character) {
    const size_t place = kStandardAlphabet.find(character);
    return static_cast<uint32_t>(place != std::string_view::npos ? place : 0xFF);
  };
  std::string bytes;
  for (; text.size() >= 4; text.remove_prefix(4)) {
    if (text[0] == '=' || text[1] == '=') {
      continue;
    }
    bytes += static_cast<char>(value(text[0]) * 4 | value(text[1]) / 16 % 4);
    if (text[2] != '=') {
      bytes += static_cast<char>(value(text[1]) * 16 | value(text[2]) / 4 % 16);
      if (text[3] != '=') {
        bytes += static_cast<char>(value(text[2]) * 64 | value(text[3]));
      }
    }
  }
  return bytes;
}

}  // namespace kqsupt::tests
