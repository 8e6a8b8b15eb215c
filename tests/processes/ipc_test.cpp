// Named objects between processes that know nothing of each other but a name.

#include <dirent.h>
#include <malloc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/ipc.h"
#include "processes/account.h"
#include "support/background.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::Account;
using kqsupt::tests::Background;
using kqsupt::tests::built_program;
using kqsupt::tests::content_of;
using kqsupt::tests::decorated;
using kqsupt::tests::lock_file_of_path;
using kqsupt::tests::put;
using kqsupt::tests::registered_key;
using kqsupt::tests::registry;

// Under the emulator all takes some ten times as long.
uint32_t scaled(uint32_t number, uint32_t emulated) {
  const char* runner = std::getenv("KQSUPT_RUNNER");
  return runner != nullptr && std::strstr(runner, "qemu") != nullptr ? emulated : number;
}

Background worker(const std::vector<std::string>& arguments) {
  kqsupt::tests::Command command{built_program("ipc-worker")};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return Background(command);
}

class Processes : public testing::Test {
 protected:
  Processes() { alarm(280); }
  ~Processes() override { alarm(0); }
};

TEST_F(Processes, CountUnderOneMutexWithoutLosingAny) {
  const uint32_t rounds = scaled(2000, 1000);
  SMMutex* mutex = SMMutexCreate("count");
  SMSharedMem* memory = SMSharedMemCreate("count", sizeof(uint32_t));
  std::vector<Background> workers;
  for (int i = 0; i < 8; ++i) {
    workers.push_back(worker({"count", "count", "4", std::to_string(rounds)}));
  }
  for (Background& process : workers) {
    EXPECT_EQ(process.wait(), 0);
  }
  const uint32_t sum = *static_cast<uint32_t*>(SMSharedMemGetAddressPtr(memory));
  EXPECT_EQ(sum, 8 * 4 * rounds);
  std::printf("[   FACT   ] %u increments of one counter by 8 processes of 4 threads\n", sum);
  SMSharedMemFree(memory);
  SMMutexDestroy(mutex);
}

// Party 0 are the holders, 1 to 3 wait while one is killed, 4 is the test, which comes after it.
TEST_F(Processes, GetAMutexWhoseHolderWasKilled) {
  // A holder takes the emulator a hundred milliseconds to start.
  const uint32_t kills = scaled(200, 100);
  SMMutex* mutex = SMMutexCreate("killed");
  SMSharedMem* memory = SMSharedMemCreate("killed", sizeof(Account));
  auto* const account = static_cast<Account*>(SMSharedMemGetAddressPtr(memory));
  SMSemaphore* done = SMSemaphoreCreate("killed done", 0);
  std::vector<SMSemaphore*> go;
  std::vector<Background> waiting;
  // The system wakes those that wait without limit; those with one try again each millisecond.
  const char* const timeouts[] = {"-1", "4000", "60000"};
  for (uint32_t i = 0; i < 3; ++i) {
    const std::string party = std::to_string(i + 1);
    go.push_back(SMSemaphoreCreate(("killed go " + party).c_str(), 0));
    waiting.push_back(worker({"await", "killed", party, std::to_string(kills / 2), timeouts[i]}));
  }
  for (uint32_t i = 0; i < kills; ++i) {
    Background holder = worker({"spend", "killed", "0"});
    ASSERT_EQ(holder.read_line(), "held");
    if (i % 2 == 0) {
      usleep(i * 37 % 4000);
      holder.kill();
      // Such a wait is over after a hundred milliseconds.
      ASSERT_EQ(SMMutexLock(mutex, 400), SM_STATUS_SUCCESS) << i;
      account->add(4);
      ASSERT_EQ(SMMutexUnLock(mutex), SM_STATUS_SUCCESS);
      continue;
    }
    for (SMSemaphore* semaphore : go) {
      SMSemaphoreRelease(semaphore, 1, nullptr);
    }
    usleep(1000 + i * 37 % 4000);
    holder.kill();
    for (size_t waiter = 0; waiter < go.size(); ++waiter) {
      ASSERT_EQ(SMSemaphoreAcquireWait(done, 60000), SM_STATUS_SUCCESS) << i;
    }
  }
  for (Background& waiter : waiting) {
    EXPECT_EQ(waiter.wait(), 0);
  }
  account->undo();
  uint32_t sum = 0;
  for (const volatile uint32_t& share : account->shares) {
    sum += share;
  }
  EXPECT_EQ(account->sum, sum);
  for (const uint32_t party : {1, 2, 3, 4}) {
    EXPECT_EQ(account->shares[party], kills / 2) << party;
  }
  std::printf(
      "[   FACT   ] %u holders of a mutex killed, %u of them in a change, %u changes in all\n",
      kills, account->undone, sum);
  for (SMSemaphore* semaphore : go) {
    SMSemaphoreDestroy(semaphore);
  }
  SMSemaphoreDestroy(done);
  SMSharedMemFree(memory);
  SMMutexDestroy(mutex);
}

