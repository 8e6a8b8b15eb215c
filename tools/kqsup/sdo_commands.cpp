#include "command.h"

namespace kqsup {

void add_sdo_commands(CLI::App&, Run&) {}

}  // namespace kqsup
