// XML text, appended to piece by piece.
#pragma once

#include <cstdint>
#include <string_view>

#include "kqsupt/log.h"

namespace kqsupt::log {

[[nodiscard]] SMXGBuf* xml_alloc(uint32_t capacity, uint32_t with_declaration);
[[nodiscard]] char* xml_restart(SMXGBuf* buffer, uint32_t capacity, uint32_t with_declaration);

// Frees the buffer. Its content is freed too, or returned for the caller to free.
enum class Content { kFree, kKeep };
char* xml_free(SMXGBuf* buffer, Content content);

[[nodiscard]] SMStatus xml_begin_node(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes);
[[nodiscard]] SMStatus xml_end_node(SMXGBuf* buffer, const char* name);
[[nodiscard]] SMStatus xml_empty_node(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes);

// A value and how it becomes text.
struct XmlValue {
  const void* value;
  uint32_t size;
  uint32_t type;
  const SMXGValueFormat* format;
};

[[nodiscard]] SMStatus xml_attribute(SMXGBuf* buffer, const char* name, const XmlValue& value);
[[nodiscard]] SMStatus xml_value(SMXGBuf* buffer, const XmlValue& value);
[[nodiscard]] SMStatus xml_node(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes,
                                const XmlValue& value);

[[nodiscard]] char* xml_escaped_copy(const char* text, uint32_t* size, uint32_t level);

}  // namespace kqsupt::log
