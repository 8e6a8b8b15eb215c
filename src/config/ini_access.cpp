// Reading and changing INI files. Whoever comes first to a file whose change was interrupted mends
// it, before looking at anything.

#include "config/ini_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "config/directories.h"
#include "config/file_commit.h"
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

// Puts a new section at the end of the file, which is made when it is missing.
SMStatus append_section(const char* section, const char* key, const char* value, const char* path,
                        bool is_missing) {
  if (key == nullptr || value == nullptr) {
    return SM_STATUS_BAD_LENGTH;
  }
  text::TextBuilder text(256);
  if (!text.append("\n[") || !text.append(section) || !text.append("]\n") || !text.append(key) ||
      !text.append('=') || !text.append(value) || !text.append('\n')) {
    return SM_STATUS_NO_MEMORY;
  }
  const int flags = O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | (is_missing ? O_CREAT : 0);
  FileDescriptor file = FileDescriptor::open(path, flags, 0600);
  struct stat about {};
  if (!file.is_open() || fstat(file.get(), &about) != 0) {
    return SM_STATUS_FILE_NOT_FOUND;
  }
  if (is_missing) {
    (void)fchmod(file.get(), 0644);
  }
  if (!file.write_all(from(text.view(), about.st_size == 0 ? 1 : 0)) || !file.close()) {
    // Nothing of it stays.
    if (is_missing) {
      unlink(path);
    } else {
      (void)!truncate(path, about.st_size);
    }
    return SM_STATUS_OUT_OF_SPACE;
  }
  return SM_STATUS_SUCCESS;
}

// The line of a key, on a line of its own also where the text before it ends without one.
bool build_line(std::string_view before, const char* key, const char* value,
                text::TextBuilder* line) {
  return (before.empty() || before.ends_with('\n') || line->append('\n')) && line->append(key) &&
         line->append('=') && line->append(value) && line->append('\n');
}

SMStatus change_file(const char* section, const char* key, const char* value, const char* path,
                     const char* directory) {
  WholeFile file;
  SMStatus status = read_whole_file(path, &file);
  if (status == SM_STATUS_FILE_OPEN_FAILED && errno == ENOENT) {
    return append_section(section, key, value, path, true);
  }
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  const std::string_view content = file.content();
  IniEdit edit{};
  status = key != nullptr ? edit_ini_key(content, section, key, &edit)
                          : edit_ini_section(content, section, &edit);
  if (status == SM_STATUS_SECTION_NOT_FOUND) {
    return append_section(section, key, value, path, false);
  }
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  const std::string_view before = content.substr(0, edit.kept_before);
  text::TextBuilder line(256);
  if (!line.ok() ||
      (key != nullptr && value != nullptr && !build_line(before, key, value, &line))) {
    return SM_STATUS_NO_MEMORY;
  }
  return replace_file(path, directory, file.mode,
                      {before, line.view(), from(content, edit.kept_from)});
}

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
  recover_file(path);
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
  const std::string_view whole(path);
  if (whole.ends_with('/')) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const DirectoryName directory(whole);
  if (!directory.ok()) {
    return SM_STATUS_NO_MEMORY;
  }
  if (make_directory(directory.c_str()) != SM_STATUS_SUCCESS) {
    return frame::kFailed;
  }
  const PathLockGuard lock(path, PathLockMode::kExclusive, wait);
  if (lock.status() != SM_STATUS_SUCCESS) {
    return lock.status();
  }
  recover_file(path);
  return change_file(section, key, value, path, directory.c_str());
}

}  // namespace kqsupt::config
