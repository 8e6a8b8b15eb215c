#include "log_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "looked_at.h"

namespace kqsup {

std::optional<LogFile> LogFile::open(const std::string& path, int* why) {
  const int file = open_to_look(path);
  if (file < 0) {
    *why = errno;
    return std::nullopt;
  }
  // Something else may have taken the name since it was asked what it is.
  struct stat about {};
  const bool is_known = fstat(file, &about) == 0;
  if (!is_known || !S_ISREG(about.st_mode)) {
    *why = is_known && S_ISDIR(about.st_mode) ? EISDIR : EINVAL;
    close(file);
    return std::nullopt;
  }
  return LogFile(file, about.st_dev, about.st_ino);
}

LogFile::~LogFile() {
  if (file_ >= 0) {
    close(file_);
  }
}

size_t LogFile::read(uint64_t offset, char* to, size_t size) {
  size_t done = 0;
  while (done < size) {
    const ssize_t count = pread(file_, to + done, size - done, static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      error_ = errno;
    }
    if (count <= 0) {
      break;
    }
    done += static_cast<size_t>(count);
  }
  return done;
}

LogFile::State LogFile::state() const {
  struct stat about {};
  if (fstat(file_, &about) != 0) {
    return {};
  }
  return {static_cast<uint64_t>(about.st_size), about.st_mtim.tv_sec, about.st_mtim.tv_nsec};
}

bool LogFile::is_named(const std::string& path) const {
  struct stat about {};
  return stat(path.c_str(), &about) == 0 && about.st_dev == device_ && about.st_ino == node_;
}

}  // namespace kqsup
