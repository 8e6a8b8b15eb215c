/** @file
 * Objects that threads and processes wait for: mutexes, semaphores, events, shared memory,
 * reader-writer locks. Also routines that run one at a time.
 *
 * An object without a name is private to the process. One with a name is shared by every process
 * that uses the same name for the same kind of object; a name is text in UTF-8 of at least one
 * byte. Names are kept in the IPC directory: ".ipc" in the variable-data directory that the install
 * registry gives for the product wexlib, or for nurb where it has no entry of wexlib. The directory
 * must exist. A name has its key there for ever; opening an object that nobody has created may
 * give it one. What stands behind a name outlives the processes that use it, as each kind of object
 * tells.
 *
 * A handle belongs to the process that got it. It may be used by all its threads; releasing it
 * while another thread uses it is an error. A call on NULL answers SM_STATUS_INVALID_PARAMETER, on
 * a handle of another kind SM_STATUS_OPERATION_FAILED, before anything else is looked at.
 *
 * A timeout is in milliseconds; -1 waits without limit and 0 tries once. Any other negative one
 * counts as unsigned: about 49 days.
 *
 * A permission says who may use a new object: -1 stands for 0664 and 0 for 0600; any other value is
 * a sum of SM_PERMISSION_ bits. The calls without a permission take -1 with a name and 0 without.
 */
