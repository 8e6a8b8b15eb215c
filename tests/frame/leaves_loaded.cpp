// Loads the library, uses what it keeps until it is stopped, and ends without unloading it: returns
// from main(), or with an argument ends by exit() on a thread of its own.

#include <dlfcn.h>
#include <kqsupt.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

void* library = nullptr;
SMMutex* mutex = nullptr;  // held to the end

template <class Function>
Function* function(const char* name) {
  void* address = dlsym(library, name);
  if (address == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::_Exit(2);
  }
  return reinterpret_cast<Function*>(address);
}

// The locks of paths, the critical sections, a lock that is held, the table of install paths, the
// formatter, a library that is shared.
bool use() {
  char text[300];
  uint32_t size = sizeof text;
  mutex = function<decltype(SMMutexCreate)>("SMMutexCreate")("leaves loaded");
  SMSemaphore* semaphore =
      function<decltype(SMSemaphoreCreate)>("SMSemaphoreCreate")("leaves loaded", 1);
  const bool used =
      function<decltype(SMMutexLock)>("SMMutexLock")(mutex, -1) == SM_STATUS_SUCCESS &&
      function<decltype(SMGetInstallPath)>("SMGetInstallPath")(text, &size) == SM_STATUS_SUCCESS &&
      function<decltype(SMCriticalSectionExecute)>("SMCriticalSectionExecute")(
          [](void*) -> void* { return nullptr; }, nullptr, -1) == SM_STATUS_SUCCESS &&
      function<decltype(SMsnprintf)>("SMsnprintf")(text, sizeof text, "%d", 7) == 1 &&
      function<decltype(SMFLibLinkToExportFN)>("SMFLibLinkToExportFN")("user", "libc.so.6",
                                                                       "malloc") != nullptr;
  function<decltype(SMSemaphoreDestroy)>("SMSemaphoreDestroy")(semaphore);
  return used;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    return 3;
  }
  library = dlopen(arguments[1], RTLD_NOW);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  const int status = use() ? 0 : 1;
  if (count > 2) {
    std::thread([status] { std::exit(status); }).join();
  }
  return status;
}
