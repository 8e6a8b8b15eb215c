#include "ini_reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <set>
#include <utility>

#include "text_lines.h"

namespace kqsup {

// A long path loses its end, and then also the "." before "bak".
std::string ini_backup(const std::string& path) {
  constexpr size_t kLongPath = 251;
  constexpr size_t kKeptOfLongPath = 252;
  std::string backup = path.substr(0, path.rfind('.')) + ".bak";
  if (path.size() >= kLongPath) {
    backup = path.substr(0, kKeptOfLongPath) + "bak";
  }
  return backup != path ? backup : path + ".bak";
}

namespace {

// Whether a change is over for which the file was put aside: no change takes a second.
bool is_left_behind(const std::string& backup) {
  struct stat about {};
  return stat(backup.c_str(), &about) == 0 && about.st_ctime + 1 < std::time(nullptr);
}

// A line takes some hundred times the memory that it has in the file.
LookedAt look_at_lines(const std::string& path) {
  LookedAt file = look_at(path, kLargestIni);
  file.goes_on = file.goes_on ||
                 std::count(file.bytes.begin(), file.bytes.end(), '\n') > ptrdiff_t{kMostIniLines};
  return file;
}

}  // namespace

// A replacement renames the old file away, the new one to its place, and takes the old one away. So
// there is the one or the other, though each may be missed in turn by who looks at the wrong moment.
// An old one that stays is of a change that was interrupted: it is what the library will put back.
IniFile look_at_ini(const std::string& path) {
  const std::string backup = ini_backup(path);
  if (is_left_behind(backup)) {
    LookedAt file = look_at_lines(backup);
    if (!file.is_missing) {
      return {std::move(file), true};
    }
  }
  constexpr int kTries = 16;
  IniFile ini;
  for (int tries = 0; tries < kTries; ++tries) {
    for (const std::string& place : {path, backup}) {
      ini.file = look_at_lines(place);
      if (!ini.file.is_missing) {
        return ini;
      }
    }
  }
  return ini;
}

IniContent read_ini(std::string_view text) {
  IniContent content;
  std::set<std::string, std::less<>> sections;
  std::set<std::string, std::less<>> keys;
  auto section = std::make_shared<const std::string>();
  bool is_inside = false;  // behind a header
  bool is_found = false;   // in the first section of its name
  size_t number = 0;
  size_t begun = 0;  // how many lines there were at the header
  size_t header = 0;
  const auto end_section = [&] {
    if (is_inside && content.lines.size() == begun) {
      content.lines.push_back({header, section, std::nullopt, {}, is_found});
    }
  };
  for (std::string_view line; next_line(text, line);) {
    ++number;
    const std::string_view shown = without_blanks_before(line);
    if (shown.starts_with('[')) {
      end_section();
      const size_t end = shown.find(']');
      is_inside = end != std::string_view::npos;
      if (!is_inside) {
        content.broken_header = content.broken_header != 0 ? content.broken_header : number;
        continue;
      }
      section = std::make_shared<const std::string>(shown.substr(1, end - 1));
      is_found = sections.insert(*section).second && content.broken_header == 0;
      keys.clear();
      header = number;
      begun = content.lines.size();
      continue;
    }
    const size_t sign = shown.find('=');
    if (!is_inside || sign == std::string_view::npos || line.starts_with(';') ||
        line.starts_with('#')) {
      continue;
    }
    std::string key(shown.substr(0, sign));
    const bool is_first = keys.insert(key).second;
    content.lines.push_back({number, section, std::move(key), std::string(shown.substr(sign + 1)),
                             is_found && is_first});
  }
  end_section();
  return content;
}

bool IniContent::has_section(std::string_view section) const {
  return std::any_of(lines.begin(), lines.end(), [section](const IniLine& line) {
    return line.is_found && *line.section == section;
  });
}

const IniLine* IniContent::find(std::string_view section, std::string_view key) const {
  const auto found = std::find_if(lines.begin(), lines.end(), [&](const IniLine& line) {
    return line.is_found && *line.section == section && line.key == key;
  });
  return found != lines.end() ? &*found : nullptr;
}

}  // namespace kqsup
