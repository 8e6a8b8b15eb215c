// Composing and writing records.

#include "log/text_event.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>

#include "frame/status.h"
#include "log/event_file.h"
#include "log/log_sizes.h"
#include "net/host_name.h"
#include "os/system_log.h"
#include "text/calendar.h"
#include "text/code_point.h"
#include "text/conversion.h"
#include "text/sized_string_convert.h"

namespace kqsupt::log {
namespace {

using text::append_ascii;
using text::append_converted;

// ---- The block that a file begins with ----

constexpr std::string_view kHeaderText =
    "#-------------------------------\r\n"
    "# Do not remove this block\r\n"
    "# This data file is parsed\r\n"
    "#------------------------------- \r\n"
    "\r\n";
constexpr size_t kHeaderSize = 2 * (1 + kHeaderText.size());
static_assert(kHeaderSize == 256);

// Little-endian with its mark on every host, although the records are in the host's own order:
// readers know the block by its bytes.
constexpr auto kHeader = [] {
  std::array<uint8_t, kHeaderSize> bytes{0xFF, 0xFE};
  for (size_t i = 0; i < kHeaderText.size(); ++i) {
    bytes[2 * i + 2] = static_cast<uint8_t>(kHeaderText[i]);
  }
  return std::bit_cast<std::array<ustring, kHeaderSize / sizeof(ustring)>>(bytes);
}();

// ---- A record ----

constexpr uint32_t kMostSourceUnits = 1023;
constexpr uint32_t kMostDescriptionUnits = 16383;

struct TypeLabel {
  uint16_t type;
  const char* line;
};
constexpr TypeLabel kTypeLabels[] = {
    {kNone, "Type: None\r\n"},
    {kError, "Type: Error\r\n"},
    {kWarning, "Type: Warning\r\n"},
    {kInformation, "Type: Information\r\n"},
    {kAuditSuccess, "Type: Audit Success\r\n"},
    {kAuditFailure, "Type: Audit Failure\r\n"},
};

// Null for a type that no record has.
const char* label_of(uint16_t type) {
  for (const TypeLabel& label : kTypeLabels) {
    if (label.type == type) {
      return label.line;
    }
  }
  return nullptr;
}

SMStatus check_length(uint32_t units, uint32_t most) {
  return units >= 1 && units <= most ? SM_STATUS_SUCCESS : SM_STATUS_UNSUCCESSFUL;
}

// The length in units of a text, from 1 to `most`.
SMStatus measure(const char* text, uint32_t most, uint32_t* units) {
  uint32_t size = 0;
  const SMStatus status = text::utf8_to_ucs2(nullptr, &size, text);
  if (status != SM_STATUS_SUCCESS) {
    return status;
  }
  *units = static_cast<uint32_t>(size / sizeof(ustring)) - 1;
  return check_length(*units, most);
}

// The length in units of both texts.
SMStatus measure_texts(const Event& event, uint32_t* units) {
  uint32_t source_units = 0;
  uint32_t description_units = 0;
  const SMStatus source = measure(event.source, kMostSourceUnits, &source_units);
  const SMStatus description =
      measure(event.description, kMostDescriptionUnits, &description_units);
  *units = source_units + description_units;
  // Texts that cannot be converted come before those of a wrong length.
  for (const SMStatus status : {source, description}) {
    if (status != SM_STATUS_SUCCESS && status != SM_STATUS_UNSUCCESSFUL) {
      return status;
    }
  }
  return source != SM_STATUS_SUCCESS ? source : description;
}

// The size of a record in bytes, as the check for a backup reckons it, by the units of its texts.
uint64_t estimate(const Event& event, uint64_t units) {
  return (units + (event.data_size / 16 + 1) * 83 + 1024) * 2;
}

class Record {
 public:
  Record() = default;
  ~Record() { text::release(string_); }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;

