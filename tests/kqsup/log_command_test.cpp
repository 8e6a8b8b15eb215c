// kqsup log show and follow, the whole program, on logs that the library writes.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/log.h"
#include "log_bytes.h"
#include "support/background.h"
#include "support/program.h"
#include "support/scratch.h"

namespace kqsupt::tests {
namespace {

using nlohmann::json;

std::string own_log(uint32_t log) {
  char path[512] = "";
  uint32_t size = sizeof path;
  return SMGetLogPathFileName(log, path, &size) == SM_STATUS_SUCCESS ? path : "";
}
std::string text_log() {
  return own_log(SM_LOG_TEXT);
}
std::string xml_log() {
  return own_log(SM_LOG_XML);
}
std::string backup(std::string path) {
  path.back() = '_';
  return path;
}

class KqsupLogCommand : public testing::Test {
 protected:
  void SetUp() override { remove_logs(); }
  void TearDown() override { remove_logs(); }

 private:
  static void remove_logs() {
    for (const std::string& log : {text_log(), xml_log()}) {
      unlink(log.c_str());
      unlink(backup(log).c_str());
    }
  }
};

void append(uint32_t id, const std::string& description, const std::string& data = "",
            uint32_t logs = SM_LOG_TEXT | SM_LOG_XML) {
  ASSERT_EQ(SMAppendToLog(logs, SM_EVENT_WARNING, 2, id, "pump", description.c_str(),
                          data.empty() ? nullptr : data.data(), static_cast<uint32_t>(data.size())),
            SM_STATUS_SUCCESS);
}

Outcome show(Command arguments) {
  arguments.insert(arguments.begin(), {built_program("kqsup"), "log", "show"});
  return run(arguments);
}

// The part of a line behind its time.
std::string behind_time(const std::string& line) {
  return line.size() > 21 ? line.substr(21) : "(no time) " + line;
}

TEST_F(KqsupLogCommand, ShowsBothLogsOfThisHost) {
  append(7, "too hot", "abc");
  const Outcome shown = show({"--json"});
  EXPECT_EQ(shown.exit_status, 0) << shown.err;
  const json events = json::parse(shown.out);
  ASSERT_EQ(events.size(), 2U);
  EXPECT_EQ(events[0]["log"], text_log());
  EXPECT_EQ(events[1]["log"], xml_log());
  for (const json& event : events) {
    EXPECT_EQ(event["type"], "Warning");
    EXPECT_EQ(event["category"], "Drosset");
    EXPECT_EQ(event["id"], 7);
    EXPECT_EQ(event["source"], "pump");
    EXPECT_EQ(event["description"], "too hot");
    EXPECT_EQ(event["data"], "616263");
  }
}

TEST_F(KqsupLogCommand, ShowsAnEventInALine) {
  append(7, "too\thot \xE2\x82\xAC", "abc");
  const Outcome shown = show({text_log()});
  EXPECT_EQ(shown.exit_status, 0);
  const std::string line = behind_time(shown.out);
  EXPECT_TRUE(line.starts_with("Warning        Drosset  7  pump@")) << line;
  EXPECT_TRUE(line.ends_with(": too\\x09hot \xE2\x82\xAC (3 bytes of data)\n")) << line;
}

TEST_F(KqsupLogCommand, NoControlCharacterReachesATerminal) {
  append(7,
         "a\x1B[2Jb\x7F\xC2\x9B"
         "c\xC2\xA0");
  for (const char* form : {"--json", "--id=7"}) {
    const std::string out = show({form}).out;
    EXPECT_TRUE(std::none_of(out.begin(), out.end(), [](char c) {
      return (c != '\n' && c >= 0 && c < 0x20) || c == 0x7F || c == '\x9B';
    })) << out;
  }
  EXPECT_EQ(json::parse(show({"--json", text_log()}).out)[0]["description"],
            "a\x1B[2Jb\x7F\xC2\x9B"
            "c\xC2\xA0");
}

TEST_F(KqsupLogCommand, ShowsOnlyWhatIsAskedFor) {
  const std::string log = text_log();
  append(7, "a");
  ASSERT_EQ(SMAppendToLog(SM_LOG_TEXT, SM_EVENT_ERROR, 6, 20, "fan", "b", nullptr, 0),
            SM_STATUS_SUCCESS);
  const auto ids = [&log](Command arguments) {
    arguments.insert(arguments.begin(), {"--json", log});
    std::vector<int> found;
    for (const json& event : json::parse(show(arguments).out)) {
      found.push_back(event["id"]);
    }
    return found;
  };
  EXPECT_EQ(ids({"--type", "error"}), std::vector{20});
  EXPECT_EQ(ids({"--type", "error", "--type", "warning"}), (std::vector{7, 20}));
  EXPECT_EQ(ids({"--category", "vardeen"}), std::vector{20});
  EXPECT_EQ(ids({"--source", "pump"}), std::vector{7});
  EXPECT_EQ(ids({"--id", "1-9"}), std::vector{7});
  EXPECT_EQ(ids({"--id", "1-9", "--type", "error"}), std::vector<int>{});
  EXPECT_EQ(ids({"--since", "1d"}), (std::vector{7, 20}));
  EXPECT_EQ(ids({"--until", "1d"}), std::vector<int>{});
  EXPECT_EQ(ids({"--since", "2001-01-01", "--until", "2002-01-01T12:00"}), std::vector<int>{});
}

TEST_F(KqsupLogCommand, TellsOfDamageByItsOffset) {
  append(7, "a");
  append(8, "b");
  const std::string log = text_log();
  const std::string bytes = content_of(log);
  const Scratch scratch;
  put(scratch.file("cut"), bytes.substr(0, bytes.size() - 2));
  const Outcome shown = show({scratch.file("cut")});
  EXPECT_EQ(shown.exit_status, 1);
  const std::string place = std::to_string(256 + (bytes.size() - 256) / 2);
  EXPECT_NE(shown.err.find("byte " + place + ": "), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find("damaged places: 1\n"), std::string::npos) << shown.err;
  const json all = json::parse(show({"--json", scratch.file("cut")}).out);
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0]["id"], 7);
  EXPECT_EQ(std::to_string(all[1]["offset"].get<int>()), place);
  EXPECT_TRUE(all[1].contains("damage"));
}

