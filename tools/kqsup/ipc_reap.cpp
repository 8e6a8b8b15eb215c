#include "ipc_reap.h"

#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "ipc_list.h"
#include "ipc_objects.h"
#include "listing.h"
#include "name_registry.h"

namespace kqsup {

namespace {

using nlohmann::ordered_json;

struct Abandoned {
  enum class Kind { kSegment, kPrivateSet };
  Kind kind;
  int32_t id;
  std::string name;  // of a segment
  uint32_t key;
  uint64_t size;
  uint64_t maker;
};

// ---- What is nobody's ----

// A segment whose creator is dead, to which nobody is attached, and whose guard is free: the kernel
// gives the guard back when the process dies that took it, the creator or one that took over from
// it. Without a guard nothing proves that the segment was made by the library: another program may
// use the key.
bool is_abandoned(const Segment& segment, const SystemObjects& objects) {
  const SemaphoreSet* const guard = objects.set_of_key(segment.key);
  if (segment.attached != 0 || guard == nullptr || guard->semaphores != 1) {
    return false;
  }
  Processes processes;
  const Life life = processes.life_at(segment.creator, segment.made_at);
  const SemaphoreState state = look_at_semaphore(guard->id);
  return (life == Life::kDead || life == Life::kReused) && state.value.value_or(0) > 0 &&
         state.waiters == 0 && waiters_for_zero(guard->id) == 0;
}

// A set without a key that is listed with a maker that is dead, as the library sweeps it when it
// starts. Numbers of sets are given again, so it is also asked that nobody but the maker has used the
// set, and that nobody waits for it.
bool is_abandoned(const NameRegistry::ListedSet& listed, const SystemObjects& objects) {
  const SemaphoreSet* const set = objects.set_of_id(listed.id);
  if (listed.id == 0 || set == nullptr || set->key != 0 || life_of(listed.maker) != Life::kDead) {
    return false;
  }
  const SemaphoreState state = look_at_semaphore(set->id);
  const std::optional<int> user = last_user(set->id);
  return state.waiters == 0 && waiters_for_zero(set->id) == 0 && user.has_value() &&
         static_cast<uint64_t>(*user) == listed.maker;
}

std::vector<Abandoned> find_abandoned(const NameRegistry& registry, const SystemObjects& objects) {
  std::vector<Abandoned> found;
  for (const NameRegistry::Name& name : registry.names) {
    const bool is_ours = kind_of_name(name.text) == NameKind::kSharedMemory &&
                         name.key >= NameRegistry::kFirstKey && name.is_found_both_ways;
    const Segment* const segment = is_ours ? objects.segment_of_key(name.key) : nullptr;
    if (segment != nullptr && is_abandoned(*segment, objects)) {
      found.push_back({Abandoned::Kind::kSegment, segment->id, name.text, name.key, segment->size,
                       static_cast<uint64_t>(segment->creator)});
    }
  }
  for (const NameRegistry::ListedSet& listed : registry.listed_sets) {
    if (is_abandoned(listed, objects)) {
      found.push_back({Abandoned::Kind::kPrivateSet, listed.id, {}, 0, 0, listed.maker});
    }
  }
  return found;
}

// Looks at one again, as everything is now.
bool is_still_abandoned(const Abandoned& object) {
  const auto objects = read_system_objects();
  if (!objects.has_value()) {
    return false;
  }
  if (object.kind == Abandoned::Kind::kPrivateSet) {
    return is_abandoned(NameRegistry::ListedSet{object.id, object.maker}, *objects);
  }
  const Segment* const segment = objects->segment_of_key(object.key);
  return segment != nullptr && segment->id == object.id &&
         static_cast<uint64_t>(segment->creator) == object.maker &&
         is_abandoned(*segment, *objects);
}

// ---- Taking it away ----

// What became of it, in a few words. Only what could not be done is something wrong.
std::string take_away(const Abandoned& object, Run& run) {
  if (!is_still_abandoned(object)) {
    return "no longer nobody's";
  }
  const int answer = object.kind == Abandoned::Kind::kSegment ? shmctl(object.id, IPC_RMID, nullptr)
                                                              : semctl(object.id, 0, IPC_RMID);
  if (answer == 0) {
    return "removed";
  }
  if (errno == EINVAL || errno == EIDRM) {
    return "gone";
  }
  run.tell(Outcome::kFoundWrong);
  return std::string("not removed: ") + std::strerror(errno);
}

}  // namespace

void reap_ipc(Run& run, bool do_it) {
  std::string why;
  const auto directory = find_ipc_directory(&why);
  if (!directory.has_value()) {
    return run.could_not_look(why);
  }
  const RegistryFile file = read_name_registry(*directory);
  const auto objects = read_system_objects();
  if (!file.was_read || !objects.has_value()) {
    return run.could_not_look(
        !file.was_read ? file.why : "the kernel does not tell its objects in /proc/sysvipc");
  }
  if (access(directory->c_str(), F_OK) != 0) {
    return run.could_not_look(*directory + ": " + std::strerror(errno));
  }
  // What a damaged registry says proves nothing, nor does one whose change may yet be taken back.
  if (!file.registry.damage.empty()) {
    return run.could_not_look(registry_path(*directory) +
                              " is damaged: " + file.registry.damage.front());
  }
  if (access(registry_backup_path(*directory).c_str(), F_OK) == 0) {
    return run.could_not_look(
        "a change of the registry goes on, or was interrupted: try again; the next agent to "
        "use it mends it");
  }
  const std::vector<Abandoned> found = find_abandoned(file.registry, *objects);
  if (do_it) {
    // What goes is told before it goes, whatever becomes of this program or of its output.
    for (const Abandoned& object : found) {
      const bool is_segment = object.kind == Abandoned::Kind::kSegment;
      std::fprintf(stderr, "kqsup: removing %s %d, made by %llu%s%s\n",
                   is_segment ? "segment" : "private set", object.id,
                   static_cast<unsigned long long>(object.maker), is_segment ? ": " : "",
                   object.name.c_str());
    }
  }
  Listing listing({{"KIND", "kind"},
                   {"NAME", "name"},
                   {"KEY", "key"},
                   {"ID", "id"},
                   {"SIZE", "size"},
                   {"MADE BY", "made_by"},
                   {"RESULT", "result"}});
  for (const Abandoned& object : found) {
    const bool is_segment = object.kind == Abandoned::Kind::kSegment;
    listing.add({is_segment ? "segment" : "private set",
                 is_segment ? ordered_json(object.name) : ordered_json(),
                 is_segment ? ordered_json(object.key) : ordered_json(), object.id,
                 is_segment ? ordered_json(object.size) : ordered_json(), object.maker,
                 do_it ? take_away(object, run) : "would be removed"});
  }
  listing.print(run.as_json);
  if (!do_it && !found.empty()) {
    run.tell(Outcome::kFoundWrong);
  }
}

}  // namespace kqsup
