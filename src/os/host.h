// The host that a process runs on, and its console.
#pragma once

#include <cstdint>

namespace kqsupt::os {

inline constexpr uint32_t kLinux = 3;
inline constexpr uint32_t kVmKernel = 4;  // a hypervisor's kernel, whose disks are small

[[nodiscard]] uint32_t host_type();

// Whether there is something to read from standard input.
[[nodiscard]] bool has_input();

// There is one context of exports.
void get_export_context(uint32_t* context);

}  // namespace kqsupt::os
