#include "ipc_list.h"

#include <sys/stat.h>

#include <set>

#include "ipc_objects.h"
#include "lock_holders.h"
#include "name_registry.h"

namespace kqsup {

namespace {

using nlohmann::ordered_json;

// One row; what a kind of object does not have stays null.
struct Row {
  std::string kind;
  ordered_json name{};
  ordered_json called{};  // by those who use it, as far as that is known
  ordered_json key{};
  ordered_json id{};
  ordered_json state{};
  ordered_json value{};
  ordered_json waiters{};
  ordered_json reset{};
  ordered_json size{};
  ordered_json attached{};
  ordered_json process{};
  ordered_json alive{};
};

template <class Value>
ordered_json or_null(const std::optional<Value>& value) {
  return value.has_value() ? ordered_json(*value) : ordered_json();
}

const char* word_of(LockFile::State state) {
  switch (state) {
    case LockFile::State::kFree:
      return "free";
    case LockFile::State::kHeld:
      return "held";
    case LockFile::State::kShared:
      return "shared";
    case LockFile::State::kUnknown:
      return "unknown";
    case LockFile::State::kGone:
      return "gone";
    case LockFile::State::kNoFile:
      return "no file";
  }
  return "unknown";
}

ordered_json word_of(Life life) {
  return life == Life::kUnknown ? ordered_json() : ordered_json(life == Life::kAlive);
}

class Rows {
 public:
  Rows(const NameRegistry& registry, const SystemObjects& objects)
      : registry_(registry), objects_(objects) {}

  void add_names() {
    for (const NameRegistry::Name& name : registry_.names) {
      add_name(name);
    }
  }

  // Keys of the registry's own range that no name uses so: somebody lost the name, or made the
  // object without the library. Beyond the highest key nothing is known.
  void add_objects_without_name() {
    const auto is_ours = [this](uint32_t key) {
      return key >= NameRegistry::kFirstKey && key <= registry_.highest_key();
    };
    for (const SemaphoreSet& set : objects_.sets) {
      if (is_ours(set.key) && !sets_shown_.contains(set.id)) {
        Row row{.kind = "semaphore set", .key = set.key, .id = set.id, .state = "no name"};
        put_semaphore(set, &row);
        rows.push_back(std::move(row));
      }
    }
    for (const Segment& segment : objects_.segments) {
      if (is_ours(segment.key) && !segments_shown_.contains(segment.id)) {
        Row row{.kind = "segment", .key = segment.key, .state = "no name"};
        put_segment(segment, &row);
        rows.push_back(std::move(row));
      }
    }
  }

  void add_listed_sets() {
    for (const NameRegistry::ListedSet& listed : registry_.listed_sets) {
      Row row{.kind = "private set",
              .id = listed.id,
              .state = "gone",
              .process = listed.maker,
              .alive = word_of(life_of(listed.maker))};
      const SemaphoreSet* const set = objects_.set_of_id(listed.id);
      if (set != nullptr && set->key == 0) {
        row.state = "there";
        put_semaphore(*set, &row);
      }
      rows.push_back(std::move(row));
    }
  }

  void add_lock_files(const std::vector<LockFile>& files) {
    for (const LockFile& file : files) {
      const bool is_mutex = kind_of_name(file.name) == NameKind::kMutex;
      rows.push_back({.kind = is_mutex ? "mutex" : "path lock",
                      .name = file.name,
                      .state = word_of(file.state),
                      .waiters = or_null(file.waiters),
                      .process = or_null(file.holder)});
    }
  }

  std::vector<Row> rows;

 private:
  void add_name(const NameRegistry::Name& name) {
    Row row{.kind = "unknown", .name = name.text, .key = name.key, .state = "gone"};
    const SemaphoreSet* const set = objects_.set_of_key(name.key);
    switch (kind_of_name(name.text)) {
      case NameKind::kSemaphore:
        row.kind = "semaphore";
        add_set(set, &row);
        break;
      case NameKind::kEvent:
        row.kind = "event";
        add_set(set, &row);
        if (set != nullptr && row.state != "gone") {
          row.reset = set->semaphores == 2 ? "manual" : "automatic";
          row.state = row.value.is_null() ? "unknown" : row.value > 0 ? "signalled" : "unsignalled";
        }
        break;
      case NameKind::kSharedMemory:
        row.kind = "shared memory";
        add_memory(set, objects_.segment_of_key(name.key), &row);
        break;
      default:
        // What stands behind it is not without a name.
        if (set != nullptr) {
          sets_shown_.insert(set->id);
        }
        if (const Segment* const segment = objects_.segment_of_key(name.key)) {
          segments_shown_.insert(segment->id);
        }
        break;
    }
    rows.push_back(std::move(row));
  }

  void add_set(const SemaphoreSet* set, Row* row) {
    if (set != nullptr) {
      row->state = "there";
      put_semaphore(*set, row);
    }
  }

