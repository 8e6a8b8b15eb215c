#include "command.h"

namespace kqsup {

void add_log_commands(CLI::App&, Run&) {}

}  // namespace kqsup
