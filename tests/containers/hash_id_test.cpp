// IDs in use, by example and against a model that looks at one bit after the other.

#include <cstring>
#include <random>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/containers.h"
#include "support/guarded.h"
#include "support/hash_id_model.h"

namespace {

using kqsupt::tests::Guarded;
using kqsupt::tests::HashIdModel;

constexpr int32_t kLowest = SM_HASH_ID_LOWEST_FREE;
constexpr int32_t kAfter = SM_HASH_ID_AFTER_HIGHEST;

// A table that ends where reading does, cleared.
class Table {
 public:
  explicit Table(uint32_t bytes) : memory_(bytes) {
    EXPECT_EQ(SMClearHashTable(data(), bytes), SM_STATUS_SUCCESS);
  }

  void* data() { return memory_.data(); }
  [[nodiscard]] uint32_t bytes() const { return static_cast<uint32_t>(memory_.size()); }
  uint8_t& operator[](size_t index) { return memory_.data()[index]; }
  uint32_t word(size_t index) {
    uint32_t word;
    std::memcpy(&word, memory_.data() + index * sizeof word, sizeof word);
    return word;
  }
  void set_word(size_t index, uint32_t word) {
    std::memcpy(memory_.data() + index * sizeof word, &word, sizeof word);
  }

  uint32_t acquire(int32_t mode) { return SMAcquireHashID(data(), bytes(), mode); }
  SMStatus take(uint32_t id) { return SMAcquireHashIDByID(data(), bytes(), id); }
  SMStatus verify(uint32_t id) { return SMVerifyHashID(data(), bytes(), id); }
  SMStatus release(uint32_t id) { return SMReleaseHashID(data(), bytes(), id); }
  uint32_t smallest() { return SMGetMinInUseID(data(), bytes()); }
  uint32_t largest() { return SMGetMaxInUseID(data(), bytes()); }
  std::vector<uint32_t> all() {
    std::vector<uint32_t> ids;
    uint32_t word = 77;
    uint32_t bit = 77;
    for (uint32_t id = SMFindFirstHashID(data(), bytes(), &word, &bit); id != 0;
         id = SMFindNextHashID(data(), bytes(), &word, &bit)) {
      EXPECT_EQ(word * 32 + bit, id);
      ids.push_back(id);
    }
    return ids;
  }

