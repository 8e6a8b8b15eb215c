#include <cstring>

#include "gtest/gtest.h"
#include "host_paths.h"
#include "kqsup/tree.h"
#include "kqsupt/config.h"
#include "nlohmann/json.hpp"
#include "support/program.h"

namespace {

using kqsup::HostPaths;
using kqsup::Root;
using kqsupt::tests::built_program;
using kqsupt::tests::Outcome;
using kqsupt::tests::put;
using kqsupt::tests::run;
using kqsupt::tests::Tree;
using nlohmann::ordered_json;

const char* no_environment(const char*) {
  return nullptr;
}

class KqsupPaths : public testing::Test {
 protected:
  [[nodiscard]] HostPaths paths(const std::string& registry,
                                HostPaths::Environment environment = no_environment) const {
    tree_.write("etc/ybreg.cfg", registry);
    return HostPaths(Root(tree_.root()), environment);
  }
  Tree tree_;
};

TEST_F(KqsupPaths, ReadsLinesAsTheLibraryDoes) {
  const HostPaths paths = this->paths(
      "; wexlib.installpath=/no\n# wexlib.installpath=/no\n  wexlib.installpath= \t/opt/w/ \t\n"
      "wexlib.installpath=/second\nwexlib.logpath =/no\nnurb.binpath=/b\r\n");
  EXPECT_EQ(paths.path("wexlib", "installpath"), "/opt/w");
  EXPECT_EQ(paths.path("wexlib", "logpath"), "/opt/w");
  EXPECT_EQ(paths.path("nurb", "binpath"), "/b\r");
  EXPECT_EQ(paths.path("nurb", "installpath"), "");
}

TEST_F(KqsupPaths, TakesTheFirstRegistryThereIs) {
  tree_.write("usr/lib/ext/mavo/ybreg.cfg", "nurb.installpath=/second\n");
  EXPECT_EQ(HostPaths(Root(tree_.root()), no_environment).registry(),
            "/usr/lib/ext/mavo/ybreg.cfg");
  EXPECT_EQ(paths("").registry(), "/etc/ybreg.cfg");
}

TEST_F(KqsupPaths, TheFamilyLiesAboveItsProducts) {
  EXPECT_EQ(paths("Kelvane.installpath=/opt/f/k/\n").path("tovu", "installpath"), "/opt/f");
  EXPECT_EQ(paths("Quillance.installpath=/opt/q\n").path("tovu", "logpath"), "/opt");
  EXPECT_EQ(paths("tovu.installpath=/t\nKelvane.installpath=/opt/f/k\n").path("tovu", "inipath"),
            "/t");
}

TEST_F(KqsupPaths, TheEnvironmentComesBeforeTheRegistry) {
  const HostPaths paths = this->paths(
      "Quillance.installpath=/opt/q\nQuillance.logpath=/l\n", [](const char* name) -> const char* {
        return std::strcmp(name, "QUILLANCEINSTALLPATH") == 0 ? "/env/" : nullptr;
      });
  EXPECT_EQ(paths.path("Quillance", "installpath"), "/env/");
  EXPECT_EQ(paths.path("Quillance", "binpath"), "/env/");
  EXPECT_EQ(paths.path("Quillance", "logpath"), "/l");
}

// The library is asked for each path, below the root that both see.
TEST(KqsupPathsOfTheHost, AreTheLibrarys) {
  const std::string old = kqsupt::tests::content_of("/etc/ybreg.cfg");
  const Tree tree;
  tree.make("a/b/c");
  const std::string at = tree.at("a");
  const std::string long_value(300, 'x');
  const std::string registries[] = {
      old,
      "",
      "Kelvane.installpath=" + at + "/b/c/\n",
      "Quillance.installpath=" + at + "/b\nQuillance.logpath=\n",
      "tovu.installpath=" + long_value + "\nKelvane.installpath=" + at + "/b\n",
      "wexlib.installpath=" + at + "\nwexlib.vardatapath=" + long_value + "\n",
      "wexlib.installpath =" + at + "\n\twexlib.installpath=\t" + at + "/b \t",
      std::string(8450, 'z') + "nurb.installpath=" + at + "\n",
      std::string("nurb.installpath=") + at + '\0' + "/b\nvosk5.binpath=" + at + "//\n",
      "tumbr.installpath=" + at + "\r\ntumbr.logpath=" + at + "/b/\n",
  };
  const std::pair<const char*, uint32_t> kinds[] = {{"installpath", 2}, {"vardatapath", 4},
                                                    {"logpath", 8},     {"configtool", 16},
                                                    {"inipath", 64},    {"binpath", 128}};
  for (const std::string& registry : registries) {
    put("/etc/ybreg.cfg", registry);
    const HostPaths paths(Root(), no_environment);
    for (const char* product :
         {"tovu", "tumbr", "Kelvane", "nurb", "vosk5", "wexlib", "Quillance"}) {
      for (const auto& [kind, type] : kinds) {
        const std::string path = paths.path(product, kind);
        char told[512] = "";
        uint32_t size = sizeof told;
        // The table of the library is read again where it does not know a path.
        SMStatus status = SMGetPathByProductIDandType(99, 2, told, &size);
        EXPECT_EQ(status, SM_STATUS_DATA_NOT_FOUND);
        size = sizeof told;
        status = SMGetPathByProductIDandType(SMProductSIDToID(product), type, told, &size);
        const bool is_there = !path.empty() && std::filesystem::exists(path);
        EXPECT_EQ(status, path.empty() ? SMStatus{SM_STATUS_DATA_NOT_FOUND}
                          : is_there   ? SMStatus{SM_STATUS_SUCCESS}
                                       : SMStatus{SM_STATUS_OPERATION_FAILED})
            << product << "." << kind << " in " << registry;
        EXPECT_EQ(is_there ? path : "", status == SM_STATUS_SUCCESS ? told : "");
      }
    }
  }
  put("/etc/ybreg.cfg", old);
}

// ---- The program ----

class KqsupPathsCommand : public KqsupPaths {
 protected:
  Outcome list(const std::vector<std::string>& options = {}) {
    std::vector<std::string> command{built_program("kqsup"), "paths", "--root", tree_.root()};
    command.insert(command.end(), options.begin(), options.end());
    return run(command);
  }
};

TEST_F(KqsupPathsCommand, ListsWhatIsThere) {
  tree_.write("etc/ybreg.cfg", "nurb.binpath=/opt/b\n");
  tree_.make("opt/b");
  const auto before = tree_.state();
  const Outcome outcome = list();
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(outcome.out,
            "PRODUCT  KIND     PATH    FROM      STATE\n"
            "nurb     binpath  /opt/b  registry  ok\n");
  EXPECT_EQ(tree_.state(), before);
}

TEST_F(KqsupPathsCommand, EndsWithOneWhenADirectoryIsMissing) {
  tree_.write("etc/ybreg.cfg", "nurb.installpath=/opt/n\nnurb.logpath=/opt/file\n");
  tree_.write("opt/file", "");
  const Outcome outcome = list({"--json"});
  EXPECT_EQ(outcome.exit_status, 1);
  const ordered_json all = ordered_json::parse(outcome.out);
  ASSERT_EQ(all.size(), 6U);
  EXPECT_EQ(all[0].dump(),
            R"({"product":"nurb","kind":"installpath","path":"/opt/n","from":"registry",)"
            R"("state":"missing"})");
  EXPECT_EQ(all[1]["from"], "nurb.installpath");
  EXPECT_EQ(all[4]["state"], "no directory");
}

TEST_F(KqsupPathsCommand, TellsThatThereIsNoRegistryOrThatItCannotBeRead) {
  EXPECT_EQ(list().exit_status, 1);
  tree_.make("etc/ybreg.cfg");
  EXPECT_EQ(list().exit_status, 2);
}

TEST_F(KqsupPathsCommand, CannotLookBelowWhatIsNoDirectory) {
  tree_.write("file", "");
  for (const char* path : {"nothing", "file"}) {
    const Outcome outcome = run({built_program("kqsup"), "paths", "--root", tree_.at(path)});
    EXPECT_EQ(outcome.exit_status, 2) << path;
    EXPECT_EQ(outcome.out, "") << path;
  }
}

TEST_F(KqsupPathsCommand, TellsHowItIsUsed) {
  EXPECT_NE(run({built_program("kqsup"), "paths", "--help"}).out.find("Example: kqsup paths"),
            std::string::npos);
}

TEST(KqsupPathsOfTheHost, WithoutARegistryTheEnvironmentDoesNotCount) {
  const Tree empty;
  empty.make("etc");
  const HostPaths paths(Root(empty.root()), [](const char*) { return "/env"; });
  EXPECT_FALSE(paths.why().empty());
  EXPECT_TRUE(paths.all().empty());
}

}  // namespace
