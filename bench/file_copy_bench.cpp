// Copying files: ours beside the standard library's, and beside a loop that reads and writes.

#include <fcntl.h>
#include <kqsupt/os.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "measure.h"
#include "ratio_table.h"

namespace kqbench {
namespace {

constexpr const char* kFilesystem = "std::filesystem";
constexpr const char* kLoop = "loop of 8192 bytes";

struct Files {
  std::string source;
  std::string destination;
};

template <size_t kSize>
const Files& files() {
  static const Files both = [] {
    const std::string path = std::string(std::getenv("TMPDIR")) + "/copied" + std::to_string(kSize);
    std::ofstream(path, std::ios::binary) << std::string(kSize, 'x');
    return Files{path, path + ".copy"};
  }();
  return both;
}

void copy_ours(const Files& both) {
  require(SMFileCopy(both.source.c_str(), both.destination.c_str(), 1) == SM_STATUS_SUCCESS);
}

void copy_by_filesystem(const Files& both) {
  require(std::filesystem::copy_file(both.source, both.destination,
                                     std::filesystem::copy_options::overwrite_existing));
}

void copy_by_loop(const Files& both) {
  const int from = open(both.source.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat about {};
  require(fstat(from, &about) == 0);
  const int to =
      open(both.destination.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, about.st_mode & 07777);
  std::vector<char> buffer(8192);
  for (ssize_t count; (count = read(from, buffer.data(), buffer.size())) > 0;) {
    require(write(to, buffer.data(), static_cast<size_t>(count)) == count);
  }
  require(fchmod(to, about.st_mode & 07777) == 0);
  close(to);
  close(from);
}

// A first copy makes the destination: each that is measured copies over a file.
template <size_t kSize>
void add_copy(const std::string& row, const char* contestant, void (*copy)(const Files&)) {
  constexpr size_t kCopies = kSize < 100000 ? 100 : 1;
  const auto prepare = [copy] {
    copy(files<kSize>());
    return 0;
  };
  add_measurement(row, contestant, kCopies, prepare, [copy](int) {
    for (size_t i = 0; i < kCopies; ++i) {
      copy(files<kSize>());
    }
  });
}

template <size_t kSize>
Row add_row(const std::string& row, const std::string& text) {
  add_copy<kSize>(row, kOurs, copy_ours);
  add_copy<kSize>(row, kFilesystem, copy_by_filesystem);
  add_copy<kSize>(row, kLoop, copy_by_loop);
  return {row, text, 1.2, kFilesystem};
}

const bool kAdded = [] {
  std::vector<Row> rows{add_row<4096>("file copy/4K", "copy 4 KiB"),
                        add_row<1048576>("file copy/1M", "copy 1 MiB"),
                        add_row<16777216>("file copy/16M", "copy 16 MiB")};
  return add_family({"file copy", {kFilesystem, kLoop}, rows});
}();

}  // namespace
}  // namespace kqbench
