// What the measurements of UCS-2 text and of conversions share: the texts, and the rows they are in.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "measure.h"

namespace kqbench {

inline constexpr size_t kTexts = 64;  // of an iteration, each different
// How often an iteration takes them in turn: short ones so often that looking at the clock does not
// count.
inline constexpr size_t kOnce = 1;
inline constexpr size_t kRounds = 16;
inline constexpr size_t kTextBytes = 4096;  // of each long text to be converted, in UTF-8

// ---- Conversions ----

// A text in both encodings, and room for what it is converted to.
struct ConvertedText {
  std::string utf8;
  std::u16string ucs2;
};

struct Script {
  const char* name;
  size_t rounds;
  double target;
  std::vector<ConvertedText> (*fresh)();
};

[[nodiscard]] const std::vector<Script>& scripts();

inline std::string row_from_utf8(const Script& script) {
  return std::string("from UTF-8/") + script.name;
}
inline std::string row_to_utf8(const Script& script) {
  return std::string("to UTF-8/") + script.name;
}

inline std::array<char16_t, 2 * kTextBytes> ucs2_room;
inline std::array<char, 4 * kTextBytes> utf8_room;

// Enters a contestant in a row: `convert(text)` is one operation.
template <class Convert>
void add_conversion(const std::string& row, const char* contestant, const Script& script,
                    Convert convert) {
  add_measurement(row, contestant, script.rounds * kTexts, script.fresh,
                  [=](const std::vector<ConvertedText>& texts) {
                    for (size_t round = 0; round < script.rounds; ++round) {
                      for (const ConvertedText& text : texts) {
                        convert(text);
                      }
                    }
                  });
}

// ---- Searches ----

struct Length {
  const char* name;
  size_t rounds;
  size_t least;
  size_t most;
  double target;
};
inline constexpr Length kLengths[] = {{"4 to 64", kRounds, 4, 64, 0.6},
                                      {"16 K", kOnce, 16384, 16384, 0.15}};
inline constexpr Length kLengthsOfStrstr[] = {{"256", kOnce, 256, 256, 0.35},
                                              {"16 K", kOnce, 16384, 16384, 0.35}};

[[nodiscard]] std::vector<std::u16string> fresh_strings(const Length& length);

inline std::string row_of(const char* operation, const Length& length) {
  return std::string(operation) + "/" + length.name;
}

template <class Search>
void add_search(const std::string& row, const char* contestant, const Length& length,
                Search search) {
  add_measurement(
      row, contestant, length.rounds * kTexts, [=] { return fresh_strings(length); },
      [=](const std::vector<std::u16string>& strings) {
        for (size_t round = 0; round < length.rounds; ++round) {
          for (const std::u16string& string : strings) {
            search(string);
          }
        }
      });
}

// What the searches look for: a unit that stands in no string, and eight that end each one.
inline constexpr char16_t kAbsent = 0x2603;
inline constexpr char16_t kNeedle[] = u"needle.!";

}  // namespace kqbench
