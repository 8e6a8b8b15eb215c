// What the checks of a host read from its files, and how they say what they found.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "doctor_checks.h"

namespace kqsup {

// ---- Files ----

[[nodiscard]] std::vector<std::string> lines_of(const std::string& text);

// A number, or none when there is anything else.
[[nodiscard]] std::optional<unsigned long long> number_of(std::string_view text);

// The configuration files of these directories in the order of their names. A file of an earlier
// directory stands for one of the same name in a later one, also when it is empty.
[[nodiscard]] std::vector<std::string> configuration(
    const Root& root, std::initializer_list<const char*> directories);

// ---- Findings ----

[[nodiscard]] Finding finding(const char* check, const char* why);
Finding& set(Finding& finding, Health health, std::string found, std::string to_do);
Finding& set_ok(Finding& finding, std::string found);

}  // namespace kqsup
