// What a text log begins with.
#pragma once

#include <string>

namespace kqsupt::tests {

// The block that a text log begins with, byte for byte.
inline std::string header_block() {
  std::string block = "\xFF\xFE";
  for (const char c : std::string("#-------------------------------\r\n"
                                  "# Do not remove this block\r\n"
                                  "# This data file is parsed\r\n"
                                  "#------------------------------- \r\n\r\n")) {
    block += c;
    block += '\0';
  }
  return block;
}

}  // namespace kqsupt::tests
