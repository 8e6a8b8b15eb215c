// The version that the library reports.
#pragma once

#include <cstdint>

namespace kqsupt::frame {

inline constexpr uint32_t kMajorVersion = 1;
inline constexpr uint32_t kMinorVersion = 1;
inline constexpr uint32_t kRevision = 1;

}  // namespace kqsupt::frame
