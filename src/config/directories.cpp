// Making, removing and measuring.

#include "config/directories.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "frame/status.h"
#include "os/file_descriptor.h"

namespace kqsupt::config {

SMStatus make_directory(const char* path) {
  if (path == nullptr) {
    return frame::kFailed;
  }
  const bool is_there = mkdir(path, 0755) == 0 || errno == EEXIST || access(path, F_OK) == 0;
  return is_there ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
}

SMStatus remove_directory(const char* path) {
  if (path == nullptr) {
    return frame::kFailed;
  }
  if (rmdir(path) == 0) {
    return SM_STATUS_SUCCESS;
  }
  switch (errno) {
    case ENOTEMPTY:
    case EEXIST:  // what some file systems say instead
      return SM_STATUS_OPERATION_FAILED;
    case ENOENT:
      return SM_STATUS_DATA_NOT_FOUND;
    default:
      return frame::kFailed;
  }
}

SMStatus delete_file(const char* path) {
  return path != nullptr && unlink(path) == 0 ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
}

// The end of the file must be a position of 31 bits. A pipe has no end, and is not waited for.
SMStatus size_of_file(const char* path, uint32_t* size) {
  if (size == nullptr) {
    return frame::kFailed;
  }
  *size = 0;
  if (path == nullptr) {
    return frame::kFailed;
  }
  const auto file = os::FileDescriptor::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat about {};
  if (!file.is_open() || fstat(file.get(), &about) != 0 || S_ISDIR(about.st_mode)) {
    return frame::kFailed;
  }
  const off_t end = lseek(file.get(), 0, SEEK_END);
  if (end < 0 || end > INT32_MAX) {
    return frame::kFailed;
  }
  *size = static_cast<uint32_t>(end);
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::config
