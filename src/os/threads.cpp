// Threads of the system, on stacks of one size.

#include "os/threads.h"

#include <pthread.h>
#include <sched.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <utility>

#include "frame/heap.h"
#include "frame/status.h"

struct SMThread {
  SMThreadRoutine routine;
  void* argument;
  pthread_t thread;
  kqsupt::frame::HeapPtr<uint32_t[]> reserved;  // a 0 of its own block, which nothing looks at
};

namespace kqsupt::os {
namespace {

constexpr size_t kStackSize = 0x20000;

// What a thread is created with; destroyed with the scope.
class Attributes {
 public:
  Attributes() : usable_(pthread_attr_init(&attributes_) == 0) {}
  ~Attributes() {
    if (usable_) {
      pthread_attr_destroy(&attributes_);
    }
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;

  bool set_stack_size() {
    return usable_ && pthread_attr_setstacksize(&attributes_, kStackSize) == 0;
  }
  bool set_detached() {
    return usable_ && pthread_attr_setdetachstate(&attributes_, PTHREAD_CREATE_DETACHED) == 0;
  }
  // Null, the system's defaults, where there are none.
  [[nodiscard]] const pthread_attr_t* get() const { return usable_ ? &attributes_ : nullptr; }

 private:
  pthread_attr_t attributes_;
  bool usable_;
};

struct ThreadFree {
  void operator()(SMThread* thread) const {
    thread->reserved.reset();
    frame::release(thread);
  }
};
using ThreadPtr = std::unique_ptr<SMThread, ThreadFree>;

ThreadPtr make_thread(SMThreadRoutine routine, void* argument) {
  ThreadPtr thread(static_cast<SMThread*>(std::calloc(1, sizeof(SMThread))));
  if (thread == nullptr) {
    return nullptr;
  }
  thread->routine = routine;
  thread->argument = argument;
  thread->reserved = frame::heap_array<uint32_t>(1);
  return thread->reserved != nullptr ? std::move(thread) : nullptr;
}

void* run_routine(void* record) {
  const auto* thread = static_cast<const SMThread*>(record);
  (void)thread->routine(thread->argument);
  return nullptr;
}

}  // namespace

SMThread* start_thread(SMThreadRoutine routine, void* argument) {
  if (routine == nullptr) {
    return nullptr;
  }
  ThreadPtr thread = make_thread(routine, argument);
  if (thread == nullptr) {
    return nullptr;
  }
  Attributes attributes;
  (void)attributes.set_stack_size();
  const bool created =
      pthread_create(&thread->thread, attributes.get(), run_routine, thread.get()) == 0;
  return created ? thread.release() : nullptr;
}

SMStatus start_detached_thread(SMThreadRoutine routine, void* argument) {
  if (routine == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  Attributes attributes;
  pthread_t thread;
  const bool created = attributes.set_detached() && attributes.set_stack_size() &&
                       pthread_create(&thread, attributes.get(), routine, argument) == 0;
  return created ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
}

SMStatus stop_thread(SMThread* thread) {
  if (thread == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const ThreadPtr taken(thread);
  (void)pthread_join(taken->thread, nullptr);
  return SM_STATUS_SUCCESS;
}

// Callers know that the signal ends the whole process, unless the thread has ended already.
SMStatus kill_thread(SMThread* thread) {
  if (thread == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const ThreadPtr taken(thread);
  (void)pthread_kill(taken->thread, SIGKILL);
  return SM_STATUS_SUCCESS;
}

int32_t yield_thread() {
  return sched_yield();
}

// The identifier of POSIX threads where it has 32 bits. Cut off to 32 bits it could be that of two
// threads that live at the same time, so that elsewhere the kernel's identifier stands for it.
uint32_t thread_id() {
  if constexpr (sizeof(pthread_t) == sizeof(uint32_t)) {
    return static_cast<uint32_t>(pthread_self());
  } else {
    return static_cast<uint32_t>(gettid());
  }
}

SMStatus set_thread_name(const char* name) {
  if (name == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return prctl(PR_SET_NAME, name) == 0 ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
}

}  // namespace kqsupt::os
