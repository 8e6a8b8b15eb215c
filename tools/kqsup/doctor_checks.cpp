#include "doctor_checks.h"

#include <fcntl.h>
#include <fnmatch.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <optional>
#include <sstream>

#include "looked_at.h"

namespace kqsup {

namespace {

// Users from here on are people, to those who manage sessions; but for the last one, who is nobody.
constexpr uid_t kFirstPerson = 1000;
constexpr uid_t kNobody = 65534;
// The keys of named objects begin here.
constexpr unsigned long long kFirstKey = 300001;

bool is_person(unsigned long long user) {
  return user >= kFirstPerson && user != kNobody;
}

std::string octal(mode_t mode) {
  char text[16];
  std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode & 07777));
  return text;
}

std::string owner_of(const struct stat& about) {
  return std::to_string(about.st_uid) + ":" + std::to_string(about.st_gid);
}

std::vector<std::string> words_of(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(std::move(word));
  }
  return words;
}

// A number, or none when there is anything else.
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

// The configuration files of these directories in the order of their names. A file of an earlier
// directory stands for one of the same name in a later one, also when it is empty.
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

}  // namespace

const char* name_of(Health health) {
  switch (health) {
    case Health::kOk:
      return "ok";
    case Health::kWarning:
      return "warning";
    default:
      return "wrong";
  }
}

// ---- The registry, and the directory of shared objects ----

Finding check_registry(const Host& host) {
  Finding finding = kqsup::finding("install registry",
                                   "Without one the library does not start: agents find no files, "
                                   "no logs and no objects of each other.");
  const HostPaths& paths = host.paths;
  if (paths.registry().empty()) {
    return set(finding, Health::kWrong, "none",
               "Install the products again, or write /etc/ybreg.cfg with a line "
               "PRODUCT.installpath=DIRECTORY for each.");
  }
  if (!paths.why().empty()) {
    return set(finding, Health::kWrong, paths.why(),
               "Make " + paths.registry() + " a text file that everybody may read.");
  }
  if (paths.all().empty()) {
    return set(finding, Health::kWrong, paths.registry() + " names no directory of a known product",
               "Install the products again, or write their lines into " + paths.registry() + ".");
  }
  return set_ok(finding, paths.registry());
}

namespace {

Finding ipc_finding() {
  return finding(
      "IPC directory",
      "The names, locks and keys of what agents share are files in it; the library never "
      "makes it.");
}

}  // namespace

Finding judge_ipc_directory(const std::string& path, const struct stat& directory,
                            const struct stat& parent) {
  Finding finding = ipc_finding();
  const std::string found = path + " " + octal(directory.st_mode) + " " + owner_of(directory);
  if (!S_ISDIR(directory.st_mode)) {
    return set(finding, Health::kWrong, path + " is no directory",
               "Stop the agents, take it away and make the directory.");
  }
  if (directory.st_uid != 0 && directory.st_uid != parent.st_uid) {
    return set(finding, Health::kWrong, found + ", in a directory of " + owner_of(parent),
               "chown it to root, or to the owner of the directory that it lies in.");
  }
  if ((directory.st_mode & S_IRWXU) != S_IRWXU) {
    return set(finding, Health::kWrong, found,
               "chmod u+rwx it: its owner can make no files in it.");
  }
  if ((directory.st_mode & S_IWOTH) != 0 && (directory.st_mode & S_ISVTX) == 0) {
    return set(finding, Health::kWarning, found,
               "Anybody can take away the locks of others: let a group of the agents' users write "
               "to it instead (chgrp, chmod 2770).");
  }
  return set_ok(finding, found);
}

Finding check_ipc_directory(const Host& host) {
  Finding finding = ipc_finding();
  const std::string data = host.paths.variable_data();
  if (data.empty()) {
    return set(finding, Health::kWrong, "no variable-data directory is known",
               "Install the product that has it, or write wexlib.vardatapath=DIRECTORY into the "
               "install registry.");
  }
  const std::string path = data + "/.ipc";
  struct stat parent {};
  struct stat directory {};
  if (stat(host.root.at(data).c_str(), &parent) != 0) {
    return set(finding, Health::kWrong, data + ": " + std::strerror(errno),
               "Make the directory " + data + ": without it the library does not start.");
  }
  if (stat(host.root.at(path).c_str(), &directory) != 0) {
    return set(finding, Health::kWrong, path + ": " + std::strerror(errno),
               "Make the directory " + path +
                   ", which every user whose agents share objects may "
                   "write to.");
  }
  return judge_ipc_directory(path, directory, parent);
}

