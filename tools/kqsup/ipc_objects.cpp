#include "ipc_objects.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/sem.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <limits>
#include <string>

#include "looked_at.h"
#include "system_table.h"

namespace kqsup {

namespace {

std::optional<int> ask_set(int32_t set, int command) {
  union {
    int value;
    void* pointer;
  } unused{};
  const int answer = semctl(set, 0, command, unused);
  return answer >= 0 ? std::optional(answer) : std::nullopt;
}

// One line of the kernel's, with as few calls as it takes: there may be a process for each object.
std::string read_line(const std::string& path) {
  char line[4096];
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const ssize_t count = file >= 0 ? read(file, line, sizeof line) : 0;
  if (file >= 0) {
    close(file);
  }
  return {line, static_cast<size_t>(count > 0 ? count : 0)};
}

// When a process started, in seconds of the clock as it goes now. The name of its program, which may
// have any bytes, stands in brackets before the numbers.
std::optional<int64_t> start_of(int32_t process) {
  const std::string text = read_line("/proc/" + std::to_string(process) + "/stat");
  const size_t bracket = text.rfind(')');
  if (bracket == std::string::npos) {
    return std::nullopt;
  }
  constexpr size_t kStart = 19;  // from the state on, which is the first
  const std::vector<std::string_view> words = words_of(std::string_view(text).substr(bracket + 1));
  const long ticks_per_second = sysconf(_SC_CLK_TCK);
  uint64_t ticks = 0;
  timespec now{};
  timespec since_boot{};
  if (words.size() <= kStart || ticks_per_second <= 0 ||
      std::from_chars(words[kStart].data(), words[kStart].data() + words[kStart].size(), ticks)
              .ec != std::errc() ||
      clock_gettime(CLOCK_REALTIME, &now) != 0 || clock_gettime(CLOCK_BOOTTIME, &since_boot) != 0) {
    return std::nullopt;
  }
  return now.tv_sec - since_boot.tv_sec +
         static_cast<int64_t>(ticks / static_cast<uint64_t>(ticks_per_second));
}

}  // namespace

const SemaphoreSet* SystemObjects::set_of_key(uint32_t key) const {
  const auto place = std::lower_bound(sets.begin(), sets.end(), key,
                                      [](const auto& set, uint32_t k) { return set.key < k; });
  return key != 0 && place != sets.end() && place->key == key ? &*place : nullptr;
}
const Segment* SystemObjects::segment_of_key(uint32_t key) const {
  const auto place =
      std::lower_bound(segments.begin(), segments.end(), key,
                       [](const auto& memory, uint32_t k) { return memory.key < k; });
  return key != 0 && place != segments.end() && place->key == key ? &*place : nullptr;
}
const SemaphoreSet* SystemObjects::set_of_id(int32_t id) const {
  const auto place = places.find(id);
  return place != places.end() ? &sets[place->second] : nullptr;
}

std::optional<SystemObjects> parse_system_objects(std::string_view sets,
                                                  std::string_view segments) {
  if (sets.empty() || segments.empty()) {
    return std::nullopt;
  }
  SystemObjects objects;
  for (const Row& row : rows_of(sets)) {
    SemaphoreSet set{};
    if (!read_key(row, &set.key) || !read_field(row, "semid", &set.id) ||
        !read_field(row, "nsems", &set.semaphores)) {
      return std::nullopt;
    }
    objects.sets.push_back(set);
  }
  for (const Row& row : rows_of(segments)) {
    Segment segment{};
    if (!read_key(row, &segment.key) || !read_field(row, "shmid", &segment.id) ||
        !read_field(row, "size", &segment.size) || !read_field(row, "nattch", &segment.attached) ||
        !read_field(row, "cpid", &segment.creator) || !read_field(row, "ctime", &segment.made_at)) {
      return std::nullopt;
    }
    objects.segments.push_back(segment);
  }
  const auto by_key = [](const auto& a, const auto& b) { return a.key < b.key; };
  std::stable_sort(objects.sets.begin(), objects.sets.end(), by_key);
  std::stable_sort(objects.segments.begin(), objects.segments.end(), by_key);
  for (size_t i = 0; i < objects.sets.size(); ++i) {
    objects.places[objects.sets[i].id] = i;
  }
  return objects;
}

std::optional<SystemObjects> read_system_objects() {
  return parse_system_objects(look_at("/proc/sysvipc/sem", kLargestText).bytes,
                              look_at("/proc/sysvipc/shm", kLargestText).bytes);
}

SemaphoreState look_at_semaphore(int32_t set) {
  SemaphoreState state;
  state.value = ask_set(set, GETVAL);
  state.is_gone = !state.value.has_value() && (errno == EINVAL || errno == EIDRM);
  if (state.value.has_value()) {
    state.waiters = ask_set(set, GETNCNT);
  }
  return state;
}

std::optional<int> waiters_for_zero(int32_t set) {
  return ask_set(set, GETZCNT);
}
std::optional<int> last_user(int32_t set) {
  return ask_set(set, GETPID);
}

// No signal is sent. Where /proc hides the processes of others this tells all the same.
Life life_of(uint64_t process) {
  if (process == 0 || process > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) {
    return Life::kUnknown;
  }
  if (kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM) {
    return Life::kAlive;
  }
  return errno == ESRCH ? Life::kDead : Life::kUnknown;
}

const Processes::Known& Processes::look_up(int32_t process) {
  const auto [place, is_new] = known_.try_emplace(process);
  if (is_new) {
    // What tells when it started tells that it is there, with fewer calls.
    Known& known = place->second;
    known.started_at = process > 0 ? start_of(process) : std::nullopt;
    known.life = known.started_at.has_value() ? Life::kAlive
                 : process > 0                ? life_of(static_cast<uint64_t>(process))
                                              : Life::kUnknown;
  }
  return place->second;
}

Life Processes::life_at(int32_t process, int64_t moment) {
  const Known& known = look_up(process);
  // The moments are known by the second, and are counted from different ones.
  constexpr int64_t kSlack = 2;
  const bool is_later = known.started_at.has_value() && *known.started_at > moment + kSlack;
  return known.life == Life::kAlive && is_later ? Life::kReused : known.life;
}

}  // namespace kqsup