 private:
  Guarded<uint8_t> memory_;
};

TEST(HashId, BytesNeededLeaveRoomForTheLargestId) {
  EXPECT_EQ(SMHashTableBytesNeeded(1), 4U);
  EXPECT_EQ(SMHashTableBytesNeeded(31), 4U);
  EXPECT_EQ(SMHashTableBytesNeeded(32), 8U);
  EXPECT_EQ(SMHashTableBytesNeeded(63), 8U);
  EXPECT_EQ(SMHashTableBytesNeeded(64), 12U);
  EXPECT_EQ(SMHashTableBytesNeeded(65535), 8192U);
  EXPECT_EQ(SMHashTableBytesNeeded(0x3FFFFFFE), 0x08000000U);
}

TEST(HashId, BytesNeededAreNoneForIdsThatNoTableHolds) {
  EXPECT_EQ(SMHashTableBytesNeeded(0), 0U);
  EXPECT_EQ(SMHashTableBytesNeeded(0x3FFFFFFF), 0U);
  EXPECT_EQ(SMHashTableBytesNeeded(0xFFFFFFFF), 0U);
}

TEST(HashId, ClearSetsEveryByteAndNoOther) {
  for (uint32_t bytes = 0; bytes <= 9; ++bytes) {
    Guarded<uint8_t> memory(16);
    EXPECT_EQ(SMClearHashTable(memory.data(), bytes), SM_STATUS_SUCCESS);
    for (uint32_t i = 0; i < 16; ++i) {
      EXPECT_EQ(memory.data()[i], i < bytes ? 0 : 0x55) << i << " of " << bytes;
    }
  }
}

TEST(HashId, IdIsABitOfAWordInTheOrderOfTheHost) {
  Table table(12);
  EXPECT_EQ(table.take(0), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.take(31), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.take(33), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.take(95), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.word(0), 0x80000001U);
  EXPECT_EQ(table.word(1), 0x00000002U);
  EXPECT_EQ(table.word(2), 0x80000000U);
}

TEST(HashId, LowestFreeOfOneWordIs1To31AndThenNone) {
  Table table(4);
  for (uint32_t id = 1; id <= 31; ++id) {
    EXPECT_EQ(table.acquire(kLowest), id);
  }
  EXPECT_EQ(table.word(0), 0xFFFFFFFEU);
  EXPECT_EQ(table.acquire(kLowest), 0U);
  EXPECT_EQ(table.word(0), 0xFFFFFFFEU);
}

TEST(HashId, LowestFreeTakesAReleasedIdFirst) {
  Table table(8);
  for (uint32_t id = 1; id <= 40; ++id) {
    table.acquire(kLowest);
  }
  EXPECT_EQ(table.release(7), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.release(33), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.acquire(kLowest), 7U);
  EXPECT_EQ(table.acquire(kLowest), 33U);
  EXPECT_EQ(table.acquire(kLowest), 41U);
}

TEST(HashId, LowestFreeGoesOnBehindFullWordsOfAnyNumber) {
  for (uint32_t words = 1; words <= 100; ++words) {
    Table table(words * 4);
    for (uint32_t full = 0; full < words; ++full) {
      EXPECT_EQ(table.acquire(kLowest), full * 32 + (full == 0 ? 1 : 0));
      table.set_word(full, full % 2 == 0 ? 0xFFFFFFFF : 0xFFFFFFFE);
      if (full % 2 != 0) {
        EXPECT_EQ(table.acquire(kLowest), full * 32);
      }
    }
    EXPECT_EQ(table.acquire(kLowest), 0U);
  }
}

TEST(HashId, AfterHighestStartsWith1) {
  Table table(8);
  EXPECT_EQ(table.acquire(kAfter), 1U);
  EXPECT_EQ(table.acquire(kAfter), 2U);
}

TEST(HashId, AfterHighestDoesNotTakeAReleasedIdAtOnce) {
  Table table(4);
  for (uint32_t id = 1; id <= 5; ++id) {
    EXPECT_EQ(table.acquire(kAfter), id);
  }
  EXPECT_EQ(table.release(3), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.acquire(kAfter), 6U);
}

TEST(HashId, AfterHighestGoesBackWhenTheTopOfTheWordIsTaken) {
  Table table(4);
  table.set_word(0, 0xC0000F1EU);  // free: 5 to 7 and 12 to 29
  EXPECT_EQ(table.acquire(kAfter), 12U);
  table.set_word(0, 0xFFFFFF0EU);
  EXPECT_EQ(table.acquire(kAfter), 4U);
  table.set_word(0, 0xFFFFFFF0U);  // the run goes down to ID 1: ID 0 is none of it
  EXPECT_EQ(table.acquire(kAfter), 1U);
}

TEST(HashId, AfterHighestPrefersTheLastWordInPartUsed) {
  Table table(20);
  table.set_word(1, 2);
  table.set_word(2, 0xFFFFFFFF);
  table.set_word(3, 0x7);
  EXPECT_EQ(table.acquire(kAfter), 99U);
}

TEST(HashId, AfterHighestTakesTheFirstUnusedWordWhenNoneIsInPartUsed) {
  Table table(16);
  table.set_word(0, 0xFFFFFFFE);
  table.set_word(1, 0xFFFFFFFF);
  EXPECT_EQ(table.acquire(kAfter), 64U);
  Table unused_first(12);
  unused_first.set_word(1, 0xFFFFFFFF);
  EXPECT_EQ(unused_first.acquire(kAfter), 1U);
}

TEST(HashId, AfterHighestOfAFullTableIsNone) {
  for (const uint32_t first : {0xFFFFFFFEU, 0xFFFFFFFFU}) {
    Table table(8);
    table.set_word(0, first);
    table.set_word(1, 0xFFFFFFFF);
    EXPECT_EQ(table.acquire(kAfter), 0U);
    EXPECT_EQ(table.acquire(kLowest), 0U);
    EXPECT_EQ(table.word(0), first);
  }
}

TEST(HashId, UnknownModesAcquireNothing) {
  Table table(8);
  for (const int32_t mode : {-1, 2, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(table.acquire(mode), 0U);
  }
  EXPECT_TRUE(table.all().empty());
}

TEST(HashId, IdTakenByNumberIsInUseUntilReleased) {
  Table table(8);
  EXPECT_EQ(table.take(63), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.take(63), SM_STATUS_ALREADY_EXISTS);
  EXPECT_EQ(table.verify(63), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.release(63), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.verify(63), SM_STATUS_INDEX_OUT_OF_RANGE);
  EXPECT_EQ(table.release(63), SM_STATUS_INDEX_OUT_OF_RANGE);
  EXPECT_EQ(table.take(63), SM_STATUS_SUCCESS);
}

TEST(HashId, IdBeyondTheTableIsRefused) {
  Table table(8);
  for (const uint32_t id : {64U, 65U, 0x10000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(table.take(id), SM_STATUS_OPERATION_FAILED);
    EXPECT_EQ(table.verify(id), SM_STATUS_OPERATION_FAILED);
    EXPECT_EQ(table.release(id), SM_STATUS_OPERATION_FAILED);
  }
  EXPECT_TRUE(table.all().empty());
}

TEST(HashId, TableOfLessThanAWordHoldsNothing) {
  for (uint32_t bytes = 0; bytes < 4; ++bytes) {
    Table table(bytes);
    for (uint32_t i = 0; i < bytes; ++i) {
      table[i] = 0x55;
    }
    EXPECT_EQ(table.acquire(kLowest), 0U);
    EXPECT_EQ(table.acquire(kAfter), 0U);
    for (const uint32_t id : {0U, 1U, 31U, 0xFFFFFFFFU}) {
      EXPECT_EQ(table.take(id), SM_STATUS_OPERATION_FAILED);
      EXPECT_EQ(table.verify(id), SM_STATUS_OPERATION_FAILED);
      EXPECT_EQ(table.release(id), SM_STATUS_OPERATION_FAILED);
    }
    EXPECT_EQ(table.smallest(), 0U);
    EXPECT_EQ(table.largest(), 0U);
    uint32_t word = 5;
    uint32_t bit = 6;
    EXPECT_EQ(SMFindNextHashID(table.data(), bytes, &word, &bit), 0U);
    EXPECT_EQ(word, 5U);
    EXPECT_EQ(bit, 6U);
    EXPECT_EQ(SMFindFirstHashID(table.data(), bytes, &word, &bit), 0U);
    EXPECT_EQ(word, 0U);
    EXPECT_EQ(bit, 0U);
    for (uint32_t i = 0; i < bytes; ++i) {
      EXPECT_EQ(table[i], 0x55);
    }
  }
}

TEST(HashId, IdsOfAPartOfAWordAreBeyondTheTable) {
  for (uint32_t bytes = 5; bytes < 8; ++bytes) {
    Table table(bytes);
    EXPECT_EQ(table.take(31), SM_STATUS_SUCCESS);
    EXPECT_EQ(table.take(32), SM_STATUS_OPERATION_FAILED);
    EXPECT_EQ(table.verify(8 * bytes - 1), SM_STATUS_OPERATION_FAILED);
    EXPECT_EQ(table.release(8 * bytes - 1), SM_STATUS_OPERATION_FAILED);
  }
}

TEST(HashId, Id0MayBeTakenAndIsNeverReported) {
  Table table(8);
  EXPECT_EQ(table.take(0), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.take(0), SM_STATUS_ALREADY_EXISTS);
  EXPECT_EQ(table.verify(0), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.smallest(), 0U);
  EXPECT_EQ(table.largest(), 0U);
  EXPECT_TRUE(table.all().empty());
  EXPECT_EQ(table.acquire(kLowest), 1U);
  EXPECT_EQ(table.acquire(kAfter), 2U);
  EXPECT_EQ(table.release(0), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.verify(0), SM_STATUS_INDEX_OUT_OF_RANGE);
  EXPECT_EQ(table.all(), (std::vector<uint32_t>{1, 2}));
}

TEST(HashId, SmallestIsNoneWhenOfTheFirstWordOnlyId0IsInUse) {
  Table table(8);
  EXPECT_EQ(table.take(0), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.take(40), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.smallest(), 0U);
  EXPECT_EQ(table.largest(), 40U);
  EXPECT_EQ(table.all(), (std::vector<uint32_t>{40}));
  EXPECT_EQ(table.take(17), SM_STATUS_SUCCESS);
  EXPECT_EQ(table.smallest(), 17U);
}

TEST(HashId, SmallestAndLargestOfEveryPlaceInALongTable) {
  Table table(400);
  for (uint32_t id = 1; id < 3200; id += 3) {
    EXPECT_EQ(table.take(id), SM_STATUS_SUCCESS);
    EXPECT_EQ(table.smallest(), id);
    EXPECT_EQ(table.largest(), id);
    EXPECT_EQ(table.all(), (std::vector<uint32_t>{id}));
    EXPECT_EQ(table.release(id), SM_STATUS_SUCCESS);
  }
  EXPECT_EQ(table.smallest(), 0U);
  EXPECT_EQ(table.largest(), 0U);
}

TEST(HashId, IterationReturnsEveryIdInAscendingOrderAndThenNone) {
  Table table(12);
  for (const uint32_t id : {95U, 1U, 33U}) {
    EXPECT_EQ(table.take(id), SM_STATUS_SUCCESS);
  }
  uint32_t word = 9;
  uint32_t bit = 9;
  EXPECT_EQ(SMFindFirstHashID(table.data(), 12, &word, &bit), 1U);
  EXPECT_EQ(SMFindNextHashID(table.data(), 12, &word, &bit), 33U);
  EXPECT_EQ(SMFindNextHashID(table.data(), 12, &word, &bit), 95U);
  EXPECT_EQ(word, 2U);
  EXPECT_EQ(bit, 31U);
  EXPECT_EQ(SMFindNextHashID(table.data(), 12, &word, &bit), 0U);
  EXPECT_EQ(word, 2U);
  EXPECT_EQ(bit, 31U);
}

TEST(HashId, IterationStartsBehindTheCursorWhateverIsThere) {
  Table table(12);
  for (const uint32_t id : {0U, 5U, 32U, 64U}) {
    EXPECT_EQ(table.take(id), SM_STATUS_SUCCESS);
  }
  const auto next = [&](uint32_t word, uint32_t bit) {
    return SMFindNextHashID(table.data(), 12, &word, &bit);
  };
  EXPECT_EQ(next(0, 0), 5U);
  EXPECT_EQ(next(0, 4), 5U);
  EXPECT_EQ(next(0, 5), 32U);
  EXPECT_EQ(next(0, 30), 32U);
  EXPECT_EQ(next(0, 31), 32U);
  EXPECT_EQ(next(1, 0), 64U);
  EXPECT_EQ(next(2, 0), 0U);
}

TEST(HashId, CursorsBehindTheEndFindNothing) {
  Table table(8);
  EXPECT_EQ(table.take(40), SM_STATUS_SUCCESS);
  for (const uint32_t at_word : {2U, 3U, 0xFFFFFFFFU}) {
    uint32_t word = at_word;
    uint32_t bit = 0;
    EXPECT_EQ(SMFindNextHashID(table.data(), 8, &word, &bit), 0U);
    EXPECT_EQ(word, at_word);
  }
  for (const uint32_t at_bit : {32U, 0xFFFFFFFFU}) {
    uint32_t word = 0;
    uint32_t bit = at_bit;
    EXPECT_EQ(SMFindNextHashID(table.data(), 8, &word, &bit), 40U);
  }
}

TEST(HashId, CursorsMustNotBeNull) {
  Table table(4);
  EXPECT_EQ(table.take(3), SM_STATUS_SUCCESS);
  uint32_t cursor = 7;
  EXPECT_EQ(SMFindFirstHashID(table.data(), 4, nullptr, &cursor), 0U);
  EXPECT_EQ(SMFindFirstHashID(table.data(), 4, &cursor, nullptr), 0U);
  EXPECT_EQ(SMFindNextHashID(table.data(), 4, nullptr, &cursor), 0U);
  EXPECT_EQ(SMFindNextHashID(table.data(), 4, &cursor, nullptr), 0U);
  EXPECT_EQ(cursor, 7U);
}

TEST(HashId, CopyOfTheBytesIsACopyOfTheTable) {
  Table table(12);
  for (const uint32_t id : {1U, 33U, 95U}) {
    EXPECT_EQ(table.take(id), SM_STATUS_SUCCESS);
  }
  Table copy(12);
  std::memcpy(copy.data(), table.data(), 12);
  EXPECT_EQ(copy.all(), table.all());
}

void expect_as_model(uint32_t bytes, int steps) {
  std::mt19937 generator(bytes + 1);
  const auto random = [&] { return static_cast<uint32_t>(generator()); };
  Table table(bytes);
  HashIdModel model(bytes);
  const uint32_t whole = bytes / 4 * 4;
  for (uint32_t i = whole; i < bytes; ++i) {
    table[i] = 0xA5;
  }
  // Now more IDs are taken, now more are released, so that the table is full and empty in turn.
  const int turn = static_cast<int>(model.count()) + 10;
  for (int step = 0; step < steps; ++step) {
    const bool filling = step / turn % 2 == 0;
    const uint32_t id = random() % 50 == 0 ? random() : random() % (model.count() + 2);
    switch (const uint32_t choice = random() % 8; choice) {
      case 0:
        ASSERT_EQ(table.take(id), model.take(id)) << id;
        break;
      case 1:
        ASSERT_EQ(table.release(id), model.release(id)) << id;
        break;
      case 2:
        ASSERT_EQ(table.verify(id), model.verify(id)) << id;
        break;
      default: {
        const std::vector<uint32_t> used = model.all();
        if (!filling && !used.empty()) {
          const uint32_t any = used[random() % used.size()];
          ASSERT_EQ(table.release(any), model.release(any));
        } else {
          const int32_t mode = choice < 5 ? kLowest : kAfter;
          ASSERT_EQ(table.acquire(mode), model.acquire(mode));
        }
      }
    }
    for (uint32_t index = 0; index < bytes / 4; ++index) {
      ASSERT_EQ(table.word(index), model.word(index)) << index;
    }
    ASSERT_EQ(table.smallest(), model.smallest());
    ASSERT_EQ(table.largest(), model.largest());
    if (step % 7 == 0) {
      ASSERT_EQ(table.all(), model.all());
    }
  }
  for (uint32_t i = whole; i < bytes; ++i) {
    EXPECT_EQ(table[i], 0xA5);
  }
}

TEST(HashId, TablesOfEverySizeUpTo40BytesDoAsTheModel) {
  for (uint32_t bytes = 0; bytes <= 40; ++bytes) {
    SCOPED_TRACE(bytes);
    ASSERT_NO_FATAL_FAILURE(expect_as_model(bytes, 2500));
  }
}

TEST(HashId, TablesOfSeveralBlocksDoAsTheModel) {
  for (const uint32_t bytes : {127U, 128U, 131U, 132U, 258U, 300U}) {
    SCOPED_TRACE(bytes);
    ASSERT_NO_FATAL_FAILURE(expect_as_model(bytes, 2000));
  }
}

}  // namespace
