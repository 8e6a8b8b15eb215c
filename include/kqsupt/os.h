/* Services of the operating system: threads, the clock, the system's own log, dynamic libraries,
 * the environment, copies of files. */
#ifndef KQSUPT_OS_H
#define KQSUPT_OS_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Threads -----------------------------------------------------------------------------------
 *
 * Every thread that is started here has a stack of 128 KiB. */

/* A thread that was started and not yet handed back. */
typedef struct SMThread SMThread;

/* What a thread runs. `argument` is that of the call that starts the thread, passed on as it is; what the
 * routine returns is discarded. */
typedef void* (*SMThreadRoutine)(void* argument);

/* Starts a thread that runs `routine`. The caller hands the record to SMThreadStop or SMThreadKill,
 * once, which release it. NULL when `routine` is NULL, memory is short, or the system has no thread
 * left. */
KQSUPT_API SMThread* SMThreadStart(SMThreadRoutine routine, void* argument);

/* Starts a thread that runs `routine` and that nobody waits for: it leaves nothing behind when it
 * ends. SM_STATUS_INVALID_PARAMETER: `routine` is NULL. 0xFFFFFFFF: the system has no thread left. */
KQSUPT_API SMStatus SMThreadStartAndRelease(SMThreadRoutine routine, void* argument);

/* Waits until the thread has ended, which may be long ago, and releases the record.
 * SM_STATUS_INVALID_PARAMETER: `thread` is NULL. A thread cannot wait for itself. */
KQSUPT_API SMStatus SMThreadStop(SMThread* thread);

/* Kills the thread with signal 9 and releases the record. That signal ends the whole process and not
 * the thread alone; only when the thread has ended already does the call return.
 * SM_STATUS_INVALID_PARAMETER: `thread` is NULL. */
KQSUPT_API SMStatus SMThreadKill(SMThread* thread);

/* Lets other threads run. 0, as the system's own call answers. */
KQSUPT_API int32_t SMThreadYield(void);

/* The identifier of the calling thread: no two threads of a process that live at the same time have
 * the same one. It is pthread_self() where that has 32 bits, and elsewhere what the kernel calls the
 * thread. */
KQSUPT_API uint32_t SMThreadGetID(void);

/* Names the calling thread, for tools that list threads. `name` is UTF-8; the system keeps its first
 * 15 bytes. SM_STATUS_INVALID_PARAMETER: `name` is NULL. 0xFFFFFFFF: the system refuses. */
KQSUPT_API SMStatus SMThreadSetName(const char* name);

/* ---- Clock ------------------------------------------------------------------------------------- */

/* Milliseconds since the Unix epoch; 0xFFFFFFFFFFFFFFFF when the time cannot be read. The clock is
 * that of the calendar: it can be set, and can go back. */
KQSUPT_API uint64_t SMRefTicksGet(void);

/* How much time has passed between two readings of SMRefTicksGet, and whether that is more than
 * `limitMs`, in milliseconds; all ones stand for no limit. Each output may be NULL.
 *
 * `*elapsedMs` receives the milliseconds, 0 when the clock went back. With a limit both flags become
 * 1 when more time than that has passed, and 0 otherwise; limits from 2^63 on count as negative.
 * Without one `*firstFlag` becomes 1 when any time has passed, and `*secondFlag` 0. No output is
 * written when either reading is the one of a time that could not be read. */
KQSUPT_API void SMRefTicksDiffCheckTimer(uint64_t startTicks, uint64_t currentTicks,
                                         uint64_t limitMs, uint64_t* elapsedMs, uint16_t* firstFlag,
                                         uint16_t* secondFlag);

/* ---- Host -------------------------------------------------------------------------------------- */

/* 4 where the kernel calls itself "VMkernel", in letters of either case, and otherwise 3. */
KQSUPT_API uint32_t SMOSTypeGet(void);

/* Does nothing: no agent shuts a host down through this library. Always 0. */
KQSUPT_API SMStatus SMOSShutdown(void);

/* 1 when something can be read from standard input, its end included; 0 otherwise, also when the
 * system does not say. */
KQSUPT_API int32_t SMkbhit(void);

/* File names are long everywhere that agents still run: always 0. */
KQSUPT_API SMStatus SMLongFileNamesEnable(void);
KQSUPT_API SMStatus SMLongFileNamesDisable(void);

/* There is one context of exports, number 0, and it cannot be changed. NULL is ignored. */
KQSUPT_API void SMGetExportContext(uint32_t* context);
KQSUPT_API void SMSetExportContext(uint32_t context);
KQSUPT_API void SMResetExportContext(void);

/* ---- The system's own log ---------------------------------------------------------------------- */

/* Writes one line to the system's log, of the facility `daemon`: the name of the source, the event
 * ID and the message, whose carriage returns become blanks. A line has at most 2,047 bytes, longer
 * ones lose their end.
 *
 * `eventType`: 1 is logged as an error, 2 as a warning, any other as information.
 * `logSource`: the part of the family that the event comes from, 1 to 6.
 * `identity`, `message`: UTF-8. With `identity` NULL the line goes by the program's name.
 * `data`, `dataSize`: not used.
 *
 * 0xFFFFFFFF, and nothing is logged: `logSource` is another number, `message` is NULL, or memory is
 * short. Whether somebody reads the log is not known. The program's own openlog() is undone. */
KQSUPT_API SMStatus SMAppendToOSSysLog(uint32_t eventType, uint32_t logSource, uint32_t eventID,
                                       const char* identity, const char* message, const void* data,
                                       uint32_t dataSize);
