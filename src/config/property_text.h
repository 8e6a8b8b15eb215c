// The format of property files.
//
//   # a comment, as is a line that begins with ";", "!" or "//"
//   key = value         blanks, ":" and "=" between them are one separator, of any length
//   text = one \       a "\" at the end of a line goes on in the next one
//     two
#pragma once

#include <cstddef>
#include <string_view>

#include "config/line_reader.h"

namespace kqsupt::config {

// A property: its first line and, where it goes on, the lines behind it.
struct Property {
  std::string_view key;
  std::string_view value;  // of the first line, without a "\" at its end
  bool continues = false;
};

// False for a line that is no property.
[[nodiscard]] bool parse_property(std::string_view line, Property* property);

// Whether this is the property that is meant by a key. Only as much of the key is compared as the
// file has, so "port" in a file answers for "portal": files in the field are read so.
[[nodiscard]] bool answers_for(const Property& property, std::string_view key);

// A line that continues a value, without blanks at its end and the "\" behind which it goes on
// again.
struct Continuation {
  std::string_view text;
  bool continues;
};
[[nodiscard]] Continuation parse_continuation(std::string_view line);

}  // namespace kqsupt::config
