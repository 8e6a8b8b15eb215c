// Where the logs of this host are. The library knows it too, but its start leaves traces.
#pragma once

#include <string>
#include <vector>

namespace kqsup {

// The text log and the XML log, whether they are there or not. Empty, and why, when this host does
// not say where logs are.
[[nodiscard]] std::vector<std::string> default_logs(std::string* why);

// What a log becomes when it is full.
[[nodiscard]] std::string backup_of(std::string log);

}  // namespace kqsup
