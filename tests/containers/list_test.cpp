// Both families of lists, by one suite: what they do alike is told once.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/containers.h"

namespace {

// How the suite calls a family. `erase` unlinks an entry, given the one before it.
struct Singly {
  using List = SMSLList;
  using Entry = SMSLListEntry;
  static constexpr bool kHasPrevious = false;
  static constexpr auto alloc = SMSLListAlloc;
  static constexpr auto init = SMSLListInitNoAlloc;
  static constexpr auto free = SMSLListFree;
  static constexpr auto entry_alloc = SMSLListEntryAlloc;
  static constexpr auto entry_init = SMSLListEntryInitNoAlloc;
  static constexpr auto entry_free = SMSLListEntryFree;
  static constexpr auto push_head = SMSLListInsertEntryAtHead;
  static constexpr auto push_tail = SMSLListInsertEntryAtTail;
  static constexpr auto insert = SMSLListInsertEntry;
  static constexpr auto walk = SMSLListWalkAtHead;
  static constexpr auto replace = SMSLListReplaceEntry;
  static constexpr auto pop_head = SMSLListRemoveEntryAtHead;
  static constexpr auto pop_tail = SMSLListRemoveEntryAtTail;
  static constexpr auto is_empty = SMSLListIsEmpty;
  static void erase(List* list, Entry* previous, Entry* entry) {
    SMSLListDeleteEntry(list, previous, entry);
  }
};

struct Doubly {
  using List = SMDLList;
  using Entry = SMDLListEntry;
  static constexpr bool kHasPrevious = true;
  static constexpr auto alloc = SMDLListAlloc;
  static constexpr auto init = SMDLListInitNoAlloc;
  static constexpr auto free = SMDLListFree;
  static constexpr auto entry_alloc = SMDLListEntryAlloc;
  static constexpr auto entry_init = SMDLListEntryInitNoAlloc;
  static constexpr auto entry_free = SMDLListEntryFree;
  static constexpr auto push_head = SMDLListInsertEntryAtHead;
  static constexpr auto push_tail = SMDLListInsertEntryAtTail;
  static constexpr auto insert = SMDLListInsertEntry;
  static constexpr auto walk = SMDLListWalkAtHead;
  static constexpr auto replace = SMDLListReplaceEntry;
  static constexpr auto pop_head = SMDLListRemoveEntryAtHead;
  static constexpr auto pop_tail = SMDLListRemoveEntryAtTail;
  static constexpr auto is_empty = SMDLListIsEmpty;
  static void erase(List* list, Entry* previous, Entry* entry) {
    (void)previous;
    SMDLListDeleteEntry(list, entry);
  }
};

template <class Entry>
int key_of(const Entry* entry) {
  return *static_cast<const int*>(entry->data);
}

template <class Entry>
int32_t compare(void* key, Entry* entry, uint32_t reserved) {
  EXPECT_EQ(reserved, 0U);
  return *static_cast<int*>(key) - key_of(entry);
}

// Notes the keys that a walk comes by, and stops it at one of them.
struct Trace {
  std::vector<int> keys;
  int stop_at = -1;
};
template <class Entry>
int32_t note(void* context, Entry* entry, uint32_t reserved) {
  EXPECT_EQ(reserved, 0U);
  auto* trace = static_cast<Trace*>(context);
  trace->keys.push_back(key_of(entry));
  return trace->keys.back() == trace->stop_at ? 0 : -1;
}

template <class Family>
class List : public testing::Test {
 protected:
  using Links = typename Family::Entry;

  List() { Family::init(&list_); }
  ~List() override {
    for (Links* entry : made_) {
      Family::entry_free(entry);
    }
  }

