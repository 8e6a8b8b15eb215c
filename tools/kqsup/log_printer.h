// Events as lines for people, or as JSON.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "log_event.h"

namespace kqsup {

enum class LogForm {
  kLines,      // one for each event, under the name of its log when there are several
  kJsonArray,  // one array of objects, with what is damaged at its end
  kJsonLines,  // one object in each line, in the order in which things are found
};
enum class LogNews {
  kAtEnd,   // the first places that are damaged, and how many there are, behind all events
  kAtOnce,  // where it was found
};

class LogPrinter {
 public:
  // How many places kAtEnd tells of: a file of nothing but damage has more than anybody reads.
  static constexpr size_t kMostPlaces = 1000;

  // `to` stays the caller's.
  LogPrinter(LogForm form, LogNews news, bool is_of_several, std::FILE* to = stdout)
      : form_(form), news_(news), is_of_several_(is_of_several), to_(to) {}

  // What follows is of this log.
  void set_log(const std::string& path) { log_ = path; }

  void print(const LogEvent& event);

  // JSON has damage too; in any form the standard error tells of it.
  void print(const LogDamage& damage);

  // Hands over what is complete.
  void flush();

  // Behind everything else.
  void finish();

  [[nodiscard]] uint64_t damages() const { return damages_; }

 private:
  struct Place {
    std::string log;
    LogDamage damage;
  };

  void print_line(const LogEvent& event);
  void print_json(const LogEvent& event);
  void add_object(const std::string& object);
  void add_damage(const Place& place);
  static void tell(const Place& place);

  LogForm form_;
  LogNews news_;
  bool is_of_several_;
  std::FILE* to_;
  bool has_objects_ = false;
  std::string log_;
  std::string headed_log_;
  std::string out_;
  std::vector<Place> places_;
  uint64_t damages_ = 0;
  CalendarSeconds last_time_ = 0;
  std::string last_time_text_;
};

// Appends what printable() makes of the text.
void append_printable(std::string& out, std::string_view text);

}  // namespace kqsup
