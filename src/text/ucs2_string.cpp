// Searching, copying and cutting up strings of 16-bit units.

#include "text/ucs2_string.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "text/code_point.h"
#include "text/wide_step.h"

namespace kqsupt::text {
namespace {

// ---- The first unit that is 0 or another wanted one ----

// What a search stops at. `match` makes units a mask of those that match. `keep_least` keeps, for
// each byte of a step, the least value of what is 0 in a unit that matches.
inline void keep_lesser(Bytes16& least, const Units8& units) {
  const auto bytes = Bytes16(units);
  least = bytes < least ? bytes : least;
}
struct Terminator {
  [[nodiscard]] bool matches(ustring unit) const { return unit == 0; }
  void match(Units8& units) const { units = Units8(units == 0); }
  void keep_least(Bytes16& least, const Units8& units) const { keep_lesser(least, units); }
};
struct TerminatorOr {
  ustring wanted;
  [[nodiscard]] bool matches(ustring unit) const { return unit == 0 || unit == wanted; }
  void match(Units8& units) const { units = Units8((units == 0) | (units == wanted)); }
  void keep_least(Bytes16& least, const Units8& units) const {
    keep_lesser(least, units);
    keep_lesser(least, units ^ wanted);
  }
};

constexpr size_t kPair = 2 * kStepUnits;
constexpr size_t kStretch = 4 * kPair;

[[nodiscard]] bool begins_stretch(const ustring* at) {
  return reinterpret_cast<uintptr_t>(at) % (kStretch * sizeof(ustring)) == 0;
}

template <class Wanted>
inline void match_pair(Units8& low, Units8& high, const ustring* at, Wanted wanted) {
  load_aligned(low, at);
  load_aligned(high, at + kStepUnits);
  wanted.match(low);
  wanted.match(high);
}

// False when no unit of the stretch matches. Also true when two units in the same place of their
// steps have one byte each of what is wanted: that is rare, and the search looks closer then
// anyway.
template <class Wanted>
[[nodiscard]] inline bool may_match_in(const ustring* stretch, Wanted wanted) {
  Bytes16 least = ~Bytes16{};
  repeat<kStretch / kStepUnits>([&](size_t step) {
    Units8 units;
    load_aligned(units, stretch + step * kStepUnits);
    wanted.keep_least(least, units);
  });
  return any(Units8(least) == 0);
}

// For text at an odd address, where no step is aligned.
template <class Wanted>
const ustring* first_match_by_unit(const ustring* s, Wanted wanted) {
  for (;; ++s) {
    if (wanted.matches(unit_at(s))) {
      return s;
    }
  }
}

// Clears what lies before a string that begins in the middle of a pair.
inline void clear_before(Units8& low, Units8& high, size_t before) {
  static constexpr auto kKept = [] {
    std::array<uint16_t, 2 * kPair> kept{};
    std::fill(kept.begin() + kPair, kept.end(), 0xFFFF);
    return kept;
  }();
  Units8 kept;
  load(kept, &kKept[kPair - before]);
  low &= kept;
  load(kept, &kKept[kPair - before + kStepUnits]);
  high &= kept;
}

// Reads aligned pairs and stretches only. Each begins or lies in the string and none crosses the
// end of a page. Most strings end before a stretch is worth its while. There is one branch that
// depends on where a string ends: it costs as much as a few steps.
template <class Wanted>
[[gnu::always_inline]] inline const ustring* first_match(const ustring* s, Wanted wanted) {
  const auto address = reinterpret_cast<uintptr_t>(s);
  if (address % sizeof(ustring) != 0) {
    return first_match_by_unit(s, wanted);
  }
  const size_t before = address / sizeof(ustring) % kPair;
  const ustring* at = s - before;
  Units8 low;
  Units8 high;
  match_pair(low, high, at, wanted);
  clear_before(low, high, before);
  while (!any(low | high)) {
    at += kPair;
    if (at - s >= ptrdiff_t{kStretch} && begins_stretch(at)) {
      while (!may_match_in(at, wanted)) {
        at += kStretch;
      }
    }
    match_pair(low, high, at, wanted);
  }
  return at + std::countr_zero(where(low, high));
}

// ---- The first place of one string in another ----

[[nodiscard]] bool equal(const ustring* a, const ustring* b, size_t count) {
  return std::memcmp(a, b, count * sizeof(ustring)) == 0;
}

// What is looked for, at least one unit.
struct Needle {
  const ustring* units;
  size_t length;
  [[nodiscard]] bool is_at(const ustring* place) const { return equal(place, units, length); }
};

// Where in a step of places the needle's first and last unit both stand: a mask.
inline void match_ends(Units8& mask, const ustring* places, const Needle& needle) {
  Units8 last;
  load(mask, places);
  load(last, places + needle.length - 1);
  mask = Units8((mask == needle.units[0]) & (last == needle.units[needle.length - 1]));
}

// The first of `count` places that the needle stands at; null when it is none of them.
const ustring* find_by_place(const ustring* places, size_t count, const Needle& needle) {
  for (size_t i = 0; i < count; ++i) {
    if (places[i] == needle.units[0] && needle.is_at(places + i)) {
      return places + i;
    }
  }
  return nullptr;
}

// The same, a pair of steps at a time; the last pair ends with the last place.
const ustring* find(const ustring* places, size_t count, const Needle& needle) {
  if (count < kPair) {
    return find_by_place(places, count, needle);
  }
  const ustring* const last = places + count - kPair;
  for (;; places = std::min(places + kPair, last)) {
    Units8 low;
    Units8 high;
    match_ends(low, places, needle);
    match_ends(high, places + kStepUnits, needle);
    if (any(low | high)) {
      for (uint32_t left = where(low, high); left != 0; left &= left - 1) {
        const ustring* place = places + std::countr_zero(left);
        if (needle.is_at(place)) {
          return place;
        }
      }
    }
    if (places == last) {
      return nullptr;
    }
  }
}

// ---- Sets of units ----

[[nodiscard]] bool is_in(const ustring* set, ustring unit) {
  while (*set != 0 && *set != unit) {
    ++set;
  }
  return *set != 0;
}

// The number of leading units of `s` that are in the set, or not, as `inside` says.
uint32_t span(const ustring* s, const ustring* set, bool inside) {
  const ustring* end = s;
  while (*end != 0 && is_in(set, *end) == inside) {
    ++end;
  }
  return static_cast<uint32_t>(end - s);
}

}  // namespace

const ustring* ucs2_end(const ustring* s) {
  return first_match(s, Terminator{});
}

uint32_t ucs2_length(const ustring* s) {
  return static_cast<uint32_t>(first_match(s, Terminator{}) - s);
}

// Copies go to a place that may overlap their source: callers shift text within its buffer.
ustring* ucs2_copy(ustring* dst, const ustring* src) {
  const auto length = static_cast<size_t>(ucs2_end(src) - src);
  std::memmove(dst, src, (length + 1) * sizeof(ustring));
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
  for (uint32_t i = 0; i < n && src[i] != 0; ++i) {
    *end++ = src[i];
  }
  *end = 0;
  return dst;
}

const ustring* ucs2_find_unit(const ustring* s, uint32_t c) {
  const auto wanted = static_cast<ustring>(c);
  const ustring* found = first_match(s, TerminatorOr{wanted});
  return unit_at(found) == wanted ? found : nullptr;
}

const ustring* ucs2_find(const ustring* s, const ustring* sub) {
  const Needle needle{sub, static_cast<size_t>(ucs2_end(sub) - sub)};
  if (needle.length == 0) {
    return s;
  }
  const auto length = static_cast<size_t>(ucs2_end(s) - s);
  return length >= needle.length ? find(s, length - needle.length + 1, needle) : nullptr;
}

uint32_t ucs2_span_outside(const ustring* s, const ustring* set) {
  return span(s, set, false);
}
uint32_t ucs2_span_inside(const ustring* s, const ustring* set) {
  return span(s, set, true);
}

ustring* ucs2_token(ustring* s, const ustring* delimiters) {
  // Where the text of the whole process was last cut; null when there is nothing left of it.
  static ustring* rest = nullptr;
  if (s == nullptr) {
    s = rest;
  }
  rest = nullptr;
  if (s == nullptr) {
    return nullptr;
  }
  ustring* const token = s + ucs2_span_inside(s, delimiters);
  if (*token == 0) {
    return nullptr;
  }
  ustring* const end = token + ucs2_span_outside(token, delimiters);
  if (*end != 0) {
    *end = 0;
    rest = end + 1;
  }
  return token;
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
