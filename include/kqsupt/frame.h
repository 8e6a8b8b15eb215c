/** @file
 * Status codes, memory and version: what every family of the library shares. */
#ifndef KQSUPT_FRAME_H
#define KQSUPT_FRAME_H

#include <stddef.h>
#include <stdint.h>

/** Marks a function that the shared library exports. */
#define KQSUPT_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup status Status codes
 * What most functions return.
 * @{ */

/** The result of most functions: 0 is success, any other value a failure. Some calls that wrap an
 * operation of the operating system answer 0xFFFFFFFF where their description says so. */
typedef uint32_t SMStatus;

/** The statuses that have a name. */
enum {
  /** The operation succeeded. */
  SM_STATUS_SUCCESS = 0,
  /** Generic failure of the file-copy and INI-path families: a required path is NULL, a section or
   * key name is longer than 255 bytes, or the read or write could not be completed. */
  SM_STATUS_UNSUCCESSFUL = 0x2,
  /** A lock or wait did not succeed within its timeout. */
  SM_STATUS_TIMEOUT = 0x3,
  /** The source of a copy or append cannot be opened, or its target does not exist and was not to
   * be created; a device description file is missing. */
  SM_STATUS_FILE_NOT_FOUND = 0x7,
  /** An index is not smaller than the number of entries; a hash ID is not in use. */
  SM_STATUS_INDEX_OUT_OF_RANGE = 0xC,
  /** The caller's buffer is NULL or too small; where the function says so, its size argument now
   * holds the size that is needed. */
  SM_STATUS_BUFFER_TOO_SMALL = 0x10,
  /** Inside the INI engine: the scan reached the next section header. Never returned to a caller.
   */
  SM_STATUS_NEXT_SECTION = 0x11,
  /** A record would exceed 65,535 entries or 65,535 bytes, or a write to a file failed. */
  SM_STATUS_OUT_OF_SPACE = 0x13,
  /** The destination of a copy exists and was not to be overwritten. */
  SM_STATUS_FILE_EXISTS = 0x14,
  /** The requested item does not exist. */
  SM_STATUS_DATA_NOT_FOUND = 0x100,
  /** The object or the operating system refused the operation. */
  SM_STATUS_OPERATION_FAILED = 0x101,
  /** An equal key is present already, or the requested hash ID is in use. */
  SM_STATUS_ALREADY_EXISTS = 0x102,
  /** An INI or property file could not be opened or re-created. */
  SM_STATUS_FILE_OPEN_FAILED = 0x104,
  /** INI: the data ended before the item was complete or found. */
  SM_STATUS_END_OF_FILE = 0x105,
  /** INI: the section is not present. */
  SM_STATUS_SECTION_NOT_FOUND = 0x106,
  /** INI or property file: the key is not present. */
  SM_STATUS_KEY_NOT_FOUND = 0x107,
  /** INI: a line or value is longer than 8,193 bytes, or empty where one is required. */
  SM_STATUS_BAD_LENGTH = 0x108,
  /** The operating system refused access (EACCES). */
  SM_STATUS_ACCESS_DENIED = 0x10E,
  /** A required pointer is NULL, an ID, size or type is outside its range, or a handle is not
   * valid. */
  SM_STATUS_INVALID_PARAMETER = 0x10F,
  /** Memory could not be allocated. */
  SM_STATUS_NO_MEMORY = 0x110,
  /** Text to number: the number is above the type's maximum. */
  SM_STATUS_VALUE_TOO_LARGE = 0x122,
  /** Text to number: the number is below the type's minimum. */
  SM_STATUS_VALUE_TOO_SMALL = 0x123
};

/** @} */

/** @defgroup memory Memory
 * The heap that the library and its callers share.
 * @{ */

/** Allocates plain heap memory, neither zeroed nor padded.
 * @param[in] size how many bytes; for 0 it returns what the heap returns: NULL or a pointer that
 *     may be released, and neither is an error.
 * @return The block, which the caller releases with SMFreeMem; NULL when memory is short. */
KQSUPT_API void* SMAllocMem(uint32_t size);

/** Changes the size of a block and returns its new place; the content is kept up to the smaller of
 * the two sizes.
 * @param[in] ptr the block. The call takes it over unless it fails: when memory is short the block
 *     is still valid and still the caller's. With NULL a block is allocated.
 * @param[in] size the new size in bytes. With 0 it does what the heap does, which on this platform
 *     is to release the block and return NULL.
 * @return The block, which the caller releases with SMFreeMem; NULL when memory is short, and for
 *     `size` 0. */
KQSUPT_API void* SMReAllocMem(void* ptr, uint32_t size);

/** Releases a block of the heap that this library or its caller allocated.
 * @param[in] ptr the block, which the call takes over and frees; NULL is ignored. */
KQSUPT_API void SMFreeMem(void* ptr);

/** The same as SMFreeMem, for memory from the allocating calls of any family.
 * @param[in] ptr the block, which the call takes over and frees; NULL is ignored. */
KQSUPT_API void SMFreeGeneric(void* ptr);

/** @} */

/** @defgroup version Version
 * The version of the library that the process has loaded.
 * @{ */

/** The major version of the library.
 * @return 1. */
KQSUPT_API uint32_t SUPTGetMajorVersion(void);

/** The minor version of the library.
 * @return 1. */
KQSUPT_API uint32_t SUPTGetMinorVersion(void);

/** The revision of the library.
 * @return 1. */
KQSUPT_API uint32_t SUPTGetRevision(void);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
