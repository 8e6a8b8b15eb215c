// The names of this host.
#pragma once

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::net {

// The exported operation.
[[nodiscard]] SMStatus host_name(char* buffer, uint32_t* size);

}  // namespace kqsupt::net
