// Formatted output beside the C library's.

#include <kqsupt/text.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "measure.h"
#include "ratio_table.h"

namespace kqbench {
namespace {

constexpr const char* kPeer = "glibc";

constexpr size_t kInputs = 256;  // operations of an iteration, each on values of its own

std::array<char, 512> output;

// ---- Values ----

int fresh_integer() {
  const auto bits = static_cast<int32_t>(fresh()());
  return bits >> fresh().between(0, 30);
}

// 64 texts of 4 to 40 characters.
const char* fresh_text() {
  static const std::vector<std::string> texts = [] {
    std::vector<std::string> made;
    for (size_t i = 0; i < 64; ++i) {
      made.emplace_back(fresh().between(4, 40), 'a');
    }
    return made;
  }();
  return texts[fresh().between(0, 63)].c_str();
}

double fresh_fraction() {
  return static_cast<double>(fresh()() >> 11) * 0x1p-53;
}

double fresh_reading() {
  return fresh_fraction() * 1e6;
}

double fresh_magnitude() {
  return std::pow(10, fresh_fraction() * 14 - 5);
}

double fresh_double() {
  double value = 0;
  do {
    value = std::bit_cast<double>(fresh()());
  } while (!std::isfinite(value));
  return value;
}

struct LogLine {
  const char* source = fresh_text();
  int process = fresh_integer();
  const char* host = fresh_text();
  int sequence = fresh_integer();
  uint32_t mask = static_cast<uint32_t>(fresh()());
  double reading = fresh_reading();
  const char* unit = fresh_text();
  int severity = 'A' + fresh_integer() % 20;
  int code = fresh_integer();
  const char* state = fresh_text();
  uint32_t total = static_cast<uint32_t>(fresh()());
};

// ---- Contestants ----

template <class... Values>
void print_ours(const char* format, Values... values) {
  require(SMsnprintf(output.data(), output.size(), format, values...) > 0);
  benchmark::DoNotOptimize(output);
}

// Called through a pointer, so that no compiler puts another function in its place.
int (*their_print)(char*, size_t, const char*, ...) = std::snprintf;

template <class... Values>
void print_theirs(const char* format, Values... values) {
  require(their_print(output.data(), output.size(), format, values...) > 0);
  benchmark::DoNotOptimize(output);
}

template <class Value, class Print>
void add(const char* operation, const char* contestant, Value (*fresh_value)(), Print print) {
  add_measurement(
      operation, contestant, kInputs,
      [=] {
        std::vector<Value> values;
        values.reserve(kInputs);
        for (size_t i = 0; i < kInputs; ++i) {
          values.push_back(fresh_value());
        }
        return values;
      },
      [=](const std::vector<Value>& values) {
        for (const Value& value : values) {
          print(value);
        }
      });
}

// Enters both in the row of a format with one value.
template <class Value>
void add_format(const char* operation, const char* format, Value (*fresh_value)()) {
  add(operation, kOurs, fresh_value, [=](Value value) { print_ours(format, value); });
  add(operation, kPeer, fresh_value, [=](Value value) { print_theirs(format, value); });
}

LogLine fresh_line() {
  return {};
}

constexpr const char* kLineFormat = "%s[%d]: %s seq=%d mask=0x%x %5.2f %-10s|%c %d %s %u";

template <class Print>
void print_line(const LogLine& line, Print print) {
  print(kLineFormat, line.source, line.process, line.host, line.sequence, line.mask, line.reading,
        line.unit, line.severity, line.code, line.state, line.total);
}

const bool kAdded = [] {
  add_family({"formatted output",
              {kPeer},
              {{"format/d", "\"%d\"", 0.7, kPeer},
               {"format/s", "\"%s\"", 0.7, kPeer},
               {"format/.2f", "\"%.2f\" to a million", 0.4, kPeer},
               {"format/g", "\"%g\" from 1e-5 to 1e9", 0.4, kPeer},
               {"format/.17g", "\"%.17g\" of any double", 0.2, kPeer},
               // For the reader: the C library is fastest where few digits stand before the point.
               {"format/.2f-fraction", "\"%.2f\" below 1", 0, ""},
               {"format/g-fraction", "\"%g\" below 1", 0, ""},
               {"format/.17g-fraction", "\"%.17g\" below 1", 0, ""},
               {"format/line", "log line of 11 arguments", 0.6, kPeer}}});
  add_format("format/d", "%d", fresh_integer);
  add_format("format/s", "%s", fresh_text);
  add_format("format/.2f", "%.2f", fresh_reading);
  add_format("format/g", "%g", fresh_magnitude);
  add_format("format/.17g", "%.17g", fresh_double);
  add_format("format/.2f-fraction", "%.2f", fresh_fraction);
  add_format("format/g-fraction", "%g", fresh_fraction);
  add_format("format/.17g-fraction", "%.17g", fresh_fraction);
  add("format/line", kOurs, fresh_line,
      [](const LogLine& line) { print_line(line, [](auto... values) { print_ours(values...); }); });
  add("format/line", kPeer, fresh_line, [](const LogLine& line) {
    print_line(line, [](auto... values) { print_theirs(values...); });
  });
  return true;
}();

}  // namespace
}  // namespace kqbench