TEST_F(Processes, PassItemsThroughABufferNoneLostAndNoneTwice) {
  const uint32_t items = scaled(100000, 40000);
  constexpr size_t kSize = 2 * 4 + 16 * 4 + 100000;
  SMMutex* mutex = SMMutexCreate("ring");
  SMSharedMem* memory = SMSharedMemCreate("ring", kSize);
  SMSemaphore* free = SMSemaphoreCreate("ring free", 16);
  SMSemaphore* filled = SMSemaphoreCreate("ring filled", 0);
  std::vector<Background> producers;
  std::vector<Background> consumers;
  for (uint32_t i = 0; i < 4; ++i) {
    consumers.push_back(worker({"consume", "ring"}));
    producers.push_back(
        worker({"produce", "ring", std::to_string(i * (items / 4)), std::to_string(items / 4)}));
  }
  for (Background& producer : producers) {
    EXPECT_EQ(producer.wait(), 0);
  }
  producers.clear();
  Background end = worker({"produce", "ring", "4294967295", "1"});
  EXPECT_EQ(end.wait(), 0);
  for (int i = 1; i < 4; ++i) {
    EXPECT_EQ(worker({"produce", "ring", "4294967295", "1"}).wait(), 0);
  }
  uint32_t taken = 0;
  for (Background& consumer : consumers) {
    taken += static_cast<uint32_t>(std::stoul("0" + consumer.read_line()));
    EXPECT_EQ(consumer.wait(), 0);
  }
  EXPECT_EQ(taken, items);
  const auto* seen = static_cast<const uint8_t*>(SMSharedMemGetAddressPtr(memory)) + 2 * 4 + 16 * 4;
  for (uint32_t i = 0; i < items; ++i) {
    ASSERT_EQ(seen[i], 1) << i;
  }
  std::printf("[   FACT   ] %u items passed from 4 producers to 4 consumers\n", taken);
  SMSemaphoreDestroy(free);
  SMSemaphoreDestroy(filled);
  SMSharedMemFree(memory);
  SMMutexDestroy(mutex);
}

// ---- Events ----

std::vector<Background> waiters(const char* name, const char* timeout) {
  std::vector<Background> all;
  for (int i = 0; i < 3; ++i) {
    all.push_back(worker({"wait", name, timeout}));
  }
  for (Background& waiter : all) {
    EXPECT_EQ(waiter.read_line(), "waiting");
  }
  return all;
}

// How many of them were let through; the others timed out.
int let_through(std::vector<Background>& all) {
  int through = 0;
  for (Background& waiter : all) {
    const std::string answer = waiter.read_line();
    EXPECT_TRUE(answer == "0" || answer == "3") << answer;
    through += answer == "0" ? 1 : 0;
    EXPECT_EQ(waiter.wait(), 0);
  }
  return through;
}

TEST_F(Processes, AreAllLetThroughByAManualEvent) {
  SMEvent* event = SMEventCreate("manual", 1, 0);
  std::vector<Background> all = waiters("manual", "-1");
  SMEventSet(event);
  EXPECT_EQ(let_through(all), 3);
  all = waiters("manual", "0");
  EXPECT_EQ(let_through(all), 3);
  SMEventReset(event);
  all = waiters("manual", "0");
  EXPECT_EQ(let_through(all), 0);
  SMEventDestroy(event);
}

