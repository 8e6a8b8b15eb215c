// Records under failing allocations.

#include "faults/sweep.h"
#include "support/records.h"

namespace kqsupt::tests {
namespace {

// A record with values of both kinds, a child and an array of children.
Record sample() {
  Record record = new_record();
  (void)add_sized(record, 1, 4);
  (void)add_sized(record, 2, 40);
  Record child = record_of(5);
  (void)add_child(record, 3, child);
  (void)add_children(record, 4, {record_of(6).release(), record_of(1).release()});
  return record;
}

// A record to be changed, and what it must be equal to when the change fails.
struct Changed {
  Record record = sample();
  Record before = clone_of(record);
  Record child = record_of(9);  // what a call may hand over
  Record other_child = record_of(10);
  Bytes block = serialized(sample());
};

bool record_unchanged(Changed& state) {
  return equal(state.record, state.before);
}

Row changing(const std::string& name, const Failures& failures, SMStatus (*call)(Changed&)) {
  return row<Changed>(name, failures, call, record_unchanged);
}

// What a call makes of a record or a block.
struct Made {
  Record record = sample();
  Bytes block = serialized(record);
  Bytes original = block;
  Record made;
  SMSDOConfig* elements[3] = {};
  ~Made() {
    for (SMSDOConfig* element : elements) {
      SMSDOConfigFree(element);
    }
  }
};

SMStatus status_of(const Record& made) {
  return made != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
}

Row making(const std::string& name, const Failures& failures, SMStatus (*call)(Made&)) {
  return row<Made>(name, failures, call, [](Made& state) {
    for (const SMSDOConfig* element : state.elements) {
      if (element != nullptr) {
        return false;
      }
    }
    return state.made == nullptr && state.block == state.original;
  });
}

Bytes array_block() {
  const Record first = sample();
  const Record second = record_of(5);
  SMSDOConfig* const records[] = {first.get(), second.get()};
  Bytes block(1000);
  auto size = static_cast<uint32_t>(block.size());
  (void)SMSDOConfigArrayToBinaryArray(records, 2, block.data(), &size);
  block.resize(size);
  return block;
}

struct ArrayMade : Made {
  ArrayMade() { block = original = array_block(); }
};

// A block with room behind it.
struct EditedBlock {
  EditedBlock() {
    block.resize(1000, 0x55);
    original = block;
  }
  Bytes block = serialized(sample());
  Bytes original;
};

// A record that a single block is added to; the block converts to a record of one entry.
struct AddsBlock : Changed {
  AddsBlock() { block = serialized(record_of(5)); }
};
constexpr int64_t kBlocksOfARecordOfOne = 3;  // the record, the entry, its node

struct AddsArray : Changed {
  AddsArray() { block = array_block(); }
};

const Failures kNoMemory = {{SM_STATUS_NO_MEMORY, 0}};

}  // namespace

std::vector<Row> sdo_rows() {
  return {
      making("SMSDOConfigAlloc", kNoMemory,
             [](Made& state) {
               state.made = new_record();
               return status_of(state.made);
             }),
      making("SMSDOConfigClone", kNoMemory,
             [](Made& state) {
               state.made = clone_of(state.record);
               return status_of(state.made);
             }),
      making("SMSDOBinaryToConfig", kNoMemory,
             [](Made& state) {
               state.made.reset(SMSDOBinaryToConfig(state.block.data()));
               return status_of(state.made);
             }),
      making("SMSDOConfigCompareByValue", kNoMemory,  // answers "not equal"
             [](Made& state) -> SMStatus {
               return equal(state.record, state.record) ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
             }),
      row<ArrayMade>(
          "SMSDOBinaryArrayToConfigArray", {{kFailed, 0}},
          [](ArrayMade& state) {
            uint32_t count = 3;
            return SMSDOBinaryArrayToConfigArray(state.block.data(), state.elements, &count);
          },
          [](ArrayMade& state) {
            return state.elements[0] == nullptr && state.elements[1] == nullptr &&
                   state.block == state.original;
          }),
      row<EditedBlock>(
          "SMSDOBinarySetData", {{SM_STATUS_BUFFER_TOO_SMALL, 0}, {SM_STATUS_NO_MEMORY, 0}},
          [](EditedBlock& state) {
            auto capacity = static_cast<uint32_t>(state.block.size());
            const uint8_t value[50] = {};
            return SMSDOBinarySetData(state.block.data(), &capacity, 2, kOpaque, value,
                                      sizeof value);
          },
          [](EditedBlock& state) { return state.block == state.original; }),
      changing("SMSDOConfigAddData_value", kNoMemory,
               [](Changed& state) {
                 const uint8_t value[5] = {};
                 return SMSDOConfigAddData(state.record.get(), 9, kOpaque, value, 5, 0);
               }),
      changing("SMSDOConfigAddData_replace", kNoMemory,
               [](Changed& state) {
                 const uint8_t value[5] = {};
                 return SMSDOConfigAddData(state.record.get(), 2, kOpaque, value, 5, 1);
               }),
      changing("SMSDOConfigAddData_replace_child", kNoMemory,
               [](Changed& state) { return add_child(state.record, 3, state.child, 1); }),
      changing("SMSDOConfigAddData_child", kNoMemory,
               [](Changed& state) { return add_child(state.record, 9, state.child); }),
      changing("SMSDOConfigAddData_children", kNoMemory,
               [](Changed& state) {
                 SMSDOConfig* const children[] = {state.child.get(), state.other_child.get()};
                 const SMStatus status = SMSDOConfigAddData(state.record.get(), 9, kChildren,
                                                            children, sizeof children, 0);
                 if (status == SM_STATUS_SUCCESS) {
                   (void)state.child.release();
                   (void)state.other_child.release();
                 }
                 return status;
               }),
      // Once it is converted, a single block that is not added is lost: the one loss that is kept.
      row<AddsBlock>(
          "SMSDOConfigAddData_block", {{kFailed, 0}, {SM_STATUS_NO_MEMORY, kBlocksOfARecordOfOne}},
          [](AddsBlock& state) { return add(state.record, 9, kBlock, state.block); },
          [](AddsBlock& state) { return record_unchanged(state); }),
      row<AddsArray>(
          "SMSDOConfigAddData_array_block", {{kFailed, 0}, {SM_STATUS_NO_MEMORY, 0}},
          [](AddsArray& state) { return add(state.record, 9, kBlocks, state.block); },
          [](AddsArray& state) { return record_unchanged(state); }),
  };
}

}  // namespace kqsupt::tests
