// Where the products have their directories.
#pragma once

#include <cstdint>

#include "frame/heap.h"
#include "kqsupt/frame.h"

namespace kqsupt::config {

// Loads the table of paths. What cannot be loaded now is when it is first asked for.
[[nodiscard]] bool start_install_paths();
void stop_install_paths();

// The exported operations.
[[nodiscard]] SMStatus get_path(int32_t product_id, uint32_t path_type, char* buffer,
                                uint32_t* size);
[[nodiscard]] SMStatus expand_install_path(const char* text, char* buffer, uint32_t* size);
[[nodiscard]] int32_t product_of_key(const char* key);
[[nodiscard]] char* key_of_product(int32_t product_id);
[[nodiscard]] char* make_path(int32_t product_id, uint32_t path_type, const char* sub_directory,
                              const char* file_name);
[[nodiscard]] char* find_localized_path(const char* base, const char* directory,
                                        const char* language, const char* sub_directory,
                                        const char* file_name);

// Whether a directory that is missing now is a failure.
enum class Directory { kMustBeThere, kMayBeMissing };

// A path on the heap. Null, with the status of get_path or SM_STATUS_NO_MEMORY told, when it is not
// known, its directory missing, or memory short.
[[nodiscard]] frame::HeapPtr<char> copy_path(int32_t product_id, uint32_t path_type,
                                             SMStatus* status,
                                             Directory directory = Directory::kMustBeThere);

// What is asked for of the install path itself.
inline constexpr int32_t kQuillance = 35;
inline constexpr uint32_t kInstallPath = 2;
inline constexpr uint32_t kVariableDataPath = 4;
inline constexpr uint32_t kLogPath = 8;
inline constexpr uint32_t kIniPath = 64;

}  // namespace kqsupt::config