  // Puts the event behind the header. Fails when memory is short, or a text is not valid:
  // measure_texts() tells in which way.
  [[nodiscard]] SMStatus compose(const Event& event, const char* category, const char* type) {
    const size_t source_size = event.source != nullptr ? std::strlen(event.source) : 0;
    const size_t description_size =
        event.description != nullptr ? std::strlen(event.description) : 0;
    if (source_size > kMostSourceUnits * text::kMostUtf8Bytes ||
        description_size > kMostDescriptionUnits * text::kMostUtf8Bytes) {
      return SM_STATUS_UNSUCCESSFUL;
    }
    text::allocate(string_, static_cast<uint32_t>(kHeaderSize +
                                                  estimate(event, source_size + description_size)));
    if (string_.content == nullptr ||
        !text::append_units(string_, kHeader.data(), kHeader.size())) {
      return SM_STATUS_NO_MEMORY;
    }
    char id[16];
    const auto id_size = static_cast<size_t>(std::to_chars(id, id + sizeof id, event.id).ptr - id);
    seconds_ = time(nullptr);
    text::CalendarText calendar;
    text::write_calendar(seconds_, calendar);
    SMStatus status = SM_STATUS_SUCCESS;
    add_ascii({"EventID: ", {id, id_size}, "\r\nSource: "}, &status);
    add_text(event.source, kMostSourceUnits, &status);
    add_ascii(
        {"\r\nCategory: ", category, "\r\n", type, "Date and Time: ", calendar, "\r\nComputer: "},
        &status);
    add_host(&status);
    add_ascii({"\r\nDescription:\r\n"}, &status);
    add_text(event.description, kMostDescriptionUnits, &status);
    add_ascii({"\r\nData: Bytes in Hex\r\n"}, &status);
    if (status == SM_STATUS_SUCCESS && event.data_size != 0) {
      status = text::append_hex_dump(string_,
                                     {static_cast<const uint8_t*>(event.data), event.data_size});
    }
    add_ascii({"\r\n"}, &status);
    return status;
  }

  // The length in units of both texts.
  [[nodiscard]] uint32_t text_units() const { return text_units_; }
  // When it says that the event happened.
  [[nodiscard]] time_t seconds() const { return seconds_; }
  void swap(Record& other) {
    std::swap(string_, other.string_);
    std::swap(text_units_, other.text_units_);
    std::swap(seconds_, other.seconds_);
  }

  [[nodiscard]] std::string_view with_header() const {
    return {reinterpret_cast<const char*>(string_.content), string_.length * sizeof(ustring)};
  }
  [[nodiscard]] std::string_view without_header() const {
    return {with_header().data() + kHeaderSize, with_header().size() - kHeaderSize};
  }

 private:
  // Each of these does nothing once something has failed.
  void add_ascii(std::initializer_list<std::string_view> parts, SMStatus* status) {
    for (const std::string_view part : parts) {
      if (*status == SM_STATUS_SUCCESS && !append_ascii(string_, part)) {
        *status = SM_STATUS_NO_MEMORY;
      }
    }
  }
  void add_text(const char* text, uint32_t most, SMStatus* status) {
    if (*status != SM_STATUS_SUCCESS) {
      return;
    }
    const uint32_t before = string_.length;
    *status = append_converted(string_, text);
    if (*status == SM_STATUS_SUCCESS) {
      const uint32_t units = string_.length - before;
      *status = check_length(units, most);
      text_units_ += units;
    }
  }

  // No event is lost because its host has no name, or one that is no text.
  void add_host(SMStatus* status) {
    char name[256];
    uint32_t size = sizeof name;
    if (*status == SM_STATUS_SUCCESS && net::ip_host_name(name, &size) == SM_STATUS_SUCCESS &&
        append_converted(string_, name) == SM_STATUS_NO_MEMORY) {
      *status = SM_STATUS_NO_MEMORY;
    }
  }

