// Text, lists and addresses under failing allocations.

#include <algorithm>
#include <cstring>
#include <string>

#include "faults/sweep.h"
#include "kqsupt/config.h"
#include "kqsupt/net.h"
#include "kqsupt/text.h"

namespace kqsupt::tests {
namespace {

const Failures kNoMemory = {{SM_STATUS_NO_MEMORY, 0}};

SMStatus done(bool is_done) {
  return is_done ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
}

// A sized string that an append has to make larger. The appends report no failure: what tells is
// the length.
struct Utf8 {
  Utf8() {
    SMSSUTF8StrAlloc(&string, 4);
    SMSSUTF8StrCatUTF8Str(&string, "abc");
  }
  ~Utf8() { SMSSUTF8StrFree(&string); }
  [[nodiscard]] bool is(const char* text) const {
    return string.capacity >= std::strlen(text) + 1 && std::strcmp(string.content, text) == 0;
  }
  SMSSUTF8Str string{};
  ustring ucs2[3] = {'d', 'e', 0};
};

struct Ucs2 {
  Ucs2() {
    SMSSUCS2StrAlloc(&string, 8);
    SMSSUCS2StrCatUCS2Str(&string, abc);
  }
  ~Ucs2() { SMSSUCS2StrFree(&string); }
  ustring abc[4] = {'a', 'b', 'c', 0};
  SMSSUCS2Str string{};
};

struct NoString {
  ~NoString() {
    SMSSUTF8StrFree(&utf8);
    SMSSUCS2StrFree(&ucs2);
  }
  SMSSUTF8Str utf8{};
  SMSSUCS2Str ucs2{};
};

struct Text {
  ~Text() { SMFreeMem(made); }
  char* made = nullptr;
  char text[2000] = "untouched";
  uint32_t size = sizeof text;
  uint8_t bytes[64] = {};
  // More than the text that the escaper begins with has room for.
  Text() { std::fill_n(wide, 2000, ustring{0xE9}); }
  ustring wide[2001] = {};
  [[nodiscard]] bool unchanged() const {
    return made == nullptr && std::strcmp(text, "untouched") == 0;
  }
};

struct Address {
  uint32_t address = 77;
};

// What a call that runs out of memory for one of its texts makes: all up to that text.
struct Formatted {
  char text[16] = "untouched";
  int32_t stored = -1;
  ustring wide[3] = {0xE9, 'a', 0};