  // An entry with a key as its payload, on no list.
  Links* make(int key) {
    Links* entry = Family::entry_alloc(sizeof key);
    *static_cast<int*>(entry->data) = key;
    made_.push_back(entry);
    return entry;
  }
  void fill(const std::vector<int>& keys) {
    for (const int key : keys) {
      Family::push_tail(&list_, make(key));
    }
  }
  SMStatus insert(int key) { return Family::insert(&list_, make(key), &key, compare<Links>); }
  Links* at(int place) {
    Links* entry = list_.head;
    while (place-- > 0) {
      entry = entry->next;
    }
    return entry;
  }

  // All links in both directions, the head and the tail tell of these keys.
  void expect_keys(const std::vector<int>& keys) {
    std::vector<int> found;
    Links* last = nullptr;
    for (Links* entry = list_.head; entry != nullptr; entry = entry->next) {
      ASSERT_LE(found.size(), keys.size()) << "entries without end";
      found.push_back(key_of(entry));
      if constexpr (Family::kHasPrevious) {
        EXPECT_EQ(entry->previous, last);
      }
      last = entry;
    }
    EXPECT_EQ(list_.tail, last);
    EXPECT_EQ(found, keys);
    EXPECT_EQ(Family::is_empty(&list_), keys.empty() ? 1U : 0U);
  }

  typename Family::List list_;
  std::vector<Links*> made_;
};

struct FamilyNames {
  template <class Family>
  static std::string GetName(int) {
    return Family::kHasPrevious ? "Doubly" : "Singly";
  }
};
using Families = testing::Types<Singly, Doubly>;
TYPED_TEST_SUITE(List, Families, FamilyNames);

TYPED_TEST(List, AllocatedIsEmpty) {
  auto* list = TypeParam::alloc();
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->head, nullptr);
  EXPECT_EQ(list->tail, nullptr);
  EXPECT_EQ(TypeParam::is_empty(list), 1U);
  TypeParam::free(list);
}

TYPED_TEST(List, InitialisedIsEmptyWhateverItHeld) {
  std::memset(&this->list_, 0x55, sizeof this->list_);
  TypeParam::init(&this->list_);
  this->expect_keys({});
}

TYPED_TEST(List, NullIsEmpty) {
  EXPECT_EQ(TypeParam::is_empty(nullptr), 1U);
}

TYPED_TEST(List, WithAnEntryIsNotEmpty) {
  this->fill({1});
  EXPECT_EQ(TypeParam::is_empty(&this->list_), 0U);
}

TYPED_TEST(List, FreedLeavesItsEntriesAllocated) {
  auto* list = TypeParam::alloc();
  auto* first = this->make(1);
  auto* second = this->make(2);
  TypeParam::push_tail(list, first);
  TypeParam::push_tail(list, second);
  TypeParam::free(list);
  EXPECT_EQ(first->next, second);
  EXPECT_EQ(key_of(second), 2);
}

TYPED_TEST(List, FreeIgnoresNull) {
  TypeParam::free(nullptr);
  TypeParam::entry_free(nullptr);
}

TYPED_TEST(List, BlocksAreThoseOfTheHeap) {
  SMFreeMem(TypeParam::alloc());
  SMFreeMem(TypeParam::entry_alloc(3));
}

TYPED_TEST(List, EntryBeginsWithItsLinks) {
  using Entry = typename TypeParam::Entry;
  EXPECT_EQ(offsetof(Entry, next), 0U);
  EXPECT_EQ(offsetof(Entry, data), (TypeParam::kHasPrevious ? 2U : 1U) * sizeof(void*));
  EXPECT_EQ(sizeof(Entry), (TypeParam::kHasPrevious ? 3U : 2U) * sizeof(void*));
  if constexpr (TypeParam::kHasPrevious) {
    EXPECT_EQ(offsetof(Entry, previous), sizeof(void*));
  }
  using Head = typename TypeParam::List;
  EXPECT_EQ(offsetof(Head, head), 0U);
  EXPECT_EQ(offsetof(Head, tail), sizeof(void*));
}

