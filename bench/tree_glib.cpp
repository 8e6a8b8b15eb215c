// Ordered trees: GLib's, with the items' keys compared by a callback as in ours.

#include <glib.h>

#include "tree_bench.h"

namespace kqbench {
namespace {

class GLibTree {
 public:
  GLibTree() : tree_(g_tree_new(compare)) {}
  ~GLibTree() { g_tree_destroy(tree_); }
  GLibTree(const GLibTree&) = delete;
  GLibTree& operator=(const GLibTree&) = delete;

  void insert(Item* item) { g_tree_insert(tree_, &item->key, item); }
  Item* find(const uint64_t* key) { return static_cast<Item*>(g_tree_lookup(tree_, key)); }
  void erase(const uint64_t* key) { require(g_tree_remove(tree_, key) != FALSE); }

 private:
  static int compare(const void* a, const void* b) {
    return compare_keys(*static_cast<const uint64_t*>(a), *static_cast<const uint64_t*>(b));
  }

  GTree* tree_;
};

const bool kAdded = [] {
  add_tree_measurements<GLibTree>("GTree");
  return true;
}();

}  // namespace
}  // namespace kqbench
