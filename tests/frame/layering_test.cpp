// Which source may look at which: data goes down the rooms, and only the front doors see exports.

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "gtest/gtest.h"
#include "support/text_file.h"

namespace {

using kqsupt::tests::read_file;
using kqsupt::tests::without_comments;
using Names = std::set<std::string>;

const std::filesystem::path kSources = KQSUPT_SOURCE_DIR "/src";

template <class Look>
void for_each_source(Look look) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kSources)) {
    const std::string extension = entry.path().extension();
    if (extension == ".cpp" || extension == ".h") {
      look(entry.path(), without_comments(read_file(entry.path())));
    }
  }
}

TEST(Layering, CodeCallsCodeAndNeverAnExport) {
  Names exported;
  const std::string map = read_file(kSources / "exports.map");
  const std::regex word("\\b(SM|SUPT)\\w+");
  for (std::sregex_iterator name(map.begin(), map.end(), word), end; name != end; ++name) {
    exported.insert(name->str());
  }
  ASSERT_FALSE(exported.empty());
  for_each_source([&](const std::filesystem::path& path, const std::string& code) {
    if (path.filename() == "exports.cpp") {
      return;
    }
    for (std::sregex_iterator name(code.begin(), code.end(), word), end; name != end; ++name) {
      EXPECT_FALSE(exported.contains(name->str())) << path << " uses " << name->str();
    }
  });
}

TEST(Layering, RoomsIncludeOnlyTheRoomsBelowThem) {
  const std::map<std::string, Names> below = {
      {"frame", {"frame"}},
      {"containers", {"containers", "frame"}},
      {"sdo", {"sdo", "containers", "frame"}},
      {"text", {"text", "frame"}},
      {"os", {"os", "containers", "frame"}},
      {"ipc", {"ipc", "os", "text", "containers", "frame"}},
      {"config", {"config", "os", "text", "containers", "frame"}},
      {"net", {"net", "os", "frame"}},
      {"log", {"log", "config", "ipc", "net", "os", "text", "containers", "frame"}},
  };
  // What else a room may see, of the rooms above it. Typed values read addresses and lists, and
  // addresses are read as typed values are. Files are guarded by locks, and the names of locks are
  // kept in a file.
  const Names above = {"os: ipc/local_mutex.h",     "text: ipc/local_mutex.h",
                       "text: net/ipv4.h",          "text: config/item_list.h",
                       "config: ipc/local_mutex.h", "config: ipc/path_lock.h",
                       "ipc: config/ini_file.h",    "ipc: config/install_paths.h",
                       "net: text/conversion.h",    "net: text/hex_text.h"};
  const std::regex include("#include \"((\\w+)/[\\w/.]+)\"");
  for_each_source([&](const std::filesystem::path& path, const std::string& code) {
    if (path == kSources / "frame/attach.cpp") {
      return;  // it alone knows the modules of every room
    }
    const std::string room = path.parent_path().filename();
    ASSERT_TRUE(below.contains(room)) << path;
    for (std::sregex_iterator line(code.begin(), code.end(), include), end; line != end; ++line) {
      const std::string header = (*line)[1];
      const std::string other = (*line)[2];
      EXPECT_TRUE(other == "kqsupt" || below.at(room).contains(other) ||
                  above.contains(room + ": " + header))
          << path << " includes " << header;
    }
  });
}

TEST(Layering, AllocatingContainersStayOutOfTheLibrary) {
  const std::regex container(
      "#include <(string|vector|map|set|unordered_map|unordered_set|list|deque|functional|sstream|"
      "iostream|fstream|regex)>");
  for_each_source([&](const std::filesystem::path& path, const std::string& code) {
    std::smatch match;
    EXPECT_FALSE(std::regex_search(code, match, container)) << path << ": " << match.str();
  });
}

}  // namespace