TEST_F(KqsupLogCommand, ALogThatIsNotThereCannotBeLookedAt) {
  EXPECT_EQ(show({}).exit_status, 2);
  EXPECT_EQ(show({"/nowhere/kqsys32.log"}).exit_status, 2);
  const Scratch scratch;
  EXPECT_EQ(show({scratch.file("")}).exit_status, 2);
  ASSERT_EQ(mkfifo(scratch.file("pipe").c_str(), 0600), 0);
  EXPECT_EQ(show({scratch.file("pipe")}).exit_status, 2);
  append(7, "a", "", SM_LOG_XML);
  EXPECT_EQ(show({}).exit_status, 0);
}

TEST_F(KqsupLogCommand, ValuesThatThereAreNotAreRefused) {
  for (const char* option : {"--type=loud", "--category=7", "--id=x", "--since=soon"}) {
    EXPECT_EQ(show({option}).exit_status, 2) << option;
  }
}

TEST_F(KqsupLogCommand, HelpHasAnExample) {
  for (const char* command : {"show", "follow"}) {
    const Outcome help = run({built_program("kqsup"), "log", command, "--help"});
    EXPECT_EQ(help.exit_status, 0);
    EXPECT_NE(help.out.find("Example"), std::string::npos);
  }
}

// ---- What is left behind: nothing ----

// Every file below the products' directories, with what a look could change of it.
std::vector<std::string> state() {
  std::vector<std::string> all;
  const std::string root = std::string(std::getenv("KQSUPT_SANDBOX")) + "/install";
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    struct stat about {};
    lstat(entry.path().c_str(), &about);
    all.push_back(
        entry.path().string() + " " + std::to_string(about.st_ino) + " " +
        std::to_string(about.st_mode) + " " + std::to_string(about.st_size) + " " +
        std::to_string(about.st_mtim.tv_sec) + "." + std::to_string(about.st_mtim.tv_nsec) + " " +
        std::to_string(about.st_ctim.tv_sec) + "." + std::to_string(about.st_ctim.tv_nsec) + " " +
        (entry.is_regular_file() ? content_of(entry.path()) : ""));
  }
  std::sort(all.begin(), all.end());
  return all;
}

TEST_F(KqsupLogCommand, LookingChangesNothing) {
  append(7, "a");
  std::string bytes = content_of(text_log());
  put(backup(text_log()), bytes.substr(0, bytes.size() - 1));
  const std::vector<std::string> before = state();
  EXPECT_EQ(show({}).exit_status, 0);
  EXPECT_EQ(show({backup(text_log())}).exit_status, 1);
  {
    Background follower({built_program("kqsup"), "log", "follow", text_log()});
    EXPECT_NE(follower.read_line(), "");
  }
  EXPECT_EQ(state(), before);
}

TEST_F(KqsupLogCommand, LookingWaitsForNoLock) {
  append(7, "a");
  // What the library itself locks while it writes, held by somebody who never lets go.
  const std::string locks = std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/wexlib/var/.ipc";
  std::vector<int> held;
  for (const auto& entry : std::filesystem::directory_iterator(locks)) {
    held.push_back(open(entry.path().c_str(), O_RDWR | O_CLOEXEC));
    struct flock all {};
    all.l_type = F_WRLCK;
    (void)fcntl(held.back(), F_SETLK, &all);
  }
  EXPECT_FALSE(held.empty());
  EXPECT_EQ(show({}).exit_status, 0);
  for (const int file : held) {
    close(file);
  }
}

// ---- follow ----

class Follower {
 public:
  explicit Follower(Command arguments) : process_(command(std::move(arguments))) {}
  // What the next event describes; "(damage)" for damage.
  std::string next() {
    const json event = json::parse(process_.read_line(), nullptr, false);
    return event.contains("description") ? event["description"].get<std::string>() : "(damage)";
  }

