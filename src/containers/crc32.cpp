// The table and the loops over it.

#include "containers/crc32.h"

#include <cctype>
#include <cstddef>
#include <cstring>
#include <utility>

#include "frame/heap.h"

namespace kqsupt::containers {
namespace {

constexpr uint32_t kPolynomial = 0xEDB88320;  // reflected
constexpr uint32_t kStart = 0xFFFFFFFF;
constexpr uint32_t kEntries = 256;

// Null while the library is not started. A plain pointer, so that no destructor takes it away from
// calls that come after those of this library.
constinit uint32_t* table = nullptr;

// An entry of the table: the low byte of a remainder, shifted out.
uint32_t shifted_out(uint32_t byte) {
  for (int bit = 0; bit < 8; ++bit) {
    byte = (byte >> 1) ^ ((byte & 1) != 0 ? kPolynomial : 0);
  }
  return byte;
}

template <class Fold, class Entry>
uint32_t checksum(const void* data, size_t length, Fold fold, Entry entry) {
  const auto* bytes = static_cast<const uint8_t*>(data);
  uint32_t crc = kStart;
  for (size_t i = 0; i < length; ++i) {
    crc = entry((crc ^ fold(bytes[i])) & 0xFF) ^ (crc >> 8);
  }
  return crc ^ 0xFFFFFFFF;
}

template <class Fold>
uint32_t checksum(const void* data, size_t length, Fold fold) {
  if (const uint32_t* entries = table) {
    return checksum(data, length, fold, [=](uint32_t byte) { return entries[byte]; });
  }
  return checksum(data, length, fold, shifted_out);
}

uint32_t as_it_is(uint8_t byte) {
  return byte;
}
uint32_t lowered(uint8_t byte) {
  return static_cast<uint32_t>(std::tolower(byte));
}

}  // namespace

bool start_crc32_table() {
  frame::HeapPtr<uint32_t[]> entries = frame::heap_array<uint32_t>(kEntries);
  if (entries == nullptr) {
    return false;
  }
  // The remainders are linear: what two bytes without a common bit give together is what each
  // gives, combined.
  for (uint32_t bit = 1; bit < kEntries; bit <<= 1) {
    entries[bit] = shifted_out(bit);
    for (uint32_t below = 1; below < bit; ++below) {
      entries[bit | below] = entries[bit] ^ entries[below];
    }
  }
  table = entries.release();
  return true;
}

void stop_crc32_table() {
  frame::release(std::exchange(table, nullptr));
}

uint32_t crc32_of_bytes(const void* data, uint32_t length) {
  return checksum(data, length, as_it_is);
}

uint32_t crc32_of_text(const char* text) {
  return checksum(text, std::strlen(text), as_it_is);
}

uint32_t crc32_of_lowered_text(const char* text) {
  return checksum(text, std::strlen(text), lowered);
}

// Not the CRC-32 above, though it looks like it: the remainder takes the polynomial whenever any
// bit of the byte is left, not when its lowest one is, and it is not inverted at the end. Callers
// keep these values and compare them with later ones, so they stay what they are.
uint32_t generate_crc32(const void* data, uint32_t data_length, int32_t total_length) {
  const auto* bytes = static_cast<const uint8_t*>(data);
  // The count meets the total and does not pass it: a negative total is reached after 2^32 less
  // its amount of bytes.
  const auto total = static_cast<uint32_t>(total_length);
  uint32_t crc = kStart;
  for (uint32_t i = 0; i != total; ++i) {
    uint32_t byte = i < data_length ? bytes[i] : 0;
    for (int step = 0; step < 8; ++step) {
      const uint32_t left = byte ^ (crc & 1);
      crc >>= 1;
      if (left != 0) {
        crc ^= kPolynomial;
      }
      byte = left >> 1;
    }
  }
  return crc;
}

}  // namespace kqsupt::containers
