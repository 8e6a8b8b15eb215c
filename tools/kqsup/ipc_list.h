// kqsup ipc list: what stands behind the registered names now.
#pragma once

#include <string>

#include "command.h"
#include "listing.h"

namespace kqsup {

// Only the objects that `name` is a caller's name of; all with an empty one, which no object has.
void list_ipc(Run& run, const std::string& name);

}  // namespace kqsup