 private:
  static Command command(Command arguments) {
    arguments.insert(arguments.begin(), {built_program("kqsup"), "--json", "log", "follow"});
    return arguments;
  }
  Background process_;
};

TEST_F(KqsupLogCommand, FollowBeginsWithTheLastEvents) {
  for (const char* text : {"a", "b", "c"}) {
    append(7, text);
  }
  for (const std::string& log : {text_log(), xml_log()}) {
    Follower follower({"-n", "2", log});
    EXPECT_EQ(follower.next(), "b");
    EXPECT_EQ(follower.next(), "c");
  }
}

TEST_F(KqsupLogCommand, FollowPrintsWhatComes) {
  for (const std::string& log : {text_log(), xml_log()}) {
    append(7, "first");
    Follower follower({"-n", "1", log});
    EXPECT_EQ(follower.next(), "first");
    for (int i = 0; i < 20; ++i) {
      append(7, std::to_string(i));
      EXPECT_EQ(follower.next(), std::to_string(i));
    }
  }
}

TEST_F(KqsupLogCommand, FollowWaitsForALog) {
  Follower follower({text_log()});
  append(7, "first");
  EXPECT_EQ(follower.next(), "first");
}

TEST_F(KqsupLogCommand, FollowGoesOnBehindABackup) {
  const std::string data(30000, 'x');
  for (const uint32_t kind : {SM_LOG_TEXT, SM_LOG_XML}) {
    const std::string log = own_log(kind);
    append(7, "first", "", kind);
    Follower follower({"-n", "1", log});
    EXPECT_EQ(follower.next(), "first");
    int backups = 0;
    for (int i = 0; i < 40; ++i) {
      append(7, std::to_string(i), data, kind);
      std::string text = follower.next();
      if (text == "Log backup created") {
        ++backups;
        text = follower.next();
      }
      EXPECT_EQ(text, std::to_string(i));
    }
    EXPECT_GE(backups, 3);
  }
}

// The log becomes its backup up to twice between two looks.
TEST_F(KqsupLogCommand, FollowReadsTheBackupThatItDidNotSeeAsALog) {
  const std::string data(30000, 'x');
  append(7, "first", "", SM_LOG_TEXT);
  Follower follower({"-n", "1", text_log()});
  EXPECT_EQ(follower.next(), "first");
  for (int batch = 0; batch < 6; ++batch) {
    for (int i = 0; i < 5; ++i) {
      append(7, std::to_string(i), data, SM_LOG_TEXT);
    }
    for (int i = 0; i < 5; ++i) {
      std::string text = follower.next();
      text = text == "Log backup created" ? follower.next() : text;
      EXPECT_EQ(text, std::to_string(i));
    }
  }
}

TEST_F(KqsupLogCommand, FollowGoesOnBehindAClearing) {
  for (const uint32_t kind : {SM_LOG_TEXT, SM_LOG_XML}) {
    append(7, "old", "", kind);
    put(backup(own_log(kind)), content_of(own_log(kind)));
    Follower follower({own_log(kind)});
    EXPECT_EQ(follower.next(), "old");
    ASSERT_EQ(SMClearLog(kind, 1, "pump"), SM_STATUS_SUCCESS);
    append(7, "new", "", kind);
    EXPECT_EQ(follower.next(), "Log was cleared");
    EXPECT_EQ(follower.next(), "new");
  }
}

TEST_F(KqsupLogCommand, FollowBeginsAnewWithALogThatIsEmptied) {
  append(7, "old one that is long");
  Follower follower({text_log()});
  EXPECT_EQ(follower.next(), "old one that is long");
  ASSERT_EQ(truncate(text_log().c_str(), 0), 0);
  append(7, "new");
  EXPECT_EQ(follower.next(), "new");
}

TEST_F(KqsupLogCommand, FollowRepeatsNothingOfALogThatIsCut) {
  append(7, "a");
  const auto size = static_cast<off_t>(content_of(text_log()).size());
  append(7, "b");
  Follower follower({text_log()});
  EXPECT_EQ(follower.next(), "a");
  EXPECT_EQ(follower.next(), "b");
  ASSERT_EQ(truncate(text_log().c_str(), size), 0);
  append(7, "c");
  EXPECT_EQ(follower.next(), "c");
}

// A record that a killed writer left is taken away by the next one.
TEST_F(KqsupLogCommand, FollowWaitsForTheRestOfAnEvent) {
  append(7, "a");
  append(7, "b");
  const std::string log = text_log();
  const auto size = static_cast<off_t>(content_of(log).size());
  ASSERT_EQ(truncate(log.c_str(), size - 20), 0);
  Follower follower({log});
  EXPECT_EQ(follower.next(), "a");
  append(7, "c");
  EXPECT_EQ(follower.next(), "c");
}

}  // namespace
}  // namespace kqsupt::tests
