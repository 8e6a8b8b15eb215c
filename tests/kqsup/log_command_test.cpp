// kqsup log show and follow, the whole program, on logs that the library writes.

#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/log.h"
#include "log_bytes.h"
#include "log_follower.h"
#include "support/background.h"
#include "support/child.h"
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

// Its writer would go on, and find nobody who reads.
TEST_F(KqsupLogCommand, APipeIsNotOpened) {
  const Scratch scratch;
  const std::string pipe = scratch.file("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int opens = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (opens < 0 && errno == ENOSYS) {
    GTEST_SKIP() << "this host does not tell of files that are opened";
  }
  ASSERT_GE(opens, 0);
  ASSERT_GE(inotify_add_watch(opens, pipe.c_str(), IN_OPEN), 0);
  EXPECT_EQ(show({pipe}).exit_status, 2);
  char event[512];
  EXPECT_EQ(read(opens, event, sizeof event), -1);
  EXPECT_EQ(errno, EAGAIN);
  close(opens);
}

// The memory of a process can be opened, but there is none where it begins.
TEST_F(KqsupLogCommand, ALogThatCannotBeReadCannotBeLookedAt) {
  for (const char* command : {"show", "follow"}) {
    const Outcome looked = run({built_program("kqsup"), "log", command, "/proc/self/mem"});
    EXPECT_EQ(looked.exit_status, 2) << command;
    EXPECT_EQ(looked.err, "kqsup: /proc/self/mem: Input/output error\n") << command;
  }
}

TEST_F(KqsupLogCommand, LogsOfThisHostThatCannotBeOpenedAreThere) {
  for (const std::string& log : {text_log(), xml_log()}) {
    ASSERT_EQ(symlink(log.c_str(), log.c_str()), 0);
  }
  const Outcome shown = show({});
  EXPECT_EQ(shown.exit_status, 2);
  EXPECT_NE(shown.err.find(text_log()), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find(xml_log()), std::string::npos) << shown.err;
  EXPECT_EQ(shown.err.find("No such file"), std::string::npos) << shown.err;
}

TEST_F(KqsupLogCommand, TellsOfTheFirstThousandDamagedPlaces) {
  const Scratch scratch;
  std::string log = text_header();
  for (int i = 0; i < 1003; ++i) {
    log += little_endian(u"EventID: 7\r\nSource: pump\r\n");
  }
  put(scratch.file("damaged"), log + text_record(u"8", u"whole"));
  const Outcome shown = show({"--json", scratch.file("damaged")});
  EXPECT_EQ(shown.exit_status, 1);
  const json all = json::parse(shown.out);
  ASSERT_EQ(all.size(), 1002U);
  EXPECT_EQ(all[0]["description"], "whole");
  EXPECT_EQ(all[1000]["bytes"], 52);
  EXPECT_EQ(all[1001], json::parse(R"({"damage": "more places", "count": 3})"));
  EXPECT_EQ(std::count(shown.err.begin(), shown.err.end(), '\n'), 1002);
  EXPECT_TRUE(
      shown.err.ends_with("kqsup: only the first 1000 places are told\n"
                          "kqsup: damaged places: 1003\n"));
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
  Background& process() { return process_; }

 private:
  static Command command(Command arguments) {
    arguments.insert(arguments.begin(), {built_program("kqsup"), "--json", "log", "follow"});
    return arguments;
  }
  Background process_;
};

// What a printer prints, in this process.
class Output {
 public:
  Output() : file_(std::tmpfile()) {}
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output() { std::fclose(file_); }

  [[nodiscard]] std::FILE* file() const { return file_; }

  // What all its events describe.
  [[nodiscard]] Texts descriptions() const {
    std::string all(static_cast<size_t>(std::ftell(file_)), '\0');
    const ssize_t size = pread(fileno(file_), all.data(), all.size(), 0);
    EXPECT_EQ(size, static_cast<ssize_t>(all.size()));
    Texts descriptions;
    std::istringstream lines(all);
    for (std::string line; std::getline(lines, line);) {
      descriptions.push_back(json::parse(line)["description"]);
    }
    return descriptions;
  }

 private:
  std::FILE* file_;
};

// All events of a log followed in this process.
struct Following {
  explicit Following(const std::string& log) : follower(log, everything, printer) {}

