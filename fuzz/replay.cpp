// Runs a fuzz target over its corpus: each file is a test, named after it.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "gtest/gtest.h"
#include "support/text_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// A target ends the program when it finds something: that the test is over says all.
class Replay : public testing::Test {
 public:
  explicit Replay(std::string path) : path_(std::move(path)) {}

  void TestBody() override {
    // A copy of the exact size, on the heap, where the sanitizers see its ends.
    const std::string file = kqsupt::tests::read_file(path_);
    const std::vector<uint8_t> input(file.begin(), file.end());
    EXPECT_EQ(LLVMFuzzerTestOneInput(input.data(), input.size()), 0);
  }

 private:
  std::string path_;
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  std::error_code error;
  std::set<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(KQSUPT_CORPUS, error)) {
    files.insert(entry.path());
  }
  if (files.empty()) {
    std::fprintf(stderr, "%s has no files\n", KQSUPT_CORPUS);
    return 1;
  }
  for (const std::filesystem::path& file : files) {
    testing::RegisterTest("Replay", file.filename().c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [file]() -> testing::Test* { return new Replay(file); });
  }
  return RUN_ALL_TESTS();
}
