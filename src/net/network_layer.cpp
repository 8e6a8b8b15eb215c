// The started flag. Sockets need no set-up on this platform.

#include "net/network_layer.h"

namespace kqsupt::net {
namespace {

constinit bool started = false;

}  // namespace

bool start() {
  started = true;
  return true;
}

void stop() {
  started = false;
}

bool is_started() {
  return started;
}

}  // namespace kqsupt::net
