#include "command.h"

namespace kqsup {

void add_ipc_commands(CLI::App&, Run&) {}

}  // namespace kqsup
