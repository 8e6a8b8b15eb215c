// Every exported function is described in full: what it does, each argument, who owns what is
// behind each pointer, and each status that it returns.

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "reference/header_text.h"
#include "support/text_file.h"

namespace {

using kqsupt::tests::Function;
using kqsupt::tests::functions_of;
using kqsupt::tests::Note;
using kqsupt::tests::read_file;

const std::string kSource = KQSUPT_SOURCE_DIR;

// What says who owns what is behind a pointer.
const std::regex kOwnership(
    "[Bb]orrowed|caller's|list's|record's|tree's|library's|walk's|takes over|takes it over|"
    "library releases it|caller (releases|frees|owns|hands)|keeps (the|a|its) pointer|belongs "
    "to|points? (in)?to|"
    "[Nn]othing to free|not freed");

// Results of functions that have no name.
constexpr std::array<uint32_t, 4> kUnnamed = {0xFFFFFFFF, 1, 9, 17};

std::vector<Function> read_functions() {
  std::vector<Function> all;
  for (const auto& header : std::filesystem::directory_iterator(kSource + "/include/kqsupt")) {
    const auto functions = functions_of(header.path().filename(), read_file(header.path()));
    all.insert(all.end(), functions.begin(), functions.end());
  }
  return all;
}

std::map<std::string, uint32_t> read_statuses() {
  const std::string header = read_file(kSource + "/include/kqsupt/frame.h");
  static const std::regex line(R"(\n  (SM_STATUS_\w+) = (\w+))");
  std::map<std::string, uint32_t> statuses;
  for (std::sregex_iterator match(header.begin(), header.end(), line), end; match != end; ++match) {
    statuses[(*match)[1]] = static_cast<uint32_t>(std::stoul((*match)[2], nullptr, 0));
  }
  return statuses;
}

// Statuses by the name of a function.
using Statuses = std::map<std::string, std::set<uint32_t>>;

std::set<uint32_t> of(const Statuses& table, const std::string& name) {
  const auto found = table.find(name);
  return found != table.end() ? found->second : std::set<uint32_t>();
}

class KqsupReference : public testing::Test {
 protected:
  // The number of a status by its name, or as written; none when there is no such status.
  [[nodiscard]] std::optional<uint32_t> status(const std::string& word) const {
    const auto named = statuses_.find(word);
    if (named != statuses_.end()) {
      return named->second;
    }
    if (!std::regex_match(word, std::regex("0x[0-9A-F]+|[0-9]+"))) {
      return std::nullopt;
    }
    const auto number = static_cast<uint32_t>(std::stoul(word, nullptr, 0));
    return std::count(kUnnamed.begin(), kUnnamed.end(), number) != 0 ? std::optional(number)
                                                                     : std::nullopt;
  }

  [[nodiscard]] std::set<uint32_t> described_statuses(const std::string& name) const {
    std::set<uint32_t> described;
    for (const Function& function : functions_) {
      for (const Note& note : function.notes) {
        if (function.name == name && note.kind == "retval") {
          described.insert(status(note.name).value_or(0xDEAD));
        }
      }
    }
    return described;
  }

  [[nodiscard]] Statuses table(const std::string& file) const;

