// The steps of a replacement: a new file under a name of its own, then two renames.

#include "config/file_commit.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "config/temporary_name.h"
#include "frame/status.h"

namespace kqsupt::config {
namespace {

using os::FileDescriptor;

// A longer path loses its end, and then also the "." before "bak".
constexpr size_t kLongPath = 251;
constexpr size_t kKeptOfLongPath = 252;

frame::HeapPtr<char> concatenated(std::initializer_list<std::string_view> parts, size_t* size) {
  *size = 0;
  for (const std::string_view part : parts) {
    *size += part.size();
  }
  frame::HeapPtr<char> bytes(static_cast<char*>(std::malloc(*size + 1)));
  if (bytes != nullptr) {
    char* end = bytes.get();
    for (const std::string_view part : parts) {
      end = std::copy(part.begin(), part.end(), end);
    }
    *end = '\0';
  }
  return bytes;
}

// A new file in a directory, which goes away again unless it is kept.
class TemporaryFile {
 public:
  ~TemporaryFile() {
    if (path_ != nullptr) {
      unlink(path_.get());
    }
  }
  TemporaryFile() = default;
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // Another process may take the name between its test and the creation: the next one is tried.
  [[nodiscard]] SMStatus create(const char* directory, mode_t mode) {
    do {
      const SMStatus status = choose_path(directory);
      if (status != SM_STATUS_SUCCESS) {
        return status;
      }
      file_ = FileDescriptor::open(path_.get(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    } while (!file_.is_open() && errno == EEXIST);
    if (!file_.is_open()) {
      path_.reset();
      return SM_STATUS_FILE_NOT_FOUND;
    }
    (void)fchmod(file_.get(), mode);
    return SM_STATUS_SUCCESS;
  }

  [[nodiscard]] bool write(std::string_view bytes) {
    return file_.write_all(bytes) && file_.close();
  }

  [[nodiscard]] bool rename_to(const char* path) {
    if (rename(path_.get(), path) != 0) {
      return false;
    }
    path_.reset();
    return true;
  }

 private:
  SMStatus choose_path(const char* directory) {
    char name[16];
    uint32_t size = sizeof name;
    if (make_temporary_name(directory, name, &size) != SM_STATUS_SUCCESS) {
      return frame::kFailed;
    }
    path_ = concatenated({directory, "/", name}, &length_);
    return path_ != nullptr ? SMStatus{SM_STATUS_SUCCESS} : SMStatus{SM_STATUS_NO_MEMORY};
  }

  frame::HeapPtr<char> path_;
  size_t length_ = 0;
  FileDescriptor file_;
};

}  // namespace

BackupName::BackupName(const char* path) {
  const std::string_view whole(path);
  std::string_view kept = whole;
  std::string_view end = ".bak";
  if (whole.size() >= kLongPath) {
    kept = whole.substr(0, std::min(whole.size(), kKeptOfLongPath));
    end = "bak";
  } else if (const size_t dot = whole.rfind('.'); dot != std::string_view::npos) {
    kept = whole.substr(0, dot);
  }
  char* at = std::copy(kept.begin(), kept.end(), text_);
  at = std::copy(end.begin(), end.end(), at);
  *at = '\0';
  // A file with that name itself would be deleted as its own backup.
  if (whole == text_) {
    std::strcpy(at, ".bak");
  }
}

DirectoryName::DirectoryName(std::string_view path) {
  const size_t slash = path.rfind('/');
  const std::string_view directory = slash == std::string_view::npos ? "."
                                     : slash == 0                    ? "/"
                                                                     : path.substr(0, slash);
  size_t size = 0;
  text_ = concatenated({directory}, &size);
}

bool recover_file(const char* path) {
  const BackupName backup(path);
  return rename(backup.c_str(), path) == 0 || errno == ENOENT || access(backup.c_str(), F_OK) != 0;
}

SMStatus read_whole_file(const char* path, WholeFile* file) {
  const FileDescriptor input = FileDescriptor::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!input.is_open()) {
    return SM_STATUS_FILE_OPEN_FAILED;
  }
  struct stat about {};
  if (fstat(input.get(), &about) != 0 || !S_ISREG(about.st_mode)) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  // A size that a 32-bit host cannot count would look like a small one there.
  constexpr off_t kLargestFile = INT32_MAX - 1;
  if (about.st_size > kLargestFile) {
    return SM_STATUS_NO_MEMORY;
  }
  const auto size = static_cast<size_t>(about.st_size);
  file->mode = about.st_mode & 07777;
  file->bytes.reset(static_cast<char*>(std::malloc(size + 1)));
  if (file->bytes == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  const ssize_t count = input.read_all(file->bytes.get(), size);
  file->size = static_cast<size_t>(std::max<ssize_t>(count, 0));
  return count >= 0 ? SMStatus{SM_STATUS_SUCCESS} : SMStatus{SM_STATUS_UNSUCCESSFUL};
}

SMStatus replace_file(const char* path, const char* directory, mode_t mode,
                      std::initializer_list<std::string_view> parts) {
  size_t size = 0;
  const frame::HeapPtr<char> bytes = concatenated(parts, &size);
  if (bytes == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  TemporaryFile temporary;
  const SMStatus status = temporary.create(directory, mode & kKeptBits);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  if (!temporary.write({bytes.get(), size})) {
    return SM_STATUS_OUT_OF_SPACE;
  }
  const BackupName backup(path);
  if (rename(path, backup.c_str()) != 0) {
    return frame::kFailed;
  }
  if (!temporary.rename_to(path)) {
    rename(backup.c_str(), path);
    return SM_STATUS_ALREADY_EXISTS;
  }
  return unlink(backup.c_str()) == 0 ? SMStatus{SM_STATUS_SUCCESS}
                                     : SMStatus{SM_STATUS_ACCESS_DENIED};
}

}  // namespace kqsupt::config
