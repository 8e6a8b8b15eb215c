// Parameters of the form "name=value".
#pragma once

#include <cstdint>

#include "kqsupt/text.h"

namespace kqsupt::text {

// The parameters that a caller hands over.
struct Parameters {
  int32_t count;
  char* const* texts;
};

[[nodiscard]] char* parameter_name(char* parameter);  // cut off in place
[[nodiscard]] char* parameter_value(char* parameter);
[[nodiscard]] uint32_t is_parameter(const char* parameter);

// The first parameter with this name; -1 or null when there is none.
[[nodiscard]] int32_t find_parameter(const Parameters& parameters, const char* name,
                                     uint32_t ignore_case);
[[nodiscard]] char* find_parameter_value(const Parameters& parameters, const char* name,
                                         uint32_t ignore_case);

[[nodiscard]] SMStatus parameter_to_value(const Parameters& parameters, const char* name,
                                          uint32_t ignore_case, void* value, uint32_t* size,
                                          uint32_t type);
[[nodiscard]] uint32_t parameter_enum(const Parameters& parameters, const char* name,
                                      uint32_t ignore_case, const SMEnums32* table,
                                      uint32_t table_count, uint32_t multiple);

}  // namespace kqsupt::text