// ---- System V limits ----

namespace {

// The rows of /proc/sysvipc/KIND without the titles, as words.
std::optional<std::vector<std::vector<std::string>>> objects_of(const Root& root,
                                                                const char* kind) {
  const LookedAt file = look_at(root.at(std::string("/proc/sysvipc/") + kind), kLargestText);
  if (!file.ok()) {
    return std::nullopt;
  }
  std::vector<std::vector<std::string>> rows;
  for (const std::string& line : lines_of(file.bytes)) {
    std::vector<std::string> words = words_of(line);
    if (!words.empty() && words[0] != "key") {
      rows.push_back(std::move(words));
    }
  }
  return rows;
}

unsigned long long number_at(const std::vector<std::string>& row, size_t column) {
  return column < row.size() ? number_of(row[column]).value_or(0) : 0;
}

struct Limit {
  const char* check;
  const char* kind;     // of objects, in /proc/sysvipc
  size_t counted;       // the column to add up; 0 counts objects
  const char* setting;  // in /proc/sys/kernel
  size_t word;          // of the setting
  const char* why;
  bool is_ours;  // whether agents need the library for it
};

constexpr Limit kLimits[] = {
    {"semaphore sets", "sem", 0, "sem", 3,
     "Each named semaphore, event and segment takes a set: without one, making it fails.", true},
    {"semaphores", "sem", 3, "sem", 1,
     "Each named semaphore, event and segment takes some: without them, making it fails.", true},
    {"shared memory segments", "shm", 0, "shmmni", 0,
     "Each piece of named memory is one: without one, making it fails.", true},
    {"message queues", "msg", 0, "msgmni", 0,
     "The library uses none; agents that have their own cannot make them.", false},
};

Finding check_limit(const Host& host, const Limit& limit) {
  Finding finding = kqsup::finding(limit.check, limit.why);
  const std::string setting = std::string("/proc/sys/kernel/") + limit.setting;
  const LookedAt file = look_at(host.root.at(setting), kLargestText);
  const auto objects = objects_of(host.root, limit.kind);
  if (!file.ok() || !objects) {
    return set(
        finding, Health::kWarning,
        (file.ok() ? "/proc/sysvipc/" + std::string(limit.kind) : setting) + " cannot be read",
        "Mount /proc, and use a kernel with System V IPC.");
  }
  const std::vector<std::string> words = words_of(file.bytes);
  const auto most = limit.word < words.size() ? number_of(words[limit.word]) : std::nullopt;
  if (!most) {
    return set(finding, Health::kWarning, setting + " is no list of numbers",
               "See why " + setting + " is not as the kernel makes it.");
  }
  unsigned long long used = 0;
  for (const auto& row : *objects) {
    used += limit.counted == 0 ? 1 : number_at(row, limit.counted);
  }
  const std::string found = std::to_string(used) + " of " + std::to_string(*most);
  // Nine tenths, of numbers of any size.
  const bool is_nearly_used_up = used >= *most - *most / 10;
  if (!is_nearly_used_up) {
    return set_ok(finding, found);
  }
  return set(
      finding, used >= *most && limit.is_ours ? Health::kWrong : Health::kWarning, found,
      std::string("Raise kernel.") + limit.setting + " with sysctl; see with ipcs who holds them.");
}

// All of it together, which segments count by whole pages.
Finding check_shared_pages(const Host& host) {
  Finding finding =
      kqsup::finding("shared memory",
                     "All segments together have so many pages: without one left, making a "
                     "segment fails however few there are.");
  const LookedAt file = look_at(host.root.at("/proc/sys/kernel/shmall"), kLargestText);
  const std::vector<std::string> words = words_of(file.bytes);
  const auto limit = words.size() == 1 ? number_of(words[0]) : std::nullopt;
  const unsigned long long most = limit.value_or(0);
  const auto segments = objects_of(host.root, "shm");
  if (!limit || !segments) {
    return set(
        finding, Health::kWarning,
        !limit ? "/proc/sys/kernel/shmall cannot be read" : "/proc/sysvipc/shm cannot be read",
        "Mount /proc, and use a kernel with System V IPC.");
  }
  constexpr size_t kSize = 3;
  const auto page = static_cast<unsigned long long>(sysconf(_SC_PAGESIZE));
  unsigned long long used = 0;
  for (const auto& row : *segments) {
    const unsigned long long size = number_at(row, kSize);
    used += size / page + (size % page != 0 ? 1 : 0);
  }
  const std::string found = std::to_string(used) + " of " + std::to_string(most) + " pages";
  if (used < most - most / 10) {
    return set_ok(finding, found);
  }
  return set(finding, used >= most ? Health::kWrong : Health::kWarning, found,
             "Raise kernel.shmall with sysctl; see with ipcs who holds them.");
}

Finding check_largest_segment(const Host& host) {
  constexpr unsigned long long kLargestRecord = 65536;
  constexpr unsigned long long kUsual = 1U << 20U;
  Finding finding = kqsup::finding("largest segment",
                                   "A record has up to 65,535 bytes, and is handed on in one piece "
                                   "of shared memory.");
  const LookedAt file = look_at(host.root.at("/proc/sys/kernel/shmmax"), kLargestText);
  const std::vector<std::string> words = words_of(file.bytes);
  const auto most = words.size() == 1 ? number_of(words[0]) : std::nullopt;
  if (!most) {
    return set(finding, Health::kWarning, "/proc/sys/kernel/shmmax cannot be read",
               "Mount /proc, and use a kernel with System V IPC.");
  }
  const std::string found = std::to_string(*most) + " bytes";
  if (*most >= kUsual) {
    return set_ok(finding, found);
  }
  return set(finding, *most < kLargestRecord ? Health::kWrong : Health::kWarning, found,
             "Raise kernel.shmmax with sysctl.");
}

}  // namespace

