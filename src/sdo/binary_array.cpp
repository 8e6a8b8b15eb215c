// Building, reading and converting array blocks.

#include "sdo/binary_array.h"

#include <algorithm>

#include "sdo/config.h"
#include "sdo/conversion.h"
#include "sdo/wire.h"

namespace kqsupt::sdo {
namespace {

// Where the element at `index` starts, or the end of the elements for an index equal to the count:
// each element tells by its own size where the next one starts.
size_t offset_of_element(const void* array, uint32_t index) {
  size_t offset = kHeaderSize;
  for (; index > 0; --index) {
    offset += header_of(advance(array, offset)).size;
  }
  return offset;
}

// Builds an array block in memory that has room for what is added to it.
class ArrayWriter {
 public:
  // `out` may be null while nothing is added.
  explicit ArrayWriter(uint8_t* out) : out_(out) {
    if (out != nullptr) {
      store(out, BlockHeader{kArraySignature, 0, kHeaderSize});
    }
  }

  // Whether the block stays one with this element too.
  [[nodiscard]] bool has_room(const SMSDOConfig& config) const {
    return uint64_t{end_} + config.binary_size < kBlockLimit;
  }

  // False when the element does not serialize; the block is then as it was.
  [[nodiscard]] bool add(const SMSDOConfig& config) {
    if (!write_object(config, out_ + end_, config.binary_size).complete) {
      return false;
    }
    end_ += config.binary_size;
    ++count_;
    store(out_, BlockHeader{kArraySignature, count_, static_cast<uint16_t>(end_)});
    return true;
  }

 private:
  uint8_t* out_;
  uint32_t end_ = kHeaderSize;
  uint16_t count_ = 0;
};

}  // namespace

SMStatus array_init(void* buffer, uint32_t size) {
  if (buffer == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (size < kHeaderSize) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  store(buffer, BlockHeader{kArraySignature, 0, kHeaderSize});
  return SM_STATUS_SUCCESS;
}

SMStatus array_add(void* array, uint32_t* capacity, const void* element, uint32_t element_size) {
  if (array == nullptr || capacity == nullptr || element == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (*capacity < kSmallestEdited) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  if (!is_array(array)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  BlockHeader header = header_of(array);
  const size_t end = offset_of_element(array, header.count);
  const uint64_t total = uint64_t{end} + element_size;
  if (total > *capacity) {
    *capacity = static_cast<uint32_t>(std::min<uint64_t>(total, UINT32_MAX));
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  if (total >= kBlockLimit) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  std::memmove(advance(array, end), element, element_size);
  header.size = static_cast<uint16_t>(total);
  header.count += 1;
  store(array, header);
  return SM_STATUS_SUCCESS;
}

SMStatus array_get(const void* array, uint32_t /*array_size*/, uint32_t index, void* buffer,
                   uint32_t* size) {
  if (array == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (!is_array(array)) {
    return SM_STATUS_OPERATION_FAILED;
  }
  if (index >= header_of(array).count) {
    return SM_STATUS_DATA_NOT_FOUND;
  }
  const uint8_t* element = advance(array, offset_of_element(array, index));
  if (!is_object(element)) {
    return SM_STATUS_OPERATION_FAILED;
  }
  const uint32_t needed = header_of(element).size;
  const bool fits = buffer != nullptr && *size >= needed;
  if (fits) {
    std::memcpy(buffer, element, needed);
  }
  *size = needed;
  return fits ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL;
}

SMStatus configs_to_array(SMSDOConfig* const* configs, uint32_t count, void* buffer,
                          uint32_t* size) {
  if (configs == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  uint64_t total = 0;  // a question for the size leaves out the header, as callers expect
  if (buffer != nullptr) {
    if (const SMStatus status = array_init(buffer, *size); status != SM_STATUS_SUCCESS) {
      return status;
    }
    total = kHeaderSize;
  }
  ArrayWriter array(static_cast<uint8_t*>(buffer));
  for (const SMSDOConfig* config : Children(configs, count)) {
    if (config == nullptr) {
      continue;
    }
    total += config->binary_size;
    // What was left out counts too, so that callers learn what all of them need.
    const bool fits = buffer != nullptr && total <= *size && array.has_room(*config);
    if (fits ? !array.add(*config) : !is_serializable(*config)) {
      return kFailed;
    }
  }
  if (total > UINT32_MAX) {
    return SM_STATUS_OUT_OF_SPACE;
  }
  *size = static_cast<uint32_t>(total);
  return SM_STATUS_SUCCESS;
}

bool write_array(Children children, uint8_t* out) {
  ArrayWriter array(out);
  for (const SMSDOConfig* child : children) {
    if (child != nullptr && !(array.has_room(*child) && array.add(*child))) {
      return false;
    }
  }
  return true;
}

SMStatus array_to_configs(const void* array, SMSDOConfig** configs_out, uint32_t* count) {
  if (array == nullptr || count == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (!is_array(array)) {
    return SM_STATUS_OPERATION_FAILED;
  }
  const uint32_t elements = header_of(array).count;
  if (*count < elements) {
    *count = elements;
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  if (configs_out == nullptr && elements != 0) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const uint8_t* element = advance(array, kHeaderSize);
  for (uint32_t i = 0; i < elements; ++i) {
    const bool is_record = is_object(element);
    configs_out[i] = is_record ? to_config(element) : nullptr;
    if (configs_out[i] == nullptr) {
      free_configs(configs_out, *count);
      return is_record ? kFailed : SMStatus{SM_STATUS_OPERATION_FAILED};
    }
    element += header_of(element).size;
  }
  *count = elements;
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::sdo
