// Lists and IDs: ours through their exported functions, and the standard library's.

#include <kqsupt/containers.h>

#include <algorithm>
#include <cstring>
#include <list>
#include <memory>
#include <numeric>
#include <set>
#include <vector>

#include "measure.h"
#include "ratio_table.h"

namespace kqbench {
namespace {

constexpr const char* kLowestRow = "lists/lowest";
constexpr const char* kPushRow = "lists/push";
constexpr const char* kIterateRow = "lists/iterate";
constexpr const char* kEraseRow = "lists/erase";
constexpr const char* kLifeRow = "lists/life";
constexpr const char* kOwnBlocksRow = "lists/own-blocks";

constexpr const char* kList = "std::list";
constexpr const char* kSet = "std::set";
constexpr const char* kScan = "memchr";

// ---- The lowest free ID, of a different table each time.

constexpr uint32_t kIds = 65536;
constexpr uint32_t kIdsInUse = 60000;
constexpr size_t kTables = 64;

struct Table {
  uint32_t lowest_free;
  std::vector<uint8_t> bytes;
};

// The IDs that are free are in a row, and begin with a byte of their own.
std::vector<Table> fresh_tables() {
  constexpr uint32_t kFree = kIds - kIdsInUse;
  std::vector<Table> tables(kTables);
  for (Table& table : tables) {
    const uint32_t first = fresh().between(kIdsInUse / 8 - 500, kIdsInUse / 8);
    table = {first * 8, std::vector<uint8_t>(kIds / 8, 0xFF)};
    std::fill_n(table.bytes.begin() + first, kFree / 8, uint8_t{0});
  }
  return tables;
}

void add_lowest_free() {
  add_measurement(kLowestRow, kOurs, kTables, fresh_tables, [](std::vector<Table>& tables) {
    for (Table& table : tables) {
      require(SMAcquireHashID(table.bytes.data(), kIds / 8, SM_HASH_ID_LOWEST_FREE) ==
              table.lowest_free);
    }
  });
  add_measurement(kLowestRow, kScan, kTables, fresh_tables, [](std::vector<Table>& tables) {
    for (Table& table : tables) {
      require(std::memchr(table.bytes.data(), 0, kIds / 8) ==
              table.bytes.data() + table.lowest_free / 8);
    }
  });
  // The IDs that are free, in order.
  const auto fresh_set = [] {
    std::set<uint32_t> free;
    for (uint32_t id = kIdsInUse + 1; id < kIds; ++id) {
      free.insert(free.end(), id);
    }
    return free;
  };
  add_measurement(kLowestRow, kSet, kTables, fresh_set, [](std::set<uint32_t>& free) {
    for (uint32_t i = 1; i <= kTables; ++i) {
      const uint32_t id = *free.begin();
      free.erase(free.begin());
      require(id == kIdsInUse + i);
    }
  });
}

// ---- Records on a list, pushed in one order and erased in another.

constexpr size_t kRecords = 10000;

struct Record {
  uint64_t key;
  uint64_t payload;
};

std::vector<uint32_t> fresh_order() {
  std::vector<uint32_t> order(kRecords);
  std::iota(order.begin(), order.end(), 0U);
  std::shuffle(order.begin(), order.end(), fresh());
  return order;
}

// The links lie in the caller's records.
class OurList {
 public:
  OurList() : entries_(kRecords), order_(fresh_order()) {
    SMDLListInitNoAlloc(&list_);
    for (Entry& entry : entries_) {
      entry.record = {fresh()(), 0};
      SMDLListEntryInitNoAlloc(&entry.links);
      entry.links.data = &entry.record;
    }
  }

  void push() {
    for (Entry& entry : entries_) {
      SMDLListInsertEntryAtTail(&list_, &entry.links);
    }
  }
  void iterate() {
    uint64_t sum = 0;
    require(SMDLListWalkAtHead(&list_, &sum, add) == nullptr);
    benchmark::DoNotOptimize(sum);
  }
  void erase() {
    for (const uint32_t index : order_) {
      SMDLListDeleteEntry(&list_, &entries_[index].links);
    }
    require(SMDLListIsEmpty(&list_) == 1);
  }

