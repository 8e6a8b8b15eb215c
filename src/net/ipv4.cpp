// Reading and writing dotted addresses.

#include "net/ipv4.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <strings.h>

#include <cstring>

#include "frame/heap.h"
#include "net/network_layer.h"

namespace kqsupt::net {
namespace {

constexpr SMStatus kNotAnAddress = 0xFFFFFFFF;
constexpr const char* kBroadcastSpellings[] = {"255.255.255.255", "0xff.0xff.0xff.0xff"};

// Removes every "x", then the zeros that a part begins with, but for the last digit of a part.
void normalise(char* text) {
  char* end = text;
  for (const char* from = text; *from != '\0'; ++from) {
    if (*from != 'x') {
      *end++ = *from;
    }
  }
  *end = '\0';
  char* to = text;
  bool at_start = true;
  for (const char* from = text; *from != '\0'; ++from) {
    if (at_start && *from == '0' && from[1] != '.' && from[1] != '\0') {
      continue;
    }
    at_start = *from == '.';
    *to++ = *from;
  }
  *to = '\0';
}

}  // namespace

SMStatus ipv4_from_text(const char* text, uint32_t* address) {
  if (text == nullptr || address == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (!is_started()) {
    return kNotStarted;
  }
  const frame::HeapPtr<char> copy(strdup(text));
  if (copy == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  normalise(copy.get());
  const in_addr_t parsed = inet_addr(copy.get());
  if (parsed == INADDR_NONE) {
    // inet_addr says the same of the broadcast address and of what is no address.
    const auto is_spelled = [text](const char* spelling) {
      return strcasecmp(text, spelling) == 0;
    };
    if (!is_spelled(kBroadcastSpellings[0]) && !is_spelled(kBroadcastSpellings[1])) {
      return kNotAnAddress;
    }
  }
  *address = parsed;
  return SM_STATUS_SUCCESS;
}

SMStatus ipv4_to_text(uint32_t address, char* buffer, uint32_t* size) {
  if (buffer == nullptr || size == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (!is_started()) {
    return kNotStarted;
  }
  char text[kIpv4TextSize];
  inet_ntop(AF_INET, &address, text, sizeof text);
  const auto needed = static_cast<uint32_t>(std::strlen(text)) + 1;
  const bool fits = needed <= *size;
  *size = needed;
  if (!fits) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer, text, needed);
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::net
