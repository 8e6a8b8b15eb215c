// The lists of addresses, in networks that the tests build.

#include <arpa/inet.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <linux/capability.h>
#include <linux/if_tun.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <algorithm>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/net.h"
#include "support/guarded.h"
#include "support/own_network.h"

namespace {

using kqsupt::tests::add_running;
using kqsupt::tests::can;
using kqsupt::tests::Guarded;
using kqsupt::tests::interface_flags;
using kqsupt::tests::ip;
using kqsupt::tests::OwnNetwork;
using kqsupt::tests::wait_until_running;
using Texts = std::vector<std::string>;

constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr uint32_t kPlenty = 1000;

Texts ipv4_list() {
  std::vector<SMIPAddrStr> entries(kPlenty);
  uint32_t count = kPlenty;
  EXPECT_EQ(SMGetIPAddrStrList(nullptr, &count, entries.data()), SM_STATUS_SUCCESS);
  Texts texts;
  for (uint32_t i = 0; i < count; ++i) {
    texts.emplace_back(entries[i].text);
  }
  return texts;
}

Texts inet_list(uint32_t selector) {
  std::vector<SMInetAddrStr> entries(kPlenty);
  uint32_t count = kPlenty;
  EXPECT_EQ(SMGetInetAddrStrList(selector, &count, entries.data()), SM_STATUS_SUCCESS);
  Texts texts;
  for (uint32_t i = 0; i < count; ++i) {
    const bool is_ipv6 = std::strchr(entries[i].text, ':') != nullptr;
    EXPECT_EQ(entries[i].family, is_ipv6 ? 2 : 1) << entries[i].text;
    EXPECT_EQ(entries[i].reserved, 0);
    texts.emplace_back(entries[i].text);
  }
  return texts;
}

// How an IPv6 address ranks in the list.
int rank(const std::string& text) {
  in6_addr address{};
  inet_pton(AF_INET6, text.c_str(), &address);
  const int prefix = (address.s6_addr[0] << 8 | address.s6_addr[1]) & 0xFFC0;
  return prefix == 0xFE80 ? 2 : prefix == 0xFEC0 ? 1 : 0;
}

// What the C library lists of a family, less the interfaces with one of the flags `without` or not
// all of `with`.
Texts c_library_list(int family, unsigned without, unsigned with) {
  ifaddrs* list = nullptr;
  EXPECT_EQ(getifaddrs(&list), 0);
  Texts texts;
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != family ||
        (entry->ifa_flags & without) != 0 || (entry->ifa_flags & with) != with) {
      continue;
    }
    char text[INET6_ADDRSTRLEN];
    const void* address =
        family == AF_INET
            ? static_cast<const void*>(&reinterpret_cast<sockaddr_in*>(entry->ifa_addr)->sin_addr)
            : &reinterpret_cast<sockaddr_in6*>(entry->ifa_addr)->sin6_addr;
    texts.emplace_back(inet_ntop(family, address, text, sizeof text));
  }
  freeifaddrs(list);
  return texts;
}

Texts sorted(Texts texts) {
  std::sort(texts.begin(), texts.end());
  return texts;
}

// Compares all lists with the C library's, and the order of the IPv6 addresses with their rank.
void expect_as_the_c_library_lists() {
  const Texts ipv4 = c_library_list(AF_INET, IFF_LOOPBACK | IFF_POINTOPOINT, IFF_RUNNING);
  const Texts ipv6 = c_library_list(AF_INET6, IFF_LOOPBACK | IFF_NOARP, 0);
  EXPECT_EQ(sorted(ipv4_list()), sorted(ipv4));
  EXPECT_EQ(inet_list(1), ipv4_list());
  const Texts listed = inet_list(2);
  EXPECT_EQ(sorted(listed), sorted(ipv6));
  EXPECT_TRUE(std::is_sorted(
      listed.begin(), listed.end(),
      [](const std::string& one, const std::string& other) { return rank(one) < rank(other); }));
  Texts both = ipv4_list();
  both.insert(both.end(), listed.begin(), listed.end());
  EXPECT_EQ(inet_list(0), both);
}

// A point-to-point interface, which runs as long as its descriptor is open.
class Tunnel {
 public:
  explicit Tunnel(const std::string& name) : file_(open("/dev/net/tun", O_RDWR | O_CLOEXEC)) {
    ifreq request{};
    name.copy(request.ifr_name, sizeof request.ifr_name - 1);
    request.ifr_flags = IFF_TUN | IFF_NO_PI;
    made_ = file_ >= 0 && ioctl(file_, TUNSETIFF, &request) == 0;
  }
  Tunnel(const Tunnel&) = delete;
  Tunnel& operator=(const Tunnel&) = delete;
  ~Tunnel() { close(file_); }
  [[nodiscard]] bool made() const { return made_; }

