// Finding parameters and reading their values.

#include "text/parameters.h"

#include <cctype>
#include <cstring>

#include "text/enum_table.h"
#include "text/typed_value.h"

namespace kqsupt::text {
namespace {

// The "=" behind the name; null when there is none or no name before it.
template <class Char>
Char* equals_sign(Char* parameter) {
  if (parameter == nullptr) {
    return nullptr;
  }
  Char* sign = std::strchr(parameter, '=');
  return sign != parameter ? sign : nullptr;
}

int folded(char byte) {
  return std::tolower(static_cast<unsigned char>(byte));
}

bool has_name(const char* parameter, const char* name, bool ignore_case) {
  const char* sign = equals_sign(parameter);
  if (sign == nullptr || std::strlen(name) != static_cast<size_t>(sign - parameter)) {
    return false;
  }
  for (; parameter != sign; ++parameter, ++name) {
    if (ignore_case ? folded(*parameter) != folded(*name) : *parameter != *name) {
      return false;
    }
  }
  return true;
}

}  // namespace

char* parameter_name(char* parameter) {
  char* sign = equals_sign(parameter);
  if (sign == nullptr) {
    return nullptr;
  }
  *sign = '\0';
  return parameter;
}

char* parameter_value(char* parameter) {
  char* sign = equals_sign(parameter);
  return sign != nullptr ? sign + 1 : nullptr;
}

uint32_t is_parameter(const char* parameter) {
  return equals_sign(parameter) != nullptr ? 1 : 0;
}

int32_t find_parameter(const Parameters& parameters, const char* name, uint32_t ignore_case) {
  if (parameters.texts == nullptr || name == nullptr) {
    return -1;
  }
  for (int32_t i = 0; i < parameters.count; ++i) {
    if (has_name(parameters.texts[i], name, ignore_case == 1)) {
      return i;
    }
  }
  return -1;
}

char* find_parameter_value(const Parameters& parameters, const char* name, uint32_t ignore_case) {
  const int32_t index = find_parameter(parameters, name, ignore_case);
  return index >= 0 ? parameter_value(parameters.texts[index]) : nullptr;
}

SMStatus parameter_to_value(const Parameters& parameters, const char* name, uint32_t ignore_case,
                            void* value, uint32_t* size, uint32_t type) {
  if (parameters.texts == nullptr || value == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const char* text = find_parameter_value(parameters, name, ignore_case);
  if (text == nullptr) {
    return SM_STATUS_DATA_NOT_FOUND;
  }
  return value_from_text(text, value, size, type);
}

uint32_t parameter_enum(const Parameters& parameters, const char* name, uint32_t ignore_case,
                        const SMEnums32* table, uint32_t table_count, uint32_t multiple) {
  if (parameters.texts == nullptr || name == nullptr || table == nullptr || table_count < 2) {
    return kInvalidEnum;
  }
  const char* text = find_parameter_value(parameters, name, ignore_case);
  if (text == nullptr) {
    return table[1].value;
  }
  const EnumTable names{table, table_count};
  if (multiple != 1) {
    return value_of_name(names, text);
  }
  const bool commas = std::strchr(text, '|') == nullptr && std::strchr(text, ',') != nullptr;
  return value_of_names(names, text, commas ? ',' : '|');
}

}  // namespace kqsupt::text
