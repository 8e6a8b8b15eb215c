// Appending to sized strings across encodings.

#include "text/sized_string_convert.h"

#include <algorithm>

#include "frame/heap.h"
#include "frame/status.h"
#include "text/conversion.h"
#include "text/wide_step.h"

namespace kqsupt::text {
namespace {

SMStatus convert(char* to, uint32_t* size, const ustring* from) {
  return ucs2_to_utf8(to, size, from);
}
SMStatus convert(ustring* to, uint32_t* size, const char* from) {
  return utf8_to_ucs2(to, size, from);
}

template <class String>
UnitOf<String>* alloc(String* string, uint32_t capacity) {
  if (string == nullptr) {
    return nullptr;
  }
  allocate(*string, capacity);
  return string->content;
}

template <class String>
void free_string(String* string) {
  if (string != nullptr) {
    release(*string);
  }
}

// Appends text of the string's own encoding.
template <class String>
UnitOf<String>* cat(String* string, const UnitOf<String>* text, uint32_t count) {
  if (string == nullptr) {
    return nullptr;
  }
  if (text != nullptr && string->content != nullptr) {
    (void)append_units(*string, text, count != 0 ? count : length_of(text));
  }
  return string->content;
}

// Appends text of the other encoding: as many units as the source has, which is too little room for
// what grows in the conversion and too much for what shrinks. Callers hand plain ASCII across.
template <class String, class Other>
UnitOf<String>* cat_converted(String* string, const Other* text, uint32_t count) {
  using Unit = UnitOf<String>;
  if (string == nullptr) {
    return nullptr;
  }
  if (text == nullptr || string->content == nullptr) {
    return string->content;
  }
  const uint64_t units = uint64_t{count != 0 ? count : length_of(text)} + 1;
  if (units * sizeof(Unit) > UINT32_MAX) {
    return string->content;
  }
  // Zeroed: what lies behind the converted text is appended too.
  const frame::HeapPtr<Unit[]> converted = frame::heap_array<Unit>(static_cast<size_t>(units));
  auto size = static_cast<uint32_t>(units * sizeof(Unit));
  if (converted != nullptr && convert(converted.get(), &size, text) == SM_STATUS_SUCCESS) {
    (void)append_units(*string, converted.get(), static_cast<uint32_t>(units) - 1);
  }
  return string->content;
}

}  // namespace

ustring* string_alloc(SMSSUCS2Str* string, uint32_t capacity) {
  return alloc(string, capacity);
}
char* string_alloc(SMSSUTF8Str* string, uint32_t capacity) {
  return alloc(string, capacity);
}
void string_free(SMSSUCS2Str* string) {
  free_string(string);
}
void string_free(SMSSUTF8Str* string) {
  free_string(string);
}

ustring* string_cat(SMSSUCS2Str* string, const ustring* text, uint32_t count) {
  return cat(string, text, count);
}
ustring* string_cat(SMSSUCS2Str* string, const char* text, uint32_t count) {
  return cat_converted(string, text, count);
}
char* string_cat(SMSSUTF8Str* string, const char* text, uint32_t count) {
  return cat(string, text, count);
}
char* string_cat(SMSSUTF8Str* string, const ustring* text, uint32_t count) {
  return cat_converted(string, text, count);
}

SMStatus append_converted(SMSSUCS2Str& string, const char* text) {
  // No character has fewer bytes than units.
  const uint32_t most = text != nullptr ? length_of(text) : 0;
  if (!make_room(string, most)) {
    return SM_STATUS_NO_MEMORY;
  }
  ustring* end = string.content + string.length;
  uint32_t size = (most + 1) * sizeof(ustring);
  const SMStatus status = convert(end, &size, text);
  if (status == SM_STATUS_SUCCESS) {
    string.length += static_cast<uint32_t>(size / sizeof(ustring)) - 1;
  } else {
    *end = 0;
  }
  return status;
}

bool append_ascii(SMSSUCS2Str& string, std::string_view text) {
  if (!make_room(string, static_cast<uint32_t>(text.size()))) {
    return false;
  }
  ustring* const to = string.content + string.length;
  const auto widen_at = [&](size_t place) {
    Bytes8 bytes;
    load(bytes, text.data() + place);
    store(to + place, __builtin_convertvector(bytes, Units8));
  };
  if (text.size() < kStepUnits) {
    std::copy(text.begin(), text.end(), to);
  } else {
    const size_t last = text.size() - kStepUnits;
    for (size_t place = 0; place < last; place += kStepUnits) {
      widen_at(place);
    }
    widen_at(last);  // over some of the step before
  }
  to[text.size()] = 0;
  string.length += static_cast<uint32_t>(text.size());
  return true;
}

SMStatus append_hex_dump(SMSSUCS2Str& string, ByteSpan bytes) {
  TextBuilder dump(2048);
  if (!dump.ok()) {
    return SM_STATUS_NO_MEMORY;
  }
  return append_hex_dump(dump, bytes) && append_converted(string, dump.c_str()) == SM_STATUS_SUCCESS
             ? SMStatus{SM_STATUS_SUCCESS}
             : frame::kFailed;
}

}  // namespace kqsupt::text