TEST_F(Processes, AreLetThroughOneByOneByAnAutomaticEvent) {
  SMEvent* event = SMEventCreate("automatic", 0, 0);
  SMEventSet(event);
  SMEventSet(event);
  std::vector<Background> all = waiters("automatic", "200");
  EXPECT_EQ(let_through(all), 1);
  EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
  SMEventDestroy(event);
}

TEST_F(Processes, ThatWaitAreLetThroughByAnAutomaticEventOneOfThem) {
  SMEvent* event = SMEventCreate("one of them", 0, 0);
  std::vector<Background> all = waiters("one of them", "1000");
  SMEventSet(event);
  EXPECT_EQ(let_through(all), 1);
  EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
  // A pulse may come before a waiter has begun to wait, and then lets nobody through.
  all = waiters("one of them", "1000");
  SMEventPulse(event);
  EXPECT_LE(let_through(all), 1);
  EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
  SMEventDestroy(event);
}

TEST_F(Processes, ThatWaitAreLetThroughByPulses) {
  for (const int32_t manual : {0, 1}) {
    const std::string name = "pulse" + std::to_string(manual);
    SMEvent* event = SMEventCreate(name.c_str(), manual, 0);
    std::vector<Background> all = waiters(name.c_str(), "-1");
    // A waiter that does not run in between misses a pulse, as is known of them.
    for (Background& waiter : all) {
      bool answered = false;
      std::thread([&] {
        EXPECT_EQ(waiter.read_line(), "0");
        __atomic_store_n(&answered, true, __ATOMIC_RELEASE);
      }).detach();
      while (!__atomic_load_n(&answered, __ATOMIC_ACQUIRE)) {
        EXPECT_EQ(SMEventPulse(event), 0U);
        usleep(100);
      }
      EXPECT_EQ(waiter.wait(), 0);
    }
    EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
    SMEventDestroy(event);
  }
}

// ---- Shared memory ----

TEST_F(Processes, ShareMemoryWhileItsCreatorLives) {
  Background creator = worker({"create", "lives", "text"});
  EXPECT_EQ(creator.read_line(), "found ");
  EXPECT_EQ(creator.read_line(), "created");
  EXPECT_EQ(worker({"open", "lives"}).read_line(), "text");
  EXPECT_EQ(worker({"create", "lives", "other"}).read_line(), "refused");
  EXPECT_EQ(worker({"open", "lives"}).read_line(), "text");
  creator.kill();
  creator.wait();
  EXPECT_EQ(worker({"open", "lives"}).read_line(), "refused");
  Background next = worker({"create", "lives", "next"});
  EXPECT_EQ(next.read_line(), "found text");
  EXPECT_EQ(next.read_line(), "created");
  EXPECT_EQ(worker({"open", "lives"}).read_line(), "next");
  EXPECT_EQ(worker({"create", "lives", "other"}).read_line(), "refused");
  // Nobody owns it any more: it would stay until the machine is started anew.
  const auto key = static_cast<key_t>(registered_key(decorated("kqsupshm", "lives")));
  EXPECT_EQ(shmctl(shmget(key, 0, 0), IPC_RMID, nullptr), 0);
  EXPECT_EQ(semctl(semget(key, 0, 0), 0, IPC_RMID), 0);
}

// ---- Names ----

TEST_F(Processes, RegisterNamesAtOnceEachWithAKeyOfItsOwn) {
  const uint32_t names = scaled(1000, 300);
  const std::string before = content_of(registry());
  unlink(registry().c_str());
  std::vector<Background> workers;
  for (uint32_t i = 0; i < 8; ++i) {
    workers.push_back(
        worker({"register", "name", std::to_string(names), std::to_string(i * names / 8)}));
  }
  for (Background& process : workers) {
    EXPECT_EQ(process.wait(), 0);
  }
  std::set<uint32_t> keys;
  for (uint32_t i = 0; i < names; ++i) {
    const std::string name = decorated("kqsupsmp", "name" + std::to_string(i));
    const uint32_t key = registered_key(name);
    EXPECT_TRUE(keys.insert(key).second) << name;
    char found[64] = "";
    uint32_t size = sizeof found;
    EXPECT_EQ(
        SMReadINIPathFileValue("Unique Numeric Value Key Section", std::to_string(key).c_str(),
                               SMINI_TYPE_UTF8, found, &size, nullptr, 0, registry().c_str(), 0),
        SM_STATUS_SUCCESS);
    EXPECT_EQ(found, name);
  }
  EXPECT_EQ(*keys.begin(), 300001U);
  EXPECT_EQ(*keys.rbegin(), 300000 + names);
  // Nothing is left locked.
  EXPECT_EQ(SMSemaphoreOpen("one more"), nullptr);
  EXPECT_EQ(registered_key(decorated("kqsupsmp", "one more")), 300001 + names);
  std::printf("[   FACT   ] %u names registered by 8 processes at once\n", names);
  unlink(registry().c_str());
  if (before != "(no file)") {
    put(registry(), before);
  }
}

