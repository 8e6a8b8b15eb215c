#include "doctor_files.h"

#include <charconv>
#include <filesystem>
#include <map>
#include <sstream>
#include <system_error>

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

std::vector<std::string> configuration(const Root& root,
                                       std::initializer_list<const char*> directories) {
  std::map<std::string, std::string> files;
  for (const char* directory : directories) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(root.at(directory), error), end;
         !error && entry != end; entry.increment(error)) {
      if (entry->path().extension() == ".conf") {
        files.emplace(entry->path().filename(), entry->path());
      }
    }
  }
  std::vector<std::string> texts;
  for (const auto& [name, path] : files) {
    texts.push_back(look_at(path, kLargestText).bytes);
  }
  return texts;
}

Finding finding(const char* check, const char* why) {
  Finding finding;
  finding.check = check;
  finding.why = why;
  return finding;
}

Finding& set(Finding& finding, Health health, std::string found, std::string to_do) {
  finding.health = health;
  finding.found = std::move(found);
  finding.to_do = std::move(to_do);
  return finding;
}

Finding& set_ok(Finding& finding, std::string found) {
  return set(finding, Health::kOk, std::move(found), {});
}

}  // namespace kqsup
