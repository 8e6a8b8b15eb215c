// What the measurements of records share: the contents, and how a contestant is entered.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "measure.h"

namespace kqbench {

// The values that a record is to hold, in the order in which they are added.
struct Content {
  struct Value {
    uint16_t id;
    std::span<const uint8_t> bytes;
  };
  std::vector<Value> values;
  std::vector<uint8_t> storage;  // of the values' bytes
};

// Random unique IDs in random order; half of the lengths 1, 2, 4 or 8, four tenths from 8 to 40, a
// tenth from 41 to 200.
[[nodiscard]] Content fresh_content(size_t entries);

// Bytes to look up in, and the order in which this is done: each ID once.
struct Lookups {
  std::vector<uint8_t> block;
  std::vector<uint16_t> ids;
};
[[nodiscard]] Lookups fresh_lookups(const Content& content, std::span<const uint8_t> block);

// Room for a record's bytes, and for a value's.
inline std::array<uint8_t, 0x10000> block_buffer;
inline std::array<uint8_t, 256> value_buffer;

inline constexpr size_t kRecordSizes[] = {20, 200};
inline std::string record_row(const char* operation, size_t entries) {
  return "records/" + std::string(operation) + '/' + std::to_string(entries);
}

// Enters a contestant in a row of each record size. `prepare(content)` makes what `measured` is
// called with, once for each of the records of an iteration: `per_entry` says whether that is one
// operation or one for each entry.
template <class Prepare, class Measured>
void add_record_measurement(const char* operation, const char* contestant, bool per_entry,
                            Prepare prepare, Measured measured) {
  constexpr size_t kRecords = 64;
  for (const size_t entries : kRecordSizes) {
    using Prepared = decltype(prepare(std::declval<Content>()));
    const auto prepare_all = [=] {
      std::vector<Prepared> all;
      all.reserve(kRecords);
      for (size_t i = 0; i < kRecords; ++i) {
        all.push_back(prepare(fresh_content(entries)));
      }
      return all;
    };
    const auto measure_all = [=](std::vector<Prepared>& all) {
      for (Prepared& one : all) {
        measured(one);
      }
    };
    add_measurement(record_row(operation, entries), contestant,
                    per_entry ? kRecords * entries : kRecords, prepare_all, measure_all);
  }
}

// The names of the operations.
inline constexpr const char* kLookUp = "look-up";
inline constexpr const char* kSerialize = "serialize";
inline constexpr const char* kBuildAndSerialize = "build+serialize";
inline constexpr const char* kRebuild = "rebuild";

inline Content as_it_is(Content content) {
  return content;
}

}  // namespace kqbench
