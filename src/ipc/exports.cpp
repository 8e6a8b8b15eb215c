// The exported functions on objects that threads and processes wait for.

#include "kqsupt/ipc.h"

#include "ipc/critical_section.h"
#include "ipc/event.h"
#include "ipc/mutex.h"
#include "ipc/permission.h"
#include "ipc/rw_lock.h"
#include "ipc/semaphore.h"
#include "ipc/shared_memory.h"

using namespace kqsupt;

extern "C" {

SMMutex* SMMutexCreate(const char* name) {
  return ipc::create_mutex(name, ipc::default_permission(name));
}
SMMutex* SMMutexCreate_s(const char* name, int32_t permission) {
  return ipc::create_mutex(name, permission);
}
SMMutex* SMMutexOpen(const char* name) {
  return ipc::open_mutex(name);
}
SMStatus SMMutexLock(SMMutex* mutex, int32_t timeout) {
  return ipc::lock_mutex(mutex, timeout);
}
SMStatus SMMutexUnLock(SMMutex* mutex) {
  return ipc::unlock_mutex(mutex);
}
void SMMutexDestroy(SMMutex* mutex) {
  ipc::destroy_mutex(mutex);
}

SMSemaphore* SMSemaphoreCreate(const char* name, uint32_t initialCount) {
  return ipc::create_semaphore(name, initialCount, ipc::default_permission(name));
}
SMSemaphore* SMSemaphoreCreate_s(const char* name, uint32_t initialCount, int32_t permission) {
  return ipc::create_semaphore(name, initialCount, permission);
}
SMSemaphore* SMSemaphoreOpen(const char* name) {
  return ipc::open_semaphore(name);
}
SMStatus SMSemaphoreAcquireWait(SMSemaphore* semaphore, int32_t timeout) {
  return ipc::acquire_semaphore(semaphore, timeout);
}
SMStatus SMSemaphoreRelease(SMSemaphore* semaphore, int32_t count, uint32_t* previous) {
  return ipc::release_semaphore(semaphore, count, previous);
}
void SMSemaphoreDestroy(SMSemaphore* semaphore) {
  ipc::destroy_semaphore(semaphore);
}

SMEvent* SMEventCreate(const char* name, int32_t manualReset, uint32_t initiallySignalled) {
  return ipc::create_event(name, manualReset, initiallySignalled, ipc::default_permission(name));
}
SMEvent* SMEventCreate_s(const char* name, int32_t manualReset, uint32_t initiallySignalled,
                         int32_t permission) {
  return ipc::create_event(name, manualReset, initiallySignalled, permission);
}
SMEvent* SMEventOpen(const char* name) {
  return ipc::open_event(name);
}
SMStatus SMEventWait(SMEvent* event, int32_t timeout) {
  return ipc::wait_for_event(event, timeout);
}
SMStatus SMEventSet(SMEvent* event) {
  return ipc::set_event(event);
}
SMStatus SMEventReset(SMEvent* event) {
  return ipc::reset_event(event);
}
SMStatus SMEventPulse(SMEvent* event) {
  return ipc::pulse_event(event);
}
void SMEventDestroy(SMEvent* event) {
  ipc::destroy_event(event);
}

SMSharedMem* SMSharedMemCreate(const char* name, uint32_t size) {
  return ipc::create_shared_memory(name, size, ipc::default_permission(name));
}
SMSharedMem* SMSharedMemCreate_s(const char* name, uint32_t size, int32_t permission) {
  return ipc::create_shared_memory(name, size, permission);
}
SMSharedMem* SMSharedMemOpen(const char* name) {
  return ipc::open_shared_memory(name);
}
void* SMSharedMemGetAddressPtr(const SMSharedMem* memory) {
  return ipc::address_of(memory);
}
void SMSharedMemFree(SMSharedMem* memory) {
  ipc::free_shared_memory(memory);
}

SMRWLock* SMRWLCreate(const char* name) {
  return ipc::create_rw_lock(name);
}
void SMRWLDestroy(SMRWLock* lock) {
  ipc::destroy_rw_lock(lock);
}
SMStatus SMRWLReadLockGet(SMRWLock* lock, int32_t timeout) {
  return ipc::get_read_lock(lock, timeout);
}
void SMRWLReadLockRelease(SMRWLock* lock) {
  ipc::release_read_lock(lock);
}
SMStatus SMRWLWriteLockGet(SMRWLock* lock, int32_t timeout) {
  return ipc::get_write_lock(lock, timeout);
}
void SMRWLWriteLockRelease(SMRWLock* lock) {
  ipc::release_write_lock(lock);
}

SMStatus SMCriticalSectionExecute(SMCriticalSectionRoutine routine, void* argument,
                                  int32_t timeout) {
  return ipc::execute_critical_section(routine, argument, timeout);
}

}  // extern "C"
