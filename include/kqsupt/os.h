/* Services of the operating system: threads, the clock, the system's own log. */
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

#ifdef __cplusplus
}
#endif

#endif
