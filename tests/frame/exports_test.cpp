// What the shared objects export, need and are called.

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include "gtest/gtest.h"
#include "support/elf_file.h"
#include "support/text_file.h"

namespace {

using kqsupt::tests::ElfFile;
using kqsupt::tests::read_elf;
using kqsupt::tests::read_file;
using kqsupt::tests::without_comments;
using Names = std::set<std::string>;

const std::string kSource = KQSUPT_SOURCE_DIR;

// The first group of every match.
Names matches(const std::string& text, const std::string& pattern) {
  const std::regex expression(pattern);
  Names names;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
       ++match) {
    names.insert((*match)[1]);
  }
  return names;
}

Names in_version_script() {
  return matches(read_file(kSource + "/src/exports.map"), "(\\w+);");
}

Names in_public_headers() {
  Names names;
  for (const auto& header : std::filesystem::directory_iterator(kSource + "/include/kqsupt")) {
    names.merge(
        matches(without_comments(read_file(header.path())), "\nKQSUPT_API[^;(]*\\b(\\w+)\\s*\\("));
  }
  return names;
}

void expect_same(const Names& one, const std::string& in_one, const Names& other,
                 const std::string& in_other) {
  Names only;
  std::set_difference(one.begin(), one.end(), other.begin(), other.end(),
                      std::inserter(only, only.end()));
  for (const std::string& name : only) {
    ADD_FAILURE() << name << " is in " << in_one << " but not in " << in_other;
  }
  only.clear();
  std::set_difference(other.begin(), other.end(), one.begin(), one.end(),
                      std::inserter(only, only.end()));
  for (const std::string& name : only) {
    ADD_FAILURE() << name << " is in " << in_other << " but not in " << in_one;
  }
}

class Library : public testing::Test {
 protected:
  const ElfFile library_ = read_elf(KQSUPT_LIB_DIR "/libkqsupt.so.9");
};

TEST_F(Library, ExportsExactlyTheVersionScript) {
  expect_same(library_.exported, "the library", in_version_script(), "the version script");
}

TEST_F(Library, ExportsExactlyThePublicHeaders) {
  expect_same(library_.exported, "the library", in_public_headers(), "the public headers");
}

TEST_F(Library, ExportsTheWholeInterface) {
  constexpr size_t kWholeInterface = 271;
  EXPECT_EQ(in_version_script().size(), kWholeInterface);
}

TEST_F(Library, ExportsOnlyTheLibrarysPrefixes) {
  for (const std::string& name : library_.exported) {
    EXPECT_TRUE(name.starts_with("SM") || name.starts_with("SUPT")) << name;
  }
}

TEST_F(Library, NeedsTheCAndMathematicsLibrariesAndTheBoundedLibraryOnly) {
  Names others = library_.needed;
  EXPECT_EQ(others.erase("libkqbounded.so.1"), 1U);
  EXPECT_EQ(others.erase("libc.so.6"), 1U);
  EXPECT_EQ(others.erase("libm.so.6"), 1U);
#ifdef KQSUPT_SANITIZED
  std::erase_if(others, [](const std::string& name) {
    return name.starts_with("libasan.so") || name.starts_with("libubsan.so") ||
           name == "libgcc_s.so.1";
  });
#endif
  for (const std::string& name : others) {
    ADD_FAILURE() << "the library needs " << name;
  }
}

TEST_F(Library, IsFoundByItsName) {
  EXPECT_EQ(library_.soname, "libkqsupt.so.9");
}

TEST_F(Library, FindsTheBoundedLibraryBesideItself) {
  EXPECT_EQ(library_.runpath, "$ORIGIN");
}

TEST(BoundedLibrary, ExportsExactlyItsVersionScript) {
  const ElfFile bounded = read_elf(KQSUPT_LIB_DIR "/libkqbounded.so.1");
  expect_same(bounded.exported, "the bounded library",
              matches(read_file(kSource + "/bounded/exports.map"), "\\b(\\w+);"),
              "its version script");
  EXPECT_EQ(bounded.soname, "libkqbounded.so.1");
}

}  // namespace
