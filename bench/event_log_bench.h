// What the measurements of event logs share.
#pragma once

#include <cstddef>
#include <string>

namespace kqbench {

inline constexpr const char* kTextEventRow = "events/text";
inline constexpr size_t kEvents = 1000;
inline const std::string kEventDescription(200, 'd');

}  // namespace kqbench
