// The IPv6 addresses of the machine's interfaces.
#pragma once

#include <netdb.h>
#include <netinet/in.h>

#include <utility>

#include "kqsupt/net.h"

namespace kqsupt::net {

class Ipv6Interfaces {
 public:
  Ipv6Interfaces() = default;
  Ipv6Interfaces(const Ipv6Interfaces&) = delete;
  Ipv6Interfaces& operator=(const Ipv6Interfaces&) = delete;
  ~Ipv6Interfaces() { clear(); }

  // Reads the list, once. It stays empty on failure, and on a machine without IPv6.
  // SM_STATUS_NO_MEMORY; 0xFFFFFFFF: interfaces cannot be asked about, or the last address that was
  // read is none.
  [[nodiscard]] SMStatus load();

  // The first node; each has a sockaddr_in6 of its own.
  [[nodiscard]] const addrinfo* first() const { return first_; }

 private:
  [[nodiscard]] SMStatus append(const in6_addr& address);
  void clear();

  addrinfo* first_ = nullptr;
  addrinfo** end_ = &first_;
};

}  // namespace kqsupt::net
