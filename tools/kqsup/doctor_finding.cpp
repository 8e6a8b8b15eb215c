#include "doctor_finding.h"

#include <utility>

namespace kqsup {

const char* name_of(Health health) {
  switch (health) {
    case Health::kOk:
      return "ok";
    case Health::kWarning:
      return "warning";
    default:
      return "wrong";
  }
}

Finding finding(const char* check, const char* why) {
  Finding finding;
  finding.check = check;
  finding.why = why;
  return finding;
}

Finding& set(Finding& finding, Health health, std::string found, std::string to_do) {
  finding.health = health;
  finding.found = std::move(found);
  finding.to_do = std::move(to_do);
  return finding;
}

Finding& set_ok(Finding& finding, std::string found) {
  return set(finding, Health::kOk, std::move(found), {});
}

}  // namespace kqsup
