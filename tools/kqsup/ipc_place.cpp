#include "ipc_place.h"

#include <unistd.h>

#include <cctype>
#include <cstdlib>

#include "containers/md5.h"
#include "file_snapshot.h"
#include "ini_lines.h"

namespace kqsup {

namespace {

constexpr size_t kLongestValue = 255;

// The first line of a key counts. None without one, and for a value that is too long for anybody.
std::optional<std::string> value_of(std::string_view registry, const std::string& key) {
  IniLines lines(registry);
  for (std::string_view line; lines.next(&line);) {
    if (!line.starts_with(key) || line.size() <= key.size() || line[key.size()] != '=') {
      continue;
    }
    std::string_view value = line.substr(key.size() + 1);
    value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    value = value.substr(0, value.find_last_not_of(" \t") + 1);
    if (value.size() > kLongestValue) {
      return std::nullopt;
    }
    if (value.ends_with('/')) {
      value.remove_suffix(1);
    }
    return std::string(value);
  }
  return std::nullopt;
}

// What a variable of this process says instead of the install path, as it would to an agent that was
// started from here.
std::string install_override(const std::string& product) {
  std::string lower = product + "installpath";
  std::string upper = lower;
  for (size_t i = 0; i < lower.size(); ++i) {
    lower[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(lower[i])));
    upper[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(upper[i])));
  }
  for (const std::string& name : {lower, upper}) {
    const char* value = std::getenv(name.c_str());
    if (value != nullptr && *value != '\0') {
      return value;
    }
  }
  return {};
}

}  // namespace

std::string variable_data_path(std::string_view registry, std::string_view product,
                               const std::string& install) {
  const std::string key(product);
  if (const auto value = value_of(registry, key + ".vardatapath")) {
    return *value;
  }
  return !install.empty() ? install : value_of(registry, key + ".installpath").value_or("");
}

std::optional<std::string> find_ipc_directory(std::string* why) {
  const char* const first = "/etc/ybreg.cfg";
  const char* const second = "/usr/lib/ext/mavo/ybreg.cfg";
  const std::string place = access(first, F_OK) == 0 ? first : second;
  const FileSnapshot registry = read_file(place);
  if (registry.result == FileSnapshot::Result::kMissing) {
    *why = std::string("there is no install registry, ") + first;
    return std::nullopt;
  }
  if (registry.result == FileSnapshot::Result::kUnreadable) {
    *why = "the install registry " + place + " cannot be read: " + registry.why;
    return std::nullopt;
  }
  for (const char* product : {"wexlib", "nurb"}) {
    const std::string path =
        variable_data_path(registry.content, product, install_override(product));
    if (!path.empty()) {
      return path + "/.ipc";
    }
  }
  *why = "the install registry " + place + " has no variable-data path of wexlib or nurb";
  return std::nullopt;
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

}  // namespace kqsup
