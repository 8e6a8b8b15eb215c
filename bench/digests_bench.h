// What the measurements of digests and Base64 share: the inputs, and how a contestant is entered.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "measure.h"

namespace kqbench {

inline constexpr size_t kInputs = 64;   // operations of an iteration, each on an input of its own
inline constexpr size_t kBytes = 1024;  // of each input
inline constexpr size_t kCharacters = 1368;  // that they are in Base64
inline constexpr const char* kEncodeRow = "base64/encode";
inline constexpr const char* kDecodeRow = "base64/decode";
inline constexpr const char* kChecksumRow = "crc32";
inline constexpr const char* kDigestRow = "md5";

using Bytes = std::array<uint8_t, kBytes + 1>;  // with the byte that is read after the input
using Text = std::array<char, kCharacters + 1>;

inline std::vector<Bytes> fresh_bytes() {
  std::vector<Bytes> inputs(kInputs);
  for (Bytes& bytes : inputs) {
    for (uint8_t& byte : bytes) {
      byte = static_cast<uint8_t>(fresh()());
    }
    bytes.back() = 0;
  }
  return inputs;
}

// Such bytes in Base64.
[[nodiscard]] std::vector<Text> fresh_texts();

// Enters a contestant in a row: `measured(bytes)` is one operation.
template <class Measured>
void add_bytes_measurement(const char* operation, const char* contestant, Measured measured) {
  add_measurement(operation, contestant, kInputs, fresh_bytes, [=](std::vector<Bytes>& inputs) {
    for (const Bytes& bytes : inputs) {
      measured(bytes);
    }
  });
}

// Enters a contestant in the row of decoding: `measured(text)` is one operation.
template <class Measured>
void add_text_measurement(const char* contestant, Measured measured) {
  add_measurement(kDecodeRow, contestant, kInputs, fresh_texts, [=](std::vector<Text>& inputs) {
    for (const Text& text : inputs) {
      measured(text);
    }
  });
}

// Room for what an operation writes.
inline std::array<char, 2048> digests_output;

}  // namespace kqbench
