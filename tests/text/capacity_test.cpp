// Converters, typed values and parameters whose every argument ends at an inaccessible page, at every
// capacity from none to one more than needed.

#include <strings.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/text.h"
#include "support/guarded.h"
#include "support/ucs2.h"

namespace {

using namespace kqsupt::tests;

// ---- A model of the converters

// What a conversion into so many units comes to: its status, and what it has written by then.
template <class Unit>
struct Converted {
  SMStatus status = SM_STATUS_SUCCESS;
  std::vector<Unit> written{};

  bool put(const std::vector<Unit>& units, size_t room) {
    if (room - written.size() < units.size()) {
      status = SM_STATUS_BUFFER_TOO_SMALL;
      return false;
    }
    written.insert(written.end(), units.begin(), units.end());
    return true;
  }
};

Converted<ustring> ucs2_model(const std::string& text, size_t room) {
  Converted<ustring> result;
  for (size_t at = 0; at < text.size();) {
    const auto lead = static_cast<uint8_t>(text[at]);
    size_t length = 1;
    while (length < 7 && lead >= 0x80 && (lead << length & 0x80) != 0) {
      ++length;
    }
    const bool is_lead = lead < 0x80 || (length >= 2 && length <= 6);
    if (!is_lead || at + length > text.size()) {
      result.status = SM_STATUS_OPERATION_FAILED;
      return result;
    }
    uint32_t point = length == 1 ? lead : lead & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
      point = point << 6 | (static_cast<uint8_t>(text[at + i]) & 0x3F);
    }
    at += length;
    if (point >= 0x110000) {
      result.status = SM_STATUS_OPERATION_FAILED;
      return result;
    }
    std::vector<ustring> units{static_cast<ustring>(point)};
    if (point >= 0x10000) {
      units = {static_cast<ustring>(0xD800 | (point >> 10 & 0x3FF)),
               static_cast<ustring>(0xDC00 | (point & 0x3FF))};
    }
    if (!result.put(units, room)) {
      return result;
    }
  }
  result.put({0}, room);
  return result;
}

// The code point that stands for every surrogate of a text; none when it begins with half a pair.
std::optional<uint32_t> head_point(const std::vector<ustring>& text) {
  const uint32_t first = text[0];
  if ((first & 0xF800) != 0xD800) {
    return first;
  }
  const uint32_t second = text[1];
  if (first >= 0xDC00 || (second & 0xFC00) != 0xDC00) {
    return {};
  }
  return 0x10000 + ((first & 0x3FF) << 10 | (second & 0x3FF));
}

// `text` with its terminator.
Converted<char> utf8_model(const std::vector<ustring>& text, size_t room) {
  Converted<char> result;
  for (const ustring unit : text) {
    std::optional<uint32_t> point = unit;
    if ((unit & 0xF800) == 0xD800) {
      point = head_point(text);
    }
    if (!point) {
      result.status = SM_STATUS_OPERATION_FAILED;
      return result;
    }
    const uint32_t value = *point;
    const int followers = value < 0x80 ? 0 : value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
    constexpr uint32_t kLeads[] = {0x00, 0xC0, 0xE0, 0xF0};
    std::vector<char> bytes{static_cast<char>(kLeads[followers] | value >> 6 * followers)};
    for (int i = followers - 1; i >= 0; --i) {
      bytes.push_back(static_cast<char>(0x80 | (value >> 6 * i & 0x3F)));
    }
    if (!result.put(bytes, room)) {
      return result;
    }
  }
  return result;
}

// ---- Both converters, and the typed values that stand on them

