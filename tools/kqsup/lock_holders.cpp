#include "lock_holders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "looked_at.h"
#include "name_registry.h"

namespace kqsup {

namespace {

// As the kernel's table names a file.
std::string name_of_file(uint64_t device, uint64_t inode) {
  char text[64];
  std::snprintf(text, sizeof text, "%02x:%02x:%llu", major(device), minor(device),
                static_cast<unsigned long long>(inode));
  return text;
}

bool is_lock_file(std::string_view name) {
  if (!name.starts_with('.')) {
    return false;
  }
  const NameKind kind = kind_of_name(name.substr(1));
  return kind == NameKind::kMutex || kind == NameKind::kPathLock;
}

// Asks who is in the way of a lock, which needs no right to write and changes nothing. None when this
// user may not open the file.
std::optional<struct flock> lock_in_the_way(int directory, const char* name, LockFile* file) {
  const int fd = openat(directory, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) {
    file->state = errno == ENOENT ? LockFile::State::kGone : LockFile::State::kUnknown;
    return std::nullopt;
  }
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  const bool answered = fcntl(fd, F_GETLK, &lock) == 0;
  close(fd);
  file->state = LockFile::State::kUnknown;
  return answered ? std::optional(lock) : std::nullopt;
}

bool is_regular(int directory, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) {
    return entry.d_type == DT_REG;
  }
  struct stat about {};
  return fstatat(directory, entry.d_name, &about, AT_SYMLINK_NOFOLLOW) != 0 ||
         S_ISREG(about.st_mode);
}

// The table of locks knows of those who wait, and of files that this user may not open; the question
// to the file itself is answered also where its file system has numbers of its own.
LockFile look_at_lock_file(int directory, const dirent& entry, const LockTable::Locks* locks) {
  LockFile file{entry.d_name + 1, LockFile::State::kNoFile, {}, {}};
  if (!is_regular(directory, entry)) {
    return file;
  }
  if (const auto lock = lock_in_the_way(directory, entry.d_name, &file)) {
    if (lock->l_type == F_UNLCK) {
      file.state = LockFile::State::kFree;
      file.waiters = 0;
      return file;
    }
    file.state = lock->l_type == F_RDLCK ? LockFile::State::kShared : LockFile::State::kHeld;
    if (lock->l_pid > 0) {
      file.holder = lock->l_pid;
    }
  } else if (file.state == LockFile::State::kUnknown && locks != nullptr &&
             !locks->holders.empty()) {
    file.state = locks->is_shared ? LockFile::State::kShared : LockFile::State::kHeld;
    if (locks->holders.front() > 0) {
      file.holder = locks->holders.front();
    }
  }
  if (locks != nullptr) {
    file.waiters = locks->waiters;
  }
  return file;
}

}  // namespace

// "1: POSIX  ADVISORY  WRITE 4711 08:01:1234 0 EOF", and "1: -> POSIX …" for one who waits.
LockTable::LockTable(std::string_view kernel_table) {
  while (!kernel_table.empty()) {
    const size_t end = std::min(kernel_table.find('\n'), kernel_table.size());
    const std::string line(kernel_table.substr(0, end));
    kernel_table.remove_prefix(std::min(end + 1, kernel_table.size()));
    const size_t arrow = line.find("->");
    const char* fields =
        line.c_str() +
        (arrow != std::string::npos ? arrow + 2 : std::min(line.find(':') + 1, line.size()));
    char kind[16];
    char access[16];
    char file[64];
    int process = 0;
    if (std::sscanf(fields, " %15s %*15s %15s %d %63s", kind, access, &process, file) != 4 ||
        (std::strcmp(kind, "POSIX") != 0 && std::strcmp(kind, "OFDLCK") != 0)) {
      continue;
    }
    Locks& locks = files_[file];
    if (arrow != std::string::npos) {
      ++locks.waiters;
    } else {
      locks.holders.push_back(std::max(process, 0));
      locks.is_shared = std::strcmp(access, "READ") == 0;
    }
  }
}

const LockTable::Locks* LockTable::locks_of(uint64_t device, uint64_t inode) const {
  const auto place = files_.find(name_of_file(device, inode));
  return place != files_.end() ? &place->second : nullptr;
}

std::optional<std::vector<LockFile>> read_lock_files(const std::string& directory,
                                                     std::string* why) {
  const Directory entries(directory);
  struct stat about {};
  if (entries.stream() == nullptr || fstat(dirfd(entries.stream()), &about) != 0) {
    *why = std::strerror(errno);
    return std::nullopt;
  }
  const LockTable table(look_at("/proc/locks", kLargestText).bytes);
  std::vector<LockFile> files;
  while (const dirent* entry = readdir(entries.stream())) {
    if (is_lock_file(entry->d_name)) {
      files.push_back(look_at_lock_file(dirfd(entries.stream()), *entry,
                                        table.locks_of(about.st_dev, entry->d_ino)));
    }
  }
  std::sort(files.begin(), files.end(),
            [](const LockFile& a, const LockFile& b) { return a.name < b.name; });
  return files;
}

}  // namespace kqsup
