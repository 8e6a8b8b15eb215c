// Loading and unloading the library in one process, which is not linked with it.

#include <dirent.h>
#include <dlfcn.h>
#include <malloc.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include "gtest/gtest.h"
#include "support/program.h"
#include "support/scratch.h"

namespace {

// What a process holds: heap bytes in use (none to be seen under a sanitizer, which tells of leaks
// itself), descriptors, mappings of the library's files.
using Holdings = std::tuple<size_t, size_t, size_t>;

Holdings holdings() {
  // All that the looking itself allocates is released again before the heap is asked.
  size_t mappings = 0;
  {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
      mappings += line.find("libkq") != std::string::npos ? 1 : 0;
    }
  }
  size_t descriptors = 0;
  DIR* directory = opendir("/proc/self/fd");
  while (directory != nullptr && readdir(directory) != nullptr) {
    ++descriptors;
  }
  closedir(directory);
  return {mallinfo2().uordblks, descriptors, mappings};
}

bool load_and_unload() {
  void* library = dlopen(KQSUPT_LIB_DIR "/libkqsupt.so.9", RTLD_NOW);
  EXPECT_NE(library, nullptr) << dlerror();
  if (library == nullptr) {
    return false;
  }
  using Version = uint32_t (*)();
  const auto version = reinterpret_cast<Version>(dlsym(library, "SUPTGetMajorVersion"));
  EXPECT_NE(version, nullptr);
  EXPECT_EQ(version(), 1U);
  dlclose(library);
  return dlopen(KQSUPT_LIB_DIR "/libkqsupt.so.9", RTLD_NOW | RTLD_NOLOAD) == nullptr;
}

TEST(Loading, UnloadingUnmapsTheLibrary) {
  EXPECT_TRUE(load_and_unload());
}

TEST(Loading, AHundredTimesLeavesNothingBehind) {
  // The first rounds fill what the loader and the heap keep for later ones, some of it only after
  // more than a hundred.
  for (int i = 0; i < 200; ++i) {
    ASSERT_TRUE(load_and_unload());
    holdings();
  }
  const Holdings before = holdings();
  for (int i = 0; i < 100; ++i) {
    ASSERT_TRUE(load_and_unload()) << "at load " << i;
  }
  EXPECT_EQ(holdings(), before);
}

// With the library goes the table, and what is in it.
TEST(Loading, UnloadingUnloadsWhatUsersShare) {
  const kqsupt::tests::Scratch scratch;
  setenv("KQSUPT_LOADS", scratch.file("loads").c_str(), 1);
  void* library = dlopen(KQSUPT_LIB_DIR "/libkqsupt.so.9", RTLD_NOW);
  ASSERT_NE(library, nullptr) << dlerror();
  using Link = void* (*)(const char*, const char*, const char*);
  const auto link = reinterpret_cast<Link>(dlsym(library, "SMFLibLinkToExportFN"));
  EXPECT_NE(link("one", KQSUPT_LIB_DIR "/libcounted-library.so", "answer"), nullptr);
  EXPECT_NE(link("two", KQSUPT_LIB_DIR "/libcounted-library.so", "question"), nullptr);
  EXPECT_EQ(kqsupt::tests::content_of(scratch.file("loads")), "+");
  dlclose(library);
  EXPECT_EQ(kqsupt::tests::content_of(scratch.file("loads")), "+-");
  EXPECT_EQ(dlopen(KQSUPT_LIB_DIR "/libkqsupt.so.9", RTLD_NOW | RTLD_NOLOAD), nullptr);
  unsetenv("KQSUPT_LOADS");
}

// A process that ends with the library loaded stops it on its way out.
void expect_clean_end(const std::vector<std::string>& more) {
  std::vector<std::string> command = {kqsupt::tests::built_program("leaves-loaded"),
                                      KQSUPT_LIB_DIR "/libkqsupt.so.9"};
  command.insert(command.end(), more.begin(), more.end());
  const kqsupt::tests::Outcome outcome = kqsupt::tests::run(command);
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(outcome.signal, 0);
  EXPECT_EQ(outcome.out + outcome.err, "");
}

TEST(Loading, AProcessMayEndWithoutUnloading) {
  expect_clean_end({});
}

TEST(Loading, AProcessMayEndOnAnotherThreadWithoutUnloading) {
  expect_clean_end({"on a thread"});
}

}  // namespace