void expect_ucs2_at_every_capacity(const std::string& text) {
  const Guarded<char> src(text.c_str(), text.size() + 1);
  const Converted<ustring> whole = ucs2_model(text, 4 * text.size() + 4);
  const auto needed = static_cast<uint32_t>(2 * whole.written.size());
  const bool is_text = whole.status == SM_STATUS_SUCCESS;
  uint32_t size = 77;
  ASSERT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, src.data()), whole.status);
  ASSERT_EQ(size, is_text ? needed : 77);
  size = 0;
  ASSERT_EQ(SMXLTUTF8ToTypeValue(src.data(), nullptr, &size, SMXLT_TYPE_UCS2), whole.status);
  ASSERT_EQ(size, is_text ? needed : 0);
  // Of malformed text `needed` is what comes before the fault: a fault beyond the room is not seen.
  for (uint32_t capacity = 0; capacity <= needed + 3; ++capacity) {
    const Converted<ustring> expected = ucs2_model(text, capacity / 2);
    const uint32_t left = expected.status == SM_STATUS_SUCCESS ? needed : capacity;
    const Guarded<ustring> dst(capacity / 2);
    size = capacity;
    ASSERT_EQ(SMUTF8StrToUCS2Str(dst.data(), &size, src.data()), expected.status) << capacity;
    ASSERT_EQ(size, left) << capacity;
    ASSERT_TRUE(std::equal(expected.written.begin(), expected.written.end(), dst.data()));
    const Guarded<ustring> value(capacity / 2);
    size = capacity;
    ASSERT_EQ(SMXLTUTF8ToTypeValue(src.data(), value.data(), &size, SMXLT_TYPE_UCS2),
              expected.status);
    ASSERT_EQ(size, left);
    ASSERT_TRUE(std::equal(expected.written.begin(), expected.written.end(), value.data()));
  }
}

// `text` without its terminator.
void expect_utf8_at_every_capacity(std::vector<ustring> text) {
  text.push_back(0);
  const Guarded<ustring> src(text.data(), text.size());
  const auto src_size = static_cast<uint32_t>(2 * text.size());
  const Converted<char> whole = utf8_model(text, 4 * text.size());
  const auto needed = static_cast<uint32_t>(whole.written.size());
  const bool is_text = whole.status == SM_STATUS_SUCCESS;
  uint32_t size = 77;
  ASSERT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, src.data()), whole.status);
  ASSERT_EQ(size, is_text ? needed : 77);
  size = 77;
  ASSERT_EQ(SMXLTTypeValueToUTF8(src.data(), src_size, nullptr, &size, SMXLT_TYPE_UCS2),
            whole.status);
  ASSERT_EQ(size, is_text ? needed : 77);
  for (uint32_t capacity = 0; capacity <= needed + 1; ++capacity) {
    const Converted<char> expected = utf8_model(text, capacity);
    const uint32_t left = expected.status == SM_STATUS_SUCCESS ? needed : capacity;
    const Guarded<char> dst(capacity);
    size = capacity;
    ASSERT_EQ(SMUCS2StrToUTF8Str(dst.data(), &size, src.data()), expected.status) << capacity;
    ASSERT_EQ(size, left) << capacity;
    ASSERT_TRUE(std::equal(expected.written.begin(), expected.written.end(), dst.data()));
    const Guarded<char> written(capacity);
    size = capacity;
    ASSERT_EQ(SMXLTTypeValueToUTF8(src.data(), src_size, written.data(), &size, SMXLT_TYPE_UCS2),
              expected.status);
    ASSERT_EQ(size, left);
    ASSERT_TRUE(std::equal(expected.written.begin(), expected.written.end(), written.data()));
  }
}

// Plain text long enough for the wide steps, to go before and behind what is malformed.
const std::vector<std::string> kPlain = {"",
                                         "a",
                                         "abcdefg",
                                         "0123456789abcdef0123456789abcdef!",
                                         "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC",
                                         "\xE4\xB8\xAD\xE6\x96\x87"};

TEST(CapacityOfUcs2, WellFormedTextIsBounded) {
  for (const std::string& first : kPlain) {
    for (const std::string& second : kPlain) {
      expect_ucs2_at_every_capacity(first + second);
      expect_ucs2_at_every_capacity(first + "\xF0\x9F\x98\x80" + second);
    }
  }
}

