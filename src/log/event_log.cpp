// Where the logs lie, and what goes into which.

#include "log/event_log.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string_view>

#include "config/directories.h"
#include "config/install_paths.h"
#include "frame/heap.h"
#include "log/event_file.h"
#include "log/log_sizes.h"
#include "log/text_event.h"
#include "log/xml_event.h"
#include "os/system_log.h"
#include "text/text_builder.h"

namespace kqsupt::log {
namespace {

using config::Directory;

// The bits of `flags`.
constexpr uint32_t kSystemLog = 2;
constexpr uint32_t kTextLog = 4;
constexpr uint32_t kXmlLog = 8;

// SM_STATUS_UNSUCCESSFUL for no log at all, 1 for one that has no file here.
SMStatus check_files(uint32_t flags) {
  if (flags == 0) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  constexpr SMStatus kNoFile = 1;
  return (flags & kSystemLog) != 0 ? kNoFile : SMStatus{SM_STATUS_SUCCESS};
}

// The path of the text log or the XML log.
class LogPath {
 public:
  explicit LogPath(uint32_t log, Directory asked = Directory::kMustBeThere) : text_(256) {
    const auto directory = config::copy_path(config::kQuillance, config::kLogPath, &status_, asked);
    if (status_ != SM_STATUS_SUCCESS) {
      return;
    }
    const char* name = log == kXmlLog ? "/log/kqsys32.xml" : "/log/kqsys32.log";
    if (!text_.append(directory.get()) || !text_.append(name)) {
      status_ = SM_STATUS_NO_MEMORY;
    }
  }

  // What asking for the directory of logs answered.
  [[nodiscard]] SMStatus status() const { return status_; }
  [[nodiscard]] const char* c_str() const { return text_.c_str(); }

 private:
  text::TextBuilder text_;
  SMStatus status_ = SM_STATUS_SUCCESS;
};

// Whether the directory of logs is there, without what composing a path needs.
SMStatus ask_for_directory() {
  uint32_t size = UINT32_MAX;
  return config::get_path(config::kQuillance, config::kLogPath, nullptr, &size);
}

// Appends to one of the logs. The status is that of the path; `result` is what became of the event.
//
// A log that takes an event lies in a directory that is there: this is not asked for once more. What
// has to ask is the first event for a log, so that no lock is made for one in a directory that never
// was there, and an event that the log does not take.
SMStatus append_to(uint32_t log, const Event& event, SMStatus* result) {
  static constinit std::atomic<bool> took_text = false;
  static constinit std::atomic<bool> took_xml = false;
  std::atomic<bool>& took_one = log == kXmlLog ? took_xml : took_text;
  const bool has_category = os::event_source_name(event.category) != nullptr;
  const bool is_asked = !has_category || !took_one.load(std::memory_order_relaxed);
  const LogPath path(log, is_asked ? Directory::kMustBeThere : Directory::kMayBeMissing);
  if (path.status() != SM_STATUS_SUCCESS) {
    return path.status();
  }
  const auto append = log == kXmlLog ? append_xml_event : append_text_event;
  *result = append(path.c_str(), event, max_size_of(path.c_str()));
  const bool is_taken = has_category && *result == SM_STATUS_SUCCESS;
  if (is_asked && is_taken) {
    took_one.store(true, std::memory_order_relaxed);
  }
  if (is_asked || is_taken) {
    return SM_STATUS_SUCCESS;
  }
  const SMStatus status = ask_for_directory();
  if (status != SM_STATUS_SUCCESS) {
    took_one.store(false, std::memory_order_relaxed);
  }
  return status;
}

SMStatus copy_path_out(std::string_view path, char* buffer, uint32_t* size) {
  const uint32_t capacity = *size;
  *size = static_cast<uint32_t>(path.size() + 1);
  if (buffer == nullptr || capacity < *size) {
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  *std::copy(path.begin(), path.end(), buffer) = '\0';
  return SM_STATUS_SUCCESS;
}

}  // namespace

SMStatus append_event(uint32_t flags, const Event& event) {
  if (flags == 0) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if ((flags & kSystemLog) != 0) {
    (void)os::append_to_system_log(
        {event.type, event.category, event.id, event.source, event.description});
  }
  SMStatus status = SM_STATUS_SUCCESS;
  SMStatus result = SM_STATUS_SUCCESS;
  if ((flags & kTextLog) != 0) {
    // Whether it was written is not told, and callers do not expect it to be.
    SMStatus untold = SM_STATUS_SUCCESS;
    status = append_to(kTextLog, event, &untold);
  }
  if (status == SM_STATUS_SUCCESS && (flags & kXmlLog) != 0) {
    status = append_to(kXmlLog, event, &result);
  }
  return status == SM_STATUS_SUCCESS ? result : status;
}

// Each log is cleared whatever became of the other one; the first failure is told.
SMStatus clear_logs(uint32_t flags, uint16_t category, const char* source) {
  SMStatus result = check_files(flags);
  if (result != SM_STATUS_SUCCESS) {
    return result;
  }
  for (const uint32_t log : {flags & kTextLog, flags & kXmlLog}) {
    if (log == 0) {
      continue;
    }
    const LogPath path(log);
    SMStatus status = path.status();
    if (status == SM_STATUS_SUCCESS) {
      status = log == kTextLog ? clear_text_log(path.c_str(), category, source)
                               : clear_xml_log(path.c_str(), category, "Local System", source);
    }
    result = result == SM_STATUS_SUCCESS ? status : result;
  }
  return result;
}

SMStatus log_path(uint32_t flags, char* buffer, uint32_t* size) {
  constexpr uint32_t kSmallestCapacity = 256;
  if (size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (const SMStatus status = check_files(flags); status != SM_STATUS_SUCCESS) {
    return status;
  }
  if ((flags & (kTextLog | kXmlLog)) == 0) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  if (buffer == nullptr || *size < kSmallestCapacity) {
    *size = kSmallestCapacity;
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  const LogPath path((flags & kXmlLog) != 0 ? kXmlLog : kTextLog);
  return path.status() == SM_STATUS_SUCCESS ? copy_path_out(path.c_str(), buffer, size)
                                            : path.status();
}

SMStatus backup_log_path(uint32_t flags, char* buffer, uint32_t* size) {
  const SMStatus status = log_path(flags, buffer, size);
  if (status == SM_STATUS_SUCCESS) {
    make_backup_name(buffer);
  }
  return status;
}

SMStatus backup_path_of(const char* path, char* buffer, uint32_t* size) {
  if (path == nullptr || size == nullptr || std::strlen(path) < 2) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const SMStatus status = copy_path_out(path, buffer, size);
  if (status == SM_STATUS_SUCCESS) {
    make_backup_name(buffer);
  }
  return status;
}

SMStatus look_for_log(const char* path) {
  uint32_t size = 0;
  (void)config::size_of_file(path, &size);
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::log
