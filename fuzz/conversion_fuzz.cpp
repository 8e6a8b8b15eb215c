// Text from one encoding to the other, against a model that takes one code point at a time.

#include <string>

#include "exact_input.h"
#include "kqsupt/text.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;

namespace {

// What a text is converted to, without a terminator; `ok` tells whether all of it is.
template <class Text>
struct Converted {
  Text text;
  bool ok = true;
};

Converted<std::u16string> model_of_utf8(const char* text) {
  Converted<std::u16string> converted;
  while (*text != '\0') {
    const auto lead = static_cast<uint8_t>(*text++);
    int more = 0;
    while (more < 8 && (lead & 0x80 >> more) != 0) {
      ++more;
    }
    if (more == 1 || more > 6) {
      return {{}, false};
    }
    uint32_t code_point = more == 0 ? lead : lead & (0x7FU >> more);
    for (int i = 1; i < more; ++i) {
      if (*text == '\0') {
        return {{}, false};
      }
      code_point = code_point << 6 | (static_cast<uint8_t>(*text++) & 0x3FU);
    }
    if (code_point >= 0x110000) {
      return {{}, false};
    }
    if (code_point < 0x10000) {
      converted.text += static_cast<char16_t>(code_point);
    } else {
      converted.text += static_cast<char16_t>(0xD800 | (code_point >> 10 & 0x3FF));
      converted.text += static_cast<char16_t>(0xDC00 | (code_point & 0x3FF));
    }
  }
  return converted;
}

Converted<std::string> model_of_ucs2(const ustring* text) {
  Converted<std::string> converted;
  for (const ustring* at = text; *at != 0; ++at) {
    uint32_t code_point = *at;
    if ((code_point & 0xF800) == 0xD800) {
      // Every surrogate stands for what is at the head of the text.
      code_point = text[0];
      if ((code_point & 0xFC00) == 0xD800 && (text[1] & 0xFC00) == 0xDC00) {
        code_point = 0x10000 + ((code_point & 0x3FF) << 10 | (text[1] & 0x3FFU));
      } else if ((code_point & 0xF800) == 0xD800) {
        return {{}, false};
      }
    }
    const auto tail = [&](uint32_t shift) {
      converted.text += static_cast<char>(0x80 | (code_point >> shift & 0x3F));
    };
    if (code_point < 0x80) {
      converted.text += static_cast<char>(code_point);
    } else if (code_point < 0x800) {
      converted.text += static_cast<char>(0xC0 | code_point >> 6);
      tail(0);
    } else if (code_point < 0x10000) {
      converted.text += static_cast<char>(0xE0 | code_point >> 12);
      tail(6);
      tail(0);
    } else {
      converted.text += static_cast<char>(0xF0 | code_point >> 18);
      tail(12);
      tail(6);
      tail(0);
    }
  }
  return converted;
}

// Converts with every capacity that matters, and compares with the model.
template <class Unit, class From, class Text>
void check(SMStatus (*convert)(Unit*, uint32_t*, const From*), const From* text,
           const Converted<Text>& model, uint32_t capacity) {
  const auto needed = static_cast<uint32_t>((model.text.size() + 1) * sizeof(Unit));
  uint32_t size = 77;
  const SMStatus status = convert(nullptr, &size, text);
  require((status == SM_STATUS_SUCCESS) == model.ok);
  require(size == (model.ok ? needed : 77));
  for (const uint32_t room : {needed, needed - 1, capacity}) {
    const std::unique_ptr<uint8_t[]> bytes(new uint8_t[room + sizeof(Unit)]);
    auto* const to = reinterpret_cast<Unit*>(bytes.get());
    size = room;
    const SMStatus converted = convert(to, &size, text);
    const bool fits = model.ok && needed <= room;
    require((converted == SM_STATUS_SUCCESS) == fits);
    require(size == (fits ? needed : room));
    if (fits) {
      require(std::memcmp(to, model.text.c_str(), needed) == 0);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const uint32_t capacity = input.byte();
  const auto utf8 = input.text();
  check<ustring>(SMUTF8StrToUCS2Str, utf8.get(), model_of_utf8(utf8.get()), capacity);

  const auto bytes = input.bytes();
  const size_t units = input.size() / sizeof(ustring);
  const std::unique_ptr<ustring[]> ucs2(new ustring[units + 1]);
  std::memcpy(ucs2.get(), bytes.get(), units * sizeof(ustring));
  ucs2[units] = 0;
  check<char>(SMUCS2StrToUTF8Str, ucs2.get(), model_of_ucs2(ucs2.get()), capacity);
  return 0;
}
