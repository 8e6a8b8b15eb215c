// Looking at the modification times of files, in whole seconds.

#include "config/file_change.h"

#include <sys/stat.h>

#include <cstring>

#include "frame/heap.h"

struct SMFileProp {
  char* path;
  int64_t modified;  // seconds since the epoch, when it was last looked at
};

namespace kqsupt::config {
namespace {

bool modification_time(const char* path, int64_t* seconds) {
  struct stat about {};
  if (stat(path, &about) != 0) {
    return false;
  }
  *seconds = about.st_mtime;
  return true;
}

}  // namespace

SMFileProp* watch_file(const char* path) {
  SMFileProp seen{};
  if (path == nullptr || !modification_time(path, &seen.modified)) {
    return nullptr;
  }
  frame::HeapPtr<SMFileProp> file(static_cast<SMFileProp*>(std::malloc(sizeof(SMFileProp))));
  seen.path = strdup(path);
  if (file == nullptr || seen.path == nullptr) {
    frame::release(seen.path);
    return nullptr;
  }
  *file = seen;
  return file.release();
}

uint32_t was_modified(SMFileProp* file) {
  int64_t modified = 0;
  if (file == nullptr || !modification_time(file->path, &modified) || modified == file->modified) {
    return 0;
  }
  file->modified = modified;
  return 1;
}

void stop_watching(SMFileProp* file) {
  if (file != nullptr) {
    frame::release(file->path);
    frame::release(file);
  }
}

}  // namespace kqsupt::config
