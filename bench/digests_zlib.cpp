// CRC-32: zlib's.

#include <zlib.h>

#include "digests_bench.h"

namespace kqbench {
namespace {

const bool kAdded = [] {
  add_bytes_measurement(kChecksumRow, "zlib", [](const Bytes& bytes) {
    benchmark::DoNotOptimize(crc32(0, bytes.data(), kBytes));
  });
  return true;
}();

}  // namespace
}  // namespace kqbench