TYPED_TEST(List, EntryOfNoPayloadHasNoData) {
  auto* entry = TypeParam::entry_alloc(0);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->data, nullptr);
  EXPECT_EQ(entry->next, nullptr);
  if constexpr (TypeParam::kHasPrevious) {
    EXPECT_EQ(entry->previous, nullptr);
  }
  TypeParam::entry_free(entry);
}

TYPED_TEST(List, PayloadFollowsTheEntryInItsBlock) {
  for (const uint32_t size : {1U, 16U, 1000U}) {
    auto* entry = TypeParam::entry_alloc(size);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->data, entry + 1);
    EXPECT_EQ(entry->next, nullptr);
    if constexpr (TypeParam::kHasPrevious) {
      EXPECT_EQ(entry->previous, nullptr);
    }
    std::memset(entry->data, 0x55, size);
    TypeParam::entry_free(entry);
  }
}

TYPED_TEST(List, PayloadThatNoAddressSpaceHoldsIsRefused) {
  if constexpr (sizeof(size_t) == sizeof(uint32_t)) {  // a wider one holds any payload
    for (uint32_t missing = 1; missing <= sizeof(typename TypeParam::Entry) + 1; ++missing) {
      EXPECT_EQ(TypeParam::entry_alloc(0U - missing), nullptr);
    }
  }
}

TYPED_TEST(List, InitialisedEntryKeepsItsData) {
  int payload = 0;
  typename TypeParam::Entry entry;
  std::memset(&entry, 0x55, sizeof entry);
  entry.data = &payload;
  TypeParam::entry_init(&entry);
  EXPECT_EQ(entry.next, nullptr);
  if constexpr (TypeParam::kHasPrevious) {
    EXPECT_EQ(entry.previous, nullptr);
  }
  EXPECT_EQ(entry.data, &payload);
}

TYPED_TEST(List, EntryMayBeAPartOfTheCallersStructure) {
  struct Fan {
    int speed = 4200;
    typename TypeParam::Entry entry;
  } fan;
  fan.entry.data = &fan.speed;
  TypeParam::entry_init(&fan.entry);
  TypeParam::push_tail(&this->list_, &fan.entry);
  this->expect_keys({4200});
  EXPECT_EQ(TypeParam::pop_head(&this->list_), &fan.entry);
}

TYPED_TEST(List, OperationsWithoutAResultIgnoreNull) {
  this->fill({1, 2});
  auto* entry = this->make(3);
  TypeParam::init(nullptr);
  TypeParam::entry_init(nullptr);
  TypeParam::push_head(nullptr, entry);
  TypeParam::push_head(&this->list_, nullptr);
  TypeParam::push_tail(nullptr, entry);
  TypeParam::push_tail(&this->list_, nullptr);
  TypeParam::erase(nullptr, nullptr, this->list_.head);
  TypeParam::erase(&this->list_, nullptr, nullptr);
  TypeParam::erase(&this->list_, this->list_.head, nullptr);
  this->expect_keys({1, 2});
  EXPECT_EQ(entry->next, nullptr);
}

TYPED_TEST(List, InsertedAtTheHeadComesFirst) {
  for (const int key : {3, 2, 1}) {
    TypeParam::push_head(&this->list_, this->make(key));
  }
  this->expect_keys({1, 2, 3});
}

TYPED_TEST(List, InsertedAtTheTailComesLast) {
  this->fill({1, 2, 3});
  this->expect_keys({1, 2, 3});
}

TYPED_TEST(List, InsertedAtEitherEndOfAnEmptyListIsBothEnds) {
  auto* entry = this->make(1);
  TypeParam::push_head(&this->list_, entry);
  EXPECT_EQ(this->list_.head, entry);
  EXPECT_EQ(this->list_.tail, entry);
  TypeParam::init(&this->list_);
  TypeParam::push_tail(&this->list_, entry);
  EXPECT_EQ(this->list_.head, entry);
  EXPECT_EQ(this->list_.tail, entry);
}

