// Lines for the system's own log, as a listener in its place receives them, and as a daemon writes
// them to its file.

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/log.h"
#include "kqsupt/os.h"
#include "log/event_logs.h"
#include "support/emulated.h"
#include "support/guarded.h"
#include "support/program.h"
#include "support/scratch.h"
#include "support/system_log.h"

namespace {

using kqsupt::tests::content_of;
using kqsupt::tests::Guarded;
using kqsupt::tests::Outcome;
using kqsupt::tests::run_native;
using kqsupt::tests::Scratch;
using kqsupt::tests::survives_forks;
using kqsupt::tests::SystemLog;

constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr uint32_t kError = 1;
constexpr uint32_t kWarning = 2;
constexpr uint32_t kInformation = 4;

SMStatus append(uint32_t type, uint32_t source, uint32_t id, const char* identity,
                const char* message) {
  return SMAppendToOSSysLog(type, source, id, identity, message, nullptr, 0);
}

// The line of an event of the agent with this type.
std::string line_of_type(uint32_t type) {
  const SystemLog log;
  EXPECT_EQ(append(type, 1, 7, "agent", "text"), SM_STATUS_SUCCESS);
  return log.line();
}

// What the message becomes behind the source and the event ID.
std::string text_of(const std::string& message) {
  const SystemLog log;
  EXPECT_EQ(append(kInformation, 1, 0, "agent", message.c_str()), SM_STATUS_SUCCESS);
  const std::string line = log.line();
  const std::string start = "<30>agent: Talmere EventID: 0  ";
  EXPECT_EQ(line.compare(0, start.size(), start), 0) << line;
  return line.substr(std::min(start.size(), line.size()));
}

TEST(SystemLog, HasTheSourceTheEventIdAndTheMessage) {
  const SystemLog log;
  EXPECT_EQ(append(kInformation, 1, 1404, "agent", "Fan 2 stopped"), SM_STATUS_SUCCESS);
  EXPECT_EQ(log.line(), "<30>agent: Talmere EventID: 1404  Fan 2 stopped");
  EXPECT_EQ(log.line(), "");
}

TEST(SystemLog, TakesErrorsAsErrorsOfDaemons) {
  EXPECT_EQ(line_of_type(kError), "<27>agent: Talmere EventID: 7  text");
}

TEST(SystemLog, TakesWarningsAsWarningsOfDaemons) {
  EXPECT_EQ(line_of_type(kWarning), "<28>agent: Talmere EventID: 7  text");
}

TEST(SystemLog, TakesEveryOtherTypeAsInformation) {
  for (const uint32_t type : {0U, 3U, 4U, 8U, 16U, 0x10001U, 0xFFFFFFFFU}) {
    EXPECT_EQ(line_of_type(type), "<30>agent: Talmere EventID: 7  text") << type;
  }
}

TEST(SystemLog, KnowsSixSources) {
  const SystemLog log;
  const char* const names[] = {"Talmere", "Drosset", "Pellum", "Zarnith", "Quistel", "Vardeen"};
  uint32_t source = 0;
  for (const char* name : names) {
    EXPECT_EQ(append(kInformation, ++source, 0, "agent", "text"), SM_STATUS_SUCCESS);
    EXPECT_EQ(log.line(), std::string("<30>agent: ") + name + " EventID: 0  text");
  }
}

TEST(SystemLog, TakesNothingOfAnotherSource) {
  const SystemLog log;
  for (const uint32_t source : {0U, 7U, 0x10001U, 0x80000001U, 0xFFFFFFFFU}) {
    EXPECT_EQ(append(kError, source, 1, "agent", "text"), kFailed) << source;
  }
  EXPECT_EQ(log.line(), "");
}

TEST(SystemLog, WritesEventIdsAsUnsignedDecimals) {
  const SystemLog log;
  for (const uint32_t id : {0U, 10U, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(append(kInformation, 2, id, "agent", ""), SM_STATUS_SUCCESS);
    EXPECT_EQ(log.line(), "<30>agent: Drosset EventID: " + std::to_string(id) + "  ");
  }
}

TEST(SystemLog, HasTheProgramsNameWithoutAnIdentity) {
  const SystemLog log;
  EXPECT_EQ(append(kInformation, 1, 0, "earlier", "text"), SM_STATUS_SUCCESS);
  EXPECT_EQ(append(kInformation, 1, 0, nullptr, "text"), SM_STATUS_SUCCESS);
  EXPECT_EQ(log.line(), "<30>earlier: Talmere EventID: 0  text");
  EXPECT_EQ(log.line(),
            std::string("<30>") + program_invocation_short_name + ": Talmere EventID: 0  text");
}

TEST(SystemLog, TakesAnEmptyIdentityAsItIs) {
  const SystemLog log;
  EXPECT_EQ(append(kInformation, 1, 0, "", "text"), SM_STATUS_SUCCESS);
  EXPECT_EQ(log.line(), "<30>: Talmere EventID: 0  text");
}

TEST(SystemLog, TakesNothingWithoutAMessage) {
  const SystemLog log;
  EXPECT_EQ(append(kError, 1, 1, "agent", nullptr), kFailed);
  EXPECT_EQ(log.line(), "");
}

TEST(SystemLog, HasBlanksForCarriageReturns) {
  EXPECT_EQ(text_of("\rone\r\ntwo\r\rthree\r"), " one \ntwo  three ");
}

TEST(SystemLog, KeepsEveryOtherByteOfTheMessage) {
  std::string message;
  for (int byte = 1; byte < 256; ++byte) {
    message += static_cast<char>(byte);
  }
  std::string expected = message;
  std::replace(expected.begin(), expected.end(), '\r', ' ');
  EXPECT_EQ(text_of(message), expected);
}

TEST(SystemLog, KeepsPercentSigns) {
  EXPECT_EQ(text_of("100%s%n%%"), "100%s%n%%");
}

TEST(SystemLog, CutsTheTextAt2047Bytes) {
  const size_t room = 2047 - std::strlen("Talmere EventID: 0  ");
  for (const size_t size : {room - 1, room, room + 1, room + 2, 2 * room}) {
    std::string message(size, 'x');
    message[room - 1 < size ? room - 1 : size - 1] = '\r';
    std::string expected = message.substr(0, room);
    expected.back() = ' ';
    EXPECT_EQ(text_of(message), expected) << size;
  }
}

TEST(SystemLog, ReadsNoByteBehindItsTexts) {
  const SystemLog log;
  const Guarded<char> identity("agent", 6);
  for (const size_t size : {0, 1, 2026, 2027, 2028, 5000}) {
    const std::string message(size, 'm');
    const Guarded<char> guarded(message.c_str(), size + 1);
    EXPECT_EQ(append(kInformation, 1, 0, identity.data(), guarded.data()), SM_STATUS_SUCCESS);
    EXPECT_EQ(log.line(), "<30>agent: Talmere EventID: 0  " + message.substr(0, 2027));
  }
}

TEST(SystemLog, DoesNotLookAtTheData) {
  const SystemLog log;
  const Guarded<char> nothing(0);
  EXPECT_EQ(SMAppendToOSSysLog(1, 1, 0, "agent", "text", nothing.data(), 0xFFFFFFFF),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(log.line(), "<27>agent: Talmere EventID: 0  text");
}

TEST(SystemLog, IsNotMissedWhereNobodyListens) {
  EXPECT_EQ(append(kError, 1, 0, "agent", "text"), SM_STATUS_SUCCESS);
  const SystemLog log;
  EXPECT_EQ(append(kError, 1, 0, "agent", "later"), SM_STATUS_SUCCESS);
  EXPECT_EQ(log.line(), "<27>agent: Talmere EventID: 0  later");
}

TEST(SystemLog, IsAskedForAnewByEachLine) {
  for (const char* message : {"one", "two"}) {
    const SystemLog log;
    EXPECT_EQ(append(kError, 1, 0, "agent", message), SM_STATUS_SUCCESS);
    EXPECT_EQ(log.line(), std::string("<27>agent: Talmere EventID: 0  ") + message);
  }
}

TEST(SystemLog, LeavesTheProgramWithoutAnIdentityOfItsOwn) {
  const SystemLog log;
  openlog("mine", LOG_PID, LOG_USER);
  EXPECT_EQ(append(kError, 1, 0, "agent", "text"), SM_STATUS_SUCCESS);
  syslog(LOG_USER | LOG_INFO, "own");
  closelog();
  EXPECT_EQ(log.line(), "<27>agent: Talmere EventID: 0  text");
  EXPECT_EQ(log.line(), std::string("<14>") + program_invocation_short_name + ": own");
}

TEST(SystemLog, KeepsTheIdentitiesOfThreadsApart) {
  constexpr uint32_t kThreads = 6;
  constexpr uint32_t kLines = 100;
  const SystemLog log;
  std::vector<std::thread> threads;
  for (uint32_t source = 1; source <= kThreads; ++source) {
    threads.emplace_back([source] {
      // Each line has an identity of its own that is gone with it.
      for (uint32_t id = 0; id < kLines; ++id) {
        const std::string identity = "thread-" + std::to_string(source) + "-" + std::to_string(id);
        append(source % 3, source, id, identity.c_str(), identity.c_str());
      }
    });
  }
  const char* const names[] = {"Talmere", "Drosset", "Pellum", "Zarnith", "Quistel", "Vardeen"};
  std::multimap<std::string, int> expected;
  std::multimap<std::string, int> received;
  for (uint32_t source = 1; source <= kThreads; ++source) {
    for (uint32_t id = 0; id < kLines; ++id) {
      const std::string identity = "thread-" + std::to_string(source) + "-" + std::to_string(id);
      const char* const priorities[] = {"<30>", "<27>", "<28>"};
      expected.emplace(priorities[source % 3] + identity + ": " + names[source - 1] +
                           " EventID: " + std::to_string(id) + "  " + identity,
                       0);
      received.emplace(log.awaited_line(), 0);
    }
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(received, expected);
  EXPECT_EQ(log.line(), "");
}

TEST(SystemLog, TakesLinesOfAChildThatWasMadeWhileAThreadLogged) {
  if (!survives_forks()) {
    GTEST_SKIP() << "what runs this does not survive such a fork";
  }
  std::atomic<bool> done = false;
  std::thread logging([&] {
    while (!done) {
      append(kError, 1, 0, "parent", "text");
    }
  });
  int status = 0;
  for (int i = 0; i < 200 && status == 0; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(60);
      _exit(append(kError, 1, 0, "child", "text") == SM_STATUS_SUCCESS ? 0 : 1);
    }
    ASSERT_EQ(waitpid(child, &status, 0), child);
  }
  done = true;
  logging.join();
  EXPECT_EQ(status, 0);
}

TEST(SystemLog, TakesEventsOfTheEventLogByTheirSource) {
  const SystemLog log;
  EXPECT_EQ(SMAppendToLog(2, 2, 3, 1404, "Storage agent", "Disk\r0:1 failed", "data", 4),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(log.line(), "<28>Storage agent: Pellum EventID: 1404  Disk 0:1 failed");
  EXPECT_EQ(log.line(), "");
}

TEST(SystemLog, TakesNothingOfAnUnknownCategoryWhichTheEventLogDoesNotTell) {
  const SystemLog log;
  EXPECT_EQ(SMAppendToLog(2, 1, 7, 1, "agent", "text", nullptr, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(log.line(), "");
}

TEST(SystemLog, TakesNoEventsThatAreMeantForOtherLogs) {
  const SystemLog log;
  EXPECT_EQ(SMAppendToLog(4 | 8, 1, 1, 1, "agent", "text", nullptr, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(log.line(), "");
}

TEST(SystemLog, TakesAnEventTogetherWithTheOtherLogs) {
  const std::string text = kqsupt::tests::own_log(SM_LOG_TEXT);
  const std::string xml = kqsupt::tests::own_log(SM_LOG_XML);
  unlink(text.c_str());
  unlink(xml.c_str());
  const SystemLog log;
  EXPECT_EQ(SMAppendToLog(2 | 4 | 8, 1, 1, 5, "agent", "text", nullptr, 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(log.line(), "<27>agent: Talmere EventID: 5  text");
  EXPECT_EQ(log.line(), "");
  EXPECT_EQ(kqsupt::tests::parse_text_log(content_of(text)).value().size(), 1U);
  EXPECT_EQ(kqsupt::tests::parse_xml_log(content_of(xml)).value().size(), 1U);
}

// A daemon of the machine, which writes to a file.
class Daemon {
 public:
  explicit Daemon(const Scratch& scratch) {
    // Its own note of its process goes to a directory of its own.
    const Outcome outcome = run_native(
        {"sh", "-c",
         "unshare --mount sh -c 'mount --bind \"$0\" /run && exec busybox syslogd -n -O \"$1\"' "
         "\"$0\" \"$1\" >/dev/null 2>&1 & echo $!",
         scratch.file(""), scratch.file("messages")});
    process_ = std::stoi(outcome.out);
  }
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  ~Daemon() {
    kill(process_, SIGKILL);
    unlink("/dev/log");
  }

  // Waits until it takes lines.
  [[nodiscard]] static bool listens() {
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::strcpy(place.sun_path, "/dev/log");
    int result = -1;
    for (int tries = 0; tries < 1000 && result != 0; ++tries) {
      const int asking = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
      result = connect(asking, reinterpret_cast<const sockaddr*>(&place), sizeof place);
      close(asking);
      usleep(result != 0 ? 10000 : 0);
    }
    return result == 0;
  }

 private:
  pid_t process_;
};

// The line of `content` that has `part` in it.
std::string line_with(const std::string& content, const std::string& part) {
  const size_t found = content.find(part);
  if (found == std::string::npos) {
    return "";
  }
  const size_t start = content.rfind('\n', found) + 1;  // none: 0
  const size_t end = content.find('\n', found);
  return end == std::string::npos ? "" : content.substr(start, end - start);
}

TEST(SystemLog, IsWrittenByADaemonInOneLine) {
  const Scratch scratch;
  const Daemon daemon(scratch);
  ASSERT_TRUE(Daemon::listens());
  EXPECT_EQ(append(kError, 6, 1404, "agent of mine", "Fan\r2 stopped"), SM_STATUS_SUCCESS);
  std::string line;
  for (int tries = 0; tries < 1000 && line.empty(); ++tries) {
    line = line_with(content_of(scratch.file("messages")), "1404");
    usleep(line.empty() ? 10000 : 0);
  }
  const std::string end = " daemon.err agent of mine: Vardeen EventID: 1404  Fan 2 stopped";
  ASSERT_GE(line.size(), end.size()) << content_of(scratch.file("messages"));
  EXPECT_EQ(line.substr(line.size() - end.size()), end);
}

}  // namespace
