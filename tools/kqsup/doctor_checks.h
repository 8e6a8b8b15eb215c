// What on a host would break agents. Each check reads below a root directory, and changes nothing.
#pragma once

#include <sys/stat.h>

#include <ctime>
#include <string>
#include <vector>

#include "doctor_finding.h"
#include "host_paths.h"

namespace kqsup {

// What there is to judge besides the files below the root.
struct Host {
  Root root;
  HostPaths paths;
  time_t now = 0;
};

[[nodiscard]] Finding check_registry(const Host& host);
[[nodiscard]] Finding check_ipc_directory(const Host& host);
[[nodiscard]] std::vector<Finding> check_limits(const Host& host);
[[nodiscard]] Finding check_logind(const Host& host);
[[nodiscard]] Finding check_protected_files(const Host& host);
[[nodiscard]] Finding check_cleaners(const Host& host);
[[nodiscard]] Finding check_logs(const Host& host);
[[nodiscard]] Finding check_clock(const Host& host);

// All of them, in this order.
[[nodiscard]] std::vector<Finding> examine(const Host& host);

// ---- What the checks judge by ----

// The directory of shared objects, by what the system says of it and of the one it lies in.
[[nodiscard]] Finding judge_ipc_directory(const std::string& path, const struct stat& directory,
                                          const struct stat& parent);

// A directory with files of these owners, where fs.protected_regular has this value.
[[nodiscard]] Finding judge_protected_files(int level, const std::string& path,
                                            const struct stat& directory,
                                            const std::vector<uid_t>& owners);

}  // namespace kqsup
