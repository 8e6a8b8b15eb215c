// Reading and changing INI files. Whoever comes first to a file whose change was interrupted mends
// it, before looking at anything.

#include "config/ini_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>

#include "config/directories.h"
#include "config/file_commit.h"
#include "config/ini_file.h"
#include "config/ini_text.h"
#include "config/line_reader.h"
#include "frame/heap.h"
#include "frame/status.h"
#include "ipc/path_lock.h"
#include "os/file_descriptor.h"
#include "text/text_builder.h"

namespace kqsupt::config {
namespace {

using ipc::PathLockGuard;
using ipc::PathLockMode;
using os::FileDescriptor;

constexpr size_t kLongestName = 255;
constexpr uint32_t kLargestValue = 8193;  // with its terminator

bool is_empty(const char* text) {
  return text == nullptr || *text == '\0';
}

SMStatus copy_text(std::string_view text, char* buffer, uint32_t* size) {
  const uint32_t capacity = *size;
  *size = static_cast<uint32_t>(text.size() + 1);
  if (*size > capacity) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  *std::copy(text.begin(), text.end(), buffer) = '\0';
  return SM_STATUS_SUCCESS;
}

void copy_default(const IniDefault& fallback, char* buffer, uint32_t* size) {
  if (!fallback.is_given()) {
    *size = 0;
    *buffer = '\0';
    return;
  }
  *size = std::min(fallback.size, *size);
  std::memcpy(buffer, fallback.bytes, *size);
  buffer[*size - 1] = '\0';
}

// Reads the list that is asked for, twice: a list that is cut short by a malformed header must not
// have touched the buffer.
SMStatus read_list(const char* section, const FileDescriptor& file, std::span<char> room,
                   char* buffer, uint32_t* size) {
  const auto list = [&](NameList* names) {
    if (lseek(file.get(), 0, SEEK_SET) != 0) {
      return SMStatus{SM_STATUS_UNSUCCESSFUL};
    }
    LineReader lines(file, room);
    const SMStatus status =
        section == nullptr ? list_ini_sections(lines, names) : list_ini_keys(lines, section, names);
    return lines.failed() ? SMStatus{SM_STATUS_UNSUCCESSFUL} : status;
  };
  NameList nothing(nullptr, 0);
  if (const SMStatus status = list(&nothing); status != SM_STATUS_SUCCESS) {
    return status;
  }
  NameList names(buffer, *size);
  const SMStatus status = list(&names);
  return status == SM_STATUS_SUCCESS ? names.finish(size) : status;
}

SMStatus read_value(const char* section, const char* key, const FileDescriptor& file,
                    std::span<char> room, char* buffer, uint32_t* size,
                    const IniDefault& fallback) {
  LineReader lines(file, room);
  std::string_view value;
  const SMStatus status = find_ini_value(lines, section, key, &value);
  if (status == SM_STATUS_SUCCESS) {
    return copy_text(value, buffer, size);
  }
  if (lines.failed()) {
    return SM_STATUS_UNSUCCESSFUL;  // the key may be there
  }
  copy_default(fallback, buffer, size);
  return status;
}

// ---- Writing ----

// A new section with one key, for the end of a file.
bool build_section(bool is_first, const IniText& ini, text::TextBuilder* lines) {
  return (is_first || lines->append('\n')) && lines->append('[') && lines->append(ini.section) &&
         lines->append("]\n") && lines->append(ini.key) && lines->append('=') &&
         lines->append(ini.value) && lines->append('\n');
}

// A file that is added to loses the bits that a change would take from it.
void drop_other_bits(const FileDescriptor& file) {
  struct stat about {};
  if (fstat(file.get(), &about) == 0 && (about.st_mode & 07777 & ~kKeptBits) != 0) {
    (void)fchmod(file.get(), about.st_mode & kKeptBits);
  }
}

// Adds bytes to the end of the file. Where `size` is none it is missing, and made.
SMStatus append_bytes(const char* path, std::optional<size_t> size, std::string_view bytes) {
  const bool is_new = !size.has_value();
  // Its bits from the first: who makes it may never get to what follows.
  FileDescriptor file = FileDescriptor::open(
      path, O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | (is_new ? O_CREAT : 0), 0644);
  if (!file.is_open()) {
    return SM_STATUS_FILE_NOT_FOUND;
  }
  if (is_new) {
    (void)fchmod(file.get(), 0644);
  }
  const bool written = file.write_all(bytes);
  if (written && !is_new) {
    drop_other_bits(file);
  }
  if (!written || !file.close()) {
    // Nothing of it stays.
    if (is_new) {
      unlink(path);
    } else {
      (void)!truncate(path, static_cast<off_t>(*size));
    }
    return SM_STATUS_OUT_OF_SPACE;
  }
  return SM_STATUS_SUCCESS;
}

// Puts a new section at the end of the file, which may be missing.
SMStatus append_section(const IniText& ini, const char* path, std::optional<size_t> size) {
  if (ini.key == nullptr || ini.value == nullptr) {
    return SM_STATUS_BAD_LENGTH;
  }
  text::TextBuilder lines(256);
  return build_section(size.value_or(0) == 0, ini, &lines) ? append_bytes(path, size, lines.view())
                                                           : SMStatus{SM_STATUS_NO_MEMORY};
}

// The line of a key, on a line of its own also where the text before it ends without one.
bool build_line(std::string_view before, const char* key, const char* value,
                text::TextBuilder* line) {
  return (before.empty() || before.ends_with('\n') || line->append('\n')) && line->append(key) &&
         line->append('=') && line->append(value) && line->append('\n');
}

SMStatus change_file(const IniText& ini, const char* path, const char* directory) {
  WholeFile file;
  SMStatus status = read_whole_file(path, &file);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  const std::string_view content = file.content();
  IniEdit edit{};
  status = ini.key != nullptr ? edit_ini_key(content, ini.section, ini.key, &edit)
                              : edit_ini_section(content, ini.section, &edit);
  if (status == SM_STATUS_SECTION_NOT_FOUND) {
    return append_section(ini, path, content.size());
  }
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  const std::string_view before = content.substr(0, edit.kept_before);
  text::TextBuilder line(256);
  if (!line.ok() || (ini.key != nullptr && ini.value != nullptr &&
                     !build_line(before, ini.key, ini.value, &line))) {
    return SM_STATUS_NO_MEMORY;
  }
  return replace_file(path, directory, file.mode,
                      {before, line.view(), from(content, edit.kept_from)});
}

// The content as it is with another value of a key.
SMStatus edit_content(std::string_view content, const IniText& ini, text::TextBuilder* edited) {
  IniEdit edit{};
  const SMStatus status = edit_ini_key(content, ini.section, ini.key, &edit);
  bool built = false;
  if (status == SM_STATUS_SECTION_NOT_FOUND) {
    built = edited->append(content) && build_section(content.empty(), ini, edited);
  } else if (status == SM_STATUS_SUCCESS) {
    const std::string_view before = content.substr(0, edit.kept_before);
    built = edited->append(before) && build_line(before, ini.key, ini.value, edited) &&
            edited->append(from(content, edit.kept_from));
  } else {
    return status;
  }
  return built ? SMStatus{SM_STATUS_SUCCESS} : SMStatus{SM_STATUS_NO_MEMORY};
}

// A file that is about to be changed: locked, in a directory that is there, and mended.
class FileToChange {
 public:
  FileToChange(const char* path, bool wait) : path_(path), directory_(path) {
    if (!directory_.ok()) {
      status_ = SM_STATUS_NO_MEMORY;
      return;
    }
    if (make_directory(directory_.c_str()) != SM_STATUS_SUCCESS) {
      status_ = frame::kFailed;
      return;
    }
    lock_.emplace(path, PathLockMode::kExclusive, wait);
    status_ = lock_->status();
    // Where the old content cannot be had back, a change would be lost when somebody can.
    if (status_ == SM_STATUS_SUCCESS && !recover_file(path)) {
      status_ = frame::kFailed;
    }
  }

