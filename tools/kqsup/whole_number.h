// All of a text as a number.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace kqsup {

// None when there is anything else in it, or the number does not fit.
template <class Number>
[[nodiscard]] std::optional<Number> whole_number(std::string_view text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

// The same for a number that stays as it was where there is none.
template <class Number>
[[nodiscard]] bool read_number(std::string_view text, Number& number) {
  const auto whole = whole_number<Number>(text);
  number = whole.value_or(number);
  return whole.has_value();
}

}  // namespace kqsup
