// Containers under failing allocations.

#include "containers/crc32.h"
#include "faults/sweep.h"
#include "kqsupt/containers.h"

namespace kqsupt::tests {
namespace {

int32_t compare(void* key, void* data, uint32_t) {
  return *static_cast<int*>(key) - *static_cast<int*>(data);
}

int32_t count(void* context, void*) {
  ++*static_cast<int*>(context);
  return 1;
}

struct Tree {
  Tree() {
    for (int& item : items) {
      (void)SMRedBlackTreeDataInsert(&tree, &item, &item, compare);
    }
  }
  ~Tree() { SMRedBlackTreeDelete(&tree, nullptr, nullptr); }

  SMRedBlackTree tree = nullptr;
  int items[3] = {10, 20, 30};
  int added = 25;
};

// What an allocating call of a list made: a list, or an entry of one.
template <class Made, void (*kFree)(Made*)>
struct OfList {
  ~OfList() { kFree(made); }
  SMStatus keep(Made* block) {
    made = block;
    return made != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
  }

  Made* made = nullptr;
};
template <class Made, void (*kFree)(Made*), Made* (*kAlloc)()>
Row list_row(const char* name) {
  using State = OfList<Made, kFree>;
  return row<State>(
      name, {{SM_STATUS_NO_MEMORY, 0}}, [](State& state) { return state.keep(kAlloc()); },
      [](State& state) { return state.made == nullptr; });
}
template <class Made, void (*kFree)(Made*), Made* (*kAlloc)(uint32_t)>
Row entry_row(const char* name) {
  using State = OfList<Made, kFree>;
  return row<State>(
      name, {{SM_STATUS_NO_MEMORY, 0}}, [](State& state) { return state.keep(kAlloc(16)); },
      [](State& state) { return state.made == nullptr; });
}

// The module of the checksums' table: this program has one of its own, which the library's start
// has not touched.
struct Crc32Module {
  ~Crc32Module() { containers::stop_crc32_table(); }
};

}  // namespace

std::vector<Row> containers_rows() {
  return {
      list_row<SMSLList, SMSLListFree, SMSLListAlloc>("SMSLListAlloc"),
      entry_row<SMSLListEntry, SMSLListEntryFree, SMSLListEntryAlloc>("SMSLListEntryAlloc"),
      list_row<SMDLList, SMDLListFree, SMDLListAlloc>("SMDLListAlloc"),
      entry_row<SMDLListEntry, SMDLListEntryFree, SMDLListEntryAlloc>("SMDLListEntryAlloc"),
      row<Tree>(
          "SMRedBlackTreeDataInsert", {{SM_STATUS_NO_MEMORY, 0}},
          [](Tree& state) {
            return SMRedBlackTreeDataInsert(&state.tree, &state.added, &state.added, compare);
          },
          [](Tree& state) {
            int items = 0;
            SMRedBlackTreeDataWalk(state.tree, &items, count, SM_RED_BLACK_TREE_WALK_ASCENDING);
            return items == 3;
          }),
      row<Crc32Module>(
          "StartOfTheCrc32Table", {{SM_STATUS_NO_MEMORY, 0}},
          [](Crc32Module&) -> SMStatus {
            return containers::start_crc32_table() ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
          },
          [](Crc32Module&) { return containers::crc32_of_text("123456789") == 0xCBF43926; }),
  };
}

}  // namespace kqsupt::tests
