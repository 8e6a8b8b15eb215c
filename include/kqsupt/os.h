/** @file
 * Services of the operating system: threads, the clock, the system's own log, dynamic libraries,
 * the environment, copies of files. */
#ifndef KQSUPT_OS_H
#define KQSUPT_OS_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup os_threads Threads
 *
 * Every thread that is started here has a stack of 128 KiB.
 * @{ */

/** A thread that was started and not yet handed back. */
typedef struct SMThread SMThread;

/** What a thread runs. `argument` is that of the call that starts the thread, passed on as it is;
 * what the routine returns is discarded. */
typedef void* (*SMThreadRoutine)(void* argument);

/** Starts a thread that runs `routine`.
 *
 * @param[in] routine what the thread runs. NULL is answered with NULL. It stays the caller's, and
 *   its code must be there until the thread has ended.
 * @param[in] argument passed on to `routine` as it is; may be NULL. What it points to stays the
 *   caller's.
 * @return The record of the thread, which the caller releases with SMThreadStop or SMThreadKill,
 *   once; NULL when `routine` is NULL, memory is short, or the system has no thread left. */
KQSUPT_API SMThread* SMThreadStart(SMThreadRoutine routine, void* argument);

/** Starts a thread that runs `routine` and that nobody waits for: it leaves nothing behind when it
 * ends.
 *
 * @param[in] routine what the thread runs. Not NULL. It stays the caller's, and its code must be
 *   there until the thread has ended.
 * @param[in] argument passed on to `routine` as it is; may be NULL. What it points to stays the
 *   caller's.
 * @retval SM_STATUS_SUCCESS the thread was started.
 * @retval SM_STATUS_INVALID_PARAMETER `routine` is NULL.
 * @retval 0xFFFFFFFF the system has no thread left. */
KQSUPT_API SMStatus SMThreadStartAndRelease(SMThreadRoutine routine, void* argument);

/** Waits until the thread has ended, which may be long ago, and releases the record. A thread
 * cannot wait for itself.
 *
 * @param[in] thread the record from SMThreadStart, which the call takes over and frees. Not NULL.
 * @retval SM_STATUS_SUCCESS the thread has ended and its record is released.
 * @retval SM_STATUS_INVALID_PARAMETER `thread` is NULL. */
KQSUPT_API SMStatus SMThreadStop(SMThread* thread);

/** Kills the thread with signal 9 and releases the record. That signal ends the whole process and
 * not the thread alone; only when the thread has ended already does the call return.
 *
 * @param[in] thread the record from SMThreadStart, which the call takes over and frees. Not NULL.
 * @retval SM_STATUS_SUCCESS the thread had ended already; its record is released.
 * @retval SM_STATUS_INVALID_PARAMETER `thread` is NULL. */
KQSUPT_API SMStatus SMThreadKill(SMThread* thread);

/** Lets other threads run.
 *
 * @return 0, as the system's own call answers. */
KQSUPT_API int32_t SMThreadYield(void);

/** Tells the identifier of the calling thread: no two threads of a process that live at the same
 * time have the same one. It is pthread_self() where that has 32 bits, and elsewhere what the
 * kernel calls the thread.
 *
 * @return The identifier. */
KQSUPT_API uint32_t SMThreadGetID(void);

/** Names the calling thread, for tools that list threads.
 *
 * @param[in] name the name, in UTF-8; the system keeps its first 15 bytes. Not NULL; borrowed for
 *   the call.
 * @retval SM_STATUS_SUCCESS the thread has the name.
 * @retval SM_STATUS_INVALID_PARAMETER `name` is NULL.
 * @retval 0xFFFFFFFF the system refuses. */
KQSUPT_API SMStatus SMThreadSetName(const char* name);

/** @} */

/** @defgroup os_clock Clock
 * @{ */

/** Reads the clock. It is that of the calendar: it can be set, and can go back.
 *
 * @return Milliseconds since the Unix epoch; 0xFFFFFFFFFFFFFFFF when the time cannot be read. */
KQSUPT_API uint64_t SMRefTicksGet(void);

/** Tells how much time has passed between two readings of SMRefTicksGet, and whether that is more
 * than a limit.
 *
 * With a limit both flags become 1 when more time than that has passed, and 0 otherwise; limits
 * from 2^63 on count as negative. Without one `*firstFlag` becomes 1 when any time has passed, and
 * `*secondFlag` 0. No output is written when either reading is the one of a time that could not be
 * read.
 *
 * @param[in] startTicks the earlier reading, in milliseconds.
 * @param[in] currentTicks the later reading, in milliseconds.
 * @param[in] limitMs the limit in milliseconds; all ones stand for no limit.
 * @param[out] elapsedMs receives the milliseconds between the two, 0 when the clock went back. May
 *   be NULL; stays the caller's.
 * @param[out] firstFlag receives 1 or 0, as told above. May be NULL; stays the caller's.
 * @param[out] secondFlag receives 1 or 0, as told above. May be NULL; stays the caller's. */
KQSUPT_API void SMRefTicksDiffCheckTimer(uint64_t startTicks, uint64_t currentTicks,
                                         uint64_t limitMs, uint64_t* elapsedMs, uint16_t* firstFlag,
                                         uint16_t* secondFlag);

/** @} */

/** @defgroup os_host Host
 * @{ */

/** Tells what kind of kernel this is.
 *
 * @return 4 where the kernel calls itself "VMkernel", in letters of either case, and otherwise 3.
 */
KQSUPT_API uint32_t SMOSTypeGet(void);

/** Does nothing: no agent shuts a host down through this library.
 *
 * @retval SM_STATUS_SUCCESS always. */
KQSUPT_API SMStatus SMOSShutdown(void);

/** Tells whether something can be read from standard input, its end included.
 *
 * @return 1 when something can be read; 0 otherwise, also when the system does not say. */
KQSUPT_API int32_t SMkbhit(void);

/** Does nothing: file names are long everywhere that agents still run.
 *
 * @retval SM_STATUS_SUCCESS always. */
KQSUPT_API SMStatus SMLongFileNamesEnable(void);

/** Does nothing, as SMLongFileNamesEnable: file names stay long.
 *
 * @retval SM_STATUS_SUCCESS always. */
KQSUPT_API SMStatus SMLongFileNamesDisable(void);

/** Tells the context of exports. There is one, number 0, and it cannot be changed.
 *
 * @param[out] context receives 0. NULL is ignored; stays the caller's. */
KQSUPT_API void SMGetExportContext(uint32_t* context);

/** Would choose the context of exports: does nothing. There is one, number 0, and it cannot be
 * changed.
 *
 * @param[in] context not used. */
KQSUPT_API void SMSetExportContext(uint32_t context);

/** Would go back to the first context of exports: does nothing. There is one, number 0, and it
 * cannot be changed. */
KQSUPT_API void SMResetExportContext(void);

/** @} */

/** @defgroup os_log The system's own log
 * @{ */

/** Writes one line to the system's log, of the facility `daemon`: the name of the source, the event
 * ID and the message, whose carriage returns become blanks. A line has at most 2,047 bytes, longer
 * ones lose their end. Whether somebody reads the log is not known. The program's own openlog() is
 * undone. While a line waits for the system's log, forks of this process wait too.
 *
 * @param[in] eventType 1 is logged as an error, 2 as a warning, any other as information.
 * @param[in] logSource the part of the family that the event comes from, 1 to 6.
 * @param[in] eventID the number of the event.
 * @param[in] identity whom the line goes by, in UTF-8; with NULL that is the program's name;
 *   borrowed for the call.
 * @param[in] message the message, in UTF-8. Not NULL; borrowed for the call.
 * @param[in] data not used; may be NULL; stays the caller's.
 * @param[in] dataSize not used.
 * @retval SM_STATUS_SUCCESS the line was handed to the system.
 * @retval 0xFFFFFFFF `logSource` is another number, `message` is NULL, or memory is short; nothing
 *   is logged. */
KQSUPT_API SMStatus SMAppendToOSSysLog(uint32_t eventType, uint32_t logSource, uint32_t eventID,
                                       const char* identity, const char* message, const void* data,
                                       uint32_t dataSize);

/** @} */

/** @defgroup os_libraries Dynamic libraries
 *
 * Paths and names are UTF-8. A path goes to the loader as it is: without a "/" in it the loader
 * searches its directories.
 * @{ */

/** A library that was loaded and not yet unloaded. */
typedef struct SMLib SMLib;

/** Loads the library at `path` with all it needs, at once. Loading a path again gives a record of
 * its own.
 *
 * @param[in] path the path of the library. NULL is answered with NULL; borrowed for the call.
 * @return The record of the library, which the caller releases with SMLibUnLoad; NULL when `path`
 *   is NULL, memory is short, or the loader refuses, as it does when a name that the library needs
 *   is not defined anywhere. */
KQSUPT_API SMLib* SMLibLoad(const char* path);

/** Unloads a library and releases its record; its code stays in the process until every record of
 * it is gone.
 *
 * @param[in] library the record from SMLibLoad, which the call takes over and frees on success;
 *   after any failure it stays the caller's. Not NULL.
 * @retval SM_STATUS_SUCCESS the record is released.
 * @retval SM_STATUS_INVALID_PARAMETER `library` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a record of another kind.
 * @retval 0xFFFFFFFF the loader refuses, and the record remains the caller's. */
KQSUPT_API SMStatus SMLibUnLoad(SMLib* library);

/** Finds the address of what the library, or one that it needs, exports as `function`.
 *
 * @param[in] library the record from SMLibLoad. NULL is answered with NULL; borrowed for the call.
 * @param[in] function the exported name. NULL is answered with NULL; borrowed for the call.
 * @return The address, which stays the library's: borrowed, and good for as long as the library is
 *   loaded. NULL when `library` or `function` is NULL, the record is of another kind, or there is
 *   no such name or its value is null. */
KQSUPT_API void* SMLibLinkToExportFN(SMLib* library, const char* function);

/** Gives an address of SMLibLinkToExportFN back, which releases nothing.
 *
 * @param[in] library the record that the address was found with. Not NULL; borrowed for the call.
 * @param[in] address the address, which stays the library's. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS nothing was to be done.
 * @retval SM_STATUS_INVALID_PARAMETER `library` or `address` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED the record is of another kind. */
KQSUPT_API SMStatus SMLibUnLinkFromExportFN(SMLib* library, void* address);

/** @} */

/** @defgroup os_shared_libraries Shared libraries
 *
 * Several users in one process share one loaded copy of each library, under names that they choose.
 * It is unloaded when its last user lets go of it, or when this library is stopped. Paths are told
 * apart by their bytes. Any thread may call these functions, also from the constructors and
 * destructors of a library that is being loaded or unloaded.
 * @{ */

/** Makes `user` a user of the library at `path`, unless it is one already, and loads it when it has
 * no other.
 *
 * @param[in] user the name of the user. NULL is answered with NULL; borrowed for the call.
 * @param[in] path the path of the library. NULL is answered with NULL; borrowed for the call.
 * @param[in] function the exported name to find; NULL to get the record of the library instead;
 *   borrowed for the call.
 * @return The address of what the library exports as `function`, or with `function` NULL its
 *   record, for SMLibLinkToExportFN alone: it is unloaded by SMFLibUnLoad only. Both are borrowed,
 *   until the last user lets go of the library. NULL when `user` or `path` is NULL, memory is
 *   short, the loader refuses, or this library has not been started; then nothing has changed. NULL
 *   too when the library has no such function: `user` is a user of it all the same. */
KQSUPT_API void* SMFLibLinkToExportFN(const char* user, const char* path, const char* function);

/** Ends the use of the library at `path` by `user`, however many functions it linked; the last one
 * has the library unloaded, and each address and record of it is void. A call with a name that is
 * not among its users counts as that of one of them: it can unload a library that others still use.
 *
 * @param[in] user the name of the user. Not NULL; borrowed for the call.
 * @param[in] path the path of the library. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the use has ended, also when no such library is loaded.
 * @retval SM_STATUS_INVALID_PARAMETER `user` or `path` is NULL.
 * @retval 0xFFFFFFFF never; callers may test for it. */
KQSUPT_API SMStatus SMFLibUnLoad(const char* user, const char* path);

/** @} */

/** @defgroup os_environment The environment
 * @{ */

/** Copies the value of the environment variable `name`.
 *
 * @param[in] name the name of the variable. NULL is answered with NULL; borrowed for the call.
 * @param[out] size receives the size of the copy in bytes, with the terminator; stays as it was
 *   when there is no copy. May be NULL; stays the caller's.
 * @return The copy, which the caller releases by SMFreeMem; NULL when `name` is NULL, there is no
 *   such variable or memory is short. */
KQSUPT_API char* SMEnvDup(const char* name, uint32_t* size);

/** @} */

/** @defgroup os_copies Copies of files
 *
 * Paths are UTF-8. A failure on the way leaves the destination as far as it was written; what it
 * had before is gone then only when it is copied over. The permission bits of a file are the twelve
 * that chmod sets.
 * @{ */

/** Makes the file `destination` hold what `source` holds, with the permission bits of `source`.
 *
 * @param[in] source the path of the file to read. Not NULL; borrowed for the call.
 * @param[in] destination the path of the file to write. Not NULL; borrowed for the call.
 * @param[in] overwrite with 0 the destination must not exist yet; with any other value it may be
 *   copied over.
 * @retval SM_STATUS_SUCCESS the destination holds what the source holds.
 * @retval SM_STATUS_UNSUCCESSFUL a path is NULL.
 * @retval SM_STATUS_FILE_EXISTS the destination exists and shall not be copied over.
 * @retval SM_STATUS_FILE_NOT_FOUND the source cannot be opened.
 * @retval 9 the source cannot be examined.
 * @retval SM_STATUS_OUT_OF_SPACE there is no room to create or write the destination.
 * @retval SM_STATUS_NO_MEMORY the buffer of 8192 bytes cannot be had: nothing is written, but a
 *   destination that was not there has been made, empty.
 * @retval 0xFFFFFFFF everything else, such as a source or a destination that is a directory, or a
 *   copy of a file onto itself, by whatever names, which leaves the file as it is. */
KQSUPT_API SMStatus SMFileCopy(const char* source, const char* destination, uint32_t overwrite);

/** As SMFileCopy, and waits until all of it is on the disk.
 *
 * @param[in] source the path of the file to read. Not NULL; borrowed for the call.
 * @param[in] destination the path of the file to write. Not NULL; borrowed for the call.
 * @param[in] overwrite with 0 the destination must not exist yet; with any other value it may be
 *   copied over.
 * @retval SM_STATUS_SUCCESS the destination holds what the source holds.
 * @retval SM_STATUS_UNSUCCESSFUL a path is NULL.
 * @retval SM_STATUS_FILE_EXISTS the destination exists and shall not be copied over.
 * @retval SM_STATUS_FILE_NOT_FOUND the source cannot be opened.
 * @retval 9 the source cannot be examined.
 * @retval SM_STATUS_OUT_OF_SPACE there is no room to create or write the destination.
 * @retval SM_STATUS_NO_MEMORY the buffer of 8192 bytes cannot be had: nothing is written, but a
 *   destination that was not there has been made, empty.
 * @retval 0xFFFFFFFF everything else, such as a source or a destination that is a directory, or a
 *   copy of a file onto itself, by whatever names, which leaves the file as it is. */
KQSUPT_API SMStatus SMFileCopyAndSync(const char* source, const char* destination,
                                      uint32_t overwrite);

/** Writes what the file `source` holds behind the end of the file `destination`, whose permission
 * bits remain. It is created, with those of `source`, when it does not exist.
 *
 * @param[in] source the path of the file to read. Not NULL; borrowed for the call.
 * @param[in] destination the path of the file to add to. Not NULL; borrowed for the call.
 * @param[in] create with 0 the destination must exist; with any other value it is created when it
 *   does not.
 * @retval SM_STATUS_SUCCESS all of the source was added, also an empty file to itself.
 * @retval SM_STATUS_UNSUCCESSFUL a path is NULL.
 * @retval SM_STATUS_FILE_NOT_FOUND the source cannot be opened; the destination does not exist and
 *   shall not be created.
 * @retval 9 the source cannot be examined.
 * @retval SM_STATUS_OUT_OF_SPACE there is no room to create or write the destination.
 * @retval SM_STATUS_NO_MEMORY the buffer of 8192 bytes cannot be had: nothing is written, but a
 *   destination that was not there has been made, empty.
 * @retval 0xFFFFFFFF everything else, such as a source or a destination that is a directory, or an
 *   append of a file to itself, by whatever names, unless it is empty, which leaves the file as it
 *   is. */
KQSUPT_API SMStatus SMFileAppend(const char* source, const char* destination, uint32_t create);

/** As SMFileAppend, and waits until all of it is on the disk.
 *
 * @param[in] source the path of the file to read. Not NULL; borrowed for the call.
 * @param[in] destination the path of the file to add to. Not NULL; borrowed for the call.
 * @param[in] create with 0 the destination must exist; with any other value it is created when it
 *   does not.
 * @retval SM_STATUS_SUCCESS all of the source was added, also an empty file to itself.
 * @retval SM_STATUS_UNSUCCESSFUL a path is NULL.
 * @retval SM_STATUS_FILE_NOT_FOUND the source cannot be opened; the destination does not exist and
 *   shall not be created.
 * @retval 9 the source cannot be examined.
 * @retval SM_STATUS_OUT_OF_SPACE there is no room to create or write the destination.
 * @retval SM_STATUS_NO_MEMORY the buffer of 8192 bytes cannot be had: nothing is written, but a
 *   destination that was not there has been made, empty.
 * @retval 0xFFFFFFFF everything else, such as a source or a destination that is a directory, or an
 *   append of a file to itself, by whatever names, unless it is empty, which leaves the file as it
 *   is. */
KQSUPT_API SMStatus SMFileAppendAndSync(const char* source, const char* destination,
                                        uint32_t create);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
