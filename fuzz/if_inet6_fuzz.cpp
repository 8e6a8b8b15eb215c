// Tables of IPv6 addresses of any bytes, in the place of the kernel's.

#include <linux/capability.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "kqsupt/net.h"
#include "scratch_file.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::put_bytes;
using kqsupt::fuzz::require;
using kqsupt::fuzz::scratch_file;

namespace {

// The kernel takes milliseconds to close a packet socket. Without the privilege to have one the
// library asks about interfaces through a socket that costs nothing.
void do_without_packet_sockets() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct capabilities[2];
  require(syscall(SYS_capget, &header, capabilities) == 0);
  capabilities[0].effective &= ~(1U << CAP_NET_RAW);
  require(syscall(SYS_capset, &header, capabilities) == 0);
}

// The table that this process sees, in a directory in the place of its /proc/net.
const std::string& table() {
  static const std::string path = [] {
    const std::string& directory = scratch_file("fuzz.net");
    mkdir(directory.c_str(), 0755);
    const std::string place = "/proc/" + std::to_string(getpid()) + "/net";
    require(mount(directory.c_str(), place.c_str(), nullptr, MS_BIND, nullptr) == 0);
    do_without_packet_sockets();
    return directory + "/if_inet6";
  }();
  return path;
}

// How an address ranks in the list.
int rank(const SMInetAddrStr& entry) {
  uint8_t bytes[16];
  uint32_t size = sizeof bytes;
  require(SMInetAddrUTF8ToNetwork(SM_INET_FAMILY_IPV6, entry.text, bytes, &size) ==
          SM_STATUS_SUCCESS);
  const int prefix = (bytes[0] << 8 | bytes[1]) & 0xFFC0;
  return prefix == 0xFE80 ? 2 : prefix == 0xFEC0 ? 1 : 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const uint32_t room = input.byte() % 8U;
  const auto bytes = input.bytes();
  put_bytes(table(), bytes.get(), input.size());
  const std::unique_ptr<SMInetAddrStr[]> entries(new SMInetAddrStr[room]);
  uint32_t count = room;
  const SMStatus status = SMGetInetAddrStrList(SM_INET_LIST_IPV6, &count, entries.get());
  if (status == 0xFFFFFFFF) {
    require(count == room);
    return 0;
  }
  // Six fields, one of them of 31 digits, with blanks between them.
  require(count <= input.size() / 40);
  require(status == (count > room ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS));
  for (uint32_t i = 0; i < count && i < room; ++i) {
    require(entries[i].family == SM_INET_FAMILY_IPV6 && entries[i].reserved == 0);
    require(rank(entries[i]) >= (i != 0 ? rank(entries[i - 1]) : 0));
  }
  uint32_t counted = 0;
  require(SMGetInetAddrStrList(SM_INET_LIST_IPV6, &counted, nullptr) ==
          (count != 0 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS));
  require(counted == count);
  return 0;
}
