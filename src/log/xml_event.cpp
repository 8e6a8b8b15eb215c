// Building elements and putting them into the document.

#include "log/xml_event.h"

#include <fcntl.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>

#include "frame/heap.h"
#include "frame/status.h"
#include "log/event_file.h"
#include "log/log_sizes.h"
#include "log/xml_buffer.h"
#include "net/host_name.h"
#include "os/system_log.h"
#include "text/sized_string.h"

namespace kqsupt::log {
namespace {

constexpr std::string_view kBegin = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog>";
constexpr std::string_view kEnd = "</EventLog>";
constexpr off_t kDeclarationSize = 38;
constexpr const char* kElement = "LogEntry";
constexpr const char* kHelp =
    "help/qor/en/msgguide/wwhelp/wwhimpl/common/html/"
    "wwhelp.htm?context=Messages_Guide&topic=0000";

constexpr size_t kLongestDescription = 8191;
constexpr uint32_t kFirstCapacity = 2048;

// None, or one of 1 to `most` bytes.
bool is_between(const char* text, size_t most) {
  return text == nullptr || (*text != '\0' && std::strlen(text) <= most);
}
bool is_valid_user(const char* text) {
  return is_between(text, 511);
}

// ---- An element ----

struct FreeBuffer {
  void operator()(SMXGBuf* buffer) const { xml_free(buffer, Content::kFree); }
};
using Buffer = std::unique_ptr<SMXGBuf, FreeBuffer>;

template <class Number>
XmlValue number(const Number& value, uint32_t type) {
  return {&value, sizeof value, type, nullptr};
}

XmlValue words(const char* text, const SMXGValueFormat* format = nullptr) {
  const char* given = text != nullptr ? text : "";
  return {given, static_cast<uint32_t>(std::strlen(given) + 1), SMXLT_TYPE_UTF8, format};
}

// The element between the beginning and the end of a document. Null when memory is short, or a
// value has no text.
Buffer build_document(const Event& event, const char* category) {
  constexpr SMXGValueFormat kEscaped{0, 1};
  constexpr SMXGValueFormat kBytes{1024, 0};
  const int64_t seconds = time(nullptr);
  const auto date = static_cast<int32_t>(seconds);
  char host[256];
  uint32_t host_size = sizeof host;
  if (net::ip_host_name(host, &host_size) != SM_STATUS_SUCCESS) {
    host[0] = '\0';
  }
  struct Child {
    const char* name;
    XmlValue value;
  };
  const Child children[] = {
      {"TimeStamp", number(seconds, SMXLT_TYPE_S64)},
      {"DateTime", number(date, SMXLT_TYPE_TIME)},
      {"ComputerName", words(host)},
      {"Type", number(event.type, SMXLT_TYPE_U16)},
      {"ID", number(event.id, SMXLT_TYPE_U32)},
      {"Link", words(event.link, &kEscaped)},
      {"UserInfo", words(event.user)},
      {"Source", words(event.source)},
      {"Category", words(category)},
      {"Description", words(event.description)},
      {"Data",
       {event.data_size != 0 ? event.data : nullptr, event.data_size, SMXLT_TYPE_BINARY, &kBytes}},
  };
  Buffer buffer(xml_alloc(kFirstCapacity, 0));
  bool built = buffer != nullptr && text::append(buffer->string, kBegin) &&
               xml_begin_node(buffer.get(), kElement, nullptr) == SM_STATUS_SUCCESS;
  for (const Child& child : children) {
    built = built && xml_node(buffer.get(), child.name, nullptr, child.value) == SM_STATUS_SUCCESS;
  }
  built = built && xml_end_node(buffer.get(), kElement) == SM_STATUS_SUCCESS &&
          text::append(buffer->string, kEnd);
  return built ? std::move(buffer) : nullptr;
}

// ---- The document ----

// Where the last end of a document begins, which is behind the declaration; none when it was lost.
std::optional<off_t> find_end(const os::FileDescriptor& file, off_t size) {
  // Nearly always it is the last thing in the file.
  off_t block = kEnd.size();
  char bytes[4096];
  for (off_t end = size; end - kDeclarationSize >= static_cast<off_t>(kEnd.size());) {
    const off_t start = std::max(kDeclarationSize, end - block);
    const auto count = static_cast<size_t>(end - start);
    if (file.read_all_at(bytes, count, start) != static_cast<ssize_t>(count)) {
      return std::nullopt;
    }
    const size_t found = std::string_view(bytes, count).rfind(kEnd);
    if (found != std::string_view::npos) {
      return start + static_cast<off_t>(found);
    }
    // The next block ends with what may be the rest of one that begins in it.
    end = start == kDeclarationSize ? 0 : start + static_cast<off_t>(kEnd.size()) - 1;
    block = sizeof bytes;
  }
  return std::nullopt;
}

// Whether these bytes are what a killed process left of an element and the end behind it, in place
// of the end before it.
bool is_unfinished(std::string_view rest) {
  constexpr std::string_view kElementBegin = "<LogEntry><TimeStamp>";
  if (rest.starts_with(kElementBegin)) {
    return true;
  }
  for (size_t written = 1; written < kElementBegin.size(); ++written) {
    char bytes[kElementBegin.size()];
    std::copy_n(kEnd.data(), kEnd.size(), bytes);
    std::copy_n(kElementBegin.data(), written, bytes);
    if (rest == std::string_view(bytes, std::max(written, kEnd.size()))) {
      return true;
    }
  }
  return !rest.empty() && rest != kEnd &&
         (kEnd.starts_with(rest) || kElementBegin.starts_with(rest));
}

// Takes away the element that a killed process did not finish, and the log has a place to go on.
// One that ends in anything else is left as it is.
std::optional<off_t> take_away_unfinished(LockedLog& log) {
  constexpr std::string_view kElementEnd = "</LogEntry>";
  const Tail tail(log);
  std::string_view rest = tail.bytes();
  const size_t end = rest.rfind(kElementEnd);
  if (end != std::string_view::npos) {
    rest.remove_prefix(end + kElementEnd.size());
  } else if (rest.starts_with(kBegin)) {
    rest.remove_prefix(kBegin.size());
  } else {
    return std::nullopt;
  }
  const off_t place = log.size() - static_cast<off_t>(rest.size());
  return is_unfinished(rest) && log.cut_to(place) ? std::optional(place) : std::nullopt;
}

// Puts the document in the place of the last end, which is at `place`. What was behind that end is
// nobody's and is there again when this fails.
SMStatus replace_end(LockedLog& log, off_t place, std::string_view document) {
  const auto count = std::min(document.size(), static_cast<size_t>(log.size() - place));
  if (count == kEnd.size()) {
    return log.write(place, document, kEnd);
  }
  const auto replaced = frame::heap_array<char>(count);
  if (replaced == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  if (log.file().read_all_at(replaced.get(), count, place) != static_cast<ssize_t>(count)) {
    return frame::kFailed;
  }
  return log.write(place, document, {replaced.get(), count});
}

// `document` is a whole one with one element, of which a log that has a beginning takes the rest.
SMStatus insert_element(LockedLog& log, std::string_view document) {
  log.settle_mode();
  if (log.size() < kDeclarationSize) {
    char before[kDeclarationSize];
    const ssize_t count = log.file().read_all_at(before, sizeof before, 0);
    return log.write(0, document, {before, static_cast<size_t>(std::max<ssize_t>(count, 0))});
  }
  document.remove_prefix(kBegin.size());
  if (const auto end = find_end(log.file(), log.size())) {
    return replace_end(log, *end, document);
  }
  const auto end = take_away_unfinished(log);
  return end.has_value() ? log.write(*end, document, {}) : SMStatus{SM_STATUS_OPERATION_FAILED};
}

// ---- An event on its way into the file ----

class XmlEvent {
 public:
  explicit XmlEvent(const Event& event) : event_(event) {}

  // Checks the texts and builds the element.
  [[nodiscard]] SMStatus prepare();

  // Behind prepare().
  [[nodiscard]] SMStatus append(const char* path, uint32_t max_size) const;

 private:
  const Event& event_;
  Buffer document_;
};

SMStatus XmlEvent::prepare() {
  const bool is_valid = has_valid_data(event_) && is_valid_user(event_.user) &&
                        is_valid_user(event_.source) &&
                        is_between(event_.description, kLongestDescription);
  if (!is_valid) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const char* category = os::event_source_name(event_.category);
  if (category != nullptr) {
    document_ = build_document(event_, category);
  }
  return document_ != nullptr ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
}

SMStatus XmlEvent::append(const char* path, uint32_t max_size) const {
  const std::string_view text(document_->string.content, document_->string.length);
  std::optional<LockedLog> log;
  log.emplace(path, O_RDWR);
  if (log->status() == SM_STATUS_SUCCESS &&
      log->back_up_when_full(text.size() - kBegin.size() - kEnd.size(), max_size)) {
    log.reset();
    // The event is what matters: it is written although this one could not be.
    (void)append_xml_event(
        path, {kInformation, 1, 1, event_.source, kBackupMade, nullptr, 0, event_.user, nullptr},
        default_max_size());
    log.emplace(path, O_RDWR);
  }
  return log->status() == SM_STATUS_SUCCESS ? insert_element(*log, text) : log->status();
}

}  // namespace

SMStatus append_xml_event(const char* path, const Event& event, uint32_t max_size) {
  if (path == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  XmlEvent xml(event);
  const SMStatus status = xml.prepare();
  if (*path == '\0') {  // no file has such a name
    return status == SM_STATUS_SUCCESS ? frame::kFailed : status;
  }
  if (status == frame::kFailed) {
    // As for the text log: the directory is made before it shows that there is nothing to write.
    (void)make_directory_of(path);
  }
  return status == SM_STATUS_SUCCESS ? xml.append(path, max_size) : status;
}

SMStatus clear_xml_log(const char* path, uint16_t category, const char* user, const char* source) {
  if (path == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  const Event event{kInformation, category, 0, source, kCleared, nullptr, 0, user, kHelp};
  XmlEvent xml(event);
  // A log whose clearing cannot be told of is not cleared.
  const SMStatus ready = xml.prepare();
  const SMStatus status = *path != '\0' ? delete_log(path, ready) : frame::kFailed;
  return status == SM_STATUS_SUCCESS ? xml.append(path, default_max_size()) : status;
}

}  // namespace kqsupt::log
