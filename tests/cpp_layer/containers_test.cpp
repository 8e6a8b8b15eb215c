// Lists, the tree, IDs and digests.

#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt.hpp"

namespace {

using kqsupt::status;

template <class List>
typename List::entry number(int value) {
  auto made = List::entry::create(sizeof value);
  EXPECT_TRUE(made);
  std::memcpy(made->get()->data, &value, sizeof value);
  return *std::move(made);
}

template <class Entry>
int value_of(const Entry& entry) {
  int value = 0;
  std::memcpy(&value, entry.data, sizeof value);
  return value;
}

template <class List>
class Lists : public testing::Test {};
using BothLists = testing::Types<kqsupt::slist, kqsupt::dlist>;
TYPED_TEST_SUITE(Lists, BothLists);

TYPED_TEST(Lists, FreeTheirEntriesWithThem) {
  TypeParam list = *TypeParam::create();
  for (int i = 0; i < 3; ++i) {
    auto entry = number<TypeParam>(i);
    list.push_back(entry);
    EXPECT_FALSE(entry);
  }
  EXPECT_FALSE(list.empty());
  TypeParam moved = std::move(list);
  EXPECT_TRUE(list.empty());
  EXPECT_FALSE(moved.empty());
}

TYPED_TEST(Lists, GiveEntriesBackToTheirCaller) {
  TypeParam list = *TypeParam::create();
  for (int i = 0; i < 3; ++i) {
    auto entry = number<TypeParam>(i);
    list.push_front(entry);
  }
  EXPECT_EQ(value_of(*list.pop_front().get()), 2);
  EXPECT_EQ(value_of(*list.pop_back().get()), 0);
  EXPECT_EQ(value_of(*list.pop_back().get()), 1);
  EXPECT_FALSE(list.pop_front());
}

TYPED_TEST(Lists, KeepAnOrderAndRefuseEquals) {
  TypeParam list = *TypeParam::create();
  for (const int value : {5, 1, 3}) {
    auto entry = number<TypeParam>(value);
    EXPECT_TRUE(list.insert(entry, [value](const auto& other) { return value - value_of(other); }));
  }
  auto again = number<TypeParam>(3);
  EXPECT_EQ(list.insert(again, [](const auto& other) { return 3 - value_of(other); }).code(),
            status::already_exists);
  EXPECT_TRUE(again);
  const auto* const found = list.find([](const auto& entry) { return value_of(entry) == 3; });
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(value_of(*found), 3);
  EXPECT_EQ(list.find([](const auto& entry) { return value_of(entry) == 4; }), nullptr);
  for (const int value : {1, 3, 5}) {
    EXPECT_EQ(value_of(*list.pop_front().get()), value);
  }
}

TYPED_TEST(Lists, HaveNoEntriesOf4GiB) {
  EXPECT_FALSE(TypeParam::entry::create(std::numeric_limits<size_t>::max()));
}

TYPED_TEST(Lists, OfNothingLeaveTheEntryToItsCaller) {
  TypeParam list;
  auto entry = number<TypeParam>(1);
  list.push_back(entry);
  list.push_front(entry);
  EXPECT_TRUE(entry);
}

struct Fan {
  int slot;
  std::string name;
};
int by_slot(int slot, const Fan& fan) {
  return slot - fan.slot;
}

TEST(Tree, FindsAndOrdersItems) {
  Fan fans[] = {{3, "c"}, {1, "a"}, {2, "b"}};
  kqsupt::tree<Fan> tree;
  EXPECT_TRUE(tree.empty());
  for (Fan& fan : fans) {
    ASSERT_TRUE(tree.insert(fan, fan.slot, by_slot));
  }
  EXPECT_EQ(tree.insert(fans[0], 3, by_slot).code(), status::already_exists);
  EXPECT_EQ(tree.find(2, by_slot), &fans[2]);
  EXPECT_EQ(tree.find(4, by_slot), nullptr);
  std::string names;
  tree.for_each([&](const Fan& fan) { names += fan.name; });
  EXPECT_EQ(names, "abc");
}

TEST(Tree, MovesItsNodesAndFreesThemOnce) {
  Fan fans[] = {{3, "c"}, {1, "a"}};
  kqsupt::tree<Fan> tree;
  for (Fan& fan : fans) {
    ASSERT_TRUE(tree.insert(fan, fan.slot, by_slot));
  }
  kqsupt::tree<Fan> moved = std::move(tree);
  EXPECT_TRUE(tree.empty());
  tree = std::move(moved);
  EXPECT_EQ(tree.find(1, by_slot), &fans[1]);
  Fan other{1, "other"};
  EXPECT_EQ(tree.replace(other, 1, by_slot), &fans[1]);
  EXPECT_TRUE(tree.erase(3, by_slot));
  EXPECT_EQ(tree.erase(3, by_slot).code(), status::data_not_found);
  SMRedBlackTree root = tree.release();
  EXPECT_TRUE(tree.empty());
  SMRedBlackTreeDelete(&root, nullptr, nullptr);
}

TEST(Tree, FreesItsNodesWhenAnotherIsMovedToIt) {
  Fan fans[] = {{3, "c"}, {1, "a"}};
  kqsupt::tree<Fan> tree;
  ASSERT_TRUE(tree.insert(fans[0], 3, by_slot));
  kqsupt::tree<Fan> other;
  ASSERT_TRUE(other.insert(fans[1], 1, by_slot));
  tree = std::move(other);
  EXPECT_EQ(tree.find(3, by_slot), nullptr);
  EXPECT_EQ(tree.find(1, by_slot), &fans[1]);
  EXPECT_TRUE(other.empty());
}

TEST(HashIds, AreOfATableThatOnlyMoves) {
  EXPECT_FALSE(std::is_copy_constructible_v<kqsupt::hash_id_table>);
  EXPECT_FALSE(std::is_copy_assignable_v<kqsupt::hash_id_table>);
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<kqsupt::hash_id_table>);
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<kqsupt::hash_id_table>);
}

