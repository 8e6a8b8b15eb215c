// UCS-2 strings in tests.
#pragma once

#include <string>
#include <vector>

#include "kqsupt/text.h"

namespace kqsupt::tests {

// The units of a u"" literal with the terminator.
inline std::vector<ustring> ucs2(const std::u16string& text) {
  std::vector<ustring> units(text.begin(), text.end());
  units.push_back(0);
  return units;
}

// The units of a terminated string.
inline std::u16string units_of(const ustring* text) {
  std::u16string units;
  for (; *text != 0; ++text) {
    units += static_cast<char16_t>(*text);
  }
  return units;
}

}  // namespace kqsupt::tests
