// The exported functions on logs and XML text.

#include "kqsupt/log.h"

#include "frame/heap.h"
#include "log/xml_buffer.h"

using namespace kqsupt;

extern "C" {

SMXGBuf* SMXGBufAlloc(uint32_t initialCapacity, uint32_t withDeclaration) {
  return log::xml_alloc(initialCapacity, withDeclaration);
}

char* SMXGBufReAllocContent(SMXGBuf* buffer, uint32_t capacity, uint32_t withDeclaration) {
  return log::xml_restart(buffer, capacity, withDeclaration);
}

void SMXGBufFree(SMXGBuf* buffer) {
  log::xml_free(buffer, log::Content::kFree);
}
char* SMXGBufFreeGetContent(SMXGBuf* buffer) {
  return log::xml_free(buffer, log::Content::kKeep);
}
void SMXGBufFreeContent(char* content) {
  frame::release(content);
}

SMStatus SMXGBufCatBeginNode(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes) {
  return log::xml_begin_node(buffer, name, attributes);
}

SMStatus SMXGBufCatEndNode(SMXGBuf* buffer, const char* name) {
  return log::xml_end_node(buffer, name);
}

SMStatus SMXGBufCatEmptyNode(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes) {
  return log::xml_empty_node(buffer, name, attributes);
}

SMStatus SMXGBufCatAttribute(SMXGBuf* buffer, const char* name, const void* value,
                             uint32_t valueSize, uint32_t typeCode,
                             const SMXGValueFormat* valueFormat) {
  return log::xml_attribute(buffer, name, {value, valueSize, typeCode, valueFormat});
}

SMStatus SMXGBufCatNodeValue(SMXGBuf* buffer, const void* value, uint32_t valueSize,
                             uint32_t typeCode, const SMXGValueFormat* valueFormat) {
  return log::xml_value(buffer, {value, valueSize, typeCode, valueFormat});
}

SMStatus SMXGBufCatNode(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes,
                        const void* value, uint32_t valueSize, uint32_t typeCode,
                        const SMXGValueFormat* valueFormat) {
  return log::xml_node(buffer, name, attributes, {value, valueSize, typeCode, valueFormat});
}

char* SMXGEscapeXMLUTF8Str(const char* text, uint32_t* size, uint32_t escapeLevel) {
  return log::xml_escaped_copy(text, size, escapeLevel);
}

}  // extern "C"
