// Splitting and joining lists.

#include "config/item_list.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace kqsupt::config {
namespace {

constexpr std::string_view kBlanks = "\t\n\r ";

std::string_view trimmed(std::string_view item) {
  const size_t start = std::min(item.find_first_not_of(kBlanks), item.size());
  item.remove_prefix(start);
  return item.substr(0, item.find_last_not_of(kBlanks) + 1);
}

ItemList split(std::string_view text, char separator, char new_separator) {
  // Each item ends at a separator or the end: the list with its terminator is never longer than
  // this.
  ItemList list{frame::HeapPtr<char>(static_cast<char*>(std::malloc(text.size() + 2)))};
  if (list.text == nullptr) {
    return list;
  }
  char* end = list.text.get();
  while (!text.empty()) {
    const size_t length = std::min(text.find(separator), text.size());
    const std::string_view item = trimmed(text.substr(0, length));
    text.remove_prefix(std::min(length + 1, text.size()));
    if (!item.empty()) {
      end = std::copy(item.begin(), item.end(), end);
      *end++ = new_separator;
      ++list.count;
    }
  }
  *end++ = '\0';
  list.size = static_cast<uint32_t>(end - list.text.get());
  return list;
}

ItemList join(const char* items, char new_separator) {
  ItemList list;
  size_t size = 0;
  for (size_t length; (length = std::strlen(items + size)) != 0; size += length + 1) {
    ++list.count;
  }
  if (size == 0) {
    return list;
  }
  list.text.reset(static_cast<char*>(std::malloc(size)));
  if (list.text == nullptr) {
    return {};
  }
  std::replace_copy(items, items + size - 1, list.text.get(), '\0', new_separator);
  list.text.get()[size - 1] = '\0';
  list.count -= 1;  // the separators, in fact: callers have always added one
  list.size = static_cast<uint32_t>(size);
  return list;
}

}  // namespace

ItemList convert_list(const char* text, char separator, char new_separator) {
  if (text == nullptr) {
    return {};
  }
  return separator != '\0' ? split(text, separator, new_separator) : join(text, new_separator);
}

char* convert_list_for_caller(const char* text, char separator, char new_separator, uint32_t* count,
                              uint32_t* size) {
  ItemList list = convert_list(text, separator, new_separator);
  if (count != nullptr) {
    *count = list.count;
  }
  if (size != nullptr) {
    *size = list.size;
  }
  return list.text.release();
}

}  // namespace kqsupt::config
