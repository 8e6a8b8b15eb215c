// Threads, libraries, the environment and copies of files under failing allocations.

#include <dlfcn.h>

#include <cstdlib>
#include <string>

#include "faults/sweep.h"
#include "kqsupt/os.h"
#include "support/scratch.h"
#include "support/system_log.h"

namespace kqsupt::tests {
namespace {

void* do_nothing(void*) {
  return nullptr;
}

struct Thread {
  ~Thread() { SMThreadStop(thread); }
  SMThread* thread = nullptr;
};

// A library that the process has already: the loader is left with little to allocate, and with what
// it says of failures, which it keeps until it has been asked twice.
constexpr char kLibrary[] = KQSUPT_LIB_DIR "/libkqbounded.so.1";

void forget_failures() {
  dlerror();
  dlerror();
}

SMStatus status_of(const void* object) {
  forget_failures();
  return object != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
}

struct Library {
  ~Library() { SMLibUnLoad(library); }
  SMLib* library = nullptr;
};

SMLib* record_of(const char* user) {
  return static_cast<SMLib*>(SMFLibLinkToExportFN(user, kLibrary, nullptr));
}

struct SharedLibrary {
  ~SharedLibrary() { SMFLibUnLoad("user", kLibrary); }
  void* function = nullptr;
};

// Of which a first user has linked nothing.
struct UsedLibrary : SharedLibrary {
  UsedLibrary() { library = record_of("first"); }
  ~UsedLibrary() { SMFLibUnLoad("first", kLibrary); }
  SMLib* library;
};

SMStatus link_function(SharedLibrary& state) {
  state.function = SMFLibLinkToExportFN("user", kLibrary, "getenv_s");
  return status_of(state.function);
}

struct Value {
  ~Value() { SMFreeMem(value); }
  char* value = nullptr;
  uint32_t size = 7;
};

struct Files {
  Files() {
    put(source, "new");
    put(destination, "old");
  }
  const Scratch scratch;
  const std::string source = scratch.file("source");
  const std::string destination = scratch.file("destination");
};

template <SMStatus (*kFunction)(const char*, const char*, uint32_t)>
Row file_row(const std::string& name) {
  return row<Files>(
      name, {{SM_STATUS_NO_MEMORY, 0}},
      [](Files& files) { return kFunction(files.source.c_str(), files.destination.c_str(), 1); },
      [](Files& files) { return content_of(files.destination) == "old"; });
}

// A line so long that the C library too allocates.
struct LoggedEvent {
  const SystemLog log;
  const std::string message = std::string(1500, 'm');
  SMStatus status = 0;
};

constexpr SMStatus kNothingLogged = 0xFFFFFFFF;

SMStatus log_event(LoggedEvent& event) {
  event.status = SMAppendToOSSysLog(1, 1, 1404, "agent", event.message.c_str(), nullptr, 0);
  return event.status;
}

}  // namespace

std::vector<Row> os_rows() {
  // The C library keeps what it knows of the time zone.
  SMAppendToOSSysLog(1, 1, 1404, "agent", "text", nullptr, 0);
  // The C library keeps what it allocates for the first thread, and uses it for the next one.
  SMThreadStop(SMThreadStart(do_nothing, nullptr));
  // The loader keeps the further name of a library that was loaded by another one.
  SMLibUnLoad(SMLibLoad(kLibrary));
  return {
      row<Thread>(
          "SMThreadStart", {{SM_STATUS_NO_MEMORY, 0}},
          [](Thread& state) {
            state.thread = SMThreadStart(do_nothing, nullptr);
            return SMStatus{state.thread != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY};
          },
          [](Thread& state) { return state.thread == nullptr; }),
      row<Library>(
          "SMLibLoad", {{SM_STATUS_NO_MEMORY, 0}},
          [](Library& state) {
            state.library = SMLibLoad(kLibrary);
            return status_of(state.library);
          },
          [](Library& state) { return state.library == nullptr; }),
      row<SharedLibrary>("SMFLibLinkToExportFN", {{SM_STATUS_NO_MEMORY, 0}}, link_function,
                         [](SharedLibrary& state) { return state.function == nullptr; }),
      row<UsedLibrary>(
          "SMFLibLinkToExportFNOfUsedLibrary", {{SM_STATUS_NO_MEMORY, 0}},
          [](UsedLibrary& state) { return link_function(state); },
          [](UsedLibrary& state) {
            return state.function == nullptr && record_of("first") == state.library;
          }),
      row<Value>(
          "SMEnvDup", {{SM_STATUS_NO_MEMORY, 0}},
          [](Value& state) {
            state.value = SMEnvDup("TMPDIR", &state.size);
            return SMStatus{state.value != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY};
          },
          [](Value& state) { return state.value == nullptr && state.size == 7; }),
      // When the C library has no room for the line, which it does not tell, it logs part of it.
      row<LoggedEvent>("SMAppendToOSSysLog", {{kNothingLogged, 0}, {SM_STATUS_SUCCESS, 0}},
                       log_event,
                       [](LoggedEvent& event) {
                         return event.log.line().empty() == (event.status == kNothingLogged);
                       }),
      file_row<SMFileCopy>("SMFileCopy"),
      file_row<SMFileCopyAndSync>("SMFileCopyAndSync"),
      file_row<SMFileAppend>("SMFileAppend"),
      file_row<SMFileAppendAndSync>("SMFileAppendAndSync"),
  };
}

}  // namespace kqsupt::tests
