// XML text under failing allocations.

#include <cstring>
#include <string>

#include "faults/sweep.h"
#include "kqsupt/log.h"

namespace kqsupt::tests {
namespace {

// A buffer with just its first 64 bytes, almost full.
struct Xml {
  Xml() { (void)SMXGBufCatBeginNode(buffer, before.substr(1, before.size() - 2).c_str(), nullptr); }
  ~Xml() {
    SMXGBufFree(buffer);
    SMXGBufFree(made);
    SMFreeMem(text);
  }
  [[nodiscard]] bool unchanged() const {
    return made == nullptr && text == nullptr && before == buffer->string.content &&
           buffer->string.length == before.size();
  }
  std::string before = "<" + std::string(58, 'n') + ">";
  SMXGBuf* buffer = SMXGBufAlloc(64, 0);
  SMXGBuf* made = nullptr;
  char* text = nullptr;
  uint8_t bytes[100] = {};
  ustring ucs2[4] = {'a', 0xE9, '<', 0};
  SMXGValueFormat escaped{0, 2};
};

Row xml_row(const std::string& name, const Failures& failures, SMStatus (*call)(Xml&)) {
  return row<Xml>(name, failures, call, [](Xml& state) { return state.unchanged(); });
}

const Failures kNoMemory = {{SM_STATUS_NO_MEMORY, 0}};
constexpr SMStatus kFailed = 0xFFFFFFFF;

SMStatus done(bool is_done) {
  return is_done ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
}

}  // namespace

std::vector<Row> log_rows() {
  return {
      xml_row("SMXGBufAlloc", kNoMemory,
              [](Xml& state) {
                state.made = SMXGBufAlloc(10, 1);
                return done(state.made != nullptr);
              }),
      xml_row(
          "SMXGBufReAllocContent", kNoMemory,
          [](Xml& state) { return done(SMXGBufReAllocContent(state.buffer, 10, 1) != nullptr); }),
      xml_row("SMXGBufCatBeginNode", kNoMemory,
              [](Xml& state) { return SMXGBufCatBeginNode(state.buffer, "node", nullptr); }),
      xml_row("SMXGBufCatEndNode", kNoMemory,
              [](Xml& state) { return SMXGBufCatEndNode(state.buffer, "node"); }),
      xml_row("SMXGBufCatEmptyNode", kNoMemory,
              [](Xml& state) { return SMXGBufCatEmptyNode(state.buffer, "node", nullptr); }),
      xml_row("SMXGBufCatAttribute", kNoMemory,
              [](Xml& state) {
                return SMXGBufCatAttribute(state.buffer, "a", "<value>", 0, SMXLT_TYPE_UTF8,
                                           &state.escaped);
              }),
      xml_row("SMXGBufCatNode_bytes", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatNode(state.buffer, "n", nullptr, state.bytes, sizeof state.bytes,
                                      SMXLT_TYPE_BINARY, nullptr);
              }),
      xml_row("SMXGBufCatNode_ucs2", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatNode(state.buffer, "n", nullptr, state.ucs2, 0, SMXLT_TYPE_UCS2,
                                      &state.escaped);
              }),
      xml_row("SMXGBufCatNodeValue", kNoMemory,
              [](Xml& state) {
                return SMXGBufCatNodeValue(state.buffer, "<value>", 0, SMXLT_TYPE_UTF8,
                                           &state.escaped);
              }),
      xml_row("SMXGBufCatNodeValue_bytes", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatNodeValue(state.buffer, state.bytes, sizeof state.bytes,
                                           SMXLT_TYPE_BINARY, nullptr);
              }),
      xml_row("SMXGBufCatNodeValue_ucs2", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatNodeValue(state.buffer, state.ucs2, 0, SMXLT_TYPE_UCS2,
                                           &state.escaped);
              }),
      xml_row("SMXGBufCatAttribute_bytes", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatAttribute(state.buffer, "a", state.bytes, sizeof state.bytes,
                                           SMXLT_TYPE_BINARY, nullptr);
              }),
      xml_row("SMXGBufCatAttribute_ucs2", {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}},
              [](Xml& state) {
                return SMXGBufCatAttribute(state.buffer, "a", state.ucs2, 0, SMXLT_TYPE_UCS2,
                                           &state.escaped);
              }),
      xml_row("SMXGEscapeXMLUTF8Str", kNoMemory,
              [](Xml& state) {
                uint32_t size = 2;
                state.text = SMXGEscapeXMLUTF8Str("<&>", &size, 2);
                return done(state.text != nullptr);
              }),
  };
}

}  // namespace kqsupt::tests
