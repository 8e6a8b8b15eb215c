// Keeping the tree balanced, and the operations on it that callers see.

#include "containers/red_black_tree.h"

namespace kqsupt::containers {
namespace {

constexpr uint32_t kBlack = 0;
constexpr uint32_t kRed = 1;

bool is_red(const Node* node) {
  return node != nullptr && node->colour == kRed;
}

// The pointer that holds `node`: its parent's, or the tree's cell.
Node*& link_to(Node** tree, Node* node) {
  Node* parent = node->parent;
  if (parent == nullptr) {
    return *tree;
  }
  return parent->left == node ? parent->left : parent->right;
}

// The two sides of a node as one member pointer: `left` stands for the side that a rule is written
// for and its mirror image is the same rule with the sides exchanged.
using Side = Node* Node::*;
Side mirror(Side side) {
  return side == &Node::left ? &Node::right : &Node::left;
}
Side side_of(const Node* child, const Node* parent) {
  return parent->left == child ? &Node::left : &Node::right;
}

// Lets the child of `node` on the side opposite to `side` rise above it; `node` sinks to `side`.
void rotate(Node** tree, Node* node, Side side) {
  const Side other = mirror(side);
  Node* riser = node->*other;
  link_to(tree, node) = riser;
  riser->parent = node->parent;
  node->*other = riser->*side;
  if (Node* moved = node->*other) {
    moved->parent = node;
  }
  riser->*side = node;
  node->parent = riser;
}

// `node` is red and its parent may be red too.
void restore_after_insert(Node** tree, Node* node) {
  while (is_red(node->parent)) {
    Node* parent = node->parent;
    Node* grandparent = parent->parent;  // a red node is never the root
    const Side side = side_of(parent, grandparent);
    Node* uncle = grandparent->*mirror(side);
    if (is_red(uncle)) {
      parent->colour = kBlack;
      uncle->colour = kBlack;
      grandparent->colour = kRed;
      node = grandparent;
      continue;
    }
    if (parent->*side != node) {
      rotate(tree, parent, side);
      parent = node;
    }
    parent->colour = kBlack;
    grandparent->colour = kRed;
    rotate(tree, grandparent, mirror(side));
    break;
  }
  (*tree)->colour = kBlack;
}

// The paths through `node`, the child of `parent` or a leaf below it, lack one black node.
void restore_after_erase(Node** tree, Node* node, Node* parent) {
  while (parent != nullptr && !is_red(node)) {
    const Side side = side_of(node, parent);
    const Side other = mirror(side);
    Node* sibling = parent->*other;
    if (is_red(sibling)) {
      sibling->colour = kBlack;
      parent->colour = kRed;
      rotate(tree, parent, side);
      sibling = parent->*other;
    }
    if (!is_red(sibling->*side) && !is_red(sibling->*other)) {
      sibling->colour = kRed;
      node = parent;
      parent = node->parent;
      continue;
    }
    if (!is_red(sibling->*other)) {
      (sibling->*side)->colour = kBlack;
      sibling->colour = kRed;
      rotate(tree, sibling, other);
      sibling = parent->*other;
    }
    sibling->colour = parent->colour;
    parent->colour = kBlack;
    (sibling->*other)->colour = kBlack;
    rotate(tree, parent, side);
    return;
  }
  if (node != nullptr) {
    node->colour = kBlack;
  }
}

// The last node on the way down one side.
Node* outermost(Node* node, Side side) {
  while (node != nullptr && node->*side != nullptr) {
    node = node->*side;
  }
  return node;
}

// The next node in the order that runs towards `side`.
Node* neighbour(Node* node, Side side) {
  if (node->*side != nullptr) {
    return outermost(node->*side, mirror(side));
  }
  Node* parent = node->parent;
  while (parent != nullptr && parent->*side == node) {
    node = parent;
    parent = node->parent;
  }
  return parent;
}

void* walk_towards(Node* node, Side side, void* context, SMRedBlackTreeVisit visit) {
  for (; node != nullptr; node = neighbour(node, side)) {
    if (visit(context, node->data) == 0) {
      return node->data;
    }
  }
  return nullptr;
}

// Each node before those below it. Only the side that comes first is a call of its own, so the
// depth of calls is bounded by the height of the tree.
void* walk_guided(Node* node, void* context, SMRedBlackTreeVisit visit) {
  while (node != nullptr) {
    const int32_t sign = visit(context, node->data);
    if (sign == 0) {
      return node->data;
    }
    const Side side = sign < 0 ? &Node::left : &Node::right;
    if (void* stopped = walk_guided(node->*side, context, visit)) {
      return stopped;
    }
    node = node->*mirror(side);
  }
  return nullptr;
}

Place locate_by(Node* root, void* key, SMRedBlackTreeCompare compare) {
  return locate<Fetch::kAhead>(root, [=](void* data) { return compare(key, data, 0); });
}

// The comparison that a caller has cast to the type of a visit.
SMRedBlackTreeCompare as_compare(SMRedBlackTreeVisit visit) {
  using AnyFunction = void (*)();
  return reinterpret_cast<SMRedBlackTreeCompare>(reinterpret_cast<AnyFunction>(visit));
}

}  // namespace

bool insert_at(Node** tree, const Place& place, void* data) {
  Node* node = static_cast<Node*>(frame::allocate(sizeof(Node)));
  if (node == nullptr) {
    return false;
  }
  *node = {nullptr, nullptr, place.parent, data, kRed};
  if (place.parent == nullptr) {
    *tree = node;
  } else if (place.sign < 0) {
    place.parent->left = node;
  } else {
    place.parent->right = node;
  }
  restore_after_insert(tree, node);
  return true;
}

void erase(Node** tree, Node* node) {
  Node* unlinked = node;
  if (node->left != nullptr && node->right != nullptr) {
    unlinked = outermost(node->right, &Node::left);
    node->data = unlinked->data;
  }
  Node* child = unlinked->left != nullptr ? unlinked->left : unlinked->right;
  link_to(tree, unlinked) = child;
  if (child != nullptr) {
    child->parent = unlinked->parent;
  }
  if (unlinked->colour == kBlack) {
    restore_after_erase(tree, child, unlinked->parent);
  }
  frame::release(unlinked);
}

Node* first(Node* root) {
  return outermost(root, &Node::left);
}
Node* next(Node* node) {
  return neighbour(node, &Node::right);
}
Node* last(Node* root) {
  return outermost(root, &Node::right);
}

SMStatus tree_insert(Node** tree, void* data, void* key, SMRedBlackTreeCompare compare) {
  if (tree == nullptr || data == nullptr || key == nullptr || compare == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const Place place = locate_by(*tree, key, compare);
  if (place.match != nullptr) {
    return SM_STATUS_ALREADY_EXISTS;
  }
  return insert_at(tree, place, data) ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
}

void* tree_replace(Node** tree, void* new_data, void* key, SMRedBlackTreeCompare compare) {
  if (tree == nullptr || new_data == nullptr || key == nullptr || compare == nullptr) {
    return nullptr;
  }
  Node* node = locate_by(*tree, key, compare).match;
  return node != nullptr ? std::exchange(node->data, new_data) : nullptr;
}

SMStatus tree_delete(Node** tree, void* key, SMRedBlackTreeCompare compare) {
  if (tree == nullptr || key == nullptr || compare == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  Node* node = locate_by(*tree, key, compare).match;
  if (node == nullptr) {
    return SM_STATUS_DATA_NOT_FOUND;
  }
  erase(tree, node);
  return SM_STATUS_SUCCESS;
}

void tree_delete_all(Node** tree, void* context, SMRedBlackTreeFreed freed) {
  if (tree == nullptr) {
    return;
  }
  erase_all(tree, [=](void* data) {
    if (freed != nullptr) {
      freed(context, data);
    }
  });
}

void* tree_walk(Node* root, void* context, SMRedBlackTreeVisit visit, uint32_t mode) {
  if (root == nullptr || context == nullptr || visit == nullptr) {
    return nullptr;
  }
  switch (mode) {
    case SM_RED_BLACK_TREE_WALK_ROOT:
      return visit(context, root->data) == 0 ? root->data : nullptr;
    case SM_RED_BLACK_TREE_WALK_ASCENDING:
      return walk_towards(first(root), &Node::right, context, visit);
    case SM_RED_BLACK_TREE_WALK_DESCENDING:
      return walk_towards(last(root), &Node::left, context, visit);
    case SM_RED_BLACK_TREE_WALK_SEARCH: {
      Node* match = locate_by(root, context, as_compare(visit)).match;
      return match != nullptr ? match->data : nullptr;
    }
    case SM_RED_BLACK_TREE_WALK_GUIDED:
      return walk_guided(root, context, visit);
    default:
      return nullptr;
  }
}

void tree_set_empty(Node** tree) {
  if (tree != nullptr) {
    *tree = nullptr;
  }
}

uint32_t tree_is_empty(const Node* root) {
  return root == nullptr ? 1 : 0;
}

}  // namespace kqsupt::containers
