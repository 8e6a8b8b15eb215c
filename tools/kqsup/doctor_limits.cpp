// The limits of System V objects.

#include <unistd.h>

#include "doctor_checks.h"
#include "doctor_files.h"
#include "looked_at.h"
#include "system_table.h"
#include "whole_number.h"

namespace kqsup {
namespace {

struct Limit {
  const char* check;
  const char* kind;     // of objects, in /proc/sysvipc
  const char* counted;  // the column to add up; null counts objects
  const char* setting;  // in /proc/sys/kernel
  size_t word;          // of the setting
  const char* why;
  bool is_ours;  // whether agents need the library for it
};

constexpr Limit kLimits[] = {
    {"semaphore sets", "sem", nullptr, "sem", 3,
     "Each named semaphore, event and segment takes a set: without one, making it fails.", true},
    {"semaphores", "sem", "nsems", "sem", 1,
     "Each named semaphore, event and segment takes some: without them, making it fails.", true},
    {"shared memory segments", "shm", nullptr, "shmmni", 0,
     "Each piece of named memory is one: without one, making it fails.", true},
    {"message queues", "msg", nullptr, "msgmni", 0,
     "The library uses none; agents that have their own cannot make them.", false},
};

Finding check_limit(const Host& host, const Limit& limit) {
  Finding finding = kqsup::finding(limit.check, limit.why);
  const std::string setting = std::string("/proc/sys/kernel/") + limit.setting;
  const LookedAt file = look_at(host.root.at(setting), kLargestText);
  const std::string table = std::string("/proc/sysvipc/") + limit.kind;
  const LookedAt objects = look_at(host.root.at(table), kLargestText);
  if (!file.ok() || !objects.ok()) {
    return set(finding, Health::kWarning, (file.ok() ? table : setting) + " cannot be read",
               "Mount /proc, and use a kernel with System V IPC.");
  }
  const auto words = words_of(file.bytes);
  const auto most = limit.word < words.size() ? whole_number<unsigned long long>(words[limit.word])
                                              : std::nullopt;
  if (!most) {
    return set(finding, Health::kWarning, setting + " is no list of numbers",
               "See why " + setting + " is not as the kernel makes it.");
  }
  unsigned long long used = 0;
  for (const Row& row : rows_of(objects.bytes)) {
    unsigned long long count = limit.counted == nullptr ? 1 : 0;
    used += limit.counted == nullptr || read_field(row, limit.counted, &count) ? count : 0;
  }
  const std::string found = std::to_string(used) + " of " + std::to_string(*most);
  // Nine tenths, of numbers of any size.
  const bool is_nearly_used_up = used >= *most - *most / 10;
  if (!is_nearly_used_up) {
    return set_ok(finding, found);
  }
  return set(
      finding, used >= *most && limit.is_ours ? Health::kWrong : Health::kWarning, found,
      std::string("Raise kernel.") + limit.setting + " with sysctl; see with ipcs who holds them.");
}

// All of it together, which segments count by whole pages.
Finding check_shared_pages(const Host& host) {
  Finding finding =
      kqsup::finding("shared memory",
                     "All segments together have so many pages: without one left, making a "
                     "segment fails however few there are.");
  const LookedAt file = look_at(host.root.at("/proc/sys/kernel/shmall"), kLargestText);
  const auto words = words_of(file.bytes);
  const auto limit = words.size() == 1 ? whole_number<unsigned long long>(words[0]) : std::nullopt;
  const unsigned long long most = limit.value_or(0);
  const LookedAt segments = look_at(host.root.at("/proc/sysvipc/shm"), kLargestText);
  if (!limit || !segments.ok()) {
    return set(
        finding, Health::kWarning,
        !limit ? "/proc/sys/kernel/shmall cannot be read" : "/proc/sysvipc/shm cannot be read",
        "Mount /proc, and use a kernel with System V IPC.");
  }
  const auto page = static_cast<unsigned long long>(sysconf(_SC_PAGESIZE));
  unsigned long long used = 0;
  for (const Row& row : rows_of(segments.bytes)) {
    unsigned long long size = 0;
    if (read_field(row, "size", &size)) {
      used += size / page + (size % page != 0 ? 1 : 0);
    }
  }
  const std::string found = std::to_string(used) + " of " + std::to_string(most) + " pages";
  if (used < most - most / 10) {
    return set_ok(finding, found);
  }
  return set(finding, used >= most ? Health::kWrong : Health::kWarning, found,
             "Raise kernel.shmall with sysctl; see with ipcs who holds them.");
}

Finding check_largest_segment(const Host& host) {
  constexpr unsigned long long kLargestRecord = 65536;
  constexpr unsigned long long kUsual = 1U << 20U;
  Finding finding = kqsup::finding("largest segment",
                                   "A record has up to 65,535 bytes, and is handed on in one piece "
                                   "of shared memory.");
  const LookedAt file = look_at(host.root.at("/proc/sys/kernel/shmmax"), kLargestText);
  const auto words = words_of(file.bytes);
  const auto most = words.size() == 1 ? whole_number<unsigned long long>(words[0]) : std::nullopt;
  if (!most) {
    return set(finding, Health::kWarning, "/proc/sys/kernel/shmmax cannot be read",
               "Mount /proc, and use a kernel with System V IPC.");
  }
  const std::string found = std::to_string(*most) + " bytes";
  if (*most >= kUsual) {
    return set_ok(finding, found);
  }
  return set(finding, *most < kLargestRecord ? Health::kWrong : Health::kWarning, found,
             "Raise kernel.shmmax with sysctl.");
}

}  // namespace

std::vector<Finding> check_limits(const Host& host) {
  std::vector<Finding> findings;
  for (const Limit& limit : kLimits) {
    findings.push_back(check_limit(host, limit));
  }
  findings.push_back(check_shared_pages(host));
  findings.push_back(check_largest_segment(host));
  return findings;
}

}  // namespace kqsup
