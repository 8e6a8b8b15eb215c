// The answer of calls that wrap an operation of the operating system which failed.
#pragma once

#include "kqsupt/frame.h"

namespace kqsupt::frame {

inline constexpr SMStatus kFailed = 0xFFFFFFFF;

}  // namespace kqsupt::frame
