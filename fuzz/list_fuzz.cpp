// Lists converted from any separator to any other, and enumerations looked up in them.

#include <cstring>

#include "exact_input.h"
#include "kqsupt/config.h"
#include "kqsupt/text.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const char separator = static_cast<char>(input.byte());
  const auto text = input.text();
  if (separator != '\0') {
    uint32_t count = 0;
    uint32_t list_size = 0;
    char* list = SMUTF8ConvertXSVToYSV(text.get(), separator, '\0', &count, &list_size);
    require(list != nullptr);
    uint32_t items = 0;
    const char* item = list;
    for (; *item != '\0'; item += std::strlen(item) + 1) {
      require(std::strchr(item, separator) == nullptr);
      ++items;
    }
    require(items == count);
    require(item + 1 == list + list_size);
    uint32_t joined_count = 0;
    uint32_t joined_size = 0;
    char* joined = SMUTF8ConvertXSVToYSV(list, '\0', separator, &joined_count, &joined_size);
    require((joined == nullptr) == (count == 0));
    if (joined != nullptr) {
      require(joined_count == count - 1);
      require(joined_size == list_size - 1);
      require(std::strlen(joined) == joined_size - 1);
    }
    SMFreeMem(joined);
    SMFreeMem(list);
  }
  const SMEnums32 table[] = {{"?", 0x40000000, 0}, {"a", 1, 0}, {"bc", 2, 0}, {"", 4, 0}};
  char* const params[] = {text.get()};
  for (uint32_t multiple = 0; multiple < 2; ++multiple) {
    const uint32_t value = SMNVPGetEnums32Value(1, params, "p", separator & 1U, table, 4, multiple);
    require((value & ~0x40000007U) == 0);
  }
  return 0;
}
