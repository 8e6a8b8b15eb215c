// Listing the addresses of the machine's interfaces.

#include "net/interface_lists.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstddef>
#include <cstring>
#include <initializer_list>

#include "frame/heap.h"
#include "frame/status.h"
#include "net/inet_address.h"
#include "net/interface_socket.h"
#include "net/ipv4.h"
#include "net/ipv6_interfaces.h"
#include "net/network_layer.h"

namespace kqsupt::net {
namespace {

static_assert(sizeof(SMIPAddrStr) == kIpv4TextSize);
static_assert(sizeof(SMInetAddrStr) == 260 && offsetof(SMInetAddrStr, text) == 4);

// Interfaces that are no way to other machines.
constexpr unsigned kUnwanted = IFF_LOOPBACK | IFF_POINTOPOINT;

// The interface table is asked for with room for some entries, then for more.
constexpr size_t kFirstTableSize = 960;
constexpr size_t kTableStep = 640;

// The interfaces that have an IPv4 address, an entry for each address.
struct Ipv4Table {
  frame::HeapPtr<char[]> memory;
  size_t count = 0;

  [[nodiscard]] ifreq entry(size_t index) const {
    ifreq copy;
    std::memcpy(&copy, memory.get() + index * sizeof copy, sizeof copy);
    return copy;
  }
};

// An answer that leaves no room for another entry may have been cut.
bool load(const InterfaceSocket& interfaces, Ipv4Table& table) {
  for (size_t size = kFirstTableSize;; size += kTableStep) {
    table.memory.reset();
    table.memory = frame::heap_array<char>(size);
    if (table.memory == nullptr) {
      return false;
    }
    ifconf answer{};
    answer.ifc_len = static_cast<int>(size);
    answer.ifc_buf = table.memory.get();
    if (!interfaces.list_ipv4(answer)) {
      return false;
    }
    const auto length = static_cast<size_t>(answer.ifc_len);
    if (length + sizeof(ifreq) <= size) {
      table.count = length / sizeof(ifreq);
      return true;
    }
  }
}

// An interface that cannot be asked about is not left out for its flags.
bool is_wanted(const InterfaceSocket& interfaces, const ifreq& entry) {
  unsigned flags = 0;
  return !interfaces.flags(entry.ifr_name, flags) ||
         ((flags & kUnwanted) == 0 && (flags & IFF_RUNNING) != 0);
}

// Entries are written whole, zeros behind the text.
void write_text(const ifreq& entry, SMIPAddrStr& to) {
  sockaddr_in address;
  std::memcpy(&address, &entry.ifr_addr, sizeof address);
  to = {};
  inet_ntop(AF_INET, &address.sin_addr, to.text, sizeof to.text);
}

// The caller's entries, and how many addresses were found for them.
struct Found {
  SMInetAddrStr* entries;
  uint32_t capacity;
  uint32_t count = 0;

  // The next entry to fill; null when there is none left. Counted in either case.
  SMInetAddrStr* next(uint16_t family) {
    if (count++ >= capacity) {
      return nullptr;
    }
    SMInetAddrStr* entry = &entries[count - 1];
    *entry = {};
    entry->family = family;
    return entry;
  }
};

SMStatus add_ipv4(Found& found) {
  frame::HeapPtr<SMIPAddrStr[]> texts;
  if (found.entries != nullptr) {
    texts = frame::heap_array<SMIPAddrStr>(found.capacity);
    if (texts == nullptr) {
      return SM_STATUS_NO_MEMORY;
    }
  }
  uint32_t count = found.capacity;
  SMStatus status = list_ipv4_addresses(&count, texts.get());
  if (status == SM_STATUS_BUFFER_TOO_SMALL) {
    found.count += count;  // none is handed out then, not even those that would fit
  }
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  for (uint32_t i = 0; i < count; ++i) {
    SMInetAddrStr* entry = found.next(SM_INET_FAMILY_IPV4);
    if (entry != nullptr) {
      std::memcpy(entry->text, texts[i].text, sizeof texts[i].text);
    }
    status = entry != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL;
  }
  return status;
}

// Addresses come in the order of how far they reach.
enum class Reach { kGlobal, kSiteLocal, kLinkLocal };

Reach reach_of(const in6_addr& address) {
  if (IN6_IS_ADDR_LINKLOCAL(&address)) {
    return Reach::kLinkLocal;
  }
  return IN6_IS_ADDR_SITELOCAL(&address) ? Reach::kSiteLocal : Reach::kGlobal;
}

// The answer is that of the last address.
SMStatus add_ipv6(Found& found) {
  Ipv6Interfaces interfaces;
  SMStatus status = interfaces.load();
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  for (const Reach reach : {Reach::kGlobal, Reach::kSiteLocal, Reach::kLinkLocal}) {
    for (const addrinfo* node = interfaces.first(); node != nullptr; node = node->ai_next) {
      const in6_addr& address = reinterpret_cast<const sockaddr_in6*>(node->ai_addr)->sin6_addr;
      if (reach_of(address) != reach) {
        continue;
      }
      SMInetAddrStr* entry = found.next(SM_INET_FAMILY_IPV6);
      uint32_t size = sizeof entry->text;
      status = entry != nullptr
                   ? inet_to_text(SM_INET_FAMILY_IPV6, &address, sizeof address, entry->text, &size)
                   : SMStatus{SM_STATUS_BUFFER_TOO_SMALL};
    }
  }
  return status;
}

bool is_counted(SMStatus status) {
  return status == SM_STATUS_SUCCESS || status == SM_STATUS_BUFFER_TOO_SMALL;
}

}  // namespace

SMStatus list_ipv4_addresses(uint32_t* count, SMIPAddrStr* entries) {
  if (count == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (!is_started()) {
    return kNotStarted;
  }
  const InterfaceSocket interfaces;
  Ipv4Table table;
  if (!interfaces.is_open() || !load(interfaces, table)) {
    return frame::kFailed;
  }
  SMStatus status = SM_STATUS_SUCCESS;
  uint32_t found = 0;
  for (size_t i = 0; i < table.count; ++i) {
    // A label with several addresses has an entry for each. Asked by its label it would answer with
    // the first of them each time: the address is the entry's own.
    const ifreq entry = table.entry(i);
    if (!is_wanted(interfaces, entry) || !interfaces.has_address(entry)) {
      continue;
    }
    const bool fits = entries == nullptr || found < *count;
    if (entries != nullptr && fits) {
      write_text(entry, entries[found]);
    }
    status = fits ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL;
    ++found;
  }
  *count = found;
  return status;
}

SMStatus list_addresses(uint32_t selector, uint32_t* count, SMInetAddrStr* entries) {
  if (count == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (!is_started()) {
    return kNotStarted;
  }
  if (selector > SM_INET_LIST_IPV6) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  Found found{entries, entries != nullptr ? *count : 0};
  SMStatus status = SM_STATUS_SUCCESS;
  if (selector != SM_INET_LIST_IPV6) {
    status = add_ipv4(found);
  }
  // IPv4 addresses that found no room are forgotten here when there is no IPv6 address: callers
  // compare the number found with their capacity.
  if (selector != SM_INET_LIST_IPV4 && is_counted(status)) {
    status = add_ipv6(found);
  }
  if (is_counted(status)) {
    *count = found.count;
  }
  return status;
}

}  // namespace kqsupt::net
