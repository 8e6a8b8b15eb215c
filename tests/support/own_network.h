// A network of a test's own: interfaces and addresses that it makes, and nothing of the machine's.
#pragma once

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "gtest/gtest.h"
#include "support/program.h"
#include "support/scratch.h"

namespace kqsupt::tests {

// Leaves the network that the process is in for a new one.
inline void enter_own_network() {
  ASSERT_EQ(unshare(CLONE_NEWNET), 0) << std::strerror(errno);
}

// Runs the lines as commands of ip(8).
inline void ip(const std::string& lines) {
  const Outcome outcome = run_native({"ip", "-batch", "-"}, lines);
  ASSERT_EQ(outcome.exit_status, 0) << lines << outcome.err;
}

// Whether the machine has the kind of interface that the command makes.
inline bool can(const std::string& line) {
  return run_native({"ip", "-batch", "-"}, line + "\n").exit_status == 0;
}

// The IFF_ flags of an interface; 0 when there is none.
inline unsigned interface_flags(const std::string& name) {
  ifreq request{};
  name.copy(request.ifr_name, sizeof request.ifr_name - 1);
  const int asked = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const int result = ioctl(asked, SIOCGIFFLAGS, &request);
  close(asked);
  return result == 0 ? static_cast<unsigned>(request.ifr_flags) & 0xFFFFU : 0;
}

// The kernel tells that an interface runs some time after it was set up.
inline void wait_until_running(const std::string& name) {
  for (int tries = 0; tries < 1000 && (interface_flags(name) & IFF_RUNNING) == 0; ++tries) {
    usleep(10000);
  }
  ASSERT_NE(interface_flags(name) & IFF_RUNNING, 0U) << name << " does not run";
}

// An interface, joined to another one so that it runs, without addresses of the kernel's making.
inline void add_running(const std::string& name, const std::string& options = "") {
  const std::string peer = name + "-peer";
  ip("link add " + name + " " + options + " type veth peer name " + peer + "\n" +  //
     "link set " + name + " addrgenmode none\n" +                                  //
     "link set " + peer + " addrgenmode none\n" +                                  //
     "link set " + name + " up\n" +                                                //
     "link set " + peer + " up\n");
  wait_until_running(name);
}

class OwnNetwork : public testing::Test {
 protected:
  void SetUp() override { enter_own_network(); }
};

// A directory in the place of this process's /proc/net: the table of IPv6 addresses is the one that
// the test puts there, or there is none.
class OwnProcNet {
 public:
  OwnProcNet() {
    const Outcome outcome = run_native({"mount", "--bind", scratch_.file(""), place_});
    EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  }
  ~OwnProcNet() { run_native({"umount", "-l", place_}); }
  OwnProcNet(const OwnProcNet&) = delete;
  OwnProcNet& operator=(const OwnProcNet&) = delete;

  void put_ipv6_table(const std::string& content) const { put(scratch_.file("if_inet6"), content); }
  [[nodiscard]] std::string file(const std::string& name) const { return scratch_.file(name); }

 private:
  const Scratch scratch_;
  const std::string place_ = "/proc/" + std::to_string(getpid()) + "/net";
};

}  // namespace kqsupt::tests
