#include "log_printer.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "listing.h"

namespace kqsup {

namespace {

using nlohmann::ordered_json;

constexpr size_t kMuch = 256 * 1024;

constexpr auto kIsPlain = [] {
  std::array<bool, 256> is_plain{};
  for (size_t byte = 0x20; byte < 0x7F; ++byte) {
    is_plain[byte] = true;
  }
  return is_plain;
}();

bool is_plain(char byte) {
  return kIsPlain[static_cast<unsigned char>(byte)];
}

void append_padded(std::string& out, std::string_view text, size_t width) {
  out.append(text);
  out.append(text.size() < width ? width - text.size() : 0, ' ');
}

std::string in_hex(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    hex += kDigits[byte >> 4];
    hex += kDigits[byte & 15];
  }
  return hex;
}

std::string type_text(uint16_t type) {
  const std::string_view name = type_name(type);
  return name.empty() ? std::to_string(type) : std::string(name);
}

}  // namespace

void append_printable(std::string& out, std::string_view text) {
  size_t i = 0;
  while (i < text.size()) {
    const size_t plain = i;
    while (i < text.size() && is_plain(text[i])) {
      ++i;
    }
    out.append(text, plain, i - plain);
    // No character has plain bytes: what is between two of them is some whole ones.
    const size_t other = i;
    while (i < text.size() && !is_plain(text[i])) {
      ++i;
    }
    if (i != other) {
      out += printable(text.substr(other, i - other));
    }
  }
}

void LogPrinter::print(const LogEvent& event) {
  if (form_ == LogForm::kLines) {
    print_line(event);
  } else {
    print_json(event);
  }
  if (out_.size() >= kMuch) {
    flush();
  }
}

void LogPrinter::print_line(const LogEvent& event) {
  if (is_of_several_ && headed_log_ != log_) {
    out_ += headed_log_.empty() ? "==> " : "\n==> ";
    append_printable(out_, log_);
    out_ += " <==\n";
    headed_log_ = log_;
  }
  if (event.time && (last_time_text_.empty() || *event.time != last_time_)) {
    last_time_ = *event.time;
    last_time_text_ = calendar_text(last_time_, ' ');
  }
  append_padded(out_, event.time ? std::string_view(last_time_text_) : "-", 19);
  out_ += "  ";
  const std::string_view type = type_name(event.type);
  append_padded(out_, type.empty() ? type_text(event.type) : type, 13);
  out_ += "  ";
  append_padded(out_, event.category, 7);
  out_ += "  ";
  char id[16];
  out_.append(id, std::to_chars(id, id + sizeof id, event.id).ptr);
  out_ += "  ";
  append_printable(out_, event.source);
  out_ += '@';
  append_printable(out_, event.computer);
  out_ += ": ";
  append_printable(out_, event.description);
  if (!event.data.empty()) {
    out_ += " (" + std::to_string(event.data.size()) + " bytes of data)";
  }
  out_ += '\n';
}

void LogPrinter::print_json(const LogEvent& event) {
  ordered_json object;
  object["log"] = log_;
  object["offset"] = event.offset;
  object["time"] = event.time ? ordered_json(calendar_text(*event.time, 'T')) : ordered_json();
  if (event.seconds) {
    object["timestamp"] = *event.seconds;
  }
  object["type"] = type_text(event.type);
  object["category"] = event.category;
  object["id"] = event.id;
  object["source"] = event.source;
  object["computer"] = event.computer;
  if (event.user) {
    object["user"] = *event.user;
    object["link"] = *event.link;
  }
  object["description"] = event.description;
  object["data"] = in_hex(event.data);
  add_object(json_text(object, -1));
}

void LogPrinter::add_object(const std::string& object) {
  if (form_ == LogForm::kJsonArray) {
    out_ += has_objects_ ? ",\n " : "[\n ";
    out_ += object;
    has_objects_ = true;
  } else {
    out_ += object + "\n";
  }
}

void LogPrinter::print(const LogDamage& damage) {
  ++damages_;
  const Place place{log_, damage};
  if (news_ == LogNews::kAtOnce) {
    if (form_ != LogForm::kLines) {
      add_damage(place);
    }
    flush();
    tell(place);
  } else if (places_.size() < kMostPlaces) {
    places_.push_back(place);
  }
}

void LogPrinter::add_damage(const Place& place) {
  ordered_json object;
  object["log"] = place.log;
  object["offset"] = place.damage.offset;
  object["bytes"] = place.damage.size;
  object["damage"] = place.damage.reason;
  add_object(json_text(object, -1));
}

void LogPrinter::tell(const Place& place) {
  std::fprintf(stderr, "kqsup: %s: byte %llu: %s, %llu bytes skipped\n",
               printable(place.log).c_str(), static_cast<unsigned long long>(place.damage.offset),
               place.damage.reason, static_cast<unsigned long long>(place.damage.size));
}

void LogPrinter::flush() {
  std::fwrite(out_.data(), 1, out_.size(), to_);
  std::fflush(to_);
  out_.clear();
}

void LogPrinter::finish() {
  const bool has_more = news_ == LogNews::kAtEnd && damages_ > places_.size();
  if (form_ == LogForm::kJsonArray) {
    for (const Place& place : places_) {
      add_damage(place);
    }
    if (has_more) {
      ordered_json object;
      object["damage"] = "more places";
      object["count"] = damages_ - places_.size();
      add_object(json_text(object, -1));
    }
    out_ += has_objects_ ? "\n]\n" : "[]\n";
  }
  flush();
  for (const Place& place : places_) {
    tell(place);
  }
  if (has_more) {
    std::fprintf(stderr, "kqsup: only the first %zu places are told\n", places_.size());
  }
  if (damages_ != 0) {
    std::fprintf(stderr, "kqsup: damaged places: %llu\n",
                 static_cast<unsigned long long>(damages_));
  }
}

}  // namespace kqsup