// ---- Signals ----

volatile sig_atomic_t signals = 0;
time_t signals_end = 0;

time_t seconds_now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec;
}

// The timer of the signals is the timer of alarm(), too: the signals themselves stop a test that
// hangs.
void take_signal(int) {
  signals = signals + 1;
  if (seconds_now() > signals_end) {
    signal(SIGALRM, SIG_DFL);
    raise(SIGALRM);
  }
}

class UnderSignals : public Processes {
 protected:
  UnderSignals() {
    signals = 0;
    signals_end = seconds_now() + 120;
    struct sigaction action {};
    action.sa_handler = take_signal;
    sigaction(SIGALRM, &action, nullptr);  // without SA_RESTART
    const itimerval every_millisecond = {{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &every_millisecond, nullptr);
  }
  ~UnderSignals() override {
    const itimerval never = {};
    setitimer(ITIMER_REAL, &never, nullptr);
    signal(SIGALRM, SIG_DFL);
    EXPECT_GT(signals, 0);
  }
};

// A thread that takes none of the signals, so that all of them meet who waits for it.
template <class Work>
std::thread undisturbed(const Work& work) {
  sigset_t alarms;
  sigset_t before;
  sigemptyset(&alarms);
  sigaddset(&alarms, SIGALRM);
  pthread_sigmask(SIG_BLOCK, &alarms, &before);
  std::thread thread(work);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return thread;
}

constexpr int32_t kWaits[] = {-1, 60000};

// How long a wait that nobody ends is waited for, which answers that its time is up.
template <class Wait>
int64_t milliseconds_of(const Wait& wait) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
  };
  const int64_t begin = now();
  EXPECT_EQ(wait(), SMStatus{SM_STATUS_TIMEOUT});
  return (now() - begin) / 1000000;
}

// A signal makes none of them shorter, and none much longer.
TEST_F(UnderSignals, WaitsEndAtTheirTime) {
  constexpr int64_t kMuchLater = 10000;
  for (const char* name : {static_cast<const char*>(nullptr), "signals"}) {
    SMMutex* mutex = SMMutexCreate(name);
    SMSemaphore* semaphore = SMSemaphoreCreate(name, 0);
    SMEvent* event = SMEventCreate(name, 0, 0);
    EXPECT_EQ(SMMutexLock(mutex, -1), 0U);
    // Each millisecond counts four.
    const int64_t of_mutex = milliseconds_of([=] { return SMMutexLock(mutex, 200); });
    EXPECT_GE(of_mutex, 50);
    EXPECT_LT(of_mutex, kMuchLater);
    // The clock that they go by has whole milliseconds.
    const int64_t of_semaphore =
        milliseconds_of([=] { return SMSemaphoreAcquireWait(semaphore, 100); });
    EXPECT_GE(of_semaphore, 95);
    EXPECT_LT(of_semaphore, kMuchLater);
    const int64_t of_event = milliseconds_of([=] { return SMEventWait(event, 100); });
    EXPECT_GE(of_event, 95);
    EXPECT_LT(of_event, kMuchLater);
    EXPECT_EQ(SMMutexUnLock(mutex), 0U);
    SMEventDestroy(event);
    SMSemaphoreDestroy(semaphore);
    SMMutexDestroy(mutex);
  }
}

