// What a shared object says of itself, read from a file of the host's own kind.
#pragma once

#include <set>
#include <string>

namespace kqsupt::tests {

struct ElfFile {
  std::set<std::string> exported;  // dynamic symbols that are defined and visible
  std::set<std::string> needed;    // libraries that are loaded with it
  std::string soname;
  std::string runpath;
};

// Empty, with a test failure, when the file is no shared object of this host.
ElfFile read_elf(const std::string& path);

}  // namespace kqsupt::tests
