// Directories, and files as names in them.
#pragma once

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::config {

// The exported operations.
SMStatus make_directory(const char* path);  // one level; one that exists is fine
SMStatus remove_directory(const char* path);
SMStatus delete_file(const char* path);
[[nodiscard]] SMStatus size_of_file(const char* path, uint32_t* size);

}  // namespace kqsupt::config
