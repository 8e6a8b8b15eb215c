/** @file
 * Logs, and the XML text that goes into them. */
#ifndef KQSUPT_LOG_H
#define KQSUPT_LOG_H

#include <kqsupt/frame.h>
#include <kqsupt/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup log_xml XML generation buffers
 *
 * A buffer of XML text that is appended to: tags, attributes and typed values. It holds exactly
 * what it is told, with no blanks or line ends of its own. A list of attributes is a second such
 * buffer. On failure a buffer is as it was. A buffer belongs to one thread at a time.
 *
 * Each Cat function answers SM_STATUS_INVALID_PARAMETER when the buffer or the name is NULL and
 * SM_STATUS_NO_MEMORY when memory is short; the further statuses are those of the value.
 * @{ */

/** A buffer of XML text. Made by SMXGBufAlloc only. */
typedef struct SMXGBuf {
  SMSSUTF8Str string; /**< the text so far */
} SMXGBuf;

/** How a value becomes text. */
typedef struct SMXGValueFormat {
  uint16_t flags;      /**< SMXLT_FMT_ flags, combined with the type code */
  uint8_t escapeLevel; /**< for text: how many times it is escaped, 0 to 16 */
} SMXGValueFormat;

/** Makes a new buffer of at least 64 bytes.
 *
 * @param[in] initialCapacity the capacity to begin with, in bytes; less than 64 stands for 64.
 * @param[in] withDeclaration with 1 the buffer begins with the XML declaration; with any other
 *   value it is empty.
 * @return The buffer, which the caller releases with SMXGBufFree or SMXGBufFreeGetContent; NULL
 *   when memory is short. */
KQSUPT_API SMXGBuf* SMXGBufAlloc(uint32_t initialCapacity, uint32_t withDeclaration);

/** Starts the buffer anew with exactly `capacity` bytes.
 *
 * @param[in,out] buffer the buffer. NULL is answered with NULL; stays the caller's.
 * @param[in] capacity the new capacity in bytes; with 0 the buffer has no content.
 * @param[in] withDeclaration with 1 the content begins with the XML declaration; with any other
 *   value it is empty.
 * @return The content, which stays the buffer's: borrowed until the buffer changes. NULL when
 *   `buffer` is NULL, there is no content, or memory is short: then the buffer is as it was. */
KQSUPT_API char* SMXGBufReAllocContent(SMXGBuf* buffer, uint32_t capacity,
                                       uint32_t withDeclaration);

/** Frees the buffer with its content.
 *
 * @param[in] buffer the buffer, which the call takes over and frees. NULL is ignored. */
KQSUPT_API void SMXGBufFree(SMXGBuf* buffer);

/** Frees the buffer and returns its content, a terminated text.
 *
 * @param[in] buffer the buffer, which the call takes over and frees. NULL is answered with NULL.
 * @return The content, which the caller releases with SMXGBufFreeContent; NULL when `buffer` is
 *   NULL or has no content. */
KQSUPT_API char* SMXGBufFreeGetContent(SMXGBuf* buffer);

/** Frees what SMXGBufFreeGetContent returned.
 *
 * @param[in] content the content, which the call takes over and frees. NULL is ignored. */
KQSUPT_API void SMXGBufFreeContent(char* content);

/** Appends `<name>`, with the content of `attributes` behind the name.
 *
 * @param[in,out] buffer the buffer that is appended to; on failure it is as it was. Not NULL; stays
 *   the caller's.
 * @param[in] name the name of the element, UTF-8. Not NULL; borrowed for the call.
 * @param[in] attributes the attributes, as SMXGBufCatAttribute writes them; NULL or empty for none.
 *   Not `buffer` itself; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the tag was appended.
 * @retval SM_STATUS_INVALID_PARAMETER `buffer` or `name` is NULL, or `attributes` is `buffer`.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the buffer has no content. */
KQSUPT_API SMStatus SMXGBufCatBeginNode(SMXGBuf* buffer, const char* name,
                                        const SMXGBuf* attributes);

/** Appends `</name>`.
 *
 * @param[in,out] buffer the buffer that is appended to; on failure it is as it was. Not NULL; stays
 *   the caller's.
 * @param[in] name the name of the element, UTF-8. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the tag was appended.
 * @retval SM_STATUS_INVALID_PARAMETER `buffer` or `name` is NULL.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the buffer has no content. */
KQSUPT_API SMStatus SMXGBufCatEndNode(SMXGBuf* buffer, const char* name);

/** Appends `<name />`, with the content of `attributes` behind the name.
 *
 * @param[in,out] buffer the buffer that is appended to; on failure it is as it was. Not NULL; stays
 *   the caller's.
 * @param[in] name the name of the element, UTF-8. Not NULL; borrowed for the call.
 * @param[in] attributes the attributes, as SMXGBufCatAttribute writes them; NULL or empty for none.
 *   Not `buffer` itself; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the tag was appended.
 * @retval SM_STATUS_INVALID_PARAMETER `buffer` or `name` is NULL, or `attributes` is `buffer`.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the buffer has no content. */
KQSUPT_API SMStatus SMXGBufCatEmptyNode(SMXGBuf* buffer, const char* name,
                                        const SMXGBuf* attributes);

/** Appends `name="value"`, after a blank when the buffer is not empty. The value is as in
 * SMXGBufCatNodeValue, with its statuses.
 *
 * @param[in,out] buffer the buffer that is appended to; on failure it is as it was. Not NULL; stays
 *   the caller's.
 * @param[in] name the name of the attribute, UTF-8. Not NULL; borrowed for the call.
 * @param[in] value the value. Not NULL; borrowed for the call.
 * @param[in] valueSize the size of the value in bytes. It counts the terminator of UTF-8 text,
 *   which ends at its terminator when this is 0; binary values need it and the others do not.
 * @param[in] typeCode a SMXLT_TYPE_ code from BOOLEAN to UCS2; 48 and 50 stand for UTF-8 text, 49
 *   for UCS-2 text.
 * @param[in] valueFormat the notation and how many times text is escaped; NULL for no flags, no
 *   escaping; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the attribute was appended.
 * @retval SM_STATUS_INVALID_PARAMETER `buffer` or `name` is NULL.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the buffer has no content.
 * @retval SM_STATUS_DATA_NOT_FOUND `value` is NULL.
 * @retval 0xFFFFFFFF there is no such type code, UCS-2 text does not convert, or memory is short.
 * @retval SM_STATUS_UNSUCCESSFUL binary data in a notation that it is not written in, or one of the
 *   type codes 33 to 35 and 37 to 40, which have no text.
 * @retval SM_STATUS_BUFFER_TOO_SMALL a number takes more room in binary digits than in decimal. */
KQSUPT_API SMStatus SMXGBufCatAttribute(SMXGBuf* buffer, const char* name, const void* value,
                                        uint32_t valueSize, uint32_t typeCode,
                                        const SMXGValueFormat* valueFormat);

/** Appends a value as text. Text is written as it is unless its escape level is above 0. Other
 * values are written as SMXLTTypeValueToUTF8 writes them, which has as much room as a number of the
 * type takes in decimal.
 *
 * @param[in,out] buffer the buffer that is appended to; on failure it is as it was. Not NULL; stays
 *   the caller's.
 * @param[in] value the value. Not NULL; borrowed for the call.
 * @param[in] valueSize the size of the value in bytes. It counts the terminator of UTF-8 text,
 *   which ends at its terminator when this is 0; binary values need it and the others do not.
 * @param[in] typeCode a SMXLT_TYPE_ code from BOOLEAN to UCS2; 48 and 50 stand for UTF-8 text, 49
 *   for UCS-2 text.
 * @param[in] valueFormat the notation and how many times text is escaped; NULL for no flags, no
 *   escaping; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the value was appended.
 * @retval SM_STATUS_INVALID_PARAMETER `buffer` is NULL.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the buffer has no content.
 * @retval SM_STATUS_DATA_NOT_FOUND `value` is NULL.
 * @retval 0xFFFFFFFF there is no such type code, UCS-2 text does not convert, or memory is short.
 * @retval SM_STATUS_UNSUCCESSFUL binary data in a notation that it is not written in, or one of the
 *   type codes 33 to 35 and 37 to 40, which have no text.
 * @retval SM_STATUS_BUFFER_TOO_SMALL a number takes more room in binary digits than in decimal. */
KQSUPT_API SMStatus SMXGBufCatNodeValue(SMXGBuf* buffer, const void* value, uint32_t valueSize,
                                        uint32_t typeCode, const SMXGValueFormat* valueFormat);

/** Appends `<name>value</name>`, with attributes as in SMXGBufCatBeginNode and a value as in
 * SMXGBufCatNodeValue.
 *
 * @param[in,out] buffer the buffer that is appended to; on failure it is as it was. Not NULL; stays
 *   the caller's.
 * @param[in] name the name of the element, UTF-8. Not NULL; borrowed for the call.
 * @param[in] attributes the attributes, as SMXGBufCatAttribute writes them; NULL or empty for none.
 *   Not `buffer` itself; borrowed for the call.
 * @param[in] value the value; with NULL the call appends `<name></name>` and succeeds; borrowed for
 *   the call.
 * @param[in] valueSize the size of the value in bytes. It counts the terminator of UTF-8 text,
 *   which ends at its terminator when this is 0; binary values need it and the others do not.
 * @param[in] typeCode a SMXLT_TYPE_ code from BOOLEAN to UCS2; 48 and 50 stand for UTF-8 text, 49
 *   for UCS-2 text.
 * @param[in] valueFormat the notation and how many times text is escaped; NULL for no flags, no
 *   escaping; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the element was appended.
 * @retval SM_STATUS_INVALID_PARAMETER `buffer` or `name` is NULL, or `attributes` is `buffer`.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the buffer has no content.
 * @retval 0xFFFFFFFF there is no such type code, UCS-2 text does not convert, or memory is short.
 * @retval SM_STATUS_UNSUCCESSFUL binary data in a notation that it is not written in, or one of the
 *   type codes 33 to 35 and 37 to 40, which have no text.
 * @retval SM_STATUS_BUFFER_TOO_SMALL a number takes more room in binary digits than in decimal. */
KQSUPT_API SMStatus SMXGBufCatNode(SMXGBuf* buffer, const char* name, const SMXGBuf* attributes,
                                   const void* value, uint32_t valueSize, uint32_t typeCode,
                                   const SMXGValueFormat* valueFormat);

/** Copies `text` with the five characters that XML gives a meaning to written as entities, the
 * result escaped again until that has been done `escapeLevel` times.
 *
 * @param[in] text the text, UTF-8. NULL is answered with NULL; borrowed for the call.
 * @param[in,out] size the capacity of the copy to begin with, in bytes; receives the length of the
 *   copy without its terminator. NULL is answered with NULL; stays the caller's.
 * @param[in] escapeLevel how many times the text is escaped, 16 at the most.
 * @return The copy, which the caller releases with SMFreeMem; NULL when `text` or `size` is NULL,
 *   `escapeLevel` is 0 or memory is short. */
KQSUPT_API char* SMXGEscapeXMLUTF8Str(const char* text, uint32_t* size, uint32_t escapeLevel);

/** @} */

/** @defgroup log_events Event logs
 *
 * The family's own logs lie in the directory "log" below the log path of the product Quillance:
 * "kqsys32.log" of UCS-2 text and "kqsys32.xml", an XML document. Each has one backup, whose name
 * ends with "_" instead of its last character: before an event that would make the log reach its
 * largest size the log takes the backup's place, and a new one begins with an event that says so;
 * where that cannot be done it grows on.
 *
 * Any number of threads and processes may append at the same time: each event is whole. One that
 * cannot be written is not there at all, unless only closing the file failed, and the events before
 * it are as they were. What a process that was killed left of an event is taken away by the next
 * one; but where an XML log lacks nothing except its end, and where its last event has more than
 * half a MiB, nothing can be appended any more.
 *
 * Texts are UTF-8. Paths are of any log; the files beside them are theirs alone. A directory that
 * is missing is made with the mode 0755, a file with 0664; one that is there keeps its bits for
 * reading and writing.
 * @{ */

/** Where events go, combined. */
enum {
  SM_LOG_OS = 2,   /**< the system's own log: see SMAppendToOSSysLog */
  SM_LOG_TEXT = 4, /**< kqsys32.log */
  SM_LOG_XML = 8   /**< kqsys32.xml */
};

/** What an event is. */
enum {
  SM_EVENT_NONE = 0,          /**< of no kind */
  SM_EVENT_ERROR = 1,         /**< an error */
  SM_EVENT_WARNING = 2,       /**< a warning */
  SM_EVENT_INFORMATION = 4,   /**< information */
  SM_EVENT_AUDIT_SUCCESS = 8, /**< an audit that succeeded */
  SM_EVENT_AUDIT_FAILURE = 16 /**< an audit that failed */
};

/** Appends an event to each log that `logFlags` names, at their current largest sizes.
 *
 * The status is that of the XML log when it is meant: see SMAppendToXMLLog. The others do not say
 * whether the event was written: the text log takes no event with another type, with a text of
 * another length or one that is not UTF-8, or with too much data. It leaves out a name of the host
 * that is not UTF-8. When the directory of logs is not known the status is that of
 * SMGetPathByProductIDandType.
 *
 * @param[in] logFlags the logs: SM_LOG_ values, combined. Not 0.
 * @param[in] type an SM_EVENT_ value.
 * @param[in] category 1 to 6; an event of another one goes to no log.
 * @param[in] eventID the number of the event.
 * @param[in] source 1 to 511 bytes for the XML log, 1 to 1,023 UCS-2 units for the text log. NULL
 *   is empty in the XML log, and the text log takes no such event; borrowed for the call.
 * @param[in] description 1 to 8,191 bytes for the XML log, 1 to 16,383 units for the text log. NULL
 *   is empty in the XML log, and the others take no such event; borrowed for the call.
 * @param[in] data `dataLength` bytes; NULL when that is 0; borrowed for the call.
 * @param[in] dataLength the size of the data in bytes, at most 32,768.
 * @retval SM_STATUS_SUCCESS the event was written to the XML log, or that is not meant.
 * @retval SM_STATUS_UNSUCCESSFUL `logFlags` is 0; for the XML log, a text of another length, or
 *   data that is missing or too long.
 * @retval SM_STATUS_OPERATION_FAILED the XML log is longer than 37 bytes and has no `</EventLog>`
 *   behind them, nor an element that a killed process did not finish: nothing is written there; or
 *   the directory of logs does not exist now.
 * @retval SM_STATUS_OUT_OF_SPACE the XML log takes no more.
 * @retval 0xFFFFFFFF for the XML log: the category is unknown, memory is short, or the directory or
 *   the file cannot be made, opened or locked.
 * @retval SM_STATUS_NO_MEMORY memory is too short for the path of a log, or for the lock of the XML
 *   log or what stands behind its end; or the library has not started.
 * @retval SM_STATUS_ACCESS_DENIED the XML log may not be locked by this process.
 * @retval SM_STATUS_DATA_NOT_FOUND the directory of logs is not known. */
KQSUPT_API SMStatus SMAppendToLog(uint32_t logFlags, uint16_t type, uint16_t category,
                                  uint32_t eventID, const char* source, const char* description,
                                  const void* data, uint32_t dataLength);

/** Appends an event to the XML log `pathFileName`, which becomes its own backup first when it would
 * reach `maxSize` bytes. Only `link` is escaped: the other texts must hold no markup characters.
 *
 * @param[in] pathFileName the path of the log. Not NULL; borrowed for the call.
 * @param[in] type the type, which is written as it is.
 * @param[in] category 1 to 6.
 * @param[in] eventID the number of the event.
 * @param[in] userInfo the user, 1 to 511 bytes; NULL stands for an empty text; borrowed for the
 *   call.
 * @param[in] source the source, 1 to 511 bytes; NULL stands for an empty text; borrowed for the
 *   call.
 * @param[in] description the description, 1 to 8,191 bytes; NULL stands for an empty text; borrowed
 *   for the call.
 * @param[in] link the link, of any length; NULL stands for an empty text; borrowed for the call.
 * @param[in] data `dataLength` bytes; NULL when that is 0; borrowed for the call.
 * @param[in] dataLength the size of the data in bytes, at most 32,768.
 * @param[in] maxSize the size in bytes that the log must not reach.
 * @retval SM_STATUS_SUCCESS the event was written.
 * @retval SM_STATUS_UNSUCCESSFUL there is no path, a text has another length, or data is missing or
 *   too long.
 * @retval SM_STATUS_OPERATION_FAILED the file is longer than 37 bytes and has no `</EventLog>`
 *   behind them, nor an element that a killed process did not finish; nothing is written.
 * @retval SM_STATUS_OUT_OF_SPACE the file takes no more.
 * @retval 0xFFFFFFFF the category is unknown, memory is short, or the directory or the file cannot
 *   be made, opened or locked.
 * @retval SM_STATUS_NO_MEMORY memory is too short for the lock of the file or for what stands
 *   behind its end, or the library has not started.
 * @retval SM_STATUS_ACCESS_DENIED the file may not be locked by this process. */
KQSUPT_API SMStatus SMAppendToXMLLog(const char* pathFileName, uint16_t type, uint16_t category,
                                     uint32_t eventID, const char* userInfo, const char* source,
                                     const char* description, const char* link, const void* data,
                                     uint32_t dataLength, uint32_t maxSize);

/** Deletes each log that `logFlags` names and begins a new one with the event "Log was cleared".
 * When both logs are meant the first failure is told.
 *
 * @param[in] logFlags the logs: SM_LOG_TEXT, SM_LOG_XML or both.
 * @param[in] category 1 to 6. With another one the XML log is not deleted; the text log is, and no
 *   new one begun.
 * @param[in] source the source of the event, of the lengths that SMAppendToLog takes. NULL is empty
 *   in the XML log, and the text log does not take it; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the logs were cleared, or `logFlags` names none that is known.
 * @retval SM_STATUS_UNSUCCESSFUL `logFlags` is 0; or `source` is one that the log, which is there,
 *   does not take: it is not deleted.
 * @retval 1 the system's own log is meant, which cannot be cleared here.
 * @retval 0xFFFFFFFF there is no such log, or it cannot be deleted; the category is unknown to the
 *   XML log; or the new log cannot be made, opened or locked.
 * @retval SM_STATUS_OPERATION_FAILED `source` is not UTF-8, and the text log is not deleted; the
 *   directory of logs does not exist now; or another process made an XML log meanwhile that nothing
 *   can be appended to.
 * @retval SM_STATUS_OUT_OF_SPACE the new log takes no event.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the library has not started.
 * @retval SM_STATUS_ACCESS_DENIED the log may not be locked by this process.
 * @retval SM_STATUS_DATA_NOT_FOUND the directory of logs is not known. */
KQSUPT_API SMStatus SMClearLog(uint32_t logFlags, uint16_t category, const char* source);

/** As SMClearLog for any XML log, with the name of who clears it.
 *
 * @param[in] pathFileName the path of the log. Not NULL; borrowed for the call.
 * @param[in] category 1 to 6.
 * @param[in] userInfo who clears the log, as for SMAppendToXMLLog: 1 to 511 bytes; NULL stands for
 *   an empty text; borrowed for the call.
 * @param[in] source the source of the event, as for SMAppendToXMLLog: 1 to 511 bytes; NULL stands
 *   for an empty text; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the log was cleared.
 * @retval SM_STATUS_UNSUCCESSFUL there is no path; or the log is there, and a text is one that it
 *   does not take: it is not deleted.
 * @retval 0xFFFFFFFF the category is unknown, or the log cannot be deleted, because there is none,
 *   too; or the new log cannot be made, opened or locked.
 * @retval SM_STATUS_OPERATION_FAILED another process made a log meanwhile that nothing can be
 *   appended to.
 * @retval SM_STATUS_OUT_OF_SPACE the new log takes no event.
 * @retval SM_STATUS_NO_MEMORY memory is too short for the lock of the file, or the library has not
 *   started.
 * @retval SM_STATUS_ACCESS_DENIED the file may not be locked by this process. */
KQSUPT_API SMStatus SMClearXMLLog(const char* pathFileName, uint16_t category, const char* userInfo,
                                  const char* source);

/** Looks for the file and makes none.
 *
 * @param[in] pathFileName the path of the log; may be NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS always. */
KQSUPT_API SMStatus SMForceXMLLogExists(const char* pathFileName);

/** Gives the path of the text log, or of the XML log when `logFlags` names both.
 *
 * @param[in] logFlags SM_LOG_TEXT, SM_LOG_XML or both.
 * @param[out] buffer the room for the path. NULL is answered with SM_STATUS_BUFFER_TOO_SMALL; stays
 *   the caller's.
 * @param[in,out] size the room at `buffer` in bytes, 256 at least; receives the path's size with
 *   its terminator. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the path was written.
 * @retval SM_STATUS_INVALID_PARAMETER `size` is NULL.
 * @retval SM_STATUS_UNSUCCESSFUL no log is named.
 * @retval 1 the system's own log is.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `buffer` is NULL or has less than 256 bytes, of which `*size`
 *   tells, or less than the path needs.
 * @retval SM_STATUS_DATA_NOT_FOUND the directory of logs is not known.
 * @retval SM_STATUS_OPERATION_FAILED the log path of the product does not exist now.
 * @retval SM_STATUS_NO_MEMORY memory is short. */
KQSUPT_API SMStatus SMGetLogPathFileName(uint32_t logFlags, char* buffer, uint32_t* size);

/** As SMGetLogPathFileName for the path of that log's backup.
 *
 * @param[in] logFlags SM_LOG_TEXT, SM_LOG_XML or both.
 * @param[out] buffer the room for the path. NULL is answered with SM_STATUS_BUFFER_TOO_SMALL; stays
 *   the caller's.
 * @param[in,out] size the room at `buffer` in bytes, 256 at least; receives the path's size with
 *   its terminator. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the path was written.
 * @retval SM_STATUS_INVALID_PARAMETER `size` is NULL.
 * @retval SM_STATUS_UNSUCCESSFUL no log is named.
 * @retval 1 the system's own log is.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `buffer` is NULL or has less than 256 bytes, of which `*size`
 *   tells, or less than the path needs.
 * @retval SM_STATUS_DATA_NOT_FOUND the directory of logs is not known.
 * @retval SM_STATUS_OPERATION_FAILED the log path of the product does not exist now.
 * @retval SM_STATUS_NO_MEMORY memory is short. */
KQSUPT_API SMStatus SMGetBackupLogPathFileName(uint32_t logFlags, char* buffer, uint32_t* size);

/** Gives the path of the backup of any log.
 *
 * @param[in] pathFileName the path of the log, of two characters at least. Not NULL; borrowed for
 *   the call.
 * @param[out] buffer the room for the path; NULL to ask for its size; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the path's size with its terminator,
 *   also with SM_STATUS_BUFFER_TOO_SMALL. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the path was written.
 * @retval SM_STATUS_INVALID_PARAMETER `pathFileName` has less than two characters or is NULL, or
 *   `size` is.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `buffer` is NULL or too small, and `*size` receives the bytes
 *   that are needed. */
KQSUPT_API SMStatus SMGetBackupXMLLogPathFileName(const char* pathFileName, char* buffer,
                                                  uint32_t* size);

/** Sets, for this process, the size in bytes that a log must not reach.
 *
 * @param[in] pathFileName the path of the log, 1 to 255 bytes. Not NULL; borrowed for the call.
 * @param[in] maxSize the size in bytes: 1,048,576 (131,072 where SMOSTypeGet answers 4) to
 *   4,194,304.
 * @retval SM_STATUS_SUCCESS the size was set.
 * @retval SM_STATUS_INVALID_PARAMETER another size, or a path that is NULL, empty or longer than
 *   255 bytes.
 * @retval SM_STATUS_NO_MEMORY memory is short: nothing was set. */
KQSUPT_API SMStatus SMSetLogMaxSize(const char* pathFileName, uint32_t maxSize);

/** Tells the size that was set with SMSetLogMaxSize, or else the smallest one.
 *
 * @param[in] pathFileName the path of the log, 1 to 255 bytes. Not NULL; borrowed for the call.
 * @param[out] maxSize receives the size in bytes. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the size was written.
 * @retval SM_STATUS_INVALID_PARAMETER `maxSize` is NULL, or the path is NULL, empty or longer than
 *   255 bytes.
 * @retval SM_STATUS_NO_MEMORY memory is short. */
KQSUPT_API SMStatus SMGetLogMaxSize(const char* pathFileName, uint32_t* maxSize);

/** @} */

/** @defgroup log_rotated Rotated logs
 *
 * Plain logs with older generations beside them: the path with ".1" behind it is the newest, the
 * one with the number of generations the oldest. No lock is waited for: messages of several
 * processes come in any order, each of them whole unless its call failed. Who comes while another
 * process rotates does not rotate again; a log that somebody holds with flock() is not rotated.
 * @{ */

/** What stands around a message. */
enum {
  SM_LOG_PREFIX_TIME = 1,   /**< "[Nov 15 2026 00:31:59] ", in local time */
  SM_LOG_PREFIX_THREAD = 2, /**< "[PROCESS:THREAD] ", as numbers */
  SM_LOG_SUFFIX_NEWLINE = 4 /**< a line end behind the message */
};

/** Appends a message, as it is, between what `prefixFlags` says, after SMFileRotateCheck. The file
 * keeps its bits for reading and writing over a rotation; one that was not there has the mode 0644.
 *
 * @param[in] message the message, terminated. Not NULL; borrowed for the call.
 * @param[in] pathFileName the path of the log. Not NULL; borrowed for the call.
 * @param[in] maxSize the size in bytes that the log may have, as for SMFileRotateCheck.
 * @param[in] count the number of generations, as for SMFileRotateCheck.
 * @param[in] prefixFlags SM_LOG_PREFIX_TIME, SM_LOG_PREFIX_THREAD and SM_LOG_SUFFIX_NEWLINE,
 *   combined; 0 for none.
 * @retval SM_STATUS_SUCCESS all of the message was written.
 * @retval SM_STATUS_INVALID_PARAMETER `message` or `pathFileName` is NULL.
 * @retval 0xFFFFFFFF the file cannot be opened, or did not take all of it. */
KQSUPT_API SMStatus SMFileLogMsgToRotatedLog(const char* message, const char* pathFileName,
                                             uint32_t maxSize, uint32_t count,
                                             uint32_t prefixFlags);

/** Makes a file of more than `maxSize` bytes the generation 1, each generation the next, and drops
 * the one that was number `count`. What cannot be renamed is ignored.
 *
 * @param[in] pathFileName the path of the log. NULL is ignored; borrowed for the call.
 * @param[in] maxSize the size in bytes that the log may have.
 * @param[in] count the number of generations; with 0 the file is deleted. */
KQSUPT_API void SMFileRotateCheck(const char* pathFileName, uint32_t maxSize, uint32_t count);

/** Deletes the log and, when `deleteGenerations` is 1, its generations 1 to `count`. What is not
 * there is ignored.
 *
 * @param[in] pathFileName the path of the log. NULL is ignored; borrowed for the call.
 * @param[in] deleteGenerations with 1 the generations go too; with any other value the log only.
 * @param[in] count the number of the last generation to delete. */
KQSUPT_API void SMFileDeleteRotated(const char* pathFileName, uint32_t deleteGenerations,
                                    uint32_t count);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
