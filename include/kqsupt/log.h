/* Logs, and the XML text that goes into them. */
#ifndef KQSUPT_LOG_H
#define KQSUPT_LOG_H

#include <kqsupt/frame.h>
#include <kqsupt/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- XML generation buffers --------------------------------------------------------------------
 *
 * A buffer of XML text that is appended to: tags, attributes and typed values. It holds exactly
 * what it is told, with no blanks or line ends of its own. A list of attributes is a second such
 * buffer. On failure a buffer is as it was. A buffer belongs to one thread at a time.
 *
 * Each Cat function answers SM_STATUS_INVALID_PARAMETER when the buffer or the name is NULL and
 * SM_STATUS_NO_MEMORY when memory is short; the further statuses are those of the value. */

/* Made by SMXGBufAlloc only. */
typedef struct SMXGBuf {
  SMSSUTF8Str string;
} SMXGBuf;

/* How a value becomes text. */
typedef struct SMXGValueFormat {
  uint16_t flags;      /* SMXLT_FMT_ flags, combined with the type code */
  uint8_t escapeLevel; /* for text: how many times it is escaped, 0 to 16 */
} SMXGValueFormat;

/* A new buffer of at least 64 bytes, which begins with the XML declaration when `withDeclaration`
 * is 1. The caller releases it with SMXGBufFree or SMXGBufFreeGetContent. NULL when memory is
 * short. */
KQSUPT_API SMXGBuf* SMXGBufAlloc(uint32_t initialCapacity, uint32_t withDeclaration);

/* Starts the buffer anew with exactly `capacity` bytes, with the declaration when `withDeclaration`
 * is 1, and returns its content, which stays the buffer's. With `capacity` 0 it has none. NULL when
 * `buffer` is NULL, there is no content, or memory is short: then the buffer is as it was. */
KQSUPT_API char* SMXGBufReAllocContent(SMXGBuf* buffer, uint32_t capacity,
                                       uint32_t withDeclaration);

/* Frees the buffer with its content. NULL is ignored. */
KQSUPT_API void SMXGBufFree(SMXGBuf* buffer);

/* Frees the buffer and returns its content, a terminated text, which the caller releases with
 * SMXGBufFreeContent. NULL when `buffer` is NULL or has no content. */
KQSUPT_API char* SMXGBufFreeGetContent(SMXGBuf* buffer);

/* Frees what SMXGBufFreeGetContent returned. NULL is ignored. */
KQSUPT_API void SMXGBufFreeContent(char* content);

/* Appends "<name>", with the content of `attributes` behind the name when that is not NULL or
 * empty. */
KQSUPT_API SMStatus SMXGBufCatBeginNode(SMXGBuf* buffer, const char* name,
                                        const SMXGBuf* attributes);

/* Appends "</name>". */
KQSUPT_API SMStatus SMXGBufCatEndNode(SMXGBuf* buffer, const char* name);

/* Appends "<name />", with the content of `attributes` behind the name when that is not NULL or
 * empty. */
KQSUPT_API SMStatus SMXGBufCatEmptyNode(SMXGBuf* buffer, const char* name,
                                        const SMXGBuf* attributes);

/* Appends name="value", after a blank when the buffer is not empty. The value is as in
 * SMXGBufCatNodeValue, with its statuses. */
KQSUPT_API SMStatus SMXGBufCatAttribute(SMXGBuf* buffer, const char* name, const void* value,
                                        uint32_t valueSize, uint32_t typeCode,
                                        const SMXGValueFormat* valueFormat);

/* Appends a value as text. `typeCode` is a SMXLT_TYPE_ code from BOOLEAN to UCS2; 48 and 50 stand
 * for UTF-8 text, 49 for UCS-2 text. `valueSize` in bytes counts the terminator of UTF-8 text,
 * which ends at its terminator when that is 0; binary values need it and the others do not.
 * `valueFormat` may be NULL: no flags, no escaping. Text is written as it is unless its escape
 * level is above 0. SM_STATUS_DATA_NOT_FOUND: `value` is NULL. 0xFFFFFFFF: there is no such type
 * code, UCS-2 text does not convert, or memory is short. Otherwise the status of
 * SMXLTTypeValueToUTF8, which has as much room as a number of the type takes in decimal. */
KQSUPT_API SMStatus SMXGBufCatNodeValue(SMXGBuf* buffer, const void* value, uint32_t valueSize,
                                        uint32_t typeCode, const SMXGValueFormat* valueFormat);

/* Appends "<name>value</name>", with attributes as in SMXGBufCatBeginNode and a value as in
 * SMXGBufCatNodeValue. With `value` NULL it appends "<name></name>" and succeeds. */
KQSUPT_API SMStatus SMXGBufCatNode(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes,
                                   const void* value, uint32_t valueSize, uint32_t typeCode,
                                   const SMXGValueFormat* valueFormat);

/* A copy of `text` with the five characters that XML gives a meaning to written as entities, the
 * result escaped again until that has been done `escapeLevel` times, 16 at the most. `*size` is the
 * capacity to begin with and receives the length of the copy without its terminator. The caller
 * releases the copy with SMFreeMem. NULL when `text` or `size` is NULL, `escapeLevel` is 0 or
 * memory is short. */
KQSUPT_API char* SMXGEscapeXMLUTF8Str(const char* text, uint32_t* size, uint32_t escapeLevel);

#ifdef __cplusplus
}
#endif

#endif
