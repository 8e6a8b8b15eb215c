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

[[nodiscard]] std::vector<std::string> words_of(const std::string& text);
[[nodiscard]] std::vector<std::string> lines_of(const std::string& text);

// A number, or none when there is anything else.
[[nodiscard]] std::optional<unsigned long long> number_of(std::string_view text);

// The configuration files of these directories in the order of their names. A file of an earlier
// directory stands for one of the same name in a later one, also when it is empty.
[[nodiscard]] std::vector<std::string> configuration(
    const Root& root, std::initializer_list<const char*> directories);

// The rows of /proc/sysvipc/KIND without the titles, as words. None when they cannot be read.
[[nodiscard]] std::optional<std::vector<std::vector<std::string>>> objects_of(const Root& root,
                                                                              const char* kind);

// What such a row has in a column; 0 where it has no number.
[[nodiscard]] unsigned long long number_at(const std::vector<std::string>& row, size_t column);

// ---- Findings ----

[[nodiscard]] Finding finding(const char* check, const char* why);
Finding& set(Finding& finding, Health health, std::string found, std::string to_do);
Finding& set_ok(Finding& finding, std::string found);

}  // namespace kqsup
