#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <random>

#include "gtest/gtest.h"
#include "ini_reader.h"
#include "kqsup/tree.h"
#include "kqsupt/config.h"
#include "nlohmann/json.hpp"
#include "support/program.h"

namespace {

using kqsup::IniContent;
using kqsup::IniLine;
using kqsup::read_ini;
using kqsupt::tests::built_program;
using kqsupt::tests::content_of;
using kqsupt::tests::Outcome;
using kqsupt::tests::put;
using kqsupt::tests::run;
using kqsupt::tests::Tree;
using nlohmann::ordered_json;
using std::string_literals::operator""s;

const char* const kFile = "compared.ini";

std::string own_path() {
  return std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/Quillance/ini/ini/" + kFile;
}

// What the library answers, and what is read here.
void expect_the_same(const std::string& content, const char* section, const char* key) {
  put(own_path(), content);
  char value[9000] = "";
  uint32_t size = sizeof value;
  const SMStatus status =
      SMReadINIFileValue(section, key, SMINI_TYPE_UTF8, value, &size, nullptr, 0, kFile, 1);
  const IniContent ini = read_ini(content);
  const IniLine* line = ini.find(section, key);
  ASSERT_EQ(line != nullptr, status == SM_STATUS_SUCCESS)
      << "[" << section << "] " << key << " in:\n"
      << content;
  if (line != nullptr) {
    EXPECT_EQ(line->value, value) << content;
  }
  if (status == SM_STATUS_KEY_NOT_FOUND) {
    EXPECT_TRUE(ini.has_section(section)) << content;
  } else if (status == SM_STATUS_SECTION_NOT_FOUND || status == SM_STATUS_END_OF_FILE) {
    EXPECT_FALSE(ini.has_section(section)) << content;
  }
}

TEST(KqsupIni, GivesWhatTheLibraryGives) {
  const std::string long_line(8450, 'x');
  const std::string contents[] = {
      "",
      "\n",
      "k=before\n[s]\nk=v\n",
      "[s]\nk=first\nk=second\n[s]\nm=hidden\n",
      " \t[s] trailing\n \tk= v\r\nm\n",
      "[s]\n;k=no\n#k=no\n ;k=odd\nk =no\nk=yes",
      "[s]\n ;k=1\n[t]\nk=2\n[broken\nm=3\n[u]\nk=4\n",
      "[broken\n[s]\nk=v\n",
      "[s]\nm=1\n [broken\nk=v\n",
      "[s]\n=empty\nk==\n",
      "[]\nk=v\n[ s ]\nk=w\n",
      "[s]\nk=a\0b\nm\0=c\n\0k=d\n"s,
      "[s]\n" + long_line + "k=behind\n",
      "[s]\n" + long_line + "\nk=behind\n",
      "[s]\nm=" + long_line.substr(3) + "\nk=v\n",
      "[s" + long_line + "]\nk=v\n",
      "[S]\nK=v\n",
      "\xFF\xFE[s]\nk=v\n",
  };
  for (const std::string& content : contents) {
    for (const char* section : {"s", "", "t", "u", " s ", "S"}) {
      for (const char* key : {"k", "", "m", "K", "k ", ";k"}) {
        expect_the_same(content, section, key);
      }
    }
  }
}

TEST(KqsupIni, GivesWhatTheLibraryGivesOverManyFiles) {
  const char* const kPieces[] = {"[s]", "[t]", "[s", "\n", "\n",  "\n", "k", "=",           "v",
                                 ";",   "#",   " ",  "\t", "k=v", "\r", "]", "k=\n[s]\nk=w"};
  std::mt19937 random(7);
  for (int i = 0; i < 400; ++i) {
    std::string content = i % 2 == 0 ? "[s]\n" : "";
    for (auto pieces = random() % 24; pieces != 0; --pieces) {
      content += kPieces[random() % std::size(kPieces)];
    }
    expect_the_same(content, "s", "k");
    expect_the_same(content, "t", "k");
  }
}

TEST(KqsupIni, NamesTheBackupAsTheLibraryDoes) {
  EXPECT_EQ(kqsup::ini_backup("/x/a.ini"), "/x/a.bak");
  EXPECT_EQ(kqsup::ini_backup("/x/a"), "/x/a.bak");
  EXPECT_EQ(kqsup::ini_backup("/x/a.bak"), "/x/a.bak.bak");
  EXPECT_EQ(kqsup::ini_backup(std::string(260, 'a')), std::string(252, 'a') + "bak");
}

// ---- The program ----

class KqsupIniCommand : public testing::Test {
 protected:
#ifdef __SANITIZE_ADDRESS__
  // Which opens libraries for a program, but does not look where that was linked to look.
  KqsupIniCommand() {
    const std::filesystem::path programs =
        std::filesystem::path(built_program("kqsup")).parent_path();
    setenv("LD_LIBRARY_PATH", (programs / "../lib").c_str(), 1);
  }
  ~KqsupIniCommand() override {
    unsetenv("LD_LIBRARY_PATH");
  }
#endif

