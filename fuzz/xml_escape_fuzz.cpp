// Any text escaped, and the escapes undone again.

#include <cstring>
#include <string>

#include "exact_input.h"
#include "kqsupt/log.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;

namespace {

// Undoes one level.
std::string unescaped(const std::string& text) {
  static constexpr std::pair<const char*, char> kEntities[] = {
      {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
  std::string plain;
  for (size_t i = 0; i < text.size();) {
    bool is_entity = false;
    for (const auto& [entity, byte] : kEntities) {
      if (text.compare(i, std::strlen(entity), entity) == 0) {
        plain += byte;
        i += std::strlen(entity);
        is_entity = true;
        break;
      }
    }
    if (!is_entity) {
      require(std::strchr("&<>\"'", text[i]) == nullptr);
      plain += text[i++];
    }
  }
  return plain;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const uint32_t level = input.byte() % 4U + 1;
  uint32_t length = input.byte();
  const auto text = input.text();
  char* escaped = SMXGEscapeXMLUTF8Str(text.get(), &length, level);
  require(escaped != nullptr && std::strlen(escaped) == length);
  std::string undone(escaped, length);
  SMFreeMem(escaped);
  for (uint32_t i = 0; i < level; ++i) {
    undone = unescaped(undone);
  }
  require(undone == text.get());

  // The same text as the value of an element.
  SMXGBuf* buffer = SMXGBufAlloc(input.size(), 0);
  const SMXGValueFormat format{0, static_cast<uint8_t>(level)};
  require(SMXGBufCatNode(buffer, "n", nullptr, text.get(), input.size() + 1, SMXLT_TYPE_UTF8,
                         &format) == SM_STATUS_SUCCESS);
  require(buffer->string.length == length + 7);
  SMXGBufFree(buffer);
  return 0;
}
