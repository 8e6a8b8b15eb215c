// Typed values read from any text, and written and read again.

#include "exact_input.h"
#include "kqsupt/text.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;

namespace {

// Whether the text of a value is read as the same value again.
bool is_read_back(uint32_t type) {
  const uint32_t format = type & 0xFF00U;
  switch (type & 0xFFU) {
    case SMXLT_TYPE_BOOLEAN:
    case SMXLT_TYPE_LANGUAGE_ID:
    case SMXLT_TYPE_U8:
    case SMXLT_TYPE_U16:
    case SMXLT_TYPE_U32:
      return format != SMXLT_FMT_BASE2 && format <= SMXLT_FMT_HEX;
    case SMXLT_TYPE_S8:
    case SMXLT_TYPE_S16:
    case SMXLT_TYPE_S32:
    case SMXLT_TYPE_S64:
    case SMXLT_TYPE_U64:
    case SMXLT_TYPE_BINARY:
      return format == SMXLT_FMT_DEFAULT;
    default:
      return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const uint32_t type = (input.byte() % 20U) | (input.byte() % 6U) << 8U;
  const uint32_t room = input.byte();
  const auto text = input.text();

  const std::unique_ptr<uint8_t[]> value(new uint8_t[room]);
  uint32_t value_size = room;
  const SMStatus status =
      SMXLTUTF8ToTypeValue(text.get(), room != 0 ? value.get() : nullptr, &value_size, type);
  if (status == SM_STATUS_BUFFER_TOO_SMALL) {
    require((type & 0xFFU) == SMXLT_TYPE_UCS2 || value_size > room);
  }
  if (status == SM_STATUS_SUCCESS && room != 0) {
    require(value_size <= room);
    uint32_t text_size = 0;
    if (SMXLTTypeValueToUTF8(value.get(), value_size, nullptr, &text_size, type) ==
        SM_STATUS_BUFFER_TOO_SMALL) {
      const std::unique_ptr<char[]> written(new char[text_size]);
      const SMStatus written_status =
          SMXLTTypeValueToUTF8(value.get(), value_size, written.get(), &text_size, type);
      require(written_status == SM_STATUS_SUCCESS);
      if (is_read_back(type)) {
        const std::unique_ptr<uint8_t[]> again(new uint8_t[room]);
        uint32_t again_size = room;
        require(SMXLTUTF8ToTypeValue(written.get(), again.get(), &again_size, type) ==
                SM_STATUS_SUCCESS);
        require(again_size == value_size);
        require(std::memcmp(again.get(), value.get(), value_size) == 0);
      }
    }
  }

  // The bytes of the input as a value: those of the types that have a size of their own.
  const auto bytes = input.bytes();
  const bool sized = (type & 0xFFU) == SMXLT_TYPE_BINARY || (type & 0xFFU) == SMXLT_TYPE_UTF8 ||
                     (type & 0xFFU) == SMXLT_TYPE_HEX_BYTES;
  if (sized || (input.size() >= 8 && (type & 0xFFU) != SMXLT_TYPE_UCS2)) {
    const std::unique_ptr<char[]> written(new char[room]);
    std::memset(written.get(), 0, room);
    uint32_t text_size = room;
    if (SMXLTTypeValueToUTF8(bytes.get(), input.size(), written.get(), &text_size, type) ==
            SM_STATUS_SUCCESS &&
        room != 0) {
      require(text_size <= room + 1);
    }
  }
  return 0;
}