  Outcome ini(const std::vector<std::string>& words) {
    std::vector<std::string> command{built_program("kqsup"), "ini"};
    command.insert(command.end(), words.begin(), words.end());
    return run(command);
  }
  const Tree tree_;
  const std::string file_ = tree_.at("agent.ini");
};

TEST_F(KqsupIniCommand, GetPrintsTheBytesOfTheValue) {
  put(file_, "[Poll]\nSeconds= 30\r\n");
  const Outcome outcome = ini({"get", file_, "Poll", "Seconds"});
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, " 30\r\n");
  EXPECT_EQ(ordered_json::parse(ini({"get", "--json", file_, "Poll", "Seconds"}).out)["value"],
            " 30\r");
}

TEST_F(KqsupIniCommand, EndsWithOneWithoutTheKeyAndWithTwoWithoutTheFile) {
  put(file_, "[Poll]\nSeconds=30\n");
  EXPECT_EQ(ini({"get", file_, "Poll", "seconds"}).exit_status, 1);
  EXPECT_EQ(ini({"get", file_, "poll", "Seconds"}).exit_status, 1);
  EXPECT_EQ(ini({"unset", file_, "Poll", "seconds"}).exit_status, 1);
  EXPECT_EQ(ini({"unset", file_, "poll"}).exit_status, 1);
  EXPECT_EQ(ini({"list", file_, "poll"}).exit_status, 1);
  for (const char* command : {"get", "unset"}) {
    EXPECT_EQ(ini({command, tree_.at("none.ini"), "Poll", "Seconds"}).exit_status, 2);
    EXPECT_EQ(ini({command, tree_.root(), "Poll", "Seconds"}).exit_status, 2);
  }
  EXPECT_EQ(ini({"list", tree_.at("none.ini")}).exit_status, 2);
  EXPECT_EQ(content_of(file_), "[Poll]\nSeconds=30\n");
}

TEST_F(KqsupIniCommand, SetAndUnsetChangeTheFileThroughTheLibrary) {
  EXPECT_EQ(ini({"set", file_, "Poll", "Seconds", "30"}).exit_status, 0);
  EXPECT_EQ(content_of(file_), "[Poll]\nSeconds=30\n");
  EXPECT_EQ(ini({"set", file_, "Poll", "Seconds", "60"}).exit_status, 0);
  EXPECT_EQ(ini({"set", file_, "Log", "Path", ""}).exit_status, 0);
  EXPECT_EQ(content_of(file_), "[Poll]\nSeconds=60\n\n[Log]\nPath=\n");
  EXPECT_EQ(ini({"unset", file_, "Poll", "Seconds"}).exit_status, 0);
  EXPECT_EQ(ini({"unset", file_, "Log"}).exit_status, 0);
  EXPECT_EQ(content_of(file_), "[Poll]\n\n");
}

TEST_F(KqsupIniCommand, SetWritesNothingThatCouldNotBeFoundAgain) {
  put(file_, "[s]\nk=v\n");
  EXPECT_EQ(ini({"set", file_, "s", "a=b", "v"}).exit_status, 2);
  EXPECT_EQ(ini({"set", file_, "s", "#a", "v"}).exit_status, 2);
  EXPECT_EQ(ini({"set", file_, "s", "k", "v\n[t]"}).exit_status, 2);
  EXPECT_EQ(ini({"set", file_, "s]", "k", "v"}).exit_status, 2);
  EXPECT_EQ(ini({"set", file_, std::string(256, 's'), "k", "v"}).exit_status, 2);
  EXPECT_EQ(content_of(file_), "[s]\nk=v\n");
}

TEST_F(KqsupIniCommand, ListTellsWhichLinesAreFound) {
  put(file_, "[s]\nk=1\nk=2\n[t]\n[s]\nm=3\n");
  const Outcome outcome = ini({"list", file_});
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(outcome.out,
            "LINE  SECTION  KEY  VALUE  FOUND\n"
            "   2  s        k    1      yes\n"
            "   3  s        k    2      no\n"
            "   4  t        -           yes\n"
            "   6  s        m    3      no\n");
  const ordered_json all = ordered_json::parse(ini({"list", "--json", file_, "t"}).out);
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].dump(), R"({"line":4,"section":"t","key":null,"value":"","found":true})");
}