 private:
  int file_;
  bool made_;
};

class InterfaceLists : public OwnNetwork {};

TEST_F(InterfaceLists, AreEmptyOnANewNetwork) {
  EXPECT_EQ(ipv4_list(), Texts());
  EXPECT_EQ(inet_list(0), Texts());
  for (const uint32_t selector : {0U, 1U, 2U}) {
    uint32_t count = 7;
    EXPECT_EQ(SMGetInetAddrStrList(selector, &count, nullptr), SM_STATUS_SUCCESS);
    EXPECT_EQ(count, 0U);
  }
}

TEST_F(InterfaceLists, LoopbackIsNotListed) {
  ip("link set lo up\naddr add 10.0.0.7/32 dev lo\naddr add 2001:db8::7/128 dev lo\n");
  EXPECT_EQ(inet_list(0), Texts());
  expect_as_the_c_library_lists();
}

TEST_F(InterfaceLists, InterfacesThatDoNotRunHaveNoIpv4Address) {
  ip("link add idle type veth peer name peer\n"
     "link set idle addrgenmode none\n"
     "addr add 10.0.1.1/24 dev idle\n");
  EXPECT_EQ(inet_list(0), Texts());
  ip("link set idle up\n");  // without a peer that is up it does not run
  EXPECT_EQ(inet_list(0), Texts());
  expect_as_the_c_library_lists();
  ip("link set peer addrgenmode none\nlink set peer up\n");
  wait_until_running("idle");
  EXPECT_EQ(inet_list(0), Texts{"10.0.1.1"});
  ip("link set idle down\n");
  EXPECT_EQ(inet_list(0), Texts());
}

TEST_F(InterfaceLists, Ipv6AddressesDoNotNeedARunningInterface) {
  ip("link add idle type veth peer name peer\n"
     "link set idle addrgenmode none\n"
     "link set idle up\n"
     "addr add 2001:db8::1/64 dev idle nodad\n");
  EXPECT_EQ(inet_list(0), Texts{"2001:db8::1"});
  expect_as_the_c_library_lists();
}

TEST_F(InterfaceLists, PointToPointInterfacesAreNotListed) {
  add_running("veth0");
  ip("addr add 10.0.2.1/24 dev veth0\n");
  const Tunnel tunnel("tun0");
  if (!tunnel.made()) {
    GTEST_SKIP() << "this user may not make a tunnel: " << std::strerror(errno);
  }
  ip("link set tun0 addrgenmode none\n"
     "addr add 10.0.2.9 peer 10.0.2.10 dev tun0\n"
     "link set tun0 up\n"
     "addr add 2001:db8:2::9/64 dev tun0 nodad\n");
  wait_until_running("tun0");
  ASSERT_EQ(interface_flags("tun0") & (IFF_POINTOPOINT | IFF_NOARP),
            unsigned{IFF_POINTOPOINT | IFF_NOARP});
  EXPECT_EQ(inet_list(0), Texts{"10.0.2.1"});
  expect_as_the_c_library_lists();
  ip("link set tun0 arp on\n");
  EXPECT_EQ(inet_list(0), (Texts{"10.0.2.1", "2001:db8:2::9"})) << "IPv6 asks for neighbours only";
  expect_as_the_c_library_lists();
}

TEST_F(InterfaceLists, WithoutNeighboursThereIsNoIpv6Address) {
  add_running("veth0");
  ip("addr add 10.0.2.1/24 dev veth0\n"
     "addr add 2001:db8::1/64 dev veth0 nodad\n"
     "link set veth0 arp off\n");
  ASSERT_NE(interface_flags("veth0") & IFF_NOARP, 0U);
  EXPECT_EQ(inet_list(0), Texts{"10.0.2.1"});
  expect_as_the_c_library_lists();
}

TEST_F(InterfaceLists, GlobalAddressesPrecedeSiteLocalOnesAndTheseLinkLocalOnes) {
  add_running("veth0");
  add_running("veth1");
  ip("addr add fe80::1/64 dev veth0 nodad\n"
     "addr add fec0::1/64 dev veth0 nodad\n"
     "addr add 2001:db8::1/64 dev veth0 nodad\n"
     "addr add fe80::2/64 dev veth1 nodad\n"
     "addr add feff::2/64 dev veth1 nodad\n"
     "addr add fd00::2/64 dev veth1 nodad\n");
  const Texts listed = inet_list(2);
  ASSERT_EQ(listed.size(), 6U);
  EXPECT_EQ(sorted({listed[0], listed[1]}), (Texts{"2001:db8::1", "fd00::2"}));
  EXPECT_EQ(sorted({listed[2], listed[3]}), (Texts{"fec0::1", "feff::2"}));
  EXPECT_EQ(sorted({listed[4], listed[5]}), (Texts{"fe80::1", "fe80::2"}));
  expect_as_the_c_library_lists();
}