TEST_F(UnderSignals, NothingIsLost) {
  SMSemaphore* semaphore = SMSemaphoreCreate("storm", 0);
  const uint32_t posts = scaled(100, 20);
  for (const int32_t timeout : kWaits) {
    Background poster = worker({"post", "storm", std::to_string(posts)});
    for (uint32_t i = 0; i < posts; ++i) {
      ASSERT_EQ(SMSemaphoreAcquireWait(semaphore, timeout), 0U);
    }
    EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_TIMEOUT);
    EXPECT_EQ(poster.wait(), 0);
  }
  SMSemaphoreDestroy(semaphore);
}

TEST_F(UnderSignals, AMutexIsGotFromAnotherProcess) {
  SMMutex* mutex = SMMutexCreate("storm");
  Background holder = worker({"hold", "storm"});
  EXPECT_EQ(holder.read_line(), "held");
  for (const int32_t timeout : kWaits) {
    for (uint32_t i = 0; i < scaled(50, 10); ++i) {
      ASSERT_EQ(SMMutexLock(mutex, timeout), 0U);
      ASSERT_EQ(SMMutexUnLock(mutex), 0U);
    }
  }
  SMMutexDestroy(mutex);
}

// Objects of both kinds, one of which a thread lets this one have only after some signals.
class ThreadUnderSignals : public UnderSignals, public testing::WithParamInterface<const char*> {};

TEST_P(ThreadUnderSignals, GivesUpAMutex) {
  SMMutex* mutex = SMMutexCreate(GetParam());
  SMSemaphore* taken = SMSemaphoreCreate(nullptr, 0);
  SMSemaphore* next = SMSemaphoreCreate(nullptr, 0);
  const uint32_t rounds = scaled(50, 10);
  std::thread holder = undisturbed([=] {
    for (uint32_t i = 0; i < 2 * rounds; ++i) {
      SMMutexLock(mutex, -1);
      SMSemaphoreRelease(taken, 1, nullptr);
      usleep(3000);
      SMMutexUnLock(mutex);
      SMSemaphoreAcquireWait(next, -1);
    }
  });
  for (const int32_t timeout : kWaits) {
    for (uint32_t i = 0; i < rounds; ++i) {
      EXPECT_EQ(SMSemaphoreAcquireWait(taken, timeout), 0U);
      EXPECT_EQ(SMMutexLock(mutex, timeout), 0U);
      EXPECT_EQ(SMMutexUnLock(mutex), 0U);
      SMSemaphoreRelease(next, 1, nullptr);
    }
  }
  holder.join();
  SMSemaphoreDestroy(next);
  SMSemaphoreDestroy(taken);
  SMMutexDestroy(mutex);
}

TEST_P(ThreadUnderSignals, ReleasesASemaphore) {
  SMSemaphore* semaphore = SMSemaphoreCreate(GetParam(), 0);
  const uint32_t rounds = scaled(50, 10);
  std::thread poster = undisturbed([=] {
    for (uint32_t i = 0; i < 2 * rounds; ++i) {
      usleep(3000);
      SMSemaphoreRelease(semaphore, 1, nullptr);
    }
  });
  for (const int32_t timeout : kWaits) {
    for (uint32_t i = 0; i < rounds; ++i) {
      EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, timeout), 0U);
    }
  }
  poster.join();
  EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_TIMEOUT);
  SMSemaphoreDestroy(semaphore);
}

TEST_P(ThreadUnderSignals, SetsAnEvent) {
  SMEvent* event = SMEventCreate(GetParam(), 0, 0);
  SMSemaphore* next = SMSemaphoreCreate(nullptr, 0);
  const uint32_t rounds = scaled(50, 10);
  std::thread setter = undisturbed([=] {
    for (uint32_t i = 0; i < 2 * rounds; ++i) {
      usleep(3000);
      SMEventSet(event);
      SMSemaphoreAcquireWait(next, -1);
    }
  });
  for (const int32_t timeout : kWaits) {
    for (uint32_t i = 0; i < rounds; ++i) {
      EXPECT_EQ(SMEventWait(event, timeout), 0U);
      EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
      SMSemaphoreRelease(next, 1, nullptr);
    }
  }
  setter.join();
  SMSemaphoreDestroy(next);
  SMEventDestroy(event);
}

INSTANTIATE_TEST_SUITE_P(Objects, ThreadUnderSignals,
                         testing::Values(static_cast<const char*>(nullptr), "thread"),
                         [](const testing::TestParamInfo<const char*>& about) {
                           return about.param == nullptr ? "WithoutAName" : "WithAName";
                         });

