// Trimming, folding, reversing, copying, comparing and searching.

#include "text/utf8_string.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include "frame/heap.h"
#include "kqbounded.h"

namespace kqsupt::text {
namespace {

bool is_blank(char byte) {
  return byte == '\t' || byte == '\n' || byte == '\r' || byte == ' ';
}

// No locale: only the letters of ASCII.
int32_t folded(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= 'A' && value <= 'Z' ? value + ('a' - 'A') : value;
}

template <class Map>
char* map_bytes(char* text, Map map) {
  for (char* byte = text; *byte != '\0'; ++byte) {
    *byte = static_cast<char>(map(static_cast<unsigned char>(*byte)));
  }
  return text;
}

}  // namespace

char* trim_left(char* text) {
  if (text == nullptr) {
    return nullptr;
  }
  for (; is_blank(*text); ++text) {
    *text = '\0';
  }
  return text;
}

char* trim_right(char* text) {
  if (text == nullptr) {
    return nullptr;
  }
  for (char* end = text + std::strlen(text); end != text && is_blank(end[-1]);) {
    *--end = '\0';
  }
  return text;
}

char* trim(char* text) {
  return trim_right(trim_left(text));
}

char* to_upper(char* text) {
  return map_bytes(text, [](int byte) { return std::toupper(byte); });
}
char* to_lower(char* text) {
  return map_bytes(text, [](int byte) { return std::tolower(byte); });
}

char* reverse(char* text) {
  std::reverse(text, text + std::strlen(text));
  return text;
}

char* duplicate(const char* text) {
  if (text == nullptr) {
    return nullptr;
  }
  const size_t size = std::strlen(text) + 1;
  auto* copy = static_cast<char*>(std::malloc(size));
  if (copy != nullptr) {
    (void)strcpy_s(copy, size, text);
  }
  return copy;
}

int32_t compare_folded(const char* a, const char* b, uint32_t n) {
  for (; n > 0; ++a, ++b, --n) {
    const int32_t difference = folded(*a) - folded(*b);
    if (difference != 0 || *a == '\0') {
      return difference;
    }
  }
  return 0;
}

char* find_folded(const char* text, const char* needle) {
  if (text == nullptr || needle == nullptr) {
    return nullptr;
  }
  const size_t length = std::strlen(needle);
  const char* last = text + std::strlen(text);
  for (; static_cast<size_t>(last - text) >= length; ++text) {
    if (strncasecmp(text, needle, length) == 0) {
      return const_cast<char*>(text);
    }
    if (text == last) {
      break;
    }
  }
  return nullptr;
}

}  // namespace kqsupt::text
