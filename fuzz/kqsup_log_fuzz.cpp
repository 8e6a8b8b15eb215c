// Logs of any content, as kqsup reads, filters and prints them.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "event_reader.h"
#include "exact_input.h"
#include "log_filter.h"
#include "log_printer.h"

namespace {

using kqsup::EventReader;
using kqsupt::fuzz::require;
using Found = EventReader::Found;

class Bytes : public kqsup::LogBytes {
 public:
  Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  size_t read(uint64_t offset, char* to, size_t size) override {
    const size_t count = offset < size_ ? std::min(size, size_ - static_cast<size_t>(offset)) : 0;
    if (count != 0) {
      std::memcpy(to, data_ + offset, count);
    }
    return count;
  }
  void grow_to(size_t size) { size_ = size; }

 private:
  const uint8_t* data_;
  size_t size_;
};

void require_printable(std::string_view text) {
  std::string printed;
  kqsup::append_printable(printed, text);
  for (const char c : printed) {
    require(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F);
  }
}

std::FILE* nowhere() {
  static std::FILE* const file = std::fopen("/dev/null", "w");
  require(file != nullptr);
  return file;
}

// What is damaged is told to nobody while this lives.
class Silence {
 public:
  Silence() : told_(stderr) { stderr = nowhere(); }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() { stderr = told_; }

 private:
  std::FILE* told_;
};

// A printer of each of the forms that the commands print in; the size of an input chooses it.
kqsup::LogPrinter printer_for(size_t size) {
  using enum kqsup::LogForm;
  using enum kqsup::LogNews;
  switch (size % 3) {
    case 0:
      return {kLines, kAtEnd, true, nowhere()};
    case 1:
      return {kJsonArray, kAtEnd, false, nowhere()};
    default:
      return {kJsonLines, kAtOnce, false, nowhere()};
  }
}

// Everything is an event or damage, each once and in its order.
uint64_t read_all(EventReader& reader, bool is_final, uint64_t end, size_t size, size_t* events) {
  kqsup::LogFilter filter;
  filter.types = {1, 2};
  filter.since = 0;
  const Silence silence;
  kqsup::LogPrinter printer = printer_for(size);
  printer.set_log("log");
  for (Found found; (found = reader.next(is_final)) != Found::kNothing;) {
    if (found == Found::kEvent) {
      const kqsup::LogEvent& event = reader.event();
      require(event.size != 0 && event.offset >= end && event.offset - end <= 256);
      (void)filter.wants(event);
      printer.print(event);
      for (const std::string_view text :
           {event.source, event.computer, event.description, event.data}) {
        require_printable(text);
      }
      end = event.offset + event.size;
      ++*events;
    } else {
      require(reader.damage().offset >= end);
      printer.print(reader.damage());
      end = reader.damage().offset + reader.damage().size;
    }
    require(end == reader.place());
  }
  printer.finish();
  return end;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto copy = kqsupt::fuzz::Input(data, size).bytes();
  Bytes bytes(copy.get(), size);
  EventReader reader(bytes);
  size_t events = 0;
  (void)read_all(reader, true, 0, size, &events);

  // The same while it grows: nothing is shown twice.
  Bytes growing(copy.get(), size / 2);
  EventReader follower(growing);
  size_t followed = 0;
  uint64_t end = read_all(follower, false, 0, size, &followed);
  growing.grow_to(size);
  follower.look_again();
  end = read_all(follower, false, end, size, &followed);
  follower.look_again();
  end = read_all(follower, true, end, size, &followed);
  require(end <= size);
  return 0;
}
