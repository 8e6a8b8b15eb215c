// What this machine is called.
#pragma once

#include "kqsupt/net.h"

namespace kqsupt::net {

[[nodiscard]] SMStatus ip_host_name(char* buffer, uint32_t* size);
[[nodiscard]] SMStatus ip_host_name_in_ucs2(ustring* buffer, uint32_t* size);
[[nodiscard]] SMStatus dns_suffix(char* buffer, uint32_t* size);

}  // namespace kqsupt::net
