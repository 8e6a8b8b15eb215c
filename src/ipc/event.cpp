// Events, and their two ways to be reset.

#include "ipc/event.h"

#include <sched.h>

#include "ipc/permission.h"

namespace kqsupt::ipc {
namespace {

// How those who open an event by its name learn how it is reset: by the number of semaphores, of
// which the second serves no other purpose.
constexpr int32_t kManualSemaphores = 2;
constexpr int32_t kAutomaticSemaphores = 1;

// Lets waiters through. Those of a manual event put back what they take: one that still shows a
// signal has no waiter left.
void let_through(SMEvent& event) {
  do {
    event.count.post();
    sched_yield();
  } while (event.is_manual && event.count.value() == 0);
}

}  // namespace

SMEvent* create_event(const char* name, int32_t manual, uint32_t signalled, int32_t permission) {
  ObjectPtr<SMEvent> event = make_object<SMEvent>(name);
  const bool is_manual = manual == 1;
  if (event == nullptr ||
      !event->count.create(event->header.name, is_manual ? kManualSemaphores : kAutomaticSemaphores,
                           signalled == 1 ? 1 : 0, mode_of_permission(permission))) {
    return nullptr;
  }
  event->is_manual = is_manual;
  event->is_creator = true;
  return event.release();
}

SMEvent* open_event(const char* name) {
  if (name == nullptr) {
    return nullptr;
  }
  ObjectPtr<SMEvent> event = make_object<SMEvent>(name);
  if (event == nullptr || !event->count.open(event->header.name)) {
    return nullptr;
  }
  event->is_manual = event->count.semaphores() == kManualSemaphores;
  return event.release();
}

// A manual event stays signalled for the other waiters; an automatic one loses what it was
// signalled beyond the one waiter that passes.
SMStatus wait_for_event(SMEvent* event, int32_t timeout_ms) {
  SMStatus status = check_object(event);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  status = event->count.take(timeout_ms);
  if (status == SM_STATUS_SUCCESS) {
    if (event->is_manual) {
      event->count.post();
    } else {
      event->count.reset();
    }
  }
  return status;
}

SMStatus set_event(SMEvent* event) {
  const SMStatus status = check_object(event);
  return status == SM_STATUS_SUCCESS ? event->count.post() : status;
}

SMStatus reset_event(SMEvent* event) {
  const SMStatus status = check_object(event);
  return status == SM_STATUS_SUCCESS ? event->count.reset() : status;
}

SMStatus pulse_event(SMEvent* event) {
  if (const SMStatus status = check_object(event); status != SM_STATUS_SUCCESS) {
    return status;
  }
  if (event->count.value() == 0) {
    let_through(*event);
  }
  event->count.reset();
  return SM_STATUS_SUCCESS;
}

void destroy_event(SMEvent* event) {
  const ObjectPtr<SMEvent> taken = take_object(event);
  if (taken != nullptr && taken->is_creator) {
    taken->count.remove();
  }
}

}  // namespace kqsupt::ipc