TEST_F(KqsupIniCommand, ListTellsOfABrokenHeader) {
  put(file_, "[s]\nk=1\n[t\n[u]\nk=2\n");
  const Outcome outcome = ini({"list", file_});
  EXPECT_EQ(outcome.exit_status, 1);
  EXPECT_NE(outcome.err.find("line 3"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.out.find("no"), std::string::npos) << outcome.out;
}

TEST_F(KqsupIniCommand, LookingLeavesAnInterruptedChangeAsItIs) {
  put(file_, "[s]\nk=new\n");
  put(tree_.at("agent.bak"), "[s]\nk=old\n");
  sleep(2);  // no change takes so long
  const std::string installed = std::string(std::getenv("KQSUPT_SANDBOX")) + "/install";
  const auto before = tree_.state();
  const auto installed_before = Tree::state_of(installed);
  EXPECT_EQ(ini({"get", file_, "s", "k"}).out, "old\n");
  EXPECT_NE(ini({"get", file_, "s", "k"}).err.find("interrupted"), std::string::npos);
  EXPECT_EQ(ini({"list", file_}).exit_status, 0);
  EXPECT_EQ(ini({"get", file_, "s", "none"}).exit_status, 1);
  EXPECT_EQ(tree_.state(), before);
  EXPECT_EQ(Tree::state_of(installed), installed_before);
}

TEST_F(KqsupIniCommand, GetFindsAFileThatIsBeingChanged) {
  ASSERT_EQ(ini({"set", file_, "s", "k", "0"}).exit_status, 0);
  const pid_t writer = fork();
  if (writer == 0) {
    alarm(60);
    for (;;) {
      (void)SMWriteINIPathFileValue("s", "k", SMINI_TYPE_UTF8, "1", 2, file_.c_str(), 1);
    }
  }
  for (int i = 0; i < 100; ++i) {
    const Outcome outcome = ini({"get", file_, "s", "k"});
    EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
  }
  kill(writer, SIGKILL);
  waitpid(writer, nullptr, 0);
}

TEST_F(KqsupIniCommand, SetFindsTheFileHoweverItsPathIsWritten) {
  put(file_, "");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(std::filesystem::path(file_).parent_path());
  const std::string name = std::filesystem::path(file_).filename();
  for (const std::string& path : {name, "./" + name, ".//" + name, "././/" + name}) {
    EXPECT_EQ(ini({"set", path, "s", "k", path}).exit_status, 0) << path;
    EXPECT_EQ(ini({"get", file_, "s", "k"}).out, path + "\n");
    EXPECT_FALSE(std::filesystem::exists("/" + name));
  }
  std::filesystem::current_path(before);
}

TEST_F(KqsupIniCommand, AFileOfTooManyLinesCannotBeLookedAt) {
  std::string lines;
  for (int i = 0; i < 200001; ++i) {
    lines += "=\n";
  }
  put(file_, lines);
  EXPECT_EQ(ini({"list", file_}).exit_status, 2);
}

TEST_F(KqsupIniCommand, TellsHowItIsUsed) {
  for (const char* command : {"get", "set", "unset", "list"}) {
    const Outcome outcome = ini({command, "--help"});
    EXPECT_EQ(outcome.exit_status, 0);
    EXPECT_NE(outcome.out.find("Example: kqsup ini "), std::string::npos) << command;
  }
}

TEST(KqsupIni, ASectionOfManyKeysTakesMemoryInProportionToTheFile) {
  std::string content = "[" + std::string(8000, 's') + "]\n";
  for (int i = 0; i < 100000; ++i) {
    content += "k=\n";
  }
  const IniContent ini = read_ini(content);
  ASSERT_EQ(ini.lines.size(), 100000U);
  EXPECT_EQ(ini.lines.front().section->data(), ini.lines.back().section->data());
}

TEST(KqsupIni, ANameThatIsTooLongIsNotWritten) {
  const Tree tree;
  tree.write("a.ini", "");
  const std::string name(256, 'n');
  for (const auto& [section, key] : {std::pair(name, "k"s), std::pair("s"s, name)}) {
    const Outcome outcome =
        run({built_program("kqsup"), "ini", "set", tree.at("a.ini"), section, key, "v"});
    EXPECT_EQ(outcome.exit_status, 2);
    EXPECT_NE(outcome.err.find("255"), std::string::npos) << outcome.err;
  }
  EXPECT_EQ(content_of(tree.at("a.ini")), "");
}

}  // namespace
