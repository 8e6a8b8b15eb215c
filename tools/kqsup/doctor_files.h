// What the checks of a host read from its files.
#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "host_paths.h"

namespace kqsup {

[[nodiscard]] std::vector<std::string> lines_of(const std::string& text);

// No more of a configuration file is read.
inline constexpr size_t kLargestConfiguration = 1U << 20U;

// Gives the text of each configuration file of these directories to `take`, in the order of their
// names. A file of an earlier directory stands for one of the same name in a later one, also when
// it is empty.
void read_configuration(const Root& root, std::initializer_list<const char*> directories,
                        const std::function<void(const std::string& text)>& take);

}  // namespace kqsup
