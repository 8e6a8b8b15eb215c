// Calling the loader.

#include "os/library.h"

#include <dlfcn.h>

#include <cstring>
#include <new>

#include "frame/heap.h"
#include "frame/status.h"

// The path lies behind the record, in its block.
struct SMLib {
  uint32_t type;
  char* path;
  void* module;  // what the loader calls it
};

namespace kqsupt::os {
namespace {

constexpr uint32_t kType = 0;

bool is_loaded(const SMLib& library) {
  return library.type == kType && library.module != nullptr;
}

}  // namespace

SMLib* load_library(const char* path) {
  if (path == nullptr) {
    return nullptr;
  }
  const size_t size = std::strlen(path) + 1;
  frame::HeapPtr<void> block(std::malloc(sizeof(SMLib) + size));
  if (block == nullptr) {
    return nullptr;
  }
  auto* const library =
      new (block.get()) SMLib{kType, reinterpret_cast<char*>(block.get()), nullptr};
  library->path += sizeof(SMLib);
  std::memcpy(library->path, path, size);
  library->module = dlopen(library->path, RTLD_NOW);
  if (library->module == nullptr) {
    return nullptr;
  }
  (void)block.release();
  return library;
}

SMStatus unload_library(SMLib* library) {
  if (library == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (!is_loaded(*library)) {
    return SM_STATUS_OPERATION_FAILED;
  }
  if (dlclose(library->module) != 0) {
    return frame::kFailed;
  }
  frame::release(library);
  return SM_STATUS_SUCCESS;
}

// The loader tells by its error state whether a name is missing. A name whose value is null is
// there, but nothing can be called by it: it answers as one that is missing.
void* library_function(SMLib* library, const char* name) {
  if (library == nullptr || name == nullptr || !is_loaded(*library)) {
    return nullptr;
  }
  (void)dlerror();
  void* const address = dlsym(library->module, name);
  return dlerror() == nullptr ? address : nullptr;
}

// Looking a function up takes nothing that could be given back.
SMStatus unlink_library_function(SMLib* library, const void* address) {
  if (library == nullptr || address == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return is_loaded(*library) ? SM_STATUS_SUCCESS : SM_STATUS_OPERATION_FAILED;
}

}  // namespace kqsupt::os
