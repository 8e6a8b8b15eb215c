#include "log_location.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string_view>

namespace kqsup {

namespace {

constexpr const char* kRegistries[] = {"/etc/ybreg.cfg", "/usr/lib/ext/mavo/ybreg.cfg"};
constexpr std::string_view kBlanks = " \t";
constexpr size_t kLongestLine = 8450;

std::string_view without_blanks(std::string_view text) {
  const size_t begin = text.find_first_not_of(kBlanks);
  return begin != std::string_view::npos ? text.substr(begin) : std::string_view();
}

// The first value of that key; none when there is none, or an empty one.
std::optional<std::string> registered(const char* registry, std::string_view key) {
  std::ifstream file(registry, std::ios::binary);
  char line[kLongestLine];
  while (file.getline(line, sizeof line) || (file.gcount() != 0 && !file.bad() && !file.eof())) {
    file.clear(file.rdstate() & ~std::ios::failbit);  // the line goes on
    std::string_view text = without_blanks(line);
    if (!text.starts_with(key) || !text.substr(key.size()).starts_with('=')) {
      continue;
    }
    text = without_blanks(text.substr(key.size() + 1));
    text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
    if (text.ends_with('/')) {
      text.remove_suffix(1);
    }
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
  }
  return std::nullopt;
}

std::optional<std::string> from_environment() {
  for (const char* name : {"quillanceinstallpath", "QUILLANCEINSTALLPATH"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') {
      return value;
    }
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> default_logs(std::string* why) {
  for (const char* registry : kRegistries) {
    if (access(registry, F_OK) != 0) {
      continue;
    }
    // A product that says nothing of its logs keeps them where it is installed.
    auto path = registered(registry, "Quillance.logpath");
    path = path ? path : from_environment();
    path = path ? path : registered(registry, "Quillance.installpath");
    if (!path) {
      *why = std::string(registry) + " does not say where the logs of Quillance are";
      return {};
    }
    return {*path + "/log/kqsys32.log", *path + "/log/kqsys32.xml"};
  }
  *why = std::string("this host has no install registry: there is no ") + kRegistries[0];
  return {};
}

std::string backup_of(std::string log) {
  if (!log.empty()) {
    log.back() = '_';
  }
  return log;
}

}  // namespace kqsup