TEST(CapacityOfUcs2, MalformedTextIsBounded) {
  for (const char* malformed :
       {// cut off
        "\xC3", "\xE2", "\xE2\x82", "\xF0", "\xF0\x9F", "\xF0\x9F\x98", "\xF8\x88\x80\x80", "\xFC",
        "\xFC\x84\x80\x80\x80",
        // over-long
        "\xC1\x81", "\xE0\x81\x81", "\xF0\x80\x81\x81", "\xF8\x80\x80\x81\x81",
        "\xFC\x80\x80\x80\x81\x81", "\xC0\x80",
        // surrogates: each alone, a pair, and one the wrong way round
        "\xED\xA0\xBD", "\xED\xB8\x80", "\xED\xA0\xBD\xED\xB8\x80", "\xED\xB8\x80\xED\xA0\xBD",
        // five and six bytes, and beyond the last code point
        "\xF8\x88\x80\x80\x80", "\xFB\xBF\xBF\xBF\xBF", "\xFC\x84\x80\x80\x80\x80",
        "\xFD\xBF\xBF\xBF\xBF\xBF", "\xF4\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF7\xBF\xBF\xBF",
        // no lead at all, and followers that are none
        "\x80", "\xBF", "\xFE", "\xFF", "\xC3(", "\xE2\x82z", "\xF0zzz"}) {
    for (const std::string& first : kPlain) {
      for (const char* second : {"", "z", "0123456789abcdef"}) {
        expect_ucs2_at_every_capacity(first + malformed + second);
      }
    }
  }
}

TEST(CapacityOfUcs2, RandomBytesAreBounded) {
  std::mt19937 random(3);
  for (int i = 0; i < 1500 && !testing::Test::HasFatalFailure(); ++i) {
    std::string text(random() % 24, '\0');
    for (char& byte : text) {
      // Leads and followers are as frequent as plain bytes.
      const auto any = static_cast<uint8_t>(1 + random() % 255);
      byte = static_cast<char>(random() % 2 == 0 ? 1 + any % 127 : any);
    }
    expect_ucs2_at_every_capacity(text);
  }
}

TEST(CapacityOfUtf8, EveryKindOfUnitIsBounded) {
  for (const char16_t* text :
       {u"", u"a", u"0123456789abcdef0123456789abcdef!", u"\xE9\x7FF\x800\xFFFF",
        u"abcdefgh\xE9 abcdefgh\x20AC", u"\x4E2D\x6587\x4E2D\x6587\x4E2D\x6587\x4E2D\x6587",
        // pairs at the head and elsewhere, halves of them, and the wrong way round
        u"\xD83D\xDE00", u"\xD83D\xDE00 a\xD800 b\xDC00", u"ab\xD83D\xDE00", u"\xE9\xDC00\xD800",
        u"abcdefghijklmnop\xDC00", u"\xD83D", u"\xD83Dx", u"\xDE00\xD83D", u"\xDC00",
        u"\xD83D\xD83D", u"\xD83D\xDE00\xDE00\xD83D"}) {
    const std::u16string units = text;
    expect_utf8_at_every_capacity({units.begin(), units.end()});
  }
}

TEST(CapacityOfUtf8, RandomUnitsAreBounded) {
  std::mt19937 random(4);
  for (int i = 0; i < 1500 && !testing::Test::HasFatalFailure(); ++i) {
    std::vector<ustring> text(random() % 24);
    for (ustring& unit : text) {
      constexpr uint32_t kBits[] = {7, 7, 7, 11, 16};
      unit = static_cast<ustring>(1 + random() % ((1U << kBits[random() % 5]) - 1));
      if (random() % 12 == 0) {
        unit = static_cast<ustring>(0xD800 | random() % 0x800);
      }
    }
    expect_utf8_at_every_capacity(text);
  }
}

// ---- Bytes as text and back

std::string pairs_of(const std::vector<uint8_t>& bytes, const char* before, const char* between) {
  std::string text;
  for (const uint8_t byte : bytes) {
    text += text.empty() ? before : std::string(between) + before;
    text += "0123456789ABCDEF"[byte >> 4];
    text += "0123456789ABCDEF"[byte & 15];
  }
  return text;
}

