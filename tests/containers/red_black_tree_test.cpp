// The tree as callers see it, and its shape as the balance demands it.

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/containers.h"

// A node as the tree lays it out, to look at the shape.
struct SMRedBlackTreeNode {
  SMRedBlackTreeNode* left;
  SMRedBlackTreeNode* right;
  SMRedBlackTreeNode* parent;
  void* data;
  uint32_t colour;
};

namespace {

struct Item {
  int key;
  int version = 0;
};

int32_t compare(void* key, void* data, uint32_t reserved) {
  EXPECT_EQ(reserved, 0U);
  const int a = *static_cast<int*>(key);
  const int b = static_cast<Item*>(data)->key;
  return a < b ? -1 : a > b;
}

// The number of black nodes on every path below `node`, with a failure for every broken rule.
int black_height(const SMRedBlackTreeNode* node, const SMRedBlackTreeNode* parent) {
  if (node == nullptr) {
    return 0;
  }
  EXPECT_EQ(node->parent, parent);
  if (node->colour == 1 && parent != nullptr) {
    EXPECT_EQ(parent->colour, 0U) << "a red node below a red one";
  }
  const int left = black_height(node->left, node);
  const int right = black_height(node->right, node);
  EXPECT_EQ(left, right) << "unequal black heights";
  return left + (node->colour == 0 ? 1 : 0);
}

class RedBlackTree : public testing::Test {
 protected:
  RedBlackTree() { SMRedBlackTreeAttach(&tree_); }
  ~RedBlackTree() override { SMRedBlackTreeDelete(&tree_, nullptr, nullptr); }

  SMStatus insert(Item& item) {
    return SMRedBlackTreeDataInsert(&tree_, &item, &item.key, compare);
  }
  void fill(int count) {
    items_.resize(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
      items_[static_cast<size_t>(i)].key = i * 10;
      ASSERT_EQ(insert(items_[static_cast<size_t>(i)]), SM_STATUS_SUCCESS);
    }
  }
  Item* find(int key) {
    const auto search =
        reinterpret_cast<SMRedBlackTreeVisit>(reinterpret_cast<void (*)()>(compare));
    return static_cast<Item*>(
        SMRedBlackTreeDataWalk(tree_, &key, search, SM_RED_BLACK_TREE_WALK_SEARCH));
  }
  void expect_balanced() {
    black_height(tree_, nullptr);
    if (tree_ != nullptr) {
      EXPECT_EQ(tree_->colour, 0U) << "a red root";
    }
  }