  [[nodiscard]] SMStatus status() const { return status_; }
  [[nodiscard]] const char* directory() const { return directory_.c_str(); }
  // A file that cannot be looked at is not missing.
  [[nodiscard]] bool is_missing() const {
    return access(path_, F_OK) != 0 && (errno == ENOENT || errno == ENOTDIR);
  }

 private:
  const char* path_;
  DirectoryName directory_;
  std::optional<PathLockGuard> lock_;
  SMStatus status_ = SM_STATUS_SUCCESS;
};

SMStatus check_names(const char* section, const char* key, const char* path) {
  const bool valid = section != nullptr && std::strlen(section) <= kLongestName &&
                     !is_empty(path) && (key == nullptr || std::strlen(key) <= kLongestName);
  return valid ? SM_STATUS_SUCCESS : SM_STATUS_UNSUCCESSFUL;
}

SMStatus check_value(const char* value, uint32_t size) {
  const bool valid =
      value == nullptr ? size == 0 : size <= kLargestValue && size == std::strlen(value) + 1;
  return valid ? SM_STATUS_SUCCESS : SM_STATUS_BAD_LENGTH;
}

}  // namespace

SMStatus read_ini_text(const char* section, const char* key, char* buffer, uint32_t* size,
                       const IniDefault& fallback, const char* path, bool wait) {
  if (buffer == nullptr || size == nullptr || *size == 0 || is_empty(path)) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const PathLockGuard lock(path, PathLockMode::kShared, wait);
  if (lock.status() != SM_STATUS_SUCCESS) {
    return lock.status();
  }
  (void)recover_file(path);  // what cannot be mended is read as it is
  const FileDescriptor file = FileDescriptor::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!file.is_open()) {
    return SM_STATUS_FILE_OPEN_FAILED;
  }
  const frame::HeapPtr<char> room(static_cast<char*>(std::malloc(LineReader::kBufferSize)));
  if (room == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  const std::span<char> lines(room.get(), LineReader::kBufferSize);
  return section == nullptr || key == nullptr
             ? read_list(section, file, lines, buffer, size)
             : read_value(section, key, file, lines, buffer, size, fallback);
}

SMStatus write_ini_text(const char* section, const char* key, const char* value,
                        uint32_t value_size, const char* path, bool wait) {
  if (const SMStatus status = check_names(section, key, path); status != SM_STATUS_SUCCESS) {
    return status;
  }
  if (const SMStatus status = check_value(value, value_size); status != SM_STATUS_SUCCESS) {
    return status;
  }
  if (std::string_view(path).ends_with('/')) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const FileToChange file(path, wait);
  if (file.status() != SM_STATUS_SUCCESS) {
    return file.status();
  }
  const IniText ini{section, key, value};
  return file.is_missing() ? append_section(ini, path, std::nullopt)
                           : change_file(ini, path, file.directory());
}

SMStatus write_ini_pair(const IniText& first, const IniText& second, const char* path) {
  const FileToChange target(path, true);
  if (target.status() != SM_STATUS_SUCCESS) {
    return target.status();
  }
  const bool is_new = target.is_missing();
  WholeFile file;
  if (!is_new) {
    if (const SMStatus status = read_whole_file(path, &file); status != SM_STATUS_SUCCESS) {
      return status;
    }
  }
  text::TextBuilder with_first(1024);
  text::TextBuilder with_both(1024);
  SMStatus status = edit_content(file.content(), first, &with_first);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  status = edit_content(with_first.view(), second, &with_both);
  if (status == SM_STATUS_NO_MEMORY) {
    return status;
  }
  const std::string_view content =
      status == SM_STATUS_SUCCESS ? with_both.view() : with_first.view();
  return is_new ? append_bytes(path, std::nullopt, content)
                : replace_file(path, target.directory(), file.mode, {content});
}

}  // namespace kqsupt::config
