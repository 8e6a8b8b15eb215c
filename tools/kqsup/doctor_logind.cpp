// Whether objects go when their users log out.

#include <unistd.h>

#include <algorithm>
#include <initializer_list>

#include "doctor_files.h"
#include "looked_at.h"
#include "system_table.h"

namespace kqsup {

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

// Users from here on are people, to those who manage sessions; but for the last one, who is nobody.
constexpr uid_t kFirstPerson = 1000;
constexpr uid_t kNobody = 65534;
// The keys of named objects begin here.
constexpr uint32_t kFirstKey = 300001;

bool is_person(uid_t user) {
  return user >= kFirstPerson && user != kNobody;
}

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
  for (const char* table : {"/proc/sysvipc/sem", "/proc/sysvipc/shm"}) {
    const LookedAt objects = look_at(host.root.at(table), kLargestText);
    for (const Row& row : rows_of(objects.bytes)) {
      uint32_t key = 0;
      if (!read_key(row, &key) || key < kFirstKey) {
        continue;
      }
      for (const char* user : {"uid", "cuid"}) {
        uid_t number = 0;
        if (read_field(row, user, &number) && is_person(number)) {
          return set(
              finding, Health::kWrong,
              said + ", and user " + std::to_string(number) + " has objects that it will remove",
              to_do);
        }
      }
    }
  }
  return set(finding, Health::kWarning, said, to_do);
}

}  // namespace kqsup
