// system-call-driver ACTION K COMMAND…: runs a program and acts on it between its two calls of getppid,
// which mark what is tested.
//
//   kill         kills it at stop K, counting the entry and the exit of every system call
//   short        halves the length of the K-th write
//   ERRNO        has the K-th system call fail with that number, without being made
//
// Exits with 0 when it did so, with 99 when the program has no stop or call K, and otherwise as the
// program. It is always built for the machine that the tests run on, and drives an emulator as well.

#include <linux/audit.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

namespace {

constexpr int kNotReached = 99;

struct Call {
  uint64_t number;
  bool is_entry;
  bool is_wide;  // of a 64-bit program
};

Call call_of(pid_t program) {
  struct __ptrace_syscall_info info {};
  ptrace(PTRACE_GET_SYSCALL_INFO, program, sizeof info, &info);
  return {info.op == PTRACE_SYSCALL_INFO_ENTRY ? info.entry.nr : 0,
          info.op == PTRACE_SYSCALL_INFO_ENTRY, info.arch == AUDIT_ARCH_X86_64};
}

bool is_marker(const Call& call) {
  return call.is_entry && call.number == (call.is_wide ? SYS_getppid : 64U);
}
bool is_write(const Call& call) {
  return call.number == (call.is_wide ? SYS_write : 4U);
}

// Calls that are made for memory, threads and signals fail elsewhere.
bool may_fail(const Call& call) {
  static const std::set<uint64_t> kWide = {SYS_mmap,    SYS_munmap,         SYS_brk,
                                           SYS_futex,   SYS_rt_sigprocmask, SYS_mprotect,
                                           SYS_madvise, SYS_rt_sigaction,   SYS_getppid};
  static const std::set<uint64_t> kNarrow = {192, 91, 45, 240, 422, 175, 125, 219, 174, 64};
  return (call.is_wide ? kWide : kNarrow).count(call.number) == 0;
}

// A call that a signal can interrupt.
bool may_be_interrupted(const Call& call) {
  static const std::set<uint64_t> kWide = {SYS_open, SYS_openat, SYS_read, SYS_write, SYS_fcntl};
  static const std::set<uint64_t> kNarrow = {5, 295, 3, 4, 221};
  return (call.is_wide ? kWide : kNarrow).count(call.number) != 0;
}

class Driver {
 public:
  Driver(std::string action, long place) : action_(std::move(action)), place_(place) {}

  // True when the program is to go on.
  bool stop(pid_t program) {
    const Call call = call_of(program);
    if (is_marker(call)) {
      marked_ = !marked_;
      return true;
    }
    if (failing_) {
      set_result(program);
    } else if (marked_ && !done_) {
      act(program, call);
    }
    return !killed_;
  }
  [[nodiscard]] bool done() const { return done_; }

 private:
  void act(pid_t program, const Call& call) {
    const int error = std::atoi(action_.c_str());
    const bool counts =
        action_ == "kill" || (call.is_entry && (action_ == "short" ? is_write(call)
                                                : error == EINTR   ? may_be_interrupted(call)
                                                                   : may_fail(call)));
    if (!counts || --place_ != 0) {
      return;
    }
    done_ = true;
    if (action_ == "kill") {
      kill(program, SIGKILL);
      killed_ = true;
      return;
    }
    user_regs_struct registers{};
    ptrace(PTRACE_GETREGS, program, nullptr, &registers);
    if (action_ == "short") {
      registers.rdx = (registers.rdx + 1) / 2;
    } else {
      registers.orig_rax = static_cast<unsigned long long>(-1);
      failing_ = true;
    }
    ptrace(PTRACE_SETREGS, program, nullptr, &registers);
  }

  void set_result(pid_t program) {
    user_regs_struct registers{};
    ptrace(PTRACE_GETREGS, program, nullptr, &registers);
    registers.rax = static_cast<unsigned long long>(-std::atoll(action_.c_str()));
    ptrace(PTRACE_SETREGS, program, nullptr, &registers);
    failing_ = false;
  }

  std::string action_;
  long place_;
  bool marked_ = false;
  bool done_ = false;
  bool killed_ = false;
  bool failing_ = false;
};

}  // namespace

int main(int count, char** arguments) {
  if (count < 4) {
    return 2;
  }
  const pid_t program = fork();
  if (program == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    execvp(arguments[3], arguments + 3);
    _exit(127);
  }
  Driver driver(arguments[1], std::atol(arguments[2]));
  int status = 0;
  waitpid(program, &status, 0);
  ptrace(PTRACE_SETOPTIONS, program, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  for (int signal = 0; ptrace(PTRACE_SYSCALL, program, nullptr, signal) == 0;) {
    waitpid(program, &status, 0);
    if (!WIFSTOPPED(status)) {
      break;
    }
    const bool is_call = WSTOPSIG(status) == (SIGTRAP | 0x80);
    signal = is_call || WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
    if (is_call && !driver.stop(program)) {
      waitpid(program, &status, 0);
      break;
    }
  }
  if (!driver.done()) {
    return kNotReached;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 0;
}
