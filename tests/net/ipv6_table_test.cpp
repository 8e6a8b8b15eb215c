// Tables of IPv6 addresses that the kernel does and does not write.

#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/net.h"
#include "support/own_network.h"

namespace {

using kqsupt::tests::add_running;
using kqsupt::tests::ip;
using kqsupt::tests::OwnNetwork;
using kqsupt::tests::OwnProcNet;
using Texts = std::vector<std::string>;

constexpr SMStatus kFailed = 0xFFFFFFFF;
const std::string kFirst = "20010db8000000000000000000000001 02 40 00 80     eth0\n";
const std::string kSecond = "20010db8000000000000000000000002 03 40 00 80     eth1\n";

class Ipv6Table : public OwnNetwork {
 protected:
  // The list of a table.
  Texts list_of(const std::string& table) const {
    proc_net_.put_ipv6_table(table);
    return list();
  }
  static Texts list() {
    std::vector<SMInetAddrStr> entries(5000);
    auto count = static_cast<uint32_t>(entries.size());
    EXPECT_EQ(SMGetInetAddrStrList(2, &count, entries.data()), SM_STATUS_SUCCESS);
    Texts texts;
    for (uint32_t i = 0; i < std::min(count, uint32_t{5000}); ++i) {
      EXPECT_EQ(entries[i].family, 2);
      texts.emplace_back(entries[i].text);
    }
    return texts;
  }

  // The status of a table that is no list.
  SMStatus failure_of(const std::string& table) const {
    proc_net_.put_ipv6_table(table);
    SMInetAddrStr entry{};
    uint32_t count = 1;
    const SMStatus status = SMGetInetAddrStrList(2, &count, &entry);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(entry.family, 0);
    return status;
  }

