#include "log_location.h"

#include "host_paths.h"

namespace kqsup {

std::vector<std::string> default_logs(std::string* why) {
  const HostPaths paths;
  const std::string path = paths.path("Quillance", "logpath");
  if (!paths.why().empty()) {
    *why = paths.why();
    return {};
  }
  if (path.empty()) {
    *why = paths.registry() + " does not say where the logs of Quillance are";
    return {};
  }
  return {path + "/log/kqsys32.log", path + "/log/kqsys32.xml"};
}

std::string backup_of(std::string log) {
  if (!log.empty()) {
    log.back() = '_';
  }
  return log;
}

}  // namespace kqsup
