// The exported functions on services of the operating system.

#include "kqsupt/os.h"

#include "os/threads.h"

using namespace kqsupt;

extern "C" {

SMThread* SMThreadStart(SMThreadRoutine routine, void* argument) {
  return os::start_thread(routine, argument);
}
SMStatus SMThreadStartAndRelease(SMThreadRoutine routine, void* argument) {
  return os::start_detached_thread(routine, argument);
}
SMStatus SMThreadStop(SMThread* thread) {
  return os::stop_thread(thread);
}
SMStatus SMThreadKill(SMThread* thread) {
  return os::kill_thread(thread);
}
int32_t SMThreadYield() {
  return os::yield_thread();
}
uint32_t SMThreadGetID() {
  return os::thread_id();
}
SMStatus SMThreadSetName(const char* name) {
  return os::set_thread_name(name);
}

}  // extern "C"