TEST_F(InterfaceLists, EachAddressOfALabelIsListedOnce) {
  add_running("veth0");
  ip("addr add 10.0.3.1/24 dev veth0\n"
     "addr add 10.0.3.2/24 dev veth0\n"
     "addr add 10.0.3.3/24 dev veth0 label veth0:a\n"
     "addr add 10.0.3.4/24 dev veth0 label veth0:a\n"
     "addr add 10.0.4.1/32 dev veth0 label veth0:b\n"
     "addr add 10.0.4.2/32 dev veth0\n");
  const Texts listed = ipv4_list();
  EXPECT_EQ(sorted(listed),
            (Texts{"10.0.3.1", "10.0.3.2", "10.0.3.3", "10.0.3.4", "10.0.4.1", "10.0.4.2"}));
  EXPECT_EQ(listed, c_library_list(AF_INET, 0, 0)) << "in the order of the table";
  expect_as_the_c_library_lists();
}

TEST_F(InterfaceLists, AreWholeForAnyNumberOfAddresses) {
  add_running("veth0");
  // The first answer holds 24 or 30 entries, the next ones 16 or 20 more each.
  for (uint32_t count = 1; count <= 66; ++count) {
    ip("addr add 10.1.0." + std::to_string(count) + "/32 dev veth0\n");
    Texts expected;
    for (uint32_t i = 1; i <= count; ++i) {
      expected.push_back("10.1.0." + std::to_string(i));
    }
    ASSERT_EQ(ipv4_list(), expected);
    ASSERT_EQ(inet_list(1), expected);
    uint32_t found = 0;
    ASSERT_EQ(SMGetIPAddrStrList(nullptr, &found, nullptr), SM_STATUS_SUCCESS);
    ASSERT_EQ(found, count);
  }
}

TEST_F(InterfaceLists, AgreeWithTheCLibraryOnAMixedNetwork) {
  add_running("veth0");
  add_running("veth1", "index 300");  // an index of more than two digits
  ip("link set lo up\n"
     "link add idle type veth peer name peer\n"
     "addr add 10.2.0.1/24 dev veth0\n"
     "addr add 10.2.0.2/24 dev veth0 label veth0:1\n"
     "addr add 10.2.0.3/24 dev veth0 label veth0:1\n"
     "addr add 10.2.0.1/24 dev veth1\n"
     "addr add 10.2.9.1/24 dev idle\n"
     "addr add fe80::1/64 dev veth0 nodad\n"
     "addr add fe80::1/64 dev veth1 nodad\n"
     "addr add fec0::1/64 dev veth1 nodad\n"
     "addr add 2001:db8::1/64 dev veth0 nodad\n"
     "addr add 2001:db8::2/128 dev veth1 nodad\n"
     "addr add 2001:db8::3/64 dev lo nodad\n");
  if (can("link add dummy0 type dummy")) {
    ip("link set dummy0 addrgenmode none\n"
       "link set dummy0 up\n"
       "addr add 10.2.3.1/24 dev dummy0\n"
       "addr add 2001:db8:1::1/64 dev dummy0 nodad\n");
  }
  const Tunnel tunnel("tun0");
  if (tunnel.made()) {
    ip("link set tun0 up\naddr add 10.2.8.1/24 dev tun0\naddr add fec0::8/64 dev tun0 nodad\n");
  }
  expect_as_the_c_library_lists();
  EXPECT_GE(inet_list(0).size(), 9U);
}

TEST_F(InterfaceLists, AnInterfaceOfAHighIndexIsFilteredByItsName) {
  add_running("veth0", "index 4660");
  ip("addr add 2001:db8::1/64 dev veth0 nodad\n");
  EXPECT_EQ(inet_list(2), Texts{"2001:db8::1"});
  ip("link set veth0 arp off\n");
  EXPECT_EQ(inet_list(2), Texts());
}

