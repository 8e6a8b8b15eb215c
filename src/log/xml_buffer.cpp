// Tags, attributes and values of XML text.

#include "log/xml_buffer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <initializer_list>

#include "frame/heap.h"
#include "text/conversion.h"
#include "text/sized_string.h"
#include "text/typed_value.h"
#include "text/wide_step.h"

namespace kqsupt::log {
namespace {

using std::string_view;

// What a value answers that cannot be written and has no status of its own.
constexpr SMStatus kFailed = 0xFFFFFFFF;

constexpr uint32_t kSmallestCapacity = 64;
constexpr uint32_t kMostLevels = 16;
constexpr string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

// Further codes for text.
constexpr uint32_t kPointerToUtf8 = 48;
constexpr uint32_t kPointerToUcs2 = 49;
constexpr uint32_t kPointerToUtf8Too = 50;

// Makes the string longer by `size` bytes, which the caller fills from the pointer that is
// returned. Null, with the string as it was, when memory is short.
[[nodiscard]] char* room_for(SMSSUTF8Str& string, uint64_t size) {
  if (string.content == nullptr || size > UINT32_MAX ||
      !text::make_room(string, static_cast<uint32_t>(size))) {
    return nullptr;
  }
  char* const room = string.content + string.length;
  string.length += static_cast<uint32_t>(size);
  string.content[string.length] = '\0';
  return room;
}

// Appends all pieces, or none when memory is short. None of them lies in the string.
[[nodiscard]] SMStatus append(SMSSUTF8Str& string, std::initializer_list<string_view> pieces) {
  uint64_t size = 0;
  for (const string_view piece : pieces) {
    size += piece.size();
  }
  char* end = room_for(string, size);
  if (end == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  for (const string_view piece : pieces) {
    end = std::copy(piece.begin(), piece.end(), end);
  }
  return SM_STATUS_SUCCESS;
}

// Runs `body` and takes back all that it has appended when it fails.
template <class Body>
[[nodiscard]] SMStatus all_or_nothing(SMXGBuf* buffer, Body body) {
  SMSSUTF8Str& string = buffer->string;
  const uint32_t length = string.length;
  const SMStatus status = body(string);
  if (status != SM_STATUS_SUCCESS && string.content != nullptr) {
    string.length = length;
    string.content[length] = '\0';
  }
  return status;
}

// An empty string, or one that begins with the declaration; without content when memory is short.
SMSSUTF8Str new_content(uint32_t capacity, uint32_t with_declaration) {
  SMSSUTF8Str string{};
  text::allocate(string, capacity);
  if (with_declaration == 1 && !text::append(string, kDeclaration)) {
    text::release(string);
  }
  return string;
}

// ---- Escaping ----

// What a byte is written as behind the "&"; nothing for one that XML gives no meaning to.
constexpr auto kEntities = [] {
  std::array<string_view, 256> entities{};
  entities['&'] = "amp;";
  entities['<'] = "lt;";
  entities['>'] = "gt;";
  entities['"'] = "quot;";
  entities['\''] = "apos;";
  return entities;
}();

string_view entity_of(char byte) {
  return kEntities[static_cast<uint8_t>(byte)];
}

// Calls `visit` with the place of each byte that has an entity.
template <class Visit>
void for_each_special(string_view text, Visit visit) {
  size_t place = 0;
  for (text::Bytes16 bytes; place + sizeof bytes <= text.size(); place += sizeof bytes) {
    text::load(bytes, text.data() + place);
    const auto special = text::Bytes16((bytes == '&') | (bytes == '<') | (bytes == '>') |
                                       (bytes == '"') | (bytes == '\''));
    if (text::any(special)) {
      for (uint32_t left = text::where(special); left != 0; left &= left - 1) {
        visit(place + static_cast<size_t>(std::countr_zero(left)));
      }
    }
  }
  for (; place < text.size(); ++place) {
    if (!entity_of(text[place]).empty()) {
      visit(place);
    }
  }
}

// Escaping n times over turns a byte into "&", n - 1 times "amp;", and its entity.
size_t escaped_size(char byte, uint32_t level) {
  return 1 + 4 * (level - 1) + entity_of(byte).size();
}
char* write_escaped(char* to, char byte, uint32_t level) {
  *to++ = '&';
  for (uint32_t i = 1; i < level; ++i) {
    to = std::copy_n("amp;", 4, to);
  }
  for (const char character : entity_of(byte)) {
    *to++ = character;
  }
  return to;
}

[[nodiscard]] SMStatus append_escaped(SMSSUTF8Str& string, string_view text, uint32_t level) {
  uint64_t size = text.size();
  for_each_special(text, [&](size_t place) { size += escaped_size(text[place], level) - 1; });
  char* end = room_for(string, size);
  if (end == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  size_t copied = 0;
  for_each_special(text, [&](size_t place) {
    end = std::copy(text.begin() + copied, text.begin() + place, end);
    end = write_escaped(end, text[place], level);
    copied = place + 1;
  });
  std::copy(text.begin() + copied, text.end(), end);
  return SM_STATUS_SUCCESS;
}

uint32_t level_of(const XmlValue& value) {
  return value.format != nullptr ? std::min<uint32_t>(value.format->escapeLevel, kMostLevels) : 0;
}

SMStatus append_text(SMSSUTF8Str& string, string_view text, const XmlValue& value) {
  const uint32_t level = level_of(value);
  return level == 0 ? append(string, {text}) : append_escaped(string, text, level);
}

SMStatus append_ucs2(SMSSUTF8Str& string, const XmlValue& value) {
  const auto* units = static_cast<const ustring*>(value.value);
  uint32_t size = 0;
  if (text::ucs2_to_utf8(nullptr, &size, units) != SM_STATUS_SUCCESS) {
    return kFailed;
  }
  const frame::HeapPtr<char[]> converted = frame::heap_array<char>(size);
  if (converted == nullptr ||
      text::ucs2_to_utf8(converted.get(), &size, units) != SM_STATUS_SUCCESS) {
    return kFailed;
  }
  return append_text(string, {converted.get(), size - 1}, value);
}

// The type with the flags of the value's format.
uint32_t formatted_type(const XmlValue& value) {
  return value.type | (value.format != nullptr ? value.format->flags : 0U);
}

SMStatus append_number(SMSSUTF8Str& string, const XmlValue& value, uint32_t room) {
  char text[64];
  uint32_t size = room;
  const SMStatus status =
      text::value_to_text(value.value, value.size, text, &size, formatted_type(value));
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  return append(string, {{text, size - 1}});
}

SMStatus append_binary(SMSSUTF8Str& string, const XmlValue& value) {
  uint32_t size = 0;
  SMStatus status =
      text::value_to_text(value.value, value.size, nullptr, &size, formatted_type(value));
  if (status != SM_STATUS_BUFFER_TOO_SMALL) {
    return status;
  }
  const frame::HeapPtr<char[]> text = frame::heap_array<char>(size);
  if (text == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  status = text::value_to_text(value.value, value.size, text.get(), &size, formatted_type(value));
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  return append(string, {{text.get(), size - 1}});
}

// The codes from 33 to 40 have their room too, but no text: the typed values refuse them.
SMStatus append_value(SMSSUTF8Str& string, const XmlValue& value) {
  switch (value.type) {
    case SMXLT_TYPE_BOOLEAN: {
      uint16_t boolean = 0;
      std::memcpy(&boolean, value.value, sizeof boolean);
      return append(string, {boolean == 1 ? "true" : "false"});
    }
    case SMXLT_TYPE_S8:
    case SMXLT_TYPE_S16:
    case SMXLT_TYPE_S32:
    case 33:
    case 34:
      return append_number(string, value, 17);
    case SMXLT_TYPE_S64:
    case 35:
      return append_number(string, value, 33);
    case SMXLT_TYPE_U8:
    case SMXLT_TYPE_U16:
    case SMXLT_TYPE_U32:
    case SMXLT_TYPE_LANGUAGE_ID:
    case 37:
    case 38:
      return append_number(string, value, 16);
    case SMXLT_TYPE_U64:
    case SMXLT_TYPE_DOUBLE:
    case 39:
    case 40:
      return append_number(string, value, 32);
    case SMXLT_TYPE_TIME:
      return append_number(string, value, 64);
    case SMXLT_TYPE_BINARY:
      return append_binary(string, value);
    case SMXLT_TYPE_UTF8:
    case kPointerToUtf8:
    case kPointerToUtf8Too: {
      const auto* text = static_cast<const char*>(value.value);
      return append_text(
          string, value.size != 0 ? string_view(text, value.size - 1) : string_view(text), value);
    }
    case SMXLT_TYPE_UCS2:
    case kPointerToUcs2:
      return append_ucs2(string, value);
    default:
      return kFailed;
  }
}

SMStatus append_value_if_any(SMSSUTF8Str& string, const XmlValue& value) {
  if (value.value == nullptr) {
    return SM_STATUS_DATA_NOT_FOUND;
  }
  return append_value(string, value);
}

// "<name attributes" and the end of the tag.
SMStatus append_tag(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes, string_view end) {
  // A buffer that is its own list of attributes would move while it is read.
  if (buffer == nullptr || name == nullptr || buffer == attributes) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  string_view list;
  if (attributes != nullptr && attributes->string.content != nullptr) {
    list = {attributes->string.content, attributes->string.length};
  }
  return all_or_nothing(buffer, [=](SMSSUTF8Str& string) {
    return append(string, {"<", name, list.empty() ? "" : " ", list, end});
  });
}

}  // namespace

SMXGBuf* xml_alloc(uint32_t capacity, uint32_t with_declaration) {
  frame::HeapPtr<SMXGBuf> buffer(static_cast<SMXGBuf*>(std::malloc(sizeof(SMXGBuf))));
  if (buffer == nullptr) {
    return nullptr;
  }
  buffer->string = new_content(std::max(capacity, kSmallestCapacity), with_declaration);
  return buffer->string.content != nullptr ? buffer.release() : nullptr;
}

char* xml_restart(SMXGBuf* buffer, uint32_t capacity, uint32_t with_declaration) {
  if (buffer == nullptr) {
    return nullptr;
  }
  const SMSSUTF8Str string = new_content(capacity, with_declaration);
  if (string.content != nullptr || capacity == 0) {
    text::release(buffer->string);
    buffer->string = string;
  }
  return string.content;
}

char* xml_free(SMXGBuf* buffer, Content content) {
  if (buffer == nullptr) {
    return nullptr;
  }
  char* kept = buffer->string.content;
  if (content == Content::kFree) {
    std::free(kept);
    kept = nullptr;
  }
  std::free(buffer);
  return kept;
}

SMStatus xml_begin_node(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes) {
  return append_tag(buffer, name, attributes, ">");
}

SMStatus xml_end_node(SMXGBuf* buffer, const char* name) {
  if (buffer == nullptr || name == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return all_or_nothing(buffer, [=](SMSSUTF8Str& string) {
    return append(string, {"</", name, ">"});
  });
}

SMStatus xml_empty_node(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes) {
  return append_tag(buffer, name, attributes, " />");
}

SMStatus xml_attribute(SMXGBuf* buffer, const char* name, const XmlValue& value) {
  if (buffer == nullptr || name == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return all_or_nothing(buffer, [&](SMSSUTF8Str& string) {
    SMStatus status = append(string, {string.length != 0 ? " " : "", name, "=\""});
    if (status == SM_STATUS_SUCCESS) {
      status = append_value_if_any(string, value);
    }
    return status == SM_STATUS_SUCCESS ? append(string, {"\""}) : status;
  });
}

SMStatus xml_value(SMXGBuf* buffer, const XmlValue& value) {
  if (buffer == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return all_or_nothing(buffer,
                        [&](SMSSUTF8Str& string) { return append_value_if_any(string, value); });
}

SMStatus xml_node(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes,
                  const XmlValue& value) {
  if (buffer == nullptr || name == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return all_or_nothing(buffer, [&](SMSSUTF8Str& string) {
    SMStatus status = xml_begin_node(buffer, name, attributes);
    if (status == SM_STATUS_SUCCESS && value.value != nullptr) {
      status = append_value(string, value);
    }
    return status == SM_STATUS_SUCCESS ? xml_end_node(buffer, name) : status;
  });
}

char* xml_escaped_copy(const char* text, uint32_t* size, uint32_t level) {
  if (text == nullptr || size == nullptr || level == 0) {
    return nullptr;
  }
  SMSSUTF8Str copy{};
  text::allocate(copy, std::max(*size, 1U));
  if (append_escaped(copy, text, std::min(level, kMostLevels)) != SM_STATUS_SUCCESS) {
    text::release(copy);
    return nullptr;
  }
  *size = copy.length;
  return copy.content;
}

}  // namespace kqsupt::log
