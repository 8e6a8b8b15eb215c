// Reading the kernel's table of IPv6 addresses. A line is, in hexadecimal but for the name:
//   fe80000000000000342281fffe482aaa 02 40 20 80     eth0
// the address, the index of the interface, the length of the prefix, the scope, flags, the name.

#include "net/ipv6_interfaces.h"

#include <fcntl.h>
#include <net/if.h>

#include <array>
#include <cstdio>
#include <cstring>

#include "frame/heap.h"
#include "frame/status.h"
#include "net/interface_socket.h"
#include "os/file_descriptor.h"
#include "text/hex_text.h"

namespace kqsupt::net {
namespace {

constexpr const char* kTable = "/proc/net/if_inet6";

// Interfaces whose addresses reach no other machine by themselves.
constexpr unsigned kUnwanted = IFF_LOOPBACK | IFF_NOARP;

// The address of a node is behind it in the same block.
struct Record {
  addrinfo node;
  sockaddr_in6 address;
};
static_assert(sizeof(sockaddr_in6) == 28);

// The lines of the table as terminated texts. The kernel's are far shorter than the room for one:
// of a longer line the rest is not seen. The kernel hands the table out in pieces, so that only an
// empty one is the end.
class Lines {
 public:
  explicit Lines(const os::FileDescriptor& file) : file_(file) {}

  // The next line, valid until the next call; null at the end of the file.
  const char* next() {
    size_t length = 0;
    bool any = false;
    for (int byte = read(); byte >= 0; byte = read()) {
      any = true;
      if (byte == '\n') {
        break;
      }
      if (length < line_.size() - 1) {
        line_[length++] = static_cast<char>(byte);
      }
    }
    line_[length] = '\0';
    return any ? line_.data() : nullptr;
  }

 private:
  // The next byte; -1 at the end of the file or where it cannot be read.
  int read() {
    if (place_ == count_) {
      const ssize_t count = file_.read_some(piece_.data(), piece_.size());
      place_ = 0;
      count_ = count > 0 ? static_cast<size_t>(count) : 0;
      if (count_ == 0) {
        return -1;
      }
    }
    return piece_[place_++];
  }

  const os::FileDescriptor& file_;
  std::array<unsigned char, 4096> piece_;
  size_t place_ = 0;
  size_t count_ = 0;
  std::array<char, 256> line_;
};

// What is wanted of a line.
struct Entry {
  char digits[33];
  char name[IFNAMSIZ];
};

// False for a line that lacks a field. An index has two digits on most machines, and more where
// many interfaces came and went.
bool parse(const char* line, Entry& entry) {
  unsigned index;
  unsigned prefix;
  unsigned scope;
  unsigned flags;
  return std::sscanf(line, "%32s %x %2x %2x %2x %15s", entry.digits, &index, &prefix, &scope,
                     &flags, entry.name) == 6;
}

SMStatus convert(const char* digits, in6_addr& address) {
  const text::ParsedBytes bytes =
      text::parse_hex_pairs(digits, address.s6_addr, sizeof address.s6_addr);
  return bytes.count == sizeof address.s6_addr ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
}

}  // namespace

SMStatus Ipv6Interfaces::load() {
  const os::FileDescriptor file = os::FileDescriptor::open(kTable, O_RDONLY);
  if (!file.is_open()) {
    return SM_STATUS_SUCCESS;
  }
  const InterfaceSocket interfaces;
  if (!interfaces.is_open()) {
    return frame::kFailed;
  }
  SMStatus converted = SM_STATUS_SUCCESS;
  Lines lines(file);
  while (const char* line = lines.next()) {
    Entry entry;
    unsigned flags = 0;
    if (!parse(line, entry) || (interfaces.flags(entry.name, flags) && (flags & kUnwanted) != 0)) {
      continue;
    }
    in6_addr address;
    converted = convert(entry.digits, address);
    if (converted != SM_STATUS_SUCCESS) {
      continue;
    }
    const SMStatus appended = append(address);
    if (appended != SM_STATUS_SUCCESS) {
      clear();
      return appended;
    }
  }
  // What is no address costs itself only, but at the end of the table it costs the list: callers
  // have come to know a table that was cut by that.
  if (converted != SM_STATUS_SUCCESS) {
    clear();
  }
  return converted;
}

SMStatus Ipv6Interfaces::append(const in6_addr& address) {
  auto record = frame::heap_array<Record>(1);
  if (record == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  Record* made = record.release();
  made->address.sin6_family = AF_INET6;
  made->address.sin6_addr = address;
  made->node.ai_family = AF_INET6;
  made->node.ai_addrlen = sizeof made->address;
  made->node.ai_addr = reinterpret_cast<sockaddr*>(&made->address);
  *end_ = &made->node;
  end_ = &made->node.ai_next;
  return SM_STATUS_SUCCESS;
}

void Ipv6Interfaces::clear() {
  while (first_ != nullptr) {
    const frame::HeapPtr<addrinfo> gone(std::exchange(first_, first_->ai_next));
  }
  end_ = &first_;
}

}  // namespace kqsupt::net
