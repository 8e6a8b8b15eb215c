// What the check of logind judges by.
#pragma once

#include <string>
#include <string_view>

namespace kqsup {

// Whether a key of a systemd configuration file is set in this section; the last time counts. An
// empty value is one too.
[[nodiscard]] bool find_setting(std::string_view text, std::string_view section,
                                std::string_view key, std::string* value);

}  // namespace kqsup
