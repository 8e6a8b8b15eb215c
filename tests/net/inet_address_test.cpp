// Addresses of both families between text and bytes.

#include <cstring>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/net.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;
using Bytes = std::vector<uint8_t>;

Bytes bytes_of(uint32_t family, const std::string& text) {
  Bytes bytes(32, 0x55);
  auto size = static_cast<uint32_t>(bytes.size());
  EXPECT_EQ(SMInetAddrUTF8ToNetwork(family, text.c_str(), bytes.data(), &size), SM_STATUS_SUCCESS)
      << text;
  bytes.resize(size);
  return bytes;
}

std::string text_of(uint32_t family, const Bytes& bytes) {
  char text[64] = "?";
  uint32_t size = sizeof text;
  EXPECT_EQ(SMInetAddrNetworkToUTF8(family, bytes.data(), static_cast<uint32_t>(bytes.size()), text,
                                    &size),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(size, std::strlen(text) + 1);
  return text;
}

TEST(InetFromText, ReadsFourBytesOfIpv4) {
  EXPECT_EQ(bytes_of(1, "192.168.1.10"), (Bytes{192, 168, 1, 10}));
  EXPECT_EQ(bytes_of(1, "0.0.0.0"), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(bytes_of(1, "255.255.255.255"), (Bytes{255, 255, 255, 255}));
}

TEST(InetFromText, ReadsSixteenBytesOfIpv6) {
  EXPECT_EQ(bytes_of(2, "2001:db8::1"),
            (Bytes{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(bytes_of(2, "::"), Bytes(16, 0));
  EXPECT_EQ(bytes_of(2, "FE80:0:0:0:1:2:3:4"),
            (Bytes{0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 1, 0, 2, 0, 3, 0, 4}));
  EXPECT_EQ(bytes_of(2, "::ffff:1.2.3.4"),
            (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 1, 2, 3, 4}));
}

TEST(InetFromText, WritesNoMoreThanTheAddressAtEveryRoom) {
  for (const auto& [family, text, needed] :
       {std::tuple{1U, "1.2.3.4", 4U}, std::tuple{2U, "102:304:506:708:90a:b0c:d0e:f10", 16U}}) {
    for (uint32_t room = 0; room <= needed + 1; ++room) {
      const Guarded<uint8_t> buffer(room);
      uint32_t size = room;
      const SMStatus status = SMInetAddrUTF8ToNetwork(family, text, buffer.data(), &size);
      if (room < needed) {
        EXPECT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(size, room);
        EXPECT_EQ(Bytes(buffer.data(), buffer.end()), Bytes(room, 0x55));
      } else {
        EXPECT_EQ(status, SM_STATUS_SUCCESS);
        EXPECT_EQ(size, needed);
        for (uint32_t i = 0; i < room; ++i) {
          EXPECT_EQ(buffer.data()[i], i < needed ? i + 1 : 0x55);
        }
      }
    }
  }
}

TEST(InetFromText, OtherTextIsInvalid) {
  const auto expect_invalid = [](uint32_t family, const std::string& text) {
    const Guarded<char> copy(text.c_str(), text.size() + 1);
    uint8_t bytes[16];
    std::memset(bytes, 0x55, sizeof bytes);
    uint32_t size = sizeof bytes;
    EXPECT_EQ(SMInetAddrUTF8ToNetwork(family, copy.data(), bytes, &size),
              SM_STATUS_INVALID_PARAMETER)
        << family << " " << text;
    EXPECT_EQ(size, sizeof bytes);
    EXPECT_EQ(bytes[0], 0x55);
  };
  for (const char* text :
       {"",          " ",        ".",         "1",         "1.2.3",     "1.2.3.",
        ".1.2.3.4",  "1..2.3",   "1.2.3.4.",  "1.2.3.4.5", "256.1.1.1", "1.2.3.999999999999",
        "-1.2.3.4",  "+1.2.3.4", "0x1.2.3.4", " 1.2.3.4",  "1.2.3.4 ",  "1.2.3.4\n",
        "010.1.1.1", "a.b.c.d",  "::1",       "\xFF.1.1.1"}) {
    expect_invalid(1, text);
  }
  for (const char* text : {"",
                           ":",
                           ":::",
                           "1",
                           "1:2:3:4:5:6:7",
                           "1:2:3:4:5:6:7:",
                           ":1:2:3:4:5:6:7:8",
                           "1:2:3:4:5:6:7:8:9",
                           "1::2::3",
                           "12345::",
                           "g::",
                           "::1 ",
                           " ::1",
                           "::1%eth0",
                           "::1/64",
                           "[::1]",
                           "::1.2.3",
                           "::1.2.3.4.5",
                           "::256.1.1.1",
                           "1:2:3:4:5:6:7:1.2.3.4",
                           "1.2.3.4",
                           "::\xC3\xA9"}) {
    expect_invalid(2, text);
  }
  expect_invalid(2, std::string(100000, ':'));
  expect_invalid(2, std::string(100000, '1'));
  expect_invalid(1, std::string(100000, '1'));
}

TEST(InetFromText, OtherFamiliesAreInvalid) {
  uint8_t bytes[16];
  for (const uint32_t family : {0U, 3U, 10U, 0x10001U, 0xFFFFFFFFU}) {
    for (const char* text : {"1.2.3.4", "::1"}) {
      uint32_t size = 0;
      EXPECT_EQ(SMInetAddrUTF8ToNetwork(family, text, bytes, &size), SM_STATUS_INVALID_PARAMETER);
      EXPECT_EQ(size, 0U);
    }
  }
}

TEST(InetFromText, TheTextIsLookedAtBeforeTheRoom) {
  uint8_t bytes[16];
  uint32_t size = 0;
  EXPECT_EQ(SMInetAddrUTF8ToNetwork(2, "no", bytes, &size), SM_STATUS_INVALID_PARAMETER);
}

TEST(InetFromText, NullIsUnsuccessful) {
  uint8_t bytes[16];
  uint32_t size = sizeof bytes;
  EXPECT_EQ(SMInetAddrUTF8ToNetwork(1, nullptr, bytes, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMInetAddrUTF8ToNetwork(1, "1.2.3.4", nullptr, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMInetAddrUTF8ToNetwork(1, "1.2.3.4", bytes, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMInetAddrUTF8ToNetwork(9, nullptr, bytes, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(size, sizeof bytes);
}

TEST(InetToText, WritesBothFamilies) {
  EXPECT_EQ(text_of(1, {10, 0, 0, 1}), "10.0.0.1");
  EXPECT_EQ(text_of(2, Bytes(16, 0)), "::");
  EXPECT_EQ(text_of(2, bytes_of(2, "2001:0DB8:0:0:0:0:0:1")), "2001:db8::1");
  EXPECT_EQ(text_of(2, bytes_of(2, "::ffff:1.2.3.4")), "::ffff:1.2.3.4");
}

TEST(InetToText, WhatItWritesIsReadAgain) {
  uint32_t state = 1;
  for (int i = 0; i < 2000; ++i) {
    Bytes bytes(16);
    for (uint8_t& byte : bytes) {
      state = state * 1664525 + 1013904223;
      byte = static_cast<uint8_t>((state >> 30) != 0 ? state >> 16 : 0);
    }
    EXPECT_EQ(bytes_of(2, text_of(2, bytes)), bytes);
    bytes.resize(4);
    EXPECT_EQ(bytes_of(1, text_of(1, bytes)), bytes);
  }
}

TEST(InetToText, KeepsToEveryRoom) {
  for (const auto& [family, text] :
       {std::pair{1U, std::string("10.0.0.1")}, std::pair{1U, std::string("255.255.255.255")},
        std::pair{2U, std::string("::")},
        std::pair{2U, std::string("1111:2222:3333:4444:5555:6666:7777:8888")}}) {
    const Bytes bytes = bytes_of(family, text);
    const auto length = static_cast<uint32_t>(bytes.size());
    const Guarded<uint8_t> address(bytes.data(), bytes.size());
    const auto needed = static_cast<uint32_t>(text.size()) + 1;
    for (uint32_t room = 0; room <= needed + 1; ++room) {
      const Guarded<char> buffer(room);
      uint32_t size = room;
      const SMStatus status =
          SMInetAddrNetworkToUTF8(family, address.data(), length, buffer.data(), &size);
      if (room < needed) {
        EXPECT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL) << text << " in " << room;
        EXPECT_EQ(size, room);
      } else {
        EXPECT_EQ(status, SM_STATUS_SUCCESS);
        EXPECT_EQ(size, needed);
        EXPECT_EQ(text, buffer.data());
      }
    }
  }
}

TEST(InetToText, TheLengthMustBeTheFamilys) {
  const uint8_t bytes[17] = {};
  char text[64] = "old";
  for (const uint32_t family : {1U, 2U}) {
    for (const uint32_t length : {0U, 3U, 4U, 5U, 8U, 15U, 16U, 17U, 0xFFFFFFFFU}) {
      uint32_t size = sizeof text;
      if (length != (family == 1 ? 4U : 16U)) {
        EXPECT_EQ(SMInetAddrNetworkToUTF8(family, bytes, length, text, &size),
                  SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(size, sizeof text);
        EXPECT_STREQ(text, "old");
      }
    }
  }
}

TEST(InetToText, OtherFamiliesAreInvalid) {
  const uint8_t bytes[16] = {};
  char text[64];
  for (const uint32_t family : {0U, 3U, 10U, 0x10002U, 0xFFFFFFFFU}) {
    for (const uint32_t length : {4U, 16U}) {
      uint32_t size = 0;
      EXPECT_EQ(SMInetAddrNetworkToUTF8(family, bytes, length, text, &size),
                SM_STATUS_INVALID_PARAMETER);
    }
  }
}

TEST(InetToText, NullIsUnsuccessful) {
  const uint8_t bytes[16] = {};
  char text[64];
  uint32_t size = sizeof text;
  EXPECT_EQ(SMInetAddrNetworkToUTF8(2, nullptr, 16, text, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMInetAddrNetworkToUTF8(2, bytes, 16, nullptr, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMInetAddrNetworkToUTF8(2, bytes, 16, text, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMInetAddrNetworkToUTF8(9, bytes, 1, nullptr, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(size, sizeof text);
}

}  // namespace