#ifndef KQSUPT_IPC_H
#define KQSUPT_IPC_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup ipc_permissions Permissions
 * @{ */

/** Bits of a permission. Where the bit for all is set the three that follow it are not looked at.
 */
enum {
  SM_PERMISSION_OWNER_ALL = 0x01000000,     /**< the owner: all three */
  SM_PERMISSION_OWNER_READ = 0x02000000,    /**< the owner: reading */
  SM_PERMISSION_OWNER_WRITE = 0x04000000,   /**< the owner: writing */
  SM_PERMISSION_OWNER_EXECUTE = 0x08000000, /**< the owner: executing */
  SM_PERMISSION_GROUP_ALL = 0x00010000,     /**< the group: all three */
  SM_PERMISSION_GROUP_READ = 0x00020000,    /**< the group: reading */
  SM_PERMISSION_GROUP_WRITE = 0x00040000,   /**< the group: writing */
  SM_PERMISSION_GROUP_EXECUTE = 0x00080000, /**< the group: executing */
  SM_PERMISSION_OTHER_ALL = 0x00000100,     /**< everybody else: all three */
  SM_PERMISSION_OTHER_READ = 0x00000200,    /**< everybody else: reading */
  SM_PERMISSION_OTHER_WRITE = 0x00000400,   /**< everybody else: writing */
  SM_PERMISSION_OTHER_EXECUTE = 0x00000800  /**< everybody else: executing */
};

/** @} */

/** @defgroup ipc_mutexes Mutexes
 *
 * Held by one thread at a time, and not recursive. A named one is a lock file, which stays for
 * ever; it is locked while the process that locked it lives, and by nobody after a fork in the
 * child. A process that may only read the lock file excludes those that may write it and no other
 * reader.
 * @{ */

/** A mutex, as a handle. */
typedef struct SMMutex SMMutex;

/** Makes a new mutex, or with a name that exists another handle on it. Its permission is -1 with a
 * name and 0 without.
 *
 * @param[in] name the name, in UTF-8, of at least one byte; NULL for a mutex without one; borrowed
 *   for the call.
 * @return The handle, which the caller releases with SMMutexDestroy; NULL when memory is short, the
 *   name is empty, the lock file can be opened neither for writing nor for reading, its path has
 *   more than 255 bytes, or the library has not started and a name is given. */
KQSUPT_API SMMutex* SMMutexCreate(const char* name);

/** As SMMutexCreate, with a permission.
 *
 * @param[in] name the name, in UTF-8, of at least one byte; NULL for a mutex without one; borrowed
 *   for the call.
 * @param[in] permission who may use a new object: -1 stands for 0664 and 0 for 0600; any other
 *   value is a sum of SM_PERMISSION_ bits.
 * @return The handle, which the caller releases with SMMutexDestroy; NULL when memory is short, the
 *   name is empty, the lock file can be opened neither for writing nor for reading, its path has
 *   more than 255 bytes, or the library has not started and a name is given. */
KQSUPT_API SMMutex* SMMutexCreate_s(const char* name, int32_t permission);

/** Makes a handle on the mutex of that name.
 *
 * @param[in] name the name, in UTF-8. NULL is answered with NULL; borrowed for the call.
 * @return The handle, which the caller releases with SMMutexDestroy; NULL when `name` is NULL or
 *   empty, nobody has created the mutex yet, memory is short, the lock file can be opened neither
 *   for writing nor for reading, its path has more than 255 bytes, or the library has not
 *   started. */
KQSUPT_API SMMutex* SMMutexOpen(const char* name);

/** Takes the mutex. A wait is over after a quarter of its time, with a name after half of it at
 * the latest, or a little later.
 *
 * @param[in] mutex the handle. Not NULL; borrowed for the call.
 * @param[in] timeout in milliseconds; -1 waits without limit and 0 tries once. Any other negative
 *   one counts as unsigned: about 49 days.
 * @retval SM_STATUS_SUCCESS the calling thread holds the mutex.
 * @retval SM_STATUS_INVALID_PARAMETER `mutex` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind.
 * @retval SM_STATUS_TIMEOUT somebody else held it for as long as that.
 * @retval 0xFFFFFFFF the system refuses. */
KQSUPT_API SMStatus SMMutexLock(SMMutex* mutex, int32_t timeout);

/** Gives the mutex back.
 *
 * @param[in] mutex the handle. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS always, for a mutex.
 * @retval SM_STATUS_INVALID_PARAMETER `mutex` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind. */
KQSUPT_API SMStatus SMMutexUnLock(SMMutex* mutex);

/** Releases the handle. Whatever locks this process has on the lock file are given back, also those
 * of other handles with that name.
 *
 * @param[in] mutex the handle, which the call takes over and frees. NULL and handles of another
 *   kind are ignored. */
KQSUPT_API void SMMutexDestroy(SMMutex* mutex);

/** @} */

/** @defgroup ipc_semaphores Semaphores
 *
 * A count, which starts at 32767 at most. With a name it gets no higher; without one releases may
 * raise it beyond. A named one stays, with its count, until a creator destroys it; a process that
 * dies gives nothing back.
 * @{ */

/** A semaphore, as a handle. */
typedef struct SMSemaphore SMSemaphore;

/** Makes a new semaphore, or with a name that exists another handle on it, whose count stays. Its
 * permission is -1 with a name and 0 without.
 *
 * @param[in] name the name, in UTF-8, of at least one byte; NULL for a semaphore without one;
 *   borrowed for the call.
 * @param[in] initialCount the count of a new semaphore, 0 to 32767.
 * @return The handle, which the caller releases with SMSemaphoreDestroy; NULL when `initialCount`
 *   is above 32767, memory is short, the name is empty or no key could be had for it, or the system
 *   has no semaphore left. */
KQSUPT_API SMSemaphore* SMSemaphoreCreate(const char* name, uint32_t initialCount);

/** As SMSemaphoreCreate, with a permission.
 *
 * @param[in] name the name, in UTF-8, of at least one byte; NULL for a semaphore without one;
 *   borrowed for the call.
 * @param[in] initialCount the count of a new semaphore, 0 to 32767.
 * @param[in] permission who may use a new object: -1 stands for 0664 and 0 for 0600; any other
 *   value is a sum of SM_PERMISSION_ bits.
 * @return The handle, which the caller releases with SMSemaphoreDestroy; NULL when `initialCount`
 *   is above 32767, memory is short, the name is empty or no key could be had for it, or the system
 *   has no semaphore left. */
KQSUPT_API SMSemaphore* SMSemaphoreCreate_s(const char* name, uint32_t initialCount,
                                            int32_t permission);

/** Makes a handle on the semaphore of that name.
 *
 * @param[in] name the name, in UTF-8. NULL is answered with NULL; borrowed for the call.
 * @return The handle, which the caller releases with SMSemaphoreDestroy; NULL when `name` is NULL
 *   or empty, there is no such semaphore now, memory is short, or no key could be had for the name.
 */
KQSUPT_API SMSemaphore* SMSemaphoreOpen(const char* name);

/** Waits until the count is above 0 and takes 1.
 *
 * @param[in] semaphore the handle. Not NULL; borrowed for the call.
 * @param[in] timeout in milliseconds; -1 waits without limit and 0 tries once. Any other negative
 *   one counts as unsigned: about 49 days.
 * @retval SM_STATUS_SUCCESS 1 was taken.
 * @retval SM_STATUS_INVALID_PARAMETER `semaphore` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind.
 * @retval SM_STATUS_TIMEOUT the count stayed 0 for `timeout`.
 * @retval 0xFFFFFFFF the system refuses, as when the semaphore was destroyed meanwhile. */
KQSUPT_API SMStatus SMSemaphoreAcquireWait(SMSemaphore* semaphore, int32_t timeout);

/** Adds `count`, one by one.
 *
 * @param[in] semaphore the handle. Not NULL; borrowed for the call.
 * @param[in] count how much is added, 1 to 32767.
 * @param[out] previous receives the count before, also when the system then refuses. May be NULL;
 *   stays the caller's.
 * @retval SM_STATUS_SUCCESS all of it was added.
 * @retval SM_STATUS_INVALID_PARAMETER `semaphore` is NULL, or `count` is not 1 to 32767; nothing is
 *   done.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind.
 * @retval 0xFFFFFFFF the system refuses, as above the highest count: what was added until then
 *   stays. */
KQSUPT_API SMStatus SMSemaphoreRelease(SMSemaphore* semaphore, int32_t count, uint32_t* previous);

/** Releases the handle. One that was created takes the semaphore away from everybody; one that was
 * opened does not.
 *
 * @param[in] semaphore the handle, which the call takes over and frees. NULL and handles of another
 *   kind are ignored. */
KQSUPT_API void SMSemaphoreDestroy(SMSemaphore* semaphore);

/** @} */

/** @defgroup ipc_events Events
 *
 * Signalled or not. With manual reset an event stays signalled for all who wait, until it is reset;
 * with automatic reset it lets one through and is then reset. A named one stays, with its state,
 * until a creator destroys it.
 * @{ */

/** An event, as a handle. */
typedef struct SMEvent SMEvent;

/** Makes a new event, or with a name that exists another handle on it, whose state stays. Its
 * permission is -1 with a name and 0 without.
 *
 * @param[in] name the name, in UTF-8, of at least one byte; NULL for an event without one; borrowed
 *   for the call.
 * @param[in] manualReset 1 is manual, any other value automatic; of a name that exists it should be
 *   what it was created with.
 * @param[in] initiallySignalled 1 is signalled, any other value is not.
 * @return The handle, which the caller releases with SMEventDestroy; NULL when memory is short, the
 *   name is empty or no key could be had for it, or the system has no semaphore left. */
KQSUPT_API SMEvent* SMEventCreate(const char* name, int32_t manualReset,
                                  uint32_t initiallySignalled);

/** As SMEventCreate, with a permission.
 *
 * @param[in] name the name, in UTF-8, of at least one byte; NULL for an event without one; borrowed
 *   for the call.
 * @param[in] manualReset 1 is manual, any other value automatic; of a name that exists it should be
 *   what it was created with.
 * @param[in] initiallySignalled 1 is signalled, any other value is not.
 * @param[in] permission who may use a new object: -1 stands for 0664 and 0 for 0600; any other
 *   value is a sum of SM_PERMISSION_ bits.
 * @return The handle, which the caller releases with SMEventDestroy; NULL when memory is short, the
 *   name is empty or no key could be had for it, or the system has no semaphore left. */
KQSUPT_API SMEvent* SMEventCreate_s(const char* name, int32_t manualReset,
                                    uint32_t initiallySignalled, int32_t permission);

/** Makes a handle on the event of that name, which is reset as it was created to be.
 *
 * @param[in] name the name, in UTF-8. NULL is answered with NULL; borrowed for the call.
 * @return The handle, which the caller releases with SMEventDestroy; NULL when `name` is NULL or
 *   empty, there is no such event now, memory is short, or no key could be had for the name. */
KQSUPT_API SMEvent* SMEventOpen(const char* name);

/** Waits until the event is signalled.
 *
 * @param[in] event the handle. Not NULL; borrowed for the call.
 * @param[in] timeout in milliseconds; -1 waits without limit and 0 tries once. Any other negative
 *   one counts as unsigned: about 49 days.
 * @retval SM_STATUS_SUCCESS the event was signalled.
 * @retval SM_STATUS_INVALID_PARAMETER `event` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind.
 * @retval SM_STATUS_TIMEOUT the event was not signalled within `timeout`.
 * @retval 0xFFFFFFFF the system refuses, as when the event was destroyed meanwhile. */
KQSUPT_API SMStatus SMEventWait(SMEvent* event, int32_t timeout);

/** Signals the event.
 *
 * @param[in] event the handle. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the event is signalled.
 * @retval SM_STATUS_INVALID_PARAMETER `event` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind.
 * @retval 0xFFFFFFFF the system refuses. */
KQSUPT_API SMStatus SMEventSet(SMEvent* event);

/** Ends the signal.
 *
 * @param[in] event the handle. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS always, for an event.
 * @retval SM_STATUS_INVALID_PARAMETER `event` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind. */
KQSUPT_API SMStatus SMEventReset(SMEvent* event);

/** Lets through who waits now, as the event is reset: all, or one. Then it is not signalled. A
 * waiter that does not get to run in between misses it. On an event that is signalled it is a
 * reset.
 *
 * @param[in] event the handle. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS always, for an event.
 * @retval SM_STATUS_INVALID_PARAMETER `event` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind. */
KQSUPT_API SMStatus SMEventPulse(SMEvent* event);

/** Releases the handle. One that was created takes the event away from everybody; one that was
 * opened does not.
 *
 * @param[in] event the handle, which the call takes over and frees. NULL and handles of another
 *   kind are ignored. */
KQSUPT_API void SMEventDestroy(SMEvent* event);

/** @} */

/** @defgroup ipc_shared_memory Shared memory
 *
 * Always named. A segment belongs to the process that created it: while that lives others can open
 * it and nobody can create it. When it ends without SMSharedMemFree the segment stays with its
 * content: nobody can open it, and the next one to create it takes it over.
 * @{ */

/** A segment of shared memory, as a handle. */
typedef struct SMSharedMem SMSharedMem;

/** Makes a segment, zeros when it is new; one that was taken over has its old size and content. Its
 * permission is -1.
 *
 * @param[in] name the name, in UTF-8, of at least one byte. NULL is answered with NULL; borrowed
 *   for the call.
 * @param[in] size the size of a new segment in bytes, not 0.
 * @return The handle, which the caller releases with SMSharedMemFree; NULL when `name` is NULL or
 *   empty, memory is short, no key could be had for the name, its creator lives, or the system
 *   refuses: `size` 0, no segment or semaphore left. */
KQSUPT_API SMSharedMem* SMSharedMemCreate(const char* name, uint32_t size);

/** As SMSharedMemCreate, with a permission.
 *
 * @param[in] name the name, in UTF-8, of at least one byte. NULL is answered with NULL; borrowed
 *   for the call.
 * @param[in] size the size of a new segment in bytes, not 0.
 * @param[in] permission who may use a new object: -1 stands for 0664 and 0 for 0600; any other
 *   value is a sum of SM_PERMISSION_ bits.
 * @return The handle, which the caller releases with SMSharedMemFree; NULL when `name` is NULL or
 *   empty, memory is short, no key could be had for the name, its creator lives, or the system
 *   refuses: `size` 0, no segment or semaphore left. */
KQSUPT_API SMSharedMem* SMSharedMemCreate_s(const char* name, uint32_t size, int32_t permission);

/** Makes a handle on the segment of that name.
 *
 * @param[in] name the name, in UTF-8. NULL is answered with NULL; borrowed for the call.
 * @return The handle, which the caller releases with SMSharedMemFree; NULL when `name` is NULL or
 *   empty, memory is short, no key could be had for the name, there is no segment, or its creator
 *   has ended. */
KQSUPT_API SMSharedMem* SMSharedMemOpen(const char* name);

/** Tells where the segment lies in this process.
 *
 * @param[in] memory the handle. NULL is answered with NULL; borrowed for the call.
 * @return The address of the segment, borrowed until the handle is released; NULL for NULL and
 *   handles of another kind. */
KQSUPT_API void* SMSharedMemGetAddressPtr(const SMSharedMem* memory);

/** Releases the handle; the segment is no longer to be used through it. The handle that made the
 * segment takes it away: who has it open keeps it, and the name is free. One that took a segment
 * over holds it until the process ends.
 *
 * @param[in] memory the handle, which the call takes over and frees. NULL and handles of another
 *   kind are ignored. */
KQSUPT_API void SMSharedMemFree(SMSharedMem* memory);

/** @} */

/** @defgroup ipc_locks Reader-writer locks
 *
 * Held by any number of readers or by one writer. No reader gets in while a writer waits. Whoever
 * holds one and asks again may wait for itself.
 *
 * A named lock excludes the threads of one process as one without a name does: who holds it, and
 * who waits, every process counts for itself. What the processes share is the mutex around those
 * counts and the semaphores that waiters sleep on: a wake-up may go to another process, so that who
 * waits looks again after 100 ms at the latest. It is for its own user alone.
 * @{ */

/** A reader-writer lock, as a handle. */
typedef struct SMRWLock SMRWLock;

/** Makes a new lock, which nobody holds.
 *
 * @param[in] name the name, in UTF-8, of at least one byte; NULL for a lock without one; borrowed
 *   for the call.
 * @return The lock, which the caller releases with SMRWLDestroy; NULL when memory is short, or with
 *   a name for one of the reasons of SMMutexCreate and SMSemaphoreCreate. */
KQSUPT_API SMRWLock* SMRWLCreate(const char* name);

/** Releases the lock. Other threads may be waiting for it, whose calls then answer 0xFFFFFFFF; no
 * thread may begin to use it, or hold it. With a name, its semaphores are taken away from
 * everybody: other processes that have the lock go on, by looking again every millisecond when they
 * wait.
 *
 * @param[in] lock the lock, which the call takes over and frees. NULL and handles of another kind
 *   are ignored. */
KQSUPT_API void SMRWLDestroy(SMRWLock* lock);

/** Waits until no writer holds the lock or waits for it, and takes it as a reader. The wait has no
 * end but this.
 *
 * @param[in] lock the lock. Not NULL; borrowed for the call.
 * @param[in] timeout in milliseconds, after how long it looks again without having been woken, 0
 *   standing for 1 ms and -1 for no limit. It does not end the wait.
 * @retval SM_STATUS_SUCCESS the calling thread holds the lock as a reader.
 * @retval SM_STATUS_INVALID_PARAMETER `lock` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind.
 * @retval SM_STATUS_OUT_OF_SPACE 2147483647 readers wait.
 * @retval 0xFFFFFFFF the lock was destroyed meanwhile, the library is being stopped, or the system
 *   refuses. */
KQSUPT_API SMStatus SMRWLReadLockGet(SMRWLock* lock, int32_t timeout);

/** Gives back what SMRWLReadLockGet took; one waiting writer looks again, or else all waiting
 * readers do.
 *
 * @param[in] lock the lock. NULL and handles of another kind are ignored; borrowed for the call. */
KQSUPT_API void SMRWLReadLockRelease(SMRWLock* lock);

/** Waits until nobody holds the lock, and takes it as the writer. As SMRWLReadLockGet otherwise,
 * with the number of waiting writers.
 *
 * @param[in] lock the lock. Not NULL; borrowed for the call.
 * @param[in] timeout in milliseconds, after how long it looks again without having been woken, 0
 *   standing for 1 ms and -1 for no limit. It does not end the wait.
 * @retval SM_STATUS_SUCCESS the calling thread holds the lock as the writer.
 * @retval SM_STATUS_INVALID_PARAMETER `lock` is NULL.
 * @retval SM_STATUS_OPERATION_FAILED it is a handle of another kind.
 * @retval SM_STATUS_OUT_OF_SPACE 2147483647 writers wait.
 * @retval 0xFFFFFFFF the lock was destroyed meanwhile, the library is being stopped, or the system
 *   refuses. */
KQSUPT_API SMStatus SMRWLWriteLockGet(SMRWLock* lock, int32_t timeout);

/** Gives back what SMRWLWriteLockGet took; one waiting writer looks again, or else all waiting
 * readers do.
 *
 * @param[in] lock the lock. NULL and handles of another kind are ignored; borrowed for the call. */
KQSUPT_API void SMRWLWriteLockRelease(SMRWLock* lock);

/** @} */

/** @defgroup ipc_sections Critical sections
 *
 * A section that another thread was running when the process forked stays taken in the child.
 * @{ */

/** What a critical section runs. `argument` is passed on as it is; the result is discarded. */
typedef void* (*SMCriticalSectionRoutine)(void* argument);

/** Runs `routine` on the calling thread while no other thread of the process runs it through this
 * function. Different routines run at the same time; one that calls itself through this function
 * waits for ever.
 *
 * With a `timeout` other than -1 the routine does not run, and the answer is no status but the
 * address of `routine`, cut off to 32 bits, and never 0.
 *
 * @param[in] routine what is to run; with NULL nothing does. It stays the caller's.
 * @param[in] argument passed on to `routine` as it is; may be NULL. What it points to stays the
 *   caller's.
 * @param[in] timeout must be -1.
 * @retval SM_STATUS_SUCCESS the routine has run, and also, without having run it, when `routine` is
 *   NULL, the library has not started or memory is short.
 * @retval 1 `timeout` is not -1, and the last 32 bits of the address of `routine` are 0. */
KQSUPT_API SMStatus SMCriticalSectionExecute(SMCriticalSectionRoutine routine, void* argument,
                                             int32_t timeout);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
