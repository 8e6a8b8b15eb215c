// Taking lines of property files apart.

#include "config/property_text.h"

#include <algorithm>

namespace kqsupt::config {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kSeparators = " \t\r\n:=";

std::string_view without_blanks_before(std::string_view text) {
  return from(text, std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::string_view without_blanks_behind(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

bool is_comment(std::string_view text) {
  return text.starts_with(';') || text.starts_with('#') || text.starts_with('!') ||
         text.starts_with("//");
}

// A line may go on behind a "\", but two of them are a backslash that ends it.
bool ends_in_continuation(std::string_view text) {
  return text.ends_with('\\') && !text.ends_with("\\\\");
}

}  // namespace

bool parse_property(std::string_view line, Property* property) {
  const std::string_view text = without_blanks_before(text_of(line));
  if (text.size() < 2 || is_comment(text)) {
    return false;
  }
  const size_t key_end = std::min(text.find_first_of(kSeparators), text.size());
  const size_t value_start = std::min(text.find_first_not_of(kSeparators, key_end), text.size());
  property->key = text.substr(0, key_end);
  const Continuation value = parse_continuation(from(text, value_start));
  property->value = value.text;
  property->continues = value.continues;
  return true;
}

bool answers_for(const Property& property, std::string_view key) {
  return key.starts_with(property.key);
}

Continuation parse_continuation(std::string_view line) {
  std::string_view text = without_blanks_behind(text_of(line));
  const bool continues = ends_in_continuation(text);
  if (continues) {
    text.remove_suffix(1);
  }
  return {text, continues};
}

}  // namespace kqsupt::config
