// IPv4 addresses between text and network byte order.

#include <arpa/inet.h>

#include <cstring>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/net.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;

constexpr SMStatus kNotAnAddress = 0xFFFFFFFF;

// The address of a text, which must be one.
uint32_t address_of(const char* text) {
  uint32_t address = 0;
  EXPECT_EQ(SMIPAddrASCIIToNetwork(text, &address), SM_STATUS_SUCCESS) << text;
  return address;
}

bool is_address(const char* text) {
  uint32_t address = 0x12345678;
  const SMStatus status = SMIPAddrASCIIToNetwork(text, &address);
  EXPECT_TRUE(status == SM_STATUS_SUCCESS || status == kNotAnAddress) << status;
  if (status != SM_STATUS_SUCCESS) {
    EXPECT_EQ(address, 0x12345678U) << "stored of " << text;
  }
  return status == SM_STATUS_SUCCESS;
}

uint32_t network(uint32_t host) {
  return htonl(host);
}

TEST(Ipv4FromText, ReadsDottedDecimal) {
  EXPECT_EQ(address_of("192.168.1.10"), network(0xC0A8010A));
  EXPECT_EQ(address_of("0.0.0.0"), 0U);
}

TEST(Ipv4FromText, LeadingZerosMakeNoOctal) {
  EXPECT_EQ(address_of("010.000.0.1"), network(0x0A000001));
  EXPECT_EQ(address_of("192.168.001.010"), network(0xC0A8010A));
  EXPECT_EQ(address_of("000.000.000.000"), 0U);
}

TEST(Ipv4FromText, ZerosBehindAnotherDigitCount) {
  EXPECT_EQ(address_of("100.200.0.10"), network(0x64C8000A));
}

TEST(Ipv4FromText, EveryXIsDropped) {
  EXPECT_EQ(address_of("0x10.1.1.1"), network(0x0A010101));
  EXPECT_EQ(address_of("1x0.1.1.0x"), network(0x0A010100));
}

TEST(Ipv4FromText, ReadsShortFormsAsInetAddrDoes) {
  EXPECT_EQ(address_of("1.2.3"), inet_addr("1.2.3"));
  EXPECT_EQ(address_of("10"), inet_addr("10"));
}

TEST(Ipv4FromText, BroadcastHasTwoSpellingsInAnyCase) {
  EXPECT_EQ(address_of("255.255.255.255"), 0xFFFFFFFFU);
  EXPECT_EQ(address_of("0xff.0xff.0xff.0xff"), 0xFFFFFFFFU);
  EXPECT_EQ(address_of("0XFF.0XFF.0XFF.0XFF"), 0xFFFFFFFFU);
  EXPECT_EQ(address_of("0xFf.0xfF.0xff.0XFF"), 0xFFFFFFFFU);
}

TEST(Ipv4FromText, OtherTextIsNoAddress) {
  for (const char* text :
       {"", ".", "...", "a.b.c.d", "256.1.1.1", "1.2.3.4.5", "1..2.3", "-1.0.0.0", "ff.ff.ff.ff",
        "255.255.255.255 x", "1.2.3.4z", "xxxx", "0X1.1.1.1"}) {
    EXPECT_FALSE(is_address(text)) << text;
  }
}

TEST(Ipv4FromText, NullIsUnsuccessful) {
  uint32_t address = 0;
  EXPECT_EQ(SMIPAddrASCIIToNetwork(nullptr, &address), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMIPAddrASCIIToNetwork("1.2.3.4", nullptr), SM_STATUS_UNSUCCESSFUL);
}

TEST(Ipv4ToText, WritesDottedDecimalAtEveryRoom) {
  for (const auto& [address, text] : {std::pair{0x0A000001U, std::string("10.0.0.1")},
                                      std::pair{0xFFFFFFFFU, std::string("255.255.255.255")},
                                      std::pair{0U, std::string("0.0.0.0")}}) {
    const auto needed = static_cast<uint32_t>(text.size()) + 1;
    for (uint32_t room = 0; room <= needed + 1; ++room) {
      const Guarded<char> buffer(room);
      uint32_t size = room;
      const SMStatus status = SMIPAddrNetworkToASCII(network(address), buffer.data(), &size);
      EXPECT_EQ(size, needed);
      if (room < needed) {
        EXPECT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(std::string(buffer.data(), room), std::string(room, 0x55));
      } else {
        EXPECT_EQ(status, SM_STATUS_SUCCESS);
        EXPECT_EQ(text, buffer.data());
      }
    }
  }
}

TEST(Ipv4ToText, NullIsUnsuccessful) {
  char buffer[16];
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMIPAddrNetworkToASCII(0, nullptr, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMIPAddrNetworkToASCII(0, buffer, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(size, sizeof buffer);
}

}  // namespace
