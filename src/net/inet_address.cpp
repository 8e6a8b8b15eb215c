// Reading and writing addresses of both families.

#include "net/inet_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cerrno>
#include <cstring>

#include "frame/status.h"
#include "net/network_layer.h"

namespace kqsupt::net {
namespace {

// A family as the system numbers it, and the bytes of its addresses.
struct Family {
  int number;
  uint32_t address_size;
};

// Null for what is no family.
const Family* family_of(uint32_t code) {
  static constexpr Family kIpv4{AF_INET, sizeof(in_addr)};
  static constexpr Family kIpv6{AF_INET6, sizeof(in6_addr)};
  switch (code) {
    case SM_INET_FAMILY_IPV4:
      return &kIpv4;
    case SM_INET_FAMILY_IPV6:
      return &kIpv6;
    default:
      return nullptr;
  }
}

}  // namespace

SMStatus inet_from_text(uint32_t family, const char* text, void* buffer, uint32_t* size) {
  if (text == nullptr || buffer == nullptr || size == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (!is_started()) {
    return kNotStarted;
  }
  const Family* known = family_of(family);
  in6_addr address;  // an IPv4 address is shorter
  if (known == nullptr || inet_pton(known->number, text, &address) != 1) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (*size < known->address_size) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer, &address, known->address_size);
  *size = known->address_size;
  return SM_STATUS_SUCCESS;
}

SMStatus inet_to_text(uint32_t family, const void* address, uint32_t length, char* buffer,
                      uint32_t* size) {
  if (address == nullptr || buffer == nullptr || size == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (!is_started()) {
    return kNotStarted;
  }
  const Family* known = family_of(family);
  if (known == nullptr || length != known->address_size) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (inet_ntop(known->number, address, buffer, *size) == nullptr) {
    switch (errno) {
      case ENOSPC:
        return SM_STATUS_BUFFER_TOO_SMALL;
      case EAFNOSUPPORT:
        return SM_STATUS_INVALID_PARAMETER;
      default:
        return frame::kFailed;
    }
  }
  *size = static_cast<uint32_t>(std::strlen(buffer)) + 1;
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::net
