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

/* ---- Event logs --------------------------------------------------------------------------------
 *
 * The family's own logs lie in the directory "log" below the log path of the product Quillance:
 * "kqsys32.log" of UCS-2 text and "kqsys32.xml", an XML document. Each has one backup, whose name
 * ends with "_" instead of its last character: before an event that would make the log reach its
 * largest size the log takes the backup's place, and a new one begins with an event that says so.
 *
 * Any number of threads and processes may append at the same time: each event is whole. One that
 * cannot be written is not there at all, and the events before it are as they were. What a process
 * that was killed left of an event is taken away by the next one.
 *
 * Texts are UTF-8. Paths are of any log; the files beside them are theirs alone. A directory that
 * is missing is made with the mode 0755, a file with 0664; one that is there keeps its bits for
 * reading and writing. */

/* Where events go, combined. */
enum {
  SM_LOG_OS = 2,   /* the system's own log: see SMAppendToOSSysLog */
  SM_LOG_TEXT = 4, /* kqsys32.log */
  SM_LOG_XML = 8   /* kqsys32.xml */
};

/* What an event is. */
enum {
  SM_EVENT_NONE = 0,
  SM_EVENT_ERROR = 1,
  SM_EVENT_WARNING = 2,
  SM_EVENT_INFORMATION = 4,
  SM_EVENT_AUDIT_SUCCESS = 8,
  SM_EVENT_AUDIT_FAILURE = 16
};

/* Appends an event to each log that `logFlags` names, at their current largest sizes.
 *
 * `type`: an SM_EVENT_ value. `category`: 1 to 6. `source`: 1 to 511 bytes for the XML log, 1 to
 * 1,023 UCS-2 units for the text log. `description`: 1 to 8,191 bytes for the XML log, 1 to 16,383
 * units for the text log. `data`: `dataLength` bytes, at most 32,768; NULL when that is 0.
 *
 * The status is that of the XML log when it is meant: see SMAppendToXMLLog. The others do not say
 * whether the event was written: the text log takes no event with another type, with a text of
 * another length or one that is not UTF-8, or with too much data. SM_STATUS_UNSUCCESSFUL:
 * `logFlags` is 0. When the directory of logs is not known the status is that of
 * SMGetPathByProductIDandType.*/
KQSUPT_API SMStatus SMAppendToLog(uint32_t logFlags, uint16_t type, uint16_t category,
                                  uint32_t eventID, const char* source, const char* description,
                                  const void* data, uint32_t dataLength);

/* Appends an event to the XML log `pathFileName`, which becomes its own backup first when it would
 * reach `maxSize` bytes.
 *
 * `type` is written as it is. `userInfo`, `source`: 1 to 511 bytes each; `description`: 1 to 8,191
 * bytes; `link`: of any length. Each of the four may be NULL, and is then empty. Only `link` is
 * escaped: the others must hold no markup characters. `data`: `dataLength` bytes, at most 32,768.
 *
 * SM_STATUS_UNSUCCESSFUL: no path, a text of another length, or data that is missing or too long.
 * SM_STATUS_OPERATION_FAILED: the file is longer than 37 bytes and has no "</EventLog>" behind
 * them, nor an element that a killed process did not finish; nothing is written.
 * SM_STATUS_OUT_OF_SPACE: the file takes no more. 0xFFFFFFFF: the category is unknown, memory is
 * short, or the directory or the file cannot be made or opened. Statuses of the lock of the file
 * are passed on: SM_STATUS_NO_MEMORY, SM_STATUS_ACCESS_DENIED, 0xFFFFFFFF. */
KQSUPT_API SMStatus SMAppendToXMLLog(const char* pathFileName, uint16_t type, uint16_t category,
                                     uint32_t eventID, const char* userInfo, const char* source,
                                     const char* description, const char* link, const void* data,
                                     uint32_t dataLength, uint32_t maxSize);

/* Deletes each log that `logFlags` names and begins a new one with the event "Log was cleared".
 * SM_STATUS_UNSUCCESSFUL: `logFlags` is 0, or `source` is one that the log does not take: nothing
 * is deleted. 1: the system's own log is meant, which cannot be cleared here. 0xFFFFFFFF: there is
 * no such log, or it cannot be deleted. Further statuses are those of the append. When both logs
 * are meant the first failure is told. */
KQSUPT_API SMStatus SMClearLog(uint32_t logFlags, uint16_t category, const char* source);

