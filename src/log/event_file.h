// The file of a log: its directory, its one backup, and writing to it so that what was acknowledged
// is there as a whole and what failed is not there at all.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string_view>

#include "frame/heap.h"
#include "ipc/path_lock.h"
#include "kqsupt/frame.h"
#include "os/file_descriptor.h"

namespace kqsupt::log {

// The name of the backup: the path with its last character replaced. The path is not empty.
void make_backup_name(char* path);

// Makes the directory that the file is in, unless it is there. 0xFFFFFFFF when that fails.
[[nodiscard]] SMStatus make_directory_of(const char* path);

// Deletes the file. 0xFFFFFFFF when that fails, also because there is none. One that is there stays
// when what is to be told of the deletion is not `ready`, which is the status then.
[[nodiscard]] SMStatus delete_log(const char* path, SMStatus ready);

// The file, locked against everybody else and open.
class LockedLog {
 public:
  // `access` as for open(). A file that is not there is made when that is wanted, with its directory.
  enum class Missing { kMake, kLeave };
  LockedLog(const char* path, int access, Missing missing = Missing::kMake);

  // What locking answered; 0xFFFFFFFF when the file cannot be opened, or its directory made.
  [[nodiscard]] SMStatus status() const { return status_; }
  [[nodiscard]] off_t size() const { return size_; }
  [[nodiscard]] const os::FileDescriptor& file() const { return file_; }

  // Makes the file its own backup, in place of the one before, when it would reach `max_size` with
  // `growth` more bytes. True when that was done: this is a log no more.
  [[nodiscard]] bool back_up_when_full(uint64_t growth, uint32_t max_size);

  // Gives the file its bits: a new one 0664, another one those of its own for reading and writing.
  void settle_mode();

  // Cuts off what a process that was killed left of an event. False when that cannot be done.
  [[nodiscard]] bool cut_to(off_t size);

  // Writes bytes at an offset within the file and closes it. `replaced` is what lay there, at the
  // end of the file. SM_STATUS_OUT_OF_SPACE, and the file is as it was unless only closing it failed.
  [[nodiscard]] SMStatus write(off_t offset, std::string_view bytes, std::string_view replaced);

 private:
  [[nodiscard]] bool open(int flags, Missing missing);
  void create(int flags);
  void take_back(off_t offset, std::string_view replaced);

  const char* path_;
  ipc::PathLockGuard lock_;
  SMStatus status_;
  os::FileDescriptor file_;
  off_t size_ = 0;
  mode_t found_mode_ = 0;
  bool is_new_ = false;
  bool is_regular_ = false;
};

// The last bytes of a log: more of them than an event has, but for one with a link of half a MiB.
class Tail {
 public:
  explicit Tail(const LockedLog& log);

  // Empty when memory is short or the file cannot be read.
  [[nodiscard]] std::string_view bytes() const { return {bytes_.get(), size_}; }
  // Where in the file they begin.
  [[nodiscard]] off_t offset() const { return offset_; }

 private:
  frame::HeapPtr<char[]> bytes_;
  size_t size_ = 0;
  off_t offset_ = 0;
};

}  // namespace kqsupt::log
