// An INI file of a test's own, read and written through the exports.
#pragma once

#include <cstring>
#include <ostream>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/config.h"
#include "support/guarded.h"
#include "support/scratch.h"

namespace kqsupt::tests {

// What a read of text answers.
struct Reading {
  SMStatus status;
  std::string text;  // the bytes of the buffer up to those that were not touched
  uint32_t size;
  bool operator==(const Reading&) const = default;
};

inline void PrintTo(const Reading& reading, std::ostream* out) {
  *out << reading.status << " \"" << reading.text << "\" " << reading.size;
}

class Ini : public testing::Test {
 protected:
  static constexpr char kUntouched = '~';

  void put_file(const std::string& content) { put(path_, content); }
  [[nodiscard]] std::string file() const { return content_of(path_); }

  Reading read(const char* section, const char* key, uint32_t capacity = 100,
               const char* fallback = nullptr, uint32_t fallback_size = 0) {
    const Guarded<char> buffer(capacity, kUntouched);
    uint32_t size = capacity;
    const SMStatus status =
        SMReadINIPathFileValue(section, key, SMINI_TYPE_UTF8, buffer.data(), &size, fallback,
                               fallback_size, path_.c_str(), 1);
    std::string text(buffer.data(), capacity);
    text.resize(text.find_last_not_of(kUntouched) + 1);
    return {status, text, size};
  }

  // What reading a value that is there answers.
  static Reading found(const std::string& value) {
    return {SM_STATUS_SUCCESS, value + '\0', static_cast<uint32_t>(value.size() + 1)};
  }

  SMStatus write(const char* section, const char* key, const char* value) {
    const uint32_t size = value != nullptr ? static_cast<uint32_t>(std::strlen(value) + 1) : 0;
    return SMWriteINIPathFileValue(section, key, SMINI_TYPE_UTF8, value, size, path_.c_str(), 1);
  }

  // The content that a file has after a value was written to it; the status, when that failed.
  std::string written(const std::string& content, const char* section, const char* key,
                      const char* value) {
    put_file(content);
    const SMStatus status = write(section, key, value);
    return status == SM_STATUS_SUCCESS ? file() : "status " + std::to_string(status);
  }

  Scratch scratch_;
  std::string path_ = scratch_.file("a.ini");
};

}  // namespace kqsupt::tests
