// What a table of IDs answers, from the rules as they are told and one bit at a time.
#pragma once

#include <cstdint>
#include <vector>

#include "kqsupt/containers.h"

namespace kqsupt::tests {

class HashIdModel {
 public:
  explicit HashIdModel(uint32_t bytes) : used_(bytes / 4 * 32) {}

  [[nodiscard]] uint32_t count() const { return static_cast<uint32_t>(used_.size()); }
  [[nodiscard]] bool used(uint32_t id) const { return used_[id]; }

  uint32_t acquire(int32_t mode) {
    const uint32_t id = mode == SM_HASH_ID_LOWEST_FREE     ? lowest()
                        : mode == SM_HASH_ID_AFTER_HIGHEST ? after_highest()
                                                           : 0;
    if (id != 0) {
      used_[id] = true;
    }
    return id;
  }
  SMStatus take(uint32_t id) {
    if (id >= count()) {
      return SM_STATUS_OPERATION_FAILED;
    }
    if (used_[id]) {
      return SM_STATUS_ALREADY_EXISTS;
    }
    used_[id] = true;
    return SM_STATUS_SUCCESS;
  }
  [[nodiscard]] SMStatus verify(uint32_t id) const {
    if (id >= count()) {
      return SM_STATUS_OPERATION_FAILED;
    }
    return used_[id] ? SM_STATUS_SUCCESS : SM_STATUS_INDEX_OUT_OF_RANGE;
  }
  SMStatus release(uint32_t id) {
    const SMStatus status = verify(id);
    if (status == SM_STATUS_SUCCESS) {
      used_[id] = false;
    }
    return status;
  }
  [[nodiscard]] std::vector<uint32_t> all() const {
    std::vector<uint32_t> ids;
    for (uint32_t id = 1; id < count(); ++id) {
      if (used_[id]) {
        ids.push_back(id);
      }
    }
    return ids;
  }
  [[nodiscard]] uint32_t smallest() const {
    const std::vector<uint32_t> ids = all();
    const bool zero_hides_it = count() != 0 && used_[0] && !ids.empty() && ids.front() >= 32;
    return ids.empty() || zero_hides_it ? 0 : ids.front();
  }
  [[nodiscard]] uint32_t largest() const {
    const std::vector<uint32_t> ids = all();
    return ids.empty() ? 0 : ids.back();
  }
  [[nodiscard]] uint32_t word(uint32_t index) const {
    uint32_t word = 0;
    for (uint32_t bit = 0; bit < 32; ++bit) {
      word |= used_[index * 32 + bit] ? uint32_t{1} << bit : 0;
    }
    return word;
  }

 private:
  [[nodiscard]] uint32_t lowest() const {
    for (uint32_t id = 1; id < count(); ++id) {
      if (!used_[id]) {
        return id;
      }
    }
    return 0;
  }
  [[nodiscard]] bool full(uint32_t index) const {
    return (word(index) | (index == 0 ? 1U : 0U)) == 0xFFFFFFFF;
  }
  [[nodiscard]] uint32_t after_highest() const {
    if (count() == 0) {
      return 0;
    }
    uint32_t candidate = 0;
    bool found = false;
    for (uint32_t index = 0; index < count() / 32; ++index) {
      const bool empty = word(index) == 0;
      if ((!empty && !full(index)) || (empty && !found)) {
        candidate = index;
        found = true;
      }
    }
    if (full(candidate)) {
      return 0;
    }
    uint32_t id = 0;
    for (uint32_t next = candidate * 32 + 32; next-- != candidate * 32;) {
      if (next != 0 && !used_[next]) {
        id = next;
      } else if (next != 0 && id != 0) {
        break;
      }
    }
    return id;
  }

  std::vector<bool> used_;
};

}  // namespace kqsupt::tests
