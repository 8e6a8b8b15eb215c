// XML elements, through the exported functions.

#include "xml_bench.h"

#include <kqsupt/log.h>
#include <kqsupt/text.h>

#include "ratio_table.h"

namespace kqbench {
namespace {

uint32_t size_of(const std::string& text) {
  return static_cast<uint32_t>(text.size() + 1);
}

// Level 1 escapes what an element's content has to.
constexpr SMXGValueFormat kEscaped = {0, 1};

void write_element(const Element& element) {
  static SMXGBuf* const attributes = SMXGBufAlloc(256, 0);
  static SMXGBuf* const buffer = SMXGBufAlloc(1024, 0);
  SMXGBufReAllocContent(attributes, 256, 0);
  SMXGBufReAllocContent(buffer, 1024, 0);
  SMXGBufCatAttribute(attributes, "id", &element.id, sizeof element.id, SMXLT_TYPE_U32, nullptr);
  SMXGBufCatAttribute(attributes, "source", element.source.c_str(), size_of(element.source),
                      SMXLT_TYPE_UTF8, nullptr);
  SMXGBufCatAttribute(attributes, "time", element.time.c_str(), size_of(element.time),
                      SMXLT_TYPE_UTF8, nullptr);
  require(SMXGBufCatNode(buffer, "Value", attributes, element.value.c_str(), size_of(element.value),
                         SMXLT_TYPE_UTF8, &kEscaped) == SM_STATUS_SUCCESS);
  benchmark::DoNotOptimize(buffer);
}

const bool kAdded = [] {
  add_family({"XML text",
              {"libxml2"},
              {{kElementRow, "element, 3 attributes, 200 bytes escaped", 0.25, "libxml2"}}});
  add_element_measurement(kOurs, write_element);
  return true;
}();

}  // namespace
}  // namespace kqbench
