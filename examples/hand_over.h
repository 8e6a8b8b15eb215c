// A record's block on the standard output of one process and the standard input of another.
#pragma once

#include <kqsupt.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

using Block = std::vector<uint8_t>;

inline void send_block(const Block& block) {
  for (size_t sent = 0; sent < block.size();) {
    const ssize_t count = write(STDOUT_FILENO, block.data() + sent, block.size() - sent);
    if (count >= 0) {
      sent += static_cast<size_t>(count);
    } else if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "standard output");
    }
  }
}

// Reads until `block` is full or the input ends, and returns how much of it is filled.
inline size_t receive_bytes(Block& block, size_t filled) {
  while (filled < block.size()) {
    const ssize_t count = read(STDIN_FILENO, block.data() + filled, block.size() - filled);
    if (count > 0) {
      filled += static_cast<size_t>(count);
    } else if (count == 0) {
      break;
    } else if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "standard input");
    }
  }
  return filled;
}

// Receives one block of a single record and not a byte more. What its header says is checked; that
// the rest was made by this library is up to who connected the pipe.
inline Block receive_block() {
  constexpr uint32_t kHeaderSize = 8;
  constexpr uint32_t kEntrySize = 8;
  Block block(kHeaderSize);
  const size_t received = receive_bytes(block, 0);
  if (received == 0) {
    throw std::runtime_error("nothing was sent");
  }
  if (received < kHeaderSize) {
    throw std::runtime_error("the record ends within its header");
  }
  uint16_t is_array = 0;
  const uint32_t size = SMSDOBinaryGetSize(block.data(), &is_array);
  if (size == 0) {
    throw std::runtime_error("what was sent has not the signature of a record of this host");
  }
  if (is_array != 0) {
    throw std::runtime_error("an array was sent where a record is expected");
  }
  if (size < kHeaderSize + kEntrySize * SMSDOBinaryGetCount(block.data(), nullptr)) {
    throw std::runtime_error("the header gives a size that its entries do not fit into");
  }
  block.resize(size);
  const size_t complete = receive_bytes(block, kHeaderSize);
  if (complete < size) {
    throw std::runtime_error("the record ends after " + std::to_string(complete) + " of " +
                             std::to_string(size) + " bytes");
  }
  return block;
}
