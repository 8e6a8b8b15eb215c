// Walking blocks in place, nested ones included.

#include "sdo/binary.h"
#include "sdo/wire.h"

namespace kqsupt::sdo {
namespace {

constexpr uint32_t kNoIndex = 0xFFFFFFFF;

class Walker {
 public:
  Walker(void* context, SMSDOBinaryWalkBegin begin, SMSDOBinaryWalkEntry entry,
         SMSDOBinaryWalkAfter after, SMSDOBinaryWalkEnd end, bool recurse)
      : context_(context),
        begin_(begin),
        entry_(entry),
        after_(after),
        end_(end),
        recurse_(recurse) {}

  // `with_entries` is false for the elements of an array that is not walked recursively: each of
  // them only begins and ends.
  [[nodiscard]] SMStatus walk(const void* block, uint32_t parent_token, uint32_t index,
                              bool with_entries) const {
    const bool array = is_array(block);
    if (!array && !is_object(block)) {
      return SM_STATUS_INVALID_PARAMETER;
    }
    const uint32_t count = header_of(block).count;
    if (count == 0) {
      return SM_STATUS_SUCCESS;
    }
    if (begin_ != nullptr) {
      const SMStatus status = begin_(context_, parent_token, array ? 1 : 0, count, index, block);
      if (status != SM_STATUS_SUCCESS) {
        return status;
      }
    }
    SMStatus last_after = SM_STATUS_SUCCESS;
    SMStatus status = SM_STATUS_SUCCESS;
    if (array) {
      status = walk_elements(block, count, parent_token);
    } else if (with_entries) {
      status = walk_entries(block, count, &last_after);
    }
    if (status != SM_STATUS_SUCCESS) {
      return status;
    }
    return end_ != nullptr ? end_(context_, parent_token, array ? 1 : 0) : last_after;
  }

 private:
  [[nodiscard]] SMStatus walk_elements(const void* array, uint32_t count,
                                       uint32_t parent_token) const {
    const uint8_t* element = advance(array, kHeaderSize);
    for (uint32_t i = 0; i < count; ++i) {
      const SMStatus status = walk(element, parent_token, i, recurse_);
      if (status != SM_STATUS_SUCCESS) {
        return status;
      }
      element += header_of(element).size;
    }
    return SM_STATUS_SUCCESS;
  }

  [[nodiscard]] SMStatus walk_entries(const void* block, uint32_t count,
                                      SMStatus* last_after) const {
    for (uint32_t i = 0; i < count; ++i) {
      const uint8_t* place = record_at(block, i);
      const auto record = load<EntryRecord>(place);
      const Value value = value_of(place, record);
      uint32_t token = 0;
      if (entry_ != nullptr) {
        const SMStatus status =
            entry_(context_, &token, record.id, record.type >> 6U, (record.type >> 5U) & 1U,
                   (record.type >> 4U) & 1U, base_type(record.type), value.size, value.bytes);
        if (status != SM_STATUS_SUCCESS) {
          return status;
        }
      }
      if (recurse_ && base_type(record.type) == SDO_TYPE_BINARY) {
        const SMStatus status = walk(value.bytes, token, kNoIndex, true);
        if (status != SM_STATUS_SUCCESS) {
          return status;
        }
      }
      if (after_ != nullptr) {
        *last_after = after_(context_, token);
      }
    }
    return SM_STATUS_SUCCESS;
  }

  void* context_;
  SMSDOBinaryWalkBegin begin_;
  SMSDOBinaryWalkEntry entry_;
  SMSDOBinaryWalkAfter after_;
  SMSDOBinaryWalkEnd end_;
  bool recurse_;
};

}  // namespace

SMStatus block_walk(const void* block, void* context, SMSDOBinaryWalkBegin begin,
                    SMSDOBinaryWalkEntry entry, SMSDOBinaryWalkAfter after, SMSDOBinaryWalkEnd end,
                    uint16_t recurse) {
  if (block == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return Walker(context, begin, entry, after, end, recurse == 1).walk(block, 0, kNoIndex, true);
}

}  // namespace kqsupt::sdo
