// Finding values in the install registry.

#include "config/install_registry.h"

#include <unistd.h>

#include <cstring>

#include "config/line_reader.h"

namespace kqsupt::config {
namespace {

constexpr const char* kPlaces[] = {"/etc/ybreg.cfg", "/usr/lib/ext/mavo/ybreg.cfg"};
constinit const char* chosen = nullptr;

constexpr std::string_view kKeys[kPathKinds] = {"installpath", "binpath", "inipath",
                                                "vardatapath", "logpath", "configtool"};

std::string_view key_of(PathKind kind) {
  return kKeys[static_cast<uint32_t>(kind)];
}

std::string_view without_slash(std::string_view path) {
  return path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
}

// The directory that a product's own lies in.
std::string_view parent_of(std::string_view path) {
  path = without_slash(path);
  const size_t slash = path.rfind('/');
  return slash == std::string_view::npos || slash == 0 ? path : path.substr(0, slash);
}

// Whether `text` begins with `product`, a dot, `key` and a "=".
bool is_line_of(std::string_view text, std::string_view product, std::string_view key) {
  return text.size() > product.size() + 1 + key.size() && text.starts_with(product) &&
         text[product.size()] == '.' && from(text, product.size() + 1).starts_with(key) &&
         text[product.size() + 1 + key.size()] == '=';
}

}  // namespace

bool start_install_registry() {
  chosen = nullptr;
  for (const char* place : kPlaces) {
    if (chosen == nullptr && access(place, F_OK) == 0) {
      chosen = place;
    }
  }
  return chosen != nullptr;
}

void stop_install_registry() {
  chosen = nullptr;
}

bool RegistryText::load() {
  return chosen != nullptr && read_whole_file(chosen, &file_) == SM_STATUS_SUCCESS;
}

SMStatus RegistryText::find_key(const char* product, PathKind kind, std::string_view* value) const {
  LineReader lines(file_.content());
  for (std::string_view line; lines.next(line);) {
    const std::string_view text = skip_blanks(text_of(line));
    if (!is_line_of(text, product, key_of(kind))) {
      continue;
    }
    std::string_view found =
        skip_blanks(from(text, std::strlen(product) + 1 + key_of(kind).size() + 1));
    found = found.substr(0, found.find_last_not_of(" \t") + 1);
    if (found.size() > kLongestValue) {
      return SM_STATUS_BUFFER_TOO_SMALL;
    }
    *value = found;
    return SM_STATUS_SUCCESS;
  }
  return SM_STATUS_DATA_NOT_FOUND;
}

SMStatus RegistryText::find(const Product& product, PathKind kind, std::string_view* value) const {
  SMStatus status = find_key(product.key, kind, value);
  if (status != SM_STATUS_SUCCESS && product.id == kFamily) {
    status = find_key(product.key, PathKind::kInstall, value);
    for (const char* other : {"Kelvane", "Quillance"}) {
      if (status != SM_STATUS_SUCCESS) {
        status = find_key(other, PathKind::kInstall, value);
        *value = status == SM_STATUS_SUCCESS ? parent_of(*value) : *value;
      }
    }
  }
  if (status == SM_STATUS_SUCCESS) {
    *value = without_slash(*value);
  }
  return status;
}

}  // namespace kqsupt::config
