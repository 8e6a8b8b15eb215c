// Ordered trees: ours through its exported functions and a C callback, and the standard library's.

#include "tree_bench.h"

#include <kqsupt/containers.h>

#include <map>

#include "ratio_table.h"

namespace kqbench {
namespace {

class OurTree {
 public:
  OurTree() { SMRedBlackTreeAttach(&root_); }
  ~OurTree() { SMRedBlackTreeDelete(&root_, nullptr, nullptr); }
  OurTree(const OurTree&) = delete;
  OurTree& operator=(const OurTree&) = delete;

  void insert(Item* item) {
    require(SMRedBlackTreeDataInsert(&root_, item, &item->key, compare) == SM_STATUS_SUCCESS);
  }
  Item* find(uint64_t* key) {
    return static_cast<Item*>(SMRedBlackTreeDataWalk(
        root_, key, reinterpret_cast<SMRedBlackTreeVisit>(reinterpret_cast<void (*)()>(compare)),
        SM_RED_BLACK_TREE_WALK_SEARCH));
  }
  void erase(uint64_t* key) {
    require(SMRedBlackTreeDataDelete(&root_, key, compare) == SM_STATUS_SUCCESS);
  }

 private:
  static int32_t compare(void* key, void* data, uint32_t reserved) {
    (void)reserved;
    return compare_keys(*static_cast<uint64_t*>(key), static_cast<Item*>(data)->key);
  }

  SMRedBlackTree root_;
};

// With the keys in the nodes, and compared without a call: as one would use it.
class StandardMap {
 public:
  void insert(Item* item) { require(map_.emplace(item->key, item).second); }
  Item* find(const uint64_t* key) {
    const auto found = map_.find(*key);
    return found != map_.end() ? found->second : nullptr;
  }
  void erase(const uint64_t* key) { require(map_.erase(*key) == 1); }

 private:
  std::map<uint64_t, Item*> map_;
};

std::vector<Row> rows() {
  std::vector<Row> rows;
  for (const char* operation : {"find", "insert", "delete"}) {
    for (const size_t count : kTreeSizes) {
      rows.push_back({tree_row(operation, count),
                      operation + std::string(", ") + std::to_string(count) + " keys", 0.8,
                      "GTree"});
    }
  }
  return rows;
}

const bool kAdded = [] {
  add_family({"tree", {"GTree", "std::map"}, rows()});
  add_tree_measurements<OurTree>(kOurs);
  add_tree_measurements<StandardMap>("std::map");
  return true;
}();

}  // namespace
}  // namespace kqbench