  SMSSUCS2Str string_{};
  uint32_t text_units_ = 0;
  time_t seconds_ = 0;
};

// ---- The file ----

// Texts as the bytes that they have in a record.
template <size_t kSize>
struct Units {
  ustring units[kSize - 1];
  explicit constexpr Units(const char (&text)[kSize]) : units{} {
    std::copy_n(text, kSize - 1, units);
  }
  [[nodiscard]] std::string_view bytes() const {
    return {reinterpret_cast<const char*>(units), sizeof units};
  }
};
constexpr Units kLineEnd("\r\n");
constexpr Units kRecordBegin("EventID: ");
constexpr Units kHeading("\r\nData: Bytes in Hex\r\n");
constexpr Units kDumpBegin("\r\n0x");
constexpr size_t kDumpLineSize = 81 * sizeof(ustring);
// What tells the end of a record: the last line of its dump, or the heading, and the empty line.
constexpr size_t kEndSize = 2 * sizeof kLineEnd + kDumpLineSize;

// Whether the last thing in these bytes is a whole record.
bool ends_record(std::string_view bytes) {
  if (!bytes.ends_with(kLineEnd.bytes())) {
    return false;
  }
  bytes.remove_suffix(sizeof kLineEnd);
  if (bytes.ends_with(kHeading.bytes())) {
    return true;
  }
  if (!bytes.ends_with(kLineEnd.bytes()) || bytes.size() < sizeof kLineEnd + kDumpLineSize) {
    return false;
  }
  bytes.remove_prefix(bytes.size() - sizeof kLineEnd - kDumpLineSize);
  return bytes.starts_with(kDumpBegin.bytes());
}

bool ends_with_record(const LockedLog& log) {
  char end[kEndSize];
  const off_t size = std::min<off_t>(sizeof end, log.size());
  return log.file().read_all_at(end, static_cast<size_t>(size), log.size() - size) == size &&
         ends_record({end, static_cast<size_t>(size)});
}

// Whether these bytes, of which there may be few, are a record that lacks its end.
bool is_unfinished(std::string_view bytes) {
  const std::string_view begin = kRecordBegin.bytes();
  if (bytes.empty() || !(bytes.starts_with(begin) || begin.starts_with(bytes))) {
    return false;
  }
  // No whole one is in them.
  for (size_t end = bytes.find(kLineEnd.bytes()); end != std::string_view::npos;
       end = bytes.find(kLineEnd.bytes(), end + 1)) {
    if (ends_record({bytes.data(), end + sizeof kLineEnd})) {
      return false;
    }
  }
  return true;
}

// Where a record begins that lacks its end: behind the header, or behind the last whole record. None
// when something else is there.
std::optional<off_t> place_of_unfinished(const Tail& tail) {
  const std::string_view bytes = tail.bytes();
  const auto is_place = [bytes](size_t place) {
    return place <= bytes.size() && is_unfinished({bytes.data() + place, bytes.size() - place});
  };
  for (size_t end = bytes.rfind(kLineEnd.bytes()); end != std::string_view::npos && end != 0;
       end = bytes.rfind(kLineEnd.bytes(), end - 1)) {
    const size_t place = end + sizeof kLineEnd;
    if (ends_record({bytes.data(), place})) {
      return is_place(place) ? std::optional(tail.offset() + static_cast<off_t>(place))
                             : std::nullopt;
    }
  }
  return tail.offset() == 0 && is_place(kHeaderSize) ? std::optional<off_t>(kHeaderSize)
                                                     : std::nullopt;
}

// Whether all of the file is the beginning of its block.
bool is_unfinished_header(const LockedLog& log) {
  char bytes[kHeaderSize];
  const off_t size = log.size();
  return size != 0 && size < static_cast<off_t>(sizeof bytes) &&
         log.file().read_all_at(bytes, static_cast<size_t>(size), 0) == size &&
         std::memcmp(bytes, kHeader.data(), static_cast<size_t>(size)) == 0;
}

// Takes away the block or the record that a killed process did not finish. A file that ends in
// anything else is left as it is. What is taken never was acknowledged: a record that was ends as
// one.
void take_away_unfinished(LockedLog& log) {
  if (is_unfinished_header(log)) {
    (void)log.cut_to(0);
    return;
  }
  if (log.size() <= static_cast<off_t>(kHeaderSize) || ends_with_record(log)) {
    return;
  }
  if (const auto place = place_of_unfinished(Tail(log))) {
    (void)log.cut_to(*place);
  }
}

// ---- An event on its way into the file ----

class TextEvent {
 public:
  explicit TextEvent(const Event& event) : event_(event) {}

