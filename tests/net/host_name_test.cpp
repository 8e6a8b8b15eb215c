// The host name and the DNS suffix, on a machine that the tests name.

#include <sched.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/net.h"
#include "support/guarded.h"
#include "support/scratch.h"
#include "support/ucs2.h"

namespace {

using kqsupt::tests::Guarded;
using kqsupt::tests::put;
using kqsupt::tests::units_of;

constexpr SMStatus kDoesNotResolve = 0xFFFFFFFF;

// A machine whose name and whose hosts the test gives. /etc is the sandbox's own.
class Named : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(unshare(CLONE_NEWUTS), 0) << std::strerror(errno);
    put("/etc/nsswitch.conf", "hosts: files\n");
    hosts("");
  }

  static void name(const std::string& name) {
    ASSERT_EQ(sethostname(name.data(), name.size()), 0) << std::strerror(errno);
  }
  static void hosts(const std::string& lines) {
    unlink("/etc/hosts");  // it may be a link to the machine's
    put("/etc/hosts", "127.0.0.1 localhost\n" + lines);
  }
};

class HostName : public Named {};

TEST_F(HostName, IsTheMachines) {
  name("quay7");
  char buffer[100];
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMGetIPHostName(buffer, &size), SM_STATUS_SUCCESS);
  EXPECT_STREQ(buffer, "quay7");
  EXPECT_EQ(size, 6U);
}

TEST_F(HostName, IsCutAndTerminatedAtEveryRoom) {
  for (const std::string& host : {std::string(), std::string("a"), std::string("quay7.example"),
                                  std::string("k\xC3\xA9\xFF"), std::string(64, 'x')}) {
    name(host);
    const auto needed = static_cast<uint32_t>(host.size()) + 1;
    for (uint32_t room = 1; room <= needed + 1; ++room) {
      const Guarded<char> buffer(room);
      uint32_t size = room;
      EXPECT_EQ(SMGetIPHostName(buffer.data(), &size), SM_STATUS_SUCCESS);
      EXPECT_EQ(std::string(buffer.data()), host.substr(0, room - 1));
      EXPECT_EQ(size, room < needed ? room : needed);
    }
  }
}

