// Copying a value out of a block.
//
// The lengths of values are as good as random: a copy that branches on them is mispredicted about
// once, and as the length is only known at the end of the search for it, that costs more than the
// rest of a look-up. Common lengths are therefore copied without a branch.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "sdo/wire.h"

namespace kqsupt::sdo {

// The widest move that every host has.
struct TwoWords {
  uint64_t words[2];
};

// Where the moves go that are wider than the value.
struct Nowhere {
  const uint8_t* from;  // any 16 bytes that can be read
  uint8_t* to;          // and 16 that nobody reads
};

// Copies the first and the last Word of a value of up to three, and for the widest Word what may
// lie between them. The moves overlap as the length has it.
template <class Word>
[[gnu::always_inline]] inline void copy_ends(uint8_t* to, const uint8_t* from, size_t size,
                                             const Nowhere& nowhere) {
  const size_t fits = size >= sizeof(Word) ? 1 : 0;
  // Picked by index, as a conditional would become a branch.
  uint8_t* const targets[] = {nowhere.to, to};
  const uint8_t* const sources[] = {nowhere.from, from};
  to = targets[fits];
  from = sources[fits];
  const size_t last = (size - sizeof(Word)) & (0 - fits);
  store(to, load<Word>(from));
  if constexpr (sizeof(Word) == sizeof(TwoWords)) {
    const size_t middle = std::min(sizeof(Word), last);
    store(to + middle, load<Word>(from + middle));
  }
  store(to + last, load<Word>(from + last));
}

// Copies a value of any length. `readable` is any address of 16 bytes.
[[gnu::always_inline]] inline void copy_value(uint8_t* to, const uint8_t* from, size_t size,
                                              const uint8_t* readable) {
  constexpr size_t kShortest = sizeof(uint32_t);
  constexpr size_t kLongest = 3 * sizeof(TwoWords);
  if (size - kShortest > kLongest - kShortest) {
    std::memcpy(to, from, size);
    return;
  }
  TwoWords unread;
  const Nowhere nowhere{readable, reinterpret_cast<uint8_t*>(&unread)};
  store(to, load<uint32_t>(from));
  store(to + size - kShortest, load<uint32_t>(from + size - kShortest));
  copy_ends<uint64_t>(to, from, size, nowhere);
  copy_ends<TwoWords>(to, from, size, nowhere);
}

}  // namespace kqsupt::sdo
