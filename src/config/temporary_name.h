// Names that no file in a directory has yet.
#pragma once

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::config {

// The size of every such name, with its terminator.
inline constexpr uint32_t kTemporaryNameSize = 9;

// The exported operation. Nothing is made: somebody else may take the name meanwhile.
[[nodiscard]] SMStatus make_temporary_name(const char* directory, char* buffer, uint32_t* size);

}  // namespace kqsupt::config
