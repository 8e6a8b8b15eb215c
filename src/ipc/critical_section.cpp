// The table of the routines that run now, each with the mutex under which it runs.

#include "ipc/critical_section.h"

#include <new>

#include "containers/red_black_tree.h"
#include "ipc/local_mutex.h"
#include "ipc/poll.h"

namespace kqsupt::ipc {
namespace {

struct Section {
  uintptr_t routine;
  int32_t users;  // threads that run the routine or wait to run it
  LocalMutex mutex;
};

struct Table {
  bool started = false;
  containers::Node* sections = nullptr;
};
constinit LocalMutex table_mutex;
constinit Table table;

uintptr_t address_of_routine(SMCriticalSectionRoutine routine) {
  return reinterpret_cast<uintptr_t>(routine);
}

// The address as far as it goes in, and not 0.
SMStatus status_of_address(uintptr_t address) {
  const auto low = static_cast<SMStatus>(address);
  return low != 0 ? low : SMStatus{1};
}

// By the whole address: two routines of a large process may lie 4 GiB apart.
containers::Place locate_section(uintptr_t routine) {
  return containers::locate(table.sections, [routine](void* data) {
    const uintptr_t other = static_cast<Section*>(data)->routine;
    return static_cast<int32_t>(routine > other) - static_cast<int32_t>(routine < other);
  });
}

Section* add_section(uintptr_t routine, const containers::Place& place) {
  void* const block = frame::allocate(sizeof(Section));
  if (block == nullptr) {
    return nullptr;
  }
  auto* const section = new (block) Section{routine, 0, {}};
  if (!containers::insert_at(&table.sections, place, section)) {
    frame::release(section);
    return nullptr;
  }
  return section;
}

// Null before the start, after the stop, and when memory is short.
Section* enter(uintptr_t routine) {
  const LocalMutexGuard guard(table_mutex);
  if (!table.started) {
    return nullptr;
  }
  const containers::Place place = locate_section(routine);
  Section* const section = place.match != nullptr ? static_cast<Section*>(place.match->data)
                                                  : add_section(routine, place);
  if (section != nullptr) {
    ++section->users;
  }
  return section;
}

void leave(Section* section) {
  const LocalMutexGuard guard(table_mutex);
  if (--section->users == 0) {
    containers::erase(&table.sections, locate_section(section->routine).match);
    frame::release(section);
  }
}

}  // namespace

bool start_critical_sections() {
  if (!hold_over_forks(table_mutex)) {
    return false;
  }
  const LocalMutexGuard guard(table_mutex);
  table.started = true;
  return true;
}

// Each section in the table has threads in it, the last of which takes it out.
void stop_critical_sections() {
  const LocalMutexGuard guard(table_mutex);
  table.started = false;
}

SMStatus execute_critical_section(SMCriticalSectionRoutine routine, void* argument,
                                  int32_t timeout_ms) {
  if (routine == nullptr) {
    return SM_STATUS_SUCCESS;
  }
  if (timeout_ms != kForever) {
    return status_of_address(address_of_routine(routine));
  }
  Section* const section = enter(address_of_routine(routine));
  if (section == nullptr) {
    return SM_STATUS_SUCCESS;
  }
  {
    const LocalMutexGuard guard(section->mutex);
    (void)routine(argument);
  }
  leave(section);
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::ipc
