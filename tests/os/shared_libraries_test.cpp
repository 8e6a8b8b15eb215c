// Libraries that several users share.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/frame.h"
#include "kqsupt/os.h"
#include "os/libraries.h"
#include "support/guarded.h"
#include "support/program.h"

namespace {

using kqsupt::tests::call;
using kqsupt::tests::Guarded;
using kqsupt::tests::library_named;

class SharedLibrary : public kqsupt::tests::WithLibraries {
 protected:
  void* link(const char* user, const char* function = "answer") const {
    return SMFLibLinkToExportFN(user, counted_.c_str(), function);
  }
  SMStatus unload(const char* user) const { return SMFLibUnLoad(user, counted_.c_str()); }
};

TEST_F(SharedLibrary, OfTwoUsersIsLoadedOnceAndUnloadedByTheLast) {
  void* const function = link("one");
  ASSERT_NE(function, nullptr);
  EXPECT_EQ(call(function), 42);
  EXPECT_EQ(link("two"), function);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(call(function), 42);
  EXPECT_EQ(unload("two"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, CountsAUserOnceHoweverMuchItLinks) {
  EXPECT_NE(link("one"), nullptr);
  EXPECT_EQ(link("one"), link("one"));
  EXPECT_EQ(call(link("one", "question")), 7);
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, IsUnloadedByOneWhoNeverLinked) {
  EXPECT_NE(link("one"), nullptr);
  EXPECT_EQ(unload("stranger"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
}

TEST_F(SharedLibrary, StrangersCountDownAsUsersDo) {
  EXPECT_NE(link("one"), nullptr);
  EXPECT_NE(link("two"), nullptr);
  EXPECT_NE(link("three"), nullptr);
  EXPECT_EQ(unload("stranger"), SM_STATUS_SUCCESS);
  EXPECT_EQ(unload("two"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(unload("two"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, AUserThatIsThereIsNotCountedAgainAfterAStranger) {
  EXPECT_NE(link("one"), nullptr);
  EXPECT_NE(link("two"), nullptr);
  EXPECT_EQ(unload("stranger"), SM_STATUS_SUCCESS);
  EXPECT_NE(link("two"), nullptr);
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, IsLoadedAgainWithoutTheUsersOfBefore) {
  EXPECT_NE(link("one"), nullptr);
  EXPECT_NE(link("two"), nullptr);
  unload("stranger");
  unload("stranger");
  EXPECT_EQ(loads(), "+-");
  EXPECT_EQ(call(link("one")), 42);
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-+-");
}

TEST_F(SharedLibrary, WithoutAFunctionIsItsRecord) {
  auto* const library = static_cast<SMLib*>(link("one", nullptr));
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(link("two", nullptr), library);
  EXPECT_EQ(SMLibLinkToExportFN(library, "answer"), link("one"));
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(unload("two"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, FunctionThatIsMissingIsNullAndTheUserIsOneAllTheSame) {
  EXPECT_EQ(link("one", "missing"), nullptr);
  EXPECT_EQ(link("two", ""), nullptr);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(unload("two"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, SymbolWhoseValueIsNullIsNull) {
  EXPECT_EQ(SMFLibLinkToExportFN("one", odd_.c_str(), "nothing"), nullptr);
  EXPECT_EQ(call(SMFLibLinkToExportFN("one", odd_.c_str(), "something")), 1);
  EXPECT_EQ(SMFLibUnLoad("one", odd_.c_str()), SM_STATUS_SUCCESS);
}

TEST_F(SharedLibrary, ThatTheLoaderRefusesHasNoUsers) {
  const std::string path = scratch_.file("lib.so");
  EXPECT_EQ(SMFLibLinkToExportFN("one", path.c_str(), nullptr), nullptr);
  EXPECT_EQ(SMFLibLinkToExportFN("one", library_named("incomplete").c_str(), nullptr), nullptr);
  EXPECT_EQ(SMFLibUnLoad("one", path.c_str()), SM_STATUS_SUCCESS);
  std::filesystem::copy_file(counted_, path);
  EXPECT_NE(SMFLibLinkToExportFN("two", path.c_str(), nullptr), nullptr);
  EXPECT_EQ(SMFLibUnLoad("two", path.c_str()), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, UserAndPathAreRequired) {
  EXPECT_EQ(SMFLibLinkToExportFN(nullptr, counted_.c_str(), "answer"), nullptr);
  EXPECT_EQ(SMFLibLinkToExportFN("one", nullptr, "answer"), nullptr);
  EXPECT_EQ(SMFLibLinkToExportFN(nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(SMFLibUnLoad(nullptr, counted_.c_str()), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMFLibUnLoad("one", nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMFLibUnLoad(nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(loads(), "");
}

TEST_F(SharedLibrary, ThatIsNotLoadedIsUnloadedAlready) {
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMFLibUnLoad("", ""), SM_STATUS_SUCCESS);
}

// The library is mapped once; the table knows it under each name.
TEST_F(SharedLibrary, PathsAreToldApartByTheirBytes) {
  const std::string other = std::string(KQSUPT_LIB_DIR) + "/./libcounted-library.so";
  void* const function = link("one");
  EXPECT_EQ(SMFLibLinkToExportFN("one", other.c_str(), "answer"), function);
  EXPECT_NE(SMFLibLinkToExportFN("one", other.c_str(), nullptr), link("one", nullptr));
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(SMFLibUnLoad("one", other.c_str()), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, UsersAndFunctionsAreToldApartByTheirBytes) {
  EXPECT_NE(link("user"), nullptr);
  EXPECT_NE(link("User"), nullptr);
  EXPECT_NE(link("\xC3\xA4"), nullptr);
  EXPECT_NE(link(""), nullptr);
  EXPECT_EQ(link("", "Answer"), nullptr);
  for (const char* user : {"User", "\xC3\xA4", ""}) {
    EXPECT_EQ(unload(user), SM_STATUS_SUCCESS);
    EXPECT_EQ(loads(), "+");
  }
  EXPECT_EQ(unload("user"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, TextsAreCopied) {
  {
    Guarded<char> user("one", 4);
    Guarded<char> path(counted_.c_str(), counted_.size() + 1);
    Guarded<char> function("answer", 7);
    EXPECT_NE(SMFLibLinkToExportFN(user.data(), path.data(), function.data()), nullptr);
  }
  EXPECT_NE(link("one"), nullptr);
  EXPECT_EQ(unload("one"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, FileThatIsReplacedMeanwhileDoesNotChangeWhatIsLinked) {
  const std::string path = scratch_.file("lib.so");
  std::filesystem::copy_file(counted_, path);
  void* const function = SMFLibLinkToExportFN("one", path.c_str(), "answer");
  unlink(path.c_str());
  std::filesystem::copy_file(odd_, path);
  EXPECT_EQ(SMFLibLinkToExportFN("two", path.c_str(), "answer"), function);
  EXPECT_EQ(call(SMFLibLinkToExportFN("two", path.c_str(), "question")), 7);
  EXPECT_EQ(SMFLibLinkToExportFN("two", path.c_str(), "something"), nullptr);
  EXPECT_EQ(SMFLibUnLoad("one", path.c_str()), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMFLibUnLoad("two", path.c_str()), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, ManyUsersAreEachCounted) {
  for (int i = 0; i < 200; ++i) {
    ASSERT_NE(link(std::to_string(i * 7919 % 200).c_str()), nullptr);
  }
  for (int i = 0; i < 199; ++i) {
    ASSERT_EQ(unload(std::to_string(i).c_str()), SM_STATUS_SUCCESS);
  }
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(unload("199"), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(SharedLibrary, ManyLibrariesAreFoundAndGo) {
  constexpr int kLibraries = 20;
  const auto path = [&](int i) { return scratch_.file(std::to_string(i * 7 % kLibraries)); };
  std::vector<void*> functions;
  for (int i = 0; i < kLibraries; ++i) {
    std::filesystem::copy_file(counted_, path(i));
    functions.push_back(SMFLibLinkToExportFN("one", path(i).c_str(), "answer"));
    ASSERT_NE(functions.back(), nullptr);
    EXPECT_EQ(std::count(functions.begin(), functions.end(), functions.back()), 1);
  }
  for (int i = 0; i < kLibraries; ++i) {
    EXPECT_EQ(SMFLibLinkToExportFN("one", path(i).c_str(), "answer"), functions[size_t(i)]);
  }
  for (int i = 0; i < kLibraries; ++i) {
    EXPECT_EQ(SMFLibUnLoad("one", path(i).c_str()), SM_STATUS_SUCCESS);
  }
  EXPECT_EQ(loads(), std::string(kLibraries, '+') + std::string(kLibraries, '-'));
}

// ---- Threads, and libraries that link when they are loaded ----

TEST_F(SharedLibrary, OfManyThreadsIsLoadedAndUnloadedInTurn) {
  std::vector<std::thread> threads;
  std::atomic<int> wrong = 0;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, user = std::to_string(i)] {
      for (int round = 0; round < 100; ++round) {
        void* const function = link(user.c_str(), round % 2 != 0 ? "answer" : "question");
        wrong += function == nullptr || call(function) != (round % 2 != 0 ? 42 : 7) ? 1 : 0;
        wrong += unload(user.c_str()) != SM_STATUS_SUCCESS ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(wrong, 0);
  const std::string seen = loads();
  EXPECT_EQ(std::count(seen.begin(), seen.end(), '+'), std::count(seen.begin(), seen.end(), '-'));
  EXPECT_EQ(seen.find("++"), std::string::npos);
}

class LinkingLibrary : public SharedLibrary {
 protected:
  LinkingLibrary() {
    setenv("KQSUPT_SELF", linking_.c_str(), 1);
    setenv("KQSUPT_OTHER", counted_.c_str(), 1);
  }
  ~LinkingLibrary() override {
    unsetenv("KQSUPT_SELF");
    unsetenv("KQSUPT_OTHER");
  }
  const std::string linking_ = library_named("linking");
};

TEST_F(LinkingLibrary, MayLinkWhileItIsLoadedAndUnloadWhileItIsUnloaded) {
  void* const function = SMFLibLinkToExportFN("user", linking_.c_str(), "what_was_seen");
  ASSERT_NE(function, nullptr);
  EXPECT_EQ(call(function), 42);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(SMFLibUnLoad("user", linking_.c_str()), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+") << "its constructor is a user too";
  EXPECT_EQ(SMFLibUnLoad("constructor", linking_.c_str()), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

// One thread is inside the loader when it asks for the table, the other one inside the table when
// it asks for the loader.
TEST_F(LinkingLibrary, MayBeLoadedWhileAnotherThreadLoadsLibraries) {
  std::thread other([&] {
    for (int round = 0; round < 200; ++round) {
      EXPECT_NE(SMFLibLinkToExportFN("other", odd_.c_str(), "something"), nullptr);
      EXPECT_EQ(SMFLibUnLoad("other", odd_.c_str()), SM_STATUS_SUCCESS);
    }
  });
  for (int round = 0; round < 200; ++round) {
    SMLib* const library = SMLibLoad(linking_.c_str());
    EXPECT_EQ(SMFLibUnLoad("constructor", linking_.c_str()), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
  }
  other.join();
  const std::string seen = loads();
  EXPECT_EQ(std::count(seen.begin(), seen.end(), '+'), std::count(seen.begin(), seen.end(), '-'));
}

TEST_F(SharedLibrary, ChildOfAProcessThatLinksIsNotStuck) {
  std::atomic<bool> done = false;
  std::thread other([&] {
    while (!done) {
      link("one", nullptr);
    }
  });
  for (int i = 0; i < 100; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(60);  // ends a child that waits for ever
      _exit(SMFLibUnLoad("child", "/no/such/library") == SM_STATUS_SUCCESS ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
  }
  done = true;
  other.join();
  unload("one");
}

TEST_F(SharedLibrary, IsRefusedWhenTheLibraryHasBeenStopped) {
  kqsupt::tests::put(scratch_.file("file"), "x");
  const kqsupt::tests::Outcome outcome = kqsupt::tests::run(
      {kqsupt::tests::built_program("after-stop"), counted_, scratch_.file("file")});
  EXPECT_EQ(outcome.out, "as stated\n");
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(outcome.signal, 0);
}

}  // namespace
