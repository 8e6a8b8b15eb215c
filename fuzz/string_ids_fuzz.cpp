// Files of texts by number of any bytes.

#include "kqsupt/config.h"
#include "scratch_file.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::put_bytes;
using kqsupt::fuzz::require;
using kqsupt::fuzz::scratch_file;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const std::string& path = scratch_file("fuzz.strings");
  const uint32_t capacity = input.byte();
  const auto bytes = input.bytes();
  put_bytes(path, bytes.get(), input.size());
  for (const uint32_t id : {0U, 1U, 0x1A2BU}) {
    for (const uint32_t wanted : {0U, 0x407U}) {
      const std::unique_ptr<char[]> text(new char[capacity]);
      uint32_t language = wanted;
      uint32_t text_size = capacity;
      const uint32_t result = SMGetUTF8StrFromIDPathFile(
          id, &language, path.c_str(), capacity != 0 ? text.get() : nullptr, &text_size);
      require(result == text_size && result <= capacity);
      require(language == 0 || language == wanted);
      if (result != 0) {
        require(std::strlen(text.get()) + 1 == result);
        require(std::strpbrk(text.get(), "\r\n") == nullptr);
      }
    }
  }
  return 0;
}
