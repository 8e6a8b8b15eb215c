// UCS-2 text as escapes, with every capacity that matters.

#include "exact_input.h"
#include "kqsupt/text.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const uint32_t capacity = input.byte();
  const auto bytes = input.bytes();
  const size_t units = input.size() / sizeof(ustring);
  const std::unique_ptr<ustring[]> text(new ustring[units + 1]);
  std::memcpy(text.get(), bytes.get(), units * sizeof(ustring));
  text[units] = 0;

  uint32_t needed = 0;
  const SMStatus asked = SMUCS2ToEscape(nullptr, &needed, text.get());
  if (asked != SM_STATUS_BUFFER_TOO_SMALL && asked != SM_STATUS_SUCCESS) {
    return 0;
  }
  require(needed >= 1);
  for (const uint32_t room : {needed, needed - 1, capacity}) {
    const std::unique_ptr<char[]> escaped(new char[room]);
    uint32_t escaped_size = room;
    const SMStatus status =
        SMUCS2ToEscape(room != 0 ? escaped.get() : nullptr, &escaped_size, text.get());
    require(escaped_size == needed);
    require((status == SM_STATUS_SUCCESS) == (room >= needed && room != 0));
    if (status == SM_STATUS_SUCCESS) {
      require(std::strlen(escaped.get()) + 1 == needed);
    }
  }
  return 0;
}
