// The table of the libraries that several users of the process share.
#pragma once

#include "kqsupt/os.h"

namespace kqsupt::os {

// Before the start and after the stop there is no table: nothing is linked, and there is nothing to
// unload. The stop unloads what users still have.
[[nodiscard]] bool start_shared_libraries();
void stop_shared_libraries();

[[nodiscard]] void* link_shared_function(const char* user, const char* path, const char* function);
SMStatus unload_shared_library(const char* user, const char* path);

}  // namespace kqsupt::os
