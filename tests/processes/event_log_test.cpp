// The logs of events under many processes, some of which are killed.

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ipc/named.h"
#include "log/event_logs.h"
#include "support/background.h"
#include "support/emulated.h"
#include "support/program.h"

namespace {

using kqsupt::tests::Background;
using kqsupt::tests::backup_of;
using kqsupt::tests::built_program;
using kqsupt::tests::child;
using kqsupt::tests::content_of;
using kqsupt::tests::is_emulated;
using kqsupt::tests::lock_file_of_path;
using kqsupt::tests::Outcome;
using kqsupt::tests::own_log;
using kqsupt::tests::parse_text_log;
using kqsupt::tests::parse_xml_log;
using kqsupt::tests::Record;
using kqsupt::tests::run;
using kqsupt::tests::Scratch;

class EventLogs : public testing::Test {
 protected:
  EventLogs() {
    alarm(280);
    remove_all();
  }
  ~EventLogs() override {
    remove_all();
    alarm(0);
  }
  void remove_all() const {
    for (const std::string& path : {text_, xml_, backup_of(text_), backup_of(xml_)}) {
      unlink(path.c_str());
    }
  }

  const std::string text_ = own_log(SM_LOG_TEXT);
  const std::string xml_ = own_log(SM_LOG_XML);
};

// How often each event is there: "WORKER NUMBER" of descriptions "worker W event N …".
class Seen {
 public:
  // False when it is no description of an event that is whole.
  bool add(const std::string& description, size_t padding) {
    if (description == "Log backup created") {
      ++backups_;
      return true;
    }
    unsigned worker = 0;
    unsigned event = 0;
    int length = 0;
    if (std::sscanf(description.c_str(), "worker %u event %u %n", &worker, &event, &length) != 2 ||
        description.substr(static_cast<size_t>(length)) != std::string(padding, '.')) {
      return false;
    }
    ++events_[{worker, event}];
    return true;
  }
  [[nodiscard]] size_t backups() const { return backups_; }
  [[nodiscard]] size_t size() const { return events_.size(); }
  [[nodiscard]] bool each_once() const {
    for (const auto& [event, times] : events_) {
      if (times != 1) {
        ADD_FAILURE() << event.first << " " << event.second << ": " << times << " times";
        return false;
      }
    }
    return true;
  }

