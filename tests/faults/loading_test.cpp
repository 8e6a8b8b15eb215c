// Loading the library while memory is short: its start fails, and its functions answer all the
// same.

#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt.h"
#include "support/failing_heap.h"
#include "support/scratch.h"

namespace kqsupt::tests {
namespace {

// A function of a library that this program is not linked with.
template <class Function>
Function* function(void* library, const char* name) {
  void* address = dlsym(library, name);
  EXPECT_NE(address, nullptr) << name;
  return reinterpret_cast<Function*>(address);
}

// What needs no start.
void expect_answers(void* library) {
  const auto checksum = function<decltype(SMCRC32Compute_str)>(library, "SMCRC32Compute_str");
  EXPECT_EQ(checksum("123456789"), 0xCBF43926U);
  const auto print = function<decltype(SMsnprintf)>(library, "SMsnprintf");
  char text[16];
  EXPECT_EQ(print(text, sizeof text, "%d %.1f", 42, 2.5), 6);
  const auto create = function<decltype(SMMutexCreate)>(library, "SMMutexCreate");
  const auto lock = function<decltype(SMMutexLock)>(library, "SMMutexLock");
  const auto destroy = function<decltype(SMMutexDestroy)>(library, "SMMutexDestroy");
  SMMutex* mutex = create(nullptr);
  EXPECT_EQ(lock(mutex, 0), SM_STATUS_SUCCESS);
  destroy(mutex);
}

constexpr char kContent[] = "[s]\nk=v\n";

// What answers that the library has not started, or works: with memory, whatever was missing before.
void expect_answers_of_what_starts(void* library, const std::string& file) {
  char text[300];
  uint32_t size = sizeof text;
  const auto install_path = function<decltype(SMGetInstallPath)>(library, "SMGetInstallPath");
  const SMStatus path_status = install_path(text, &size);
  EXPECT_TRUE(path_status == SM_STATUS_SUCCESS || path_status == SM_STATUS_DATA_NOT_FOUND)
      << path_status;

  const auto read = function<decltype(SMReadINIPathFileValue)>(library, "SMReadINIPathFileValue");
  size = sizeof text;
  const SMStatus read_status =
      read("s", "k", SMINI_TYPE_UTF8, text, &size, nullptr, 0, file.c_str(), 1);
  EXPECT_TRUE(read_status == SM_STATUS_SUCCESS || read_status == SM_STATUS_NO_MEMORY)
      << read_status;
  const auto write =
      function<decltype(SMWriteINIPathFileValue)>(library, "SMWriteINIPathFileValue");
  EXPECT_EQ(write("s", "k", SMINI_TYPE_UTF8, "v", 2, file.c_str(), 1), read_status);
  EXPECT_EQ(content_of(file), kContent);

  const auto address =
      function<decltype(SMIPAddrASCIIToNetwork)>(library, "SMIPAddrASCIIToNetwork");
  uint32_t network = 0;
  constexpr SMStatus kNotStarted = 17;
  const SMStatus address_status = address("10.0.0.1", &network);
  EXPECT_TRUE(address_status == SM_STATUS_SUCCESS || address_status == kNotStarted)
      << address_status;

  const auto section =
      function<decltype(SMCriticalSectionExecute)>(library, "SMCriticalSectionExecute");
  EXPECT_EQ(section([](void*) -> void* { return nullptr; }, nullptr, -1), SM_STATUS_SUCCESS);

  const auto link = function<decltype(SMFLibLinkToExportFN)>(library, "SMFLibLinkToExportFN");
  const auto unload = function<decltype(SMFLibUnLoad)>(library, "SMFLibUnLoad");
  void* linked = link("user", KQSUPT_LIB_DIR "/libkqbounded.so.1", "getenv_s");
  EXPECT_TRUE(linked == nullptr || linked == dlsym(library, "getenv_s"));
  EXPECT_EQ(unload("user", KQSUPT_LIB_DIR "/libkqbounded.so.1"), SM_STATUS_SUCCESS);
}

// Named objects: there, or refused.
void expect_named_objects_or_none(void* library) {
  SMMutex* mutex = function<decltype(SMMutexCreate)>(library, "SMMutexCreate")("loading");
  if (mutex != nullptr) {
    EXPECT_EQ(function<decltype(SMMutexLock)>(library, "SMMutexLock")(mutex, 0), SM_STATUS_SUCCESS);
  }
  function<decltype(SMMutexDestroy)>(library, "SMMutexDestroy")(mutex);
  const auto create = function<decltype(SMSemaphoreCreate)>(library, "SMSemaphoreCreate");
  SMSemaphore* semaphore = create("loading", 1);
  EXPECT_EQ(semaphore != nullptr, mutex != nullptr);
  function<decltype(SMSemaphoreDestroy)>(library, "SMSemaphoreDestroy")(semaphore);
  SMRWLock* lock = function<decltype(SMRWLCreate)>(library, "SMRWLCreate")("loading");
  EXPECT_EQ(lock != nullptr, mutex != nullptr);
  function<decltype(SMRWLDestroy)>(library, "SMRWLDestroy")(lock);
}

class LoadingWithoutMemory : public testing::Test {
 protected:
  LoadingWithoutMemory() {
    put(file_, kContent);
    std::filesystem::create_directory(other_ipc_directory_);
  }
  ~LoadingWithoutMemory() override { std::filesystem::remove_all(other_ipc_directory_); }