  const std::vector<Function> functions_ = read_functions();
  const std::map<std::string, uint32_t> statuses_ = read_statuses();
};

std::string where(const Function& function) {
  return function.header + ": " + function.name;
}

std::vector<Note> notes_of(const Function& function, const std::string& kind) {
  std::vector<Note> notes;
  std::copy_if(function.notes.begin(), function.notes.end(), std::back_inserter(notes),
               [&](const Note& note) { return note.kind == kind; });
  return notes;
}

bool tells_ownership(const std::string& text) {
  return std::regex_search(text, kOwnership);
}

bool is_pointer(const std::string& type) {
  return type.find('*') != std::string::npos || type == "va_list";
}

TEST_F(KqsupReference, DescribesEveryExport) {
  std::set<std::string> described;
  for (const Function& function : functions_) {
    EXPECT_TRUE(function.described) << where(function);
    EXPECT_GE(std::count(function.description.begin(), function.description.end(), ' '), 1)
        << where(function);
    EXPECT_TRUE(described.insert(function.name).second) << where(function) << " is there twice";
  }
  std::set<std::string> exported;
  const std::string map = read_file(kSource + "/src/exports.map");
  static const std::regex name(R"((\w+);)");
  for (std::sregex_iterator match(map.begin(), map.end(), name), end; match != end; ++match) {
    exported.insert((*match)[1]);
  }
  EXPECT_EQ(described, exported);
}

TEST_F(KqsupReference, DescribesEveryArgumentInTheOrderOfThePrototype) {
  for (const Function& function : functions_) {
    std::vector<std::string> arguments, described;
    for (const auto& argument : function.arguments) {
      arguments.push_back(argument.name);
    }
    for (const Note& note : notes_of(function, "param")) {
      described.push_back(note.name);
      EXPECT_FALSE(note.text.empty()) << where(function) << ", " << note.name;
    }
    EXPECT_EQ(described, arguments) << where(function);
  }
}

TEST_F(KqsupReference, SaysWhichWayEveryArgumentGoes) {
  for (const Function& function : functions_) {
    for (const Note& note : notes_of(function, "param")) {
      EXPECT_TRUE(note.direction == "in" || note.direction == "out" || note.direction == "in,out")
          << where(function) << ", " << note.name << ": " << note.direction;
    }
  }
}

TEST_F(KqsupReference, SaysWhoOwnsWhatIsBehindEveryPointer) {
  for (const Function& function : functions_) {
    for (const Note& note : notes_of(function, "param")) {
      for (const auto& argument : function.arguments) {
        if (argument.name == note.name && is_pointer(argument.type)) {
          EXPECT_TRUE(tells_ownership(note.text))
              << where(function) << ", " << note.name << ": " << note.text;
        }
      }
    }
  }
}

TEST_F(KqsupReference, SaysWhoOwnsWhatIsReturned) {
  for (const Function& function : functions_) {
    for (const Note& note : notes_of(function, "return")) {
      if (is_pointer(function.result)) {
        EXPECT_TRUE(tells_ownership(note.text)) << where(function) << ": " << note.text;
      }
    }
  }
}

TEST_F(KqsupReference, DescribesEveryResult) {
  for (const Function& function : functions_) {
    const size_t results = notes_of(function, "return").size();
    const size_t statuses = notes_of(function, "retval").size();
    if (function.result == "SMStatus") {
      // A @return beside them tells of results that are no statuses.
      EXPECT_LE(results, 1U) << where(function);
      EXPECT_GE(statuses, 1U) << where(function);
      EXPECT_EQ(described_statuses(function.name).count(0), 1U) << where(function) << ": success";
    } else {
      EXPECT_EQ(results, function.result == "void" ? 0U : 1U) << where(function);
      EXPECT_EQ(statuses, 0U) << where(function);
    }
  }
}

TEST_F(KqsupReference, NamesStatusesThatThereAreAndEachOnce) {
  for (const Function& function : functions_) {
    std::set<uint32_t> named;
    for (const Note& note : notes_of(function, "retval")) {
      const auto number = status(note.name);
      ASSERT_TRUE(number.has_value()) << where(function) << ", " << note.name;
      EXPECT_TRUE(named.insert(*number).second) << where(function) << ", " << note.name;
      EXPECT_FALSE(note.text.empty()) << where(function) << ", " << note.name;
    }
  }
}

// The statuses of a table of docs/, by function. Behind the two words of a line may stand more.
Statuses KqsupReference::table(const std::string& file) const {
  Statuses table;
  std::istringstream lines(read_file(kSource + "/docs/" + file));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string name;
    std::string word;
    words >> name >> word;
    const auto number = status(word);
    EXPECT_TRUE(number.has_value()) << file << ": " << line;
    EXPECT_TRUE(table[name].insert(number.value_or(0xDEAD)).second)
        << file << " has it twice: " << line;
  }
  return table;
}

// One table is what tools/statuses saw the functions return; the other tells, of each status that
// it did not see, why.
TEST_F(KqsupReference, DescribesTheStatusesThatWereSeenAndThoseWithAReasonNotToBe) {
  const Statuses seen = table("statuses.txt");
  const Statuses not_seen = table("statuses-not-seen.txt");
  std::set<std::string> names;
  for (const Function& function : functions_) {
    if (function.result == "SMStatus") {
      names.insert(function.name);
      EXPECT_EQ(seen.count(function.name), 1U) << where(function);
    }
  }
  for (const Statuses& listed : {seen, not_seen}) {
    for (const auto& [name, statuses] : listed) {
      EXPECT_EQ(names.count(name), 1U) << name;
    }
  }
  for (const std::string& name : names) {
    std::set<uint32_t> told = of(seen, name);
    for (const uint32_t status : of(not_seen, name)) {
      EXPECT_TRUE(told.insert(status).second) << name << " was seen to return " << status;
    }
    EXPECT_EQ(described_statuses(name), told) << name;
  }
}

TEST_F(KqsupReference, GivesAReasonForEveryStatusThatWasNotSeen) {
  std::istringstream lines(read_file(kSource + "/docs/statuses-not-seen.txt"));
  for (std::string line; std::getline(lines, line);) {
    EXPECT_GE(std::count(line.begin(), line.end(), ' '), 3) << line;
  }
}

// A function that calls another one for what it answers answers with all that the other one does.
TEST_F(KqsupReference, DescribesEveryStatusThatIsPassedOn) {
  struct Passed {
    const char* by;
    const char* from;
  };
  constexpr Passed kPassed[] = {
      {"SMGetInstallPath", "SMGetPathByProductIDandType"},
      {"SMGetInstallPathByProductID", "SMGetPathByProductIDandType"},
      {"SMReadINIFileValue", "SMReadINIPathFileValue"},
      {"SMWriteINIFileValue", "SMWriteINIPathFileValue"},
      {"SMNVPUTF8ToTypeValue", "SMXLTUTF8ToTypeValue"},
      {"SMPropertyFileReadValue", "SMXLTUTF8ToTypeValue"},
      {"SMFileCopyAndSync", "SMFileCopy"},
      {"SMFileAppendAndSync", "SMFileAppend"},
      {"SMGetBackupLogPathFileName", "SMGetLogPathFileName"},
      {"SMAppendToLog", "SMAppendToXMLLog"},
      {"SMClearLog", "SMClearXMLLog"},
      {"SMXGBufCatAttribute", "SMXGBufCatNodeValue"},
      {"SMRWLWriteLockGet", "SMRWLReadLockGet"},
  };
  for (const auto& [by, from] : kPassed) {
    const std::set<uint32_t> described = described_statuses(by);
    const std::set<uint32_t> passed = described_statuses(from);
    EXPECT_FALSE(passed.empty()) << from;
    EXPECT_TRUE(std::includes(described.begin(), described.end(), passed.begin(), passed.end()))
        << by << " describes " << testing::PrintToString(described) << ", " << from << " "
        << testing::PrintToString(passed);
  }
}

}  // namespace
