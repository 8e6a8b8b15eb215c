// Text in units of 16 bits, of either byte order, as UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kqsup {

enum class ByteOrder { kLittle, kBig };

// Writes the units into `text`, in the place of what it held. Halves of pairs that stand alone are
// U+FFFD; a byte that is left over is left out.
void decode_utf16(std::string_view bytes, ByteOrder order, std::string& text);

// How many bytes of units the first `size` bytes of that text, which cut no character, were decoded
// from.
[[nodiscard]] size_t utf16_size(std::string_view text, size_t size);

}  // namespace kqsup
