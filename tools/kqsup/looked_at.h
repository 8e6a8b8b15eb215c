// The bytes of a file that is only looked at: it is not waited for, locked, or changed, and no more
// of it is kept than asked for.
#pragma once

#include <dirent.h>

#include <cstddef>
#include <string>
#include <vector>

namespace kqsup {

struct LookedAt {
  std::string bytes;
  std::string why;          // why it could not be read; empty when it was
  bool is_missing = false;  // it could not, since there is none
  bool goes_on = false;     // it has more bytes than were asked for

  [[nodiscard]] bool ok() const { return why.empty(); }
};

// Opens a file, with O_DIRECTORY a directory, to read it: without waiting, and without a trace of the
// time where that is allowed, which is with what this user owns. Anything else is not opened: a pipe
// would let its writer go on. -1 with errno otherwise, EISDIR for a directory and EINVAL for the rest. What
// is put in its place at that moment is opened all the same, but not waited for.
[[nodiscard]] int open_to_look(const std::string& path, int directory = 0);

// A directory whose entries are read with readdir(), without a trace of the time.
class Directory {
 public:
  explicit Directory(const std::string& path);
  ~Directory();
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  // Null, with errno, when it cannot be read.
  [[nodiscard]] DIR* stream() const { return stream_; }

 private:
  DIR* stream_;
};

// The names in a directory; none when it cannot be read.
[[nodiscard]] std::vector<std::string> names_in(const std::string& directory);

// The first bytes of a regular file, `limit` of them at the most. Nothing else is opened to be read:
// a pipe could keep its reader waiting, and a device need have no end.
[[nodiscard]] LookedAt look_at(const std::string& path, size_t limit);

// The first bytes of the standard input, whatever it is.
[[nodiscard]] LookedAt look_at_input(size_t limit);

// No text file of a host that is looked at is larger than this.
inline constexpr size_t kLargestText = 64U << 20U;

}  // namespace kqsup
