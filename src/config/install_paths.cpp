// The table of the products' paths, and the names that are made from them.

#include "config/install_paths.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "config/install_registry.h"
#include "frame/heap.h"
#include "frame/status.h"
#include "ipc/local_mutex.h"
#include "text/language.h"
#include "text/text_builder.h"
#include "text/utf8_string.h"

namespace kqsupt::config {
namespace {

using ipc::LocalMutexGuard;

// ---- The table ----

constexpr size_t kProductCount = std::size(kProducts);

struct Paths {
  char* of[kPathKinds];  // on the heap
};
constinit ipc::LocalMutex table_mutex;
constinit Paths table[kProductCount] = {};
constinit bool loaded = false;

void unload() {
  for (Paths& paths : table) {
    for (char*& path : paths.of) {
      frame::release(path);
      path = nullptr;
    }
  }
  loaded = false;
}

char* copy_of(std::string_view text) {
  auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy != nullptr) {
    *std::copy(text.begin(), text.end(), copy) = '\0';
  }
  return copy;
}

// The variable that overrides a product's install path; null when it is not set or empty.
const char* override_of(const Product& product) {
  constexpr std::string_view kEnd = "installpath";
  char lower[32];
  char* end = std::copy_n(product.key, std::strlen(product.key), lower);
  *std::copy(kEnd.begin(), kEnd.end(), end) = '\0';
  char upper[sizeof lower];
  std::strcpy(upper, lower);
  for (const char* name : {text::to_lower(lower), text::to_upper(upper)}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') {
      return value;
    }
  }
  return nullptr;
}

bool load_product(const Product& product, const RegistryText& registry, Paths* paths) {
  std::string_view install;
  if (const char* given = override_of(product)) {
    install = given;
  } else if (registry.find(product, PathKind::kInstall, &install) != SM_STATUS_SUCCESS) {
    install = {};
  }
  for (uint32_t kind = 0; kind < kPathKinds; ++kind) {
    std::string_view path = install;
    if (static_cast<PathKind>(kind) != PathKind::kInstall &&
        registry.find(product, static_cast<PathKind>(kind), &path) != SM_STATUS_SUCCESS) {
      path = install;
    }
    paths->of[kind] = copy_of(path);
    if (paths->of[kind] == nullptr) {
      return false;
    }
  }
  return true;
}

// Without memory for all of it there is no table, and the next query tries again.
void load() {
  unload();
  RegistryText registry;
  if (!registry.load()) {
    return;
  }
  for (size_t i = 0; i < kProductCount; ++i) {
    if (!load_product(kProducts[i], registry, &table[i])) {
      unload();
      return;
    }
  }
  loaded = true;
}

// ---- Queries ----

// Null for an unknown product or type, or a path that is not known.
const char* look_up(int32_t product_id, uint32_t path_type) {
  PathKind kind;
  switch (path_type) {
    case kInstallPath:
    case 32:
      kind = PathKind::kInstall;
      break;
    case kVariableDataPath:
      kind = PathKind::kVariableData;
      break;
    case 8:
      kind = PathKind::kLog;
      break;
    case 16:
      kind = PathKind::kConfigTool;
      break;
    case kIniPath:
      kind = PathKind::kIni;
      break;
    case 128:
      kind = PathKind::kBin;
      break;
    default:
      return nullptr;
  }
  const auto* product =
      std::find_if(std::begin(kProducts), std::end(kProducts),
                   [product_id](const Product& known) { return known.id == product_id; });
  if (!loaded || product == std::end(kProducts)) {
    return nullptr;
  }
  const char* path = table[product - kProducts].of[static_cast<uint32_t>(kind)];
  return *path != '\0' ? path : nullptr;
}

SMStatus fail(SMStatus status, uint32_t* size) {
  if (size != nullptr) {
    *size = 0;
  }
  return status;
}

SMStatus copy_out(std::string_view text, char* buffer, uint32_t* size) {
  const uint32_t capacity = *size;
  *size = static_cast<uint32_t>(text.size() + 1);
  if (capacity < *size) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  if (buffer != nullptr) {
    *std::copy(text.begin(), text.end(), buffer) = '\0';
  }
  return SM_STATUS_SUCCESS;
}

// The parts with "/" between them, empty and null ones left out; null when memory is short.
frame::HeapPtr<char> joined(std::initializer_list<const char*> parts) {
  text::TextBuilder path(256);
  bool fits = path.ok();
  for (const char* part : parts) {
    if (part != nullptr && *part != '\0') {
      fits = fits && (path.length() == 0 || path.append('/')) && path.append(part);
    }
  }
  return frame::HeapPtr<char>(fits ? path.release() : nullptr);
}

SMStatus fetch_path(int32_t product_id, uint32_t path_type, Directory directory, char* buffer,
                    uint32_t* size) {
  const LocalMutexGuard guard(table_mutex);
  const char* path = look_up(product_id, path_type);
  if (path == nullptr) {
    load();  // a product may have been installed meanwhile
    path = look_up(product_id, path_type);
  }
  if (path == nullptr) {
    return fail(SM_STATUS_DATA_NOT_FOUND, size);
  }
  if (directory == Directory::kMustBeThere && access(path, F_OK) != 0) {
    return fail(SM_STATUS_OPERATION_FAILED, size);
  }
  return size != nullptr ? copy_out(path, buffer, size) : SMStatus{SM_STATUS_INVALID_PARAMETER};
}

}  // namespace

