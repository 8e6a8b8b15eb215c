#include "event_reader.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "whole_number.h"

namespace kqsup {

namespace {

// What is looked through for the next event. One of the largest description, source and data takes
// less than 400 KiB; the link in an XML log may be of any length.
constexpr size_t kWindow = size_t{4} << 20;

// What tells the beginning of an event takes no more: the longest is that of a text record.
constexpr size_t kLongestStart = 64;

constexpr std::string_view kHeaderText =
    "#-------------------------------\r\n"
    "# Do not remove this block\r\n"
    "# This data file is parsed\r\n"
    "#------------------------------- \r\n"
    "\r\n";
constexpr auto kHeaderBytes = [] {
  std::array<char, 2 + 2 * kHeaderText.size()> bytes{'\xFF', '\xFE'};
  for (size_t i = 0; i < kHeaderText.size(); ++i) {
    bytes[2 + 2 * i] = kHeaderText[i];
  }
  return bytes;
}();
constexpr std::string_view kHeader(kHeaderBytes.data(), kHeaderBytes.size());

constexpr std::string_view kDocument = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog>";
constexpr std::string_view kDocumentEnd = "</EventLog>";
constexpr std::string_view kElement = "<LogEntry><TimeStamp>";

// "EventID: " from its first byte that is not zero to its last, which is the same in both orders.
constexpr std::string_view kRecord("E\0v\0e\0n\0t\0I\0D\0:\0 ", 17);

size_t find_bytes(std::string_view bytes, std::string_view what, size_t from) {
  const void* found = from < bytes.size() ? memmem(bytes.data() + from, bytes.size() - from,
                                                   what.data(), what.size())
                                          : nullptr;
  return found != nullptr ? static_cast<size_t>(static_cast<const char*>(found) - bytes.data())
                          : std::string_view::npos;
}

// Takes texts off the front of another one.
class Cursor {
 public:
  explicit Cursor(std::string_view rest) : rest_(rest) {}

  [[nodiscard]] std::string_view rest() const { return rest_; }

  bool take(std::string_view word) {
    if (!rest_.starts_with(word)) {
      return false;
    }
    rest_.remove_prefix(word.size());
    return true;
  }
  // What stands before the next `end`, which is taken too.
  bool take_until(std::string_view end, std::string_view& value) {
    const size_t at = find_bytes(rest_, end, 0);
    if (at == std::string_view::npos) {
      return false;
    }
    value = rest_.substr(0, at);
    rest_.remove_prefix(at + end.size());
    return true;
  }

