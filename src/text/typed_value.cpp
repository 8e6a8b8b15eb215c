// The kinds of typed values, as a table, and the two frames that every kind runs in.

#include "text/typed_value.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>

#include "kqbounded.h"
#include "net/ipv4.h"
#include "text/calendar.h"
#include "text/conversion.h"
#include "text/format.h"
#include "text/hex_text.h"
#include "text/language.h"
#include "text/parse_number.h"
#include "text/text_builder.h"

namespace kqsupt::text {
namespace {

// What a conversion answers that failed without a status of its own.
constexpr SMStatus kFailed = 0xFFFFFFFF;

constexpr uint32_t kTypeMask = 0x00FF;
constexpr uint32_t kFormatMask = 0xFF00;

// The room that a caller gives, and how much of it is needed.
struct Room {
  void* value;
  uint32_t capacity;
  uint32_t needed;
};

// A value that is to become text.
struct Source {
  const void* value;
  uint32_t size;
  uint32_t format;
};

// A row of the table. A kind of one size is checked for room before it is parsed; the others find
// out themselves what they need. Likewise for text: a kind with a smallest room writes its text
// within whatever room there is, and the others deliver it themselves.
struct Kind {
  uint32_t size;  // of the value in bytes; 0 when that depends on the text
  SMStatus (*parse)(const char* text, uint32_t format, Room& room);
  uint32_t (*text_room)(const Source& source);  // the smallest room for its text; null for none
  int32_t (*write)(const Source& source, char* text, uint32_t room);
  SMStatus (*deliver)(const Source& source, char* text, uint32_t* size);
};

template <class T>
T load(const void* value) {
  T loaded;
  std::memcpy(&loaded, value, sizeof loaded);
  return loaded;
}

template <class T>
void store(const Room& room, T value) {
  std::memcpy(room.value, &value, sizeof value);
}

// ---- Text to value

SMStatus parse_boolean(const char* text, uint32_t, Room& room) {
  const bool is_true = strcasecmp(text, "true") == 0;
  if (!is_true && strcasecmp(text, "false") != 0) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  store<uint16_t>(room, is_true ? 1 : 0);
  return SM_STATUS_SUCCESS;
}

// Integers of up to 32 bits are read as the widest of their sign and then checked for their range.
template <class Integer>
SMStatus parse_integer(const char* text, uint32_t format, Room& room) {
  using Limits = std::numeric_limits<Integer>;
  std::conditional_t<std::is_signed_v<Integer>, int32_t, uint32_t> number = 0;
  SMStatus status = SM_STATUS_SUCCESS;
  if constexpr (std::is_signed_v<Integer>) {
    status = parse_s32(text, format, &number);
  } else {
    status = parse_u32(text, format, &number);
  }
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  if (number > Limits::max()) {
    return SM_STATUS_VALUE_TOO_LARGE;
  }
  if (number < Limits::min()) {
    return SM_STATUS_VALUE_TOO_SMALL;
  }
  store(room, static_cast<Integer>(number));
  return SM_STATUS_SUCCESS;
}

SMStatus parse_s64_value(const char* text, uint32_t format, Room& room) {
  int64_t number = 0;
  const SMStatus status = parse_s64(text, format, &number);
  if (status == SM_STATUS_SUCCESS) {
    store(room, number);
  }
  return status;
}

SMStatus parse_u64_value(const char* text, uint32_t format, Room& room) {
  uint64_t number = 0;
  const SMStatus status = parse_u64(text, format, &number);
  if (status == SM_STATUS_SUCCESS) {
    store(room, number);
  }
  return status;
}

// Any text is a double: what is no whole number is left to the C library, which makes 0 of words.
SMStatus parse_double(const char* text, uint32_t format, Room& room) {
  int64_t whole = 0;
  bool exact = false;
  const bool is_whole = parse_s64(text, format, &whole, &exact) == SM_STATUS_SUCCESS && exact;
  store(room, is_whole ? static_cast<double>(whole) : std::strtod(text, nullptr));
  return SM_STATUS_SUCCESS;
}

SMStatus parse_language(const char* text, uint32_t, Room& room) {
  uint32_t id = 0;
  if (!find_language(text, &id)) {
    return kFailed;
  }
  store(room, id);
  return SM_STATUS_SUCCESS;
}

// Bytes whose number the text decides: counted first, written when there is room for all of them.
using ParseBytes = ParsedBytes (*)(const char* text, uint8_t* bytes, uint32_t room);

SMStatus parse_bytes(const char* text, ParseBytes parse, Room& room) {
  const ParsedBytes counted = parse(text, nullptr, 0);
  room.needed = counted.count;
  if (!counted.well_formed) {
    return kFailed;
  }
  if (room.capacity < counted.count) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  parse(text, static_cast<uint8_t*>(room.value), room.capacity);
  return SM_STATUS_SUCCESS;
}

SMStatus parse_binary(const char* text, uint32_t format, Room& room) {
  switch (format) {
    case SMXLT_FMT_DEFAULT:
      return parse_bytes(text, parse_hex_pairs, room);
    case SMXLT_FMT_HEX:
      return parse_bytes(text, parse_hex_list, room);
    default:
      return SM_STATUS_UNSUCCESSFUL;
  }
}

SMStatus parse_hex_bytes(const char* text, uint32_t, Room& room) {
  return parse_bytes(text, parse_hex_pairs, room);
}

SMStatus parse_utf8(const char* text, uint32_t, Room& room) {
  room.needed = static_cast<uint32_t>(std::strlen(text)) + 1;
  if (room.capacity < room.needed) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  std::memmove(room.value, text, room.needed);
  return SM_STATUS_SUCCESS;
}

SMStatus parse_ucs2(const char* text, uint32_t, Room& room) {
  room.needed = room.capacity;
  return utf8_to_ucs2(static_cast<ustring*>(room.value), &room.needed, text);
}

SMStatus parse_ipv4(const char* text, uint32_t, Room& room) {
  uint32_t address = 0;
  const SMStatus status = net::ipv4_from_text(text, &address);
  if (status == SM_STATUS_SUCCESS) {
    store(room, address);
  }
  return status;
}

// ---- Value to text

template <uint32_t kRoom>
uint32_t room_of(const Source&) {
  return kRoom;
}

constexpr uint32_t kBase2Room = 33;

template <uint32_t kRoom>
uint32_t integer_room(const Source& source) {
  return source.format == SMXLT_FMT_BASE2 ? kBase2Room : kRoom;
}

const char* boolean_word(const Source& source) {
  return load<uint16_t>(source.value) == 1 ? "true" : "false";
}

uint32_t boolean_room(const Source& source) {
  return static_cast<uint32_t>(std::strlen(boolean_word(source))) + 1;
}

int32_t write_boolean(const Source& source, char* text, uint32_t room) {
  return format(text, room, "%s", boolean_word(source));
}

// The digits of a 32-bit word: a negative number's two's complement, on hosts with a longer `long`
// too.
int32_t write_base2(uint32_t word, char* text, uint32_t room) {
  char digits[kBase2Room];
  (void)_ltoa_s(static_cast<long>(word), digits, sizeof digits, 2);
  return format(text, room, "%s", digits);
}

template <class Integer>
int32_t write_integer(const Source& source, char* text, uint32_t room) {
  // Extended to 32 bits with its sign, if its type has one.
  const auto number = static_cast<uint32_t>(load<Integer>(source.value));
  switch (source.format) {
    case SMXLT_FMT_BASE2:
      return write_base2(number, text, room);
    case SMXLT_FMT_OCTAL:
      return format(text, room, "%o", number);
    case SMXLT_FMT_HEX:
      return format(text, room, "%#x", number);
    default:
      return format(text, room, std::is_signed_v<Integer> ? "%d" : "%u", number);
  }
}

template <class Integer>
int32_t write_integer64(const Source& source, char* text, uint32_t room) {
  char digits[std::numeric_limits<Integer>::digits10 + 3];
  *std::to_chars(digits, digits + sizeof digits - 1, load<Integer>(source.value)).ptr = '\0';
  return format(text, room, "%s", digits);
}

int32_t write_double(const Source& source, char* text, uint32_t room) {
  return format(text, room, "%.3f", load<double>(source.value));
}

int32_t write_language(const Source& source, char* text, uint32_t room) {
  return format(text, room, "%s", locale_name(load<uint32_t>(source.value)));
}

int32_t write_time(const Source& source, char* text, uint32_t room) {
  const time_t time = load<int32_t>(source.value);
  CalendarText calendar;
  write_calendar(time, calendar);
  return format(text, room, "%s", calendar);
}

// Copies `text` with its terminator to the caller's buffer when that has room for it.
SMStatus deliver_text(std::string_view text, char* buffer, uint32_t* size) {
  const auto needed = static_cast<uint32_t>(text.size()) + 1;
  const bool fits = buffer != nullptr && *size >= needed;
  *size = needed;
  if (!fits) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
  return SM_STATUS_SUCCESS;
}

SMStatus deliver_binary(const Source& source, char* text, uint32_t* size) {
  using Append = bool (*)(TextBuilder&, ByteSpan);
  constexpr uint32_t kInitialCapacity = 2048;
  Append append = nullptr;
  switch (source.format) {
    case SMXLT_FMT_DEFAULT:
      append = append_hex_pairs;
      break;
    case SMXLT_FMT_HEX:
      append = append_hex_list;
      break;
    case SMXLT_FMT_BASE2:
      append = append_hex_dump;
      break;
    default:
      return SM_STATUS_UNSUCCESSFUL;
  }
  TextBuilder built(kInitialCapacity);
  if (!append(built, {static_cast<const uint8_t*>(source.value), source.size}) || !built.ok()) {
    return kFailed;
  }
  return deliver_text(built.view(), text, size);
}

SMStatus deliver_utf8(const Source& source, char* text, uint32_t* size) {
  if (text == nullptr || *size < source.size) {
    *size = source.size;
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  std::memmove(text, source.value, source.size);
  // The text ends at its terminator; bytes without one are all of it.
  const size_t length = strnlen(text, source.size);
  *size = static_cast<uint32_t>(std::min<size_t>(length + 1, source.size));
  return SM_STATUS_SUCCESS;
}

SMStatus deliver_ucs2(const Source& source, char* text, uint32_t* size) {
  return ucs2_to_utf8(text, size, static_cast<const ustring*>(source.value));
}

SMStatus deliver_ipv4(const Source& source, char* text, uint32_t* size) {
  char dotted[net::kIpv4TextSize];
  uint32_t needed = sizeof dotted;
  const SMStatus status = net::ipv4_to_text(load<uint32_t>(source.value), dotted, &needed);
  return status == SM_STATUS_SUCCESS ? deliver_text(dotted, text, size) : status;
}

SMStatus deliver_hex_bytes(const Source& source, char* text, uint32_t* size) {
  constexpr uint32_t kMostBytes = 63;
  constexpr uint32_t kTextRoom = 128;
  TextBuilder built(kTextRoom);
  const ByteSpan bytes(static_cast<const uint8_t*>(source.value),
                       std::min(source.size, kMostBytes));
  if (!built.ok() || !append_hex_pairs(built, bytes)) {
    return SM_STATUS_NO_MEMORY;
  }
  if (text != nullptr && *size <= built.length()) {
    // Nothing is copied, yet callers are told of success and the size of the text that they hold:
    // they offer a default in the buffer and rely on keeping it.
    *size = static_cast<uint32_t>(strnlen(text, *size)) + 1;
    return SM_STATUS_SUCCESS;
  }
  return deliver_text(built.view(), text, size);
}

// By SMXLT_TYPE_ code.
constexpr Kind kKinds[] = {
    /* BOOLEAN */ {2, parse_boolean, boolean_room, write_boolean, nullptr},
    /* S8 */ {1, parse_integer<int8_t>, integer_room<17>, write_integer<int8_t>, nullptr},
    /* S16 */ {2, parse_integer<int16_t>, integer_room<17>, write_integer<int16_t>, nullptr},
    /* S32 */ {4, parse_integer<int32_t>, integer_room<17>, write_integer<int32_t>, nullptr},
    /* S64 */ {8, parse_s64_value, room_of<33>, write_integer64<int64_t>, nullptr},
    /* U8 */ {1, parse_integer<uint8_t>, integer_room<16>, write_integer<uint8_t>, nullptr},
    /* U16 */ {2, parse_integer<uint16_t>, integer_room<16>, write_integer<uint16_t>, nullptr},
    /* U32 */ {4, parse_integer<uint32_t>, integer_room<16>, write_integer<uint32_t>, nullptr},
    /* U64 */ {8, parse_u64_value, room_of<32>, write_integer64<uint64_t>, nullptr},
    /* DOUBLE */ {8, parse_double, room_of<32>, write_double, nullptr},
    /* LANGUAGE_ID */ {4, parse_language, room_of<16>, write_language, nullptr},
    /* TIME */ {4, nullptr, room_of<64>, write_time, nullptr},
    /* BINARY */ {0, parse_binary, nullptr, nullptr, deliver_binary},
    /* UTF8 */ {0, parse_utf8, nullptr, nullptr, deliver_utf8},
    /* UCS2 */ {0, parse_ucs2, nullptr, nullptr, deliver_ucs2},
    /* IPV4 */ {4, parse_ipv4, nullptr, nullptr, deliver_ipv4},
    /* HEX_BYTES */ {0, parse_hex_bytes, nullptr, nullptr, deliver_hex_bytes},
};

// Null for a type that there is none of.
const Kind* kind_of(uint32_t type) {
  const uint32_t code = type & kTypeMask;
  return code < std::size(kKinds) ? &kKinds[code] : nullptr;
}

}  // namespace

SMStatus value_from_text(const char* text, void* value, uint32_t* size, uint32_t type) {
  if (text == nullptr || size == nullptr || (value == nullptr && *size != 0)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const Kind* kind = kind_of(type);
  if (kind == nullptr || kind->parse == nullptr) {
    *size = 0;
    return SM_STATUS_UNSUCCESSFUL;
  }
  Room room{value, *size, kind->size};
  *size = kind->size;
  if (room.capacity < kind->size) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  const SMStatus status = kind->parse(text, type & kFormatMask, room);
  *size = room.needed;
  return status;
}

SMStatus value_to_text(const void* value, uint32_t value_size, char* text, uint32_t* size,
                       uint32_t type) {
  if (value == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const Kind* kind = kind_of(type);
  if (kind == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const Source source{value, value_size, type & kFormatMask};
  if (kind->deliver != nullptr) {
    return kind->deliver(source, text, size);
  }
  const uint32_t smallest = kind->text_room(source);
  if (*size < smallest) {
    *size = smallest;
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  // Without a buffer the whole text is measured.
  const uint32_t room = text != nullptr ? *size : UINT32_MAX;
  *size = static_cast<uint32_t>(kind->write(source, text, room)) + 1;
  return text != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL;
}

}  // namespace kqsupt::text
