// Three bytes to four characters and back. Of the standard alphabet there are tables, so that bytes
// are encoded twelve bits at a time and four characters decoded by combining what each stands for.

#include "containers/base64.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace kqsupt::containers {
namespace {

constexpr char kStandard[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';
constexpr uint8_t kForeign = 0xFF;  // what a character outside the alphabet stands for

struct Pair {
  char characters[2];
};

constexpr std::array<Pair, 4096> kPairs = [] {
  std::array<Pair, 4096> pairs{};
  for (size_t bits = 0; bits < pairs.size(); ++bits) {
    pairs[bits] = {{kStandard[bits >> 6], kStandard[bits & 63]}};
  }
  return pairs;
}();

constexpr std::array<uint8_t, 256> kValues = [] {
  std::array<uint8_t, 256> values{};
  values.fill(kForeign);
  for (uint8_t value = 0; value < 64; ++value) {
    values[static_cast<uint8_t>(kStandard[value])] = value;
  }
  return values;
}();

// For each place in a group: what a character there adds to the three bytes, as they are in memory,
// and in the byte after them a mark when it is outside the alphabet.
constexpr uint32_t decoded(uint8_t first, uint8_t second, uint8_t third, uint8_t mark) {
  return std::bit_cast<uint32_t>(std::array<uint8_t, 4>{first, second, third, mark});
}
constexpr uint32_t kForeignMark = decoded(0, 0, 0, 0x80);
constexpr std::array<std::array<uint32_t, 256>, 4> kParts = [] {
  std::array<std::array<uint32_t, 256>, 4> parts{};
  for (uint32_t place = 0; place < 4; ++place) {
    for (uint32_t character = 0; character < 256; ++character) {
      const uint32_t bits = uint32_t{kValues[character]} << (18 - 6 * place);
      parts[place][character] =
          kValues[character] == kForeign
              ? kForeignMark
              : decoded(static_cast<uint8_t>(bits >> 16), static_cast<uint8_t>(bits >> 8),
                        static_cast<uint8_t>(bits), 0);
    }
  }
  return parts;
}();

void encode_group(char* out, uint32_t first, uint32_t second, uint32_t third,
                  const char* alphabet) {
  out[0] = alphabet[first >> 2];
  out[1] = alphabet[(first & 3) << 4 | second >> 4];
  out[2] = alphabet[(second & 15) << 2 | third >> 6];
  out[3] = alphabet[third & 63];
}

// Encodes with the standard alphabet, six bytes at a time, while eight are left, and returns how
// many bytes.
size_t encode_wide(char* out, const uint8_t* in, size_t length) {
  size_t done = 0;
  for (; length - done >= 8; done += 6, in += 6, out += 8) {
    uint64_t bits = 0;
    std::memcpy(&bits, in, sizeof bits);
    if constexpr (std::endian::native == std::endian::little) {
      bits = __builtin_bswap64(bits);
    }
    const auto pair = [=](int shift) {
      return &kPairs[static_cast<size_t>(bits >> shift & 0xFFF)];
    };
    std::memcpy(out, pair(52), sizeof(Pair));
    std::memcpy(out + 2, pair(40), sizeof(Pair));
    std::memcpy(out + 4, pair(28), sizeof(Pair));
    std::memcpy(out + 6, pair(16), sizeof(Pair));
  }
  return done;
}

// The parts of the four characters at `in`, combined.
inline uint32_t parts_of(const uint8_t* in) {
  return kParts[0][in[0]] | kParts[1][in[1]] | kParts[2][in[2]] | kParts[3][in[3]];
}

// The same. A processor that runs out of loads before it runs out of arithmetic is faster when
// every other group is one load.
inline uint32_t parts_of_word(const uint8_t* in) {
  uint32_t word = 0;
  std::memcpy(&word, in, sizeof word);
  constexpr bool kLittle = std::endian::native == std::endian::little;
  return kParts[kLittle ? 0 : 3][word & 0xFF] | kParts[kLittle ? 1 : 2][word >> 8 & 0xFF] |
         kParts[kLittle ? 2 : 1][word >> 16 & 0xFF] | kParts[kLittle ? 3 : 0][word >> 24];
}

// Decodes groups, four at a time, up to the first four that are not all of the alphabet, and
// returns how many. Each group is stored with a byte too many, where the next one or the final NUL
// goes, and after all four have been read: `out` may be `in`.
size_t decode_wide(uint8_t* out, const uint8_t* in, size_t groups) {
  const uint8_t* const begin = in;
  const uint8_t* const end = in + groups / 4 * 16;
  for (; in != end; in += 16, out += 12) {
    const uint32_t first = parts_of_word(in);
    const uint32_t second = parts_of(in + 4);
    const uint32_t third = parts_of_word(in + 8);
    const uint32_t fourth = parts_of(in + 12);
    if (((first | second | third | fourth) & kForeignMark) != 0) {
      break;
    }
    std::memcpy(out, &first, 4);
    std::memcpy(out + 3, &second, 4);
    std::memcpy(out + 6, &third, 4);
    std::memcpy(out + 9, &fourth, 4);
  }
  return static_cast<size_t>(in - begin) / 4;
}

// Decodes one group, whatever it is made of, and returns where the output ends.
uint8_t* decode_group(uint8_t* out, const uint8_t* in) {
  if (in[0] == kPadding || in[1] == kPadding) {
    return out;
  }
  // All four are looked at before the first byte is written: `out` may be `in`.
  const uint32_t values[4] = {kValues[in[0]], kValues[in[1]], kValues[in[2]], kValues[in[3]]};
  const bool has_second = in[2] != kPadding;
  const bool has_third = has_second && in[3] != kPadding;
  // The 0xFF of a foreign character is combined like any other value, its high bits cut off.
  *out++ = static_cast<uint8_t>(values[0] << 2 | (values[1] >> 4 & 3));
  if (has_second) {
    *out++ = static_cast<uint8_t>(values[1] << 4 | (values[2] >> 2 & 15));
  }
  if (has_third) {
    *out++ = static_cast<uint8_t>(values[2] << 6 | values[3]);
  }
  return out;
}

}  // namespace

uint32_t base64_encode(char* out, const void* in, int32_t length, const char* alphabet) {
  const auto* bytes = static_cast<const uint8_t*>(in);
  // A negative length encodes nothing.
  size_t left = length > 0 ? static_cast<size_t>(length) : 0;
  if (alphabet == nullptr) {
    const size_t done = encode_wide(out, bytes, left);
    out += done / 3 * 4;
    bytes += done;
    left -= done;
    alphabet = kStandard;
  }
  for (; left >= 3; left -= 3, bytes += 3, out += 4) {
    encode_group(out, bytes[0], bytes[1], bytes[2], alphabet);
  }
  if (left != 0) {
    // The byte after the input takes part: its high bits are in the last character before the
    // padding. Callers keep one there, most of them a NUL, which makes the text the usual one.
    encode_group(out, bytes[0], bytes[1], left == 2 ? bytes[2] : 0, alphabet);
    out[3] = kPadding;
    if (left == 1) {
      out[2] = kPadding;
    }
    out += 4;
  }
  *out = '\0';
  return 0;
}

uint32_t base64_decode(void* out, const char* in, int32_t length) {
  auto* bytes = static_cast<uint8_t*>(out);
  const auto* characters = reinterpret_cast<const uint8_t*>(in);
  size_t groups = length > 0 ? static_cast<size_t>(length) / 4 : 0;
  while (groups != 0) {
    const size_t done = decode_wide(bytes, characters, groups);
    bytes += done * 3;
    characters += done * 4;
    groups -= done;
    if (groups != 0) {
      bytes = decode_group(bytes, characters);
      characters += 4;
      --groups;
    }
  }
  *bytes = 0;
  return 0;
}

}  // namespace kqsupt::containers
