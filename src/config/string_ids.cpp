// Looking up texts in INI files, and the range of IDs that a maker of equipment has texts of its
// own for.

#include "config/string_ids.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "config/ini_file.h"
#include "config/install_paths.h"
#include "frame/heap.h"
#include "frame/status.h"
#include "ipc/local_mutex.h"
#include "text/conversion.h"

namespace kqsupt::config {
namespace {

constexpr uint32_t kLongestText = 2048;

// The default section is the one of US English; these IDs stand for it as well.
constexpr uint32_t kDefaultLanguage = 0;
constexpr char kDefaultSection[] = "ASCII EN_US DEFAULT STRING ID SECTION";
constexpr char kOtherSection[] = "MISCELLANEOUS STRING ID SECTION";

uint32_t language_of(const uint32_t* wanted) {
  const uint32_t language = wanted != nullptr ? *wanted : kDefaultLanguage;
  return language == 437 || language == 1033 ? kDefaultLanguage : language;
}

SMStatus read_text(uint32_t id, uint32_t language, const char* path, char* text) {
  char key[32];
  std::snprintf(key, sizeof key, "%" PRIX32 ":%" PRIX32, language, id);
  uint32_t size = kLongestText;
  const SMStatus status =
      read_ini_value(language == kDefaultLanguage ? kDefaultSection : kOtherSection, key,
                     SMINI_TYPE_UTF8, text, &size, nullptr, 0, path, true);
  if (status == SM_STATUS_SUCCESS) {
    text[std::strcspn(text, "\r\n")] = '\0';
  }
  return status;
}

// The text, or the one that says why it could not be looked up; null when there is none.
const char* find_text(uint32_t id, uint32_t* language, const char* path, char* text) {
  if (path == nullptr || *path == '\0') {
    return "Invalid Path File Name";
  }
  if (text == nullptr) {
    return "Failed to allocate memory";
  }
  uint32_t wanted = language_of(language);
  SMStatus status = SM_STATUS_KEY_NOT_FOUND;
  if (wanted != kDefaultLanguage) {
    status = read_text(id, wanted, path, text);
  }
  if (status != SM_STATUS_SUCCESS && status != SM_STATUS_NO_MEMORY) {
    wanted = kDefaultLanguage;
    if (language != nullptr) {
      *language = kDefaultLanguage;
    }
    status = read_text(id, wanted, path, text);
  }
  if (status == SM_STATUS_NO_MEMORY) {
    return "Failed to allocate memory";
  }
  return status == SM_STATUS_SUCCESS ? text : nullptr;
}

// ---- Texts of a maker of equipment ----

// IDs of this range are counted on by the offset.
struct Range {
  uint32_t base = 0;  // 0: not read yet, or to be read again
  uint32_t size = 0;
  uint32_t offset = 0;

  [[nodiscard]] uint32_t map(uint32_t id) const {
    return id >= base && id <= uint64_t{base} + size ? id + offset : id;
  }
};
constinit ipc::ForkSafeMutex range_mutex;
constinit Range known_range;

// False, with the number as it was, when neither a number nor that there is none could be found out:
// memory was short, or the product has no directory for INI files.
bool read_number(const char* key, uint32_t* number) {
  uint32_t read = *number;
  uint32_t size = sizeof read;
  const SMStatus status = read_own_ini_value("OEM Configuration", key, SMINI_TYPE_U32, &read, &size,
                                             number, sizeof *number, "kqisdy32.ini", true);
  if (status == SM_STATUS_NO_MEMORY || status == frame::kFailed) {
    return false;
  }
  *number = read;
  return true;
}

Range current_range() {
  {
    const ipc::LocalMutexGuard guard(range_mutex.held_over_forks());
    if (known_range.base != 0) {
      return known_range;
    }
  }
  constexpr Range kUsual{2304, 32, 0};
  Range range = kUsual;
  if (!read_number("BaseID", &range.base) || !read_number("oemRange", &range.size) ||
      !read_number("offset", &range.offset)) {
    return kUsual;  // for this time: a moment's lack must not decide for the whole process
  }
  const ipc::LocalMutexGuard guard(range_mutex.held_over_forks());
  known_range = range;
  return range;
}

}  // namespace

uint32_t get_utf8_string(uint32_t id, uint32_t* language, const char* path, char* buffer,
                         uint32_t* size) {
  const frame::HeapPtr<char> room(static_cast<char*>(std::malloc(kLongestText)));
  const char* text = find_text(id, language, path, room.get());
  uint32_t copied = 0;
  if (text != nullptr && buffer != nullptr && size != nullptr) {
    const size_t needed = std::strlen(text) + 1;
    if (needed <= *size) {
      std::memcpy(buffer, text, needed);
      copied = static_cast<uint32_t>(needed);
    }
  }
  if (size != nullptr) {
    *size = copied;
  }
  return copied;
}

uint32_t get_ucs2_string(uint32_t id, uint32_t* language, ustring* buffer, uint32_t* size) {
  uint32_t result = 0;
  char text[1024];
  const frame::HeapPtr<char> path(make_path(kQuillance, kIniPath, "ini", "kqsdst32.ini"));
  const uint32_t mapped = current_range().map(id);
  if (path != nullptr) {
    result = sizeof text;
    get_utf8_string(mapped, language, path.get(), text, &result);
  }
  if (result != 0 && buffer != nullptr && size != nullptr) {
    const uint32_t needed = 2 * result;
    result = needed;
    if (*size >= needed) {
      // A text that cannot be converted to its end leaves the buffer alone.
      uint32_t converted = *size;
      const bool converts = text::utf8_to_ucs2(nullptr, &converted, text) == SM_STATUS_SUCCESS &&
                            text::utf8_to_ucs2(buffer, &converted, text) == SM_STATUS_SUCCESS;
      result = converts ? converted : 0;
    }
  }
  if (size != nullptr) {
    *size = result;
  }
  return result;
}

}  // namespace kqsupt::config