  const OwnProcNet proc_net_;
};

TEST_F(Ipv6Table, ThatIsMissingIsAnEmptyList) {
  EXPECT_EQ(list(), Texts());
}

TEST_F(Ipv6Table, ThatCannotBeReadIsAnEmptyList) {
  ASSERT_EQ(mkdir(proc_net_.file("if_inet6").c_str(), 0755), 0);
  EXPECT_EQ(list(), Texts());
}

TEST_F(Ipv6Table, OfNoLineIsAnEmptyList) {
  EXPECT_EQ(list_of(""), Texts());
  EXPECT_EQ(list_of("\n"), Texts());
  EXPECT_EQ(list_of("\n \n\t\n"), Texts());
}

TEST_F(Ipv6Table, GivesEachRankInItsOwnOrder) {
  EXPECT_EQ(list_of("fe800000000000000000000000000001 02 40 20 80     eth0\n"
                    "fec00000000000000000000000000001 02 40 40 80     eth0\n"
                    "20010db8000000000000000000000002 02 40 00 80     eth0\n"
                    "febfffffffffffffffffffffffffffff 02 40 20 80     eth0\n"
                    "feffffffffffffffffffffffffffffff 02 40 40 80     eth0\n"
                    "20010db8000000000000000000000001 02 40 00 80     eth0\n"
                    "fe7fffffffffffffffffffffffffffff 02 40 00 80     eth0\n"
                    "ff000000000000000000000000000001 02 40 00 80     eth0\n"),
            (Texts{"2001:db8::2", "2001:db8::1", "fe7f:ffff:ffff:ffff:ffff:ffff:ffff:ffff",
                   "ff00::1", "fec0::1", "feff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "fe80::1",
                   "febf:ffff:ffff:ffff:ffff:ffff:ffff:ffff"}));
}

TEST_F(Ipv6Table, DigitsAreReadInEitherCase) {
  EXPECT_EQ(list_of("20010DB8ABCDEFabcdef000000000001 0A 40 00 80 eth0\n"),
            Texts{"2001:db8:abcd:efab:cdef::1"});
}

TEST_F(Ipv6Table, NeedsNoEndBehindTheLastLine) {
  EXPECT_EQ(list_of(kFirst + kSecond.substr(0, kSecond.size() - 1)),
            (Texts{"2001:db8::1", "2001:db8::2"}));
  EXPECT_EQ(list_of("20010db8000000000000000000000001 02 40 00 80 eth0\r\n" + kSecond),
            (Texts{"2001:db8::1", "2001:db8::2"}));
}

TEST_F(Ipv6Table, LoopbackAndInterfacesWithoutNeighboursAreLeftOut) {
  add_running("veth0");
  const std::string table =
      "20010db8000000000000000000000003 01 80 10 80       lo\n"
      "20010db8000000000000000000000004 02 40 00 80    veth0\n";
  EXPECT_EQ(list_of(table + kFirst), (Texts{"2001:db8::4", "2001:db8::1"}));
  ip("link set veth0 arp off\n");
  EXPECT_EQ(list_of(table + kFirst), Texts{"2001:db8::1"});
}

TEST_F(Ipv6Table, InterfacesThatCannotBeAskedAboutAreKept) {
  EXPECT_EQ(list_of(kFirst + kSecond), (Texts{"2001:db8::1", "2001:db8::2"}));
}

TEST_F(Ipv6Table, AnIndexMayHaveMoreDigits) {
  EXPECT_EQ(list_of("20010db8000000000000000000000003 12c 80 10 80       lo\n"
                    "20010db8000000000000000000000004 12c 40 00 80     eth0\n"
                    "20010db8000000000000000000000005 7fffffff 40 00 80     eth0\n"),
            (Texts{"2001:db8::4", "2001:db8::5"}));
}

TEST_F(Ipv6Table, LinesThatLackAFieldAreSkipped) {
  for (const char* line :
       {"x", "20010db8000000000000000000000003", "20010db8000000000000000000000003 02",
        "20010db8000000000000000000000003 02 40", "20010db8000000000000000000000003 02 40 00",
        "20010db8000000000000000000000003 02 40 00 80",
        "20010db8000000000000000000000003 xx 40 00 80 eth0",
        "20010db8000000000000000000000003 02 xx 00 80 eth0",
        "20010db8000000000000000000000003 02 40 xx 80 eth0",
        "20010db8000000000000000000000003 02 40 00 xx eth0",
        "eth0 20010db800000000000000000000000"}) {
    const std::string skipped = std::string(line) + "\n";
    EXPECT_EQ(list_of(skipped), Texts()) << line;
    EXPECT_EQ(list_of(skipped + kFirst + skipped + kSecond + skipped),
              (Texts{"2001:db8::1", "2001:db8::2"}))
        << line;
  }
}

TEST_F(Ipv6Table, WhatIsNoAddressIsSkippedBeforeAnAddress) {
  for (const char* digits : {"2", "2001", "::1", "1.2.3.4", "20010db80000000000000000000000",
                             "zz010db8000000000000000000000003", "20010db80000000000000000000000zz",
                             "20010db8000000000000000000zz0003"}) {
    const std::string bad = std::string(digits) + " 02 40 00 80 eth0\n";
    EXPECT_EQ(list_of(bad + kFirst), Texts{"2001:db8::1"}) << digits;
    EXPECT_EQ(list_of(kFirst + bad + bad + kSecond), (Texts{"2001:db8::1", "2001:db8::2"}));
  }
}

TEST_F(Ipv6Table, BytesAreReadAsTypedValuesReadThem) {
  // A digit alone is a byte, at the end or before what is no digit.
  EXPECT_EQ(list_of("20010db800000000000000000000abb 02 40 00 80 eth0\n"), Texts{"2001:db8::ab0b"});
  EXPECT_EQ(list_of("20010db8000000000000000000000b7z 02 40 00 80 eth0\n"), Texts{"2001:db8::b07"});
}

TEST_F(Ipv6Table, WhatIsNoAddressCostsTheListAtTheEnd) {
  const std::string bad = "20010db8 02 40 00 80 eth0\n";
  EXPECT_EQ(failure_of(bad), kFailed);
  EXPECT_EQ(failure_of(kFirst + bad), kFailed);
  EXPECT_EQ(failure_of(kFirst + kSecond + bad + "\n\n"), kFailed);
  EXPECT_EQ(failure_of(kFirst + bad + "too few fields\n"), kFailed)
      << "the last one that was tried";
  EXPECT_EQ(failure_of(kFirst + bad + "20010db8000000000000000000000003 01 80 10 80 lo\n"), kFailed)
      << "that of a loopback interface is not tried";
}

TEST_F(Ipv6Table, WhatIsNotTriedCostsNothing) {
  EXPECT_EQ(list_of(kFirst + "zz 01 80 10 80 lo\n"), Texts{"2001:db8::1"});
}

TEST_F(Ipv6Table, AFailureIsAnsweredForBothFamilies) {
  add_running("veth0");
  ip("addr add 10.3.0.1/32 dev veth0\n");
  proc_net_.put_ipv6_table("zz 02 40 00 80 eth0\n");
  SMInetAddrStr entries[2]{};
  uint32_t count = 2;
  EXPECT_EQ(SMGetInetAddrStrList(0, &count, entries), kFailed);
  EXPECT_EQ(count, 2U);
  EXPECT_EQ(SMGetInetAddrStrList(1, &count, entries), SM_STATUS_SUCCESS);
  EXPECT_EQ(count, 1U);
  EXPECT_STREQ(entries[0].text, "10.3.0.1");
}

TEST_F(Ipv6Table, OfALongLineTheBeginningIsSeen) {
  for (const size_t length : {200U, 255U, 256U, 4095U, 4096U, 4097U, 100000U}) {
    const std::string blanks(length, ' ');
    const std::string line = kFirst.substr(0, kFirst.size() - 1);
    EXPECT_EQ(list_of(line + blanks + "\n" + kSecond), (Texts{"2001:db8::1", "2001:db8::2"}));
    EXPECT_EQ(list_of(line + std::string(length, 'x') + "\n" + kSecond),
              (Texts{"2001:db8::1", "2001:db8::2"}));
    EXPECT_EQ(list_of(std::string(length, 'x') + "\n" + kSecond), Texts{"2001:db8::2"});
  }
  EXPECT_EQ(list_of(std::string(300, ' ') + kFirst + kSecond), Texts{"2001:db8::2"});
}

TEST_F(Ipv6Table, ZerosAndOtherBytesAreNoFields) {
  using namespace std::string_literals;
  EXPECT_EQ(list_of("\0"s + kFirst + "20010db8000000000000000000000003 02 40\0 00 80 eth0\n"s +
                    "\xFF\xFE\x80 \xC3 \xA9 02 40 00\n" + kSecond),
            Texts{"2001:db8::2"});
}

TEST_F(Ipv6Table, OfThousandsOfLinesIsReadWhole) {
  std::string table;
  Texts expected;
  for (int i = 1; i <= 3000; ++i) {
    char line[100];
    snprintf(line, sizeof line, "20010db800000000000000000000%04x 02 40 00 80     eth0\n", i);
    table += line;
    snprintf(line, sizeof line, "2001:db8::%x", i);
    expected.emplace_back(line);
  }
  EXPECT_EQ(list_of(table), expected);
}

}  // namespace