frame::HeapPtr<char> copy_path(int32_t product_id, uint32_t path_type, SMStatus* status,
                               Directory directory) {
  // Mostly enough; and somebody may change the path between two questions.
  uint32_t size = 128;
  do {
    frame::HeapPtr<char> path(static_cast<char*>(std::malloc(size)));
    if (path == nullptr) {
      *status = SM_STATUS_NO_MEMORY;
      return nullptr;
    }
    *status = fetch_path(product_id, path_type, directory, path.get(), &size);
    if (*status == SM_STATUS_SUCCESS) {
      return path;
    }
  } while (*status == SM_STATUS_BUFFER_TOO_SMALL);
  return nullptr;
}

bool start_install_paths() {
  if (!ipc::hold_over_forks(table_mutex)) {
    return false;
  }
  const LocalMutexGuard guard(table_mutex);
  load();
  return true;
}

void stop_install_paths() {
  const LocalMutexGuard guard(table_mutex);
  unload();
}

SMStatus get_path(int32_t product_id, uint32_t path_type, char* buffer, uint32_t* size) {
  return fetch_path(product_id, path_type, Directory::kMustBeThere, buffer, size);
}

SMStatus expand_install_path(const char* text, char* buffer, uint32_t* size) {
  constexpr std::string_view kMacro = "@ybinstallpath@";
  constexpr size_t kLongestText = 254;
  if (size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (text == nullptr) {
    return fail(SM_STATUS_INVALID_PARAMETER, size);
  }
  std::string_view behind(text);
  if (behind.size() > kLongestText) {
    return fail(frame::kFailed, size);
  }
  const auto* macro = std::search(behind.begin(), behind.end(), kMacro.begin(), kMacro.end(),
                                  [](char byte, char wanted) {
                                    return std::tolower(static_cast<unsigned char>(byte)) == wanted;
                                  });
  std::string_view before = behind;
  frame::HeapPtr<char> path;
  if (macro != behind.end()) {
    SMStatus status = SM_STATUS_SUCCESS;
    path = copy_path(kFamily, kInstallPath, &status);
    if (path == nullptr) {
      return fail(status, size);
    }
    before = behind.substr(0, static_cast<size_t>(macro - behind.begin()));
    behind.remove_prefix(before.size() + kMacro.size());
  } else {
    behind = {};
  }
  const std::string_view between = path != nullptr ? path.get() : std::string_view();
  const auto needed = static_cast<uint32_t>(before.size() + between.size() + behind.size() + 1);
  if (*size < needed) {
    *size = needed;
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  if (buffer == nullptr) {
    return fail(SM_STATUS_INVALID_PARAMETER, size);
  }
  for (const std::string_view part : {before, between, behind}) {
    buffer = std::copy(part.begin(), part.end(), buffer);
  }
  *buffer = '\0';
  *size = needed;
  return SM_STATUS_SUCCESS;
}

int32_t product_of_key(const char* key) {
  for (const Product& product : kProducts) {
    if (key != nullptr && strcasecmp(product.key, key) == 0) {
      return product.id;
    }
  }
  return 0;
}

char* key_of_product(int32_t product_id) {
  for (const Product& product : kProducts) {
    if (product.id == product_id) {
      return copy_of(product.key);
    }
  }
  return nullptr;
}

char* make_path(int32_t product_id, uint32_t path_type, const char* sub_directory,
                const char* file_name) {
  if (file_name == nullptr) {
    return nullptr;
  }
  SMStatus status = SM_STATUS_SUCCESS;
  const frame::HeapPtr<char> directory = copy_path(product_id, path_type, &status);
  if (directory == nullptr) {
    return nullptr;
  }
  // An empty file name stands for the directory with a "/" at its end.
  text::TextBuilder path(256);
  bool fits = path.append(directory.get());
  if (sub_directory != nullptr && *sub_directory != '\0') {
    fits = fits && path.append('/') && path.append(sub_directory);
  }
  return fits && path.append('/') && path.append(file_name) ? path.release() : nullptr;
}

char* find_localized_path(const char* base, const char* directory, const char* language,
                          const char* sub_directory, const char* file_name) {
  constexpr size_t kLongestLanguage = 8;
  constexpr size_t kLongestPath = 255;
  if (directory == nullptr || file_name == nullptr) {
    return nullptr;
  }
  if (language == nullptr) {
    language = text::locale_name(text::local_language());
  } else if (std::strlen(language) > kLongestLanguage) {
    return nullptr;
  }
  // "en_US" stands for the directories en/US, then en, then none.
  char country[16];
  char alone[16];
  std::replace_copy(language, language + std::strlen(language) + 1, country, '_', '/');
  *std::copy(language, language + std::strcspn(language, "_"), alone) = '\0';
  for (const char* part :
       {static_cast<const char*>(country), static_cast<const char*>(alone), ""}) {
    frame::HeapPtr<char> path =
        joined({base != nullptr ? base : ".", directory, part, sub_directory, file_name});
    if (path == nullptr) {
      return nullptr;
    }
    if (std::strlen(path.get()) <= kLongestPath && access(path.get(), F_OK) == 0) {
      return path.release();
    }
  }
  return nullptr;
}

}  // namespace kqsupt::config
