// Long runs of words that are all the same, none in use or all, are passed over in blocks.

#include "containers/hash_ids.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace kqsupt::containers {
namespace {

constexpr uint32_t kWordBits = 32;
constexpr uint32_t kUnused = 0;
constexpr uint32_t kFull = 0xFFFFFFFF;
constexpr uint32_t kMostBytes = 0x20000000;  // behind them there are no IDs of 32 bits left

// How SMAcquireHashID chooses.
constexpr int32_t kLowestFree = 0;
constexpr int32_t kAfterHighest = 1;

// The compiler's own vectors: where a host has no such registers it falls back to words.
using Vector = uint64_t __attribute__((vector_size(16)));
constexpr size_t kBlockVectors = 16;

uint32_t lowest_bit(uint32_t word) {
  return static_cast<uint32_t>(std::countr_zero(word));
}
uint32_t highest_bit(uint32_t word) {
  return kWordBits - 1 - static_cast<uint32_t>(std::countl_zero(word));
}

// The whole words of a table, at any address.
class Words {
 public:
  Words(const void* table, uint32_t bytes)
      : table_(static_cast<const uint8_t*>(table)),
        count_(std::min(bytes, kMostBytes) / sizeof(uint32_t)) {}

  [[nodiscard]] size_t count() const { return count_; }

  [[nodiscard]] uint32_t operator[](size_t index) const {
    uint32_t word;
    std::memcpy(&word, at(index), sizeof word);
    return word;
  }

  // The word with the bit of ID 0 set, or clear, so that it does not count.
  [[nodiscard]] uint32_t with_zero_taken(size_t index) const {
    return operator[](index) | (index == 0 ? 1 : 0);
  }
  [[nodiscard]] uint32_t with_zero_free(size_t index) const {
    return operator[](index) & ~(index == 0 ? uint32_t{1} : uint32_t{0});
  }

  // The first word from `index` on that is not kValue, kUnused or kFull; the count when there is
  // none.
  template <uint32_t kValue>
  [[nodiscard]] size_t skip(size_t index) const {
    // Vectors are read where they are in line: a table whose own words are not has none.
    while (index < count_ && !begins_vector(index)) {
      if (operator[](index) != kValue) {
        return index;
      }
      ++index;
    }
    index = skip_vectors<kValue, kBlockVectors>(index);
    index = skip_vectors<kValue, 1>(index);
    while (index < count_ && operator[](index) == kValue) {
      ++index;
    }
    return index;
  }

 private:
  [[nodiscard]] bool begins_vector(size_t index) const {
    return reinterpret_cast<uintptr_t>(at(index)) % sizeof(Vector) == 0;
  }

  // Goes on by kVectors vectors at a time while all their words are kValue.
  template <uint32_t kValue, size_t kVectors>
  [[nodiscard]] size_t skip_vectors(size_t index) const {
    constexpr size_t kStep = kVectors * sizeof(Vector) / sizeof(uint32_t);
    const size_t end = index + (count_ - index) / kStep * kStep;
    for (; index != end; index += kStep) {
      const void* const from = __builtin_assume_aligned(at(index), sizeof(Vector));
      Vector vectors[kVectors];
      std::memcpy(vectors, from, sizeof vectors);
      Vector all = vectors[0];
#pragma GCC unroll 16
      for (size_t i = 1; i < kVectors; ++i) {
        if constexpr (kValue == kFull) {
          all &= vectors[i];
        } else {
          all |= vectors[i];
        }
      }
      const uint64_t both = kValue == kFull ? all[0] & all[1] : ~(all[0] | all[1]);
      if (both != ~uint64_t{0}) {
        break;
      }
    }
    return index;
  }

  [[nodiscard]] const uint8_t* at(size_t index) const {
    return table_ + index * sizeof(uint32_t);
  }

  const uint8_t* table_;
  size_t count_;
};

uint32_t id_of(size_t index, uint32_t bit) {
  return static_cast<uint32_t>(index) * kWordBits + bit;
}
uint32_t bit_of(uint32_t id) {
  return uint32_t{1} << id % kWordBits;
}

bool beyond(const Words& words, uint32_t id) {
  return id / kWordBits >= words.count();
}
bool in_use(const Words& words, uint32_t id) {
  return (words[id / kWordBits] & bit_of(id)) != 0;
}
void invert(void* table, uint32_t id) {
  uint32_t word;
  auto* place = static_cast<uint8_t*>(table) + id / kWordBits * sizeof word;
  std::memcpy(&word, place, sizeof word);
  word ^= bit_of(id);
  std::memcpy(place, &word, sizeof word);
}

// 0 when no ID is free.
uint32_t lowest_free(const Words& words) {
  size_t index = 0;
  if (words.with_zero_taken(0) == kFull) {
    index = words.skip<kFull>(1);
    if (index == words.count()) {
      return 0;
    }
  }
  return id_of(index, lowest_bit(~words.with_zero_taken(index)));
}

// The word to take an ID from so that those released last are not the next ones: the last one that
// is in use in part, else the first unused one.
size_t word_in_part_used(const Words& words) {
  for (size_t index = words.count(); index-- != 0;) {
    const uint32_t word = words.with_zero_taken(index);
    if (word != kFull && word != kUnused) {
      return index;
    }
  }
  const size_t index = words.skip<kFull>(1);
  return index != words.count() ? index : 0;
}

// The lowest of the highest IDs that are free in a row; 0 when none is.
uint32_t after_highest(const Words& words) {
  const size_t index = word_in_part_used(words);
  const uint32_t word = words.with_zero_taken(index);
  if (word == kFull) {
    return 0;
  }
  const uint32_t above = kFull << highest_bit(~word);  // that free ID, and those taken above it
  const uint32_t below = word & ~above;
  return id_of(index, below != 0 ? highest_bit(below) + 1 : 0);
}

}  // namespace