std::vector<uint8_t> some_bytes(size_t count) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < count; ++i) {
    bytes.push_back(static_cast<uint8_t>(i * 37 + 11));
  }
  return bytes;
}

void expect_bytes_at_every_capacity(const std::string& text, uint32_t type,
                                    const std::vector<uint8_t>& expected) {
  const Guarded<char> src(text.c_str(), text.size() + 1);
  const auto needed = static_cast<uint32_t>(expected.size());
  for (uint32_t capacity = 0; capacity <= needed + 1; ++capacity) {
    const Guarded<uint8_t> value(capacity);
    uint32_t size = capacity;
    const SMStatus status = SMXLTUTF8ToTypeValue(src.data(), value.data(), &size, type);
    ASSERT_EQ(size, needed) << text;
    if (capacity < needed) {
      ASSERT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL) << text;
      ASSERT_EQ(std::count(value.data(), value.end(), 0x55), capacity) << "untouched";
    } else {
      ASSERT_EQ(status, SM_STATUS_SUCCESS) << text;
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), value.data())) << text;
    }
  }
}

TEST(CapacityOfBytes, ReadingIsBounded) {
  for (const size_t count : {0, 1, 2, 15, 16, 17, 63, 64, 65}) {
    const std::vector<uint8_t> bytes = some_bytes(count);
    const std::string pairs = pairs_of(bytes, "", "");
    expect_bytes_at_every_capacity(pairs, SMXLT_TYPE_BINARY, bytes);
    expect_bytes_at_every_capacity(pairs, SMXLT_TYPE_HEX_BYTES, bytes);
    std::vector<uint8_t> odd = bytes;
    odd.push_back(7);
    expect_bytes_at_every_capacity(pairs + "7", SMXLT_TYPE_HEX_BYTES, odd);
    if (count != 0) {
      expect_bytes_at_every_capacity(pairs_of(bytes, "0x", ","), SMXLT_TYPE_BINARY | SMXLT_FMT_HEX,
                                     bytes);
    }
  }
}

TEST(CapacityOfBytes, MalformedListsAreReadToTheirEndOnly) {
  const std::string list = pairs_of(some_bytes(4), "0x", ",");
  for (size_t length = 0; length < list.size(); ++length) {
    const std::string cut = list.substr(0, length);
    const Guarded<char> src(cut.c_str(), length + 1);
    for (uint32_t capacity = 0; capacity <= 5; ++capacity) {
      const Guarded<uint8_t> value(capacity);
      uint32_t size = capacity;
      SMXLTUTF8ToTypeValue(src.data(), value.data(), &size, SMXLT_TYPE_BINARY | SMXLT_FMT_HEX);
    }
  }
}

TEST(CapacityOfBytes, WritingIsBounded) {
  for (const size_t count : {0, 1, 2, 15, 16, 17, 33}) {
    const std::vector<uint8_t> bytes = some_bytes(count);
    const Guarded<uint8_t> src(bytes.data(), count);
    const auto src_size = static_cast<uint32_t>(count);
    const std::pair<uint32_t, size_t> kinds[] = {
        {SMXLT_TYPE_BINARY, 2 * count},
        {SMXLT_TYPE_BINARY | SMXLT_FMT_HEX, count == 0 ? 0 : 5 * count - 1},
        {SMXLT_TYPE_BINARY | SMXLT_FMT_BASE2, (count + 15) / 16 * 81}};
    for (const auto& [type, length] : kinds) {
      const auto needed = static_cast<uint32_t>(length + 1);
      for (uint32_t capacity = 0; capacity <= needed + 1; ++capacity) {
        const Guarded<char> text(capacity);
        uint32_t size = capacity;
        const SMStatus status =
            SMXLTTypeValueToUTF8(src.data(), src_size, text.data(), &size, type);
        ASSERT_EQ(size, needed) << type;
        if (capacity < needed) {
          ASSERT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL) << type;
          ASSERT_EQ(std::count(text.data(), text.end(), 0x55), capacity) << "untouched";
        } else {
          ASSERT_EQ(status, SM_STATUS_SUCCESS) << type;
          ASSERT_EQ(std::strlen(text.data()), length) << type;
        }
      }
    }
  }
}

