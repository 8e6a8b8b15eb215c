/* Network addresses. */
#ifndef KQSUPT_NET_H
#define KQSUPT_NET_H

#include <kqsupt/frame.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Every function here answers 17 when the library has not started in this process. */

/* The IPv4 address that `text` names, to `*address` in network byte order. Leading zeros of a part
 * and every "x" in the text are dropped before it is read, so that a part is never octal; otherwise
 * it is read as inet_addr does, "1.2.3" included. The broadcast address has two spellings:
 * "255.255.255.255" and "0xff.0xff.0xff.0xff" in any case.
 * SM_STATUS_UNSUCCESSFUL: an argument is NULL. 0xFFFFFFFF: not an address; `*address` is not
 * changed. SM_STATUS_NO_MEMORY. 17: not started. */
KQSUPT_API SMStatus SMIPAddrASCIIToNetwork(const char* text, uint32_t* address);

/* The dotted text of the IPv4 address `address`, in network byte order, to `buffer`, which has
 * `*size` bytes. `*size` receives the size of the text with its terminator, also with
 * SM_STATUS_BUFFER_TOO_SMALL.
 * SM_STATUS_UNSUCCESSFUL: `buffer` or `size` is NULL. SM_STATUS_BUFFER_TOO_SMALL. 17: not started.
 */
KQSUPT_API SMStatus SMIPAddrNetworkToASCII(uint32_t address, char* buffer, uint32_t* size);

#ifdef __cplusplus
}
#endif

#endif
