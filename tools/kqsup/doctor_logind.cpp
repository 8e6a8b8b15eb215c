// Whether objects go when their users log out.
#include "doctor_logind.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>

#include "doctor_checks.h"
#include "doctor_files.h"
#include "looked_at.h"
#include "name_registry.h"
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
class RemoveIpc {
 public:
  explicit RemoveIpc(const Root& root) {
    // The first main file that there is counts; files beside it come later, and win.
    for (const char* place :
         {"/etc/systemd/logind.conf", "/run/systemd/logind.conf",
          "/usr/local/lib/systemd/logind.conf", "/usr/lib/systemd/logind.conf"}) {
      const LookedAt file = look_at(root.at(place), kLargestConfiguration);
      if (!file.is_missing) {
        read(file.bytes);
        break;
      }
    }
    read_configuration(root,
                       {"/etc/systemd/logind.conf.d", "/run/systemd/logind.conf.d",
                        "/usr/local/lib/systemd/logind.conf.d", "/usr/lib/systemd/logind.conf.d"},
                       [this](const std::string& text) { read(text); });
  }

  [[nodiscard]] bool is_on() const { return is_on_; }
  [[nodiscard]] const std::string& said() const { return said_; }

 private:
  void read(const std::string& text) {
    std::string value;
    if (!find_setting(text, "Login", "RemoveIPC", &value)) {
      return;
    }
    std::string lower = value;
    for (char& c : lower) {
      c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    const auto is_one_of = [&lower](std::initializer_list<const char*> words) {
      return std::find(words.begin(), words.end(), lower) != words.end();
    };
    if (is_one_of({"no", "n", "false", "f", "off", "0"})) {
      is_on_ = false;
    } else if (is_one_of({"", "yes", "y", "true", "t", "on", "1"})) {
      is_on_ = true;
    } else {
      return;  // it ignores what it does not understand
    }
    said_ = "RemoveIPC=" + (value.empty() ? "yes, which is the default" : value);
  }

  bool is_on_ = true;
  std::string said_ = "RemoveIPC=yes, which is the default";
};

// The objects that agents share, as the registry of their names has them. Other programs' keys may
// be any number.
NameRegistry registry_of(const Host& host) {
  const std::string data = host.paths.variable_data();
  return data.empty() ? NameRegistry() : read_name_registry(host.root.at(data) + "/.ipc").registry;
}

// Whether a row of one of the tables of objects is in the registry.
bool is_agents(const Row& row, const NameRegistry& registry) {
  uint32_t key = 0;
  if (!read_key(row, &key)) {
    return false;
  }
  int32_t id = 0;
  if (key == 0 && read_field(row, "semid", &id)) {
    return std::any_of(registry.listed_sets.begin(), registry.listed_sets.end(),
                       [id](const NameRegistry::ListedSet& set) { return set.id == id; });
  }
  return key >= NameRegistry::kFirstKey && key <= registry.highest_key();
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
  const RemoveIpc setting(host.root);
  const std::string& said = setting.said();
  if (!setting.is_on()) {
    return set_ok(finding, said);
  }
  const char* to_do =
      "Write [Login] and RemoveIPC=no into /etc/systemd/logind.conf.d/agents.conf and restart "
      "systemd-logind, or run agents as root or as system users.";
  const NameRegistry registry = registry_of(host);
  for (const char* table : {"/proc/sysvipc/sem", "/proc/sysvipc/shm"}) {
    const LookedAt objects = look_at(host.root.at(table), kLargestText);
    for (const Row& row : rows_of(objects.bytes)) {
      if (!is_agents(row, registry)) {
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