  SMRedBlackTree tree_;
  std::vector<Item> items_;
};

// A visit that notes the keys and stops at one of them.
struct Trace {
  std::vector<int> keys;
  int stop_at = -1;
  int32_t otherwise = 1;
};
int32_t note(void* context, void* data) {
  auto* trace = static_cast<Trace*>(context);
  trace->keys.push_back(static_cast<Item*>(data)->key);
  return trace->keys.back() == trace->stop_at ? 0 : trace->otherwise;
}

TEST_F(RedBlackTree, AttachedAndNeverFilledIsEmpty) {
  EXPECT_EQ(SMRedBlackTreeIsEmpty(tree_), 1U);
}

TEST_F(RedBlackTree, WithAnItemIsNotEmpty) {
  fill(1);
  EXPECT_EQ(SMRedBlackTreeIsEmpty(tree_), 0U);
}

TEST_F(RedBlackTree, AttachForgetsWhatTheCellHeld) {
  auto* garbage = reinterpret_cast<SMRedBlackTreeNode*>(&items_);
  SMRedBlackTreeAttach(&garbage);
  EXPECT_EQ(garbage, nullptr);
}

TEST_F(RedBlackTree, DetachForgetsTheNodesWithoutFreeingThem) {
  fill(3);
  SMRedBlackTree other = tree_;
  SMRedBlackTreeDetach(&tree_);
  EXPECT_EQ(SMRedBlackTreeIsEmpty(tree_), 1U);
  tree_ = other;
  EXPECT_EQ(find(20), &items_[2]);
}

TEST_F(RedBlackTree, CellFunctionsIgnoreNull) {
  SMRedBlackTreeAttach(nullptr);
  SMRedBlackTreeDetach(nullptr);
  SMRedBlackTreeDelete(nullptr, nullptr, nullptr);
}

TEST_F(RedBlackTree, InsertRefusesNullForEachArgument) {
  Item item{1};
  EXPECT_EQ(SMRedBlackTreeDataInsert(nullptr, &item, &item.key, compare),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMRedBlackTreeDataInsert(&tree_, nullptr, &item.key, compare),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMRedBlackTreeDataInsert(&tree_, &item, nullptr, compare), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMRedBlackTreeDataInsert(&tree_, &item, &item.key, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMRedBlackTreeIsEmpty(tree_), 1U);
}

TEST_F(RedBlackTree, EqualKeyIsRefusedAndTheFirstItemStays) {
  Item first{5, 1};
  Item second{5, 2};
  EXPECT_EQ(insert(first), SM_STATUS_SUCCESS);
  EXPECT_EQ(insert(second), SM_STATUS_ALREADY_EXISTS);
  EXPECT_EQ(find(5), &first);
}

TEST_F(RedBlackTree, ReplaceReturnsTheOldItemAndKeepsTheShape) {
  fill(7);
  Item item{30, 2};
  const SMRedBlackTreeNode* root = tree_;
  EXPECT_EQ(SMRedBlackTreeDataReplace(&tree_, &item, &item.key, compare), &items_[3]);
  EXPECT_EQ(find(30), &item);
  EXPECT_EQ(tree_, root);
  expect_balanced();
}

TEST_F(RedBlackTree, ReplaceOfAnAbsentKeyChangesNothing) {
  fill(3);
  Item item{15};
  EXPECT_EQ(SMRedBlackTreeDataReplace(&tree_, &item, &item.key, compare), nullptr);
  EXPECT_EQ(find(15), nullptr);
}

TEST_F(RedBlackTree, ReplaceRefusesNullForEachArgument) {
  fill(1);
  Item item{0};
  EXPECT_EQ(SMRedBlackTreeDataReplace(nullptr, &item, &item.key, compare), nullptr);
  EXPECT_EQ(SMRedBlackTreeDataReplace(&tree_, nullptr, &item.key, compare), nullptr);
  EXPECT_EQ(SMRedBlackTreeDataReplace(&tree_, &item, nullptr, compare), nullptr);
  EXPECT_EQ(SMRedBlackTreeDataReplace(&tree_, &item, &item.key, nullptr), nullptr);
  EXPECT_EQ(find(0), &items_[0]);
}

TEST_F(RedBlackTree, DeleteRefusesNullForEachArgument) {
  fill(1);
  int key = 0;
  EXPECT_EQ(SMRedBlackTreeDataDelete(nullptr, &key, compare), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMRedBlackTreeDataDelete(&tree_, nullptr, compare), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMRedBlackTreeDataDelete(&tree_, &key, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(find(0), &items_[0]);
}

TEST_F(RedBlackTree, DeleteOfAnAbsentKeyIsDataNotFound) {
  fill(3);
  int key = 15;
  EXPECT_EQ(SMRedBlackTreeDataDelete(&tree_, &key, compare), SM_STATUS_DATA_NOT_FOUND);
  SMRedBlackTree empty = nullptr;
  EXPECT_EQ(SMRedBlackTreeDataDelete(&empty, &key, compare), SM_STATUS_DATA_NOT_FOUND);
}

TEST_F(RedBlackTree, DeletingTheRootOfThreeLeavesTwoBelowABlackRoot) {
  fill(3);
  int root = static_cast<Item*>(tree_->data)->key;
  EXPECT_EQ(SMRedBlackTreeDataDelete(&tree_, &root, compare), SM_STATUS_SUCCESS);
  expect_balanced();
  Trace trace;
  SMRedBlackTreeDataWalk(tree_, &trace, note, SM_RED_BLACK_TREE_WALK_ASCENDING);
  EXPECT_EQ(trace.keys, (std::vector{0, 20}));
}

TEST_F(RedBlackTree, DeleteAllTellsOfEachItemRightBeforeLeftBeforeNode) {
  fill(3);  // 10 above 0 and 20
  std::vector<int> freed;
  SMRedBlackTreeDelete(&tree_, &freed, [](void* context, void* data) {
    static_cast<std::vector<int>*>(context)->push_back(static_cast<Item*>(data)->key);
  });
  EXPECT_EQ(freed, (std::vector{20, 0, 10}));
  EXPECT_EQ(SMRedBlackTreeIsEmpty(tree_), 1U);
}

TEST_F(RedBlackTree, DeleteAllIsRightFirstAtEveryNode) {
  fill(7);  // 10 above 0 and 30, 30 above 20 and 50, 50 above 40 and 60
  std::vector<int> freed;
  SMRedBlackTreeDelete(&tree_, &freed, [](void* context, void* data) {
    static_cast<std::vector<int>*>(context)->push_back(static_cast<Item*>(data)->key);
  });
  EXPECT_EQ(freed, (std::vector{60, 40, 50, 20, 30, 0, 10}));
}

TEST_F(RedBlackTree, DeletingANodeOfTwoChildrenPutsItsSuccessorThere) {
  fill(7);
  int root = 10;
  EXPECT_EQ(SMRedBlackTreeDataDelete(&tree_, &root, compare), SM_STATUS_SUCCESS);
  EXPECT_EQ(static_cast<Item*>(tree_->data)->key, 20);
  expect_balanced();
}

TEST_F(RedBlackTree, DeleteAllNeedsNoCallback) {
  fill(100);
  SMRedBlackTreeDelete(&tree_, nullptr, nullptr);
  EXPECT_EQ(tree_, nullptr);
}

TEST_F(RedBlackTree, WalkRefusesNullAndUnknownModesWithoutACall) {
  fill(3);
  Trace trace;
  EXPECT_EQ(SMRedBlackTreeDataWalk(nullptr, &trace, note, 1), nullptr);
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &trace, nullptr, 1), nullptr);
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &trace, note, 5), nullptr);
  EXPECT_TRUE(trace.keys.empty());
  const auto fail = [](void*, void*) {
    ADD_FAILURE() << "called";
    return 0;
  };
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, nullptr, fail, 1), nullptr);
}

