// Asking the system for the names.

#include "net/host_name.h"

#include <unistd.h>

#include <cstring>

#include "net/network_layer.h"

namespace kqsupt::net {

SMStatus host_name(char* buffer, uint32_t* size) {
  if (!is_started()) {
    return kNotStarted;
  }
  if (buffer == nullptr || size == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (*size != 0) {
    buffer[0] = '\0';
    (void)gethostname(buffer, *size);
    buffer[*size - 1] = '\0';
    *size = static_cast<uint32_t>(std::strlen(buffer) + 1);
  }
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::net
