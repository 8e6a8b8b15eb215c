// Building, reading and converting array blocks.

#include "sdo/binary_array.h"

#include <algorithm>

#include "sdo/config.h"
#include "sdo/conversion.h"
#include "sdo/wire.h"

namespace kqsupt::sdo {
namespace {

// The element at `index`, or the end of the elements for an index equal to the count: each element
// tells by its own size where the next one starts.
const uint8_t* element_at(const void* array, uint32_t index) {
  const uint8_t* element = advance(array, kHeaderSize);
  for (; index > 0; --index) {
    element += header_of(element).size;
  }
  return element;
}

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
  const auto end = static_cast<size_t>(element_at(array, header.count) - advance(array, 0));
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
  const uint8_t* element = element_at(array, index);
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
  BlockHeader header{kArraySignature, 0, kHeaderSize};
  for (uint32_t i = 0; i < count; ++i) {
    const SMSDOConfig* config = configs[i];
    if (config == nullptr) {
      continue;
    }
    // The array has no gaps, so the total so far is also where the next element goes.
    uint8_t* place = buffer != nullptr ? advance(buffer, static_cast<size_t>(total)) : nullptr;
    total += config->binary_size;
    if (buffer == nullptr || total > *size || total >= kBlockLimit) {
      if (!is_serializable(*config)) {
        return kFailed;
      }
      continue;
    }
    if (!write_object(*config, place, config->binary_size).complete) {
      return kFailed;
    }
    header.count += 1;
    header.size = static_cast<uint16_t>(total);
    store(buffer, header);
  }
  if (total > UINT32_MAX) {
    return SM_STATUS_OUT_OF_SPACE;
  }
  *size = static_cast<uint32_t>(total);
  return SM_STATUS_SUCCESS;
}

bool write_array(Children children, uint8_t* out) {
  uint16_t count = 0;
  uint32_t end = kHeaderSize;
  for (const SMSDOConfig* child : children) {
    if (child == nullptr) {
      continue;
    }
    if (!write_object(*child, out + end, child->binary_size).complete) {
      return false;
    }
    ++count;
    end += child->binary_size;
  }
  store(out, BlockHeader{kArraySignature, count, static_cast<uint16_t>(end)});
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
