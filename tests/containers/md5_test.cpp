// The message digest: golden values for both byte orders, a model of its own, and the context.

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <random>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/containers.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;
using Order = std::endian;

static_assert(sizeof(SMRFC1321Context) == 108);
static_assert(offsetof(SMRFC1321Context, messageBitsHigh) == 0);
static_assert(offsetof(SMRFC1321Context, messageBitsLow) == 4);
static_assert(offsetof(SMRFC1321Context, state) == 8);
static_assert(offsetof(SMRFC1321Context, bytesInBlock) == 24);
static_assert(offsetof(SMRFC1321Context, digest) == 28);
static_assert(offsetof(SMRFC1321Context, block) == 44);

// floor(|sin(i)| * 2^32) for i from 1 to 64.
constexpr uint32_t kConstants[64] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};

// What the library computes at use it computes right: with the mathematics library of this host, or
// with the sine that stands in for it where the emulator cannot run that.
TEST(Sine, GivesThe64ConstantsOnThisHost) {
  for (int i = 1; i <= 64; ++i) {
    const volatile double angle = i;
    EXPECT_EQ(static_cast<uint32_t>(std::floor(std::fabs(std::sin(angle)) * 4294967296.0)),
              kConstants[i - 1])
        << i;
  }
}

void append_word(std::string& bytes, uint32_t word, Order order) {
  for (int i = 0; i < 4; ++i) {
    const int shift = order == Order::little ? 8 * i : 24 - 8 * i;
    bytes += static_cast<char>(word >> shift);
  }
}

uint32_t word_at(const std::string& bytes, size_t offset, Order order) {
  uint32_t word = 0;
  for (size_t i = 0; i < 4; ++i) {
    word = word << 8 | static_cast<uint8_t>(bytes[offset + (order == Order::little ? 3 - i : i)]);
  }
  return word;
}