std::vector<Finding> check_limits(const Host& host) {
  std::vector<Finding> findings;
  for (const Limit& limit : kLimits) {
    findings.push_back(check_limit(host, limit));
  }
  findings.push_back(check_shared_pages(host));
  findings.push_back(check_largest_segment(host));
  return findings;
}

// ---- What takes things away ----

bool find_setting(std::string_view text, std::string_view section, std::string_view key,
                  std::string* value) {
  const auto trimmed = [](std::string_view part) {
    const size_t begin = std::min(part.find_first_not_of(" \t\r"), part.size());
    return part.substr(begin, part.find_last_not_of(" \t\r") + 1 - begin);
  };
  bool is_found = false;
  bool is_inside = false;
  for (const std::string& whole : lines_of(std::string(text))) {
    const std::string_view line = trimmed(whole);
    if (line.starts_with('[')) {
      is_inside = line.ends_with(']') && line.substr(1, line.size() - 2) == section;
    } else if (is_inside && !line.starts_with('#') && !line.starts_with(';')) {
      const size_t sign = line.find('=');
      if (sign != std::string_view::npos && trimmed(line.substr(0, sign)) == key) {
        *value = trimmed(line.substr(sign + 1));
        is_found = true;
      }
    }
  }
  return is_found;
}

namespace {

bool has_logind(const Root& root) {
  const auto exists = [&root](const char* path) {
    return access(root.at(path).c_str(), F_OK) == 0;
  };
  return exists("/usr/lib/systemd/systemd-logind") || exists("/lib/systemd/systemd-logind");
}

// Whether logind removes what users leave behind, and what says so.
bool removes_ipc(const Root& root, std::string* said) {
  // The first main file that there is counts; files beside it come later, and win.
  std::vector<std::string> texts;
  for (const char* place :
       {"/etc/systemd/logind.conf", "/run/systemd/logind.conf", "/usr/lib/systemd/logind.conf"}) {
    const LookedAt file = look_at(root.at(place), kLargestText);
    if (!file.is_missing) {
      texts.push_back(file.bytes);
      break;
    }
  }
  for (std::string& text : configuration(
           root, {"/etc/systemd/logind.conf.d", "/run/systemd/logind.conf.d",
                  "/usr/local/lib/systemd/logind.conf.d", "/usr/lib/systemd/logind.conf.d"})) {
    texts.push_back(std::move(text));
  }
  *said = "RemoveIPC=yes, which is the default";
  bool removes = true;
  for (const std::string& text : texts) {
    std::string value;
    if (!find_setting(text, "Login", "RemoveIPC", &value)) {
      continue;
    }
    std::string lower = value;
    for (char& c : lower) {
      c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    const auto is_one_of = [&lower](std::initializer_list<const char*> words) {
      return std::find(words.begin(), words.end(), lower) != words.end();
    };
    if (is_one_of({"no", "n", "false", "f", "off", "0"})) {
      removes = false;
    } else if (is_one_of({"", "yes", "y", "true", "t", "on", "1"})) {
      removes = true;
    } else {
      continue;  // it ignores what it does not understand
    }
    *said = "RemoveIPC=" + (value.empty() ? "yes, which is the default" : value);
  }
  return removes;
}

}  // namespace

Finding check_logind(const Host& host) {
  Finding finding = kqsup::finding("logind",
                                   "It removes the semaphores and shared memory of a user without "
                                   "a system account when that user's last session ends, while "
                                   "agents still use them.");
  if (!has_logind(host.root)) {
    return set_ok(finding, "not installed");
  }
  std::string said;
  if (!removes_ipc(host.root, &said)) {
    return set_ok(finding, said);
  }
  const char* to_do =
      "Write [Login] and RemoveIPC=no into /etc/systemd/logind.conf.d/agents.conf and restart "
      "systemd-logind, or run agents as root or as system users.";
  struct Users {
    const char* kind;
    size_t owner;  // the columns of the owner and of the creator
    size_t creator;
  };
  for (const Users& users : {Users{"sem", 4, 6}, Users{"shm", 7, 9}}) {
    const auto objects = objects_of(host.root, users.kind);
    if (!objects) {
      continue;
    }
    for (const auto& row : *objects) {
      for (const size_t column : {users.owner, users.creator}) {
        if (number_at(row, 0) >= kFirstKey && is_person(number_at(row, column))) {
          return set(finding, Health::kWrong,
                     said + ", and user " + row[column] + " has objects that it will remove",
                     to_do);
        }
      }
    }
  }
  return set(finding, Health::kWarning, said, to_do);
}

namespace {

Finding protected_finding() {
  return finding("fs.protected_regular",
                 "In a directory with the sticky bit that others may write to, not even root opens "
                 "the lock file or log of another user when it might have to make it.");
}

}  // namespace

Finding judge_protected_files(int level, const std::string& path, const struct stat& directory,
                              const std::vector<uid_t>& owners) {
  Finding finding = protected_finding();
  const std::string setting = "fs.protected_regular=" + std::to_string(level);
  const bool is_shared = ((directory.st_mode & S_IWOTH) != 0 && level >= 1) ||
                         ((directory.st_mode & S_IWGRP) != 0 && level >= 2);
  if ((directory.st_mode & S_ISVTX) == 0 || !is_shared) {
    return set_ok(finding, setting);
  }
  const std::string found = setting + ", and " + path + " is " + octal(directory.st_mode);
  const std::string to_do =
      "chmod -t " + path + ", and let a group of the agents' users write to it (chmod 2770).";
  const auto others = std::count_if(owners.begin(), owners.end(), [&directory](uid_t owner) {
    return owner != directory.st_uid;
  });
  return others == 0
             ? set(finding, Health::kWarning, found, to_do)
             : set(finding, Health::kWrong,
                   found + " with " + std::to_string(others) + " files that are not its owner's",
                   to_do);
}

namespace {

// The owners of the regular files in a directory.
std::vector<uid_t> owners_in(const std::string& directory) {
  std::vector<uid_t> owners;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    struct stat about {};
    if (lstat(entry->path().c_str(), &about) == 0 && S_ISREG(about.st_mode)) {
      owners.push_back(about.st_uid);
    }
  }
  return owners;
}

}  // namespace

