// Addresses of both families read from any text and from any bytes, and written and read again.

#include "exact_input.h"
#include "kqsupt/net.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;

namespace {

// Writes the bytes into rooms up to what they need, and reads the text.
void write_and_read(uint32_t family, const uint8_t* bytes, uint32_t length) {
  for (uint32_t room = 0; room <= 46; ++room) {
    const std::unique_ptr<char[]> text(new char[room]);
    uint32_t size = room;
    const SMStatus status = SMInetAddrNetworkToUTF8(family, bytes, length, text.get(), &size);
    if (status == SM_STATUS_BUFFER_TOO_SMALL) {
      require(size == room && room < 46);
      continue;
    }
    require(status == SM_STATUS_SUCCESS && size <= room && size == std::strlen(text.get()) + 1);
    const std::unique_ptr<uint8_t[]> again(new uint8_t[length]);
    uint32_t again_size = length;
    require(SMInetAddrUTF8ToNetwork(family, text.get(), again.get(), &again_size) ==
            SM_STATUS_SUCCESS);
    require(again_size == length && std::memcmp(again.get(), bytes, length) == 0);
    return;
  }
  require(false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const uint32_t family = input.byte() % 4U;
  const uint32_t room = input.byte() % 20U;
  const uint32_t length = family == SM_INET_FAMILY_IPV4 ? 4 : 16;
  const bool is_family = family == SM_INET_FAMILY_IPV4 || family == SM_INET_FAMILY_IPV6;
  const std::unique_ptr<uint8_t[]> bytes(new uint8_t[room]);
  uint32_t bytes_size = room;
  const SMStatus status =
      SMInetAddrUTF8ToNetwork(family, input.text().get(), bytes.get(), &bytes_size);
  if (status == SM_STATUS_SUCCESS) {
    require(is_family && bytes_size == length && length <= room);
    write_and_read(family, bytes.get(), length);
  } else {
    require(bytes_size == room);
    require(status == SM_STATUS_INVALID_PARAMETER ||
            (status == SM_STATUS_BUFFER_TOO_SMALL && is_family && room < length));
  }

  const auto raw = input.bytes();
  char text[64];
  uint32_t text_size = sizeof text;
  if (is_family && input.size() == length) {
    write_and_read(family, raw.get(), length);
  } else {
    require(SMInetAddrNetworkToUTF8(family, raw.get(), input.size(), text, &text_size) ==
            SM_STATUS_INVALID_PARAMETER);
  }
  return 0;
}
