// The listener at the system's log, in the place of a daemon: the sandbox's /dev is nobody else's.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <string>

namespace kqsupt::tests {

// The kernel keeps some ten lines that nobody has received yet; who logs more waits.
class SystemLog {
 public:
  SystemLog() : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::string(kPlace).copy(place.sun_path, sizeof place.sun_path - 1);
    unlink(kPlace);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0) {
      throw std::runtime_error("cannot listen at the system's log");
    }
  }
  SystemLog(const SystemLog&) = delete;
  SystemLog& operator=(const SystemLog&) = delete;
  ~SystemLog() {
    close(socket_);
    unlink(kPlace);
  }

  // The next line, without its time, such as "<30>agent: text". "" when nobody has logged one.
  [[nodiscard]] std::string line() const { return without_time(received(MSG_DONTWAIT)); }
  // The same; waits for one.
  [[nodiscard]] std::string awaited_line() const { return without_time(received(0)); }

 private:
  static constexpr const char* kPlace = "/dev/log";

  [[nodiscard]] std::string received(int flags) const {
    std::array<char, 8192> buffer;
    ssize_t size = 0;
    do {
      size = recv(socket_, buffer.data(), buffer.size(), flags);
    } while (size < 0 && errno == EINTR);
    return {buffer.data(), size > 0 ? static_cast<size_t>(size) : 0};
  }
  // "<30>Jan  1 00:00:00 agent: text"
  static std::string without_time(std::string line) {
    constexpr size_t kTimeSize = 16;
    const size_t time = line.find('>') + 1;
    return time != 0 && line.size() >= time + kTimeSize ? line.erase(time, kTimeSize) : line;
  }

  int socket_;
};

}  // namespace kqsupt::tests