TEST_F(InterfaceLists, Ipv4KeepsToEveryRoom) {
  add_running("veth0");
  ip("addr add 10.3.0.1/32 dev veth0\n"
     "addr add 10.3.0.200/32 dev veth0\n"
     "addr add 203.113.113.114/32 dev veth0\n");
  const Texts expected{"10.3.0.1", "10.3.0.200", "203.113.113.114"};
  for (uint32_t room = 0; room <= 4; ++room) {
    const Guarded<SMIPAddrStr> entries(room);
    uint32_t count = room;
    EXPECT_EQ(SMGetIPAddrStrList("any", &count, entries.data()),
              room < 3 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS);
    EXPECT_EQ(count, 3U);
    for (uint32_t i = 0; i < room; ++i) {
      const SMIPAddrStr& entry = entries.data()[i];
      EXPECT_EQ(i < 3 ? expected[i] : std::string(16, 0x55),
                std::string(entry.text, strnlen(entry.text, 16)));
    }
  }
}

TEST_F(InterfaceLists, WithoutABufferIpv4IsCounted) {
  add_running("veth0");
  ip("addr add 10.3.0.1/32 dev veth0\naddr add 10.3.0.2/32 dev veth0\n");
  for (const uint32_t room : {0U, 1U, 2U, 0xFFFFFFFFU}) {
    uint32_t count = room;
    EXPECT_EQ(SMGetIPAddrStrList(nullptr, &count, nullptr), SM_STATUS_SUCCESS);
    EXPECT_EQ(count, 2U);
  }
}

TEST_F(InterfaceLists, BothFamiliesKeepToEveryRoom) {
  add_running("veth0");
  ip("addr add 10.3.0.1/32 dev veth0\n"
     "addr add 10.3.0.2/32 dev veth0\n"
     "addr add fe80::3/64 dev veth0 nodad\n"
     "addr add 2001:db8::3/64 dev veth0 nodad\n");
  const Texts expected{"10.3.0.1", "10.3.0.2", "2001:db8::3", "fe80::3"};
  for (uint32_t room = 0; room <= 5; ++room) {
    const Guarded<SMInetAddrStr> entries(room);
    uint32_t count = room;
    EXPECT_EQ(SMGetInetAddrStrList(0, &count, entries.data()),
              room < 4 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS);
    EXPECT_EQ(count, 4U);
    for (uint32_t i = 0; i < room; ++i) {
      const SMInetAddrStr& entry = entries.data()[i];
      if (room < 2 || i >= 4) {
        EXPECT_EQ(entry.family, 0x5555) << "without room for all of IPv4 none of it is written";
      } else {
        EXPECT_EQ(entry.family, i < 2 ? 1 : 2);
        EXPECT_EQ(entry.reserved, 0);
        EXPECT_EQ(entry.text, expected[i]);
      }
    }
  }
}

TEST_F(InterfaceLists, OneFamilyKeepsToEveryRoom) {
  add_running("veth0");
  ip("addr add 10.3.0.1/32 dev veth0\n"
     "addr add 10.3.0.2/32 dev veth0\n"
     "addr add fe80::3/64 dev veth0 nodad\n"
     "addr add 2001:db8::3/64 dev veth0 nodad\n");
  for (const uint32_t selector : {1U, 2U}) {
    for (uint32_t room = 0; room <= 3; ++room) {
      const Guarded<SMInetAddrStr> entries(room);
      uint32_t count = room;
      EXPECT_EQ(SMGetInetAddrStrList(selector, &count, entries.data()),
                room < 2 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS);
      EXPECT_EQ(count, 2U);
      const uint32_t written = room >= 2 ? 2 : selector == 1 ? 0 : room;
      for (uint32_t i = 0; i < room; ++i) {
        EXPECT_EQ(entries.data()[i].family, i < written ? selector : 0x5555U);
      }
    }
  }
}

TEST_F(InterfaceLists, WithoutABufferBothFamiliesAreCounted) {
  add_running("veth0");
  ip("addr add 10.3.0.1/32 dev veth0\n"
     "addr add 10.3.0.2/32 dev veth0\n"
     "addr add fe80::3/64 dev veth0 nodad\n");
  for (const uint32_t room : {0U, 3U, 100U, 0xFFFFFFFFU}) {
    for (const auto& [selector, expected] : {std::pair{0U, 3U}, {1U, 2U}, {2U, 1U}}) {
      uint32_t count = room;
      EXPECT_EQ(SMGetInetAddrStrList(selector, &count, nullptr), SM_STATUS_BUFFER_TOO_SMALL);
      EXPECT_EQ(count, expected);
    }
  }
}

