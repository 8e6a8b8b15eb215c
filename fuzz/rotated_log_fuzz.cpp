// Sequences of messages, rotations and deletions of a rotated log and its generations, beside a
// model.

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <string>

#include "kqsupt/log.h"
#include "scratch_file.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::put_bytes;
using kqsupt::fuzz::require;
using kqsupt::fuzz::scratch_file;

namespace {

constexpr uint32_t kMost = 0xFFFFFFFF;
constexpr uint32_t kCounts[] = {0, 1, 2, 3, 5, 9, kMost - 1, kMost};
constexpr uint32_t kSizes[] = {0, 1, 7, 30, 100, kMost};
constexpr uint32_t kNumbers[] = {1, 2, 3, 4, 6, 10, 100000, kMost - 1, kMost};

template <size_t kSize>
uint32_t one_of(const uint32_t (&choices)[kSize], Input* input) {
  return choices[input->byte() % kSize];
}

// What there is by number; 0 is the log itself.
using Files = std::map<uint32_t, std::string>;

const std::string& directory() {
  static const std::string path = [] {
    const std::string made = scratch_file("rotated");
    mkdir(made.c_str(), 0755);
    return made;
  }();
  return path;
}

std::string path_of(uint32_t number) {
  return directory() + "/trace" + (number != 0 ? "." + std::to_string(number) : "");
}

std::string content_of(const std::string& path) {
  std::string content;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  require(file != nullptr);
  char bytes[4096];
  for (size_t count = 0; (count = std::fread(bytes, 1, sizeof bytes, file)) != 0;) {
    content.append(bytes, count);
  }
  std::fclose(file);
  return content;
}

Files files_there() {
  Files files;
  DIR* names = opendir(directory().c_str());
  require(names != nullptr);
  while (const dirent* entry = readdir(names)) {
    const std::string name = entry->d_name;
    if (name.starts_with("trace")) {
      const uint32_t number =
          name == "trace" ? 0 : static_cast<uint32_t>(std::stoul(name.substr(6)));
      require(path_of(number) == directory() + "/" + name);
      files[number] = content_of(path_of(number));
    }
  }
  closedir(names);
  return files;
}

void rotate(Files* files, uint32_t max_size, uint32_t count) {
  const auto log = files->find(0);
  if (log == files->end() || log->second.size() <= max_size) {
    return;
  }
  Files rotated;
  for (const auto& [number, content] : *files) {
    if (number < count) {
      rotated.emplace(number + 1, content);
    } else if (number != 0) {
      rotated.emplace(number, content);  // unless another one has just got this number
    }
  }
  *files = rotated;
}

void append(Files* files, Input* input) {
  const uint32_t max_size = one_of(kSizes, input);
  const uint32_t count = one_of(kCounts, input);
  const uint32_t flags = input->byte();
  std::string message;
  for (uint32_t left = input->byte() % 40; left != 0; --left) {
    const uint8_t byte = input->byte();
    message += byte != 0 ? static_cast<char>(byte) : '%';
  }
  require(SMFileLogMsgToRotatedLog(message.c_str(), path_of(0).c_str(), max_size, count, flags) ==
          SM_STATUS_SUCCESS);
  rotate(files, max_size, count);
  std::string& content = (*files)[0];
  if ((flags & SM_LOG_SUFFIX_NEWLINE) != 0) {
    message += '\n';
  }
  if ((flags & (SM_LOG_PREFIX_TIME | SM_LOG_PREFIX_THREAD)) != 0) {
    const std::string now = content_of(path_of(0));
    require(now.starts_with(content) && now.ends_with(message));
    const size_t prefix = now.size() - content.size() - message.size();
    require(prefix > 0 && prefix < 128 && now[content.size()] == '[' &&
            now[content.size() + prefix - 2] == ']');
    content = now;
  } else {
    content += message;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  for (const auto& [number, content] : files_there()) {
    unlink(path_of(number).c_str());
  }
  Files files;
  Input input(data, size);
  for (int step = 0; step < 40 && input.size() != 0; ++step) {
    switch (input.byte() % 4) {
      case 0: {
        const uint32_t number = one_of(kNumbers, &input);
        files[number] = "put " + std::to_string(step);
        put_bytes(path_of(number), files[number].data(), files[number].size());
        break;
      }
      case 1: {
        const uint32_t max_size = one_of(kSizes, &input);
        const uint32_t count = one_of(kCounts, &input);
        SMFileRotateCheck(path_of(0).c_str(), max_size, count);
        rotate(&files, max_size, count);
        break;
      }
      case 2: {
        const uint32_t answer = input.byte() % 4;
        const uint32_t count = one_of(kCounts, &input);
        SMFileDeleteRotated(path_of(0).c_str(), answer, count);
        std::erase_if(files, [&](const auto& file) {
          return file.first == 0 || (answer == 1 && file.first <= count);
        });
        break;
      }
      default:
        append(&files, &input);
    }
    require(files_there() == files);
  }
  return 0;
}
