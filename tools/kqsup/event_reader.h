// Reads a log event by event: text in units of either byte order, or XML. What it reads may be cut
// anywhere and claim anything: what is no event is told of and skipped, and no more than a few
// megabytes are held at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "log_event.h"
#include "utf16_text.h"

namespace kqsup {

// Where the bytes of a log come from.
class LogBytes {
 public:
  LogBytes() = default;
  LogBytes(const LogBytes&) = delete;
  LogBytes& operator=(const LogBytes&) = delete;
  virtual ~LogBytes() = default;

  // Puts up to `size` bytes from `offset` on there, fewer only where there are no more, and gives
  // their count.
  [[nodiscard]] virtual size_t read(uint64_t offset, char* to, size_t size) = 0;
};

class EventReader {
 public:
  enum class Found {
    kEvent,
    kDamage,
    kNothing,  // behind the last whole event; there may be the beginning of one
  };

  // `bytes` stays the caller's.
  explicit EventReader(LogBytes& bytes) : bytes_(&bytes) {}

  // What comes next. Nothing is held to be unfinished when `is_final`: it is damage then.
  [[nodiscard]] Found next(bool is_final);

  // What next() found.
  [[nodiscard]] const LogEvent& event() const { return event_; }
  [[nodiscard]] const LogDamage& damage() const { return damage_; }

  // Where it will go on: behind what was found last.
  [[nodiscard]] uint64_t place() const { return place_; }

  // Goes on at `place`, which is 0 or where an event was.
  void go_to(uint64_t place);

  // Forgets the bytes that were read ahead: what follows place() may have changed.
  void look_again();

 private:
  enum class Kind { kNone, kText, kXml };
  struct Start {
    Kind kind = Kind::kNone;
    ByteOrder order = ByteOrder::kLittle;
    size_t at = 0;
  };

  [[nodiscard]] std::string_view rest() const;
  [[nodiscard]] bool load_more();
  [[nodiscard]] Start start_at(std::string_view bytes) const;
  [[nodiscard]] Start start_after(std::string_view bytes, const Start& start) const;
  [[nodiscard]] Start start_within(std::string_view bytes, size_t size, const Start& start) const;
  [[nodiscard]] Start next_text_start(std::string_view bytes, size_t size, size_t from,
                                      std::optional<ByteOrder> order) const;
  [[nodiscard]] ByteOrder likely_order(std::string_view bytes, size_t at) const;
  [[nodiscard]] bool may_be_little(std::string_view bytes, const Start& start) const;
  [[nodiscard]] bool parse(std::string_view bytes, const Start& start);
  [[nodiscard]] bool parse_text(std::string_view bytes, ByteOrder order);
  [[nodiscard]] bool parse_xml(std::string_view bytes);
  void skip(size_t size, const char* reason);
  Found tell_damage();
  Found tell_event(const Start& start);

  LogBytes* bytes_;
  std::string window_;  // its first window_size_ bytes are those from window_place_ on
  size_t window_size_ = 0;
  bool has_end_ = false;  // and there are no more
  uint64_t window_place_ = 0;
  uint64_t place_ = 0;
  bool is_xml_ = false;  // the last that was recognised
  std::optional<ByteOrder> order_;
  bool has_missed_end_ = false;
  std::optional<LogDamage> pending_;
  LogEvent event_;
  LogDamage damage_;
  std::string text_;  // what the texts and the data of event_ point into
  std::string data_;
  std::string link_;
};

}  // namespace kqsup
