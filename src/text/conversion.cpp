// Converting whole texts.

#include "text/conversion.h"

#include <cstring>

#include "text/code_point.h"

namespace kqsupt::text {
namespace {

// The code point that stands for every surrogate of a text: the pair at the head of the text,
// wherever the surrogate is, or the first unit when that is none. Text that was converted so lies
// in logs and files everywhere, and is compared with what is converted now. False when the head is
// half a pair.
bool head_of(const ustring* text, uint32_t* code_point) {
  *code_point = text[0];
  if (!is_surrogate(text[0])) {
    return true;
  }
  if (!is_high_surrogate(text[0]) || !is_low_surrogate(text[1])) {
    return false;
  }
  *code_point = 0x10000 + ((text[0] & 0x3FFU) << 10 | (text[1] & 0x3FFU));
  return true;
}

}  // namespace

SMStatus ucs2_to_utf8(char* dst, uint32_t* size, const ustring* src) {
  if (src == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const uint32_t room = *size;
  uint32_t written = 0;
  for (const ustring* unit = src; *unit != 0; ++unit) {
    if (*unit < 0x80 && (dst == nullptr || written < room)) {
      if (dst != nullptr) {
        dst[written] = static_cast<char>(*unit);
      }
      ++written;
      continue;
    }
    uint32_t code_point = *unit;
    if (is_surrogate(*unit) && !head_of(src, &code_point)) {
      return SM_STATUS_OPERATION_FAILED;
    }
    const uint32_t length = utf8_length(code_point);
    if (dst != nullptr) {
      if (room - written < length) {
        return SM_STATUS_BUFFER_TOO_SMALL;
      }
      write_utf8(dst + written, code_point, length);
    }
    written += length;
  }
  if (dst != nullptr) {
    if (room == written) {
      return SM_STATUS_BUFFER_TOO_SMALL;
    }
    dst[written] = '\0';
  }
  *size = written + 1;
  return SM_STATUS_SUCCESS;
}

SMStatus utf8_to_ucs2(ustring* dst, uint32_t* size, const char* src) {
  if (src == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const uint32_t room = *size / static_cast<uint32_t>(sizeof(ustring));
  uint32_t written = 0;
  for (uint32_t read = 0; src[read] != '\0';) {
    const Decoded decoded = read_utf8(src + read);
    const uint32_t length = ucs2_length_of(decoded.code_point);
    if (decoded.length == 0 || length == 0) {
      return SM_STATUS_OPERATION_FAILED;
    }
    if (dst != nullptr) {
      if (room - written < length) {
        return SM_STATUS_BUFFER_TOO_SMALL;
      }
      write_ucs2(dst + written, decoded.code_point, length);
    }
    written += length;
    read += decoded.length;
  }
  if (dst != nullptr) {
    if (room == written) {
      return SM_STATUS_BUFFER_TOO_SMALL;
    }
    dst[written] = 0;
  }
  *size = (written + 1) * static_cast<uint32_t>(sizeof(ustring));
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::text
