#include "log_follower.h"

#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string_view>
#include <utility>

#include "log_location.h"

namespace kqsup {

namespace {

// A log that was cut is found again at any of its latest events.
constexpr size_t kMostSeen = 65536;

}  // namespace

LogFollower::LogFollower(std::string path, const LogFilter& filter, LogPrinter& printer)
    : path_(std::move(path)),
      backup_path_(backup_of(path_)),
      filter_(&filter),
      printer_(&printer) {}

bool LogFollower::start(uint64_t count, int* why) {
  if (!open_pair(&log_, &old_backup_, why)) {
    return *why == ENOENT;
  }
  std::deque<uint64_t> last;
  read(*log_, false, [&](const EventReader& reader, EventReader::Found found) {
    if (found != EventReader::Found::kEvent) {
      return;
    }
    remember(reader.event());
    if (filter_->wants(reader.event())) {
      last.push_back(reader.event().offset);
      if (last.size() > count) {
        last.pop_front();
      }
    }
  });
  if (log_->file.error() != 0) {
    *why = log_->file.error();
    return false;
  }
  if (last.size() < count) {
    seen_.clear();
    log_->reader.go_to(0);
  } else if (!last.empty()) {
    while (!seen_.empty() && seen_.back().offset >= last.front()) {
      seen_.pop_back();
    }
    log_->reader.go_to(last.front());
  }
  return true;
}

void LogFollower::poll() {
  error_ = 0;
  printer_->set_log(path_);
  // Nobody writes to a file that has lost the name: a writer holds the log's lock while it has the
  // file open, and so does who takes the name away.
  const bool has_name = log_ != nullptr && log_->file.is_named(path_);
  if (log_ != nullptr) {
    read_changes();
  }
  if (!has_name) {
    move_on();
  }
  if (error_ == 0 && log_ != nullptr) {
    error_ = log_->file.error();
  }
  printer_->flush();
}

void LogFollower::read(Opened& log, bool is_final, const Use& use) {
  log.reader.look_again();
  for (;;) {
    const EventReader::Found found = log.reader.next(is_final);
    if (found == EventReader::Found::kNothing) {
      break;
    }
    use(log.reader, found);
  }
  if (log.file.error() != 0) {
    error_ = log.file.error();
  }
}

void LogFollower::print(Opened& log, bool is_final) {
  read(log, is_final, [&](const EventReader& reader, EventReader::Found found) {
    if (found == EventReader::Found::kDamage) {
      printer_->print(reader.damage());
      return;
    }
    if (&log == log_.get()) {
      remember(reader.event());
    }
    if (filter_->wants(reader.event())) {
      printer_->print(reader.event());
    }
  });
}

// Looks once more after the last change: clocks of file systems may stand still for some
// milliseconds.
void LogFollower::read_changes() {
  const LogFile::State state = log_->file.state();
  const bool changes = state != state_;
  if (changes || has_changed_) {
    state_ = state;
    has_changed_ = changes;
    check_continuity();
    print(*log_, false);
  }
}

// A log that does not have any more what was read of it has been cut, or begins anew.
void LogFollower::check_continuity() {
  constexpr int kTries = 64;
  bool is_same = log_->reader.place() <= state_.size;
  int differences = 0;
  while (!seen_.empty()) {
    const Seen& last = seen_.back();
    const bool is_there = last.offset + last.size <= state_.size;
    if (is_there && digest_of(last.offset, last.size) == last.digest) {
      break;
    }
    is_same = false;
    differences += is_there ? 1 : 0;
    if (differences == kTries) {
      seen_.clear();
    } else {
      seen_.pop_back();
    }
  }
  if (!is_same) {
    log_->reader.go_to(seen_.empty() ? 0 : seen_.back().offset + seen_.back().size);
  }
}

// Goes over to the file that has the name now, if there is one.
void LogFollower::move_on() {
  std::unique_ptr<Opened> next;
  std::unique_ptr<Opened> backup;
  int why = 0;
  if (!open_pair(&next, &backup, &why)) {
    if (why != ENOENT) {
      error_ = why;
    }
    return;
  }
  const auto is_known = [&backup](const std::unique_ptr<Opened>& log) {
    return log != nullptr && backup->file.is_same(log->file);
  };
  if (log_ != nullptr) {
    print(*log_, true);
  }
  if (backup != nullptr && !is_known(log_) && !is_known(old_backup_)) {
    // The log was full twice since the last look.
    printer_->set_log(backup_path_);
    print(*backup, true);
    printer_->set_log(path_);
  }
  log_ = std::move(next);
  old_backup_ = std::move(backup);
  seen_.clear();
  state_ = {};
  has_changed_ = true;
  read_changes();
}

// The log and the backup beside it, of one moment: no file is both, and none is missed. False, and
// why, when there is no log; `*backup` is right all the same.
bool LogFollower::open_pair(std::unique_ptr<Opened>* log, std::unique_ptr<Opened>* backup,
                            int* why) const {
  constexpr int kTries = 100;
  const auto open = [](const std::string& path, int* reason) {
    auto file = LogFile::open(path, reason);
    return file ? std::make_unique<Opened>(std::move(*file)) : nullptr;
  };
  const bool has_backup = backup_path_ != path_;
  for (int i = 0; i < kTries; ++i) {
    int ignored = 0;
    *backup = has_backup ? open(backup_path_, &ignored) : nullptr;
    *log = open(path_, why);
    const bool is_stable = *backup != nullptr ? (*backup)->file.is_named(backup_path_)
                                              : !has_backup || ignored != ENOENT ||
                                                    access(backup_path_.c_str(), F_OK) != 0;
    if (is_stable) {
      break;
    }
  }
  return *log != nullptr;
}

void LogFollower::remember(const LogEvent& event) {
  seen_.push_back({event.offset, event.size, digest_of(event.offset, event.size)});
  if (seen_.size() > kMostSeen) {
    seen_.pop_front();
  }
}

size_t LogFollower::digest_of(uint64_t offset, uint64_t size) {
  bytes_.resize(static_cast<size_t>(size));
  const size_t count = log_->file.read(offset, bytes_.data(), bytes_.size());
  return std::hash<std::string_view>()(std::string_view(bytes_).substr(0, count));
}

}  // namespace kqsup
