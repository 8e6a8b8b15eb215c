#include "library.h"

#include <dlfcn.h>

namespace kqsup {

// The loader looks into the directories that this program was linked to look into first.
const Library* Library::load(std::string* why) {
  static Library library;
  if (library.handle_ == nullptr) {
    library.handle_ = dlopen("libkqsupt.so.9", RTLD_NOW | RTLD_LOCAL);
  }
  if (library.handle_ == nullptr) {
    *why = dlerror();
    return nullptr;
  }
  return &library;
}

void* Library::address(const char* name) const {
  return dlsym(handle_, name);
}

}  // namespace kqsup
