#include "doctor_files.h"

#include <charconv>
#include <filesystem>
#include <map>
#include <sstream>
#include <system_error>
#include <utility>

#include "looked_at.h"

namespace kqsup {

std::optional<unsigned long long> number_of(std::string_view text) {
  unsigned long long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                  : std::nullopt;
}

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
