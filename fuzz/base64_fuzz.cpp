// Base64 both ways against a model, from and to memory of the exact size. The input is taken as
// bytes to encode, the last one being the byte after them; as an alphabet of 64 characters with
// such bytes behind it; and as a text to decode.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "exact_input.h"
#include "kqsupt/containers.h"
#include "support/base64_model.h"

namespace {

using kqsupt::fuzz::require;
using kqsupt::tests::base64_decoding_model;
using kqsupt::tests::base64_model;
using kqsupt::tests::kStandardAlphabet;
using Memory = std::vector<char>;  // exactly as large as its content

std::string decode(std::string_view text) {
  const std::string expected = base64_decoding_model(text);
  const Memory in(text.begin(), text.end());
  Memory out(expected.size() + 1, '#');
  require(SMBase64Decode(out.data(), in.data(), static_cast<int32_t>(in.size())) == 0);
  require(out.back() == '\0');
  out.pop_back();
  require(std::string_view(out.data(), out.size()) == expected);
  return expected;
}

std::string encode(std::string_view bytes, size_t length, const char* alphabet) {
  const Memory in(bytes.begin(),
                  bytes.begin() + static_cast<ptrdiff_t>(length + (length % 3 != 0 ? 1 : 0)));
  Memory out((length + 2) / 3 * 4 + 1, '#');
  require(SMBase64Encode(out.data(), in.data(), static_cast<int32_t>(length), alphabet) == 0);
  require(out.back() == '\0');
  out.pop_back();
  return {out.begin(), out.end()};
}

void encode_and_decode(std::string_view bytes) {
  const size_t length = bytes.size() - 1;
  const std::string text = encode(bytes, length, nullptr);
  require(text == base64_model(bytes, length));
  require(decode(text) == bytes.substr(0, length));
}

void encode_with_alphabet(std::string_view alphabet, std::string_view bytes) {
  const Memory characters(alphabet.begin(), alphabet.end());
  const size_t length = bytes.size() - 1;
  require(encode(bytes, length, characters.data()) == base64_model(bytes, length, alphabet));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  decode(input);
  if (!input.empty()) {
    encode_and_decode(input);
  }
  if (input.size() > 64) {
    encode_with_alphabet(input.substr(0, 64), input.substr(64));
  }
  return 0;
}
