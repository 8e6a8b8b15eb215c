// Host names and lists of addresses under failing allocations.

#include <netdb.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "faults/sweep.h"
#include "kqsupt/net.h"
#include "support/own_network.h"

// In the place of the C library's resolver, which keeps memory for itself when it is short of some:
// it knows every host by one name, needs a larger room than the first, and memory of its own.
extern "C" int gethostbyname_r(const char*, hostent* host, char* room, size_t size, hostent** found,
                               int* reason) {
  static constexpr char kOfficialName[] = "quay7.example";
  *found = nullptr;
  *reason = NETDB_INTERNAL;
  void* own = std::malloc(100);
  if (own == nullptr) {
    return ENOMEM;
  }
  std::free(own);
  if (size < 5000) {
    return ERANGE;
  }
  std::memcpy(room, kOfficialName, sizeof kOfficialName);
  *host = {};
  host->h_name = room;
  *found = host;
  *reason = 0;
  return 0;
}

namespace kqsupt::tests {
namespace {

constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr uint32_t kRoom = 60;
constexpr uint32_t kIpv4Addresses = 50;  // more than the first answer of the interface table holds

void build_network() {
  enter_own_network();
  add_running("veth0");
  std::string addresses =
      "addr add fe80::1/64 dev veth0 nodad\n"
      "addr add 2001:db8::1/64 dev veth0 nodad\n";
  for (uint32_t i = 1; i <= kIpv4Addresses; ++i) {
    addresses += "addr add 10.1.0." + std::to_string(i) + "/32 dev veth0\n";
  }
  ip(addresses);
}

struct Suffix {
  char text[16] = "old";
  uint32_t size = sizeof text;
};

struct Ipv4List {
  SMIPAddrStr entries[kRoom] = {};
  uint32_t count = kRoom;
};

struct InetList {
  SMInetAddrStr entries[kRoom] = {};
  uint32_t count = kRoom;
};

}  // namespace

std::vector<Row> net_rows() {
  build_network();
  return {
      row<Suffix>(
          "SMGetDNSSuffixNameName", {{SM_STATUS_NO_MEMORY, 0}},
          [](Suffix& state) { return SMGetDNSSuffixNameName(state.text, &state.size); },
          [](Suffix& state) {
            return state.size == sizeof state.text && std::strcmp(state.text, "old") == 0;
          }),
      row<Ipv4List>(
          "SMGetIPAddrStrList", {{kFailed, 0}},
          [](Ipv4List& state) {
            const SMStatus status = SMGetIPAddrStrList(nullptr, &state.count, state.entries);
            EXPECT_EQ(state.count, status == SM_STATUS_SUCCESS ? kIpv4Addresses : kRoom);
            return status;
          },
          [](Ipv4List& state) { return state.entries[0].text[0] == '\0'; }),
      // The IPv4 part fails as its own list does.
      row<InetList>(
          "SMGetInetAddrStrList", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
          [](InetList& state) {
            return SMGetInetAddrStrList(SM_INET_LIST_BOTH, &state.count, state.entries);
          },
          [](InetList& state) { return state.count == kRoom; }),
      row<InetList>(
          "SMGetInetAddrStrList_ipv6", {{SM_STATUS_NO_MEMORY, 0}},
          [](InetList& state) {
            return SMGetInetAddrStrList(SM_INET_LIST_IPV6, &state.count, state.entries);
          },
          [](InetList& state) { return state.count == kRoom && state.entries[0].family == 0; }),
  };
}

}  // namespace kqsupt::tests
