#include "command.h"

namespace kqsup {

void add_ini_commands(CLI::App&, Run&) {}

}  // namespace kqsup
