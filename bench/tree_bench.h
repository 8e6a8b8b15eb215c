// What the measurements of ordered trees share: the items, and how a tree is entered.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "measure.h"

namespace kqbench {

// Where the tree does not hold the keys itself, its callback finds them here.
struct Item {
  uint64_t key;
  uint64_t payload;
};

// Without a branch, the way callers of sorting functions write it.
inline int32_t compare_keys(uint64_t a, uint64_t b) {
  return (a > b) - (a < b);
}

inline constexpr size_t kTreeSizes[] = {1000, 100000, 1000000};
inline std::string tree_row(const char* operation, size_t items) {
  return "tree/" + std::string(operation) + '/' + std::to_string(items);
}

// The input of one iteration: items with random keys in the order of insertion, a tree that holds
// them all or nothing, and another order for the operation to follow.
template <class Tree>
struct TreeInput {
  std::unique_ptr<std::vector<Item>> items;
  std::vector<uint64_t> keys;
  std::unique_ptr<Tree> tree;
};

template <class Tree>
TreeInput<Tree> fresh_tree(size_t count, bool filled) {
  TreeInput<Tree> input{std::make_unique<std::vector<Item>>(count), {}, std::make_unique<Tree>()};
  input.keys.reserve(count);
  for (Item& item : *input.items) {
    item = {fresh()(), 0};
    input.keys.push_back(item.key);
    if (filled) {
      input.tree->insert(&item);
    }
  }
  std::shuffle(input.keys.begin(), input.keys.end(), fresh());
  return input;
}

// Enters a tree in all rows. Type Tree makes an empty tree, and frees its nodes when it goes; it
// has `void insert(Item*)`, `Item* find(uint64_t*)` and `void erase(uint64_t*)`.
template <class Tree>
void add_tree_measurements(const char* contestant) {
  using Input = TreeInput<Tree>;
  for (const size_t count : kTreeSizes) {
    add_measurement(
        tree_row("find", count), contestant, count, [=] { return fresh_tree<Tree>(count, true); },
        [](Input& input) {
          for (uint64_t& key : input.keys) {
            Item* item = input.tree->find(&key);
            benchmark::DoNotOptimize(item);
          }
        });
    add_measurement(
        tree_row("insert", count), contestant, count,
        [=] { return fresh_tree<Tree>(count, false); },
        [](Input& input) {
          for (Item& item : *input.items) {
            input.tree->insert(&item);
          }
        });
    add_measurement(
        tree_row("delete", count), contestant, count, [=] { return fresh_tree<Tree>(count, true); },
        [](Input& input) {
          for (uint64_t& key : input.keys) {
            input.tree->erase(&key);
          }
        });
  }
}

}  // namespace kqbench
