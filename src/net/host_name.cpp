// The host name, and the domain that the resolver knows it in.

#include "net/host_name.h"

#include <netdb.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "frame/heap.h"
#include "frame/status.h"
#include "net/network_layer.h"
#include "text/conversion.h"

namespace kqsupt::net {
namespace {

// The room inside for a host name: one of the longest that the kernel takes loses its last byte.
constexpr uint32_t kHostNameSize = 64;

// The answer of the resolver most often fits into the first room.
constexpr size_t kFirstAnswerSize = 1024;

// The names of a host as the resolver gives them. `host` points into `memory`.
struct Resolved {
  frame::HeapPtr<char[]> memory;
  hostent host{};
};

SMStatus resolve(const char* name, Resolved& resolved) {
  for (size_t size = kFirstAnswerSize;; size *= 2) {
    resolved.memory.reset();
    resolved.memory = frame::heap_array<char>(size);
    if (resolved.memory == nullptr) {
      return SM_STATUS_NO_MEMORY;
    }
    hostent* found = nullptr;
    int reason = 0;
    const int error =
        gethostbyname_r(name, &resolved.host, resolved.memory.get(), size, &found, &reason);
    if (error == ERANGE) {
      continue;
    }
    if (error == ENOMEM) {
      return SM_STATUS_NO_MEMORY;
    }
    return error == 0 && found != nullptr ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
  }
}

}  // namespace

SMStatus ip_host_name(char* buffer, uint32_t* size) {
  if (buffer == nullptr || size == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (!is_started()) {
    return kNotStarted;
  }
  if (*size == 0) {
    return SM_STATUS_SUCCESS;  // cut to nothing, not even a terminator
  }
  buffer[0] = '\0';
  // A name that is too long fills the buffer to its end and is reported; it is wanted cut.
  (void)gethostname(buffer, *size);
  buffer[*size - 1] = '\0';
  *size = static_cast<uint32_t>(std::strlen(buffer)) + 1;
  return SM_STATUS_SUCCESS;
}

SMStatus ip_host_name_in_ucs2(ustring* buffer, uint32_t* size) {
  if (size == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  char name[kHostNameSize];
  uint32_t name_size = sizeof name;
  const SMStatus status = ip_host_name(name, &name_size);
  return status == SM_STATUS_SUCCESS ? text::utf8_to_ucs2(buffer, size, name) : status;
}

SMStatus dns_suffix(char* buffer, uint32_t* size) {
  if (size == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  char name[kHostNameSize];
  uint32_t name_size = sizeof name;
  Resolved resolved;
  SMStatus status = ip_host_name(name, &name_size);
  if (status == SM_STATUS_SUCCESS) {
    status = resolve(name, resolved);
  }
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  const char* dot = std::strchr(resolved.host.h_name, '.');
  const char* suffix = dot != nullptr ? dot + 1 : "";
  const auto needed = static_cast<uint32_t>(std::strlen(suffix)) + 1;
  const bool fits = buffer != nullptr && needed <= *size;
  *size = needed;
  if (!fits) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer, suffix, needed);
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::net
