#include "utf16_text.h"

#include <cstdint>

namespace kqsup {

namespace {

// The order is known when this is compiled: a unit is then one load.
template <ByteOrder kOrder>
uint32_t unit_at(const unsigned char* at) {
  constexpr size_t kLow = kOrder == ByteOrder::kLittle ? 0 : 1;
  return static_cast<uint32_t>(at[kLow] | at[1 - kLow] << 8);
}

char* put_character(char* to, uint32_t code) {
  const auto put = [&to](uint32_t byte) { *to++ = static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | code >> 6);
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | code >> 12);
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | code >> 18);
    put(0x80 | (code >> 12 & 0x3F));
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  }
  return to;
}

template <ByteOrder kOrder>
char* decode(const unsigned char* from, size_t units, char* to) {
  constexpr uint32_t kUnknown = 0xFFFD;
  const unsigned char* const end = from + 2 * units;
  while (from != end) {
    // Nearly all of a log is ASCII: eight units at a time, which the compiler makes vectors of.
    while (end - from >= 16) {
      uint32_t all = 0;
      for (size_t i = 0; i < 8; ++i) {
        const uint32_t unit = unit_at<kOrder>(from + 2 * i);
        to[i] = static_cast<char>(unit);
        all |= unit;
      }
      if (all >= 0x80) {
        break;
      }
      from += 16;
      to += 8;
    }
    if (from == end) {
      break;
    }
    uint32_t code = unit_at<kOrder>(from);
    from += 2;
    if (code >= 0xD800 && code < 0xE000) {
      const uint32_t next = from != end ? unit_at<kOrder>(from) : 0;
      const bool is_pair = code < 0xDC00 && next >= 0xDC00 && next < 0xE000;
      code = is_pair ? 0x10000 + ((code - 0xD800) << 10) + (next - 0xDC00) : kUnknown;
      from += is_pair ? 2 : 0;
    }
    to = put_character(to, code);
  }
  return to;
}

}  // namespace

void decode_utf16(std::string_view bytes, ByteOrder order, std::string& text) {
  const size_t units = bytes.size() / 2;
  // No unit becomes more than three bytes. The block of eight may write to where it does not stay.
  if (text.size() < 3 * units + 8) {
    text.resize(3 * units + 8);
  }
  const auto* from = reinterpret_cast<const unsigned char*>(bytes.data());
  char* const end = order == ByteOrder::kLittle
                        ? decode<ByteOrder::kLittle>(from, units, text.data())
                        : decode<ByteOrder::kBig>(from, units, text.data());
  text.resize(static_cast<size_t>(end - text.data()));
}

size_t utf16_size(std::string_view text, size_t size) {
  size_t units = 0;
  for (const char c : text.substr(0, size)) {
    const auto byte = static_cast<unsigned char>(c);
    units += (byte & 0xC0) != 0x80 ? 1 : 0;
    units += byte >= 0xF0 ? 1 : 0;
  }
  return 2 * units;
}

}  // namespace kqsup