TEST_F(HostName, WritesNothingIntoNoRoom) {
  name("quay7");
  const Guarded<char> buffer(0);
  uint32_t size = 0;
  EXPECT_EQ(SMGetIPHostName(buffer.data(), &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 0U);
}

TEST_F(HostName, NullIsUnsuccessful) {
  char buffer[8] = "old";
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMGetIPHostName(nullptr, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMGetIPHostName(buffer, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(size, sizeof buffer);
  EXPECT_STREQ(buffer, "old");
}

class HostNameInUcs2 : public Named {};

TEST_F(HostNameInUcs2, IsConverted) {
  name("k\xC3\xA9y");
  ustring buffer[64];
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMUCS2GetIPHostName(buffer, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(units_of(buffer), u"k\u00E9y");
  EXPECT_EQ(size, 8U);
}

TEST_F(HostNameInUcs2, NullAsksForTheSize) {
  name("quay7");
  uint32_t size = 0;
  EXPECT_EQ(SMUCS2GetIPHostName(nullptr, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(size, 12U);
}

TEST_F(HostNameInUcs2, KeepsToEveryRoom) {
  name("quay7");
  for (uint32_t room = 0; room <= 14; ++room) {
    // The room in bytes may be odd; half a unit is no room.
    const Guarded<ustring> buffer(room / 2);
    uint32_t size = room;
    const SMStatus status = SMUCS2GetIPHostName(buffer.data(), &size);
    EXPECT_EQ(status, room < 12 ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS) << room;
    EXPECT_EQ(size, room < 12 ? room : 12);
    if (room >= 12) {
      EXPECT_EQ(units_of(buffer.data()), u"quay7");
    }
  }
}

TEST_F(HostNameInUcs2, HasAtMostSixtyThreeBytes) {
  name(std::string(64, 'x'));
  ustring buffer[100];
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMUCS2GetIPHostName(buffer, &size), SM_STATUS_SUCCESS);
  EXPECT_EQ(units_of(buffer), std::u16string(63, u'x'));
  EXPECT_EQ(size, 128U);
}

TEST_F(HostNameInUcs2, IsNotConvertedWhereItIsNotUtf8) {
  ustring buffer[100];
  for (const std::string& host :
       {std::string("k\xFFy"), std::string("key\xC3"), std::string(62, 'x') + "\xC3\xA9"}) {
    name(host);  // the last one is cut inside a character
    uint32_t size = sizeof buffer;
    EXPECT_EQ(SMUCS2GetIPHostName(buffer, &size), SM_STATUS_OPERATION_FAILED);
    EXPECT_EQ(size, sizeof buffer);
  }
}

TEST_F(HostNameInUcs2, NullSizeIsUnsuccessful) {
  ustring buffer[8];
  EXPECT_EQ(SMUCS2GetIPHostName(buffer, nullptr), SM_STATUS_UNSUCCESSFUL);
}

class DnsSuffix : public Named {
 protected:
  static std::string suffix() {
    std::vector<char> buffer(100000, '?');
    auto size = static_cast<uint32_t>(buffer.size());
    EXPECT_EQ(SMGetDNSSuffixNameName(buffer.data(), &size), SM_STATUS_SUCCESS);
    EXPECT_EQ(size, std::strlen(buffer.data()) + 1);
    return buffer.data();
  }
};

TEST_F(DnsSuffix, FollowsTheFirstDotOfTheOfficialName) {
  name("quay7");
  hosts("10.1.2.3 quay7.harbour.example quay7 q.other\n");
  EXPECT_EQ(suffix(), "harbour.example");
}

TEST_F(DnsSuffix, IsThatOfTheHostNameWhereThisIsOfficial) {
  name("quay7.example");
  hosts("10.1.2.3 quay7.example\n");
  EXPECT_EQ(suffix(), "example");
}

TEST_F(DnsSuffix, IsEmptyWithoutADot) {
  name("quay7");
  hosts("10.1.2.3 quay7 quay7.harbour.example\n");
  EXPECT_EQ(suffix(), "");
}

TEST_F(DnsSuffix, KeepsToEveryRoom) {
  name("quay7");
  for (const std::string& expected : {std::string("example"), std::string()}) {
    hosts("10.1.2.3 quay7" + (expected.empty() ? "" : "." + expected) + " quay7\n");
    const auto needed = static_cast<uint32_t>(expected.size()) + 1;
    for (uint32_t room = 0; room <= needed + 1; ++room) {
      const Guarded<char> buffer(room);
      uint32_t size = room;
      const SMStatus status = SMGetDNSSuffixNameName(buffer.data(), &size);
      EXPECT_EQ(size, needed);
      if (room < needed) {
        EXPECT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(std::string(buffer.data(), room), std::string(room, 0x55));
      } else {
        EXPECT_EQ(status, SM_STATUS_SUCCESS);
        EXPECT_EQ(expected, buffer.data());
      }
    }
  }
}

TEST_F(DnsSuffix, NullAsksForTheSize) {
  name("quay7");
  hosts("10.1.2.3 quay7.example quay7\n");
  for (const uint32_t room : {0U, 7U, 8U, 100U}) {
    uint32_t size = room;
    EXPECT_EQ(SMGetDNSSuffixNameName(nullptr, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 8U);
  }
}

TEST_F(DnsSuffix, AnswersOfAnySizeAreTaken) {
  name("quay7");
  const std::string domain(5000, 'd');
  std::string aliases = " quay7";
  for (int i = 0; i < 1000; ++i) {
    aliases += " alias-" + std::to_string(i);
  }
  hosts("10.1.2.3 quay7." + domain + aliases + "\n");
  EXPECT_EQ(suffix(), domain);
}

TEST_F(DnsSuffix, AHostNameThatDoesNotResolveIsAFailure) {
  for (const char* host : {"quay7", "", "\xFF", "a b"}) {
    name(host);
    char buffer[8] = "old";
    uint32_t size = sizeof buffer;
    EXPECT_EQ(SMGetDNSSuffixNameName(buffer, &size), kDoesNotResolve) << host;
    EXPECT_EQ(size, sizeof buffer);
    EXPECT_STREQ(buffer, "old");
  }
}

TEST_F(DnsSuffix, AnAddressIsItsOwnOfficialName) {
  name("10.1.2.3");
  EXPECT_EQ(suffix(), "1.2.3");
}

TEST_F(DnsSuffix, OnlySixtyThreeBytesOfTheHostNameAreLookedUp) {
  name(std::string(64, 'x'));
  hosts("10.1.2.3 cut.example " + std::string(63, 'x') + "\n10.1.2.4 whole.other " +
        std::string(64, 'x') + "\n");
  EXPECT_EQ(suffix(), "example");
}

TEST_F(DnsSuffix, NullSizeIsUnsuccessful) {
  char buffer[8];
  EXPECT_EQ(SMGetDNSSuffixNameName(buffer, nullptr), SM_STATUS_UNSUCCESSFUL);
}

}  // namespace
