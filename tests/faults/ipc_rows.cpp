// Locks and named objects under failing allocations.

#include "kqsupt/ipc.h"

#include <sys/sem.h>
#include <sys/shm.h>

#include <filesystem>

#include "faults/open_descriptors.h"
#include "faults/sweep.h"
#include "ipc/named.h"

namespace kqsupt::tests {
namespace {

const Failures kNoMemory = {{SM_STATUS_NO_MEMORY, 0}};

SMStatus done(bool is_done) {
  return is_done ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
}

struct Lock {
  ~Lock() { SMRWLDestroy(lock); }
  SMRWLock* lock = nullptr;
};

// Nor are there semaphores of that name, which nobody would take away.
bool has_no_lock(const Lock& state) {
  const uint32_t key = registered_key(decorated("kqsupsmp", decorated("kqsuprwl", "row")));
  return state.lock == nullptr && (key == 0 || semget(static_cast<key_t>(key), 0, 0) < 0);
}

struct Section {
  bool ran = false;
};

void* run(void* section) {
  static_cast<Section*>(section)->ran = true;
  return nullptr;
}

std::vector<Row> lock_rows() {
  return {
      row<Lock>(
          "SMRWLCreate", kNoMemory,
          [](Lock& state) { return done((state.lock = SMRWLCreate(nullptr)) != nullptr); },
          [](Lock& state) { return state.lock == nullptr; }),
      row<Lock>(
          "SMRWLCreate_named", kNoMemory,
          [](Lock& state) { return done((state.lock = SMRWLCreate("row")) != nullptr); },
          [](Lock& state) { return has_no_lock(state); }),
      // The call itself answers 0 whether or not the routine has run.
      row<Section>(
          "SMCriticalSectionExecute", kNoMemory,
          [](Section& state) {
            const SMStatus status = SMCriticalSectionExecute(run, &state, -1);
            return status == SM_STATUS_SUCCESS ? done(state.ran) : status;
          },
          [](Section& state) { return !state.ran; }),
  };
}

// ---- Objects ----

void release(SMMutex* mutex) {
  SMMutexDestroy(mutex);
}
void release(SMSemaphore* semaphore) {
  SMSemaphoreDestroy(semaphore);
}
void release(SMEvent* event) {
  SMEventDestroy(event);
}
void release(SMSharedMem* memory) {
  SMSharedMemFree(memory);
}

// The handle that a call makes.
template <class Object>
struct Handle {
  Handle() { descriptors = open_descriptors(); }
  ~Handle() { release(object); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  [[nodiscard]] bool unchanged() const {
    return object == nullptr && open_descriptors() == descriptors;
  }
  SMStatus made(Object* new_object) {
    object = new_object;
    return done(object != nullptr);
  }
  Object* object = nullptr;
  int descriptors;
};

// The same beside an object that is there to be opened. Who created that goes last.
template <class Object, Object* (*kCreate)()>
struct Opened : Handle<Object> {
  Opened() : existing(kCreate()) { this->descriptors = open_descriptors(); }
  ~Opened() {
    release(this->object);
    this->object = nullptr;
    release(existing);
  }
  Object* existing;
};

SMMutex* a_mutex() {
  return SMMutexCreate("row");
}
SMSemaphore* a_semaphore() {
  return SMSemaphoreCreate("row", 1);
}
SMEvent* an_event() {
  return SMEventCreate("row", 1, 1);
}
SMSharedMem* a_segment() {
  return SMSharedMemCreate("row", 64);
}

using Mutex = Handle<SMMutex>;
using OpenedMutex = Opened<SMMutex, a_mutex>;
using Semaphore = Handle<SMSemaphore>;
using OpenedSemaphore = Opened<SMSemaphore, a_semaphore>;
using Event = Handle<SMEvent>;
using OpenedEvent = Opened<SMEvent, an_event>;
using Memory = Handle<SMSharedMem>;
using OpenedMemory = Opened<SMSharedMem, a_segment>;

template <class State>
Row handle_row(const std::string& name, SMStatus (*call)(State&)) {
  return row<State>(name, kNoMemory, call, [](State& state) { return state.unchanged(); });
}

// A registry without a name in it, so that the first name gets the first key.
struct EmptyRegistry {
  EmptyRegistry() {
    std::filesystem::remove(registry());
    descriptors = open_descriptors();
  }
  // No object has stayed, and no key was given that is not the first.
  [[nodiscard]] bool unchanged() const {
    constexpr key_t kFirstKey = 300001;
    for (const char* prefix : {"kqsupsmp", "kqsupevt", "kqsupshm"}) {
      const uint32_t key = registered_key(decorated(prefix, "new"));
      if (key != 0 && key != kFirstKey) {
        return false;
      }
    }
    return semget(kFirstKey, 0, 0) < 0 && shmget(kFirstKey, 0, 0) < 0 &&
           open_descriptors() == descriptors;
  }
  int descriptors;
};

// A name whose key could not be noted as taken serves as well: the answer may be success.
Row new_name_row(const std::string& name, SMStatus (*call)(EmptyRegistry&)) {
  return row<EmptyRegistry>(name, {{SM_STATUS_NO_MEMORY, 0}, {SM_STATUS_SUCCESS, 0}}, call,
                            [](EmptyRegistry& state) { return state.unchanged(); });
}

template <class Object>
SMStatus made_and_released(Object* object) {
  release(object);
  return done(object != nullptr);
}

std::vector<Row> object_rows() {
  return {
      handle_row<Mutex>("SMMutexCreate",
                        [](Mutex& state) { return state.made(SMMutexCreate(nullptr)); }),
      handle_row<Mutex>("SMMutexCreate_named",
                        [](Mutex& state) { return state.made(SMMutexCreate("row")); }),
      handle_row<Mutex>("SMMutexCreate_s",
                        [](Mutex& state) { return state.made(SMMutexCreate_s("row", 0)); }),
      handle_row<OpenedMutex>("SMMutexOpen",
                              [](OpenedMutex& state) { return state.made(SMMutexOpen("row")); }),
      handle_row<Semaphore>(
          "SMSemaphoreCreate",
          [](Semaphore& state) { return state.made(SMSemaphoreCreate(nullptr, 1)); }),
      handle_row<Semaphore>(
          "SMSemaphoreCreate_named",
          [](Semaphore& state) { return state.made(SMSemaphoreCreate("row", 1)); }),
      handle_row<Semaphore>(
          "SMSemaphoreCreate_s",
          [](Semaphore& state) { return state.made(SMSemaphoreCreate_s("row", 1, 0)); }),
      handle_row<OpenedSemaphore>(
          "SMSemaphoreOpen",
          [](OpenedSemaphore& state) { return state.made(SMSemaphoreOpen("row")); }),
      handle_row<Event>("SMEventCreate",
                        [](Event& state) { return state.made(SMEventCreate(nullptr, 1, 0)); }),
      handle_row<Event>("SMEventCreate_named",
                        [](Event& state) { return state.made(SMEventCreate("row", 1, 0)); }),
      handle_row<Event>("SMEventCreate_s",
                        [](Event& state) { return state.made(SMEventCreate_s("row", 0, 1, 0)); }),
      handle_row<OpenedEvent>("SMEventOpen",
                              [](OpenedEvent& state) { return state.made(SMEventOpen("row")); }),
      handle_row<Memory>("SMSharedMemCreate",
                         [](Memory& state) { return state.made(SMSharedMemCreate("row", 64)); }),
      handle_row<Memory>(
          "SMSharedMemCreate_s",
          [](Memory& state) { return state.made(SMSharedMemCreate_s("row", 64, 0)); }),
      handle_row<OpenedMemory>(
          "SMSharedMemOpen",
          [](OpenedMemory& state) { return state.made(SMSharedMemOpen("row")); }),
      new_name_row("SMSemaphoreCreate_new_name",
                   [](EmptyRegistry&) { return made_and_released(SMSemaphoreCreate("new", 1)); }),
      new_name_row("SMEventCreate_new_name",
                   [](EmptyRegistry&) { return made_and_released(SMEventCreate("new", 1, 0)); }),
      new_name_row("SMSharedMemCreate_new_name",
                   [](EmptyRegistry&) { return made_and_released(SMSharedMemCreate("new", 64)); }),
  };
}

}  // namespace

std::vector<Row> ipc_rows() {
  // What the library keeps from the first use of a name on is not the calls': the locks of the
  // registry, and the keys.
  SMRWLDestroy(SMRWLCreate("row"));
  SMSemaphoreDestroy(SMSemaphoreCreate("row", 1));
  SMEventDestroy(SMEventCreate("row", 1, 1));
  SMSharedMemFree(SMSharedMemCreate("row", 64));
  std::vector<Row> rows = lock_rows();
  const std::vector<Row> objects = object_rows();
  rows.insert(rows.end(), objects.begin(), objects.end());
  return rows;
}

}  // namespace kqsupt::tests