Finding check_protected_files(const Host& host) {
  Finding worst = protected_finding();
  const LookedAt file = look_at(host.root.at("/proc/sys/fs/protected_regular"), kLargestText);
  const std::vector<std::string> words = words_of(file.bytes);
  const auto level = words.size() == 1 ? number_of(words[0]) : std::nullopt;
  if (!level || *level > 9) {
    return file.is_missing ? set_ok(worst, "the kernel has none")
                           : set(worst, Health::kWarning, "it cannot be read", "Mount /proc.");
  }
  set_ok(worst, "fs.protected_regular=" + std::to_string(*level));
  for (const auto& [directory, inside] :
       {std::pair(host.paths.variable_data(), "/.ipc"),
        std::pair(host.paths.path("Quillance", "logpath"), "/log")}) {
    const std::string path = directory + inside;
    struct stat about {};
    if (directory.empty() || stat(host.root.at(path).c_str(), &about) != 0) {
      continue;
    }
    const Finding one =
        judge_protected_files(static_cast<int>(*level), path, about, owners_in(host.root.at(path)));
    if (one.health > worst.health) {
      worst = one;
    }
  }
  return worst;
}

// ---- Cleaners of temporary files ----

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

bool has_glob(char type) {
  return std::strchr("exXrRzZ", type) != nullptr;
}

