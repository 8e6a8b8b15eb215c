// IPv4 and IPv6 addresses as text and as bytes in network byte order.
#pragma once

#include "kqsupt/net.h"

namespace kqsupt::net {

[[nodiscard]] SMStatus inet_from_text(uint32_t family, const char* text, void* buffer,
                                      uint32_t* size);
[[nodiscard]] SMStatus inet_to_text(uint32_t family, const void* address, uint32_t length,
                                    char* buffer, uint32_t* size);

}  // namespace kqsupt::net
