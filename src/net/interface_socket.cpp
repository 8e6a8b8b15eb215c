// Asking the kernel about interfaces.

#include "net/interface_socket.h"

#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>

namespace kqsupt::net {
namespace {

constexpr int kPacketProtocol = 3;

os::FileDescriptor open_socket(int domain, int type, int protocol) {
  return os::FileDescriptor(::socket(domain, type | SOCK_CLOEXEC, protocol));
}

}  // namespace

// Packet sockets are for privileged processes. The others ask through a datagram socket, which is
// given the same answers.
InterfaceSocket::InterfaceSocket() : socket_(open_socket(PF_PACKET, SOCK_PACKET, kPacketProtocol)) {
  if (!socket_.is_open()) {
    socket_ = open_socket(PF_INET, SOCK_DGRAM, 0);
  }
}

bool InterfaceSocket::list_ipv4(ifconf& table) const {
  return ioctl(socket_.get(), SIOCGIFCONF, &table) == 0;
}

bool InterfaceSocket::flags(const char* name, unsigned& flags) const {
  ifreq request{};
  std::memcpy(request.ifr_name, name, strnlen(name, sizeof request.ifr_name - 1));
  if (ioctl(socket_.get(), SIOCGIFFLAGS, &request) != 0) {
    return false;
  }
  flags = static_cast<unsigned>(request.ifr_flags) & 0xFFFFU;
  return true;
}

bool InterfaceSocket::has_address(ifreq entry) const {
  return ioctl(socket_.get(), SIOCGIFADDR, &entry) == 0;
}

}  // namespace kqsupt::net