TEST_F(RedBlackTree, WalkOfTheRootVisitsItAlone) {
  fill(3);
  Trace trace;
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &trace, note, SM_RED_BLACK_TREE_WALK_ROOT), nullptr);
  EXPECT_EQ(trace.keys, (std::vector{10}));
  trace.stop_at = 10;
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &trace, note, SM_RED_BLACK_TREE_WALK_ROOT), &items_[1]);
}

TEST_F(RedBlackTree, AscendingWalkVisitsEveryItemInOrder) {
  fill(50);
  Trace trace;
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &trace, note, SM_RED_BLACK_TREE_WALK_ASCENDING), nullptr);
  EXPECT_EQ(trace.keys.size(), 50U);
  EXPECT_TRUE(std::is_sorted(trace.keys.begin(), trace.keys.end()));
}

TEST_F(RedBlackTree, DescendingWalkVisitsEveryItemInReverse) {
  fill(50);
  Trace trace;
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &trace, note, SM_RED_BLACK_TREE_WALK_DESCENDING),
            nullptr);
  EXPECT_EQ(trace.keys.size(), 50U);
  EXPECT_TRUE(std::is_sorted(trace.keys.rbegin(), trace.keys.rend()));
}

TEST_F(RedBlackTree, OrderedWalksStopWhereTheCallbackReturnsZero) {
  fill(5);
  Trace up{{}, 20};
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &up, note, SM_RED_BLACK_TREE_WALK_ASCENDING), &items_[2]);
  EXPECT_EQ(up.keys, (std::vector{0, 10, 20}));
  Trace down{{}, 20};
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &down, note, SM_RED_BLACK_TREE_WALK_DESCENDING),
            &items_[2]);
  EXPECT_EQ(down.keys, (std::vector{40, 30, 20}));
}

