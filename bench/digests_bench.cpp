// Base64, CRC-32 and MD5: ours through its exported functions, and a CRC-32 from the textbook.

#include "digests_bench.h"

#include <kqsupt/containers.h>

#include "ratio_table.h"

namespace kqbench {

std::vector<Text> fresh_texts() {
  std::vector<Text> texts(kInputs);
  const std::vector<Bytes> inputs = fresh_bytes();
  for (size_t i = 0; i < kInputs; ++i) {
    SMBase64Encode(texts[i].data(), inputs[i].data(), kBytes, nullptr);
  }
  return texts;
}

namespace {

void add_ours() {
  add_bytes_measurement(kEncodeRow, kOurs, [](const Bytes& bytes) {
    SMBase64Encode(digests_output.data(), bytes.data(), kBytes, nullptr);
    benchmark::DoNotOptimize(digests_output);
  });
  add_text_measurement(kOurs, [](const Text& text) {
    SMBase64Decode(digests_output.data(), text.data(), kCharacters);
    benchmark::DoNotOptimize(digests_output);
  });
  add_bytes_measurement(kChecksumRow, kOurs, [](const Bytes& bytes) {
    benchmark::DoNotOptimize(SMCRC32Compute_vn(bytes.data(), kBytes));
  });
  add_bytes_measurement(kDigestRow, kOurs, [](const Bytes& bytes) {
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, bytes.data(), kBytes);
    SMRFC1321ComputeMsgDigest(&context);
    benchmark::DoNotOptimize(context);
  });
}

constexpr const char* kTextbook = "textbook loop";

// One table, one byte a step.
[[gnu::noinline]] uint32_t textbook_checksum(const uint8_t* data, size_t length) {
  static const std::array<uint32_t, 256> table = [] {
    std::array<uint32_t, 256> entries{};
    for (uint32_t i = 0; i < entries.size(); ++i) {
      uint32_t entry = i;
      for (int bit = 0; bit < 8; ++bit) {
        entry = (entry & 1) != 0 ? entry >> 1 ^ 0xEDB88320 : entry >> 1;
      }
      entries[i] = entry;
    }
    return entries;
  }();
  uint32_t crc = 0xFFFFFFFF;
  while (length-- != 0) {
    crc = table[(crc ^ *data++) & 0xFF] ^ crc >> 8;
  }
  return ~crc;
}

const bool kAdded = [] {
  add_family({"digests",
              {"OpenSSL", "zlib", kTextbook},
              {{kEncodeRow, "Base64 of 1 KiB", 0.6, "OpenSSL"},
               {kDecodeRow, "Base64 to 1 KiB", 0.6, "OpenSSL"},
               {kChecksumRow, "CRC-32 of 1 KiB", 1.1, kTextbook},
               // For the reader: it computes its constants at every use.
               {kDigestRow, "MD5 of 1 KiB", 0, ""}}});
  add_ours();
  add_bytes_measurement(kChecksumRow, kTextbook, [](const Bytes& bytes) {
    benchmark::DoNotOptimize(textbook_checksum(bytes.data(), kBytes));
  });
  return true;
}();

}  // namespace
}  // namespace kqbench
