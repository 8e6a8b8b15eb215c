// The kinds of values of INI files, and the forms in which they are read and written.

#include "config/ini_file.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "config/ini_access.h"
#include "config/install_paths.h"
#include "frame/heap.h"
#include "frame/status.h"
#include "text/conversion.h"
#include "text/enum_table.h"
#include "text/format.h"
#include "text/parse_number.h"
#include "text/ucs2_string.h"

namespace kqsupt::config {
namespace {

// The longest text that is read for a value, and the longest one that is written, with terminator.
constexpr uint32_t kTextSize = 8193;
constexpr uint32_t kWideTextSize = 8451;
constexpr uint32_t kLargestWide = 2048;

template <class Value>
void store(void* to, Value value) {
  std::memcpy(to, &value, sizeof value);
}
template <class Value>
Value load(const void* from) {
  Value value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

// ---- Values of a fixed size ----

// The number at the start of a text, as reading it with a C library takes it: what comes before it
// is blank, what comes behind it is cut off.
char* number_at_start(char* text) {
  text += std::strspn(text, " \t\n\v\f\r");
  const size_t sign = *text == '-' || *text == '+' ? 1 : 0;
  text[sign + std::strspn(text + sign, "0123456789")] = '\0';
  return text;
}

// A text that is no number is 0.
template <class Value, SMStatus (*kParse)(const char*, uint32_t, Value*)>
SMStatus parse_start(char* text, void* value) {
  Value parsed = 0;
  (void)kParse(number_at_start(text), SMXLT_FMT_DECIMAL, &parsed);
  store(value, parsed);
  return SM_STATUS_SUCCESS;
}

SMStatus parse_s64_value(const char* text, uint32_t notation, int64_t* value) {
  return text::parse_s64(text, notation, value);
}

SMStatus parse_boolean(char* text, void* value) {
  text += std::strspn(text, " ");
  text[std::strcspn(text, " ")] = '\0';
  const bool is_true = strcasecmp(text, "TRUE") == 0;
  if (!is_true && strcasecmp(text, "FALSE") != 0) {
    return SM_STATUS_BAD_LENGTH;
  }
  store(value, static_cast<uint16_t>(is_true ? 1 : 0));
  return SM_STATUS_SUCCESS;
}

SMStatus parse_double(char* text, void* value) {
  store(value, std::strtod(text, nullptr));
  return SM_STATUS_SUCCESS;
}

constexpr uint32_t kFormattedSize = 512;

// One kind: the bytes that a value has, and its text, of at most kFormattedSize bytes.
struct Kind {
  uint32_t type;
  uint32_t size;
  SMStatus (*parse)(char* text, void* value);
  void (*format)(const void* value, char* text);
};

void format_decimal(bool negative, uint64_t magnitude, char* text) {
  char digits[20];
  char* first = digits + sizeof digits;
  do {
    *--first = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  if (negative) {
    *text++ = '-';
  }
  *std::copy(first, digits + sizeof digits, text) = '\0';
}

template <class Value>
void format_integer(const void* value, char* text) {
  const auto number = load<Value>(value);
  const bool negative = number < 0;
  const auto magnitude = static_cast<uint64_t>(number);
  format_decimal(negative, negative ? 0 - magnitude : magnitude, text);
}

constexpr Kind kKinds[] = {
    {SMINI_TYPE_BOOLEAN, 2, parse_boolean,
     [](const void* value, char* text) {
       std::strcpy(text, load<uint16_t>(value) == 1 ? "TRUE" : "FALSE");
     }},
    {SMINI_TYPE_U32, 4, parse_start<uint32_t, text::parse_u32>, format_integer<uint32_t>},
    {SMINI_TYPE_S32, 4, parse_start<int32_t, text::parse_s32>, format_integer<int32_t>},
    {SMINI_TYPE_U64, 8, parse_start<uint64_t, text::parse_u64>, format_integer<uint64_t>},
    {SMINI_TYPE_S64, 8, parse_start<int64_t, parse_s64_value>, format_integer<int64_t>},
    {SMINI_TYPE_DOUBLE, 8, parse_double,
     [](const void* value, char* text) {
       text::format(text, kFormattedSize, "%.8f", load<double>(value));
     }},
};

const Kind* kind_of(uint32_t type) {
  const auto* found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                   [type](const Kind& kind) { return kind.type == type; });
  return found != std::end(kKinds) ? found : nullptr;
}

SMStatus read_fixed(const char* section, const char* key, const Kind& kind, void* buffer,
                    uint32_t* size, const IniDefault& fallback, const char* path, bool wait) {
  if (buffer == nullptr || size == nullptr || *size < kind.size) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const frame::HeapPtr<char> text(static_cast<char*>(std::malloc(kTextSize)));
  uint32_t text_size = kTextSize;
  SMStatus status = text != nullptr
                        ? read_ini_text(section, key, text.get(), &text_size, {}, path, wait)
                        : frame::kFailed;
  uint64_t value = 0;
  if (status == SM_STATUS_SUCCESS) {
    status = kind.parse(text.get(), &value);
  }
  if (status == SM_STATUS_SUCCESS) {
    std::memcpy(buffer, &value, kind.size);
  } else if (fallback.is_given() && fallback.size >= kind.size) {
    std::memcpy(buffer, fallback.bytes, kind.size);
    *size = kind.size;
  } else {
    *size = 0;
  }
  return status;
}

SMStatus write_fixed(const char* section, const char* key, const Kind& kind, const void* value,
                     uint32_t value_size, const char* path, bool wait) {
  if (section == nullptr || key == nullptr || path == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (value == nullptr || value_size < kind.size) {
    return SM_STATUS_BAD_LENGTH;
  }
  char text[kFormattedSize];
  kind.format(value, text);
  return write_ini_text(section, key, text, static_cast<uint32_t>(std::strlen(text) + 1), path,
                        wait);
}

// ---- UCS-2 text ----

// The bytes of a string with its terminator, or more than `limit` when it has none within it.
uint32_t wide_size(const void* text, uint32_t limit) {
  const auto* bytes = static_cast<const uint8_t*>(text);
  for (uint32_t size = 0; size + sizeof(ustring) <= limit; size += sizeof(ustring)) {
    if (load<ustring>(bytes + size) == 0) {
      return static_cast<uint32_t>(size + sizeof(ustring));
    }
  }
  return limit + 1;
}

// Converts a text and copies it whole, or tells the size that it needs.
SMStatus copy_wide(const char* text, void* buffer, uint32_t* size) {
  uint32_t needed = 0;
  if (text::utf8_to_ucs2(nullptr, &needed, text) != SM_STATUS_SUCCESS) {
    return SM_STATUS_BAD_LENGTH;
  }
  const auto wide = frame::heap_array<ustring>(needed / sizeof(ustring));
  if (wide == nullptr) {
    return frame::kFailed;
  }
  if (text::utf8_to_ucs2(wide.get(), &needed, text) != SM_STATUS_SUCCESS) {
    return SM_STATUS_BAD_LENGTH;
  }
  const bool fits = needed <= *size;
  if (fits) {
    std::memcpy(buffer, wide.get(), needed);
  }
  *size = needed;
  return fits ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL;
}

SMStatus read_wide(const char* section, const char* key, void* buffer, uint32_t* size,
                   const IniDefault& fallback, const char* path, bool wait) {
  if (buffer == nullptr || size == nullptr || *size == 0) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const frame::HeapPtr<char> text(static_cast<char*>(std::malloc(kWideTextSize)));
  uint32_t text_size = kWideTextSize;
  SMStatus status = text != nullptr
                        ? read_ini_text(section, key, text.get(), &text_size, {}, path, wait)
                        : SMStatus{SM_STATUS_NO_MEMORY};
  if (status == SM_STATUS_SUCCESS) {
    status = copy_wide(text.get(), buffer, size);
    if (status == SM_STATUS_SUCCESS || status == SM_STATUS_BUFFER_TOO_SMALL) {
      return status;
    }
  }
  *size = fallback.is_given() ? std::min(fallback.size, *size) : 0;
  if (*size != 0) {
    std::memcpy(buffer, fallback.bytes, *size);
  }
  return status;
}

SMStatus write_wide(const char* section, const char* key, const void* value, uint32_t value_size,
                    const char* path, bool wait) {
  if (value == nullptr) {
    return write_ini_text(section, key, nullptr, value_size, path, wait);
  }
  if (value_size < 1 || value_size > kLargestWide) {
    return SM_STATUS_BAD_LENGTH;
  }
  // The text is written to its terminator, wherever that is: of the size only the range counts. A
  // copy, since what callers hand over need not be aligned.
  const auto* units = static_cast<const uint8_t*>(value);
  size_t count = 1;
  while (load<ustring>(units + (count - 1) * sizeof(ustring)) != 0) {
    ++count;
  }
  const auto wide = frame::heap_array<ustring>(count);
  if (wide == nullptr) {
    return frame::kFailed;
  }
  std::memcpy(wide.get(), value, count * sizeof(ustring));
  uint32_t size = 0;
  SMStatus status = text::ucs2_to_utf8(nullptr, &size, wide.get());
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  const auto text = frame::heap_array<char>(size);
  if (text == nullptr) {
    return frame::kFailed;
  }
  status = text::ucs2_to_utf8(text.get(), &size, wide.get());
  return status == SM_STATUS_SUCCESS ? write_ini_text(section, key, text.get(), size, path, wait)
                                     : status;
}

// Whether a failed read of a value has put the default into the buffer, whole or in part.
bool copies_default(SMStatus status) {
  return status == SM_STATUS_KEY_NOT_FOUND || status == SM_STATUS_SECTION_NOT_FOUND ||
         status == SM_STATUS_END_OF_FILE;
}

// ---- The family's own files ----

class OwnPath {
 public:
  explicit OwnPath(const char* file_name) {
    uint32_t size = sizeof text_;
    if (file_name == nullptr) {
      status_ = SM_STATUS_UNSUCCESSFUL;
      return;
    }
    if (get_path(kQuillance, kIniPath, text_, &size) != SM_STATUS_SUCCESS || size == 0) {
      status_ = frame::kFailed;
      return;
    }
    const std::string_view directory = "/ini/";
    const std::string_view name(file_name);
    // The terminator is counted twice: in the size, and with the directory.
    if (size + directory.size() + 1 + name.size() > sizeof text_) {
      status_ = SM_STATUS_BUFFER_TOO_SMALL;
      return;
    }
    char* end = std::copy(directory.begin(), directory.end(), text_ + size - 1);
    *std::copy(name.begin(), name.end(), end) = '\0';
  }

  [[nodiscard]] SMStatus status() const { return status_; }
  [[nodiscard]] const char* c_str() const { return text_; }

 private:
  char text_[256];
  SMStatus status_ = SM_STATUS_SUCCESS;
};

}  // namespace

SMStatus read_ini_value(const char* section, const char* key, uint32_t type, void* buffer,
                        uint32_t* size, const void* default_value, uint32_t default_size,
                        const char* path, bool wait) {
  const IniDefault fallback{default_value, default_size};
  // Only text has lists.
  if (type != SMINI_TYPE_UTF8 && (section == nullptr || key == nullptr)) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  switch (type) {
    case SMINI_TYPE_UTF8:
      return read_ini_text(section, key, static_cast<char*>(buffer), size, fallback, path, wait);
    case SMINI_TYPE_UCS2_STRICT:
      if (fallback.is_given() && wide_size(default_value, default_size) != default_size) {
        return SM_STATUS_UNSUCCESSFUL;
      }
      [[fallthrough]];
    case SMINI_TYPE_UCS2:
      return read_wide(section, key, buffer, size, fallback, path, wait);
    default: {
      const Kind* kind = kind_of(type);
      return kind != nullptr ? read_fixed(section, key, *kind, buffer, size, fallback, path, wait)
                             : SMStatus{SM_STATUS_UNSUCCESSFUL};
    }
  }
}

SMStatus write_ini_value(const char* section, const char* key, uint32_t type, const void* value,
                         uint32_t value_size, const char* path, bool wait) {
  switch (type) {
    case SMINI_TYPE_UTF8:
      return write_ini_text(section, key, static_cast<const char*>(value), value_size, path, wait);
    case SMINI_TYPE_UCS2_STRICT:
      if (value != nullptr &&
          (value_size > kLargestWide || wide_size(value, value_size) != value_size)) {
        return SM_STATUS_BAD_LENGTH;
      }
      [[fallthrough]];
    case SMINI_TYPE_UCS2:
      return write_wide(section, key, value, value_size, path, wait);
    default: {
      const Kind* kind = kind_of(type);
      return kind != nullptr ? write_fixed(section, key, *kind, value, value_size, path, wait)
                             : SMStatus{SM_STATUS_UNSUCCESSFUL};
    }
  }
}

SMStatus read_own_ini_value(const char* section, const char* key, uint32_t type, void* buffer,
                            uint32_t* size, const void* default_value, uint32_t default_size,
                            const char* file_name, bool wait) {
  const OwnPath path(file_name);
  return path.status() == SM_STATUS_SUCCESS
             ? read_ini_value(section, key, type, buffer, size, default_value, default_size,
                              path.c_str(), wait)
             : path.status();
}

SMStatus write_own_ini_value(const char* section, const char* key, uint32_t type, const void* value,
                             uint32_t value_size, const char* file_name, bool wait) {
  const OwnPath path(file_name);
  return path.status() == SM_STATUS_SUCCESS
             ? write_ini_value(section, key, type, value, value_size, path.c_str(), wait)
             : path.status();
}

char* read_ini_copy(const char* section, const char* key, const char* default_value, uint32_t* size,
                    const char* path, bool wait) {
  constexpr uint32_t kLargestCopy = 32768;
  const IniDefault fallback{
      default_value,
      default_value != nullptr ? static_cast<uint32_t>(std::strlen(default_value) + 1) : 0};
  uint32_t unused = 0;
  uint32_t& told = size != nullptr ? *size : unused;
  told = 0;
  uint32_t needed = kTextSize;
  for (uint32_t capacity = 0; path != nullptr && capacity < needed && needed <= kLargestCopy;) {
    capacity = needed;
    frame::HeapPtr<char> text(static_cast<char*>(std::malloc(capacity)));
    if (text == nullptr) {
      break;
    }
    const SMStatus status = read_ini_text(section, key, text.get(), &needed, fallback, path, wait);
    if (status == SM_STATUS_BUFFER_TOO_SMALL) {
      continue;
    }
    if (status != SM_STATUS_SUCCESS &&
        !(section != nullptr && key != nullptr && copies_default(status) && fallback.is_given() &&
          needed == fallback.size)) {
      break;
    }
    told = needed;
    return text.release();
  }
  return nullptr;
}

uint32_t read_ini_enum(const char* section, const char* key, const SMEnums32* table, uint32_t count,
                       bool is_bit_mask, const char* path, bool wait) {
  if (section == nullptr || key == nullptr || table == nullptr || path == nullptr || count < 2) {
    return text::kInvalidEnum;
  }
  const frame::HeapPtr<char> text(read_ini_copy(section, key, nullptr, nullptr, path, wait));
  if (text == nullptr) {
    return table[1].value;
  }
  const text::EnumTable names{table, count};
  return is_bit_mask ? text::value_of_names(names, text.get(), ',')
                     : text::value_of_name(names, text.get());
}

}  // namespace kqsupt::config