  // The set that goes with a segment is at 0 while the process lives that took it last.
  void add_memory(const SemaphoreSet* guard, const Segment* segment, Row* row) {
    Row guard_row{.kind = row->kind};
    if (guard != nullptr) {
      put_semaphore(*guard, &guard_row);
    }
    row->value = guard_row.value;
    row->waiters = guard_row.waiters;
    if (segment != nullptr) {
      put_segment(*segment, row);
      const bool is_held = row->value == 0;
      row->state = is_held || row->alive == true ? "in use"
                   : row->alive == false         ? "abandoned"
                                                 : "unknown";
    }
  }

  void put_semaphore(const SemaphoreSet& set, Row* row) {
    const SemaphoreState state = look_at_semaphore(set.id);
    sets_shown_.insert(set.id);
    row->id = set.id;
    row->value = or_null(state.value);
    row->waiters = or_null(state.waiters);
    if (state.is_gone) {
      row->state = "gone";
    }
  }

  void put_segment(const Segment& segment, Row* row) {
    segments_shown_.insert(segment.id);
    row->id = segment.id;
    row->size = segment.size;
    row->attached = segment.attached;
    row->process = segment.creator > 0 ? ordered_json(segment.creator) : ordered_json();
    row->alive = word_of(processes_.life_at(segment.creator, segment.made_at));
  }

  const NameRegistry& registry_;
  const SystemObjects& objects_;
  Processes processes_;
  std::set<int32_t> sets_shown_;
  std::set<int32_t> segments_shown_;
};

// What objects of a caller's name are called, by what they are registered as.
struct Called {
  std::string kind;  // empty to leave it as it is
  std::string name;
};
using Callers = std::map<std::string, Called>;

// A reader-writer lock is made of a mutex and a semaphore, whose name is what another kind of object
// would be registered as.
Callers callers_of(const std::string& name) {
  const std::string inner = decorated_name(kReaderWriterPrefix, name);
  Callers callers;
  for (const std::string_view prefix :
       {kMutexPrefix, kSemaphorePrefix, kSharedMemoryPrefix, kEventPrefix, kPathLockPrefix}) {
    callers[decorated_name(prefix, name)] = {"", name};
  }
  callers[decorated_name(kMutexPrefix, inner)] = {"rw lock guard", name};
  callers[decorated_name(kSemaphorePrefix, inner)] = {"rw lock gate", name};
  return callers;
}

// The files of the registry itself, which every agent locks.
Callers known_callers(const std::string& directory) {
  Callers callers;
  for (const std::string& path : {registry_path(directory), registry_path(directory) + "Sem"}) {
    callers[decorated_name(kPathLockPrefix, path)] = {"", path};
  }
  return callers;
}

void put_called(const Callers& callers, Row* row) {
  const auto place =
      row->name.is_string() ? callers.find(row->name.get<std::string>()) : callers.end();
  if (place != callers.end()) {
    row->called = place->second.name;
    row->kind = place->second.kind.empty() ? row->kind : place->second.kind;
  }
}

void print(const std::vector<Row>& rows, bool as_json) {
  Listing listing({{"KIND", "kind"},
                   {"NAME", "name"},
                   {"KEY", "key"},
                   {"ID", "id"},
                   {"STATE", "state"},
                   {"VALUE", "value"},
                   {"WAITERS", "waiters"},
                   {"RESET", "reset"},
                   {"SIZE", "size"},
                   {"ATTACHED", "attached"},
                   {"PROCESS", "process"},
                   {"ALIVE", "alive"},
                   {"CALLED", "called"}});
  for (const Row& row : rows) {
    listing.add({row.kind, row.name, row.key, row.id, row.state, row.value, row.waiters, row.reset,
                 row.size, row.attached, row.process, row.alive, row.called});
  }
  listing.print(as_json);
}

}  // namespace

void list_ipc(Run& run, const std::string& name) {
  std::string why;
  const auto directory = find_ipc_directory(&why);
  if (!directory.has_value()) {
    return run.could_not_look(why);
  }
  // The registry first: of what is made meanwhile it then knows nothing, and not the name alone.
  const RegistryFile file = read_name_registry(*directory);
  if (!file.was_read) {
    return run.could_not_look(file.why);
  }
  const auto objects = read_system_objects();
  if (!objects.has_value()) {
    return run.could_not_look("the kernel does not tell its objects in /proc/sysvipc");
  }
  const auto lock_files = read_lock_files(*directory, &why);
  if (!lock_files.has_value()) {
    return run.could_not_look(*directory + ": " + why);
  }
  Rows rows(file.registry, *objects);
  rows.add_names();
  rows.add_objects_without_name();
  rows.add_listed_sets();
  rows.add_lock_files(*lock_files);
  const Callers callers = name.empty() ? known_callers(*directory) : callers_of(name);
  for (Row& row : rows.rows) {
    put_called(callers, &row);
  }
  if (!name.empty()) {
    std::erase_if(rows.rows, [](const Row& row) { return row.called.is_null(); });
  }
  print(rows.rows, run.as_json);
  for (const std::string& damage : file.registry.damage) {
    run.complain(Outcome::kFoundWrong, registry_path(*directory) + ": " + damage);
  }
  if (!name.empty() && rows.rows.empty()) {
    run.complain(Outcome::kFoundWrong, "nothing is called \"" + name + "\"");
  }
}

}  // namespace kqsup
