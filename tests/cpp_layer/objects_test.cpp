// Threads, libraries and what threads and processes wait for.

#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "gtest/gtest.h"
#include "kqsupt.hpp"
#include "os/libraries.h"

namespace {

using kqsupt::event;
using kqsupt::event_reset;
using kqsupt::status;
using kqsupt::tests::WithLibraries;

TEST(Mutex, IsHeldWhileTheGuardLives) {
  kqsupt::mutex mutex = *kqsupt::mutex::create();
  {
    const auto held = mutex.lock(0);
    ASSERT_TRUE(held);
    EXPECT_EQ(mutex.lock(0).error(), std::errc::timed_out);
  }
  EXPECT_TRUE(mutex.lock(0));
}

TEST(Mutex, MayMoveWhileItIsHeld) {
  kqsupt::mutex mutex = *kqsupt::mutex::create();
  auto held = mutex.lock();
  kqsupt::mutex moved = std::move(mutex);
  EXPECT_EQ(mutex.lock(0).code(), status::invalid_parameter);
  held->unlock();
  EXPECT_TRUE(moved.lock(0));
}

TEST(Mutex, OpensByName) {
  EXPECT_EQ(kqsupt::mutex::open("layer mutex").code(), status::operation_failed);
  const kqsupt::mutex made = *kqsupt::mutex::create("layer mutex");
  EXPECT_TRUE(kqsupt::mutex::open("layer mutex"));
  EXPECT_EQ(kqsupt::mutex::create("").code(), status::operation_failed);
}

TEST(NamedObjects, WithANulInTheNameAreRefused) {
  const std::string name("a\0b", 3);
  EXPECT_EQ(kqsupt::mutex::create(name).code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::semaphore::create(name, 1).code(), status::invalid_parameter);
  EXPECT_EQ(event::create(name, event_reset::manual).code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::shared_memory::create(name, 1).code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::rw_lock::create(name).code(), status::invalid_parameter);
  EXPECT_EQ(event::open("a").code(), status::operation_failed);
}

TEST(Semaphore, GuardsGiveBackAndWaitsDoNot) {
  kqsupt::semaphore semaphore = *kqsupt::semaphore::create(2);
  {
    const auto first = semaphore.acquire(0);
    const auto second = semaphore.acquire(0);
    EXPECT_TRUE(first && second);
    EXPECT_EQ(semaphore.acquire(0).code(), status::timeout);
  }
  ASSERT_TRUE(semaphore.wait(0));
  EXPECT_EQ(semaphore.post().value_or(99), 1U);
  EXPECT_EQ(semaphore.post(0).code(), status::invalid_parameter);
}

TEST(Semaphore, GoesWithItsCreatorOnce) {
  {
    kqsupt::semaphore created = *kqsupt::semaphore::create("layer semaphore", 1);
    { const auto opened = kqsupt::semaphore::open("layer semaphore"); }
    kqsupt::semaphore moved = std::move(created);
    created.reset();
    EXPECT_TRUE(kqsupt::semaphore::open("layer semaphore"));
  }
  EXPECT_FALSE(kqsupt::semaphore::open("layer semaphore"));
}

TEST(Event, IsSetAndCleared) {
  event manual = *event::create("layer event", event_reset::manual);
  EXPECT_EQ(manual.wait(0).code(), status::timeout);
  ASSERT_TRUE(manual.set());
  event other = *event::open("layer event");
  EXPECT_TRUE(other.wait(0));
  EXPECT_TRUE(other.wait(0));
  ASSERT_TRUE(manual.clear());
  EXPECT_FALSE(other.wait(0));
  EXPECT_TRUE(manual.pulse());
}

TEST(Event, WithAutomaticResetLetsOneThrough) {
  event once = *event::create(event_reset::automatic, true);
  EXPECT_TRUE(once.wait(0));
  EXPECT_FALSE(once.wait(0));
}

TEST(SharedMemory, IsFoundByNameAndFreedOnce) {
  {
    const auto memory = kqsupt::shared_memory::create("layer memory", 64);
    ASSERT_TRUE(memory);
    std::strcpy(static_cast<char*>(memory->address()), "fan");
    const auto other = kqsupt::shared_memory::open("layer memory");
    ASSERT_TRUE(other);
    EXPECT_STREQ(static_cast<const char*>(other->address()), "fan");
  }
  EXPECT_FALSE(kqsupt::shared_memory::open("layer memory"));
  EXPECT_EQ(kqsupt::shared_memory().address(), nullptr);
}

TEST(RwLock, LetsReadersInTogetherAndAWriterAlone) {
  kqsupt::rw_lock lock = *kqsupt::rw_lock::create();
  std::atomic<bool> wrote{false};
  auto first = lock.read();
  auto second = lock.read();
  ASSERT_TRUE(first && second);
  auto writer = kqsupt::thread::start([&] {
    const auto held = lock.write();
    wrote = bool(held);
  });
  ASSERT_TRUE(writer);
  EXPECT_FALSE(wrote);
  first->unlock();
  second->unlock();
  ASSERT_TRUE(writer->stop());
  EXPECT_TRUE(wrote);
  EXPECT_TRUE(lock.read());
}

TEST(RwLock, KeepsReadersOutWhileTheWritersGuardLives) {
  kqsupt::rw_lock lock = *kqsupt::rw_lock::create();
  std::atomic<bool> is_written{false};
  std::atomic<bool> reads{false};
  std::atomic<bool> read_what_was_written{false};
  auto writer = lock.write();
  ASSERT_TRUE(writer);
  auto reader = kqsupt::thread::start([&] {
    reads = true;
    const auto held = lock.read();
    read_what_was_written = held && is_written;
  });
  ASSERT_TRUE(reader);
  while (!reads) {
    SMThreadYield();
  }
  is_written = true;
  writer->unlock();
  ASSERT_TRUE(reader->stop());
  EXPECT_TRUE(read_what_was_written);
}

TEST(CriticalSection, RunsItsBody) {
  int runs = 0;
  auto body = [&] { ++runs; };
  EXPECT_TRUE(kqsupt::run_critical(body));
  EXPECT_TRUE(kqsupt::run_critical(body));
  EXPECT_EQ(runs, 2);
}

TEST(Thread, IsWaitedForWhenItIsLetGo) {
  std::atomic<int> runs{0};
  {
    const auto first = kqsupt::thread::start([&] { ++runs; });
    const auto second =
        kqsupt::thread::start([&, only_moves = std::make_unique<int>(1)] { runs += *only_moves; });
    EXPECT_TRUE(first && second);
  }
  EXPECT_EQ(runs, 2);
}

TEST(Thread, IsStoppedOnce) {
  auto thread = kqsupt::thread::start([] {});
  ASSERT_TRUE(thread);
  EXPECT_TRUE(thread->stop());
  EXPECT_EQ(thread->stop().code(), status::invalid_parameter);
}

TEST(Thread, ThatIsDetachedRuns) {
  event ran = *event::create(event_reset::manual);
  ASSERT_TRUE(kqsupt::thread::start_detached([&] { (void)ran.set(); }));
  EXPECT_TRUE(ran.wait(30000));
  EXPECT_TRUE(kqsupt::set_thread_name("layer"));
}

TEST(Library, GivesFunctionsByTheirType) {
  const auto library = kqsupt::library::load(KQSUPT_LIB_DIR "/libkqsupt.so.9");
  ASSERT_TRUE(library);
  const auto major = library->function<uint32_t()>("SUPTGetMajorVersion");
  ASSERT_TRUE(major);
  EXPECT_EQ((*major)(), 1U);
  EXPECT_EQ(library->function<int()>("no such function").code(), status::data_not_found);
  EXPECT_FALSE(kqsupt::library::load("/no/such/library"));
}

TEST_F(WithLibraries, ALibraryIsUnloadedOnceWithItsOwner) {
  {
    auto library = kqsupt::library::load(counted_);
    ASSERT_TRUE(library);
    const kqsupt::library moved = *std::move(library);
    EXPECT_EQ(loads(), "+");
  }
  EXPECT_EQ(loads(), "+-");
}

TEST_F(WithLibraries, ALibraryIsUnloadedOnceWhenAsked) {
  {
    auto library = kqsupt::library::load(counted_);
    ASSERT_TRUE(library);
    ASSERT_TRUE(library->unload());
    EXPECT_EQ(loads(), "+-");
    EXPECT_FALSE(*library);
    EXPECT_EQ(library->unload().code(), status::invalid_parameter);
  }
  EXPECT_EQ(loads(), "+-");
}

TEST_F(WithLibraries, ASharedLibraryWaitsForItsLastUser) {
  auto first = kqsupt::shared_library::use("first", counted_);
  auto second = kqsupt::shared_library::use("second", counted_);
  ASSERT_TRUE(first && second);
  first->reset();
  EXPECT_EQ(loads(), "+");
  EXPECT_TRUE(second->function<int()>("answer"));
  second->reset();
  EXPECT_EQ(loads(), "+-");
}

TEST_F(WithLibraries, ASharedLibraryEndsItsUseWhenAnotherIsMovedToIt) {
  auto counted = kqsupt::shared_library::use("layer", counted_);
  ASSERT_TRUE(counted);
  auto other = kqsupt::shared_library::use("layer", KQSUPT_LIB_DIR "/libkqsupt.so.9");
  ASSERT_TRUE(other);
  *counted = *std::move(other);
  EXPECT_EQ(loads(), "+-");
  EXPECT_TRUE(counted->function<uint32_t()>("SUPTGetMajorVersion"));
}

TEST(SharedLibrary, EndsItsUseOnce) {
  const char* const path = KQSUPT_LIB_DIR "/libkqsupt.so.9";
  auto used = kqsupt::shared_library::use("layer", path);
  ASSERT_TRUE(used);
  kqsupt::shared_library moved = std::move(*used);
  EXPECT_FALSE(*used);
  EXPECT_TRUE(moved.function<uint32_t()>("SUPTGetMajorVersion"));
  moved.reset();
  EXPECT_EQ(moved.function<uint32_t()>("SUPTGetMajorVersion").code(), status::invalid_parameter);
  EXPECT_FALSE(kqsupt::shared_library::use("layer", "/no/such/library"));
}

}  // namespace