TEST(CapacityOfBytes, WritingHexBytesIsBounded) {
  for (const size_t count : {0, 1, 2, 31, 62, 63, 64, 70}) {
    const std::vector<uint8_t> bytes = some_bytes(count);
    const Guarded<uint8_t> src(bytes.data(), count);
    const std::string expected = pairs_of(some_bytes(std::min<size_t>(count, 63)), "", "");
    const auto needed = static_cast<uint32_t>(expected.size() + 1);
    for (uint32_t capacity = 0; capacity <= needed + 1; ++capacity) {
      const Guarded<char> text(capacity);
      if (capacity >= 4) {
        std::strcpy(text.data(), "old");
      }
      uint32_t size = capacity;
      ASSERT_EQ(SMXLTTypeValueToUTF8(src.data(), static_cast<uint32_t>(count), text.data(), &size,
                                     SMXLT_TYPE_HEX_BYTES),
                SM_STATUS_SUCCESS);
      if (capacity >= needed) {
        ASSERT_EQ(size, needed);
        ASSERT_STREQ(text.data(), expected.c_str());
      } else if (capacity >= 4) {
        ASSERT_EQ(size, 4U);
        ASSERT_STREQ(text.data(), "old");
      }
    }
  }
}

// ---- Parameters

// One parameter, in a list of one.
struct Parameter {
  explicit Parameter(const std::string& content)
      : text(content.c_str(), content.size() + 1), list(1) {
    *list.data() = text.data();
  }
  Guarded<char> text;
  Guarded<char*> list;
};

TEST(CapacityOfParameters, ReadingIsBounded) {
  struct Case {
    const char* value;
    uint32_t type;
    uint32_t needed;
  };
  constexpr Case kCases[] = {{"true", SMXLT_TYPE_BOOLEAN, 2},
                             {"-7", SMXLT_TYPE_S8, 1},
                             {"513", SMXLT_TYPE_U16, 2},
                             {"1F", SMXLT_TYPE_U32 | SMXLT_FMT_HEX, 4},
                             {"17", SMXLT_TYPE_S64, 8},
                             {"2.5", SMXLT_TYPE_DOUBLE, 8},
                             {"de", SMXLT_TYPE_LANGUAGE_ID, 4},
                             {"0AFF10", SMXLT_TYPE_BINARY, 3},
                             {"0x0A,0xFF", SMXLT_TYPE_BINARY | SMXLT_FMT_HEX, 2},
                             {"text", SMXLT_TYPE_UTF8, 5},
                             {"", SMXLT_TYPE_UTF8, 1},
                             {"10.0.0.1", SMXLT_TYPE_IPV4, 4},
                             {"0AFF10", SMXLT_TYPE_HEX_BYTES, 3}};
  const Guarded<char> name("name", 5);
  for (const Case& c : kCases) {
    const Parameter parameter(std::string("name=") + c.value);
    for (uint32_t capacity = 0; capacity <= c.needed + 1; ++capacity) {
      const Guarded<uint8_t> value(capacity);
      uint32_t size = capacity;
      const SMStatus status = SMNVPUTF8ToTypeValue(1, parameter.list.data(), name.data(), 0,
                                                   value.data(), &size, c.type);
      EXPECT_EQ(size, c.needed) << c.value;
      EXPECT_EQ(status, capacity < c.needed ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS)
          << c.value;
      if (capacity < c.needed) {
        EXPECT_EQ(std::count(value.data(), value.end(), 0x55), capacity) << "untouched";
      }
    }
  }
}

