#include "log_time.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace kqsup {

namespace {

using std::chrono::sys_days;

struct Clock {
  int hour = 0;
  int minute = 0;
  int second = 0;  // 60 is a leap second
};

// The decimal number that the whole text is; -1 for any other text.
int number(std::string_view text) {
  int value = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && text[0] != '-' ? value : -1;
}

std::optional<CalendarSeconds> seconds_of(int year, int month, int day, const Clock& clock) {
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  const bool is_time = clock.hour >= 0 && clock.hour < 24 && clock.minute >= 0 &&
                       clock.minute < 60 && clock.second >= 0 && clock.second <= 60;
  if (year < 0 || year > 9999 || month < 1 || day < 1 || !date.ok() || !is_time) {
    return std::nullopt;
  }
  const CalendarSeconds days = sys_days(date).time_since_epoch().count();
  return ((days * 24 + clock.hour) * 60 + clock.minute) * 60 + clock.second;
}

// Whether a name of three letters was found there in a row of them.
bool is_name(size_t place) {
  return place != std::string_view::npos && place % 3 == 0;
}

// "12:48" or "12:48:33".
std::optional<Clock> parse_clock(std::string_view text) {
  const bool has_seconds = text.size() == 8 && text[5] == ':';
  if ((text.size() != 5 && !has_seconds) || text[2] != ':') {
    return std::nullopt;
  }
  return Clock{number(text.substr(0, 2)), number(text.substr(3, 2)),
               has_seconds ? number(text.substr(6, 2)) : 0};
}

}  // namespace

std::optional<CalendarSeconds> parse_calendar(std::string_view text) {
  constexpr std::string_view kDays = "SunMonTueWedThuFriSat";
  constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
  // The day of the month has a blank in front when it has one digit.
  if (text.size() != 24 || text[3] != ' ' || text[7] != ' ' || text[10] != ' ' || text[19] != ' ' ||
      !is_name(kDays.find(text.substr(0, 3)))) {
    return std::nullopt;
  }
  const size_t month = kMonths.find(text.substr(4, 3));
  const auto clock = parse_clock(text.substr(11, 8));
  if (!is_name(month) || !clock) {
    return std::nullopt;
  }
  return seconds_of(number(text.substr(20)), static_cast<int>(month / 3) + 1,
                    number(text.substr(text[8] == ' ' ? 9 : 8, text[8] == ' ' ? 1 : 2)), *clock);
}

std::optional<CalendarSeconds> parse_moment(std::string_view text, CalendarSeconds now) {
  constexpr std::string_view kUnits = "smhd";
  constexpr int kLengths[] = {1, 60, 3600, 86400};
  if (text.size() >= 2 && kUnits.find(text.back()) != std::string_view::npos) {
    const CalendarSeconds count = number(text.substr(0, text.size() - 1));
    return count < 0 ? std::nullopt
                     : std::optional(now - count * kLengths[kUnits.find(text.back())]);
  }
  if (text.size() < 10 || text[4] != '-' || text[7] != '-') {
    return std::nullopt;
  }
  Clock clock;
  if (text.size() > 10) {
    const auto given = parse_clock(text.substr(11));
    if ((text[10] != ' ' && text[10] != 'T') || !given) {
      return std::nullopt;
    }
    clock = *given;
  }
  return seconds_of(number(text.substr(0, 4)), number(text.substr(5, 2)), number(text.substr(8, 2)),
                    clock);
}

CalendarSeconds calendar_now() {
  const time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  return seconds_of(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                    {local.tm_hour, local.tm_min, local.tm_sec})
      .value_or(now);
}

std::string calendar_text(CalendarSeconds seconds, char between) {
  const std::chrono::sys_seconds moment{std::chrono::seconds(seconds)};
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(moment - day);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u%c%02d:%02d:%02d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), between,
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

}  // namespace kqsup
