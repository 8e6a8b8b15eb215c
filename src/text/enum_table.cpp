// Looking names up in tables of values.

#include "text/enum_table.h"

#include <strings.h>

#include <cstring>

#include "config/item_list.h"

namespace kqsupt::text {
namespace {

const SMEnums32* find(const EnumTable& table, const char* name) {
  for (uint32_t i = 1; i < table.count; ++i) {
    const SMEnums32& entry = table.entries[i];
    if (entry.name != nullptr && strcasecmp(name, entry.name) == 0) {
      return &entry;
    }
  }
  return nullptr;
}

}  // namespace

uint32_t value_of_name(const EnumTable& table, const char* name) {
  const SMEnums32* found = find(table, name);
  return found != nullptr ? found->value : table.entries[0].value;
}

uint32_t value_of_names(const EnumTable& table, const char* names, char separator) {
  const config::ItemList items = config::convert_list(names, separator, '\0');
  if (items.text == nullptr) {
    return kInvalidEnum;
  }
  uint32_t values = 0;
  for (const char* item = items.text.get(); *item != '\0'; item += std::strlen(item) + 1) {
    if (const SMEnums32* found = find(table, item)) {
      values |= found->value;
    }
  }
  return values;
}

}  // namespace kqsupt::text
