// Replacing a file as a whole, so that a process that is killed at any point leaves the old content
// or the new one behind.
#pragma once

#include <sys/types.h>

#include <initializer_list>
#include <string_view>

#include "frame/heap.h"
#include "kqsupt/frame.h"
#include "os/file_descriptor.h"

namespace kqsupt::config {

// The name that the old content has for a moment while the new one takes its place: the path with
// "bak" for what is behind its last ".".
class BackupName {
 public:
  explicit BackupName(const char* path);
  [[nodiscard]] const char* c_str() const { return text_; }

 private:
  char text_[256 + 8];
};

// The directory of a file: "." for a path without one.
class DirectoryName {
 public:
  // Not ok() without memory.
  explicit DirectoryName(std::string_view path);
  [[nodiscard]] bool ok() const { return text_ != nullptr; }
  [[nodiscard]] const char* c_str() const { return text_.get(); }

 private:
  frame::HeapPtr<char> text_;
};

// Renames a backup that an interrupted replacement left behind over the file. False when there is
// one and it cannot be renamed.
[[nodiscard]] bool recover_file(const char* path);

// A file as it was opened: all of its bytes, and its permission bits.
struct WholeFile {
  frame::HeapPtr<char> bytes;
  size_t size = 0;
  mode_t mode = 0;

  [[nodiscard]] std::string_view content() const { return {bytes.get(), size}; }
};

// The bits that a file keeps when it is changed: nothing of it is a program.
inline constexpr mode_t kKeptBits = 01666;

// SM_STATUS_FILE_OPEN_FAILED; SM_STATUS_NO_MEMORY, also for a file that has more bytes than blocks
// on every host have; SM_STATUS_UNSUCCESSFUL when it cannot be read.
[[nodiscard]] SMStatus read_whole_file(const char* path, WholeFile* file);

// Replaces the file by the parts, one behind the other. It keeps its bits for reading and writing.
// 0xFFFFFFFF when there is no name for the new file, or no memory to look for one, or the old one
// cannot be renamed, SM_STATUS_NO_MEMORY, SM_STATUS_FILE_NOT_FOUND when the new file cannot be
// made, SM_STATUS_OUT_OF_SPACE when it cannot be written, SM_STATUS_ALREADY_EXISTS when it cannot
// be renamed: the file is as it was, and there is no other. SM_STATUS_ACCESS_DENIED when the backup
// cannot be deleted: whoever recovers the file goes back to the old content.
[[nodiscard]] SMStatus replace_file(const char* path, const char* directory, mode_t mode,
                                    std::initializer_list<std::string_view> parts);

}  // namespace kqsupt::config
