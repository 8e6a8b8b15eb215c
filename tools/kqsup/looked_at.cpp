#include "looked_at.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kqsup {

namespace {

LookedAt failed() {
  LookedAt file;
  file.is_missing = errno == ENOENT || errno == ENOTDIR;
  file.why = std::strerror(errno);
  return file;
}

// Sizes that a file tells are not trusted: those of the kernel's own files are 0.
LookedAt read_from(int descriptor, size_t limit) {
  LookedAt file;
  char piece[16384];
  for (;;) {
    const ssize_t count = read(descriptor, piece, sizeof piece);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      return failed();
    }
    const size_t room = limit - file.bytes.size();
    file.goes_on = static_cast<size_t>(count) > room;
    file.bytes.append(piece, file.goes_on ? room : static_cast<size_t>(count));
    if (count == 0 || file.goes_on) {
      return file;
    }
  }
}

}  // namespace

int open_to_look(const std::string& path, int directory) {
  struct stat about {};
  if (stat(path.c_str(), &about) != 0) {
    return -1;
  }
  if (directory == 0 && !S_ISREG(about.st_mode)) {
    errno = S_ISDIR(about.st_mode) ? EISDIR : EINVAL;
    return -1;
  }
  const int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | directory;
  const int file = open(path.c_str(), flags | O_NOATIME);
  return file < 0 && errno == EPERM ? open(path.c_str(), flags) : file;
}

Directory::Directory(const std::string& path) : stream_(nullptr) {
  const int opened = open_to_look(path, O_DIRECTORY);
  stream_ = opened >= 0 ? fdopendir(opened) : nullptr;
  if (stream_ == nullptr && opened >= 0) {
    close(opened);
  }
}

Directory::~Directory() {
  if (stream_ != nullptr) {
    closedir(stream_);
  }
}

std::vector<std::string> names_in(const std::string& directory) {
  const Directory entries(directory);
  std::vector<std::string> names;
  while (const dirent* entry = entries.stream() != nullptr ? readdir(entries.stream()) : nullptr) {
    names.emplace_back(entry->d_name);
  }
  return names;
}

LookedAt look_at(const std::string& path, size_t limit) {
  const int descriptor = open_to_look(path);
  LookedAt file;
  if (descriptor >= 0) {
    file = read_from(descriptor, limit);
    close(descriptor);
  } else if (errno == EISDIR || errno == EINVAL) {
    file.why = errno == EISDIR ? "It is a directory" : "It is no regular file";
  } else {
    file = failed();
  }
  return file;
}

LookedAt look_at_input(size_t limit) {
  return read_from(STDIN_FILENO, limit);
}

}  // namespace kqsup
