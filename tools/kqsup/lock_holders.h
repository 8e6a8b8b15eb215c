// The lock files of the IPC directory, and who holds them. Nothing is locked to learn it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kqsup {

// The record locks of this host, by the file that they are on.
class LockTable {
 public:
  struct Locks {
    std::vector<int32_t> holders;  // processes; one that cannot be seen from here is 0
    bool is_shared = false;        // those that read hold it together
    int waiters = 0;
  };

  explicit LockTable(std::string_view kernel_table);

  // Null when nobody locks it, or when its file system has other numbers than the kernel's table.
  [[nodiscard]] const Locks* locks_of(uint64_t device, uint64_t inode) const;

 private:
  std::map<std::string, Locks, std::less<>> files_;
};

struct LockFile {
  enum class State { kFree, kHeld, kShared, kUnknown, kGone, kNoFile };
  std::string name;  // without the "." that it begins with in the directory
  State state;
  std::optional<int32_t> holder;
  std::optional<int> waiters;
};

// All lock files, in the order of their names. None, and why, when the directory cannot be read.
[[nodiscard]] std::optional<std::vector<LockFile>> read_lock_files(const std::string& directory,
                                                                   std::string* why);

}  // namespace kqsup
