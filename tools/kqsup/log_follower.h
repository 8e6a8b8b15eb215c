// Goes along with a log as it grows, gives its name to its backup, is cleared, or is cut.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "event_reader.h"
#include "log_file.h"
#include "log_filter.h"
#include "log_printer.h"

namespace kqsup {

class LogFollower {
 public:
  // `filter` and `printer` stay the caller's.
  LogFollower(std::string path, const LogFilter& filter, LogPrinter& printer);

  // Stands before the last `count` wanted events, or at the beginning of a log that has fewer. A
  // log that is not there yet is waited for. False, and why, when what is there cannot be read.
  [[nodiscard]] bool start(uint64_t count, int* why);

  // Prints what has come since.
  void poll();

  // Why the last poll() could not read the log, or not all of it, as errno has it; 0 when it could
  // or is waiting for a log. It goes on all the same, and may read what comes later.
  [[nodiscard]] int error() const { return error_; }

 private:
  struct Opened {
    explicit Opened(LogFile opened) : file(std::move(opened)), reader(file) {}
    LogFile file;
    EventReader reader;
  };
  // What has been read, by which a log that begins anew is known.
  struct Seen {
    uint64_t offset;
    uint64_t size;
    size_t digest;
  };

  using Use = std::function<void(const EventReader& reader, EventReader::Found found)>;
  void read(Opened& log, bool is_final, const Use& use);
  void print(Opened& log, bool is_final);
  void read_changes();
  void check_continuity();
  void move_on();
  [[nodiscard]] bool open_pair(std::unique_ptr<Opened>* log, std::unique_ptr<Opened>* backup,
                               int* why) const;
  void remember(const LogEvent& event);
  [[nodiscard]] size_t digest_of(uint64_t offset, uint64_t size);

  std::string path_;
  std::string backup_path_;
  const LogFilter* filter_;
  LogPrinter* printer_;
  std::unique_ptr<Opened> log_;
  // The backup that was there when log_ was opened. It is open so that no other file takes its
  // number.
  std::unique_ptr<Opened> old_backup_;
  LogFile::State state_;
  bool has_changed_ = true;
  int error_ = 0;
  std::deque<Seen> seen_;
  std::string bytes_;
};

}  // namespace kqsup
