// The install registry and the paths that are made of it.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "gtest/gtest.h"
#include "kqsupt.h"
#include "support/guarded.h"
#include "support/program.h"
#include "support/scratch.h"

namespace {

using namespace std::string_literals;
using kqsupt::tests::content_of;
using kqsupt::tests::Guarded;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

constexpr char kRegistry[] = "/etc/ybreg.cfg";
constexpr SMStatus kFailed = 0xFFFFFFFF;

// A registry of the test's own, in place of the sandbox's.
class InstallPaths : public testing::Test {
 protected:
  ~InstallPaths() override {
    unsetenv("quillanceinstallpath");
    unsetenv("QUILLANCEINSTALLPATH");
    use_registry(before_);
  }

  static void use_registry(const std::string& text) {
    put(kRegistry, text);
    uint32_t size = 0;
    EXPECT_EQ(SMGetPathByProductIDandType(99, 2, nullptr, &size), SM_STATUS_DATA_NOT_FOUND);
  }

  // A directory that exists.
  std::string make(const std::string& name) {
    const std::string path = scratch_.file(name);
    std::filesystem::create_directories(path);
    return path;
  }

  // The path, or "status N".
  static std::string path(int32_t product, uint32_t type) {
    char buffer[300];
    uint32_t size = sizeof buffer;
    const SMStatus status = SMGetPathByProductIDandType(product, type, buffer, &size);
    if (status != 0) {
      EXPECT_EQ(size, 0U);
      return "status " + std::to_string(status);
    }
    EXPECT_EQ(size, std::strlen(buffer) + 1);
    return buffer;
  }

