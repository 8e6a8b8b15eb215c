// CRC-32 by a table that is built when the library starts, and the bitwise generator.
#pragma once

#include <cstdint>

namespace kqsupt::containers {

// The module of the table, 1 KiB of heap that is only read between the two calls. Before the start,
// after a failed one and after the stop the checksums are the same, worked out bit by bit.
[[nodiscard]] bool start_crc32_table();
void stop_crc32_table();

// The exported operations.
uint32_t crc32_of_bytes(const void* data, uint32_t length);
uint32_t crc32_of_text(const char* text);
uint32_t crc32_of_lowered_text(const char* text);
uint32_t generate_crc32(const void* data, uint32_t data_length, int32_t total_length);

}  // namespace kqsupt::containers