  [[nodiscard]] bool is(const char* expected) const {
    return std::strcmp(text, expected) == 0 &&
           stored == static_cast<int32_t>(std::strlen(expected));
  }
  [[nodiscard]] SMStatus status() const {
    return is("1\u00E9a2") ? SM_STATUS_SUCCESS
                           : (is("1") ? SM_STATUS_NO_MEMORY : SM_STATUS_UNSUCCESSFUL);
  }
};

int32_t format_list(Formatted& state, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int32_t stored = SMvsnprintf(state.text, sizeof state.text, format, args);
  va_end(args);
  return stored;
}

Row bytes_row(const std::string& name, const Failures& failures, SMStatus (*call)(Text&)) {
  return row<Text>(name, failures, call, [](Text& state) { return state.unchanged(); });
}

constexpr SMStatus kFailed = 0xFFFFFFFF;

}  // namespace

std::vector<Row> text_rows() {
  return {
      row<NoString>(
          "SMSSUTF8StrAlloc", kNoMemory,
          [](NoString& state) { return done(SMSSUTF8StrAlloc(&state.utf8, 10) != nullptr); },
          [](NoString& state) { return state.utf8.content == nullptr; }),
      row<NoString>(
          "SMSSUCS2StrAlloc", kNoMemory,
          [](NoString& state) { return done(SMSSUCS2StrAlloc(&state.ucs2, 10) != nullptr); },
          [](NoString& state) { return state.ucs2.content == nullptr; }),
      row<Utf8>(
          "SMSSUTF8StrCatUTF8Str", kNoMemory,
          [](Utf8& state) {
            SMSSUTF8StrCatUTF8Str(&state.string, "de");
            return done(state.is("abcde"));
          },
          [](Utf8& state) { return state.is("abc"); }),
      row<Utf8>(
          "SMSSUTF8StrCatUCS2Str", kNoMemory,
          [](Utf8& state) {
            SMSSUTF8StrCatUCS2Str(&state.string, state.ucs2);
            return done(state.is("abcde"));
          },
          [](Utf8& state) { return state.is("abc"); }),
      row<Utf8>(
          "SMSSUTF8StrNCatUTF8Str", kNoMemory,
          [](Utf8& state) {
            SMSSUTF8StrNCatUTF8Str(&state.string, "def", 2);
            return done(state.is("abcde"));
          },
          [](Utf8& state) { return state.is("abc"); }),
      row<Utf8>(
          "SMSSUTF8StrNCatUCS2Str", kNoMemory,
          [](Utf8& state) {
            SMSSUTF8StrNCatUCS2Str(&state.string, state.ucs2, 2);
            return done(state.is("abcde"));
          },
          [](Utf8& state) { return state.is("abc"); }),
      row<Ucs2>(
          "SMSSUCS2StrCatUCS2Str", kNoMemory,
          [](Ucs2& state) {
            SMSSUCS2StrCatUCS2Str(&state.string, state.abc);
            return done(state.string.length == 6);
          },
          [](Ucs2& state) { return state.string.length == 3 && state.string.content[3] == 0; }),
      row<Ucs2>(
          "SMSSUCS2StrCatUTF8Str", kNoMemory,
          [](Ucs2& state) {
            SMSSUCS2StrCatUTF8Str(&state.string, "de");
            return done(state.string.length == 5);
          },
          [](Ucs2& state) { return state.string.length == 3 && state.string.content[3] == 0; }),
      row<Ucs2>(
          "SMSSUCS2StrNCatUCS2Str", kNoMemory,
          [](Ucs2& state) {
            SMSSUCS2StrNCatUCS2Str(&state.string, state.abc, 2);
            return done(state.string.length == 5);
          },
          [](Ucs2& state) { return state.string.length == 3 && state.string.content[3] == 0; }),
      row<Ucs2>(
          "SMSSUCS2StrNCatUTF8Str", kNoMemory,
          [](Ucs2& state) {
            SMSSUCS2StrNCatUTF8Str(&state.string, "de", 2);
            return done(state.string.length == 5);
          },
          [](Ucs2& state) { return state.string.length == 3 && state.string.content[3] == 0; }),
      bytes_row("SMUTF8Strdup", kNoMemory,
                [](Text& state) {
                  state.made = SMUTF8Strdup("abc");
                  return done(state.made != nullptr);
                }),
      bytes_row("SMUCS2ToEscape", {{kFailed, 0}},
                [](Text& state) {
                  uint32_t size = 0;
                  const SMStatus status = SMUCS2ToEscape(state.text, &size, state.wide);
                  if (status != SM_STATUS_BUFFER_TOO_SMALL) {
                    return status;
                  }
                  return done(size == 12001 && state.unchanged());
                }),
      row<Formatted>(
          "SMsnprintf", kNoMemory,
          [](Formatted& state) {
            state.stored = SMsnprintf(state.text, sizeof state.text, "%d%S%d", 1, state.wide, 2);
            return state.status();
          },
          [](Formatted& state) { return state.is("1"); }),
      row<Formatted>(
          "SMvsnprintf", kNoMemory,
          [](Formatted& state) {
            state.stored = format_list(state, "%d%S%d", 1, state.wide, 2);
            return state.status();
          },
          [](Formatted& state) { return state.is("1"); }),
      bytes_row("SMXLTTypeValueToUTF8_dump", {{kFailed, 0}},
                [](Text& state) {
                  // More than the text that such a dump begins with has room for.
                  static const uint8_t kMany[600] = {};
                  uint32_t size = 0;
                  const SMStatus status = SMXLTTypeValueToUTF8(kMany, sizeof kMany, nullptr, &size,
                                                               SMXLT_TYPE_BINARY | SMXLT_FMT_BASE2);
                  if (status != SM_STATUS_BUFFER_TOO_SMALL) {
                    return status;
                  }
                  return done(size == 81 * 38 + 1 && state.unchanged());
                }),
      bytes_row("SMXLTTypeValueToUTF8_pairs", {{kFailed, 0}},
                [](Text& state) {
                  state.size = sizeof state.text;
                  return SMXLTTypeValueToUTF8(state.bytes, 64, state.text, &state.size,
                                              SMXLT_TYPE_BINARY);
                }),
      bytes_row("SMXLTTypeValueToUTF8_list", {{kFailed, 0}},
                [](Text& state) {
                  state.size = sizeof state.text;
                  return SMXLTTypeValueToUTF8(state.bytes, 64, state.text, &state.size,
                                              SMXLT_TYPE_BINARY | SMXLT_FMT_HEX);
                }),
      bytes_row("SMXLTTypeValueToUTF8_hex_bytes", kNoMemory,
                [](Text& state) {
                  state.size = sizeof state.text;
                  return SMXLTTypeValueToUTF8(state.bytes, 64, state.text, &state.size,
                                              SMXLT_TYPE_HEX_BYTES);
                }),
      bytes_row("SMUTF8ConvertXSVToYSV_split", kNoMemory,
                [](Text& state) {
                  state.made = SMUTF8ConvertXSVToYSV("a,b", ',', ';', nullptr, nullptr);
                  return done(state.made != nullptr);
                }),
      bytes_row("SMUTF8ConvertXSVToYSV_join", kNoMemory,
                [](Text& state) {
                  state.made = SMUTF8ConvertXSVToYSV("a\0b\0", '\0', ';', nullptr, nullptr);
                  return done(state.made != nullptr);
                }),
      bytes_row("SMNVPGetEnums32Value", kNoMemory,
                [](Text&) {
                  static const SMEnums32 kTable[] = {{"?", 0, 0}, {"a", 1, 0}, {"b", 2, 0}};
                  static char parameter[] = "p=a|b";
                  char* const parameters[] = {parameter};
                  return done(SMNVPGetEnums32Value(1, parameters, "p", 0, kTable, 3, 1) == 3);
                }),
      row<Address>(
          "SMIPAddrASCIIToNetwork", kNoMemory,
          [](Address& state) { return SMIPAddrASCIIToNetwork("1.2.3.4", &state.address); },
          [](Address& state) { return state.address == 77; }),
      row<Address>(
          "SMXLTUTF8ToTypeValue_address", kNoMemory,
          [](Address& state) {
            uint32_t size = sizeof state.address;
            return SMXLTUTF8ToTypeValue("1.2.3.4", &state.address, &size, SMXLT_TYPE_IPV4);
          },
          [](Address& state) { return state.address == 77; }),
      row<Address>(
          "SMNVPUTF8ToTypeValue_address", kNoMemory,
          [](Address& state) {
            static char parameter[] = "p=1.2.3.4";
            char* const parameters[] = {parameter};
            uint32_t size = sizeof state.address;
            return SMNVPUTF8ToTypeValue(1, parameters, "p", 0, &state.address, &size,
                                        SMXLT_TYPE_IPV4);
          },
          [](Address& state) { return state.address == 77; }),
  };
}

}  // namespace kqsupt::tests
