// Converting texts: a code point at a time, and many at a time where there are many of a kind.
//
// A wide step is taken only when all of it is of its kind and its result fits. So whatever is wrong
// with a text or too much for its room is met by the loop of single code points, in the order of
// the text, and that loop alone gives the status.

#include "text/conversion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "text/code_point.h"
#include "text/ucs2_string.h"
#include "text/wide_step.h"

namespace kqsupt::text {
namespace {

// Elements from here on: to be read, or free to be written.
template <class Element>
struct Rest {
  Element* at;
  size_t left;

  [[nodiscard]] bool has(size_t count) const { return left >= count; }
  void skip(size_t count) {
    at += count;
    left -= count;
  }
};
using Utf8Room = Rest<char>;
using Ucs2Room = Rest<ustring>;

// Texts are converted up to their terminator, which can be read too.
struct Utf8Text : Rest<const char> {};
struct Ucs2Text : Rest<const ustring> {
  const ustring* first;  // of the whole text
};

// How many mixed steps, or single code points, are taken before what is faster is tried again.
constexpr int kAtOnce = 8;

inline uint8_t byte_at(const char* at) {
  return static_cast<uint8_t>(*at);
}
// ---- From UTF-8 ----

template <size_t kBytes>
inline void load_bytes(Bytes16& bytes, const char* from) {
  static_assert(kBytes == 16 || kBytes == 8);
  if constexpr (kBytes == 16) {
    load(bytes, from);
  } else {
    load_half(bytes, from);
  }
}

template <size_t kBytes>
[[gnu::always_inline]] inline bool take_ascii(Utf8Text& text, Ucs2Room& room) {
  if (!text.has(kBytes) || !room.has(kBytes)) {
    return false;
  }
  Bytes16 bytes;
  load_bytes<kBytes>(bytes, text.at);
  if (any(bytes & 0x80)) {
    return false;
  }
  Units8 units[2];
  widen(units, bytes);
  store(room.at, units[0]);
  if constexpr (kBytes == 16) {
    store(room.at + kStepUnits, units[1]);
  }
  text.skip(kBytes);
  room.skip(kBytes);
  return true;
}

// Sequences of three bytes. No more is asked of them than that the text does not end within.
template <size_t kCount>
[[gnu::always_inline]] inline bool take_threes(Utf8Text& text, Ucs2Room& room) {
  if (!text.has(3 * kCount) || !room.has(kCount)) {
    return false;
  }
  uint32_t other = 0;
  repeat<kCount>([&](size_t i) { other |= byte_at(text.at + 3 * i) ^ 0xE0U; });
  if (other > 0x0F) {
    return false;
  }
  repeat<kCount>([&](size_t i) {
    const char* const at = text.at + 3 * i;
    put_unit(room.at + i, uint32_t{byte_at(at)} << 12 | (byte_at(at + 1) & 0x3FU) << 6 |
                              (byte_at(at + 2) & 0x3FU));
  });
  text.skip(3 * kCount);
  room.skip(kCount);
  return true;
}

// Sequences of one byte and of two, in any order. The unit of a sequence is put together in the
// place of each of its bytes. The units are then written two at a time: where only one of them is
// new the next two go over the second.
template <size_t kBytes>
[[gnu::always_inline]] inline bool take_ones_and_twos(Utf8Text& text, Ucs2Room& room) {
  using Signed = int8_t __attribute__((vector_size(16)));
  if (!text.has(kBytes) || !room.has(kBytes)) {
    return false;
  }
  Bytes16 bytes;
  load_bytes<kBytes>(bytes, text.at);
  const auto high_bit = Bytes16(Signed(bytes) < 0);
  const auto lead = Bytes16((bytes & 0xE0) == 0xC0);
  Bytes16 second;
  move_up(second, lead);
  if constexpr (kBytes == 8) {
    load_half(second, &second);
  }
  // A byte has its high bit set when it is a lead, or follows one, and only then.
  if (any(high_bit ^ lead ^ second)) {
    return false;
  }
  const Bytes16 upper = bytes & lead & 0x1F;
  const Bytes16 lower = bytes & second & 0x3F;
  Bytes16 upper_again;
  Bytes16 lower_again;
  move_up(upper_again, upper);
  move_down(lower_again, lower);
  Units8 units[2];
  Units8 upper_units[2];
  widen(units, (bytes & ~high_bit) | lower | lower_again);
  widen(upper_units, upper | upper_again);
  ustring pairs[kBytes / 2][2];
  store(pairs[0], units[0] | upper_units[0] << 6);
  if constexpr (kBytes == 16) {
    store(pairs[4], units[1] | upper_units[1] << 6);
  }
  uint16_t counts[8];  // of new units: a pair that has a lead has one
  store(counts, 1 + (Units8(Units8(lead) == 0) & 1));
  ustring* to = room.at;
  repeat<kBytes / 2>([&](size_t i) {
    std::memcpy(to, pairs[i], sizeof pairs[i]);
    to += counts[i];
  });
  const bool cut = (byte_at(text.at + kBytes - 1) & 0xE0) == 0xC0;  // a lead at the end stays
  text.skip(kBytes - cut);
  room.skip(static_cast<size_t>(to - room.at));
  return true;
}

[[gnu::always_inline]] inline void take_wide(Utf8Text& text, Ucs2Room& room) {
  if (byte_at(text.at) >= 0xE0) {
    while (take_threes<4>(text, room)) {
    }
    return;
  }
  while (take_ascii<16>(text, room)) {
  }
  int steps = 0;
  while (steps < kAtOnce && take_ones_and_twos<16>(text, room)) {
    ++steps;
  }
  if (!text.has(16) && !take_ascii<8>(text, room)) {
    take_ones_and_twos<8>(text, room);
  }
}

[[gnu::always_inline]] inline SMStatus take_singly(Utf8Text& text, Ucs2Room& room) {
  for (int i = 0; i < kAtOnce && text.left != 0; ++i) {
    if (byte_at(text.at) < 0x80 && room.left != 0) {
      put_unit(room.at, byte_at(text.at));
      text.skip(1);
      room.skip(1);
    } else if (!take_threes<1>(text, room)) {
      const Decoded decoded = read_utf8(text.at);
      const uint32_t length = ucs2_length_of(decoded.code_point);
      if (decoded.length == 0 || length == 0) {
        return SM_STATUS_OPERATION_FAILED;
      }
      if (!room.has(length)) {
        return SM_STATUS_BUFFER_TOO_SMALL;
      }
      write_ucs2(room.at, decoded.code_point, length);
      text.skip(decoded.length);
      room.skip(length);
    }
  }
  return SM_STATUS_SUCCESS;
}

// ---- From UCS-2 ----

// kSteps steps of ASCII.
template <size_t kSteps>
[[gnu::always_inline]] inline bool take_ascii(Ucs2Text& text, Utf8Room& room) {
  constexpr size_t kCount = kSteps * kStepUnits;
  if (!text.has(kCount) || !room.has(kCount)) {
    return false;
  }
  Units8 all{};
  repeat<kSteps>([&](size_t i) {
    Units8 units;
    load(units, text.at + i * kStepUnits);
    all |= units;
  });
  if (any(all & 0xFF80)) {
    return false;
  }
  if constexpr (kSteps == 1) {
    store(room.at, __builtin_convertvector(all, Bytes8));
  } else {
    repeat<kSteps / 2>([&](size_t i) {
      Units16 units;
      load(units, text.at + i * 2 * kStepUnits);
      store(room.at + i * 2 * kStepUnits, __builtin_convertvector(units, Bytes16));
    });
  }
  text.skip(kCount);
  room.skip(kCount);
  return true;
}

// How far to shift the first and the second byte of two into the place that they have in memory.
constexpr int kFirst = std::countr_zero(std::bit_cast<uint16_t>(std::array<uint8_t, 2>{1, 0}));
constexpr int kSecond = std::countr_zero(std::bit_cast<uint16_t>(std::array<uint8_t, 2>{0, 1}));

// Units of three bytes each. Four bytes are written for each; the last of them is the first of what
// follows, a terminator if nothing else.
[[gnu::always_inline]] inline bool take_threes(Ucs2Text& text, Utf8Room& room) {
  constexpr size_t kBytes = 3 * kStepUnits;
  if (!text.has(kStepUnits) || !room.has(kBytes + 1)) {
    return false;
  }
  Units8 units;
  load(units, text.at);
  const Units8 top = units & 0xF800;
  if (any(Units8(top == 0) | Units8(top == 0xD800))) {
    return false;
  }
  const Units8 begin = (units >> 12 | 0xE0) << kFirst | ((units >> 6 & 0x3F) | 0x80) << kSecond;
  const Units8 end = ((units & 0x3F) | 0x80) << kFirst;
  char bytes[kStepUnits][4];
  store(bytes[0], __builtin_shufflevector(begin, end, 0, 8, 1, 9, 2, 10, 3, 11));
  store(bytes[4], __builtin_shufflevector(begin, end, 4, 12, 5, 13, 6, 14, 7, 15));
  repeat<kStepUnits>([&](size_t i) { std::memcpy(room.at + 3 * i, bytes[i], sizeof bytes[i]); });
  text.skip(kStepUnits);
  room.skip(kBytes);
  return true;
}

// Units of one byte and of two, in any order, in pairs. Four bytes are written for each pair: up to
// two of them are the first of what follows, which is at least a unit and the terminator.
template <size_t kCount>
[[gnu::always_inline]] inline bool take_ones_and_twos(Ucs2Text& text, Utf8Room& room) {
  static_assert(kCount == kStepUnits || kCount == kStepUnits / 2);
  if (!text.has(kCount + 1) || !room.has(2 * kCount)) {
    return false;
  }
  Units8 units;
  if constexpr (kCount == kStepUnits) {
    load(units, text.at);
  } else {
    load_half(units, text.at);
  }
  if (any(units & 0xF800)) {
    return false;
  }
  const auto is_one = Units8((units & 0xFF80) == 0);
  const Units8 two = (units >> 6 << kFirst | (units & 0x3F) << kSecond) |
                     static_cast<uint16_t>(0xC0 << kFirst | 0x80 << kSecond);
  const auto coded = Bytes16(two ^ ((two ^ units << kFirst) & is_one));
  // Where the first of a pair is one byte, the bytes of the second move up to it.
  constexpr Bytes16 kFirstOfPair = {0xFF, 0, 0, 0, 0xFF, 0, 0, 0, 0xFF, 0, 0, 0, 0xFF, 0, 0, 0};
  Bytes16 moved;
  move_down(moved, coded);
  moved |= coded & kFirstOfPair;
  const auto moves = Bytes16(__builtin_shufflevector(is_one, is_one, 0, 0, 2, 2, 4, 4, 6, 6));
  char pairs[kStepUnits / 2][4];
  store(pairs, coded ^ ((coded ^ moved) & moves));
  // A mask is also the number -1: the sum for the first of a pair is the length of both.
  const auto next_is_one =
      Units8(__builtin_shufflevector(is_one, Units8{}, 1, 2, 3, 4, 5, 6, 7, 8));
  uint16_t lengths[kStepUnits / 2][2];
  store(lengths, 4 + is_one + next_is_one);
  char* to = room.at;
  repeat<kCount / 2>([&](size_t i) {
    std::memcpy(to, pairs[i], sizeof pairs[i]);
    to += lengths[i][0];
  });
  text.skip(kCount);
  room.skip(static_cast<size_t>(to - room.at));
  return true;
}

[[gnu::always_inline]] inline void take_wide(Ucs2Text& text, Utf8Room& room) {
  if (unit_at(text.at) >= 0x800) {
    while (take_threes(text, room)) {
    }
    return;
  }
  while (take_ascii<8>(text, room)) {
  }
  while (take_ascii<1>(text, room)) {
  }
  int steps = 0;
  while (steps < kAtOnce && take_ones_and_twos<8>(text, room)) {
    ++steps;
  }
  if (!text.has(kStepUnits + 1)) {
    take_ones_and_twos<4>(text, room);
  }
}

// The code point that stands for every surrogate of a text: the pair at the head of the text,
// wherever the surrogate is, or the first unit when that is none. Text that was converted so lies
// in logs and files everywhere, and is compared with what is converted now. False when the head is
// half a pair.
bool head_of(const ustring* text, uint32_t* code_point) {
  const ustring high = unit_at(text);
  *code_point = high;
  if (!is_surrogate(high)) {
    return true;
  }
  const ustring low = unit_at(text + 1);
  if (!is_high_surrogate(high) || !is_low_surrogate(low)) {
    return false;
  }
  *code_point = 0x10000 + ((high & 0x3FFU) << 10 | (low & 0x3FFU));
  return true;
}

[[gnu::always_inline]] inline SMStatus take_singly(Ucs2Text& text, Utf8Room& room) {
  for (int i = 0; i < kAtOnce && text.left != 0; ++i) {
    const ustring unit = unit_at(text.at);
    uint32_t code_point = unit;
    if (is_surrogate(unit) && !head_of(text.first, &code_point)) {
      return SM_STATUS_OPERATION_FAILED;
    }
    const uint32_t length = utf8_length(code_point);
    if (!room.has(length)) {
      return SM_STATUS_BUFFER_TOO_SMALL;
    }
    write_utf8(room.at, code_point, length);
    text.skip(1);
    room.skip(length);
  }
  return SM_STATUS_SUCCESS;
}

// ---- Either way ----

template <class Text, class Room>
[[gnu::always_inline]] inline SMStatus take_all(Text& text, Room& room) {
  while (text.left != 0) {
    const size_t left = text.left;
    take_wide(text, room);
    if (text.left == left) {
      const SMStatus status = take_singly(text, room);
      if (status != SM_STATUS_SUCCESS) {
        return status;
      }
    }
  }
  return SM_STATUS_SUCCESS;
}

// The elements that the text takes, without a terminator: it is converted to a scratch buffer, one
// bufferful after the other.
template <class Element, class Text>
[[gnu::noinline]] SMStatus measure(Text text, size_t* count) {
  constexpr size_t kScratch = 512 / sizeof(Element);
  Element scratch[kScratch] = {};
  SMStatus status = SM_STATUS_BUFFER_TOO_SMALL;
  *count = 0;
  while (status == SM_STATUS_BUFFER_TOO_SMALL) {
    Rest<Element> room{scratch, kScratch};
    status = take_all(text, room);
    *count += kScratch - room.left;
  }
  return status;
}

template <class Element, class Text>
[[gnu::always_inline]] inline SMStatus convert(Element* dst, uint32_t* size, Text text) {
  size_t count = 0;
  if (dst == nullptr) {
    const SMStatus status = measure<Element>(text, &count);
    if (status != SM_STATUS_SUCCESS) {
      return status;
    }
  } else {
    Rest<Element> room{dst, *size / sizeof(Element)};
    const SMStatus status = take_all(text, room);
    if (status != SM_STATUS_SUCCESS) {
      return status;
    }
    if (room.left == 0) {
      return SM_STATUS_BUFFER_TOO_SMALL;
    }
    std::memset(room.at, 0, sizeof(Element));
    count = static_cast<size_t>(room.at - dst);
  }
  *size = static_cast<uint32_t>((count + 1) * sizeof(Element));
  return SM_STATUS_SUCCESS;
}

}  // namespace

SMStatus utf8_to_ucs2(ustring* dst, uint32_t* size, const char* src) {
  if (src == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return convert(dst, size, Utf8Text{{src, std::strlen(src)}});
}

SMStatus ucs2_to_utf8(char* dst, uint32_t* size, const ustring* src) {
  if (src == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return convert(dst, size, Ucs2Text{{src, static_cast<size_t>(ucs2_end(src) - src)}, src});
}

}  // namespace kqsupt::text