TEST_F(RedBlackTree, SearchFindsByTheComparisonAlone) {
  fill(100);
  EXPECT_EQ(find(990), &items_[99]);
  EXPECT_EQ(find(0), &items_[0]);
  EXPECT_EQ(find(995), nullptr);
  EXPECT_EQ(find(-1), nullptr);
}

TEST_F(RedBlackTree, GuidedWalkTakesTheSideOfTheSignFirst) {
  fill(7);  // 10 above 0 and 30, 30 above 20 and 50, 50 above 40 and 60
  Trace left{{}, -1, -1};
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &left, note, SM_RED_BLACK_TREE_WALK_GUIDED), nullptr);
  EXPECT_EQ(left.keys, (std::vector{10, 0, 30, 20, 50, 40, 60}));
  Trace right{{}, -1, 1};
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &right, note, SM_RED_BLACK_TREE_WALK_GUIDED), nullptr);
  EXPECT_EQ(right.keys, (std::vector{10, 30, 50, 60, 40, 20, 0}));
}

TEST_F(RedBlackTree, GuidedWalkStopsInEitherSubtree) {
  fill(7);
  Trace first_side{{}, 0, -1};
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &first_side, note, SM_RED_BLACK_TREE_WALK_GUIDED),
            &items_[0]);
  Trace other_side{{}, 60, -1};
  EXPECT_EQ(SMRedBlackTreeDataWalk(tree_, &other_side, note, SM_RED_BLACK_TREE_WALK_GUIDED),
            &items_[6]);
}

TEST_F(RedBlackTree, StaysBalancedAndAgreesWithAMapOverRandomOperations) {
  std::mt19937 random(20);
  std::map<int, Item*> model;
  items_.resize(400);
  for (int i = 0; i < 400; ++i) {
    items_[static_cast<size_t>(i)].key = i;
  }
  for (int step = 0; step < 6000; ++step) {
    Item& item = items_[random() % items_.size()];
    // Phases of growth and of decline, so that the tree is emptied and filled several times.
    const bool growing = (step / 1000) % 2 == 0;
    if (random() % 4 == 0 ? !growing : growing) {
      const bool added = model.emplace(item.key, &item).second;
      EXPECT_EQ(insert(item), added ? SM_STATUS_SUCCESS : SM_STATUS_ALREADY_EXISTS);
    } else {
      const bool erased = model.erase(item.key) != 0;
      EXPECT_EQ(SMRedBlackTreeDataDelete(&tree_, &item.key, compare),
                erased ? SM_STATUS_SUCCESS : SM_STATUS_DATA_NOT_FOUND);
    }
    if (step % 50 == 0) {
      expect_balanced();
      Trace trace;
      SMRedBlackTreeDataWalk(tree_, &trace, note, SM_RED_BLACK_TREE_WALK_ASCENDING);
      ASSERT_EQ(trace.keys.size(), model.size());
      ASSERT_TRUE(std::equal(model.begin(), model.end(), trace.keys.begin(),
                             [](const auto& entry, int key) { return entry.first == key; }));
    }
  }
}

TEST_F(RedBlackTree, DeletesInEveryOrderOfSixItemsStayBalanced) {
  std::vector<int> order{0, 10, 20, 30, 40, 50};
  do {
    fill(6);
    for (int& key : order) {
      ASSERT_EQ(SMRedBlackTreeDataDelete(&tree_, &key, compare), SM_STATUS_SUCCESS);
      expect_balanced();
    }
    ASSERT_EQ(tree_, nullptr);
  } while (std::next_permutation(order.begin(), order.end()));
}

}  // namespace