// The digest of a message of which all bytes are there, on a host of the given byte order.
std::string model(std::string message, Order order) {
  const uint64_t bits = uint64_t{message.size()} * 8;
  message += '\x80';
  while (message.size() % 64 != 56) {
    message += '\0';
  }
  append_word(message, static_cast<uint32_t>(bits >> 32), order);
  append_word(message, static_cast<uint32_t>(bits), order);

  uint32_t sums[4] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  for (size_t at = 0; at < message.size(); at += 64) {
    uint32_t v[4] = {sums[0], sums[1], sums[2], sums[3]};
    constexpr int kShifts[4][4] = {
        {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    const auto step = [&](uint32_t i, uint32_t mixed, uint32_t word) {
      uint32_t& a = v[(64 - i) % 4];
      a = v[(65 - i) % 4] +
          std::rotl(a + mixed + word_at(message, at + word % 16 * 4, order) + kConstants[i],
                    kShifts[i / 16][i % 4]);
    };
    for (uint32_t i = 0; i < 64; ++i) {
      const uint32_t b = v[(65 - i) % 4];
      const uint32_t c = v[(66 - i) % 4];
      const uint32_t d = v[(67 - i) % 4];
      if (i < 16) {
        step(i, (b & c) | (~b & d), i);
      } else if (i < 32) {
        step(i, (b & d) | (c & ~d), 1 + 5 * i);
      } else if (i < 48) {
        step(i, b ^ c ^ d, 5 + 3 * i);
      } else {
        step(i, c ^ (b | ~d), 7 * i);
      }
    }
    for (int i = 0; i < 4; ++i) {
      sums[i] += v[i];
    }
  }
  std::string digest;
  for (const uint32_t sum : sums) {
    append_word(digest, sum, order);
  }
  return digest;
}

std::string hex(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += "0123456789abcdef"[static_cast<uint8_t>(byte) >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

std::string digest_in(const SMRFC1321Context& context) {
  return std::string(reinterpret_cast<const char*>(context.digest), sizeof context.digest);
}

void add(SMRFC1321Context& context, const std::string& bytes) {
  SMRFC1321AddMsg(&context, bytes.data(), static_cast<uint32_t>(bytes.size()));
}

std::string digest_of(const std::string& message) {
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  add(context, message);
  SMRFC1321ComputeMsgDigest(&context);
  return digest_in(context);
}

std::string random_bytes(size_t length) {
  static std::mt19937 random(5);
  std::string bytes;
  while (bytes.size() < length) {
    bytes += static_cast<char>(random());
  }
  return bytes;
}

struct Golden {
  std::string message;
  std::string little;
  std::string big;
};

const Golden kGolden[] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e", "227b7f48d21283f63bc9bbc15b44ea1a"},
    {"a", "4f771875513ba5e48cec2ab724ecbbbd", "a3b34ca9d7ab02bae38363908b8064d7"},
    {"abc", "c79b6f2bcb046d747baab534d067dabb", "c2b84b040a27063810b5878bfa2e185b"},
    {"message digest", "cca324aece564f27afba36eab11359a9", "598a3bc3d02bfa3b9c94f9117e14a8d7"},
    {"abcdefghijklmnopqrstuvwxyz", "fea0cc388fe4a7590ca458db3677aa1b",
     "90b7b3074d4d58285292b16f58b7bb1f"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
     "00f2dfa36dfbc2e0d9939f10fb855c34", "62261df0f5c55cc891f70fe7730cb281"},
    {"1234567890123456789012345678901234567890"
     "1234567890123456789012345678901234567890",
     "02d4a8e5adc043ff587fc3ef2c176c8d", "626260ec9d49368b49e79ab34bea856d"},
    {std::string(55, 'x'), "94a127f89a33e122f7e91bdb6344b89b", "b08c038eca2fd05ba2471738c5eaacea"},
    {std::string(56, 'x'), "640e3228c43a30b78a15f50d89f5cc2a", "e3ee0eb3912c0a340bcfbccb1568a91e"},
    {std::string(63, 'x'), "987e54bb62a3ede451ee4a0a74f2b51a", "ab64719420f14f2abc36842a954c5737"},
    {std::string(64, 'x'), "4595ecd200ec0d406f7ae5298e2bd0c2", "be8145f6069bac1d1553093397e2e4ab"},
    {std::string(1000, 'x'), "d751394023225fc87057113449cec353",
     "5c716b273972cba2551e19680cf00be8"},
};

TEST(MessageDigest, IsTheGoldenOneOfTheHostsByteOrder) {
  for (const Golden& golden : kGolden) {
    EXPECT_EQ(hex(digest_of(golden.message)),
              Order::native == Order::little ? golden.little : golden.big)
        << golden.message;
  }
}

TEST(MessageDigest, HasGoldenValuesThatTheModelGivesInBothByteOrders) {
  for (const Golden& golden : kGolden) {
    EXPECT_EQ(hex(model(golden.message, Order::little)), golden.little) << golden.message;
    EXPECT_EQ(hex(model(golden.message, Order::big)), golden.big) << golden.message;
  }
}

TEST(MessageDigest, OfEveryLengthIsThatOfTheModel) {
  for (size_t length = 0; length <= 200; ++length) {
    const std::string message = random_bytes(length);
    EXPECT_EQ(hex(digest_of(message)), hex(model(message, Order::native))) << length;
  }
}

TEST(MessageDigest, IsTheSameHoweverTheMessageIsSplit) {
  const std::string message = random_bytes(200);
  const std::string whole = model(message, Order::native);
  for (size_t first = 0; first <= 200; first += 7) {
    for (size_t second = first; second <= 200; second += 9) {
      SMRFC1321Context context;
      SMRFC1321Load(&context);
      add(context, message.substr(0, first));
      add(context, message.substr(first, second - first));
      add(context, message.substr(second));
      SMRFC1321ComputeMsgDigest(&context);
      ASSERT_EQ(hex(digest_in(context)), hex(whole)) << first << ", " << second;
    }
  }
}

TEST(MessageDigest, IsTheSameByteByByte) {
  const std::string message = random_bytes(150);
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  for (const char byte : message) {
    SMRFC1321AddMsg(&context, &byte, 1);
  }
  SMRFC1321ComputeMsgDigest(&context);
  EXPECT_EQ(hex(digest_in(context)), hex(model(message, Order::native)));
}

TEST(MessageDigest, ReadsNoFurtherThanTheMessageAndItsContext) {
  for (size_t length = 0; length <= 130; ++length) {
    const std::string message = random_bytes(length);
    const Guarded<char> data(message.data(), length);
    const Guarded<SMRFC1321Context> context(1);
    SMRFC1321Load(context.data());
    SMRFC1321AddMsg(context.data(), data.data(), static_cast<uint32_t>(length));
    SMRFC1321ComputeMsgDigest(context.data());
    EXPECT_EQ(hex(digest_in(*context.data())), hex(model(message, Order::native)));
    SMRFC1321UnLoad(context.data());
  }
}

TEST(MessageDigest, TakesMessagesThatAreNotAlignedToWords) {
  const std::string message = random_bytes(300);
  for (size_t offset = 0; offset < 8; ++offset) {
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, message.data() + offset, 256);
    SMRFC1321ComputeMsgDigest(&context);
    EXPECT_EQ(hex(digest_in(context)), hex(model(message.substr(offset, 256), Order::native)));
  }
}

TEST(MessageDigestContext, LoadStartsAMessageAndLeavesTheBlock) {
  SMRFC1321Context context;
  std::memset(&context, 0x5A, sizeof context);
  SMRFC1321Load(&context);
  EXPECT_EQ(context.messageBitsHigh, 0U);
  EXPECT_EQ(context.messageBitsLow, 0U);
  EXPECT_EQ(context.state[0], 0x67452301U);
  EXPECT_EQ(context.state[1], 0xEFCDAB89U);
  EXPECT_EQ(context.state[2], 0x98BADCFEU);
  EXPECT_EQ(context.state[3], 0x10325476U);
  EXPECT_EQ(context.bytesInBlock, 0U);
  EXPECT_EQ(digest_in(context), std::string(16, '\0'));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(context.block), 64), std::string(64, '\x5A'));
}

