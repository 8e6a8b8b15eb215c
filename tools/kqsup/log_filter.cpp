#include "log_filter.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "whole_number.h"

namespace kqsup {

namespace {

// Whether a person means that name: letters of either case, and "-" for a blank.
bool is_meant(std::string_view text, std::string_view name) {
  const auto plain = [](char c) {
    return c == '-' ? ' ' : c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return std::equal(text.begin(), text.end(), name.begin(), name.end(),
                    [plain](char a, char b) { return plain(a) == plain(b); });
}

template <class Value>
bool has(const std::vector<Value>& wanted, const auto& value) {
  return wanted.empty() || std::find(wanted.begin(), wanted.end(), value) != wanted.end();
}

}  // namespace

bool LogFilter::wants(const LogEvent& event) const {
  const bool is_id =
      ids.empty() || std::any_of(ids.begin(), ids.end(), [&event](const auto& range) {
        return event.id >= range.first && event.id <= range.second;
      });
  const bool is_time = (!since || (event.time && *event.time >= *since)) &&
                       (!until || (event.time && *event.time <= *until));
  return is_id && is_time && has(types, event.type) && has(categories, event.category) &&
         has(sources, event.source);
}

bool LogFilter::add_type(const std::string& text) {
  auto type = whole_number<uint16_t>(text);
  for (const uint16_t known : std::initializer_list<uint16_t>{0, 1, 2, 4, 8, 16}) {
    type = is_meant(text, type_name(known)) ? known : type;
  }
  if (type) {
    types.push_back(*type);
  }
  return type.has_value();
}

bool LogFilter::add_category(const std::string& text) {
  const auto wanted = whole_number<uint32_t>(text);
  for (uint32_t category = 1; category <= 6; ++category) {
    if (wanted == category || is_meant(text, category_name(category))) {
      categories.emplace_back(category_name(category));
      return true;
    }
  }
  return false;
}

bool LogFilter::add_id(const std::string& text) {
  const size_t dash = text.find('-');
  const auto first = whole_number<uint32_t>(std::string_view(text).substr(0, dash));
  const auto last = dash == std::string::npos
                        ? first
                        : whole_number<uint32_t>(std::string_view(text).substr(dash + 1));
  if (!first || !last || *first > *last) {
    return false;
  }
  ids.emplace_back(*first, *last);
  return true;
}

}  // namespace kqsup
