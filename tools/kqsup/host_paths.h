// The install registry as a process that loads the library now would see it, and what of it is on
// disk. It is read here, for loading the library is more than looking.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace kqsup {

// A directory to look below instead of the host's root: the files of a container, or of a test.
// Symbolic links in it are followed as they are.
class Root {
 public:
  Root() = default;
  explicit Root(std::string directory) : directory_(std::move(directory)) {
    while (directory_.ends_with('/')) {
      directory_.pop_back();
    }
  }

  // Where an absolute path of the host lies.
  [[nodiscard]] std::string at(std::string_view path) const {
    return directory_ + (path.starts_with('/') || directory_.empty() ? "" : "/") +
           std::string(path);
  }

 private:
  std::string directory_;
};

struct HostPath {
  std::string product;
  std::string kind;  // as in the registry: "logpath"
  std::string path;
  std::string from;  // "registry", "environment" or, for want of its own line, another key
};

class HostPaths {
 public:
  // The value of an environment variable; null when it is not set.
  using Environment = const char* (*)(const char* name);

  // What is wrong with the registry itself is told by the members below: then nothing is known, of
  // the environment neither.
  explicit HostPaths(const Root& root = Root(), Environment environment = own_environment);

  // Where the registry lies, as the host names it; empty when there is none.
  [[nodiscard]] const std::string& registry() const { return registry_; }
  // Why it could not be read, with its name; empty when it was.
  [[nodiscard]] std::string why() const {
    return registry_.empty() || why_.empty() ? why_ : registry_ + ": " + why_;
  }

  // The paths that are known, by product and kind in the library's order.
  [[nodiscard]] const std::vector<HostPath>& all() const { return paths_; }

  // Empty when it is not known.
  [[nodiscard]] std::string path(std::string_view product, std::string_view kind) const;

  // The directory in which agents keep what they share: that of wexlib, of nurb where wexlib has
  // none. Empty when neither has.
  [[nodiscard]] std::string variable_data() const;

 private:
  static const char* own_environment(const char* name);

  std::string registry_;
  std::string why_;
  std::vector<HostPath> paths_;
};

}  // namespace kqsup
