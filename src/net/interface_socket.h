// A socket that is asked about the machine's network interfaces and used for nothing else.
#pragma once

#include <net/if.h>

#include "os/file_descriptor.h"

namespace kqsupt::net {

class InterfaceSocket {
 public:
  InterfaceSocket();

  [[nodiscard]] bool is_open() const { return socket_.is_open(); }

  // The interfaces that have an IPv4 address, into the room of `table`. Its length receives the
  // bytes of the answer, which is cut without notice where the room ends.
  [[nodiscard]] bool list_ipv4(ifconf& table) const;

  // The IFF_ flags of an interface. False when it cannot be told.
  [[nodiscard]] bool flags(const char* name, unsigned& flags) const;

  // Whether an entry of the table above still has an address.
  [[nodiscard]] bool has_address(ifreq entry) const;

 private:
  os::FileDescriptor socket_;
};

}  // namespace kqsupt::net
