// Which file is the install registry, and what a library without one answers. Each fact is one of a
// program of its own, for the library chooses when it is loaded.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "gtest/gtest.h"
#include "support/program.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::built_program;
using kqsupt::tests::content_of;
using kqsupt::tests::Outcome;
using kqsupt::tests::put;
using kqsupt::tests::run;
using kqsupt::tests::Scratch;

constexpr char kFirst[] = "/etc/ybreg.cfg";
constexpr char kSecondDirectory[] = "/usr/lib/ext/mavo";
constexpr char kSecond[] = "/usr/lib/ext/mavo/ybreg.cfg";

// Both places empty, and the sandbox's registry back in the end.
class RegistryPlace : public testing::Test {
 protected:
  RegistryPlace() {
    std::filesystem::remove(kFirst);
    std::filesystem::create_directory(kSecondDirectory);
  }
  ~RegistryPlace() override {
    std::filesystem::remove_all(kFirst);
    std::filesystem::remove_all(kSecondDirectory);
    put(kFirst, before_);
  }

  // A registry with one product, which lies in a directory with the name, and what the start needs.
  void write(const char* place, const std::string& name) {
    std::filesystem::create_directories(scratch_.file("var/.ipc"));
    std::filesystem::create_directory(scratch_.file(name));
    put(place, "Quillance.installpath=" + scratch_.file(name) +
                   "\nwexlib.vardatapath=" + scratch_.file("var") + "\n");
  }

  // What the program says; it must end well.
  static std::string ask(const std::string& what) {
    const Outcome outcome = run({built_program("registry-probe"), what});
    EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
    return outcome.out;
  }

  const std::string before_ = content_of(kFirst);
  Scratch scratch_;
};

TEST_F(RegistryPlace, IsTheSecondOneWhereThereIsOnlyThat) {
  write(kSecond, "second");
  EXPECT_EQ(ask("path"), scratch_.file("second") + "\n");
}

TEST_F(RegistryPlace, IsTheFirstOneWhereThereAreBoth) {
  write(kFirst, "first");
  write(kSecond, "second");
  EXPECT_EQ(ask("path"), scratch_.file("first") + "\n");
}

TEST_F(RegistryPlace, IsChosenOnceForTheProcess) {
  write(kSecond, "second");
  EXPECT_EQ(ask("path-after-first-appears"), scratch_.file("second") + "\n");
}

TEST_F(RegistryPlace, IsTheFirstOneAlsoWhereItCannotBeRead) {
  std::filesystem::create_directory(kFirst);
  write(kSecond, "second");
  EXPECT_EQ(ask("path"), "status 256\n");
}

TEST_F(RegistryPlace, IsNotUsedWhenALaterModuleDoesNotStart) {
  put(kFirst, "Quillance.installpath=/usr\n");  // nothing says where named objects lie
  EXPECT_EQ(ask("path"), "status 256\n");
}

TEST_F(RegistryPlace, WithoutOneEveryFunctionAnswers) {
  EXPECT_EQ(ask("all"),
            "SMGetPathByProductIDandType 256 0\n"
            "SMGetInstallPath 256 0\n"
            "SMGetInstallPathByProductID 256 0\n"
            "SMExpandYbInstallPathString macro 256 0\n"
            "SMExpandYbInstallPathString plain 0 6\n"
            "SMProductSIDToID 35\n"
            "SMMakePathFileNameByPID null\n"
            "SMMakePathFileNameByPIDAndType null\n"
            "SMGetLocalizedPathFileName null\n"
            "SMReadINIFileValue 4294967295\n"
            "SMWriteINIFileValue 4294967295\n"
            "SMReadINIPathFileValue 272\n"
            "SMGetUTF8StrFromIDPathFile 26\n"
            "SMGetUCS2StrFromID 0\n"
            "SMReadPCIDevFile 7\n"
            "SMMkDir 0\n"
            "SMGetTmpFile 0 9\n"
            "SMRmDir 0\n");
}

TEST_F(RegistryPlace, ThatAppearsLaterIsNoHelp) {
  EXPECT_EQ(ask("path-after-first-appears"), "status 256\n");
}

}  // namespace