TEST(CapacityOfParameters, ReadingUcs2IsBounded) {
  const Guarded<char> name("n", 2);
  const Parameter parameter("n=\xC3\xA9t\xC3\xA9");
  for (uint32_t capacity = 0; capacity <= 10; ++capacity) {
    const Guarded<ustring> value(capacity / 2);
    uint32_t size = capacity;
    EXPECT_EQ(SMNVPUTF8ToTypeValue(1, parameter.list.data(), name.data(), 0, value.data(), &size,
                                   SMXLT_TYPE_UCS2),
              capacity < 8 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS);
    EXPECT_EQ(size, std::min(capacity, 8U));
  }
}

// Each name with each text; what is found is what a search for "=" finds.
TEST(CapacityOfParameters, SearchesEndWithTheirTexts) {
  const std::string texts[] = {"",       "=",      "a",       "a=",        "=a",
                               "ab",     "ab=",    "a=b",     "name=v",    "NAME=v=",
                               "name",   "nam=",   "names=v", "name=\xC3", "\xC3",
                               "\xC3=v", "=name=", "name==v", "n=name",    "0123456789abcdef="};
  for (const std::string& text : texts) {
    const Parameter parameter(text);
    const size_t sign = text.find('=');
    const bool is_parameter = sign != std::string::npos && sign != 0;
    ASSERT_EQ(SMIsValidParam(parameter.text.data()), is_parameter ? 1U : 0U) << text;
    char* const value = is_parameter ? parameter.text.data() + sign + 1 : nullptr;
    ASSERT_EQ(SMNVPGetUTF8ParamValue(parameter.text.data()), value) << text;
    for (const std::string& wanted : texts) {
      const Guarded<char> name(wanted.c_str(), wanted.size() + 1);
      for (const uint32_t ignore_case : {0U, 1U}) {
        const std::string has = text.substr(0, is_parameter ? sign : 0);
        const bool found =
            is_parameter &&
            (ignore_case == 1 ? strcasecmp(has.c_str(), wanted.c_str()) == 0 : has == wanted);
        ASSERT_EQ(SMNVPGetParamIndexByUTF8Name(1, parameter.list.data(), name.data(), ignore_case),
                  found ? 0 : -1)
            << text << " and " << wanted;
        ASSERT_EQ(
            SMNVPGetUTF8ParamValueByUTF8Name(1, parameter.list.data(), name.data(), ignore_case),
            found ? value : nullptr)
            << text << " and " << wanted;
      }
    }
    const Parameter copy(text);
    ASSERT_EQ(SMNVPGetUTF8ParamName(copy.text.data()), is_parameter ? copy.text.data() : nullptr);
    ASSERT_EQ(copy.text.data(), text.substr(0, is_parameter ? sign : text.size())) << text;
  }
}

TEST(CapacityOfParameters, EnumsEndWithTheirTextsAndTable) {
  const Guarded<char> red("red", 4);
  const Guarded<char> green("green", 6);
  const SMEnums32 entries[] = {{"?", 0xFF, 0}, {red.data(), 1, 0}, {green.data(), 2, 0}};
  const Guarded<SMEnums32> table(entries, 3);
  const Guarded<char> name("c", 2);
  struct Case {
    const char* value;
    uint32_t one;
    uint32_t many;
  };
  for (const Case& c : {Case{"red", 1, 1}, Case{"re", 0xFF, 0}, Case{"reds", 0xFF, 0},
                        Case{"", 0xFF, 0}, Case{"red|green", 0xFF, 3}, Case{"red,", 0xFF, 1},
                        Case{"|GREEN|", 0xFF, 2}, Case{"gree,red", 0xFF, 1}, Case{"|", 0xFF, 0}}) {
    const Parameter parameter(std::string("c=") + c.value);
    EXPECT_EQ(SMNVPGetEnums32Value(1, parameter.list.data(), name.data(), 0, table.data(), 3, 0),
              c.one)
        << c.value;
    EXPECT_EQ(SMNVPGetEnums32Value(1, parameter.list.data(), name.data(), 0, table.data(), 3, 1),
              c.many)
        << c.value;
  }
}

}  // namespace