TEST(HashIds, AreInUseWhileTheyAreHeld) {
  auto table = kqsupt::hash_id_table::create(100);
  ASSERT_TRUE(table);
  {
    auto first = table->acquire();
    auto second = table->acquire();
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->get(), 1U);
    EXPECT_EQ(second->get(), 2U);
    EXPECT_EQ(table->acquire_by_id(2).code(), status::already_exists);
    kqsupt::hash_id moved = *std::move(second);
    EXPECT_TRUE(table->in_use(2));
    *first = std::move(moved);
    EXPECT_FALSE(table->in_use(1));
    EXPECT_EQ(table->smallest(), 2U);
  }
  EXPECT_EQ(table->largest(), 0U);
  EXPECT_EQ(table->acquire_by_id(0).code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::hash_id_table::create(0).code(), status::invalid_parameter);
}

TEST(HashIds, StayGoodWhenTheTableMoves) {
  auto table = kqsupt::hash_id_table::create(31);
  auto id = table->acquire();
  const kqsupt::hash_id_table moved = *std::move(table);
  EXPECT_TRUE(moved.in_use(1));
  id->reset();
  EXPECT_FALSE(moved.in_use(1));
}

TEST(Digests, AreThoseOfTheLibrary) {
  EXPECT_EQ(kqsupt::crc32("123456789").value_or(0), 0xCBF43926U);
  kqsupt::md5 first;
  ASSERT_TRUE(first.add("fan"));
  kqsupt::md5 second;
  ASSERT_TRUE(second.add("f"));
  ASSERT_TRUE(second.add("an"));
  const std::string digest = first.finish();
  EXPECT_EQ(digest.size(), 16U);
  EXPECT_EQ(digest, second.finish());
  ASSERT_TRUE(first.add("fan"));
  EXPECT_EQ(first.finish(), digest);
}

TEST(Digests, MoveWithTheirMessage) {
  EXPECT_FALSE(std::is_copy_constructible_v<kqsupt::md5>);
  kqsupt::md5 whole;
  ASSERT_TRUE(whole.add("fan"));
  const std::string digest = whole.finish();
  kqsupt::md5 first;
  ASSERT_TRUE(first.add("f"));
  kqsupt::md5 second(std::move(first));
  ASSERT_TRUE(second.add("an"));
  ASSERT_TRUE(first.add("fan"));
  EXPECT_EQ(first.finish(), digest);
  ASSERT_TRUE(first.add("disk"));
  first = std::move(second);
  EXPECT_EQ(first.finish(), digest);
  ASSERT_TRUE(second.add("fan"));
  EXPECT_EQ(second.finish(), digest);
}

TEST(Base64, TakesAnyBytes) {
  EXPECT_EQ(kqsupt::base64_encode("fan").value_or(""), "ZmFu");
  EXPECT_EQ(kqsupt::base64_encode(std::string_view("f\0", 2)).value_or(""), "ZgA=");
  EXPECT_EQ(kqsupt::base64_encode("").value_or("x"), "");
}

TEST(Base64, GivesBackAnyBytes) {
  for (const std::string& bytes : {std::string(), std::string("f"), std::string("f\0", 2),
                                   std::string("fan"), std::string("\xFF\0\xFE\0", 4)}) {
    EXPECT_EQ(kqsupt::base64_decode(*kqsupt::base64_encode(bytes)).value_or("(failed)"), bytes);
  }
  EXPECT_EQ(kqsupt::base64_decode("ZmFuZm").value_or(""), "fan");
  EXPECT_EQ(kqsupt::base64_decode("Z===").value_or("x"), "");
}

}  // namespace