TEST_F(UnderSignals, AFileIsWaitedForWhileAnotherProcessHasItLocked) {
  const kqsupt::tests::Scratch scratch;
  const std::string path = scratch.file("a.ini");
  uint32_t value = 0;
  const auto write = [&](uint16_t wait) {
    return SMWriteINIPathFileValue("S", "K", SMINI_TYPE_U32, &value, sizeof value, path.c_str(),
                                   wait);
  };
  ASSERT_EQ(write(1), 0U);
  {
    Background holder = worker({"hold-file", lock_file_of_path(path), "3000"});
    ASSERT_EQ(holder.read_line(), "held");
    while (value < scaled(50, 10)) {
      ++value;
      ASSERT_EQ(write(1), 0U);
    }
  }
  Background holder = worker({"hold-file", lock_file_of_path(path), "0"});
  ASSERT_EQ(holder.read_line(), "held");
  EXPECT_EQ(write(0), SM_STATUS_TIMEOUT);
  holder.kill();
  holder.wait();
  uint32_t found = 0;
  uint32_t size = sizeof found;
  EXPECT_EQ(
      SMReadINIPathFileValue("S", "K", SMINI_TYPE_U32, &found, &size, nullptr, 0, path.c_str(), 1),
      0U);
  EXPECT_EQ(found, value);
}

TEST_F(UnderSignals, FilesAreReadAndWritten) {
  const kqsupt::tests::Scratch scratch;
  const std::string path = scratch.file("a.ini");
  for (uint32_t i = 0; i < scaled(500, 50); ++i) {
    ASSERT_EQ(SMWriteINIPathFileValue("S", "K", SMINI_TYPE_U32, &i, sizeof i, path.c_str(), 1), 0U);
    uint32_t value = 77;
    uint32_t size = sizeof value;
    ASSERT_EQ(SMReadINIPathFileValue("S", "K", SMINI_TYPE_U32, &value, &size, nullptr, 0,
                                     path.c_str(), 1),
              0U);
    ASSERT_EQ(value, i);
  }
}

// ---- Nothing stays behind ----

size_t lines_of(const char* path) {
  std::ifstream file(path);
  size_t lines = 0;
  for (std::string line; std::getline(file, line);) {
    ++lines;
  }
  return lines;
}

struct Holdings {
  size_t descriptors = 0;
  size_t sets = lines_of("/proc/sysvipc/sem");
  size_t segments = lines_of("/proc/sysvipc/shm");
  size_t bytes = 0;
  bool operator==(const Holdings&) const = default;
  friend void PrintTo(const Holdings& held, std::ostream* out) {
    *out << held.descriptors << " descriptors, " << held.sets << " sets, " << held.segments
         << " segments, " << held.bytes << " bytes";
  }
};

Holdings holdings() {
  Holdings held;
  DIR* directory = opendir("/proc/self/fd");
  while (readdir(directory) != nullptr) {
    ++held.descriptors;
  }
  closedir(directory);
#ifndef KQSUPT_SANITIZED  // whose heap tells of leaks itself
  held.bytes = mallinfo2().uordblks;
#endif
  return held;
}

void make_and_destroy(const char* name) {
  SMMutexDestroy(SMMutexCreate(name));
  SMSemaphoreDestroy(SMSemaphoreCreate(name, 1));
  SMEventDestroy(SMEventCreate(name, 1, 0));
  SMSharedMemFree(name != nullptr ? SMSharedMemCreate(name, 100) : nullptr);
}

TEST_F(Processes, LeaveNothingOfObjectsThatTheyDestroyed) {
  const uint32_t cycles = scaled(10000, 1000);
  for (const char* name : {static_cast<const char*>(nullptr), "cycle"}) {
    // The first round fills what the heap keeps for later ones.
    Holdings before;
    for (const uint32_t count : {cycles / 10, cycles}) {
      before = holdings();
      for (uint32_t i = 0; i < count; ++i) {
        make_and_destroy(name);
      }
    }
    EXPECT_EQ(holdings(), before);
  }
  std::printf("[   FACT   ] %u of each kind of object made and destroyed\n", 2 * cycles);
}

}  // namespace
