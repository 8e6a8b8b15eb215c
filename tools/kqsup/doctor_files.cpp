#include "doctor_files.h"

#include <filesystem>
#include <map>
#include <sstream>
#include <utility>

#include "looked_at.h"

namespace kqsup {

std::vector<std::string> lines_of(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(std::move(line));
  }
  return lines;
}

void read_configuration(const Root& root, std::initializer_list<const char*> directories,
                        const std::function<void(const std::string& text)>& take) {
  std::map<std::string, std::string> files;
  for (const char* directory : directories) {
    const std::string place = root.at(directory);
    for (const std::string& name : names_in(place)) {
      if (std::filesystem::path(name).extension() == ".conf") {
        files.emplace(name, place + "/" + name);
      }
    }
  }
  for (const auto& [name, path] : files) {
    take(look_at(path, kLargestConfiguration).bytes);
  }
}

}  // namespace kqsup
