// A red-black tree of data pointers, ordered by whatever the caller compares.
//
//   Place place = locate(root, [&](void* data) { return key - key_of(data); });
//   if (place.match == nullptr) insert_at(&root, place, data);
//   for (Node* node = first(root); node != nullptr; node = next(node)) use(node->data);
//
// Looking and changing are two steps, so that a caller that found where its item is missing does
// not search again to insert it. A place holds until the tree is changed.
#pragma once

#include <cstdint>
#include <utility>

#include "frame/heap.h"
#include "kqsupt/containers.h"

struct SMRedBlackTreeNode {
  SMRedBlackTreeNode* left;
  SMRedBlackTreeNode* right;
  SMRedBlackTreeNode* parent;
  void* data;
  uint32_t colour;
};

namespace kqsupt::containers {

using Node = SMRedBlackTreeNode;

// Where a search ended: at the node that matched, or below `parent` on the side of `sign`.
struct Place {
  Node* match;
  Node* parent;
  int32_t sign;
};

// Whether a search fetches what its next two steps may touch. In a tree that is larger than the caches each
// step misses them; in a small one the fetching costs more than it brings.
enum class Fetch { kNone, kAhead };

// As a function of its own this would count as having no effect and be left out with its call.
[[gnu::always_inline]] inline void fetch_ahead(const Node* node) {
  // The node stands in for a child that is missing: no branch, and no null to look behind.
  const Node* left = node->left != nullptr ? node->left : node;
  const Node* right = node->right != nullptr ? node->right : node;
  for (const Node* child : {left, right}) {
    __builtin_prefetch(child->data);
    __builtin_prefetch(child->left);
    __builtin_prefetch(child->right);
  }
}

// `order(data)` is negative when what is sought comes before the item, positive when after.
template <Fetch kFetch = Fetch::kNone, class Order>
Place locate(Node* root, Order&& order) {
  Place place{nullptr, nullptr, 0};
  for (Node* node = root; node != nullptr;) {
    if constexpr (kFetch == Fetch::kAhead) {
      fetch_ahead(node);
    }
    const int32_t sign = order(node->data);
    if (sign == 0) {
      place.match = node;
      return place;
    }
    place.parent = node;
    place.sign = sign;
    node = sign < 0 ? node->left : node->right;
  }
  return place;
}

// Hangs a new node with `data` where a search found nothing. False, and the tree as it was, when
// memory is short.
[[nodiscard]] bool insert_at(Node** tree, const Place& place, void* data);

// Takes `node` out and frees a node. The node that is freed may be another one: no Node* of this
// tree is valid afterwards.
void erase(Node** tree, Node* node);

// The nodes in ascending order, and in descending order.
[[nodiscard]] Node* first(Node* root);
[[nodiscard]] Node* next(Node* node);
[[nodiscard]] Node* last(Node* root);

// Frees all nodes below `*tree`, right before left before the node itself, after `freed(data)`.
template <class Freed>
void erase_all(Node** tree, Freed&& freed) {
  Node* node = *tree;
  *tree = nullptr;  // whoever looks at the tree from inside `freed` finds it empty
  while (node != nullptr) {
    // Each child is cut off its parent on the way down, so that the way up needs no memory of it.
    if (Node* right = std::exchange(node->right, nullptr)) {
      node = right;
    } else if (Node* left = std::exchange(node->left, nullptr)) {
      node = left;
    } else {
      freed(node->data);
      Node* parent = node->parent;
      frame::release(node);
      node = parent;
    }
  }
  *tree = nullptr;
}

// The exported operations.
[[nodiscard]] SMStatus tree_insert(Node** tree, void* data, void* key,
                                   SMRedBlackTreeCompare compare);
[[nodiscard]] void* tree_replace(Node** tree, void* new_data, void* key,
                                 SMRedBlackTreeCompare compare);
[[nodiscard]] SMStatus tree_delete(Node** tree, void* key, SMRedBlackTreeCompare compare);
void tree_delete_all(Node** tree, void* context, SMRedBlackTreeFreed freed);
[[nodiscard]] void* tree_walk(Node* root, void* context, SMRedBlackTreeVisit visit, uint32_t mode);
void tree_set_empty(Node** tree);
uint32_t tree_is_empty(const Node* root);

}  // namespace kqsupt::containers