  void use(void* library) const {
    expect_answers(library);
    expect_answers_of_what_starts(library, file_);
    expect_named_objects_or_none(library);
  }

  // Loads the library with the n-th allocation failing, and unloads it. False when it was loaded with
  // fewer. `*lost` receives the number of blocks that stay.
  bool load_with_failure(uint64_t n, Fault fault, bool* loaded, int64_t* lost) const {
    // The loader keeps what it said of a failure until it has been asked twice.
    dlerror();
    dlerror();
    const int64_t live_before = live_blocks();
    fail_allocation(n, fault);
    void* library = dlopen(KQSUPT_LIB_DIR "/libkqsupt.so.9", RTLD_NOW);
    const bool reached = stop_failing() >= n;
    *loaded = library != nullptr;
    if (library != nullptr) {
      use(library);
      dlclose(library);
      *lost = live_blocks() - live_before;
    } else {
      // The loader itself needs memory too, and says so.
      EXPECT_TRUE(reached) << dlerror();
      *lost = 0;
    }
    return reached;
  }

  void load_with_every_allocation_failing(Fault fault) const {
    uint64_t started_without_memory = 0;
    bool reached = true;
    bool loaded = false;
    int64_t lost = 0;
    // What the loader and the C library keep from the first time on is theirs.
    load_with_failure(UINT64_MAX, fault, &loaded, &lost);
    for (uint64_t n = 1; reached; ++n) {
      SCOPED_TRACE("allocation " + std::to_string(n));
      load_with_failure(n, fault, &loaded, &lost);
      reached = load_with_failure(n, fault, &loaded, &lost);
      EXPECT_EQ(lost, 0) << "blocks lost";
      started_without_memory += loaded && reached ? 1 : 0;
    }
    EXPECT_GE(started_without_memory, 1U) << "the start of the library allocates nothing";
  }

  Scratch scratch_;
  const std::string file_ = scratch_.file("a.ini");
  // Where named objects would live if there were no product wexlib.
  const std::string other_ipc_directory_ =
      std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/nurb/var/.ipc";
};

TEST_F(LoadingWithoutMemory, LeavesALibraryThatAnswersOrNone) {
  load_with_every_allocation_failing(Fault::kOnce);
}

TEST_F(LoadingWithoutMemory, LeavesALibraryThatAnswersOrNoneWhenAllFurtherMemoryIsShortToo) {
  load_with_every_allocation_failing(Fault::kFromThen);
}

// Whoever has no memory for a moment must not wait for others in another place than they are in.
TEST_F(LoadingWithoutMemory, NamedObjectsAreWhereTheyAlwaysAreOrNowhere) {
  load_with_every_allocation_failing(Fault::kOnce);
  EXPECT_TRUE(std::filesystem::is_empty(other_ipc_directory_));
}

}  // namespace
}  // namespace kqsupt::tests
