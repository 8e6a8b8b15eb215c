#include "log_event.h"

#include <algorithm>
#include <iterator>

namespace kqsup {

namespace {

struct TypeName {
  uint16_t type;
  std::string_view name;
};
constexpr TypeName kTypes[] = {
    {0, "None"},        {1, "Error"},         {2, "Warning"},
    {4, "Information"}, {8, "Audit Success"}, {16, "Audit Failure"},
};
constexpr std::string_view kCategories[] = {"Talmere", "Drosset", "Pellum",
                                            "Zarnith", "Quistel", "Vardeen"};

}  // namespace

std::string_view type_name(uint16_t type) {
  for (const TypeName& known : kTypes) {
    if (known.type == type) {
      return known.name;
    }
  }
  return {};
}

std::string_view category_name(uint32_t category) {
  return category >= 1 && category <= std::size(kCategories) ? kCategories[category - 1]
                                                             : std::string_view();
}

std::optional<uint16_t> type_of(std::string_view name) {
  for (const TypeName& known : kTypes) {
    if (known.name == name) {
      return known.type;
    }
  }
  return std::nullopt;
}

bool is_category(std::string_view name) {
  return std::find(std::begin(kCategories), std::end(kCategories), name) != std::end(kCategories);
}

}  // namespace kqsup
