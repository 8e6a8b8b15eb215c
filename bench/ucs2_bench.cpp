// UCS-2 text: searches and conversions, through the exported functions.

#include "ucs2_bench.h"

#include <kqsupt/text.h>

#include "ratio_table.h"

namespace kqbench {
namespace {

void append(ConvertedText& text, uint32_t code_point) {
  text.ucs2 += static_cast<char16_t>(code_point);
  if (code_point < 0x80) {
    text.utf8 += static_cast<char>(code_point);
  } else if (code_point < 0x800) {
    text.utf8 += static_cast<char>(0xC0 | code_point >> 6);
    text.utf8 += static_cast<char>(0x80 | (code_point & 0x3F));
  } else {
    text.utf8 += static_cast<char>(0xE0 | code_point >> 12);
    text.utf8 += static_cast<char>(0x80 | (code_point >> 6 & 0x3F));
    text.utf8 += static_cast<char>(0x80 | (code_point & 0x3F));
  }
}

template <class Draw>
std::vector<ConvertedText> fresh_texts_of(size_t bytes, Draw draw) {
  std::vector<ConvertedText> texts(kTexts);
  for (ConvertedText& text : texts) {
    while (text.utf8.size() + 3 <= bytes) {
      append(text, draw());
    }
  }
  return texts;
}

uint32_t ascii() {
  return fresh().between(0x20, 0x7E);
}
// A letter in five has an accent.
uint32_t latin() {
  return fresh().between(0, 4) == 0 ? fresh().between(0xC0, 0x17F) : fresh().between('a', 'z');
}
uint32_t cjk() {
  return fresh().between(0x4E00, 0x9FFF);
}

const ustring* units(const std::u16string& text) {
  return reinterpret_cast<const ustring*>(text.c_str());
}

void from_utf8(const ConvertedText& text) {
  uint32_t size = sizeof ucs2_room;
  require(SMUTF8StrToUCS2Str(reinterpret_cast<ustring*>(ucs2_room.data()), &size,
                             text.utf8.c_str()) == SM_STATUS_SUCCESS);
  benchmark::DoNotOptimize(ucs2_room);
}

void to_utf8(const ConvertedText& text) {
  uint32_t size = sizeof utf8_room;
  require(SMUCS2StrToUTF8Str(utf8_room.data(), &size, units(text.ucs2)) == SM_STATUS_SUCCESS);
  benchmark::DoNotOptimize(utf8_room);
}

}  // namespace

const std::vector<Script>& scripts() {
  static const std::vector<Script> all = {
      {"4 KiB of ASCII", kOnce, 0.15, [] { return fresh_texts_of(kTextBytes, ascii); }},
      {"4 KiB of Latin", kOnce, 0.6, [] { return fresh_texts_of(kTextBytes, latin); }},
      {"4 KiB of CJK", kOnce, 0.6, [] { return fresh_texts_of(kTextBytes, cjk); }},
      {"24 bytes of ASCII", kRounds, 0.6, [] { return fresh_texts_of(26, ascii); }},
      {"24 bytes of Latin", kRounds, 0.6, [] { return fresh_texts_of(26, latin); }},
  };
  return all;
}

std::vector<std::u16string> fresh_strings(const Length& length) {
  std::vector<std::u16string> strings(kTexts);
  for (std::u16string& string : strings) {
    string.resize(
        fresh().between(static_cast<uint32_t>(length.least), static_cast<uint32_t>(length.most)));
    for (char16_t& unit : string) {
      unit = static_cast<char16_t>(fresh().between('a', 'z'));
    }
    constexpr size_t kNeedleLength = std::size(kNeedle) - 1;
    if (string.size() > 2 * kNeedleLength) {
      string.replace(string.size() - kNeedleLength, kNeedleLength, kNeedle);
    }
  }
  return strings;
}

namespace {

const bool kAdded = [] {
  std::vector<Row> rows;
  for (const Script& script : scripts()) {
    for (const std::string& row : {row_from_utf8(script), row_to_utf8(script)}) {
      rows.push_back({row, row, script.target, "ICU"});
    }
    add_conversion(row_from_utf8(script), kOurs, script, from_utf8);
    add_conversion(row_to_utf8(script), kOurs, script, to_utf8);
  }
  for (const Length& length : kLengths) {
    for (const char* operation : {"strlen", "strchr"}) {
      const std::string row = row_of(operation, length);
      rows.push_back({row, row + " units", length.target, "ICU"});
    }
    add_search(row_of("strlen", length), kOurs, length, [](const std::u16string& string) {
      require(SMUCS2Strlen(units(string)) == string.size());
    });
    add_search(row_of("strchr", length), kOurs, length, [](const std::u16string& string) {
      require(SMUCS2Strchr(units(string), kAbsent) == nullptr);
    });
  }
  for (const Length& length : kLengthsOfStrstr) {
    const std::string row = row_of("strstr", length);
    rows.push_back({row, row + " units, at the end", length.target, "ICU"});
    add_search(row, kOurs, length, [](const std::u16string& string) {
      require(SMUCS2Strstr(units(string), reinterpret_cast<const ustring*>(kNeedle)) != nullptr);
    });
  }
  add_family({"UCS-2 text", {"ICU", "iconv"}, rows});
  return true;
}();

}  // namespace
}  // namespace kqbench