 private:
  std::map<std::pair<unsigned, unsigned>, unsigned> events_;
  size_t backups_ = 0;
};

TEST_F(EventLogs, HaveEachEventOfManyProcessesOnce) {
  constexpr unsigned kWorkers = 16;
  const unsigned events = is_emulated() ? 400 : 5000;
  const size_t padding = is_emulated() ? 5000 : 200;
  const Scratch scratch;
  std::vector<Background> workers;
  for (unsigned i = 0; i < kWorkers; ++i) {
    workers.emplace_back(kqsupt::tests::Command{built_program("log-worker"), std::to_string(i),
                                                std::to_string(events), std::to_string(padding),
                                                scratch.file("")});
  }
  for (Background& worker : workers) {
    EXPECT_EQ(worker.wait(), 0);
  }
  Seen in_text;
  Seen in_xml;
  for (const auto& entry : std::filesystem::directory_iterator(scratch.file(""))) {
    const std::string content = content_of(entry.path());
    if (entry.path().filename().string().starts_with("text")) {
      const auto records = parse_text_log(content);
      ASSERT_TRUE(records.has_value()) << entry.path();
      for (const Record& record : *records) {
        EXPECT_TRUE(in_text.add(record.description, padding)) << record.description;
        EXPECT_EQ(record.dump.size(), record.id % 100 == 0 ? 125U * 81 : 0U);
      }
    } else {
      const auto elements = parse_xml_log(content);
      ASSERT_TRUE(elements.has_value()) << entry.path();
      for (const std::string& element : *elements) {
        EXPECT_TRUE(in_xml.add(child(element, "Description").value_or(""), padding)) << element;
      }
    }
  }
  for (const Seen* seen : {&in_text, &in_xml}) {
    EXPECT_TRUE(seen->each_once());
    EXPECT_EQ(seen->size(), size_t{kWorkers} * events);
    EXPECT_GE(seen->backups(), 20U);
  }
  std::printf("[   FACT   ] %zu events of %u processes in each log, %zu and %zu backups\n",
              in_text.size(), kWorkers, in_text.backups(), in_xml.backups());
}

TEST_F(EventLogs, LeaveNothingOfAFirstEventWithoutTheLogPath) {
  const std::string logs = text_.substr(0, text_.rfind("/log/"));
  for (const std::string& log : {text_, xml_}) {
    unlink(lock_file_of_path(log).c_str());
  }
  ASSERT_EQ(rename(logs.c_str(), (logs + "-away").c_str()), 0);
  const Outcome outcome = run({built_program("log-worker"), "0", "1", "0"});
  EXPECT_EQ(outcome.exit_status, 1);
  EXPECT_EQ(outcome.err, "log-worker: not appended\n");
  EXPECT_NE(access(logs.c_str(), F_OK), 0);
  ASSERT_EQ(rename((logs + "-away").c_str(), logs.c_str()), 0);
  for (const std::string& log : {text_, xml_}) {
    EXPECT_NE(access(log.c_str(), F_OK), 0);
    EXPECT_NE(access(lock_file_of_path(log).c_str(), F_OK), 0);
  }
}

TEST_F(EventLogs, AreWholeWhoeverIsKilled) {
  const unsigned kills = is_emulated() ? 30 : 100;
  constexpr size_t kPadding = 100;
  const auto start = [&](unsigned number) {
    return Background(
        {built_program("log-worker"), std::to_string(number), "0", std::to_string(kPadding)});
  };
  // Two at a time, so that one is killed while the other waits for it or it for the other.
  auto older = std::make_unique<Background>(start(0));
  EXPECT_EQ(older->read_line(), "ready");
  for (unsigned i = 1; i < kills; ++i) {
    auto younger = std::make_unique<Background>(start(i));
    EXPECT_EQ(younger->read_line(), "ready");
    usleep(i * 37 % 2000);
    older->kill();
    older->wait();
    const std::string description =
        "worker 1000 event " + std::to_string(i) + " " + std::string(kPadding, '.');
    EXPECT_EQ(
        SMAppendToLog(SM_LOG_TEXT | SM_LOG_XML, 1, 1, 1, "test", description.c_str(), nullptr, 0),
        0U);
    younger->kill(SIGSTOP);  // before it comes to two backups
    const std::u16string units(description.begin(), description.end());
    const std::string text(reinterpret_cast<const char*>(units.data()), 2 * units.size());
    EXPECT_NE((content_of(backup_of(text_)) + content_of(text_)).find(text), std::string::npos);
    EXPECT_NE((content_of(backup_of(xml_)) + content_of(xml_)).find(description),
              std::string::npos);
    younger->kill(SIGCONT);
    older = std::move(younger);
  }
  older->kill();
  older->wait();
  EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT | SM_LOG_XML, 1, 1, 1, "test", "the end", nullptr, 0), 0U);
  const auto records = parse_text_log(content_of(text_));
  ASSERT_TRUE(records.has_value());
  EXPECT_EQ(records->back().description, "the end");
  const auto elements = parse_xml_log(content_of(xml_));
  ASSERT_TRUE(elements.has_value());
  EXPECT_EQ(child(elements->back(), "Description"), "the end");
  for (const std::string& path : {text_, xml_}) {
    if (access(backup_of(path).c_str(), F_OK) == 0) {
      const std::string backup = content_of(backup_of(path));
      EXPECT_TRUE(path == text_ ? parse_text_log(backup).has_value()
                                : parse_xml_log(backup).has_value());
    }
  }
  std::printf("[   FACT   ] %u writers of events killed\n", kills);
}

}  // namespace