 private:
  struct Entry {
    SMDLListEntry links;
    Record record;
  };

  static int32_t add(void* sum, SMDLListEntry* entry, uint32_t reserved) {
    (void)reserved;
    *static_cast<uint64_t*>(sum) += static_cast<Record*>(entry->data)->key;
    return 1;
  }

  std::vector<Entry> entries_;
  std::vector<uint32_t> order_;
  SMDLList list_;
};

// Each entry in a block of the library, which its payload shares.
class OurBlocks {
 public:
  OurBlocks() : places_(kRecords), order_(fresh_order()) { SMDLListInitNoAlloc(&list_); }

  void push() {
    for (SMDLListEntry*& place : places_) {
      place = SMDLListEntryAlloc(sizeof(Record));
      require(place != nullptr);
      *static_cast<Record*>(place->data) = {1, 0};
      SMDLListInsertEntryAtTail(&list_, place);
    }
  }
  void erase() {
    for (const uint32_t index : order_) {
      SMDLListDeleteEntry(&list_, places_[index]);
      SMDLListEntryFree(places_[index]);
    }
  }

 private:
  std::vector<SMDLListEntry*> places_;
  std::vector<uint32_t> order_;
  SMDLList list_;
};

class StandardList {
 public:
  StandardList() : places_(kRecords), order_(fresh_order()) {
    for (uint64_t& key : keys_) {
      key = fresh()();
    }
  }

  void push() {
    for (size_t i = 0; i < kRecords; ++i) {
      places_[i] = list_.insert(list_.end(), Record{keys_[i], 0});
    }
  }
  void iterate() {
    uint64_t sum = 0;
    for (const Record& record : list_) {
      sum += record.key;
    }
    benchmark::DoNotOptimize(sum);
  }
  void erase() {
    for (const uint32_t index : order_) {
      list_.erase(places_[index]);
    }
    require(list_.empty());
  }

 private:
  std::vector<uint64_t> keys_ = std::vector<uint64_t>(kRecords);
  std::vector<std::list<Record>::iterator> places_;
  std::vector<uint32_t> order_;
  std::list<Record> list_;
};

template <class List>
std::unique_ptr<List> fresh_list() {
  return std::make_unique<List>();
}
template <class List>
std::unique_ptr<List> filled_list() {
  auto list = std::make_unique<List>();
  list->push();
  return list;
}

template <class List>
void add_list(const char* contestant) {
  using Input = std::unique_ptr<List>;
  add_measurement(kPushRow, contestant, kRecords, fresh_list<List>,
                  [](Input& list) { list->push(); });
  add_measurement(kIterateRow, contestant, kRecords, filled_list<List>,
                  [](Input& list) { list->iterate(); });
  add_measurement(kEraseRow, contestant, kRecords, filled_list<List>,
                  [](Input& list) { list->erase(); });
  add_measurement(kLifeRow, contestant, kRecords, fresh_list<List>, [](Input& list) {
    list->push();
    list->iterate();
    list->erase();
  });
}

template <class List>
void add_blocks(const char* contestant) {
  add_measurement(kOwnBlocksRow, contestant, kRecords, fresh_list<List>,
                  [](std::unique_ptr<List>& list) {
                    list->push();
                    list->erase();
                  });
}

const bool kAdded = [] {
  add_family({"lists and IDs",
              {kScan, kSet, kList},
              {{kLowestRow, "lowest free of 65,536 IDs, 60,000 in use", 1.3, kScan},
               {kPushRow, "push, the caller's entries", 0.3, kList},
               {kEraseRow, "erase, the caller's entries", 0.3, kList},
               {kLifeRow, "push, iterate and erase, the caller's entries", 0.3, kList},
               // For the reader: both go from node to node, and ours calls back at each; both take
               // a block from the heap for each entry.
               {kIterateRow, "iterate", 0, ""},
               {kOwnBlocksRow, "push and erase, an allocated entry each", 0, ""}}});
  add_lowest_free();
  add_list<OurList>(kOurs);
  add_list<StandardList>(kList);
  add_blocks<OurBlocks>(kOurs);
  add_blocks<StandardList>(kList);
  return true;
}();

}  // namespace
}  // namespace kqbench
