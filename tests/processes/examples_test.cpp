// The example programs, as processes: what they print of this machine and what they refuse.

#include <dirent.h>
#include <fnmatch.h>
#include <mntent.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt.h"
#include "log/event_logs.h"
#include "support/program.h"

namespace {

using kqsupt::tests::built_program;
using kqsupt::tests::Command;
using kqsupt::tests::content_of;
using kqsupt::tests::Outcome;
using kqsupt::tests::own_log;
using kqsupt::tests::parse_text_log;
using kqsupt::tests::parse_xml_log;
using kqsupt::tests::run;
using kqsupt::tests::run_native;
using kqsupt::tests::with_runner;

// What the reader printed: the lines of the tree by their path, as in "cpus/[0]/model".
struct Printed {
  std::string summary;
  std::map<std::string, std::string> fields;

  [[nodiscard]] std::string at(const std::string& path) const {
    const auto found = fields.find(path);
    return found != fields.end() ? found->second : "(there is no " + path + ")";
  }
  [[nodiscard]] uint64_t number_at(const std::string& path) const {
    return std::strtoull(at(path).c_str(), nullptr, 10);
  }
  // The value that each record of an array has in one field, "" where it is left out.
  [[nodiscard]] std::vector<std::string> column(const std::string& array,
                                                const std::string& field) const {
    std::vector<std::string> values;
    for (size_t i = 0;; ++i) {
      const std::string element = array + "/[" + std::to_string(i) + "]";
      if (fields.count(element) == 0) {
        return values;
      }
      const auto found = fields.find(element + "/" + field);
      values.push_back(found != fields.end() ? found->second : "");
    }
  }
};

Printed parse(const std::string& text) {
  Printed printed;
  std::istringstream lines(text);
  std::getline(lines, printed.summary);
  std::vector<std::string> path;
  for (std::string line; std::getline(lines, line);) {
    const size_t indent = line.find_first_not_of(' ');
    const size_t colon = line.find(':');
    EXPECT_NE(colon, std::string::npos) << line;
    EXPECT_TRUE(indent % 2 == 0 && indent / 2 <= path.size()) << line;
    path.resize(indent / 2);
    path.push_back(line.substr(indent, colon - indent));
    std::string key;
    for (const std::string& label : path) {
      key += (key.empty() ? "" : "/") + label;
    }
    const std::string value = line.size() > colon + 2 ? line.substr(colon + 2) : "";
    EXPECT_TRUE(printed.fields.emplace(key, value).second) << "twice: " << key;
  }
  return printed;
}

using Start = Outcome (*)(const Command&, std::string_view);

// Runs the pair whose programs are in `directory` and returns what the reader printed.
Printed run_pair(const std::string& directory, Start start) {
  const Outcome collector = start({directory + "/collector", "-"}, {});
  EXPECT_EQ(collector.exit_status, 0) << directory << "/collector";
  EXPECT_EQ(collector.err, "");
  const Outcome reader = start({directory + "/reader", "-"}, collector.out);
  EXPECT_EQ(reader.exit_status, 0) << directory << "/reader";
  EXPECT_EQ(reader.err, "");
  return parse(reader.out);
}

Printed print_this_machine() {
  return run_pair(KQSUPT_BIN_DIR, run);
}

utsname this_system() {
  utsname system{};
  EXPECT_EQ(uname(&system), 0);
  return system;
}

std::string first_line(const std::string& path) {
  std::string line;
  std::ifstream file(path);
  std::getline(file, line);
  return line;
}

// `pattern` is one of the shell's.
bool matches(const std::string& text, const std::string& pattern) {
  return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

std::vector<std::string> names_in(const std::string& directory, const std::string& pattern) {
  std::vector<std::string> names;
  DIR* open = opendir(directory.c_str());
  EXPECT_NE(open, nullptr) << directory;
  while (const dirent* entry = open != nullptr ? readdir(open) : nullptr) {
    if (matches(entry->d_name, pattern)) {
      names.emplace_back(entry->d_name);
    }
  }
  if (open != nullptr) {
    closedir(open);
  }
  return names;
}

// A line of a file of /proc such as "MemTotal:   1024 kB", in bytes as the reader prints them.
std::string meminfo(const std::string& key) {
  std::ifstream file("/proc/meminfo");
  for (std::string line; std::getline(file, line);) {
    if (line.compare(0, key.size() + 1, key + ":") == 0) {
      const uint64_t kilobytes = std::strtoull(line.c_str() + key.size() + 1, nullptr, 10);
      return std::to_string(kilobytes * 1024) + " bytes";
    }
  }
  return "";
}

TEST(FirstAgent, PrintsWhatItStored) {
  const Outcome agent = run({built_program("first-agent")});
  EXPECT_EQ(agent.exit_status, 0);
  EXPECT_EQ(agent.err, "");
  EXPECT_EQ(agent.out, "inlet: 24 degrees, in a block of 30 bytes\n");
}

TEST(MachineRecord, BeginsWithALineOfHostKernelAndUptime) {
  const utsname system = this_system();
  const std::string expected =
      std::string(system.nodename) + ": " + system.sysname + " " + system.release + ", up ";
  const std::string summary = print_this_machine().summary;
  ASSERT_EQ(summary.substr(0, expected.size()), expected);
  EXPECT_TRUE(matches(summary.substr(expected.size()), "[0-9]* d [0-9][0-9]:[0-5][0-9]"))
      << summary;
}

TEST(MachineRecord, NamesHostAndKernelAsUnameDoes) {
  const utsname system = this_system();
  const Printed printed = print_this_machine();
  EXPECT_EQ(printed.at("host"), system.nodename);
  EXPECT_EQ(printed.at("kernel/system"), system.sysname);
  EXPECT_EQ(printed.at("kernel/release"), system.release);
  EXPECT_EQ(printed.at("kernel/version"), system.version);
  EXPECT_EQ(printed.at("kernel/machine"), system.machine);
}

TEST(MachineRecord, TellsTheUptimeInSeconds) {
  const uint64_t before = std::stoull(first_line("/proc/uptime"));
  const Printed printed = print_this_machine();
  const uint64_t after = std::stoull(first_line("/proc/uptime"));
  EXPECT_GE(printed.number_at("uptime"), before);
  EXPECT_LE(printed.number_at("uptime"), after);
  EXPECT_EQ(printed.at("uptime"), std::to_string(printed.number_at("uptime")) + " seconds");
}

TEST(MachineRecord, HasTheMemoryOfThisMachineInBytes) {
  const Printed printed = print_this_machine();
  EXPECT_EQ(printed.at("memory/total"), meminfo("MemTotal"));
  EXPECT_EQ(printed.at("memory/swap/total"), meminfo("SwapTotal"));
}

TEST(MachineRecord, HasEachCpuInOrder) {
  const size_t cpus = names_in("/sys/devices/system/cpu", "cpu[0-9]*").size();
  std::vector<std::string> expected;
  for (size_t i = 0; i < cpus; ++i) {
    expected.push_back(std::to_string(i));
  }
  const Printed printed = print_this_machine();
  ASSERT_GT(cpus, 0U);
  EXPECT_EQ(printed.column("cpus", "index"), expected);
  EXPECT_EQ(printed.at("cpus/[0]/online"), "1");
}

TEST(MachineRecord, HasEachNetworkInterface) {
  const std::string directory = "/sys/class/net/";
  std::vector<std::string> names;
  for (const std::string& name : names_in(directory, "[!.]*")) {
    if (!first_line(directory + name + "/mtu").empty()) {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  std::vector<std::string> mtus;
  std::vector<std::string> addresses;
  for (const std::string& name : names) {
    mtus.push_back(first_line(directory + name + "/mtu") + " bytes");
    addresses.push_back(first_line(directory + name + "/address"));
  }
  const Printed printed = print_this_machine();
  EXPECT_EQ(printed.column("interfaces", "name"), names);
  EXPECT_EQ(printed.column("interfaces", "mtu"), mtus);
  EXPECT_EQ(printed.column("interfaces", "address"), addresses);
}

TEST(MachineRecord, HasEachMount) {
  std::vector<std::string> sources;
  std::vector<std::string> targets;
  std::vector<std::string> types;
  std::vector<std::string> options;
  FILE* table = setmntent("/proc/self/mounts", "r");
  ASSERT_NE(table, nullptr);
  while (const mntent* mount = getmntent(table)) {
    sources.emplace_back(mount->mnt_fsname);
    targets.emplace_back(mount->mnt_dir);
    types.emplace_back(mount->mnt_type);
    options.emplace_back(mount->mnt_opts);
  }
  endmntent(table);
  const Printed printed = print_this_machine();
  EXPECT_EQ(printed.column("mounts", "source"), sources);
  EXPECT_EQ(printed.column("mounts", "target"), targets);
  EXPECT_EQ(printed.column("mounts", "type"), types);
  EXPECT_EQ(printed.column("mounts", "options"), options);
}

TEST(MachineRecord, OmitsNothingOnAMachineWhereAllFits) {
  for (const auto& [path, value] : print_this_machine().fields) {
    EXPECT_EQ(path.find("omitted"), std::string::npos) << path << ": " << value;
  }
}

// Runs `script` in a mount namespace of its own, where it may mount what it likes below $root, then
// the collector there.
Outcome collect_after(const std::string& script) {
  Command command{"unshare",
                  "--mount",
                  "--propagation",
                  "private",
                  "sh",
                  "-euc",
                  "root=$(mktemp -d); mount -t tmpfs scratch \"$root\";" + script + "; exec \"$@\"",
                  "sh"};
  for (const std::string& word : with_runner({built_program("collector"), "-"})) {
    command.push_back(word);
  }
  return run_native(command);
}

TEST(MachineRecord, LeavesOutTheMountsThatDoNotFitAndCountsThem) {
  const Outcome collector = collect_after(R"(
    name=$(printf %0400d 0) i=0
    while [ $i -lt 150 ]; do
      mkdir "$root/$i"
      mount -t tmpfs "$name" "$root/$i"
      i=$((i + 1))
    done
    wc -l </proc/self/mounts >&2)");
  ASSERT_EQ(collector.exit_status, 0) << collector.err;
  EXPECT_LE(collector.out.size(), 65535U);
  const Outcome reader = run({built_program("reader"), "-"}, collector.out);
  ASSERT_EQ(reader.exit_status, 0) << reader.err;
  const Printed printed = parse(reader.out);
  const size_t kept = printed.column("mounts", "target").size();
  EXPECT_GT(kept, 80U);
  EXPECT_GT(printed.number_at("mounts omitted"), 0U);
  EXPECT_EQ(kept + printed.number_at("mounts omitted"), std::stoul(collector.err));
  // The others have their share all the same.
  EXPECT_EQ(printed.column("cpus", "index"), print_this_machine().column("cpus", "index"));
}

TEST(MachineRecord, ShowsAMountWithBlanksAndLineEndsInItsNameOnOneLine) {
  const Outcome collector = collect_after(R"(
    name=$(printf 'a b\nc\\d')
    mkdir "$root/$name"
    mount -t tmpfs inner "$root/$name")");
  ASSERT_EQ(collector.exit_status, 0) << collector.err;
  const Outcome reader = run({built_program("reader"), "-"}, collector.out);
  ASSERT_EQ(reader.exit_status, 0) << reader.err;
  const std::vector<std::string> targets = parse(reader.out).column("mounts", "target");
  EXPECT_TRUE(targets.back().ends_with("/a b\\012c\\134d")) << targets.back();
}

// Runs a program of this build with a standard output that takes nothing.
Outcome run_without_output(const std::string& name, const std::string& input) {
  Command command{"sh", "-c", "exec \"$@\" >/dev/full", "sh"};
  for (const std::string& word : with_runner({built_program(name), "-"})) {
    command.push_back(word);
  }
  return run_native(command, input);
}

TEST(Collector, FailsWhenItsBlockCannotBeWritten) {
  const Outcome collector = run_without_output("collector", "");
  EXPECT_EQ(collector.exit_status, 1);
  EXPECT_EQ(collector.err, "collector: standard output: No space left on device\n");
}

// A block is refused with exit status 1 and one line that says why.
void expect_refusal(const std::string& input, const std::string& reason) {
  const Outcome reader = run({built_program("reader"), "-"}, input);
  EXPECT_EQ(reader.exit_status, 1);
  EXPECT_EQ(reader.out, "");
  EXPECT_EQ(reader.err, "reader: " + reason + "\n");
}

std::string collected() {
  return run({built_program("collector"), "-"}).out;
}

TEST(Reader, RefusesEmptyInput) {
  expect_refusal("", "nothing was sent");
}

TEST(Reader, RefusesLessThanAHeader) {
  expect_refusal(collected().substr(0, 7), "the record ends within its header");
}

TEST(Reader, RefusesABlockThatLacksItsLastByte) {
  const std::string block = collected();
  const std::string size = std::to_string(block.size());
  const std::string got = std::to_string(block.size() - 1);
  expect_refusal(block.substr(0, block.size() - 1),
                 "the record ends after " + got + " of " + size + " bytes");
}

TEST(Reader, RefusesAnotherSignature) {
  std::string block = collected();
  block[0] = 'X';
  expect_refusal(block, "what was sent has not the signature of a record of this host");
}

TEST(Reader, RefusesTheSignatureOfTheOtherByteOrder) {
  std::string block = collected();
  std::reverse(block.begin(), block.begin() + 4);
  expect_refusal(block, "what was sent has not the signature of a record of this host");
}

TEST(Reader, RefusesAnArray) {
  std::string array(8, '\0');
  ASSERT_EQ(SMSDOBinaryArrayInitHeader(array.data(), 8), SM_STATUS_SUCCESS);
  expect_refusal(array, "an array was sent where a record is expected");
}

TEST(Reader, RefusesAHeaderWhoseEntriesDoNotFitIntoItsSize) {
  std::string block = collected();
  std::memset(&block[4], 0xFF, 2);
  block[6] = block[7] = 1;
  expect_refusal(block, "the header gives a size that its entries do not fit into");
}

TEST(Reader, RefusesARecordThatIsNotOfAMachine) {
  SMSDOConfig* record = SMSDOConfigAlloc();
  std::string block(8, '\0');
  uint32_t size = 8;
  ASSERT_EQ(SMSDOConfigToBinary(record, block.data(), &size), SM_STATUS_SUCCESS);
  SMSDOConfigFree(record);
  expect_refusal(block, "the record does not tell the \"uptime\" of a machine");
}

TEST(Reader, ReadsOneBlockAndNoFurther) {
  const std::string block = collected();
  EXPECT_EQ(run({built_program("reader"), "-"}, block + std::string(1 << 20, 'x')).out,
            run({built_program("reader"), "-"}, block).out);
}

TEST(Reader, FailsWhenItsTreeCannotBeWritten) {
  const Outcome reader = run_without_output("reader", collected());
  EXPECT_EQ(reader.exit_status, 1);
  EXPECT_EQ(reader.err, "reader: standard output: No space left on device\n");
}

// Fields that change between two runs on the same machine.
bool only_grows(const std::string& path) {
  return path == "uptime" || matches(path, "interfaces/*/received") ||
         matches(path, "interfaces/*/sent");
}
bool varies(const std::string& path) {
  return path == "memory/free" || path == "memory/available" || path == "memory/swap/free";
}

class BesideTheNativePair : public testing::Test {
 protected:
  void SetUp() override {
    const char* configured = std::getenv("KQSUPT_NATIVE_BIN");
    const std::string native = configured != nullptr ? configured : KQSUPT_DEFAULT_NATIVE_BIN;
    for (const char* program : {"/collector", "/reader"}) {
      ASSERT_EQ(access((native + program).c_str(), X_OK), 0)
          << native << program << " is not there. Run tools/build native first, or tell in "
          << "$KQSUPT_NATIVE_BIN where the programs of the native build are.";
    }
    before_ = run_pair(native, run_native);
    ours_ = print_this_machine();
    after_ = run_pair(native, run_native);
  }

  Printed before_;
  Printed ours_;
  Printed after_;
};

TEST_F(BesideTheNativePair, EveryStableFieldIsTheSame) {
  ASSERT_GT(before_.fields.size(), 20U);
  std::map<std::string, std::string> ours = ours_.fields;
  std::map<std::string, std::string> native = before_.fields;
  // The kernel says "machine" for the host that the program was built for.
  EXPECT_EQ(ours.at("kernel/machine"), this_system().machine);
  for (auto* fields : {&ours, &native}) {
    for (auto& [path, value] : *fields) {
      if (only_grows(path) || varies(path) || path == "kernel/machine") {
        value = "(compared elsewhere)";  // that it is there still counts
      }
    }
  }
  EXPECT_EQ(ours, native);
}

TEST_F(BesideTheNativePair, CountersLieBetweenWhatItPrintedBeforeAndAfter) {
  for (const auto& [path, value] : ours_.fields) {
    if (only_grows(path)) {
      EXPECT_GE(ours_.number_at(path), before_.number_at(path)) << path;
      EXPECT_LE(ours_.number_at(path), after_.number_at(path)) << path;
    }
  }
}

// Other programs take and release memory meanwhile: only the total bounds what is free.
TEST_F(BesideTheNativePair, FreeMemoryIsNotMoreThanTheTotalItPrinted) {
  EXPECT_GT(ours_.number_at("memory/free"), 0U);
  EXPECT_GT(ours_.number_at("memory/available"), 0U);
  EXPECT_LT(ours_.number_at("memory/free"), before_.number_at("memory/total"));
  EXPECT_LT(ours_.number_at("memory/available"), before_.number_at("memory/total"));
  EXPECT_LE(ours_.number_at("memory/swap/free"), before_.number_at("memory/swap/total"));
}

// ---- Through named objects ----

// Starts the two programs separately, `first` a moment before the other.
Outcome exchange(const char* first, const char* second) {
  std::string both[2] = {first, second};
  for (std::string& program : both) {
    std::string line;
    for (const std::string& word : with_runner({built_program(program)})) {
      line += word + " ";
    }
    program = line;
  }
  return run_native(
      {"sh", "-c", both[0] + "& sleep 0.2; " + both[1] + "; status=$?; wait $! && exit $status"});
}

TEST(Exchange, TheReaderFindsTheRecordByItsName) {
  const Outcome outcome = exchange("collector", "reader");
  ASSERT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(parse(outcome.out).at("kernel/release"), this_system().release);
}

TEST(Exchange, TheReaderLogsWhatItReceived) {
  for (const uint32_t log : {SM_LOG_TEXT, SM_LOG_XML}) {
    unlink(own_log(log).c_str());
  }
  ASSERT_EQ(exchange("collector", "reader").exit_status, 0);
  const auto records = parse_text_log(content_of(own_log(SM_LOG_TEXT)));
  ASSERT_TRUE(records.has_value());
  ASSERT_EQ(records->size(), 1U);
  EXPECT_EQ(records->at(0).id, 1001U);
  EXPECT_EQ(records->at(0).source, "reader");
  EXPECT_TRUE(records->at(0).description.starts_with("The record of this machine was received: "));
  EXPECT_EQ(records->at(0).dump.size(), 2U * 81);
  const auto elements = parse_xml_log(content_of(own_log(SM_LOG_XML)));
  ASSERT_TRUE(elements.has_value());
  ASSERT_EQ(elements->size(), 1U);
  EXPECT_EQ(kqsupt::tests::child(elements->at(0), "Description"), records->at(0).description);
  // A program that knows nothing of us reads it, too.
  EXPECT_EQ(run_native({"xmllint", "--noout", own_log(SM_LOG_XML)}).exit_status, 0);
}

TEST(Exchange, AReaderMayWaitForTheCollector) {
  const Outcome outcome = exchange("reader", "collector");
  ASSERT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(parse(outcome.out).at("kernel/release"), this_system().release);
}

TEST(Exchange, TheNextPairFindsNothingOfTheOneBefore) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(exchange("collector", "reader").exit_status, 0);
  }
  EXPECT_EQ(run_native({"sh", "-c", "tail -qn +2 /proc/sysvipc/shm /proc/sysvipc/sem"}).out, "");
}

}  // namespace
