// Values of the environment's variables.
#pragma once

#include <cstdint>

namespace kqsupt::os {

[[nodiscard]] char* copy_of_variable(const char* name, uint32_t* size);

}  // namespace kqsupt::os