  const kqsup::LogFilter everything{};
  Output output{};
  kqsup::LogPrinter printer{kqsup::LogForm::kJsonLines, kqsup::LogNews::kAtOnce, false,
                            output.file()};
  kqsup::LogFollower follower;
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

TEST_F(KqsupLogCommand, FollowMayBeginWithNoEvent) {
  append(7, "old");
  Follower follower({"-n", "0", text_log()});
  // Nothing tells when it looks for the first time.
  do {
    append(7, "new");
  } while (!follower.process().has_output(10));
  EXPECT_EQ(follower.next(), "new");
}

TEST_F(KqsupLogCommand, FollowSaysWhichOfSeveralLogsLinesAreOf) {
  append(7, "a");
  Background follower({built_program("kqsup"), "log", "follow"});
  EXPECT_EQ(follower.read_line(), "==> " + text_log() + " <==");
  EXPECT_TRUE(follower.read_line().ends_with(": a"));
  EXPECT_EQ(follower.read_line(), "");
  EXPECT_EQ(follower.read_line(), "==> " + xml_log() + " <==");
  EXPECT_TRUE(follower.read_line().ends_with(": a"));
  append(7, "b", "", SM_LOG_XML);
  EXPECT_TRUE(follower.read_line().ends_with(": b"));
}

TEST_F(KqsupLogCommand, FollowThatIsEndedHasSeenNothingWrong) {
  append(7, "a");
  Follower follower({text_log()});
  EXPECT_EQ(follower.next(), "a");
  follower.process().kill(SIGTERM);
  EXPECT_EQ(follower.process().wait(), 0);
}

TEST_F(KqsupLogCommand, FollowThatIsEndedTellsOfDamage) {
  const Scratch scratch;
  put(scratch.file("log"), text_header() + "junk" + text_record(u"7", u"a"));
  Follower follower({scratch.file("log")});
  EXPECT_EQ(follower.next(), "(damage)");
  EXPECT_EQ(follower.next(), "a");
  follower.process().kill(SIGTERM);
  EXPECT_EQ(follower.process().wait(), 1);
}

TEST_F(KqsupLogCommand, FollowCountsNoDamageInFrontOfTheLastEvents) {
  const Scratch scratch;
  put(scratch.file("log"), text_header() + "junk" + text_record(u"7", u"a"));
  Follower follower({"-n", "1", scratch.file("log")});
  EXPECT_EQ(follower.next(), "a");
  follower.process().kill(SIGTERM);
  EXPECT_EQ(follower.process().wait(), 0);
}

TEST_F(KqsupLogCommand, FollowGoesOnWhenItIsStartedToIgnoreASignal) {
  append(7, "a");
  const auto before = std::signal(SIGHUP, SIG_IGN);
  Follower follower({text_log()});
  std::signal(SIGHUP, before);
  EXPECT_EQ(follower.next(), "a");
  follower.process().kill(SIGHUP);
  for (const char* text : {"b", "c"}) {
    append(7, text);
    EXPECT_EQ(follower.next(), text);
  }
  follower.process().kill(SIGTERM);
  EXPECT_EQ(follower.process().wait(), 0);
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

// The log becomes its backup twice between two looks.
TEST(KqsupLogFollower, ReadsTheBackupThatItDidNotSeeAsALog) {
  const Scratch scratch;
  const std::string log = scratch.file("kqsys32.log");
  const auto text_log = [](std::u16string_view text) {
    return text_header() + text_record(u"7", text);
  };
  const auto xml_log = [](const std::string& text) {
    return kXmlBegin + xml_element("7", text) + kXmlEnd;
  };
  for (const Texts& contents : {Texts{text_log(u"a"), text_log(u"b"), text_log(u"c")},
                                Texts{xml_log("a"), xml_log("b"), xml_log("c")}}) {
    put(log, contents[0]);
    Following following(log);
    kqsup::LogFollower& follower = following.follower;
    int why = 0;
    ASSERT_TRUE(follower.start(0, &why));
    for (const size_t next : {1U, 2U}) {
      ASSERT_EQ(rename(log.c_str(), backup(log).c_str()), 0);
      put(log, contents[next]);
    }
    follower.poll();
    EXPECT_EQ(following.output.descriptions(), (Texts{"b", "c"}));
    follower.poll();
    EXPECT_EQ(following.output.descriptions(), (Texts{"b", "c"}));
    EXPECT_EQ(following.printer.damages(), 0U);
  }
}

// The log becomes its backup up to twice between two looks of a process.
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

// ---- follow, when what took the name of a log cannot be read ----

// What programs that are started meanwhile write to their standard error.
class Complaints {
 public:
  explicit Complaints(const Scratch& scratch)
      : path_(scratch.file("complaints")), before_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
    const int file = open(path_.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
    dup2(file, STDERR_FILENO);
    close(file);
  }
  Complaints(const Complaints&) = delete;
  Complaints& operator=(const Complaints&) = delete;
  ~Complaints() {
    dup2(before_, STDERR_FILENO);
    close(before_);
  }
  // What there is of them when there is something, or when that takes too long.
  [[nodiscard]] std::string wait() const {
    std::string all;
    for (int i = 0; i < 3000 && !all.ends_with('\n'); ++i) {
      usleep(10000);
      all = content_of(path_);
    }
    return all;
  }

 private:
  std::string path_;
  int before_;
};

class KqsupLogFollow : public testing::Test {
 protected:
  void SetUp() override { put(log_, text_header() + text_record(u"7", u"old")); }

  // Follows the log while its name goes to something else, and comes back to a file that is well.
  void expect_told_once(const std::function<void()>& take_name, const std::string& why) {
    const Complaints complaints(scratch_);
    Follower follower({log_});
    EXPECT_EQ(follower.next(), "old");
    ASSERT_EQ(rename(log_.c_str(), scratch_.file("old").c_str()), 0);
    take_name();
    const std::string told = "kqsup: " + log_ + ": " + why + "\n";
    EXPECT_EQ(complaints.wait(), told);
    // There are more looks meanwhile.
    EXPECT_FALSE(follower.process().has_output(200));
    put(scratch_.file("new"), text_header() + text_record(u"8", u"new"));
    (void)rmdir(log_.c_str());
    ASSERT_EQ(rename(scratch_.file("new").c_str(), log_.c_str()), 0);
    EXPECT_EQ(follower.next(), "new");
    follower.process().kill(SIGTERM);
    EXPECT_EQ(follower.process().wait(), 2);
    EXPECT_EQ(complaints.wait(), told);
  }

  Scratch scratch_;
  std::string log_ = scratch_.file("kqsys32.log");
};

TEST_F(KqsupLogFollow, TellsOnceOfADirectoryThatTookTheName) {
  expect_told_once([this] { ASSERT_EQ(mkdir(log_.c_str(), 0700), 0); }, "Is a directory");
}

TEST_F(KqsupLogFollow, TellsOfALogThatMayNotBeOpened) {
  const auto follow = [this] {
    Following following(log_);
    kqsup::LogFollower& follower = following.follower;
    int why = 0;
    if (!give_up_privileges() || !follower.start(0, &why) ||
        rename(log_.c_str(), scratch_.file("old").c_str()) != 0) {
      return 1;
    }
    close(open(log_.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0));
    for (int i = 0; i < 3; ++i) {
      follower.poll();
    }
    return follower.error() == EACCES ? 0 : 2;
  };
  EXPECT_EQ(in_child(follow), 0);
}

// The memory of a process can be opened, but there is none where it begins.
TEST_F(KqsupLogFollow, TellsOnceOfALogThatCannotBeRead) {
  expect_told_once([this] { ASSERT_EQ(symlink("/proc/self/mem", log_.c_str()), 0); },
                   "Input/output error");
}

TEST_F(KqsupLogFollow, TellsOfNoErrorWhileThereIsNoLog) {
  Following following(log_);
  kqsup::LogFollower& follower = following.follower;
  int why = 0;
  ASSERT_TRUE(follower.start(0, &why));
  ASSERT_EQ(unlink(log_.c_str()), 0);
  follower.poll();
  EXPECT_EQ(follower.error(), 0);
  ASSERT_EQ(mkdir(log_.c_str(), 0700), 0);
  for (int i = 0; i < 2; ++i) {
    follower.poll();
    EXPECT_EQ(follower.error(), EISDIR);
  }
  ASSERT_EQ(rmdir(log_.c_str()), 0);
  follower.poll();
  EXPECT_EQ(follower.error(), 0);
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
