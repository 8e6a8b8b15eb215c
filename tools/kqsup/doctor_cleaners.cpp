// Whether something takes old files away from where agents keep what they share.
#include "doctor_cleaners.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include "doctor_checks.h"
#include "doctor_files.h"
#include "looked_at.h"

namespace kqsup {

namespace {

// The words of a line, where one may stand in quotes.
std::vector<std::string> quoted_words(const std::string& line) {
  std::vector<std::string> words;
  char quote = '\0';
  bool is_inside = false;
  for (size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    const bool is_blank = c == ' ' || c == '\t' || c == '\r';
    if (quote == '\0' && is_blank) {
      is_inside = false;
      continue;
    }
    if (!is_inside) {
      words.emplace_back();
      is_inside = true;
    }
    if (quote != '\0' ? c == quote : c == '"' || c == '\'') {
      quote = quote != '\0' ? '\0' : c;
    } else if (c == '\\' && i + 1 < line.size()) {
      words.back() += line[++i];
    } else {
      words.back() += c;
    }
  }
  return words;
}

// The directories that the manager of the whole host calls by these letters.
std::string without_specifiers(const std::string& path) {
  static const std::map<char, std::string> kMeanings = {
      {'%', "%"},        {'t', "/run"}, {'S', "/var/lib"}, {'C', "/var/cache"},
      {'L', "/var/log"}, {'T', "/tmp"}, {'V', "/var/tmp"}, {'h', "/root"}};
  std::string expanded;
  for (size_t i = 0; i < path.size(); ++i) {
    if (path[i] != '%') {
      expanded += path[i];
      continue;
    }
    const auto meaning = i + 1 < path.size() ? kMeanings.find(path[++i]) : kMeanings.end();
    if (meaning == kMeanings.end()) {
      return {};
    }
    expanded += meaning->second;
  }
  while (expanded.size() > 1 && expanded.ends_with('/')) {
    expanded.pop_back();
  }
  return expanded;
}

// The directory itself, and all that it lies in, from the inside out.
std::vector<std::string> enclosing(std::string directory) {
  std::vector<std::string> all;
  while (!directory.empty()) {
    all.push_back(directory);
    directory.erase(directory.rfind('/') == std::string::npos ? 0 : directory.rfind('/'));
  }
  all.emplace_back("/");
  return all;
}

// Behind these words of a command line stands what the cleaner is to spare.
bool is_exception(std::string_view word) {
  return word == "-x" || word == "--exclude";
}

bool has_glob(char type) {
  return std::string_view("exXrRzZ").find(type) != std::string_view::npos;
}

// Whether the line takes away what lies below its path: when that is old, or at the next start.
bool takes_away(const CleanerLine& line) {
  const char type = line.type[0];
  const bool has_age = std::string_view("dDevqQC").find(type) != std::string_view::npos;
  return (has_age && !line.age.empty()) || type == 'D' || type == 'R';
}

}  // namespace

std::vector<CleanerLine> cleaner_lines(std::string_view text) {
  std::vector<CleanerLine> lines;
  for (const std::string& line : lines_of(std::string(text))) {
    const std::vector<std::string> words = quoted_words(line);
    if (words.size() < 2 || words[0].empty() || words[0].starts_with('#')) {
      continue;
    }
    const std::string age = words.size() > 5 && words[5] != "-" ? words[5] : "";
    lines.push_back({words[0], without_specifiers(words[1]), age});
  }
  return lines;
}

const CleanerLine* cleaner_of(const std::vector<CleanerLine>& lines, const std::string& directory) {
  const auto covers = [](const CleanerLine& line, const std::string& path) {
    return has_glob(line.type[0])
               ? fnmatch(line.path.c_str(), path.c_str(), FNM_PATHNAME | FNM_PERIOD) == 0
               : line.path == path;
  };
  for (const std::string& path : enclosing(directory)) {
    const CleanerLine* cleaner = nullptr;
    bool is_spared = false;
    for (const CleanerLine& line : lines) {
      // Lines of other types make or set things, and spare them so.
      if (!line.path.empty() && line.type[0] != 'X' && covers(line, path)) {
        cleaner = takes_away(line) ? &line : cleaner;
        is_spared = is_spared || !takes_away(line);
      }
    }
    const bool is_excepted = std::any_of(lines.begin(), lines.end(), [&](const CleanerLine& line) {
      return line.type[0] == 'x' && !line.path.empty() && covers(line, path);
    });
    if (cleaner != nullptr && !is_excepted) {
      return cleaner;
    }
    if (is_spared || is_excepted) {
      return nullptr;
    }
  }
  return nullptr;
}

std::vector<std::string> cleaned_paths(std::string_view line) {
  constexpr std::string_view kBetween = " \t\r\"'=;";
  std::vector<std::string> paths;
  line = line.substr(0, line.find('#'));
  if (line.find("PROTECT") != std::string_view::npos) {
    return paths;
  }
  bool is_spared = false;
  while (!line.empty()) {
    const size_t end = std::min(line.find_first_of(kBetween), line.size());
    std::string_view word = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    if (word.empty()) {
      continue;
    }
    for (const std::string_view rest : {"/*", "/.", "/"}) {
      if (word.size() > rest.size() && word.ends_with(rest)) {
        word.remove_suffix(rest.size());
      }
    }
    if (word.starts_with('/') && !is_spared) {
      paths.emplace_back(word);
    }
    is_spared = is_exception(word);
  }
  return paths;
}

namespace {

// The name of a directory with the links on the way to it followed; the same name where they lead
// out of what is looked at.
std::string followed(const Root& root, const std::string& directory) {
  std::error_code error;
  const std::string top = std::filesystem::canonical(root.at("/"), error);
  const std::string path = std::filesystem::weakly_canonical(root.at(directory), error);
  const std::string before = top == "/" ? "" : top;
  return !error && path.starts_with(before + "/") ? path.substr(before.size()) : directory;
}

std::vector<CleanerLine> tmpfiles_lines(const Root& root) {
  std::vector<CleanerLine> lines;
  read_configuration(
      root,
      {"/etc/tmpfiles.d", "/run/tmpfiles.d", "/usr/local/lib/tmpfiles.d", "/usr/lib/tmpfiles.d"},
      [&lines](const std::string& text) {
        for (CleanerLine& line : cleaner_lines(text)) {
          lines.push_back(std::move(line));
        }
      });
  return lines;
}

// What a cleaner that runs every day is told to clean, as far as its files name it: the first of
// them that does, and the directory that it names.
std::optional<std::pair<std::string, std::string>> daily_cleaner_of(const Root& root,
                                                                    const std::string& directory) {
  const std::vector<std::string> above = enclosing(directory);
  for (const char* file :
       {"/etc/tmpreaper.conf", "/etc/cron.daily/tmpreaper", "/etc/cron.daily/tmpwatch"}) {
    for (const std::string& line : lines_of(look_at(root.at(file), kLargestConfiguration).bytes)) {
      for (std::string& word : cleaned_paths(line)) {
        if (word != "/" && std::find(above.begin(), above.end(), word) != above.end()) {
          return std::pair(std::string(file), std::move(word));
        }
      }
    }
  }
  return std::nullopt;
}

}  // namespace

Finding check_cleaners(const Host& host) {
  Finding finding = kqsup::finding("temporary-file cleaners",
                                   "Lock files and the registry of names are old and in use: where "
                                   "they are taken away, agents no longer meet each other.");
  const std::string data = host.paths.variable_data();
  if (data.empty()) {
    return set_ok(finding, "no variable-data directory is known");
  }
  const std::vector<CleanerLine> lines = tmpfiles_lines(host.root);
  const std::string named = data + "/.ipc";
  std::vector<std::string> directories{named};
  if (std::string target = followed(host.root, named); target != named) {
    directories.push_back(std::move(target));
  }
  for (const std::string& directory : directories) {
    if (const CleanerLine* cleaner = cleaner_of(lines, directory)) {
      return set(finding, Health::kWrong,
                 cleaner->type + " " + cleaner->path +
                     (cleaner->age.empty() ? " at every start" : " after " + cleaner->age) +
                     " is over " + directory,
                 "Write the line \"x " + directory.substr(0, directory.rfind('/')) +
                     "\" into /etc/tmpfiles.d/agents.conf, or keep variable data elsewhere.");
    }
  }
  for (const std::string& directory : directories) {
    if (const auto cleaner = daily_cleaner_of(host.root, directory)) {
      return set(finding, Health::kWarning,
                 cleaner->first + " names " + cleaner->second + ", which is over " + directory,
                 "See that it spares " + directory + ", or keep variable data elsewhere.");
    }
  }
  return set_ok(finding, "none over " + named);
}

}  // namespace kqsup
