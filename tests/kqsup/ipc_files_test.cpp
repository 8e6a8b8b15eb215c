// What the tool makes of the texts that it reads: files of the library, tables of the kernel.
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <random>

#include "gtest/gtest.h"
#include "ipc_objects.h"
#include "lock_holders.h"
#include "name_registry.h"

namespace {

using namespace kqsup;

const std::string kSemaphoreA = "kqsupsmp0123456789ABCDEF0123456789ABCDEF";
const std::string kMemoryB = "kqsupshm0123456789ABCDEF0123456789ABCDEF";

std::string whole_registry() {
  return "[Unique String Name Key Section]\n" + kSemaphoreA + "=300002\n" + kMemoryB +
         "=300001\n\n[Unique Numeric Value Key Section]\n300002=" + kSemaphoreA +
         "\n300001=" + kMemoryB + "\n\n[Semaphore List]\n65538=4711\n-7=12\n";
}

TEST(KqsupNameRegistry, HasTheNamesInTheOrderOfTheirKeys) {
  const NameRegistry registry = parse_name_registry(whole_registry());
  ASSERT_EQ(registry.names.size(), 2U);
  EXPECT_EQ(registry.names[0].text, kMemoryB);
  EXPECT_EQ(registry.names[0].key, 300001U);
  EXPECT_EQ(registry.names[1].text, kSemaphoreA);
  EXPECT_EQ(registry.highest_key(), 300002U);
  EXPECT_TRUE(registry.damage.empty());
}

TEST(KqsupNameRegistry, HasTheListedSets) {
  const NameRegistry registry = parse_name_registry(whole_registry());
  ASSERT_EQ(registry.listed_sets.size(), 2U);
  EXPECT_EQ(registry.listed_sets[0].id, 65538);
  EXPECT_EQ(registry.listed_sets[0].maker, 4711U);
  EXPECT_EQ(registry.listed_sets[1].id, -7);
}

TEST(KqsupNameRegistry, ReadsKeysAsTheLibraryDoes) {
  const NameRegistry registry =
      parse_name_registry("; a comment\n \t[Unique String Name Key Section]x\n#a=1\n  " +
                          kSemaphoreA + "= +300007 \r\n" + kSemaphoreA + "=300008\n");
  ASSERT_EQ(registry.names.size(), 1U);
  EXPECT_EQ(registry.names[0].key, 300007U);
}

TEST(KqsupNameRegistry, OfTwoSectionsTheFirstCounts) {
  const NameRegistry registry = parse_name_registry(
      "[Unique String Name Key Section]\na=300001\n[other]\nb=300002\n"
      "[Unique String Name Key Section]\nc=300003\n");
  ASSERT_EQ(registry.names.size(), 1U);
  EXPECT_EQ(registry.names[0].text, "a");
}

TEST(KqsupNameRegistry, AHeaderWithoutItsEndHidesWhatFollows) {
  const NameRegistry registry = parse_name_registry(
      "[Unique String Name Key Section]\na=300001\n[cut\n[Semaphore List]\n1=2\n");
  EXPECT_EQ(registry.names.size(), 1U);
  EXPECT_TRUE(registry.listed_sets.empty());
  ASSERT_EQ(registry.damage.size(), 1U);
  EXPECT_NE(registry.damage[0].find("line 3"), std::string::npos);
}

TEST(KqsupNameRegistry, TwoNamesWithOneKeyAreDamage) {
  const NameRegistry registry =
      parse_name_registry("[Unique String Name Key Section]\na=300001\nb=300001\n");
  EXPECT_EQ(registry.names.size(), 2U);
  EXPECT_EQ(registry.damage.size(), 1U);
}

TEST(KqsupNameRegistry, ANameWithoutAKeyIsDamage) {
  const NameRegistry registry =
      parse_name_registry("[Unique String Name Key Section]\na=\nb=0\nc=x\nd=99999999999\n");
  EXPECT_TRUE(registry.names.empty());
  EXPECT_EQ(registry.damage.size(), 4U);
}

TEST(KqsupNameRegistry, ANameThatIsOnlyFoundByItsKeyIsShownAndIsDamage) {
  const NameRegistry registry =
      parse_name_registry("[Unique Numeric Value Key Section]\n300005=" + kMemoryB + "\n");
  ASSERT_EQ(registry.names.size(), 1U);
  EXPECT_EQ(registry.names[0].key, 300005U);
  EXPECT_EQ(registry.damage.size(), 1U);
}

TEST(KqsupNameRegistry, AnEntryOfTheListThatNamesNoSetIsDamage) {
  EXPECT_EQ(parse_name_registry("[Semaphore List]\nx=1\n").damage.size(), 1U);
  EXPECT_EQ(parse_name_registry("[Semaphore List]\n5=-1\n").damage.size(), 1U);
}

TEST(KqsupNameRegistry, CutAnywhereItConfirmsNoOtherKeys) {
  const std::string whole = whole_registry();
  for (size_t size = 0; size <= whole.size(); ++size) {
    for (const NameRegistry::Name& name : parse_name_registry(whole.substr(0, size)).names) {
      const bool is_right = (name.text == kSemaphoreA && name.key == 300002) ||
                            (name.text == kMemoryB && name.key == 300001);
      EXPECT_TRUE(is_right || !name.is_found_both_ways) << size;
    }
  }
  for (const NameRegistry::Name& name : parse_name_registry(whole).names) {
    EXPECT_TRUE(name.is_found_both_ways);
  }
}

TEST(KqsupNameRegistry, BytesOfAnyKindAreRead) {
  std::mt19937 random(7);
  const std::string alphabet(
      "[]=\n;# \t\0\xFF"
      "0123k",
      15);
  for (int i = 0; i < 2000; ++i) {
    std::string text = i % 2 == 0 ? "[Semaphore List]\n" : "";
    for (int size = 0; size < 200; ++size) {
      text += alphabet[random() % alphabet.size()];
    }
    (void)parse_name_registry(text);
    (void)parse_system_objects(text, text);
    (void)LockTable(text);
  }
  EXPECT_TRUE(parse_name_registry(std::string(100000, '[')).names.empty());
  EXPECT_TRUE(parse_name_registry(std::string(100000, 'a')).names.empty());
}

TEST(KqsupNameRegistry, KindsAreToldByWholeNames) {
  EXPECT_EQ(kind_of_name(kSemaphoreA), NameKind::kSemaphore);
  EXPECT_EQ(kind_of_name(kMemoryB), NameKind::kSharedMemory);
  EXPECT_EQ(kind_of_name(kMemoryB + "0"), NameKind::kUnknown);
  EXPECT_EQ(kind_of_name(kMemoryB.substr(0, 39)), NameKind::kUnknown);
  EXPECT_EQ(kind_of_name("kqsupshm0123456789abcdef0123456789ABCDEF"), NameKind::kUnknown);
  EXPECT_EQ(kind_of_name(""), NameKind::kUnknown);
}

constexpr const char* kSets =
    "       key      semid perms      nsems   uid   gid  cuid  cgid      otime      ctime\n"
    "    300002          5   664          2     0     0     0     0          0 1790000000\n"
    "-294967296          6   600          1     0     0     0     0          0 1790000000\n";
constexpr const char* kSegments =
    "       key      shmid perms                  size  cpid  lpid nattch   uid   gid  cuid  cgid  "
    " "
    "   atime      dtime      ctime                   rss                  swap\n"
    "    300001         32   664            4294967296  4711     0      3     0     0     0     0  "
    "        0          0 1790000001                     0                     0\n";

TEST(KqsupSystemObjects, AreReadByTheTitlesOfTheirColumns) {
  const auto objects = parse_system_objects(kSets, kSegments);
  ASSERT_TRUE(objects.has_value());
  ASSERT_NE(objects->set_of_key(300002), nullptr);
  EXPECT_EQ(objects->set_of_key(300002)->id, 5);
  EXPECT_EQ(objects->set_of_key(300002)->semaphores, 2U);
  EXPECT_EQ(objects->set_of_key(4000000000)->id, 6);
  EXPECT_EQ(objects->set_of_id(6)->key, 4000000000);
  const Segment* const segment = objects->segment_of_key(300001);
  ASSERT_NE(segment, nullptr);
  EXPECT_EQ(segment->size, 4294967296U);
  EXPECT_EQ(segment->attached, 3U);
  EXPECT_EQ(segment->creator, 4711);
  EXPECT_EQ(segment->made_at, 1790000001);
  EXPECT_EQ(objects->segment_of_key(300002), nullptr);
  EXPECT_EQ(objects->set_of_key(0), nullptr);
}

TEST(KqsupSystemObjects, ATableThatIsNotOneIsNone) {
  EXPECT_FALSE(parse_system_objects("", kSegments).has_value());
  EXPECT_FALSE(parse_system_objects(kSets, "").has_value());
  EXPECT_FALSE(parse_system_objects("key semid\n1 2\n", kSegments).has_value());
}

TEST(KqsupLockTable, KnowsHoldersAndWaiters) {
  const LockTable table(
      "1: POSIX  ADVISORY  WRITE 4711 08:01:1234 0 EOF\n"
      "1: -> POSIX  ADVISORY  WRITE 4712 08:01:1234 0 EOF\n"
      "1: -> POSIX  ADVISORY  READ 4713 08:01:1234 0 EOF\n"
      "2: POSIX  ADVISORY  READ 5 08:01:99 0 EOF\n"
      "3: POSIX  ADVISORY  READ 6 08:01:99 0 EOF\n"
      "4: FLOCK  ADVISORY  WRITE 7 08:01:77 0 EOF\n");
  const LockTable::Locks* const held = table.locks_of(0x801, 1234);
  ASSERT_NE(held, nullptr);
  EXPECT_EQ(held->holders, std::vector<int32_t>{4711});
  EXPECT_EQ(held->waiters, 2);
  EXPECT_FALSE(held->is_shared);
  const LockTable::Locks* const shared = table.locks_of(0x801, 99);
  ASSERT_NE(shared, nullptr);
  EXPECT_EQ(shared->holders, (std::vector<int32_t>{5, 6}));
  EXPECT_TRUE(shared->is_shared);
  EXPECT_EQ(table.locks_of(0x801, 77), nullptr);
  EXPECT_EQ(table.locks_of(0x802, 1234), nullptr);
}

TEST(KqsupProcesses, ANumberThatALaterProcessHasIsNotTheEarlierOne) {
  Processes processes;
  EXPECT_EQ(processes.life_at(getpid(), std::time(nullptr)), Life::kAlive);
  EXPECT_EQ(processes.life_at(getpid(), 1000000), Life::kReused);
}

TEST(KqsupProcesses, TheDeadAreDeadAndTheUnseenUnknown) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  Processes processes;
  EXPECT_EQ(processes.life_at(child, std::time(nullptr)), Life::kDead);
  EXPECT_EQ(processes.life_at(0, 0), Life::kUnknown);
  EXPECT_EQ(processes.life_at(-5, 0), Life::kUnknown);
  EXPECT_EQ(life_of(uint64_t{1} << 40), Life::kUnknown);
  EXPECT_EQ(life_of(static_cast<uint64_t>(getpid())), Life::kAlive);
}

}  // namespace
