// A record in memory: its entries in a tree ordered by ID, and the size of its binary form.
#pragma once

#include <cstdint>
#include <memory>

#include "containers/red_black_tree.h"
#include "kqsupt/sdo.h"
#include "sdo/entry.h"

struct SMSDOConfig {
  kqsupt::containers::Node* entries;
  uint32_t count;
  uint32_t binary_size;
};

namespace kqsupt::sdo {

// What a conversion answers that failed without a status of its own.
inline constexpr SMStatus kFailed = 0xFFFFFFFF;

inline constexpr uint32_t kEntryLimit = 0xFFFF;

[[nodiscard]] constexpr bool is_valid_id(uint16_t id) {
  return id != 0 && id != 0xFFFE && id != 0xFFFF;
}

inline Entry& entry_of(const containers::Node* node) {
  return *static_cast<Entry*>(node->data);
}

// The entries in ascending order of IDs, for a range-based for.
class EntriesInOrder {
 public:
  class Iterator {
   public:
    explicit Iterator(containers::Node* node) : node_(node) {}
    Entry& operator*() const { return entry_of(node_); }
    Iterator& operator++() {
      node_ = containers::next(node_);
      return *this;
    }
    bool operator!=(const Iterator& other) const { return node_ != other.node_; }

   private:
    containers::Node* node_;
  };

  explicit EntriesInOrder(const SMSDOConfig& config) : root_(config.entries) {}
  Iterator begin() const { return Iterator(containers::first(root_)); }
  static Iterator end() { return Iterator(nullptr); }

 private:
  containers::Node* root_;
};

[[nodiscard]] SMSDOConfig* alloc_config();
void free_config(SMSDOConfig* config);
void free_configs(SMSDOConfig** configs, uint32_t count);  // and sets each pointer to null

struct ConfigFree {
  void operator()(SMSDOConfig* config) const { free_config(config); }
};
using ConfigPtr = std::unique_ptr<SMSDOConfig, ConfigFree>;

[[nodiscard]] SMSDOConfig* clone(const SMSDOConfig* config);
[[nodiscard]] uint32_t compare_by_value(const SMSDOConfig* a, const SMSDOConfig* b);
[[nodiscard]] uint32_t count(const SMSDOConfig* config);

// What becomes of the record that a single block was converted to when it cannot be added. The
// export loses it: agents count on a failed add to leave every record that they can reach alone.
// Nothing inside the library loses one.
enum class UnaddedChild { kFree, kLose };

[[nodiscard]] SMStatus add_data(SMSDOConfig* config, uint16_t id, uint8_t type, const void* data,
                                uint32_t size, uint32_t replace, UnaddedChild unadded);
[[nodiscard]] SMStatus get_data_by_id(const SMSDOConfig* config, uint16_t id, uint8_t* type_out,
                                      void* buffer, uint32_t* size);
[[nodiscard]] SMStatus get_data_by_index(const SMSDOConfig* config, uint32_t index,
                                         uint16_t* id_out, uint8_t* type_out, void* buffer,
                                         uint32_t* size);
[[nodiscard]] SMStatus remove_data(SMSDOConfig* config, uint16_t id, uint32_t index,
                                   uint32_t remove_all);
[[nodiscard]] uint32_t recalc_binary_size(SMSDOConfig* config);

[[nodiscard]] inline uint32_t binary_size(const SMSDOConfig* config) {
  return config != nullptr ? config->binary_size : 0;
}

}  // namespace kqsupt::sdo
