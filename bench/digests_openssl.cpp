// Base64 and MD5: OpenSSL's.

#include <openssl/evp.h>

#include "digests_bench.h"

namespace kqbench {
namespace {

constexpr const char* kOpenSsl = "OpenSSL";

auto* output() {
  return reinterpret_cast<unsigned char*>(digests_output.data());
}

const bool kAdded = [] {
  add_bytes_measurement(kEncodeRow, kOpenSsl, [](const Bytes& bytes) {
    require(EVP_EncodeBlock(output(), bytes.data(), kBytes) == kCharacters);
    benchmark::DoNotOptimize(digests_output);
  });
  add_text_measurement(kOpenSsl, [](const Text& text) {
    require(EVP_DecodeBlock(output(), reinterpret_cast<const unsigned char*>(text.data()),
                            kCharacters) > 0);
    benchmark::DoNotOptimize(digests_output);
  });
  add_bytes_measurement(kDigestRow, kOpenSsl, [](const Bytes& bytes) {
    static EVP_MD_CTX* const context = EVP_MD_CTX_new();
    require(EVP_DigestInit_ex(context, EVP_md5(), nullptr) == 1 &&
            EVP_DigestUpdate(context, bytes.data(), kBytes) == 1 &&
            EVP_DigestFinal_ex(context, output(), nullptr) == 1);
    benchmark::DoNotOptimize(digests_output);
  });
  return true;
}();

}  // namespace
}  // namespace kqbench
