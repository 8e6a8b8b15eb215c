// kqsup ipc reap: takes away what provably belongs to nobody.
#pragma once

#include "command.h"

namespace kqsup {

// Shows it only, unless `do_it`.
void reap_ipc(Run& run, bool do_it);

}  // namespace kqsup
