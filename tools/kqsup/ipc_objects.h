// The System V objects of this host, and the processes that made them. Looking changes none of
// their times.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

namespace kqsup {

struct SemaphoreSet {
  int32_t id;
  uint32_t key;  // 0 for none
  uint32_t semaphores;
};

struct Segment {
  int32_t id;
  uint32_t key;
  uint64_t size;
  uint64_t attached;
  int32_t creator;  // a process; 0 when it is not one of this process's sight
  int64_t made_at;  // in seconds of the clock
};

struct SystemObjects {
  std::vector<SemaphoreSet> sets;  // these and the segments in the order of their keys
  std::vector<Segment> segments;
  std::map<int32_t, size_t> places;  // of the sets, by their identifiers

  // Null when there is none. Nothing else has one key twice.
  [[nodiscard]] const SemaphoreSet* set_of_key(uint32_t key) const;
  [[nodiscard]] const Segment* segment_of_key(uint32_t key) const;
  [[nodiscard]] const SemaphoreSet* set_of_id(int32_t id) const;
};

// All of them, in few calls; none when the kernel does not tell.
[[nodiscard]] std::optional<SystemObjects> read_system_objects();
[[nodiscard]] std::optional<SystemObjects> parse_system_objects(std::string_view sets,
                                                                std::string_view segments);

// What cannot be told, because the set has gone meanwhile or is not to be read by this user, is none.
struct SemaphoreState {
  std::optional<int> value;
  std::optional<int> waiters;
  bool is_gone = false;
};
[[nodiscard]] SemaphoreState look_at_semaphore(int32_t set);

// Who wait for the semaphore to be 0, which nobody of the library does, and who last changed it.
[[nodiscard]] std::optional<int> waiters_for_zero(int32_t set);
[[nodiscard]] std::optional<int> last_user(int32_t set);

enum class Life {
  kAlive,
  kDead,     // there is no process of that number
  kReused,   // there is one, which started after the moment in question
  kUnknown,  // it is none that can be seen from here
};

// Whether processes live. Each number is looked up once.
class Processes {
 public:
  // Of the process that had the number at `moment`, in seconds of the clock.
  [[nodiscard]] Life life_at(int32_t process, int64_t moment);

 private:
  struct Known {
    Life life;
    std::optional<int64_t> started_at;
  };
  const Known& look_up(int32_t process);

  std::map<int32_t, Known> known_;
};

// Whether there is a process of that number at all.
[[nodiscard]] Life life_of(uint64_t process);

}  // namespace kqsup
