// Searching, copying and cutting up strings of 16-bit units.

#include "text/ucs2_string.h"

#include <algorithm>

namespace kqsupt::text {
namespace {

// Where the text of the whole process was last cut; null when there is nothing left of it.
ustring* token_rest = nullptr;

bool contains(const ustring* set, ustring unit) {
  return unit != 0 && ucs2_find_unit(set, unit) != nullptr;
}

}  // namespace

const ustring* ucs2_end(const ustring* s) {
  while (*s != 0) {
    ++s;
  }
  return s;
}

uint32_t ucs2_length(const ustring* s) {
  return static_cast<uint32_t>(ucs2_end(s) - s);
}

ustring* ucs2_copy(ustring* dst, const ustring* src) {
  std::copy(src, ucs2_end(src) + 1, dst);
  return dst;
}

ustring* ucs2_append(ustring* dst, const ustring* src) {
  ucs2_copy(dst + ucs2_length(dst), src);
  return dst;
}

ustring* ucs2_copy_at_most(ustring* dst, const ustring* src, uint32_t n) {
  for (uint32_t i = 0; i < n; ++i) {
    dst[i] = src[i];
    if (src[i] == 0) {
      break;
    }
  }
  return dst;
}

ustring* ucs2_append_at_most(ustring* dst, const ustring* src, uint32_t n) {
  if (n == 0) {
    return dst;
  }
  ustring* end = dst + ucs2_length(dst);
  for (; n > 0 && *src != 0; --n) {
    *end++ = *src++;
  }
  *end = 0;
  return dst;
}

const ustring* ucs2_find_unit(const ustring* s, uint32_t c) {
  const auto wanted = static_cast<ustring>(c);
  for (; *s != wanted; ++s) {
    if (*s == 0) {
      return nullptr;
    }
  }
  return s;
}

const ustring* ucs2_find(const ustring* s, const ustring* sub) {
  const ustring* end = ucs2_end(s);
  const ustring* sub_end = ucs2_end(sub);
  const ustring* found = std::search(s, end, sub, sub_end);
  return found != end || sub == sub_end ? found : nullptr;
}

uint32_t ucs2_span_outside(const ustring* s, const ustring* set) {
  uint32_t count = 0;
  while (s[count] != 0 && !contains(set, s[count])) {
    ++count;
  }
  return count;
}

uint32_t ucs2_span_inside(const ustring* s, const ustring* set) {
  uint32_t count = 0;
  while (contains(set, s[count])) {
    ++count;
  }
  return count;
}

ustring* ucs2_token(ustring* s, const ustring* delimiters) {
  if (s == nullptr) {
    s = token_rest;
  }
  if (s == nullptr) {
    return nullptr;
  }
  s += ucs2_span_inside(s, delimiters);
  token_rest = nullptr;
  if (*s == 0) {
    return nullptr;
  }
  ustring* end = s + ucs2_span_outside(s, delimiters);
  if (*end != 0) {
    *end = 0;
    token_rest = end + 1;
  }
  return s;
}

ustring* ucs2_fill(ustring* s, uint32_t c) {
  return ucs2_fill_first(s, c, ucs2_length(s));
}

ustring* ucs2_fill_first(ustring* s, uint32_t c, uint32_t n) {
  std::fill_n(s, n, static_cast<ustring>(c));
  return s;
}

ustring* ucs2_reverse(ustring* s) {
  std::reverse(s, s + ucs2_length(s));
  return s;
}

uint32_t ucs2_difference(const ustring* a, const ustring* b) {
  while (*a == *b && *a != 0) {
    ++a;
    ++b;
  }
  return static_cast<ustring>(*a - *b);
}

}  // namespace kqsupt::text
