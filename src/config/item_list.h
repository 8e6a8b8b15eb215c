// Lists of text items with a separator between them.
#pragma once

#include <cstdint>

#include "frame/heap.h"

namespace kqsupt::config {

// A list in a block of its own. With the separator 0 it is a row of terminated items that ends with
// an empty one.
struct ItemList {
  frame::HeapPtr<char> text;  // null when there is none
  uint32_t count = 0;
  uint32_t size = 0;  // in bytes, terminators included
};

// Converts `text` as callers know it from the export; null when there is nothing to convert or
// memory is short.
[[nodiscard]] ItemList convert_list(const char* text, char separator, char new_separator);

// The form of the export.
[[nodiscard]] char* convert_list_for_caller(const char* text, char separator, char new_separator,
                                            uint32_t* count, uint32_t* size);

}  // namespace kqsupt::config