TYPED_TEST(List, InsertedEntryMayHaveOldLinks) {
  auto* at_tail = this->make(2);
  auto* at_head = this->make(1);
  for (auto* entry : {at_tail, at_head}) {
    entry->next = entry;
    if constexpr (TypeParam::kHasPrevious) {
      entry->previous = entry;
    }
  }
  TypeParam::push_tail(&this->list_, at_tail);
  TypeParam::push_head(&this->list_, at_head);
  this->expect_keys({1, 2});
}

TYPED_TEST(List, OrderedInsertKeepsAscendingOrder) {
  EXPECT_EQ(this->insert(3), SM_STATUS_SUCCESS);
  EXPECT_EQ(this->insert(1), SM_STATUS_SUCCESS);
  EXPECT_EQ(this->insert(2), SM_STATUS_SUCCESS);
  EXPECT_EQ(this->insert(4), SM_STATUS_SUCCESS);
  this->expect_keys({1, 2, 3, 4});
}

TYPED_TEST(List, OrderedInsertOfAnEqualKeyChangesNothing) {
  this->fill({1, 2, 3});
  for (const int key : {1, 2, 3}) {
    EXPECT_EQ(this->insert(key), SM_STATUS_ALREADY_EXISTS);
    EXPECT_EQ(this->made_.back()->next, nullptr);
  }
  this->expect_keys({1, 2, 3});
}

TYPED_TEST(List, OrderedInsertStopsAtTheFirstEntryThatComesAfter) {
  this->fill({1, 5, 3});
  EXPECT_EQ(this->insert(3), SM_STATUS_SUCCESS);
  this->expect_keys({1, 3, 5, 3});
}