  // Checks the texts, and composes the record where there will be one: without memory nothing has
  // changed.
  [[nodiscard]] SMStatus prepare();

  // False for an event of a category that no record has. It is no failure: callers have always lived
  // with it.
  [[nodiscard]] bool has_category() const { return category_ != nullptr; }

  // Behind prepare(), and for what has a category.
  [[nodiscard]] SMStatus append(const char* path, uint32_t max_size);

 private:
  [[nodiscard]] SMStatus compose(Record& record) const {
    return record.compose(event_, category_, type_);
  }
  [[nodiscard]] SMStatus write(LockedLog& log);

  const Event& event_;
  const char* category_ = nullptr;
  const char* type_ = nullptr;
  uint64_t size_ = 0;
  Record record_;
};

SMStatus TextEvent::prepare() {
  category_ = os::event_source_name(event_.category);
  type_ = label_of(event_.type);
  const bool has_record = category_ != nullptr && type_ != nullptr;
  const SMStatus composed = has_record ? compose(record_) : SMStatus{SM_STATUS_SUCCESS};
  uint32_t units = record_.text_units();
  if (!has_record || composed != SM_STATUS_SUCCESS) {
    // Its texts have not shown yet whether they are valid, or which one is not.
    const SMStatus status = measure_texts(event_, &units);
    if (status != SM_STATUS_SUCCESS) {
      return status;
    }
  }
  size_ = estimate(event_, units);
  return composed;
}

SMStatus TextEvent::append(const char* path, uint32_t max_size) {
  // A log that would have to be made for an event that it does not take is not made, but for its
  // directory.
  if (type_ == nullptr && make_directory_of(path) != SM_STATUS_SUCCESS) {
    return frame::kFailed;
  }
  constexpr int kAccess = O_RDWR | O_APPEND;
  const auto missing = type_ != nullptr ? LockedLog::Missing::kMake : LockedLog::Missing::kLeave;
  std::optional<LockedLog> log;
  log.emplace(path, kAccess, missing);
  if (log->status() == SM_STATUS_SUCCESS && log->back_up_when_full(size_, max_size)) {
    log.reset();
    // The event is what matters: it is written although this one could not be.
    (void)append_text_event(
        path, {kInformation, 1, 1, event_.source, kBackupMade, nullptr, 0, nullptr, nullptr},
        default_max_size());
    log.emplace(path, kAccess, missing);
  }
  if (type_ == nullptr) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  return log->status() == SM_STATUS_SUCCESS ? write(*log) : log->status();
}

SMStatus TextEvent::write(LockedLog& log) {
  // The times of the records are in their order, however long others were waited for.
  if (record_.seconds() != time(nullptr)) {
    Record later;
    if (compose(later) == SM_STATUS_SUCCESS) {
      record_.swap(later);
    }
  }
  log.settle_mode();
  take_away_unfinished(log);
  const bool has_header = log.size() >= static_cast<off_t>(kHeaderSize);
  return log.write(log.size(), has_header ? record_.without_header() : record_.with_header(), {});
}

}  // namespace

SMStatus append_text_event(const char* path, const Event& event, uint32_t max_size) {
  if (path == nullptr || event.source == nullptr || !has_valid_data(event)) {
    return SM_STATUS_UNSUCCESSFUL;
  }
  TextEvent text(event);
  const SMStatus status = text.prepare();
  return status == SM_STATUS_SUCCESS && text.has_category() ? text.append(path, max_size) : status;
}

SMStatus clear_text_log(const char* path, uint16_t category, const char* source) {
  const Event event{kInformation, category, 0, source, kCleared, nullptr, 0, nullptr, nullptr};
  TextEvent text(event);
  // A log whose clearing cannot be told of is not cleared.
  const SMStatus ready = source != nullptr ? text.prepare() : SMStatus{SM_STATUS_UNSUCCESSFUL};
  const SMStatus status = delete_log(path, ready);
  return status == SM_STATUS_SUCCESS && text.has_category() ? text.append(path, default_max_size())
                                                            : status;
}

}  // namespace kqsupt::log