uint32_t bytes_for_ids(uint32_t max_id) {
  constexpr uint32_t kLargest = 0x3FFFFFFE;
  if (max_id == 0 || max_id > kLargest) {
    return 0;
  }
  return (max_id / kWordBits + 1) * static_cast<uint32_t>(sizeof(uint32_t));
}

SMStatus clear_ids(void* table, uint32_t bytes) {
  std::memset(table, 0, bytes);
  return SM_STATUS_SUCCESS;
}

uint32_t acquire_id(void* table, uint32_t bytes, int32_t mode) {
  const Words words(table, bytes);
  if (words.count() == 0 || (mode != kLowestFree && mode != kAfterHighest)) {
    return 0;
  }
  const uint32_t id = mode == kLowestFree ? lowest_free(words) : after_highest(words);
  if (id != 0) {
    invert(table, id);
  }
  return id;
}

SMStatus acquire_id_by_id(void* table, uint32_t bytes, uint32_t id) {
  const Words words(table, bytes);
  if (beyond(words, id)) {
    return SM_STATUS_OPERATION_FAILED;
  }
  if (in_use(words, id)) {
    return SM_STATUS_ALREADY_EXISTS;
  }
  invert(table, id);
  return SM_STATUS_SUCCESS;
}

SMStatus verify_id(const void* table, uint32_t bytes, uint32_t id) {
  const Words words(table, bytes);
  if (beyond(words, id)) {
    return SM_STATUS_OPERATION_FAILED;
  }
  return in_use(words, id) ? SM_STATUS_SUCCESS : SM_STATUS_INDEX_OUT_OF_RANGE;
}

SMStatus release_id(void* table, uint32_t bytes, uint32_t id) {
  const SMStatus status = verify_id(table, bytes, id);
  if (status == SM_STATUS_SUCCESS) {
    invert(table, id);
  }
  return status;
}

// When the first word that is not 0 has the bit of ID 0 alone, the words behind it are not looked
// at: a table in which ID 0 was taken seems unused until another ID below 32 is in use.
uint32_t min_id_in_use(const void* table, uint32_t bytes) {
  const Words words(table, bytes);
  const size_t index = words.skip<kUnused>(0);
  if (index == words.count()) {
    return 0;
  }
  const uint32_t word = words.with_zero_free(index);
  return word != 0 ? id_of(index, lowest_bit(word)) : 0;
}

uint32_t max_id_in_use(const void* table, uint32_t bytes) {
  const Words words(table, bytes);
  for (size_t index = words.count(); index-- != 0;) {
    if (words[index] != kUnused) {
      const uint32_t word = words.with_zero_free(index);
      return word != 0 ? id_of(index, highest_bit(word)) : 0;
    }
  }
  return 0;
}

uint32_t find_first_id(const void* table, uint32_t bytes, uint32_t* word_cursor,
                       uint32_t* bit_cursor) {
  if (word_cursor == nullptr || bit_cursor == nullptr) {
    return 0;
  }
  *word_cursor = 0;
  *bit_cursor = 0;
  return find_next_id(table, bytes, word_cursor, bit_cursor);
}

uint32_t find_next_id(const void* table, uint32_t bytes, uint32_t* word_cursor,
                      uint32_t* bit_cursor) {
  if (word_cursor == nullptr || bit_cursor == nullptr) {
    return 0;
  }
  const Words words(table, bytes);
  size_t index = *word_cursor;
  if (index >= words.count()) {
    return 0;
  }
  // A shift of its own for the last bit: one by all 32 is no shift.
  const uint32_t above = *bit_cursor < kWordBits - 1 ? kFull << *bit_cursor << 1 : 0;
  uint32_t rest = words[index] & above;
  if (rest == 0) {
    index = words.skip<kUnused>(index + 1);
    if (index == words.count()) {
      return 0;
    }
    rest = words[index];
  }
  *word_cursor = static_cast<uint32_t>(index);
  *bit_cursor = lowest_bit(rest);
  return id_of(index, *bit_cursor);
}

}  // namespace kqsupt::containers
