// Whether the network functions have been started in this process.
#pragma once

#include "kqsupt/net.h"

namespace kqsupt::net {

// What every function of the room answers before the start and after the stop.
inline constexpr SMStatus kNotStarted = 17;

bool start();
void stop();
[[nodiscard]] bool is_started();

}  // namespace kqsupt::net
