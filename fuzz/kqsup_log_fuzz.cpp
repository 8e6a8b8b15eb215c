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

// Everything is an event or damage, each once and in its order.
uint64_t read_all(EventReader& reader, bool is_final, uint64_t end, size_t* events) {
  kqsup::LogFilter filter;
  filter.types = {1, 2};
  filter.since = 0;
  kqsup::LogPrinter printer(kqsup::LogForm::kJsonLines, kqsup::LogNews::kAtEnd, false, nowhere());
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
      end = reader.damage().offset + reader.damage().size;
    }
    require(end == reader.place());
  }
  printer.flush();
  return end;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto copy = kqsupt::fuzz::Input(data, size).bytes();
  Bytes bytes(copy.get(), size);
  EventReader reader(bytes);
  size_t events = 0;
  (void)read_all(reader, true, 0, &events);

  // The same while it grows: nothing is shown twice.
  Bytes growing(copy.get(), size / 2);
  EventReader follower(growing);
  size_t followed = 0;
  uint64_t end = read_all(follower, false, 0, &followed);
  growing.grow_to(size);
  follower.look_again();
  end = read_all(follower, false, end, &followed);
  follower.look_again();
  end = read_all(follower, true, end, &followed);
  require(end <= size);
  return 0;
}
