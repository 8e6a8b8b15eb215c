// The exported functions on services of the operating system.

#include "kqsupt/os.h"

#include "os/clock.h"
#include "os/environment.h"
#include "os/file_copy.h"
#include "os/host.h"
#include "os/library.h"
#include "os/shared_libraries.h"
#include "os/system_log.h"
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

uint64_t SMRefTicksGet() {
  return os::ticks_now();
}
void SMRefTicksDiffCheckTimer(uint64_t startTicks, uint64_t currentTicks, uint64_t limitMs,
                              uint64_t* elapsedMs, uint16_t* firstFlag, uint16_t* secondFlag) {
  os::check_elapsed(startTicks, currentTicks, limitMs, elapsedMs, firstFlag, secondFlag);
}

uint32_t SMOSTypeGet() {
  return os::host_type();
}
SMStatus SMOSShutdown() {
  return SM_STATUS_SUCCESS;
}
int32_t SMkbhit() {
  return os::has_input();
}
SMStatus SMLongFileNamesEnable() {
  return SM_STATUS_SUCCESS;
}
SMStatus SMLongFileNamesDisable() {
  return SM_STATUS_SUCCESS;
}
void SMGetExportContext(uint32_t* context) {
  os::get_export_context(context);
}
void SMSetExportContext(uint32_t) {}
void SMResetExportContext() {}

SMStatus SMAppendToOSSysLog(uint32_t eventType, uint32_t logSource, uint32_t eventID,
                            const char* identity, const char* message, const void*, uint32_t) {
  return os::append_to_system_log({eventType, logSource, eventID, identity, message});
}

SMLib* SMLibLoad(const char* path) {
  return os::load_library(path);
}
SMStatus SMLibUnLoad(SMLib* library) {
  return os::unload_library(library);
}
void* SMLibLinkToExportFN(SMLib* library, const char* function) {
  return os::library_function(library, function);
}
SMStatus SMLibUnLinkFromExportFN(SMLib* library, void* address) {
  return os::unlink_library_function(library, address);
}
void* SMFLibLinkToExportFN(const char* user, const char* path, const char* function) {
  return os::link_shared_function(user, path, function);
}
SMStatus SMFLibUnLoad(const char* user, const char* path) {
  return os::unload_shared_library(user, path);
}

char* SMEnvDup(const char* name, uint32_t* size) {
  return os::copy_of_variable(name, size);
}

SMStatus SMFileCopy(const char* source, const char* destination, uint32_t overwrite) {
  return os::copy_file(source, destination, overwrite, os::Sync::kNo);
}
SMStatus SMFileCopyAndSync(const char* source, const char* destination, uint32_t overwrite) {
  return os::copy_file(source, destination, overwrite, os::Sync::kYes);
}
SMStatus SMFileAppend(const char* source, const char* destination, uint32_t create) {
  return os::append_file(source, destination, create, os::Sync::kNo);
}
SMStatus SMFileAppendAndSync(const char* source, const char* destination, uint32_t create) {
  return os::append_file(source, destination, create, os::Sync::kYes);
}

}  // extern "C"