  const std::string before_ = content_of(kRegistry);
  Scratch scratch_;
};

TEST_F(InstallPaths, EveryProductAndTypeHasItsKey) {
  const std::pair<const char*, int32_t> kProducts[] = {
      {"tovu", -1},  {"tumbr", 33},  {"Kelvane", 34},   {"nurb", 44},
      {"vosk5", 88}, {"wexlib", 45}, {"Quillance", 35},
  };
  const std::pair<const char*, uint32_t> kKeys[] = {{"installpath", 2}, {"vardatapath", 4},
                                                    {"logpath", 8},     {"configtool", 16},
                                                    {"inipath", 64},    {"binpath", 128}};
  std::string registry;
  for (const auto& [product, id] : kProducts) {
    for (const auto& [key, type] : kKeys) {
      registry += product + "."s + key + "=" + make(product + "/"s + key) + "\n";
    }
  }
  use_registry(registry);
  for (const auto& [product, id] : kProducts) {
    for (const auto& [key, type] : kKeys) {
      EXPECT_EQ(path(id, type), scratch_.file(product + "/"s + key));
    }
    EXPECT_EQ(path(id, 32), scratch_.file(product + "/installpath"s));
  }
}

TEST_F(InstallPaths, ValuesLoseTheirBlanksAndOneSlash) {
  const std::string q = make("q");
  for (const std::string& value : {q, q + "/", q + "/  ", " \t" + q + " \t"}) {
    use_registry("Quillance.installpath=" + value + "\n");
    EXPECT_EQ(path(35, 2), q) << value;
  }
  use_registry("Quillance.installpath=" + q + "//\n");
  EXPECT_EQ(path(35, 2), q + "/");
  use_registry("Quillance.installpath=" + q + "\r\n");
  EXPECT_EQ(path(35, 2), "status 257");
}

TEST_F(InstallPaths, KeysAreExactAndTheFirstOneCounts) {
  const std::string a = make("a");
  const std::string b = make("b");
  use_registry("; Quillance.installpath=" + b + "\n  # Quillance.installpath=" + b +
               "\nQuillance.installpath =" + b + "\nquillance.installpath=" + b +
               "\nxQuillance.installpath=" + b + "\nQuillance.installpathx=" + b +
               "\nQuillance.installpath\n\t Quillance.installpath= " + a +
               "\nQuillance.installpath=" + b);
  EXPECT_EQ(path(35, 2), a);
}

TEST_F(InstallPaths, AMissingKeyIsTheInstallPath) {
  const std::string q = make("q");
  use_registry("Quillance.installpath=" + q);
  for (const uint32_t type : {2U, 4U, 8U, 16U, 32U, 64U, 128U}) {
    EXPECT_EQ(path(35, type), q);
  }
}

TEST_F(InstallPaths, UnknownProductsTypesAndPathsAreNotFound) {
  use_registry("Quillance.installpath=" + make("q") + "\n");
  EXPECT_EQ(path(33, 2), "status 256");
  EXPECT_EQ(path(99, 2), "status 256");
  EXPECT_EQ(path(0, 2), "status 256");
  for (const uint32_t type : {0U, 1U, 3U, 6U, 256U, 0xFFFFFFFFU}) {
    EXPECT_EQ(path(35, type), "status 256");
  }
}

TEST_F(InstallPaths, ADirectoryMustExistNow) {
  const std::string q = make("q");
  use_registry("Quillance.installpath=" + q);
  EXPECT_EQ(path(35, 2), q);
  rmdir(q.c_str());
  EXPECT_EQ(path(35, 2), "status 257");
  make("q");
  EXPECT_EQ(path(35, 2), q);
}

TEST_F(InstallPaths, TheSizeIsAskedForAndChecked) {
  const std::string q = make("q");
  use_registry("Quillance.installpath=" + q);
  const auto needed = static_cast<uint32_t>(q.size() + 1);
  for (uint32_t capacity = 0; capacity <= needed + 1; ++capacity) {
    const bool fits = capacity >= needed;
    const Guarded<char> buffer(capacity, '~');
    uint32_t size = capacity;
    EXPECT_EQ(SMGetPathByProductIDandType(35, 2, buffer.data(), &size),
              fits ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, needed);
    if (fits) {
      EXPECT_EQ(buffer.data(), q);
    } else if (capacity != 0) {
      EXPECT_EQ(buffer.data()[0], '~');
    }
    size = capacity;
    EXPECT_EQ(SMGetPathByProductIDandType(35, 2, nullptr, &size),
              fits ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, needed);
  }
  EXPECT_EQ(SMGetPathByProductIDandType(35, 2, nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
}

TEST_F(InstallPaths, ASizeIsNeededOnlyForAPathThatIsThere) {
  const std::string q = make("q");
  use_registry("Quillance.installpath=" + q + "\ntumbr.installpath=" + q + "/gone\n");
  char buffer[300] = "~";
  EXPECT_EQ(SMGetPathByProductIDandType(35, 2, buffer, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMGetInstallPath(buffer, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMGetPathByProductIDandType(99, 2, buffer, nullptr), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(SMGetPathByProductIDandType(35, 3, buffer, nullptr), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(SMGetInstallPathByProductID(45, buffer, nullptr), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(SMGetInstallPathByProductID(33, buffer, nullptr), SM_STATUS_OPERATION_FAILED);
  EXPECT_STREQ(buffer, "~");
}

TEST_F(InstallPaths, AProductInstalledLaterIsFound) {
  use_registry("Quillance.installpath=" + make("q") + "\n");
  EXPECT_EQ(path(33, 2), "status 256");
  put(kRegistry, "tumbr.installpath=" + make("t") + "\n");
  EXPECT_EQ(path(33, 2), scratch_.file("t"));
}

TEST_F(InstallPaths, ATableThatIsKnownIsNotReadAgain) {
  const std::string q = make("q");
  use_registry("Quillance.installpath=" + q);
  put(kRegistry, "");
  EXPECT_EQ(path(35, 2), q);
  unlink(kRegistry);
  EXPECT_EQ(path(33, 2), "status 256");
  EXPECT_EQ(path(35, 2), "status 256");
}

TEST_F(InstallPaths, AValueOfMoreThan255BytesIsNone) {
  const std::string q = make("q");
  const std::string longest =
      q + "/" + std::string(255 - q.size() - 1 - 10, 'd') + "/" + std::string(9, 'e');
  ASSERT_EQ(longest.size(), 255U);
  std::filesystem::create_directories(longest);
  use_registry("Quillance.installpath=" + q + "\nQuillance.inipath=" + longest + "\n");
  EXPECT_EQ(path(35, 64), longest);
  std::filesystem::create_directories(longest + "f");
  use_registry("Quillance.installpath=" + q + "\nQuillance.inipath=" + longest + "f\n");
  EXPECT_EQ(path(35, 64), q);
}

TEST_F(InstallPaths, ALineOfMoreThan8450BytesIsSeveral) {
  const std::string a = make("a");
  const std::string b = make("b");
  const std::string line = "Quillance.installpath=" + a + "\nQuillance.installpath=" + b + "\n";
  use_registry(std::string(8450, 'x') + line);
  EXPECT_EQ(path(35, 2), a);
  use_registry(std::string(2 * 8450, ';') + line);
  EXPECT_EQ(path(35, 2), a);
  use_registry(std::string(8449, 'x') + line);
  EXPECT_EQ(path(35, 2), b);
  use_registry(std::string(8451, 'x') + line);
  EXPECT_EQ(path(35, 2), b);
}

TEST_F(InstallPaths, AnEmptyValueIsNoPathAndHidesWhatFollows) {
  const std::string q = make("q");
  use_registry("Quillance.installpath=" + q + "\nQuillance.logpath= \t\nQuillance.logpath=" + q +
               "\n");
  EXPECT_EQ(path(35, 8), "status 256");
  EXPECT_EQ(path(35, 2), q);
  use_registry("Quillance.installpath=\nQuillance.logpath=" + q + "\n");
  EXPECT_EQ(path(35, 8), q);
  EXPECT_EQ(path(35, 64), "status 256");
}

TEST_F(InstallPaths, ATooLongInstallPathIsNoneAndTheFamilysFallsBack) {
  const std::string k = make("f/k");
  const std::string too_long = "/" + std::string(255, 'd');
  use_registry("tovu.installpath=" + too_long + "\nKelvane.installpath=" + k +
               "\nQuillance.installpath=" + too_long + "\n");
  EXPECT_EQ(path(-1, 2), scratch_.file("f"));
  EXPECT_EQ(path(35, 2), "status 256");
}

TEST_F(InstallPaths, TheFamilysPathsFallBackOnThoseOfOthers) {
  const std::string f = make("f");
  const std::string k = make("f/k");
  const std::string g = make("g");
  const std::string h = make("g/h");
  use_registry("Kelvane.installpath=" + k + "/\nQuillance.installpath=" + h + "\n");
  EXPECT_EQ(path(-1, 2), f);
  EXPECT_EQ(path(-1, 64), f);
  use_registry("Quillance.installpath=" + h + "\n");
  EXPECT_EQ(path(-1, 2), g);
  use_registry("tovu.installpath=" + h + "/\nKelvane.installpath=" + k + "\n");
  EXPECT_EQ(path(-1, 2), h);
  EXPECT_EQ(path(-1, 8), h);
  use_registry("tovu.logpath=" + g + "\nKelvane.installpath=" + k + "\n");
  EXPECT_EQ(path(-1, 8), g);
  EXPECT_EQ(path(-1, 2), f);
  use_registry("Kelvane.installpath=/tmp\n");
  EXPECT_EQ(path(-1, 2), "/tmp");
}

TEST_F(InstallPaths, TheFamilysPathIsCutAtTheLastSlashOfAnothers) {
  const std::string f = make("f");
  make("f/k");
  use_registry("Kelvane.installpath=" + f + "//k\n");
  EXPECT_EQ(path(-1, 2), f);
  make("relative");
  ASSERT_EQ(chdir(scratch_.file("").c_str()), 0);
  use_registry("Kelvane.installpath=relative\n");
  EXPECT_EQ(path(-1, 2), "relative");
  ASSERT_EQ(chdir("/"), 0);
}

TEST_F(InstallPaths, TheEnvironmentOverridesAnInstallPath) {
  const std::string q = make("q");
  const std::string upper = make("upper");
  const std::string lower = make("lower");
  const std::string registry = "Quillance.installpath=" + q + "\nQuillance.inipath=" + q + "\n";
  setenv("QUILLANCEINSTALLPATH", upper.c_str(), 1);
  use_registry(registry);
  EXPECT_EQ(path(35, 2), upper);
  EXPECT_EQ(path(35, 8), upper);
  EXPECT_EQ(path(35, 64), q);
  setenv("quillanceinstallpath", lower.c_str(), 1);
  use_registry(registry);
  EXPECT_EQ(path(35, 2), lower);
  setenv("quillanceinstallpath", "", 1);
  use_registry(registry);
  EXPECT_EQ(path(35, 2), upper);
}

TEST_F(InstallPaths, TheEnvironmentIsAskedOnlyWhenTheTableIsMade) {
  const std::string q = make("q");
  const std::string given = make("given");
  use_registry("Quillance.installpath=" + q + "\n");
  setenv("QUILLANCEINSTALLPATH", given.c_str(), 1);
  EXPECT_EQ(path(35, 2), q);
  EXPECT_EQ(path(33, 2), "status 256");
  EXPECT_EQ(path(35, 2), given);
}

TEST_F(InstallPaths, AnOverrideIsTakenAsItIs) {
  const std::string given = make("given") + "/";
  setenv("quillanceinstallpath", given.c_str(), 1);
  use_registry("Quillance.installpath=/no/such\n");
  EXPECT_EQ(path(35, 2), given);
  EXPECT_EQ(path(35, 64), given);
}

TEST_F(InstallPaths, OverridesDoNotReachTheFamilysFallbacks) {
  const std::string k = make("f/k");
  setenv("kelvaneinstallpath", make("g/k").c_str(), 1);
  use_registry("Kelvane.installpath=" + k + "\n");
  EXPECT_EQ(path(34, 2), scratch_.file("g/k"));
  EXPECT_EQ(path(-1, 2), scratch_.file("f"));
  setenv("tovuinstallpath", make("t").c_str(), 1);
  use_registry("Kelvane.installpath=" + k + "\n");
  EXPECT_EQ(path(-1, 2), scratch_.file("t"));
  // The registry's own fallbacks come before the install path.
  EXPECT_EQ(path(-1, 8), scratch_.file("f"));
  unsetenv("tovuinstallpath");
  unsetenv("kelvaneinstallpath");
}

TEST_F(InstallPaths, ARegistryMayHoldAnything) {
  const std::string q = make("q");
  const std::string line = "Quillance.installpath=" + q + "\n";
  for (const std::string& text :
       {std::string(100000, 'x') + "\n" + line, "=\n=\n.=\n" + line, "\0\n"s + line,
        "Quillance.installpath"s + "\n" + line, "\xFF\xFE\n" + line}) {
    use_registry(text);
    EXPECT_EQ(path(35, 2), q);
  }
  for (const std::string& text :
       {""s, "\n"s, "Quillance.installpath=\n"s, "Quillance.installpath=/\n"s,
        "Quillance.\0installpath=/tmp\n"s}) {
    use_registry(text);
    EXPECT_EQ(path(35, 2), "status 256");
  }
}

TEST_F(InstallPaths, ShortFormsAskForTheInstallPath) {
  const std::string q = make("q");
  const std::string w = make("w");
  use_registry("Quillance.installpath=" + q + "\nwexlib.installpath=" + w + "\n");
  char buffer[300];
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMGetInstallPath(buffer, &size), 0U);
  EXPECT_EQ(buffer, q);
  EXPECT_EQ(size, q.size() + 1);
  size = sizeof buffer;
  EXPECT_EQ(SMGetInstallPathByProductID(45, buffer, &size), 0U);
  EXPECT_EQ(buffer, w);
  size = 3;
  EXPECT_EQ(SMGetInstallPath(buffer, &size), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, q.size() + 1);
}

// ---- The macro ----

TEST_F(InstallPaths, TheMacroStandsForTheFamilysPath) {
  const std::string t = make("t");
  use_registry("tovu.installpath=" + t);
  const std::pair<std::string, std::string> kTexts[] = {
      {"x/@YBINSTALLPATH@/bin", "x/" + t + "/bin"},
      {"@ybInstallPath@", t},
      {"@ybinstallpath@@ybinstallpath@", t + "@ybinstallpath@"},
      {"@@ybinstallpath@", "@" + t},
      {"plain", "plain"},
      {"", ""},
      {"@ybinstallpath", "@ybinstallpath"},
  };
  for (const auto& [text, expected] : kTexts) {
    const auto needed = static_cast<uint32_t>(expected.size() + 1);
    for (uint32_t capacity = 0; capacity <= needed + 1; ++capacity) {
      const Guarded<char> source(text.c_str(), text.size() + 1);
      const Guarded<char> buffer(capacity, '~');
      uint32_t size = capacity;
      EXPECT_EQ(SMExpandYbInstallPathString(source.data(), buffer.data(), &size),
                capacity >= needed ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL);
      EXPECT_EQ(size, needed);
      if (capacity >= needed) {
        EXPECT_EQ(buffer.data(), expected);
      }
    }
  }
}

TEST_F(InstallPaths, ATextForTheMacroHasLessThan255Bytes) {
  char buffer[300];
  uint32_t size = sizeof buffer;
  const std::string longest(254, 'x');
  EXPECT_EQ(SMExpandYbInstallPathString(longest.c_str(), buffer, &size), 0U);
  EXPECT_EQ(size, 255U);
  size = sizeof buffer;
  EXPECT_EQ(SMExpandYbInstallPathString((longest + "x").c_str(), buffer, &size), kFailed);
  EXPECT_EQ(size, 0U);
}

TEST_F(InstallPaths, FailuresOfTheMacroTellTheSizeZero) {
  use_registry("");
  char buffer[300];
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMExpandYbInstallPathString("@ybinstallpath@", buffer, &size),
            SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(size, 0U);
  use_registry("tovu.installpath=/no/such\n");
  size = sizeof buffer;
  EXPECT_EQ(SMExpandYbInstallPathString("@ybinstallpath@", buffer, &size),
            SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(size, 0U);
  size = sizeof buffer;
  EXPECT_EQ(SMExpandYbInstallPathString(nullptr, buffer, &size), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(size, 0U);
  size = sizeof buffer;
  EXPECT_EQ(SMExpandYbInstallPathString("x", nullptr, &size), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(size, 0U);
  size = 1;
  EXPECT_EQ(SMExpandYbInstallPathString("x", nullptr, &size), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 2U);
  EXPECT_EQ(SMExpandYbInstallPathString("x", buffer, nullptr), SM_STATUS_INVALID_PARAMETER);
}

// ---- Products ----

TEST_F(InstallPaths, ProductsHaveKeysInAnyCase) {
  EXPECT_EQ(SMProductSIDToID("QUILLANCE"), 35);
  EXPECT_EQ(SMProductSIDToID("tovu"), -1);
  EXPECT_EQ(SMProductSIDToID("none"), 0);
  EXPECT_EQ(SMProductSIDToID(""), 0);
  EXPECT_EQ(SMProductSIDToID(nullptr), 0);
  for (const int32_t id : {-1, 33, 34, 44, 88, 45, 35}) {
    char* key = SMProductIDToSID(id);
    EXPECT_EQ(SMProductSIDToID(key), id);
    SMFreeMem(key);
  }
  EXPECT_EQ(SMProductIDToSID(99), nullptr);
  EXPECT_EQ(SMProductIDToSID(0), nullptr);
}

// ---- Names of files ----

std::string text_of(char* made) {
  const std::string text = made != nullptr ? made : "(null)";
  SMFreeMem(made);
  return text;
}

TEST_F(InstallPaths, PathsAreMadeOfDirectoryAndName) {
  const std::string q = make("q");
  const std::string l = make("l");
  use_registry("Quillance.installpath=" + q + "\nQuillance.logpath=" + l + "\n");
  EXPECT_EQ(text_of(SMMakePathFileNameByPID(35, "sub", "f")), q + "/sub/f");
  EXPECT_EQ(text_of(SMMakePathFileNameByPID(35, nullptr, "f")), q + "/f");
  EXPECT_EQ(text_of(SMMakePathFileNameByPID(35, "", "f")), q + "/f");
  EXPECT_EQ(text_of(SMMakePathFileNameByPIDAndType(35, 8, "a/b", "f")), l + "/a/b/f");
  const std::string long_name(1000, 'n');
  EXPECT_EQ(text_of(SMMakePathFileNameByPIDAndType(35, 8, nullptr, long_name.c_str())),
            l + "/" + long_name);
  EXPECT_EQ(SMMakePathFileNameByPID(35, "sub", nullptr), nullptr);
  EXPECT_EQ(SMMakePathFileNameByPID(33, "sub", "f"), nullptr);
  EXPECT_EQ(SMMakePathFileNameByPIDAndType(35, 3, "sub", "f"), nullptr);
}

TEST_F(InstallPaths, ALocalizedFileIsTheFirstThatExists) {
  const std::string base = make("base");
  const std::string exact = make("base/d/en/US/s") + "/f";
  const std::string language = make("base/d/en/s") + "/f";
  const std::string none = make("base/d/s") + "/f";
  const auto find = [&](const char* id) {
    return text_of(SMGetLocalizedPathFileName(base.c_str(), "d", id, "s", "f"));
  };
  EXPECT_EQ(find("en_US"), "(null)");
  put(none, "");
  EXPECT_EQ(find("en_US"), none);
  put(language, "");
  EXPECT_EQ(find("en_US"), language);
  EXPECT_EQ(find("en"), language);
  put(exact, "");
  EXPECT_EQ(find("en_US"), exact);
  EXPECT_EQ(find("de_DE"), none);
  setenv("LANG", "en_US", 1);
  EXPECT_EQ(find(nullptr), exact);
  unsetenv("LANG");
  EXPECT_EQ(find("123456789"), "(null)");
  EXPECT_EQ(find("12345678"), none);
}

TEST_F(InstallPaths, ALocalizedFileNeedsNoBaseAndNoSubDirectory) {
  const std::string base = make("base");
  make("base/d/de");
  put(base + "/d/de/f", "");
  ASSERT_EQ(chdir(base.c_str()), 0);
  EXPECT_EQ(text_of(SMGetLocalizedPathFileName(nullptr, "d", "de_AT", nullptr, "f")), "./d/de/f");
  EXPECT_EQ(text_of(SMGetLocalizedPathFileName(nullptr, "d", "de_AT", "", "f")), "./d/de/f");
  EXPECT_EQ(SMGetLocalizedPathFileName(nullptr, nullptr, "de", "", "f"), nullptr);
  EXPECT_EQ(SMGetLocalizedPathFileName(nullptr, "d", "de", "", nullptr), nullptr);
  ASSERT_EQ(chdir("/"), 0);
}

TEST_F(InstallPaths, ALocalizedPathHasAtMost255Bytes) {
  const std::string base = make("b");
  std::string directory = std::string(255 - base.size() - 4, 'd');
  make("b/" + directory);
  put(base + "/" + directory + "/f", "");
  put(base + "/" + directory + "/fg", "");
  EXPECT_EQ(text_of(SMGetLocalizedPathFileName(base.c_str(), directory.c_str(), "en", "", "fg")),
            base + "/" + directory + "/fg");
  put(base + "/" + directory + "/fgh", "");
  EXPECT_EQ(SMGetLocalizedPathFileName(base.c_str(), directory.c_str(), "en", "", "fgh"), nullptr);
}

TEST_F(InstallPaths, AreAskedForByManyThreads) {
  const std::string q = make("q");
  use_registry("Quillance.installpath=" + q);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int n = 0; n < 200; ++n) {
        EXPECT_EQ(path(i % 2 == 0 ? 35 : 33, 2), i % 2 == 0 ? q : "status 256");
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
