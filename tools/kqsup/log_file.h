// A log that is only looked at: opened for reading, without a lock, and without a trace.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "event_reader.h"

namespace kqsup {

class LogFile : public LogBytes {
 public:
  // The regular file of this name; none, and why, when there is none that can be read.
  [[nodiscard]] static std::optional<LogFile> open(const std::string& path, int* why);

  LogFile(LogFile&& other) noexcept
      : file_(std::exchange(other.file_, -1)),
        device_(other.device_),
        node_(other.node_),
        error_(other.error_) {}
  LogFile& operator=(LogFile&& other) noexcept {
    std::swap(file_, other.file_);
    std::swap(device_, other.device_);
    std::swap(node_, other.node_);
    std::swap(error_, other.error_);
    return *this;
  }
  ~LogFile() override;

  // Bytes that cannot be read are not there; error() tells it.
  size_t read(uint64_t offset, char* to, size_t size) override;

  // Why the last read() that failed did, as errno has it; 0 when none has.
  [[nodiscard]] int error() const { return error_; }

  // What changes whenever the file is written to; two of different times compare unequal.
  struct State {
    uint64_t size = 0;
    int64_t seconds = 0;
    int64_t nanoseconds = 0;
    bool operator==(const State&) const = default;
  };
  [[nodiscard]] State state() const;

  // Whether the two are one file under two names. While one is open no other takes its number.
  [[nodiscard]] bool is_same(const LogFile& other) const {
    return device_ == other.device_ && node_ == other.node_;
  }
  // Whether it is what this name stands for now.
  [[nodiscard]] bool is_named(const std::string& path) const;

 private:
  LogFile(int file, dev_t device, ino_t node) : file_(file), device_(device), node_(node) {}

  int file_;
  dev_t device_;
  ino_t node_;
  int error_ = 0;
};

}  // namespace kqsup
