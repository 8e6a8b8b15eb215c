// Escaping what is not printable ASCII.

#include "text/escape.h"

#include <cstring>

#include "text/text_builder.h"

namespace kqsupt::text {
namespace {

constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr uint32_t kInitialCapacity = 6144;

[[nodiscard]] bool append_unit(TextBuilder& text, ustring unit) {
  switch (unit) {
    case '\\':
      return text.append("\\\\");
    case '\t':
      return text.append("\\t");
    case '\n':
      return text.append("\\n");
    case '\r':
      return text.append("\\r");
    default:
      break;
  }
  if (unit >= 0x20 && unit <= 0x7F) {
    return text.append(static_cast<char>(unit));
  }
  constexpr char kDigits[] = "0123456789abcdef";
  const char escaped[] = {'\\',
                          'u',
                          kDigits[unit >> 12],
                          kDigits[unit >> 8 & 0x0F],
                          kDigits[unit >> 4 & 0x0F],
                          kDigits[unit & 0x0F]};
  return text.append({escaped, sizeof escaped});
}

}  // namespace

SMStatus ucs2_to_escape(char* dst, uint32_t* size, const ustring* src) {
  if (src == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  TextBuilder text(kInitialCapacity);
  if (!text.ok()) {
    return kFailed;
  }
  for (; *src != 0; ++src) {
    if (!append_unit(text, *src)) {
      return kFailed;
    }
  }
  const uint32_t needed = text.length() + 1;
  if (size != nullptr) {
    // Unlike the converters this tells its need also when the room is too small.
    const bool fits = *size >= needed;
    *size = needed;
    if (!fits) {
      return SM_STATUS_BUFFER_TOO_SMALL;
    }
  }
  if (dst != nullptr) {
    std::memcpy(dst, text.c_str(), needed);
  }
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::text
