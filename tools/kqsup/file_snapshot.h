// Reading a file as it was at one moment, without touching it and without waiting for anybody.
#pragma once

#include <cstddef>
#include <string>

namespace kqsup {

struct FileSnapshot {
  enum class Result { kRead, kMissing, kUnreadable };
  Result result = Result::kMissing;
  std::string content;
  std::string why;  // it cannot be read
};

// The most that is read of a file: what is longer cannot be read.
inline constexpr size_t kLargestFile = size_t{64} << 20;

// A regular file that others may add to or replace meanwhile.
[[nodiscard]] FileSnapshot read_file(const std::string& path);

// A file of the kernel's own, which has no size. Empty when it cannot be read.
[[nodiscard]] std::string read_kernel_file(const std::string& path);
// The same of one that is short: what the first read gives is all.
[[nodiscard]] std::string read_kernel_line(const std::string& path);

}  // namespace kqsup
