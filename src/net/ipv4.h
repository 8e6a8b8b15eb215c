// IPv4 addresses as text and as words in network byte order.
#pragma once

#include "kqsupt/net.h"

namespace kqsupt::net {

[[nodiscard]] SMStatus ipv4_from_text(const char* text, uint32_t* address);
[[nodiscard]] SMStatus ipv4_to_text(uint32_t address, char* buffer, uint32_t* size);

// The longest dotted text with its terminator, "255.255.255.255".
inline constexpr uint32_t kIpv4TextSize = 16;

}  // namespace kqsupt::net
