// The machine's own addresses.
#pragma once

#include "kqsupt/net.h"

namespace kqsupt::net {

[[nodiscard]] SMStatus list_ipv4_addresses(uint32_t* count, SMIPAddrStr* entries);
[[nodiscard]] SMStatus list_addresses(uint32_t selector, uint32_t* count, SMInetAddrStr* entries);

}  // namespace kqsupt::net
