// The install registry: the text file that says where each product has its directories. Installers
// write it, this library only reads it.
#pragma once

#include <cstdint>
#include <string_view>

#include "config/file_commit.h"
#include "kqsupt/frame.h"

namespace kqsupt::config {

// Chooses the file, once for the process: false when there is none.
[[nodiscard]] bool start_install_registry();
void stop_install_registry();

// The values that a product may have in the registry.
enum class PathKind : uint32_t { kInstall, kBin, kIni, kVariableData, kLog, kConfigTool };
inline constexpr uint32_t kPathKinds = 6;

struct Product {
  const char* key;
  int32_t id;
};
inline constexpr Product kProducts[] = {
    {"tovu", -1},  {"tumbr", 33},  {"Kelvane", 34},   {"nurb", 44},
    {"vosk5", 88}, {"wexlib", 45}, {"Quillance", 35},
};
inline constexpr int32_t kFamily = -1;  // the product that the others are below of

// The registry as it is now.
class RegistryText {
 public:
  // False when no file was chosen, it cannot be read, or memory is short.
  [[nodiscard]] bool load();

  // The value of a product without a "/" at its end, of at most kLongestValue bytes. That of
  // kFamily may be taken from a product's install path. SM_STATUS_DATA_NOT_FOUND, or
  // SM_STATUS_BUFFER_TOO_SMALL for a longer one. Valid as long as this object.
  [[nodiscard]] SMStatus find(const Product& product, PathKind kind, std::string_view* value) const;

  static constexpr size_t kLongestValue = 255;

 private:
  [[nodiscard]] SMStatus find_key(const char* product, PathKind kind,
                                  std::string_view* value) const;

  WholeFile file_;
};

}  // namespace kqsupt::config
