// Agents that make named objects, and what the tool says of them.
#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <tuple>

#include "gtest/gtest.h"
#include "support/background.h"
#include "support/program.h"
#include "support/scratch.h"

namespace kqsup::tests {

using kqsupt::tests::Background;
using kqsupt::tests::built_program;
using kqsupt::tests::Command;
using kqsupt::tests::content_of;
using kqsupt::tests::put;
using nlohmann::ordered_json;

inline std::string ipc_directory() {
  return std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/wexlib/var/.ipc";
}
inline std::string registry() {
  return ipc_directory() + "/.lxsuptIPCini";
}

// An agent that does its steps and dies.
inline int agent(Command steps) {
  steps.insert(steps.begin(), built_program("ipc-maker"));
  return kqsupt::tests::run(steps).exit_status;
}

// One that stays until the test ends; `lines` are what it says before it is ready.
inline Background living_agent(Command steps, std::string* said = nullptr) {
  steps.insert(steps.begin(), built_program("ipc-maker"));
  Background agent(steps);
  std::string line = agent.read_line();
  if (said != nullptr) {
    *said = line;
    line = agent.read_line();
  }
  EXPECT_EQ(line, "ready");
  return agent;
}

struct Answer {
  int exit_status;
  ordered_json rows;
  std::string err;
};

inline Answer run_tool(Command arguments) {
  arguments.insert(arguments.begin(), built_program("kqsup"));
  arguments.emplace_back("--json");
  const kqsupt::tests::Outcome outcome = kqsupt::tests::run(arguments);
  return {outcome.exit_status, ordered_json::parse(outcome.out, nullptr, false), outcome.err};
}

// The row of a caller's name and a kind; null when there is none.
inline ordered_json row_of(const std::string& kind, const std::string& name) {
  for (const ordered_json& row : run_tool({"ipc", "list", "--name", name}).rows) {
    if (row["kind"] == kind) {
      return row;
    }
  }
  return {};
}

// All that looking could change: the files with their times, and the kernel's objects with theirs.
inline std::string state_of_host() {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(
           std::filesystem::path(std::getenv("KQSUPT_SANDBOX")) / "install")) {
    struct stat about {};
    lstat(entry.path().c_str(), &about);
    std::ostringstream text;
    text << about.st_mode << ' ' << about.st_size << ' ' << about.st_mtim.tv_sec << '.'
         << about.st_mtim.tv_nsec << ' ' << about.st_ctim.tv_sec << '.' << about.st_ctim.tv_nsec
         << ' ' << (S_ISREG(about.st_mode) ? content_of(entry.path()) : "");
    files[entry.path()] = text.str();
  }
  std::string state = content_of("/proc/sysvipc/sem") + content_of("/proc/sysvipc/shm");
  for (const auto& [path, text] : files) {
    state += path + ": " + text + "\n";
  }
  return state;
}

}  // namespace kqsup::tests
