#include "doctor_checks.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "doctor_files.h"
#include "looked_at.h"
#include "system_table.h"
#include "whole_number.h"

namespace kqsup {

namespace {

std::string octal(mode_t mode) {
  char text[16];
  std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode & 07777));
  return text;
}

std::string owner_of(const struct stat& about) {
  return std::to_string(about.st_uid) + ":" + std::to_string(about.st_gid);
}

// Why the file, or the directory, could not be used like that; 0 when it could. Root may write to
// anything but what is mounted for reading.
int error_of_access(const std::string& path, int how) {
  return faccessat(AT_FDCWD, path.c_str(), how, AT_EACCESS) == 0 ? 0 : errno;
}

// What cannot be written to is wrong; but another user may be allowed what this one is not.
Finding& set_not_written(Finding& finding, const std::string& path, int error, std::string to_do) {
  const bool may_be_others = error == EACCES && geteuid() != 0;
  return set(finding, may_be_others ? Health::kWarning : Health::kWrong,
             path + ": " + std::strerror(error) + (may_be_others ? ", for this user" : ""),
             std::move(to_do));
}

}  // namespace

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
                   ", which every user whose agents share objects may write to.");
  }
  const Finding judged = judge_ipc_directory(path, directory, parent);
  const int error = error_of_access(host.root.at(path), W_OK | X_OK);
  return judged.health != Health::kOk || error == 0
             ? judged
             : set_not_written(finding, path, error,
                               "Let the users whose agents share objects write to " + path + ".");
}

namespace {

Finding protected_finding() {
  return finding("fs.protected_regular",
                 "In a directory with the sticky bit that others may write to, not even root opens "
                 "the lock file or log of another user when it might have to make it.");
}

// Whether this value of fs.protected_regular is about a directory.
bool is_protected(int level, const struct stat& directory) {
  const bool is_shared = ((directory.st_mode & S_IWOTH) != 0 && level >= 1) ||
                         ((directory.st_mode & S_IWGRP) != 0 && level >= 2);
  return (directory.st_mode & S_ISVTX) != 0 && is_shared;
}

}  // namespace

Finding judge_protected_files(int level, const std::string& path, const struct stat& directory,
                              const std::vector<uid_t>& owners) {
  Finding finding = protected_finding();
  const std::string setting = "fs.protected_regular=" + std::to_string(level);
  if (!is_protected(level, directory)) {
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
  for (const std::string& name : names_in(directory)) {
    struct stat about {};
    if (lstat((directory + "/" + name).c_str(), &about) == 0 && S_ISREG(about.st_mode)) {
      owners.push_back(about.st_uid);
    }
  }
  return owners;
}

}  // namespace

Finding check_protected_files(const Host& host) {
  Finding worst = protected_finding();
  const LookedAt file = look_at(host.root.at("/proc/sys/fs/protected_regular"), kLargestText);
  const auto words = words_of(file.bytes);
  const auto level = words.size() == 1 ? whole_number<unsigned long long>(words[0]) : std::nullopt;
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
    if (directory.empty() || stat(host.root.at(path).c_str(), &about) != 0 ||
        !is_protected(static_cast<int>(*level), about)) {
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

// ---- Logs and clock ----

namespace {

std::string to_let_write(const std::string& path) {
  return "Let the users of agents that log events write to " + path + ".";
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
  const auto set_wrong = [&finding](const std::string& path, const char* why) {
    return set(finding, Health::kWrong, path + ": " + why, to_let_write(path));
  };
  struct stat about {};
  const bool is_made = stat(host.root.at(directory).c_str(), &about) == 0;
  if (is_made && !S_ISDIR(about.st_mode)) {
    return set_wrong(directory, "It is no directory");
  }
  // Where it is missing, the first event makes it.
  const std::string& first = is_made ? directory : parent;
  if (const int error = error_of_access(host.root.at(first), W_OK | X_OK)) {
    return set_not_written(finding, first, error, to_let_write(first));
  }
  // The library reads the XML log as well; the other one may be for writing only.
  for (const auto& [name, how] :
       {std::pair("/kqsys32.log", W_OK), std::pair("/kqsys32.xml", R_OK | W_OK)}) {
    const std::string path = directory + name;
    if (stat(host.root.at(path).c_str(), &about) != 0) {
      continue;
    }
    if (!S_ISREG(about.st_mode)) {
      return set_wrong(path, "It is no regular file");
    }
    if (const int error = error_of_access(host.root.at(path), how)) {
      return set_not_written(finding, path, error, to_let_write(path));
    }
  }
  return set_ok(finding, directory);
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