TEST_F(InterfaceLists, WithoutAnIpv6AddressIpv4OverflowIsSuccess) {
  add_running("veth0");
  ip("addr add 10.3.0.1/32 dev veth0\naddr add 10.3.0.2/32 dev veth0\n");
  SMInetAddrStr entry{};
  uint32_t count = 1;
  EXPECT_EQ(SMGetInetAddrStrList(0, &count, &entry), SM_STATUS_SUCCESS);
  EXPECT_EQ(count, 2U);
  EXPECT_EQ(entry.family, 0);
  count = 1;
  EXPECT_EQ(SMGetInetAddrStrList(0, &count, nullptr), SM_STATUS_SUCCESS);
  EXPECT_EQ(count, 2U);
  count = 1;
  EXPECT_EQ(SMGetInetAddrStrList(1, &count, &entry), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(count, 2U);
}

TEST_F(InterfaceLists, ArgumentsAreChecked) {
  SMInetAddrStr entry{};
  for (const uint32_t selector : {3U, 0x100U, 0xFFFFFFFFU}) {
    uint32_t count = 1;
    EXPECT_EQ(SMGetInetAddrStrList(selector, &count, &entry), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(count, 1U);
  }
  EXPECT_EQ(SMGetInetAddrStrList(0, nullptr, &entry), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMGetInetAddrStrList(3, nullptr, nullptr), SM_STATUS_UNSUCCESSFUL);
  SMIPAddrStr text{};
  EXPECT_EQ(SMGetIPAddrStrList("host", nullptr, &text), SM_STATUS_UNSUCCESSFUL);
}

// The capabilities of this thread less that of packet sockets, for a scope.
class WithoutPacketSockets {
 public:
  WithoutPacketSockets() {
    syscall(SYS_capget, &header_, before_);
    __user_cap_data_struct less[2] = {before_[0], before_[1]};
    less[0].effective &= ~(1U << CAP_NET_RAW);
    syscall(SYS_capset, &header_, less);
  }
  WithoutPacketSockets(const WithoutPacketSockets&) = delete;
  WithoutPacketSockets& operator=(const WithoutPacketSockets&) = delete;
  ~WithoutPacketSockets() { syscall(SYS_capset, &header_, before_); }

 private:
  __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct before_[2];
};

TEST_F(InterfaceLists, AreTheSameWithoutThePrivilegeOfPacketSockets) {
  add_running("veth0");
  ip("link set lo up\n"
     "addr add 10.3.0.1/32 dev veth0\n"
     "addr add 10.3.0.2/32 dev veth0 label veth0:1\n"
     "addr add 10.3.0.3/32 dev veth0 label veth0:1\n"
     "addr add fec0::1/64 dev veth0 nodad\n");
  const Texts with = inet_list(0);
  EXPECT_EQ(with.size(), 4U);
  const WithoutPacketSockets without;
  ASSERT_LT(socket(AF_PACKET, SOCK_RAW, 0), 0);
  EXPECT_EQ(inet_list(0), with);
  expect_as_the_c_library_lists();
}

// Descriptors of which only `free` are left, for a scope.
class FewDescriptors {
 public:
  explicit FewDescriptors(rlim_t free) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const int next = dup(STDIN_FILENO);
    close(next);
    const rlimit few{static_cast<rlim_t>(next) + free, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
  }
  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;
  ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

TEST_F(InterfaceLists, WithoutASocketTheyFail) {
  add_running("veth0");
  ip("addr add 10.3.0.1/32 dev veth0\naddr add 2001:db8::1/64 dev veth0 nodad\n");
  SMInetAddrStr entry{};
  SMIPAddrStr text{};
  uint32_t count = 1;
  {
    const FewDescriptors none(0);
    EXPECT_EQ(SMGetIPAddrStrList(nullptr, &count, &text), kFailed);
    EXPECT_EQ(SMGetInetAddrStrList(0, &count, &entry), kFailed);
    EXPECT_EQ(SMGetInetAddrStrList(1, &count, &entry), kFailed);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(SMGetInetAddrStrList(2, &count, &entry), SM_STATUS_SUCCESS)
        << "a table that cannot be opened is an empty one";
    EXPECT_EQ(count, 0U);
  }
  count = 1;
  const FewDescriptors one(1);  // the table's
  EXPECT_EQ(SMGetInetAddrStrList(2, &count, &entry), kFailed);
  EXPECT_EQ(SMGetInetAddrStrList(0, &count, &entry), kFailed);
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(entry.family, 1) << "IPv4 was listed before";
}

TEST_F(InterfaceLists, LeaveNoDescriptorOpen) {
  add_running("veth0");
  ip("addr add 10.3.0.1/32 dev veth0\naddr add 2001:db8::1/64 dev veth0 nodad\n");
  const FewDescriptors few(2);
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(inet_list(0).size(), 2U);
  }
}

}  // namespace
