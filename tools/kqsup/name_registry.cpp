#include "name_registry.h"

#include <algorithm>
#include <set>

#include "containers/md5.h"
#include "host_paths.h"
#include "ini_reader.h"
#include "listing.h"
#include "whole_number.h"

namespace kqsup {

namespace {

constexpr std::string_view kKeysByName = "Unique String Name Key Section";
constexpr std::string_view kNamesByKey = "Unique Numeric Value Key Section";
constexpr std::string_view kSemaphoreList = "Semaphore List";

struct Entry {
  std::string_view key;
  std::string_view value;
};
using Sections = std::map<std::string_view, std::vector<Entry>>;

Sections sections_of(const IniContent& content, std::vector<std::string>* damage) {
  Sections sections;
  for (const IniLine& line : content.lines) {
    if (line.is_found && line.key.has_value()) {
      sections[*line.section].push_back({*line.key, line.value});
    }
  }
  if (content.broken_header != 0) {
    damage->push_back("line " + std::to_string(content.broken_header) +
                      " is a section header without its \"]\"; nothing behind it is found");
  }
  return sections;
}

// The number that a value begins with, as the library takes it; none where it takes 0.
std::optional<uint32_t> key_in(std::string_view value) {
  value.remove_prefix(std::min(value.find_first_not_of(" \t\v\f\r"), value.size()));
  value.remove_prefix(value.starts_with('+') ? 1 : 0);
  return whole_number<uint32_t>(value.substr(0, value.find_first_not_of("0123456789")));
}

std::string quoted(std::string_view text) {
  return "\"" + printable(text) + "\"";
}

class Names {
 public:
  explicit Names(NameRegistry* registry) : registry_(*registry) {}

  void add(std::string_view name, std::optional<uint32_t> key, bool is_by_name) {
    if (key.value_or(0) == 0) {
      registry_.damage.push_back("the name " + quoted(name) + " has no key");
      return;
    }
    if (const auto [other, is_new] = by_key_.try_emplace(*key, name); !is_new) {
      if (other->second != name) {
        registry_.damage.push_back("the names " + quoted(other->second) + " and " + quoted(name) +
                                   " have one key, " + std::to_string(*key));
      }
      if (is_known(name)) {
        return;
      }
    }
    if (known_.insert(name).second) {
      registry_.names.push_back({std::string(name), *key, is_by_name});
    }
  }
  [[nodiscard]] bool is_known(std::string_view name) const { return known_.contains(name); }

 private:
  NameRegistry& registry_;
  std::map<uint32_t, std::string_view> by_key_;
  std::set<std::string_view> known_;
};

}  // namespace

NameKind kind_of_name(std::string_view decorated) {
  constexpr std::pair<std::string_view, NameKind> kKinds[] = {
      {kMutexPrefix, NameKind::kMutex},
      {kSemaphorePrefix, NameKind::kSemaphore},
      {kSharedMemoryPrefix, NameKind::kSharedMemory},
      {kEventPrefix, NameKind::kEvent},
      {kPathLockPrefix, NameKind::kPathLock}};
  constexpr size_t kDigits = 32;
  for (const auto& [prefix, kind] : kKinds) {
    if (decorated.starts_with(prefix) && decorated.size() == prefix.size() + kDigits &&
        decorated.find_first_not_of("0123456789ABCDEF", prefix.size()) == std::string_view::npos) {
      return kind;
    }
  }
  return NameKind::kUnknown;
}

uint32_t NameRegistry::highest_key() const {
  return names.empty() ? 0 : names.back().key;
}

std::optional<std::string> find_ipc_directory(std::string* why) {
  const HostPaths paths;
  if (!paths.why().empty()) {
    *why = paths.why();
    return std::nullopt;
  }
  const std::string path = paths.variable_data();
  if (path.empty()) {
    *why = paths.registry() + " has no variable-data path of wexlib or nurb";
    return std::nullopt;
  }
  return path + "/.ipc";
}

std::string decorated_name(std::string_view prefix, const std::string& name) {
  using namespace kqsupt::containers;
  SMRFC1321Context context;
  load_digest(&context);
  add_message(&context, name.c_str(), static_cast<uint32_t>(name.size() + 1));
  compute_digest(&context);
  std::string text(prefix);
  for (const uint8_t byte : context.digest) {
    text += "0123456789ABCDEF"[byte >> 4];
    text += "0123456789ABCDEF"[byte & 15];
  }
  return text;
}

NameRegistry parse_name_registry(std::string_view text) {
  NameRegistry registry;
  const IniContent content = read_ini(text);
  const Sections sections = sections_of(content, &registry.damage);
  const auto entries_of = [&](std::string_view section) {
    const auto place = sections.find(section);
    return place != sections.end() ? place->second : std::vector<Entry>();
  };
  Names names(&registry);
  for (const Entry& entry : entries_of(kKeysByName)) {
    names.add(entry.key, key_in(entry.value), true);
  }
  // Both sections are changed at once. A name that only this one has was taken out of the other.
  std::set<std::pair<uint32_t, std::string_view>> keys;
  for (const Entry& entry : entries_of(kNamesByKey)) {
    keys.emplace(whole_number<uint32_t>(entry.key).value_or(0), entry.value);
    if (!names.is_known(entry.value)) {
      registry.damage.push_back("the key " + quoted(entry.key) + " of the name " +
                                quoted(entry.value) + " is not found by that name");
      if (const auto key = whole_number<uint32_t>(entry.key)) {
        names.add(entry.value, key, false);
      }
    }
  }
  for (NameRegistry::Name& name : registry.names) {
    name.is_found_both_ways = name.is_found_both_ways && keys.contains({name.key, name.text});
  }
  for (const Entry& entry : entries_of(kSemaphoreList)) {
    const auto id = whole_number<int32_t>(entry.key);
    const auto maker = whole_number<uint64_t>(entry.value);
    if (id.has_value() && maker.has_value()) {
      registry.listed_sets.push_back({*id, *maker});
    } else {
      registry.damage.push_back("the list of semaphore sets has the entry " + quoted(entry.key) +
                                " with the process " + quoted(entry.value));
    }
  }
  std::stable_sort(registry.names.begin(), registry.names.end(),
                   [](const auto& a, const auto& b) { return a.key < b.key; });
  return registry;
}

std::string registry_path(const std::string& ipc_directory) {
  return ipc_directory + "/.lxsuptIPCini";
}
std::string registry_backup_path(const std::string& ipc_directory) {
  return ini_backup(registry_path(ipc_directory));
}

RegistryFile read_name_registry(const std::string& ipc_directory) {
  const std::string path = registry_path(ipc_directory);
  const IniFile ini = look_at_ini(path);
  if (ini.file.is_missing) {
    return {true, {}, {}};
  }
  const std::string& place = ini.is_interrupted ? registry_backup_path(ipc_directory) : path;
  if (!ini.file.ok() || ini.file.goes_on) {
    return {false, {}, place + ": " + (ini.file.ok() ? "It is too large" : ini.file.why)};
  }
  RegistryFile registry{true, parse_name_registry(ini.file.bytes), {}};
  if (ini.is_interrupted) {
    registry.registry.damage.push_back("a change was interrupted: what counts is in " + place);
  }
  return registry;
}

}  // namespace kqsup
