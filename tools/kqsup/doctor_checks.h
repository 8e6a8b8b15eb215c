// What on a host would break agents. Each check reads below a root directory, and changes nothing.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "host_paths.h"

namespace kqsup {

enum class Health { kOk, kWarning, kWrong };

[[nodiscard]] const char* name_of(Health health);

struct Finding {
  std::string check;
  Health health = Health::kOk;
  std::string found;  // what is there
  std::string why;    // why it matters to agents
  std::string to_do;  // empty when all is well
};

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

// Whether a key of a systemd configuration file is set in this section; the last time counts. An
// empty value is one too.
[[nodiscard]] bool find_setting(std::string_view text, std::string_view section,
                                std::string_view key, std::string* value);

// A line of the configuration of temporary files.
struct CleanerLine {
  std::string type;
  std::string path;  // with its specifiers replaced; empty when one of them is not known
  std::string age;   // empty for none
};

[[nodiscard]] std::vector<CleanerLine> cleaner_lines(std::string_view text);

// The line that takes away what lies in the directory; null when none does. The line that is closest
// to the directory decides.
[[nodiscard]] const CleanerLine* cleaner_of(const std::vector<CleanerLine>& lines,
                                            const std::string& directory);

}  // namespace kqsup
