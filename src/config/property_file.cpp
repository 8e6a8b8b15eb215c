// Reading and changing property files, under their lock. A change that was interrupted is not
// mended here: whoever is first to read the file afterwards would not expect it.

#include "config/property_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "config/file_commit.h"
#include "config/ini_text.h"
#include "config/line_reader.h"
#include "config/property_text.h"
#include "frame/heap.h"
#include "ipc/path_lock.h"
#include "os/file_descriptor.h"
#include "text/text_builder.h"
#include "text/typed_value.h"

namespace kqsupt::config {
namespace {

using ipc::PathLockGuard;
using ipc::PathLockMode;
using os::FileDescriptor;

// ---- Reading ----

// Goes on behind the lines of a property, and tells how many bytes they have.
size_t skip_continuations(LineReader& lines, const Property& property) {
  size_t skipped = 0;
  bool continues = property.continues;
  for (std::string_view line; continues && lines.next(line);) {
    continues = parse_continuation(line).continues;
    skipped += line.size();
  }
  return skipped;
}

// The value of the first property that answers for the key, its lines joined by "\n".
SMStatus find_property(LineReader& lines, std::string_view key, text::TextBuilder* value) {
  Property property;
  for (std::string_view line; lines.next(line);) {
    if (!parse_property(line, &property)) {
      continue;
    }
    if (!answers_for(property, key)) {
      skip_continuations(lines, property);
      continue;
    }
    Continuation part{property.value, property.continues};
    bool fits = value->append(part.text);
    while (fits && part.continues) {
      fits = value->append('\n');
      part = lines.next(line) ? parse_continuation(line) : Continuation{{}, false};
      fits = fits && value->append(part.text);
    }
    if (!fits) {
      return SM_STATUS_NO_MEMORY;
    }
    // A value whose end could not be read is none.
    return lines.failed() ? SMStatus{SM_STATUS_UNSUCCESSFUL} : SMStatus{SM_STATUS_SUCCESS};
  }
  return lines.failed() ? SMStatus{SM_STATUS_UNSUCCESSFUL} : SMStatus{SM_STATUS_KEY_NOT_FOUND};
}

SMStatus list_properties(LineReader& lines, char* buffer, uint32_t* size) {
  NameList names(buffer, buffer != nullptr ? *size : 0);
  Property property;
  for (std::string_view line; lines.next(line);) {
    if (parse_property(line, &property)) {
      names.add(property.key);
      skip_continuations(lines, property);
    }
  }
  if (lines.failed()) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  return names.is_empty() ? SMStatus{SM_STATUS_KEY_NOT_FOUND} : names.finish(size);
}

SMStatus read_typed(const char* key, uint32_t type, void* buffer, uint32_t* size, const char* path,
                    bool wait) {
  const PathLockGuard lock(path, PathLockMode::kShared, wait);
  if (lock.status() != SM_STATUS_SUCCESS) {
    return lock.status();
  }
  const FileDescriptor file = FileDescriptor::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!file.is_open()) {
    return SM_STATUS_FILE_OPEN_FAILED;
  }
  const frame::HeapPtr<char> room(static_cast<char*>(std::malloc(LineReader::kBufferSize)));
  if (room == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  LineReader lines(file, {room.get(), LineReader::kBufferSize});
  if (key == nullptr) {
    return list_properties(lines, static_cast<char*>(buffer), size);
  }
  text::TextBuilder value(256);
  if (!value.ok()) {
    return SM_STATUS_NO_MEMORY;
  }
  const SMStatus status = find_property(lines, key, &value);
  return status == SM_STATUS_SUCCESS ? text::value_from_text(value.c_str(), buffer, size, type)
                                     : status;
}

constexpr uint32_t kTypeMask = 0xFF;

// ---- Writing ----

// The value as text; null, with the status told, when it is none.
SMStatus convert_value(uint32_t type, const void* value, uint32_t value_size,
                       frame::HeapPtr<char>* text) {
  uint32_t size = 0;
  SMStatus status = text::value_to_text(value, value_size, nullptr, &size, type);
  if (status != SM_STATUS_BUFFER_TOO_SMALL && status != SM_STATUS_SUCCESS) {
    return status;
  }
  text->reset(static_cast<char*>(std::malloc(std::max(size, 1U))));
  if (*text == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  **text = '\0';
  return text::value_to_text(value, value_size, text->get(), &size, type);
}

// What stays of the content before and behind the lines of a property; none without it.
struct Kept {
  std::string_view before;
  std::string_view behind;
};
std::optional<Kept> cut_out(std::string_view content, std::string_view key) {
  LineReader lines(content);
  Property property;
  for (std::string_view line; lines.next(line);) {
    if (!parse_property(line, &property)) {
      continue;
    }
    const size_t more = skip_continuations(lines, property);
    if (answers_for(property, key)) {
      const auto offset = static_cast<size_t>(line.data() - content.data());
      return Kept{content.substr(0, offset), from(content, offset + line.size() + more)};
    }
  }
  return std::nullopt;
}

SMStatus change_file(const char* key, const char* value, const WholeFile& file, const char* path,
                     const char* directory) {
  const std::optional<Kept> kept = cut_out(file.content(), key);
  // A key that is not there is not added, and nothing else is kept: callers write what they have
  // read.
  return kept.has_value() ? replace_file(path, directory, file.mode,
                                         {kept->before, key, "=", value, "\n", kept->behind})
                          : replace_file(path, directory, file.mode, {});
}

}  // namespace

SMStatus read_property(const char* key, uint32_t type, void* buffer, uint32_t* size,
                       const void* default_value, uint32_t default_size, const char* path,
                       bool wait) {
  if (size == nullptr || path == nullptr ||
      (key == nullptr && (type & kTypeMask) != SMXLT_TYPE_UTF8)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const uint32_t capacity = *size;
  const SMStatus status = read_typed(key, type, buffer, size, path, wait);
  if (status != SM_STATUS_SUCCESS && default_value != nullptr && buffer != nullptr &&
      default_size <= capacity) {
    std::memcpy(buffer, default_value, default_size);
    *size = default_size;
  }
  return status;
}

SMStatus write_property(const char* key, uint32_t type, const void* value, uint32_t value_size,
                        const char* path, bool wait) {
  if (key == nullptr || value == nullptr || path == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const DirectoryName directory(path);
  if (!directory.ok()) {
    return SM_STATUS_NO_MEMORY;
  }
  const PathLockGuard lock(path, PathLockMode::kExclusive, wait);
  if (lock.status() != SM_STATUS_SUCCESS) {
    return lock.status();
  }
  WholeFile file;
  SMStatus status = read_whole_file(path, &file);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  frame::HeapPtr<char> text;
  status = convert_value(type, value, value_size, &text);
  return status == SM_STATUS_SUCCESS ? change_file(key, text.get(), file, path, directory.c_str())
                                     : status;
}

}  // namespace kqsupt::config