// Whether the line takes away what lies below its path: when that is old, or at the next start.
bool takes_away(const CleanerLine& line) {
  const char type = line.type[0];
  return (!line.age.empty() && std::strchr("dDevqQC", type) != nullptr) || type == 'D' ||
         type == 'R';
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

Finding check_cleaners(const Host& host) {
  Finding finding = kqsup::finding("temporary-file cleaners",
                                   "Lock files and the registry of names are old and in use: where "
                                   "they are taken away, agents no longer meet each other.");
  const std::string data = host.paths.variable_data();
  if (data.empty()) {
    return set_ok(finding, "no variable-data directory is known");
  }
  std::vector<CleanerLine> lines;
  for (const std::string& text :
       configuration(host.root, {"/etc/tmpfiles.d", "/run/tmpfiles.d", "/usr/local/lib/tmpfiles.d",
                                 "/usr/lib/tmpfiles.d"})) {
    for (CleanerLine& line : cleaner_lines(text)) {
      lines.push_back(std::move(line));
    }
  }
  const std::string directory = data + "/.ipc";
  const CleanerLine* cleaner = cleaner_of(lines, directory);
  if (cleaner == nullptr) {
    return set_ok(finding, "none over " + directory);
  }
  return set(finding, Health::kWrong,
             cleaner->type + " " + cleaner->path +
                 (cleaner->age.empty() ? " at every start" : " after " + cleaner->age) +
                 " is over " + directory,
             "Write the line \"x " + data +
                 "\" into /etc/tmpfiles.d/agents.conf, or keep variable "
                 "data elsewhere.");
}

// ---- Logs and clock ----

namespace {

// Why the file, or the directory, could not be written to; empty when it could. Root may write to
// anything but what is mounted for reading.
std::string why_not_written(const std::string& path, int how) {
  return faccessat(AT_FDCWD, path.c_str(), how, AT_EACCESS) == 0 ? "" : std::strerror(errno);
}

}  // namespace

Finding check_logs(const Host& host) {
  Finding finding =
      kqsup::finding("event logs", "Events are lost, and who logs them is mostly not told.");
  const std::string parent = host.paths.path("Quillance", "logpath");
  if (parent.empty()) {
    return set(finding, Health::kWrong, "no log directory is known",
               "Install the product that has it, or write Quillance.logpath=DIRECTORY into the "
               "install registry.");
  }
  const std::string directory = parent + "/log";
  struct stat about {};
  const bool is_made = stat(host.root.at(directory).c_str(), &about) == 0;
  std::string wrong = directory;
  std::string why;
  if (is_made && !S_ISDIR(about.st_mode)) {
    why = "It is no directory";
  } else {
    // Where it is missing, the first event makes it.
    wrong = is_made ? directory : parent;
    why = why_not_written(host.root.at(wrong), W_OK | X_OK);
  }
  for (const char* name : {"/kqsys32.log", "/kqsys32.xml"}) {
    const std::string path = directory + name;
    if (!why.empty() || stat(host.root.at(path).c_str(), &about) != 0) {
      continue;
    }
    wrong = path;
    why = S_ISREG(about.st_mode) ? why_not_written(host.root.at(path), R_OK | W_OK)
                                 : "It is no regular file";
  }
  if (why.empty()) {
    return set_ok(finding, directory);
  }
  // Another user may be allowed what this one is not.
  const bool may_be_others = why == std::strerror(EACCES) && geteuid() != 0;
  return set(finding, may_be_others ? Health::kWarning : Health::kWrong,
             wrong + ": " + why + (may_be_others ? ", for this user" : ""),
             "Let the users of agents that log events write to " + wrong + ".");
}

Finding check_clock(const Host& host) {
  constexpr time_t kYear2000 = 946684800;
  Finding finding = kqsup::finding("clock",
                                   "Events get times that no one can place, and certificates are "
                                   "not valid yet.");
  struct tm time {};
  char text[32] = "a time without a date";
  if (gmtime_r(&host.now, &time) != nullptr) {
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &time);
  }
  if (host.now >= kYear2000) {
    return set_ok(finding, text);
  }
  return set(finding, Health::kWrong, text,
             "Set the clock, have a time service keep it, and see to the battery of the hardware "
             "clock.");
}

std::vector<Finding> examine(const Host& host) {
  std::vector<Finding> findings{check_registry(host), check_ipc_directory(host)};
  for (Finding& limit : check_limits(host)) {
    findings.push_back(std::move(limit));
  }
  findings.insert(findings.end(), {check_logind(host), check_protected_files(host),
                                   check_cleaners(host), check_logs(host), check_clock(host)});
  return findings;
}

}  // namespace kqsup
