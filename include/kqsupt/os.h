/* Services of the operating system: threads. */
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

#ifdef __cplusplus
}
#endif

#endif
