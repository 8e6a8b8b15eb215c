#include "command.h"

namespace kqsup {

void add_doctor_command(CLI::App&, Run&) {}

}  // namespace kqsup
