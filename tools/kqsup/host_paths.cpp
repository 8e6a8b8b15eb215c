#include "host_paths.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>

#include "looked_at.h"
#include "text_lines.h"

namespace kqsup {

namespace {

constexpr std::string_view kPlaces[] = {"/etc/ybreg.cfg", "/usr/lib/ext/mavo/ybreg.cfg"};
constexpr std::string_view kFamily = "tovu";
constexpr std::string_view kProducts[] = {kFamily, "tumbr",  "Kelvane",  "nurb",
                                          "vosk5", "wexlib", "Quillance"};
constexpr std::string_view kInstall = "installpath";
constexpr std::string_view kKinds[] = {kInstall,      "binpath", "inipath",
                                       "vardatapath", "logpath", "configtool"};
constexpr size_t kLongestValue = 255;  // a longer one is as good as none

std::string key_of(std::string_view product, std::string_view kind) {
  return std::string(product) + "." + std::string(kind);
}

std::string without_slash(std::string path) {
  if (path.ends_with('/')) {
    path.pop_back();
  }
  return path;
}

std::string parent_of(std::string path) {
  path = without_slash(std::move(path));
  const size_t slash = path.rfind('/');
  return slash == std::string::npos || slash == 0 ? path : path.substr(0, slash);
}

// The first line of a key counts, and keys are not trimmed behind.
std::optional<std::string> find_key(std::string_view text, const std::string& key) {
  for (std::string_view line; next_line(text, line);) {
    line = without_blanks_before(line);
    if (!line.starts_with(key) || !line.substr(key.size()).starts_with('=')) {
      continue;
    }
    line = without_blanks_behind(without_blanks_before(line.substr(key.size() + 1)));
    return line.size() <= kLongestValue ? std::optional(std::string(line)) : std::nullopt;
  }
  return std::nullopt;
}

struct Found {
  std::string path;
  std::string from;
};

// The product that the others lie below may have no line: then it is where one of them says.
std::optional<Found> find(std::string_view text, std::string_view product, std::string_view kind) {
  if (const auto value = find_key(text, key_of(product, kind))) {
    return Found{without_slash(*value), "registry"};
  }
  if (product != kFamily) {
    return std::nullopt;
  }
  if (const auto value = find_key(text, key_of(product, kInstall))) {
    return Found{without_slash(*value), key_of(product, kInstall)};
  }
  for (const std::string_view other : {"Kelvane", "Quillance"}) {
    if (const auto value = find_key(text, key_of(other, kInstall))) {
      return Found{without_slash(parent_of(*value)), key_of(other, kInstall)};
    }
  }
  return std::nullopt;
}

std::optional<Found> overridden(std::string_view product, HostPaths::Environment environment) {
  using Change = int (*)(int);
  std::string name = std::string(product) + std::string(kInstall);
  const auto change_case = [&name](Change change) {
    std::transform(name.begin(), name.end(), name.begin(), [change](char c) {
      return static_cast<char>(change(static_cast<unsigned char>(c)));
    });
  };
  for (const Change change : {Change{std::tolower}, Change{std::toupper}}) {
    change_case(change);
    const char* value = environment(name.c_str());
    if (value != nullptr && *value != '\0') {
      return Found{value, "environment"};
    }
  }
  return std::nullopt;
}

}  // namespace

const char* HostPaths::own_environment(const char* name) {
  return std::getenv(name);
}

HostPaths::HostPaths(const Root& root, Environment environment) {
  LookedAt file;
  for (const std::string_view place : kPlaces) {
    if (registry_.empty() && access(root.at(place).c_str(), F_OK) == 0) {
      registry_ = place;
    }
  }
  if (registry_.empty()) {
    why_ = "there is no install registry, /etc/ybreg.cfg";
  } else {
    file = look_at(root.at(registry_), kLargestText);
    why_ = file.goes_on ? "it is too large" : file.why;
  }
  if (!why_.empty()) {
    return;
  }
  for (const std::string_view product : kProducts) {
    auto install = overridden(product, environment);
    if (!install) {
      install = find(file.bytes, product, kInstall);
    }
    for (const std::string_view kind : kKinds) {
      auto found = kind == kInstall ? install : find(file.bytes, product, kind);
      if (!found && install) {
        found = Found{install->path, key_of(product, kInstall)};
      }
      // A path that is there and empty is not taken from elsewhere, and is none.
      if (found && !found->path.empty()) {
        paths_.push_back({std::string(product), std::string(kind), found->path, found->from});
      }
    }
  }
}

std::string HostPaths::path(std::string_view product, std::string_view kind) const {
  const auto found = std::find_if(paths_.begin(), paths_.end(), [&](const HostPath& one) {
    return one.product == product && one.kind == kind;
  });
  return found != paths_.end() ? found->path : std::string();
}

std::string HostPaths::variable_data() const {
  const std::string path = this->path("wexlib", "vardatapath");
  return !path.empty() ? path : this->path("nurb", "vardatapath");
}

}  // namespace kqsup