TEST(MessageDigestContext, LoadStartsAnotherMessageAfterADigest) {
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  add(context, "the first message");
  SMRFC1321ComputeMsgDigest(&context);
  SMRFC1321Load(&context);
  add(context, "abc");
  SMRFC1321ComputeMsgDigest(&context);
  EXPECT_EQ(hex(digest_in(context)), hex(digest_of("abc")));
}

TEST(MessageDigestContext, LengthZeroChangesNothing) {
  SMRFC1321Context context;
  std::memset(&context, 0x5A, sizeof context);
  SMRFC1321Load(&context);
  add(context, "abc");
  const SMRFC1321Context before = context;
  SMRFC1321AddMsg(&context, nullptr, 0);
  SMRFC1321AddMsg(&context, "x", 0);
  EXPECT_EQ(std::memcmp(&context, &before, sizeof context), 0);
}

TEST(MessageDigestContext, CountsTheBytesThatDoNotFillABlock) {
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  add(context, "abc");
  EXPECT_EQ(context.bytesInBlock, 3U);
  EXPECT_EQ(std::memcmp(context.block, "abc", 3), 0);
  add(context, std::string(60, 'x'));
  EXPECT_EQ(context.bytesInBlock, 63U);
  add(context, "y");
  EXPECT_EQ(context.bytesInBlock, 0U);
  add(context, std::string(64 + 64 + 5, 'z'));
  EXPECT_EQ(context.bytesInBlock, 5U);
  EXPECT_EQ(context.messageBitsLow, 8U * (64 + 64 + 64 + 5));
}

TEST(MessageDigestContext, WholeBlocksDoNotPassThroughItsBlock) {
  SMRFC1321Context context;
  std::memset(&context, 0x5A, sizeof context);
  SMRFC1321Load(&context);
  add(context, std::string(128, 'x'));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(context.block), 64), std::string(64, '\x5A'));
}

TEST(MessageDigestContext, BitsCarryIntoTheHighWord) {
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  context.messageBitsLow = 0xFFFFFFF0;
  add(context, "abc");
  EXPECT_EQ(context.messageBitsHigh, 1U);
  EXPECT_EQ(context.messageBitsLow, 8U);
}

TEST(MessageDigestContext, BitsWrapAfterTwoWords) {
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  context.messageBitsHigh = 0xFFFFFFFF;
  context.messageBitsLow = 0xFFFFFFF8;
  add(context, "a");
  EXPECT_EQ(context.messageBitsHigh, 0U);
  EXPECT_EQ(context.messageBitsLow, 0U);
}

TEST(MessageDigestContext, LengthStandsHighWordFirstInTheLastBlock) {
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  context.messageBitsHigh = 0x01020304;
  context.messageBitsLow = 0x05060700;
  add(context, "a");
  SMRFC1321ComputeMsgDigest(&context);
  const uint32_t words[2] = {0x01020304, 0x05060708};
  EXPECT_EQ(std::memcmp(context.block + 56, words, 8), 0);
}

TEST(MessageDigestContext, DigestIsTheStateAsTheHostStoresIt) {
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  add(context, "abc");
  EXPECT_EQ(digest_in(context), std::string(16, '\0')) << "before it is computed";
  SMRFC1321ComputeMsgDigest(&context);
  EXPECT_EQ(std::memcmp(context.digest, context.state, 16), 0);
}

TEST(MessageDigestContext, ComputingDoesNotStartAnotherMessage) {
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  add(context, "abc");
  SMRFC1321ComputeMsgDigest(&context);
  EXPECT_EQ(context.messageBitsLow, 24U);
  EXPECT_NE(context.state[0], 0x67452301U);
}

TEST(MessageDigestContext, UnLoadClearsItsBytesAndNoOthers) {
  uint32_t memory[27 + 4];
  std::memset(memory, 0x5A, sizeof memory);
  SMRFC1321UnLoad(reinterpret_cast<SMRFC1321Context*>(memory + 2));
  const std::string bytes(reinterpret_cast<const char*>(memory), sizeof memory);
  EXPECT_EQ(bytes, std::string(8, '\x5A') + std::string(108, '\0') + std::string(8, '\x5A'));
}

}  // namespace