/* ---- Dynamic libraries -------------------------------------------------------------------------
 *
 * Paths and names are UTF-8. A path goes to the loader as it is: without a "/" in it the loader
 * searches its directories. */

/* A library that was loaded and not yet unloaded. */
typedef struct SMLib SMLib;

/* Loads the library at `path` with all it needs, at once. The caller hands the record to
 * SMLibUnLoad. Loading a path again gives a record of its own. NULL when `path` is NULL, memory is
 * short, or the loader refuses, as it does when a name that the library needs is not defined
 * anywhere. */
KQSUPT_API SMLib* SMLibLoad(const char* path);

/* Unloads a library and releases its record; its code stays in the process until every record of it
 * is gone. SM_STATUS_INVALID_PARAMETER: `library` is NULL. SM_STATUS_OPERATION_FAILED: it is a
 * record of another kind. 0xFFFFFFFF: the loader refuses, and the record remains the caller's. */
KQSUPT_API SMStatus SMLibUnLoad(SMLib* library);

/* The address of what the library, or one that it needs, exports as `function`; good for as long as
 * the library is loaded. NULL when `library` or `function` is NULL, the record is of another kind,
 * or there is no such name or its value is null. */
KQSUPT_API void* SMLibLinkToExportFN(SMLib* library, const char* function);

/* Gives an address of SMLibLinkToExportFN back, which releases nothing.
 * SM_STATUS_INVALID_PARAMETER: `library` or `address` is NULL. SM_STATUS_OPERATION_FAILED: the
 * record is of another kind. */
KQSUPT_API SMStatus SMLibUnLinkFromExportFN(SMLib* library, void* address);

/* ---- Shared libraries --------------------------------------------------------------------------
 *
 * Several users in one process share one loaded copy of each library, under names that they choose.
 * It is unloaded when its last user lets go of it, or when this library is stopped. Paths are told
 * apart by their bytes. Any thread may call these functions, also from the constructors and
 * destructors of a library that is being loaded or unloaded. */

/* Makes `user` a user of the library at `path`, unless it is one already, and loads it when it has
 * no other. The address of what it exports as `function`, or with `function` NULL its record, for
 * SMLibLinkToExportFN alone: it is unloaded by SMFLibUnLoad only. NULL when `user` or `path` is
 * NULL, memory is short, the loader refuses, or this library has not been started; then nothing has
 * changed. NULL too when the library has no such function: `user` is a user of it all the same. */
KQSUPT_API void* SMFLibLinkToExportFN(const char* user, const char* path, const char* function);

/* Ends the use of the library at `path` by `user`, however many functions it linked; the last one
 * has the library unloaded, and each address and record of it is void. A call with a name that is
 * not among its users counts as that of one of them: it can unload a library that others still use.
 * 0 also when no such library is loaded. SM_STATUS_INVALID_PARAMETER: `user` or `path` is NULL.
 * 0xFFFFFFFF: the user is known and cannot be struck off. */
KQSUPT_API SMStatus SMFLibUnLoad(const char* user, const char* path);

/* ---- The environment ------------------------------------------------------------------------ */

/* A copy of the value of the variable `name`, which the caller releases by SMFreeMem. `*size` gets
 * its size in bytes with the terminator; `size` may be NULL. NULL, and `*size` as it was, when
 * `name` is NULL, there is no such variable or memory is short. */
KQSUPT_API char* SMEnvDup(const char* name, uint32_t* size);

/* ---- Copies of files ---------------------------------------------------------------------------
 *
 * Paths are UTF-8. A failure on the way leaves the destination as far as it was written; what it
 * had before is gone then only when it is copied over. All four answer:
 *
 *   SM_STATUS_UNSUCCESSFUL     a path is NULL
 *   SM_STATUS_FILE_EXISTS      the destination exists and shall not be copied over
 *   SM_STATUS_FILE_NOT_FOUND   the source cannot be opened; the destination of an append does not
 *                              exist and shall not be created
 *   9                          the source cannot be examined
 *   SM_STATUS_OUT_OF_SPACE     there is no room to create or write the destination
 *   SM_STATUS_NO_MEMORY        the buffer of 8192 bytes cannot be had: nothing is written
 *   0xFFFFFFFF                 everything else, such as a source or a destination that is a
 *                              directory, or a copy of a file onto itself, by whatever names, which
 *                              leaves the file as it is; so does an append of a file to itself,
 *                              unless it is empty
 *
 * The permission bits of a file are the twelve that chmod sets. */

/* Makes the file `destination` hold what `source` holds, with the permission bits of `source`. It
 * must not exist yet when `overwrite` is 0. */
KQSUPT_API SMStatus SMFileCopy(const char* source, const char* destination, uint32_t overwrite);

/* The same, and waits until all of it is on the disk. */
KQSUPT_API SMStatus SMFileCopyAndSync(const char* source, const char* destination,
                                      uint32_t overwrite);

/* Writes what the file `source` holds behind the end of the file `destination`, whose permission
 * bits remain. It is created, with those of `source`, when it does not exist; with `create` 0 it
 * must exist. */
KQSUPT_API SMStatus SMFileAppend(const char* source, const char* destination, uint32_t create);

/* The same, and waits until all of it is on the disk. */
KQSUPT_API SMStatus SMFileAppendAndSync(const char* source, const char* destination,
                                        uint32_t create);

#ifdef __cplusplus
}
#endif

#endif