TYPED_TEST(List, OrderedInsertRefusesNullForEachArgument) {
  using Entry = typename TypeParam::Entry;
  this->fill({1});
  int key = 2;
  Entry* entry = this->make(key);
  auto* list = &this->list_;
  EXPECT_EQ(TypeParam::insert(nullptr, entry, &key, compare<Entry>), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(TypeParam::insert(list, nullptr, &key, compare<Entry>), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(TypeParam::insert(list, entry, nullptr, compare<Entry>), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(TypeParam::insert(list, entry, &key, nullptr), SM_STATUS_INVALID_PARAMETER);
  this->expect_keys({1});
}

TYPED_TEST(List, WalkStopsAtTheFirstEntryThatIsTheOne) {
  using Entry = typename TypeParam::Entry;
  this->fill({1, 2, 3, 2});
  Trace trace{{}, 2};
  EXPECT_EQ(TypeParam::walk(&this->list_, &trace, note<Entry>), this->at(1));
  EXPECT_EQ(trace.keys, (std::vector{1, 2}));
}

TYPED_TEST(List, WalkThatFindsNothingComesByAll) {
  using Entry = typename TypeParam::Entry;
  this->fill({3, 1, 2});
  Trace trace;
  EXPECT_EQ(TypeParam::walk(&this->list_, &trace, note<Entry>), nullptr);
  EXPECT_EQ(trace.keys, (std::vector{3, 1, 2}));
  this->expect_keys({3, 1, 2});
}

TYPED_TEST(List, WalkOfAnEmptyListCallsNothing) {
  Trace trace;
  EXPECT_EQ(TypeParam::walk(&this->list_, &trace, note<typename TypeParam::Entry>), nullptr);
  EXPECT_TRUE(trace.keys.empty());
}

TYPED_TEST(List, WalkRefusesNullForEachArgument) {
  using Entry = typename TypeParam::Entry;
  this->fill({1});
  Trace trace{{}, 1};
  EXPECT_EQ(TypeParam::walk(nullptr, &trace, note<Entry>), nullptr);
  EXPECT_EQ(TypeParam::walk(&this->list_, nullptr, note<Entry>), nullptr);
  EXPECT_EQ(TypeParam::walk(&this->list_, &trace, nullptr), nullptr);
  EXPECT_TRUE(trace.keys.empty());
}

TYPED_TEST(List, ReplaceWorksAtEveryPlace) {
  using Entry = typename TypeParam::Entry;
  for (int place = 0; place < 3; ++place) {
    TypeParam::init(&this->list_);
    this->fill({0, 1, 2});
    std::vector<int> expected{0, 1, 2};
    expected[static_cast<size_t>(place)] = 10;
    Entry* replaced = this->at(place);
    Entry* entry = this->make(10);
    EXPECT_EQ(TypeParam::replace(&this->list_, entry, &place, compare<Entry>), replaced);
    this->expect_keys(expected);
  }
}

TYPED_TEST(List, ReplaceOfTheOnlyEntryChangesBothEnds) {
  using Entry = typename TypeParam::Entry;
  this->fill({1});
  int key = 1;
  Entry* entry = this->make(2);
  EXPECT_EQ(TypeParam::replace(&this->list_, entry, &key, compare<Entry>), this->made_[0]);
  this->expect_keys({2});
}

TYPED_TEST(List, ReplacedEntryKeepsItsLinks) {
  using Entry = typename TypeParam::Entry;
  this->fill({1, 2, 3});
  int key = 2;
  Entry* replaced = TypeParam::replace(&this->list_, this->make(4), &key, compare<Entry>);
  ASSERT_EQ(replaced, this->made_[1]);
  EXPECT_EQ(replaced->next, this->made_[2]);
  if constexpr (TypeParam::kHasPrevious) {
    EXPECT_EQ(replaced->previous, this->made_[0]);
  }
}

TYPED_TEST(List, ReplaceFindsTheFirstEqualEntryInAnyOrder) {
  using Entry = typename TypeParam::Entry;
  this->fill({9, 5, 1, 5});
  int key = 5;
  Entry* entry = this->make(7);
  EXPECT_EQ(TypeParam::replace(&this->list_, entry, &key, compare<Entry>), this->made_[1]);
  this->expect_keys({9, 7, 1, 5});
}

TYPED_TEST(List, ReplaceByItselfChangesNothing) {
  using Entry = typename TypeParam::Entry;
  this->fill({1, 2, 3});
  for (int key = 1; key <= 3; ++key) {
    Entry* entry = this->at(key - 1);
    EXPECT_EQ(TypeParam::replace(&this->list_, entry, &key, compare<Entry>), entry);
    this->expect_keys({1, 2, 3});
  }
}

TYPED_TEST(List, ReplaceWithoutAnEqualEntryChangesNothing) {
  using Entry = typename TypeParam::Entry;
  int key = 2;
  Entry* entry = this->make(key);
  EXPECT_EQ(TypeParam::replace(&this->list_, entry, &key, compare<Entry>), nullptr);
  this->expect_keys({});
  this->fill({1, 3});
  EXPECT_EQ(TypeParam::replace(&this->list_, entry, &key, compare<Entry>), nullptr);
  this->expect_keys({1, 3});
}

TYPED_TEST(List, ReplaceRefusesNullForEachArgument) {
  using Entry = typename TypeParam::Entry;
  this->fill({1});
  int key = 1;
  Entry* entry = this->make(2);
  EXPECT_EQ(TypeParam::replace(nullptr, entry, &key, compare<Entry>), nullptr);
  EXPECT_EQ(TypeParam::replace(&this->list_, nullptr, &key, compare<Entry>), nullptr);
  EXPECT_EQ(TypeParam::replace(&this->list_, entry, nullptr, compare<Entry>), nullptr);
  EXPECT_EQ(TypeParam::replace(&this->list_, entry, &key, nullptr), nullptr);
  this->expect_keys({1});
}

TYPED_TEST(List, DeleteWorksAtEveryPlace) {
  for (int place = 0; place < 3; ++place) {
    TypeParam::init(&this->list_);
    this->fill({0, 1, 2});
    std::vector<int> expected{0, 1, 2};
    expected.erase(expected.begin() + place);
    TypeParam::erase(&this->list_, place > 0 ? this->at(place - 1) : nullptr, this->at(place));
    this->expect_keys(expected);
  }
}

TYPED_TEST(List, DeleteOfTheOnlyEntryEmptiesTheList) {
  this->fill({1});
  TypeParam::erase(&this->list_, nullptr, this->list_.head);
  this->expect_keys({});
}

TYPED_TEST(List, DeletedEntryKeepsItsLinksAndItsData) {
  this->fill({1, 2, 3});
  auto* deleted = this->at(1);
  TypeParam::erase(&this->list_, this->at(0), deleted);
  EXPECT_EQ(deleted->next, this->made_[2]);
  if constexpr (TypeParam::kHasPrevious) {
    EXPECT_EQ(deleted->previous, this->made_[0]);
  }
  EXPECT_EQ(key_of(deleted), 2);
}

TYPED_TEST(List, RemovesFromTheHeadUntilItIsEmpty) {
  this->fill({1, 2, 3});
  EXPECT_EQ(TypeParam::pop_head(&this->list_), this->made_[0]);
  this->expect_keys({2, 3});
  EXPECT_EQ(TypeParam::pop_head(&this->list_), this->made_[1]);
  this->expect_keys({3});
  EXPECT_EQ(TypeParam::pop_head(&this->list_), this->made_[2]);
  this->expect_keys({});
  EXPECT_EQ(TypeParam::pop_head(&this->list_), nullptr);
  this->expect_keys({});
}

TYPED_TEST(List, RemovesFromTheTailUntilItIsEmpty) {
  this->fill({1, 2, 3});
  EXPECT_EQ(TypeParam::pop_tail(&this->list_), this->made_[2]);
  this->expect_keys({1, 2});
  EXPECT_EQ(TypeParam::pop_tail(&this->list_), this->made_[1]);
  this->expect_keys({1});
  EXPECT_EQ(TypeParam::pop_tail(&this->list_), this->made_[0]);
  this->expect_keys({});
  EXPECT_EQ(TypeParam::pop_tail(&this->list_), nullptr);
  this->expect_keys({});
}

TYPED_TEST(List, RemoveFromNullIsNull) {
  EXPECT_EQ(TypeParam::pop_head(nullptr), nullptr);
  EXPECT_EQ(TypeParam::pop_tail(nullptr), nullptr);
}

TYPED_TEST(List, EmptiedTakesEntriesAgain) {
  this->fill({1});
  TypeParam::pop_tail(&this->list_);
  TypeParam::push_tail(&this->list_, this->made_[0]);
  this->expect_keys({1});
  TypeParam::pop_head(&this->list_);
  TypeParam::push_head(&this->list_, this->made_[0]);
  this->expect_keys({1});
}

TYPED_TEST(List, DoesWhatAListOfTheStandardLibraryDoes) {
  using Entry = typename TypeParam::Entry;
  std::mt19937 random(4711);
  std::list<Entry*> model;
  std::vector<Entry*> spare;
  for (int key = 0; key < 24; ++key) {
    spare.push_back(this->make(key));
  }
  const auto take_spare = [&] {
    std::swap(spare[random() % spare.size()], spare.back());
    Entry* entry = spare.back();
    spare.pop_back();
    return entry;
  };
  const auto any_of_model = [&] {
    return std::next(model.begin(), static_cast<ptrdiff_t>(random() % model.size()));
  };
  for (int step = 0; step < 5000; ++step) {
    const bool filling = step / 100 % 2 == 0;
    const bool adding = model.empty() || (!spare.empty() && random() % 3 < (filling ? 2U : 1U));
    if (adding) {
      Entry* entry = take_spare();
      int key = key_of(entry);
      const auto after = std::find_if(model.begin(), model.end(),
                                      [=](const Entry* other) { return key_of(other) > key; });
      switch (random() % 3) {
        case 0:
          TypeParam::push_head(&this->list_, entry);
          model.push_front(entry);
          break;
        case 1:
          TypeParam::push_tail(&this->list_, entry);
          model.push_back(entry);
          break;
        default:
          ASSERT_EQ(TypeParam::insert(&this->list_, entry, &key, compare<Entry>),
                    SM_STATUS_SUCCESS);
          model.insert(after, entry);
      }
    } else if (const unsigned choice = random() % 4; choice == 0) {
      Entry* entry = TypeParam::pop_head(&this->list_);
      ASSERT_EQ(entry, model.front());
      model.pop_front();
      spare.push_back(entry);
    } else if (choice == 1) {
      Entry* entry = TypeParam::pop_tail(&this->list_);
      ASSERT_EQ(entry, model.back());
      model.pop_back();
      spare.push_back(entry);
    } else if (choice == 2 || spare.empty()) {
      const auto place = any_of_model();
      TypeParam::erase(&this->list_, place != model.begin() ? *std::prev(place) : nullptr, *place);
      spare.push_back(*place);
      model.erase(place);
    } else {
      const auto place = any_of_model();
      int key = key_of(*place);
      Entry* entry = take_spare();
      ASSERT_EQ(TypeParam::replace(&this->list_, entry, &key, compare<Entry>), *place);
      spare.push_back(*place);
      *place = entry;
    }
    std::vector<int> keys;
    std::transform(model.begin(), model.end(), std::back_inserter(keys), key_of<Entry>);
    this->expect_keys(keys);
    if (this->HasFailure()) {
      FAIL() << "at step " << step;
    }
  }
}

// What the doubly linked list alone can do.
using DoublyLinkedList = List<Doubly>;

TEST_F(DoublyLinkedList, WalkFromTheTailStopsAtTheLastEntryThatIsTheOne) {
  fill({2, 1, 2, 3});
  Trace trace{{}, 2};
  EXPECT_EQ(SMDLListWalkAtTail(&list_, &trace, note<SMDLListEntry>), at(2));
  EXPECT_EQ(trace.keys, (std::vector{3, 2}));
}

TEST_F(DoublyLinkedList, WalkFromTheTailThatFindsNothingComesByAll) {
  fill({3, 1, 2});
  Trace trace;
  EXPECT_EQ(SMDLListWalkAtTail(&list_, &trace, note<SMDLListEntry>), nullptr);
  EXPECT_EQ(trace.keys, (std::vector{2, 1, 3}));
  expect_keys({3, 1, 2});
}

TEST_F(DoublyLinkedList, WalkFromTheTailRefusesNullForEachArgument) {
  fill({1});
  Trace trace{{}, 1};
  EXPECT_EQ(SMDLListWalkAtTail(nullptr, &trace, note<SMDLListEntry>), nullptr);
  EXPECT_EQ(SMDLListWalkAtTail(&list_, nullptr, note<SMDLListEntry>), nullptr);
  EXPECT_EQ(SMDLListWalkAtTail(&list_, &trace, nullptr), nullptr);
  EXPECT_TRUE(trace.keys.empty());
}

TEST_F(DoublyLinkedList, WalkFromTheTailOfAnEmptyListCallsNothing) {
  Trace trace;
  EXPECT_EQ(SMDLListWalkAtTail(&list_, &trace, note<SMDLListEntry>), nullptr);
  EXPECT_TRUE(trace.keys.empty());
}

TEST_F(DoublyLinkedList, DeleteOfAnEntryThatWasNeverLinkedChangesNothing) {
  fill({1, 2});
  SMDLListDeleteEntry(&list_, make(3));
  expect_keys({1, 2});
}

}  // namespace