/* The same for any XML log, with the name of who clears it; `userInfo` and `source` as for
 * SMAppendToXMLLog. SM_STATUS_UNSUCCESSFUL: no path, or a text that the log does not take.
 * 0xFFFFFFFF: the category is unknown, or the log cannot be deleted, because there is none, too. */
KQSUPT_API SMStatus SMClearXMLLog(const char* pathFileName, uint16_t category, const char* userInfo,
                                  const char* source);

/* Looks for the file and makes none. Always 0. */
KQSUPT_API SMStatus SMForceXMLLogExists(const char* pathFileName);

/* The path of the text log, or of the XML log when `logFlags` names both. `*size` is the room of
 * `buffer` in bytes and receives the path's size with its terminator.
 * SM_STATUS_INVALID_PARAMETER: `size` is NULL. SM_STATUS_UNSUCCESSFUL: no log is named. 1: the
 * system's own log is. SM_STATUS_BUFFER_TOO_SMALL: `buffer` is NULL or has less than 256 bytes, of
 * which `*size` tells, or less than the path needs. Further statuses are those of
 * SMGetPathByProductIDandType. */
KQSUPT_API SMStatus SMGetLogPathFileName(uint32_t logFlags, char* buffer, uint32_t* size);

/* The path of that log's backup. Sizes and statuses as for SMGetLogPathFileName. */
KQSUPT_API SMStatus SMGetBackupLogPathFileName(uint32_t logFlags, char* buffer, uint32_t* size);

/* The path of the backup of any log. SM_STATUS_INVALID_PARAMETER: `pathFileName` has less than two
 * characters or is NULL, or `size` is. SM_STATUS_BUFFER_TOO_SMALL: `buffer` is NULL or too small,
 * and `*size` receives the bytes that are needed. */
KQSUPT_API SMStatus SMGetBackupXMLLogPathFileName(const char* pathFileName, char* buffer,
                                                  uint32_t* size);

/* Sets, for this process, the size in bytes that a log must not reach: 1,048,576 (131,072 where
 * SMOSTypeGet answers 4) to 4,194,304. SM_STATUS_INVALID_PARAMETER: another size, or a path that is
 * NULL, empty or longer than 255 bytes. SM_STATUS_NO_MEMORY: nothing was set. */
KQSUPT_API SMStatus SMSetLogMaxSize(const char* pathFileName, uint32_t maxSize);

/* The size that was set, or else the smallest one. SM_STATUS_INVALID_PARAMETER: `maxSize` is NULL,
 * or the path is NULL, empty or longer than 255 bytes. SM_STATUS_NO_MEMORY. */
KQSUPT_API SMStatus SMGetLogMaxSize(const char* pathFileName, uint32_t* maxSize);

/* ---- Rotated logs ------------------------------------------------------------------------------
 *
 * Plain logs with older generations beside them: the path with ".1" behind it is the newest, the
 * one with the number of generations the oldest. Nothing is locked: messages of several processes
 * come in any order, each of them whole. Who comes while another process rotates does not rotate
 * again. */

/* What stands around a message. */
enum {
  SM_LOG_PREFIX_TIME = 1,   /* "[Nov 15 2026 00:31:59] ", in local time */
  SM_LOG_PREFIX_THREAD = 2, /* "[PROCESS:THREAD] ", as numbers */
  SM_LOG_SUFFIX_NEWLINE = 4
};

/* Appends a message, as it is, between what `prefixFlags` says, after SMFileRotateCheck. The file
 * keeps its bits for reading and writing over a rotation; one that was not there has the mode 0644.
 * SM_STATUS_INVALID_PARAMETER: `message` or `pathFileName` is NULL. 0xFFFFFFFF: the file cannot be
 * opened, or did not take all of it. */
KQSUPT_API SMStatus SMFileLogMsgToRotatedLog(const char* message, const char* pathFileName,
                                             uint32_t maxSize, uint32_t count,
                                             uint32_t prefixFlags);

/* Makes a file of more than `maxSize` bytes the generation 1, each generation the next, and drops
 * the one that was number `count`. With `count` 0 the file is deleted. NULL is ignored, and so is
 * what cannot be renamed. */
KQSUPT_API void SMFileRotateCheck(const char* pathFileName, uint32_t maxSize, uint32_t count);

/* Deletes the log and, when `deleteGenerations` is 1, its generations 1 to `count`. NULL is
 * ignored, and so is what is not there. */
KQSUPT_API void SMFileDeleteRotated(const char* pathFileName, uint32_t deleteGenerations,
                                    uint32_t count);

#ifdef __cplusplus
}
#endif

#endif
