// Shared objects that are loaded into the process and looked into.
#pragma once

#include <cstdint>

#include "kqsupt/os.h"

namespace kqsupt::os {

[[nodiscard]] SMLib* load_library(const char* path);
SMStatus unload_library(SMLib* library);
[[nodiscard]] void* library_function(SMLib* library, const char* name);
SMStatus unlink_library_function(SMLib* library, const void* address);

}  // namespace kqsupt::os