 private:
  std::string_view rest_;
};

// A time that its writer did not know is empty.
bool read_time(std::string_view text, std::optional<CalendarSeconds>& seconds) {
  seconds = parse_calendar(text);
  return seconds.has_value() || text.empty();
}

// The value of two upper-case digits; -1 for anything else.
int hex_byte(const char* digits) {
  int value = 0;
  for (const char c : {digits[0], digits[1]}) {
    const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    if (digit < 0) {
      return -1;
    }
    value = value << 4 | digit;
  }
  return value;
}

// Takes a line of a dump, whose first byte is number `data.size()`. False when there is none.
bool take_dump_line(std::string_view& text, std::string& data) {
  constexpr size_t kLine = 81;
  constexpr size_t kColumns = 12;  // behind "0x00000000: "
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  if (text.size() < kLine || !text.starts_with("0x") || text.substr(79, 2) != "\r\n") {
    return false;
  }
  for (size_t i = 0; i < 8; ++i) {
    if (text[2 + i] != kDigits[data.size() >> (28 - 4 * i) & 0xF]) {
      return false;
    }
  }
  size_t count = 0;
  for (int byte = 0; count < 16 && (byte = hex_byte(&text[kColumns + 3 * count])) >= 0; ++count) {
    data.push_back(static_cast<char>(byte));
  }
  if (count == 0) {
    return false;
  }
  text.remove_prefix(kLine);
  return true;
}

// What stands behind the heading of the data: its dump, and an empty line. How long that is; none
// when it is anything else.
std::optional<size_t> read_dump(std::string_view text, std::string& data) {
  const size_t size = text.size();
  data.clear();
  while (data.size() % 16 == 0 && take_dump_line(text, data)) {
  }
  return text.starts_with("\r\n") ? std::optional(size - text.size() + 2) : std::nullopt;
}

// "0x0A,0xFF".
bool read_bytes(std::string_view text, std::string& data) {
  data.clear();
  while (!text.empty()) {
    const int byte = text.size() >= 4 && text.starts_with("0x") ? hex_byte(&text[2]) : -1;
    if (byte < 0 || (text.size() > 4 && (text[4] != ',' || text.size() == 5))) {
      return false;
    }
    data.push_back(static_cast<char>(byte));
    text.remove_prefix(std::min<size_t>(text.size(), 5));
  }
  return true;
}

// The text without the entities of the five characters that XML gives a meaning to.
std::string without_entities(std::string_view text) {
  constexpr struct {
    std::string_view entity;
    char character;
  } kEntities[] = {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
  std::string plain;
  while (!text.empty()) {
    size_t size = 1;
    char character = text[0];
    for (const auto& known : kEntities) {
      if (character == '&' && text.starts_with(known.entity)) {
        size = known.entity.size();
        character = known.character;
        break;
      }
    }
    plain += character;
    text.remove_prefix(size);
  }
  return plain;
}

// Whether the units that begin here are "EventID: ", a number and a line of a source: descriptions
// may well have the first of it.
bool is_record(std::string_view bytes, ByteOrder order) {
  const size_t low = order == ByteOrder::kLittle ? 0 : 1;
  const auto unit = [&](size_t i) {
    return 2 * i + 1 < bytes.size() && bytes[2 * i + 1 - low] == '\0' ? bytes[2 * i + low] : '\0';
  };
  size_t i = 0;
  const auto take = [&](std::string_view word) {
    size_t same = 0;
    while (same < word.size() && unit(i + same) == word[same]) {
      ++same;
    }
    i += same;
    return same == word.size();
  };
  if (!take("EventID: ")) {
    return false;
  }
  const size_t digits = i;
  while (i < digits + 10 && unit(i) >= '0' && unit(i) <= '9') {
    ++i;
  }
  return i != digits && take("\r\nSource: ");
}

}  // namespace

void EventReader::go_to(uint64_t place) {
  place_ = place;
  has_missed_end_ = false;
  pending_.reset();
  if (place == 0) {
    // Nothing is known of a log that begins.
    is_xml_ = false;
    order_.reset();
  }
  look_again();
}

void EventReader::look_again() {
  // What looked like the place to go on from may have been the first half of something else.
  if (pending_ && pending_->size < kWindow) {
    place_ = pending_->offset;
    pending_.reset();
  }
  window_size_ = 0;
  window_place_ = place_;
  has_end_ = false;
}

std::string_view EventReader::rest() const {
  const auto used = static_cast<size_t>(place_ - window_place_);
  return {window_.data() + used, window_size_ - used};
}

// Makes rest() longer, unless it has all there is or as much as may be held.
bool EventReader::load_more() {
  constexpr size_t kFirst = size_t{64} << 10;
  const std::string_view kept = rest();
  if (has_end_ || kept.size() >= kWindow) {
    return false;
  }
  const size_t wanted = std::min(kWindow, std::max(kFirst, 4 * kept.size()));
  const size_t count = kept.size();
  if (window_.size() < wanted) {
    std::string larger(wanted, '\0');
    std::memcpy(larger.data(), kept.data(), count);
    window_.swap(larger);
  } else {
    std::memmove(window_.data(), kept.data(), count);
  }
  window_place_ = place_;
  const size_t more = bytes_->read(place_ + count, window_.data() + count, wanted - count);
  window_size_ = count + more;
  has_end_ = window_size_ < wanted;
  return true;
}

EventReader::Start EventReader::start_at(std::string_view bytes) const {
  for (const ByteOrder order : {ByteOrder::kLittle, ByteOrder::kBig}) {
    if (is_record(bytes, order)) {
      return {Kind::kText, order, 0};
    }
  }
  return {bytes.starts_with(kElement) ? Kind::kXml : Kind::kNone, ByteOrder::kLittle, 0};
}

// A record whose units are ASCII looks the same in both orders, a byte apart: which one it is in is
// known from the records before it, or from the line end that the log ends with, or else from
// where a log that is whole would have it.
ByteOrder EventReader::likely_order(std::string_view bytes, size_t at) const {
  if (has_end_ && bytes.ends_with(std::string_view("\n\0", 2))) {
    return ByteOrder::kLittle;
  }
  if (has_end_ && bytes.ends_with(std::string_view("\0\n", 2))) {
    return ByteOrder::kBig;
  }
  return (place_ + at) % 2 == 0 ? ByteOrder::kLittle : ByteOrder::kBig;
}

EventReader::Start EventReader::next_text_start(std::string_view bytes, size_t size, size_t from,
                                                std::optional<ByteOrder> order) const {
  const std::string_view piece = bytes.substr(0, size);
  for (size_t at = find_bytes(piece, kRecord, from); at != std::string_view::npos;
       at = find_bytes(piece, kRecord, at + 1)) {
    const ByteOrder likely = order.value_or(likely_order(bytes, at));
    const ByteOrder other = likely == ByteOrder::kLittle ? ByteOrder::kBig : ByteOrder::kLittle;
    for (const ByteOrder each : {likely, order ? likely : other}) {
      const size_t before = each == ByteOrder::kLittle ? 0 : 1;
      if (at >= from + before && is_record(bytes.substr(at - before), each)) {
        return {Kind::kText, each, at - before};
      }
    }
  }
  return {};
}

// Where, behind that start, the next event of its kind begins; or the first one of any kind. Of two
// kinds only the nearer one counts, so the other one is not looked for much further on.
EventReader::Start EventReader::start_after(std::string_view bytes, const Start& start) const {
  constexpr size_t kFirst = 4096;
  for (size_t size = kFirst; size < bytes.size(); size *= 4) {
    const Start next = start_within(bytes, size, start);
    if (next.kind != Kind::kNone) {
      return next;
    }
  }
  return start_within(bytes, bytes.size(), start);
}

// The same, when what tells it stands in the first `size` bytes. What is behind them still tells
// what it is, so that it is the same with more of them.
EventReader::Start EventReader::start_within(std::string_view bytes, size_t size,
                                             const Start& start) const {
  const bool is_big = start.kind == Kind::kText && start.order == ByteOrder::kBig;
  const auto order = start.kind == Kind::kText ? std::optional(start.order) : order_;
  // The same record in the other order is no other record.
  Start next =
      start.kind != Kind::kXml ? next_text_start(bytes, size, is_big ? 2 : 1, order) : Start{};
  if (start.kind != Kind::kText) {
    const size_t at = find_bytes(bytes.substr(0, size), kElement, 1);
    if (at != std::string_view::npos && (next.kind == Kind::kNone || at < next.at)) {
      next = {Kind::kXml, ByteOrder::kLittle, at};
    }
  }
  return next;
}

void EventReader::skip(size_t size, const char* reason) {
  if (!pending_) {
    pending_ = LogDamage{place_, 0, reason};
  }
  pending_->size += size;
  place_ += size;
}

EventReader::Found EventReader::tell_damage() {
  damage_ = *pending_;
  pending_.reset();
  return Found::kDamage;
}

EventReader::Found EventReader::tell_event(const Start& start) {
  event_.offset = place_;
  place_ += event_.size;
  is_xml_ = start.kind == Kind::kXml;
  has_missed_end_ = false;
  if (!is_xml_) {
    order_ = start.order;
  }
  return Found::kEvent;
}

// Whether what is no record in the one order may be one in the other, a byte further on.
bool EventReader::may_be_little(std::string_view bytes, const Start& start) const {
  return !order_ && start.kind == Kind::kText && start.order == ByteOrder::kBig &&
         is_record(bytes.substr(1), ByteOrder::kLittle);
}

EventReader::Found EventReader::next(bool is_final) {
  constexpr const char* kUnknown = "this is no event";
  constexpr const char* kCut = "this event is cut off or damaged";
  constexpr const char* kUnfinished = "this event has no end";
  for (;;) {
    std::string_view bytes = rest();
    if (bytes.size() < kHeader.size() && load_more()) {
      continue;
    }
    if (place_ == 0) {
      const bool is_text = bytes.starts_with(kHeader);
      if (is_text || bytes.starts_with(kDocument)) {
        is_xml_ = !is_text;
        place_ = is_text ? kHeader.size() : kDocument.size();
        continue;
      }
      if (kHeader.starts_with(bytes) || kDocument.starts_with(bytes)) {
        if (bytes.empty() || !is_final) {
          return Found::kNothing;
        }
        skip(bytes.size(), "this beginning of a log is cut off");
        return tell_damage();
      }
    }
    const Start start = start_at(bytes);
    // A description may hold what looks like the end of its record, but hardly the beginning of
    // one.
    const Start after = start_after(bytes, start);
    const bool is_bounded = after.kind != Kind::kNone;
    if (!is_bounded && load_more()) {
      continue;
    }
    const std::string_view extent = bytes.substr(0, is_bounded ? after.at : bytes.size());
    if (start.kind != Kind::kNone) {
      const bool is_event = parse(extent, start);
      if (!is_event && may_be_little(bytes, start)) {
        skip(1, kUnknown);
        continue;
      }
      if (pending_ && (is_event || is_bounded)) {
        return tell_damage();
      }
      if (is_event) {
        return tell_event(start);
      }
    }
    if (is_bounded) {
      skip(extent.size(), start.kind != Kind::kNone ? kCut : kUnknown);
      if (start.kind != Kind::kNone) {
        return tell_damage();
      }
      continue;
    }
    if (!has_end_) {
      // A beginning of an event may be cut by the end of what is held.
      skip(bytes.size() - kLongestStart, kUnknown);
      continue;
    }
    if (bytes == kDocumentEnd && !pending_) {
      return Found::kNothing;
    }
    if (!is_final) {
      return Found::kNothing;
    }
    if (!bytes.empty() || pending_) {
      has_missed_end_ = true;
      skip(bytes.size(), start.kind != Kind::kNone ? kUnfinished : kUnknown);
      return tell_damage();
    }
    if (is_xml_ && !has_missed_end_) {
      has_missed_end_ = true;
      skip(0, "the end of the document is missing");
      return tell_damage();
    }
    return Found::kNothing;
  }
}

bool EventReader::parse(std::string_view bytes, const Start& start) {
  event_ = {};
  return start.kind == Kind::kXml ? parse_xml(bytes) : parse_text(bytes, start.order);
}

bool EventReader::parse_text(std::string_view bytes, ByteOrder order) {
  constexpr std::string_view kDataHeading = "\r\nData: Bytes in Hex\r\n";
  decode_utf16(bytes, order, text_);
  Cursor cursor(text_);
  std::string_view id;
  std::string_view type;
  std::string_view time;
  const bool has_fields =
      cursor.take("EventID: ") && cursor.take_until("\r\n", id) && cursor.take("Source: ") &&
      cursor.take_until("\r\nCategory: ", event_.source) &&
      cursor.take_until("\r\nType: ", event_.category) && cursor.take_until("\r\n", type) &&
      cursor.take("Date and Time: ") && cursor.take_until("\r\n", time) &&
      cursor.take("Computer: ") && cursor.take_until("\r\nDescription:\r\n", event_.computer);
  const auto number = type_of(type);
  if (!has_fields || !read_number(id, event_.id) || !is_category(event_.category) || !number ||
      !read_time(time, event_.time)) {
    return false;
  }
  event_.type = *number;
  const std::string_view rest = cursor.rest();
  for (size_t heading = rest.rfind(kDataHeading); heading != std::string_view::npos;
       heading = heading != 0 ? rest.rfind(kDataHeading, heading - 1) : std::string_view::npos) {
    const auto dump = read_dump(rest.substr(heading + kDataHeading.size()), data_);
    if (dump) {
      event_.description = rest.substr(0, heading);
      event_.data = data_;
      const size_t size = text_.size() - rest.size() + heading + kDataHeading.size() + *dump;
      event_.size = size == text_.size() ? bytes.size() / 2 * 2 : utf16_size(text_, size);
      return true;
    }
  }
  return false;
}

bool EventReader::parse_xml(std::string_view bytes) {
  Cursor cursor(bytes);
  std::string_view seconds;
  std::string_view time;
  std::string_view type;
  std::string_view id;
  std::string_view link;
  std::string_view user;
  std::string_view data;
  int64_t number = 0;
  // Most texts are as they were given, markup and all: one ends only before the next one's name.
  const bool has_fields =
      cursor.take(kElement) && cursor.take_until("</TimeStamp><DateTime>", seconds) &&
      cursor.take_until("</DateTime><ComputerName>", time) &&
      cursor.take_until("</ComputerName><Type>", event_.computer) &&
      cursor.take_until("</Type><ID>", type) && cursor.take_until("</ID><Link>", id) &&
      cursor.take_until("</Link><UserInfo>", link) &&
      cursor.take_until("</UserInfo><Source>", user) &&
      cursor.take_until("</Source><Category>", event_.source) &&
      cursor.take_until("</Category><Description>", event_.category) &&
      cursor.take_until("</Description><Data>", event_.description) &&
      cursor.take_until("</Data></LogEntry>", data);
  if (!has_fields || !read_number(seconds, number) || !read_time(time, event_.time) ||
      !read_number(type, event_.type) || !read_number(id, event_.id) ||
      !is_category(event_.category) || !read_bytes(data, data_)) {
    return false;
  }
  link_ = without_entities(link);
  event_.seconds = number;
  event_.user = user;
  event_.link = link_;
  event_.data = data_;
  event_.size = bytes.size() - cursor.rest().size();
  return true;
}

}  // namespace kqsup
