// The exported functions on logs and XML text.

#include "kqsupt/log.h"

#include "frame/heap.h"
#include "log/event_log.h"
#include "log/log_sizes.h"
#include "log/rotated_log.h"
#include "log/xml_buffer.h"
#include "log/xml_event.h"

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

SMStatus SMAppendToLog(uint32_t logFlags, uint16_t type, uint16_t category, uint32_t eventID,
                       const char* source, const char* description, const void* data,
                       uint32_t dataLength) {
  return log::append_event(
      logFlags, {type, category, eventID, source, description, data, dataLength, nullptr, nullptr});
}
SMStatus SMAppendToXMLLog(const char* pathFileName, uint16_t type, uint16_t category,
                          uint32_t eventID, const char* userInfo, const char* source,
                          const char* description, const char* link, const void* data,
                          uint32_t dataLength, uint32_t maxSize) {
  return log::append_xml_event(
      pathFileName,
      {type, category, eventID, source, description, data, dataLength, userInfo, link}, maxSize);
}
SMStatus SMClearLog(uint32_t logFlags, uint16_t category, const char* source) {
  return log::clear_logs(logFlags, category, source);
}
SMStatus SMClearXMLLog(const char* pathFileName, uint16_t category, const char* userInfo,
                       const char* source) {
  return log::clear_xml_log(pathFileName, category, userInfo, source);
}
SMStatus SMForceXMLLogExists(const char* pathFileName) {
  return log::look_for_log(pathFileName);
}
SMStatus SMGetLogPathFileName(uint32_t logFlags, char* buffer, uint32_t* size) {
  return log::log_path(logFlags, buffer, size);
}
SMStatus SMGetBackupLogPathFileName(uint32_t logFlags, char* buffer, uint32_t* size) {
  return log::backup_log_path(logFlags, buffer, size);
}
SMStatus SMGetBackupXMLLogPathFileName(const char* pathFileName, char* buffer, uint32_t* size) {
  return log::backup_path_of(pathFileName, buffer, size);
}
SMStatus SMSetLogMaxSize(const char* pathFileName, uint32_t maxSize) {
  return log::set_log_max_size(pathFileName, maxSize);
}
SMStatus SMGetLogMaxSize(const char* pathFileName, uint32_t* maxSize) {
  return log::get_log_max_size(pathFileName, maxSize);
}

SMStatus SMFileLogMsgToRotatedLog(const char* message, const char* pathFileName, uint32_t maxSize,
                                  uint32_t count, uint32_t prefixFlags) {
  return log::append_to_rotated_log(message, pathFileName, maxSize, count, prefixFlags);
}
void SMFileRotateCheck(const char* pathFileName, uint32_t maxSize, uint32_t count) {
  log::rotate_log(pathFileName, maxSize, count);
}
void SMFileDeleteRotated(const char* pathFileName, uint32_t deleteGenerations, uint32_t count) {
  log::delete_rotated_log(pathFileName, deleteGenerations, count);
}

}  // extern "C"
