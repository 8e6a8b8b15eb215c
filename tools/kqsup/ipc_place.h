// Where the agents of this host keep their named objects.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kqsup {

// The IPC directory that the install registry gives; none, and why, when there is no install
// registry or it names none. Whether the directory is there is not looked at.
[[nodiscard]] std::optional<std::string> find_ipc_directory(std::string* why);

// What a text of an install registry says of a product's variable data; `install` is what overrides
// its install path, or empty. Empty when it says nothing.
[[nodiscard]] std::string variable_data_path(std::string_view registry, std::string_view product,
                                             const std::string& install);

// The name of an object as it is registered: what stands for its kind, and the digest of the name
// that its users give it.
[[nodiscard]] std::string decorated_name(std::string_view prefix, const std::string& name);

}  // namespace kqsup
