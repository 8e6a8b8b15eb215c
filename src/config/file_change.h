// Telling that a file was modified since it was last looked at.
#pragma once

#include <cstdint>

#include "kqsupt/config.h"

namespace kqsupt::config {

[[nodiscard]] SMFileProp* watch_file(const char* path);
[[nodiscard]] uint32_t was_modified(SMFileProp* file);
void stop_watching(SMFileProp* file);

}  // namespace kqsupt::config
