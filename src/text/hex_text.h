// Bytes as hexadecimal text: pairs, lists and dumps.
#pragma once

#include <cstdint>
#include <span>

#include "text/text_builder.h"

namespace kqsupt::text {

using ByteSpan = std::span<const uint8_t>;

// Each appends its form of the bytes. False when memory is short.
[[nodiscard]] bool append_hex_pairs(TextBuilder& text, ByteSpan bytes);  // "0AFF"
[[nodiscard]] bool append_hex_list(TextBuilder& text, ByteSpan bytes);   // "0x0A,0xFF"

// Lines of 81 characters for 16 bytes each: the offset, the bytes in groups of four, and the bytes
// as characters, ending in CR and LF.
[[nodiscard]] bool append_hex_dump(TextBuilder& text, ByteSpan bytes);

// What reading hexadecimal text came to.
struct ParsedBytes {
  bool well_formed;
  uint32_t count;  // the bytes that the text holds
};

// Reads the text into `bytes`, which may be null to count only. Nothing beyond `room` bytes is
// written.
[[nodiscard]] ParsedBytes parse_hex_pairs(const char* text, uint8_t* bytes, uint32_t room);
[[nodiscard]] ParsedBytes parse_hex_list(const char* text, uint8_t* bytes, uint32_t room);

}  // namespace kqsupt::text
