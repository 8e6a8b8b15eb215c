// What a check of a host found.
#pragma once

#include <string>

namespace kqsup {

enum class Health { kOk, kWarning, kWrong };

[[nodiscard]] const char* name_of(Health health);

struct Finding {
  std::string check;
  Health health = Health::kOk;
  std::string found;  // what is there
  std::string why;    // why it matters to agents
  std::string to_do;  // empty when all is well
};

[[nodiscard]] Finding finding(const char* check, const char* why);
Finding& set(Finding& finding, Health health, std::string found, std::string to_do);
Finding& set_ok(Finding& finding, std::string found);

}  // namespace kqsup
