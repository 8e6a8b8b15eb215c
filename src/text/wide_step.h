// Sixteen bytes of text at a time, in the compiler's own vector types. One definition serves every
// host: where there are no such registers the compiler falls back to words. Elements are numbered
// in the order of their addresses, on hosts of either byte order.
//
// Vectors are passed by reference, because how they are passed by value depends on the processor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace kqsupt::text {

using Bytes8 = uint8_t __attribute__((vector_size(8), may_alias));
using Bytes16 = uint8_t __attribute__((vector_size(16), may_alias));
using Units8 = uint16_t __attribute__((vector_size(16), may_alias));
using Units16 = uint16_t __attribute__((vector_size(32), may_alias));

inline constexpr size_t kStepUnits = 8;  // of 16 bits

// Calls `body` with 0, 1, … below kCount, written out one after the other.
template <size_t kCount, class Body>
[[gnu::always_inline]] inline void repeat(Body body) {
  [&]<size_t... kIndex>(std::index_sequence<kIndex...>) {
    (body(kIndex), ...);
  }
  (std::make_index_sequence<kCount>{});
}

// A vector at any address.
template <class Vector>
struct [[gnu::packed, gnu::may_alias]] Anywhere {
  Vector vector;
};
template <class Vector>
inline void load(Vector& vector, const void* from) {
  vector = static_cast<const Anywhere<Vector>*>(from)->vector;
}
template <class Vector>
inline void store(void* to, const Vector& vector) {
  static_cast<Anywhere<Vector>*>(to)->vector = vector;
}

// The eight bytes at `from` and, in the second half, zeros.
template <class Vector>
inline void load_half(Vector& vector, const void* from) {
  using Halves = uint64_t __attribute__((vector_size(16)));
  uint64_t half;
  std::memcpy(&half, from, sizeof half);
  vector = Vector(Halves{half, 0});
}

// Reads an aligned step that may begin before a text or end behind it. It lies in a page that holds
// a part of the text, so the read cannot fail; the sanitizers, which know of objects and
// not of pages, are told not to look here. Volatile, so that a step is read once and not again for
// every use: long searches wait for nothing but reads.
__attribute__((no_sanitize("address", "thread"))) inline void load_aligned(Units8& units,
                                                                           const void* from) {
  units = *static_cast<const volatile Units8*>(from);
}

// A comparison of vectors gives a mask: all bits of an element are set where it holds, else none.

// Whether it holds anywhere.
template <class Mask>
[[nodiscard]] inline bool any(const Mask& mask) {
  static_assert(sizeof mask == 16);
  uint64_t halves[2];
  std::memcpy(halves, &mask, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

// Where it holds: bit i of the result stands for unit i of the two steps together. Each unit keeps
// one bit, a different one in each, so that those of a word can be put together by adding the units
// up, which one multiplication does.
[[nodiscard]] inline uint32_t where(const Units8& low, const Units8& high) {
  const Units8 bits = (low & Units8{1, 2, 4, 8, 16, 32, 64, 128}) |
                      (high & Units8{256, 512, 1024, 2048, 4096, 8192, 16384, 32768});
  uint64_t halves[2];
  std::memcpy(halves, &bits, sizeof halves);
  return static_cast<uint32_t>(((halves[0] | halves[1]) * 0x0001000100010001) >> 48);
}

// The same for the bytes of one step.
[[nodiscard]] inline uint32_t where(const Bytes16& mask) {
  const Bytes16 bits = mask & Bytes16{1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
  uint64_t halves[2];
  std::memcpy(halves, &bits, sizeof halves);
  constexpr uint64_t kOnes = 0x0101010101010101;
  return static_cast<uint32_t>(halves[0] * kOnes >> 56 | halves[1] * kOnes >> 56 << 8);
}

// Each byte as a unit.
inline void widen(Units8 (&units)[2], const Bytes16& bytes) {
  const Units16 all = __builtin_convertvector(bytes, Units16);
  units[0] = __builtin_shufflevector(all, all, 0, 1, 2, 3, 4, 5, 6, 7);
  units[1] = __builtin_shufflevector(all, all, 8, 9, 10, 11, 12, 13, 14, 15);
}

// Every byte one place up or down; a 0 takes the place that is left.
inline void move_up(Bytes16& to, const Bytes16& bytes) {
  to = __builtin_shufflevector(Bytes16{}, bytes, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27,
                               28, 29, 30);
}
inline void move_down(Bytes16& to, const Bytes16& bytes) {
  to = __builtin_shufflevector(bytes, Bytes16{}, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                               16);
}

}  // namespace kqsupt::text
