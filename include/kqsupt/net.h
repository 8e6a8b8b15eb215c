/* Host names and network addresses. */
#ifndef KQSUPT_NET_H
#define KQSUPT_NET_H

#include <kqsupt/frame.h>
#include <kqsupt/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Every function here answers 17 when the library has not started in this process. That is looked
 * at before anything but the NULLs. */

/* ---- The name of this machine ---------------------------------------------------------------- */

/* The host name to `buffer`, which has `*size` bytes. A name that is too long is cut without
 * notice; it is always terminated. `*size` receives the length of what was written and 1. With
 * `*size` 0 nothing is written and it stays 0.
 * SM_STATUS_UNSUCCESSFUL: `buffer` or `size` is NULL. 17: not started. */
KQSUPT_API SMStatus SMGetIPHostName(char* buffer, uint32_t* size);

/* The host name, at most its first 63 bytes, in UCS-2 to `buffer`, as SMUTF8StrToUCS2Str converts
 * it: `*size` is the room in bytes and receives the bytes written with the terminator, or the bytes
 * needed when `buffer` is NULL. It is not changed on failure.
 * SM_STATUS_UNSUCCESSFUL: `size` is NULL. SM_STATUS_BUFFER_TOO_SMALL. SM_STATUS_OPERATION_FAILED:
 * the name is not UTF-8, also when a character of it was cut. 17: not started. */
KQSUPT_API SMStatus SMUCS2GetIPHostName(ustring* buffer, uint32_t* size);

/* The DNS suffix of this machine to `buffer`, which has `*size` bytes: what follows the first "."
 * of the official name that the resolver has for the host name, or an empty text when there is no
 * ".". `*size` receives the size of the text with its terminator, also with
 * SM_STATUS_BUFFER_TOO_SMALL. `buffer` may be NULL to ask for that. This may wait for a name
 * server.
 * SM_STATUS_UNSUCCESSFUL: `size` is NULL. SM_STATUS_BUFFER_TOO_SMALL: also when `buffer` is NULL.
 * 0xFFFFFFFF: the host name does not resolve to an IPv4 address. SM_STATUS_NO_MEMORY. 17: not
 * started. */
KQSUPT_API SMStatus SMGetDNSSuffixNameName(char* buffer, uint32_t* size);

/* ---- IPv4 addresses -------------------------------------------------------------------------- */

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

/* ---- Addresses of either family -------------------------------------------------------------- */

/* Address families. An IPv4 address has 4 bytes, an IPv6 address 16, in network byte order. */
enum { SM_INET_FAMILY_IPV4 = 1, SM_INET_FAMILY_IPV6 = 2 };

/* The bytes of the address that `text` names, in the forms that inet_pton reads, to `buffer`, which
 * has `*size` bytes. `*size` receives 4 or 16, and is not changed on failure.
 * SM_STATUS_UNSUCCESSFUL: `text`, `buffer` or `size` is NULL. SM_STATUS_INVALID_PARAMETER: no such
 * family, or the text is no address of it. SM_STATUS_BUFFER_TOO_SMALL. 17: not started. */
KQSUPT_API SMStatus SMInetAddrUTF8ToNetwork(uint32_t family, const char* text, void* buffer,
                                            uint32_t* size);

/* The text of the address at `address`, as inet_ntop writes it, to `buffer`, which has `*size`
 * bytes. `length` is the number of bytes of the address, 4 or 16 as its family has it. `*size`
 * receives the size of the text with its terminator, and is not changed on failure; 46 bytes hold
 * every address.
 * SM_STATUS_UNSUCCESSFUL: `address`, `buffer` or `size` is NULL. SM_STATUS_INVALID_PARAMETER: no
 * such family, or not the length of its addresses. SM_STATUS_BUFFER_TOO_SMALL. 0xFFFFFFFF: the
 * system cannot write it. 17: not started. */
KQSUPT_API SMStatus SMInetAddrNetworkToUTF8(uint32_t family, const void* address, uint32_t length,
                                            char* buffer, uint32_t* size);

/* ---- The addresses of this machine ----------------------------------------------------------- */

/* An IPv4 address as dotted text, terminated. */
typedef struct SMIPAddrStr {
  char text[16];
} SMIPAddrStr;

/* The IPv4 addresses of the interfaces that run and are neither loopback nor point-to-point, to
 * `entries`, which has room for `*count` of them. Each address of an interface is there once, in
 * the order of the interface table, also where several have one label. `*count` receives the number
 * found, which may be above the room. `entries` may be NULL to count only; `*count` is not read
 * then. `host` is not used.
 * SM_STATUS_UNSUCCESSFUL: `count` is NULL. SM_STATUS_BUFFER_TOO_SMALL: more were found than fit;
 * the first ones are there. 0xFFFFFFFF: the interface table cannot be read, or memory is short;
 * `*count` is not changed. 17: not started. */
KQSUPT_API SMStatus SMGetIPAddrStrList(const char* host, uint32_t* count, SMIPAddrStr* entries);

/* An address of either family as text. */
typedef struct SMInetAddrStr {
  uint16_t family;   /* SM_INET_FAMILY_ */
  uint16_t reserved; /* 0 */
  char text[256];    /* terminated: dotted, or as inet_ntop writes IPv6 addresses */
} SMInetAddrStr;

/* Which families to list. */
enum { SM_INET_LIST_BOTH = 0, SM_INET_LIST_IPV4 = 1, SM_INET_LIST_IPV6 = 2 };

/* The addresses of this machine to `entries`, which has room for `*count` of them: the IPv4
 * addresses as SMGetIPAddrStrList lists them, then the IPv6 addresses of the interfaces that are
 * not loopback and have neighbours, global ones first, then site-local and link-local ones.
 * `*count` receives the number found, which may be above the room. `entries` may be NULL to count
 * only; `*count` is not read then.
 *
 * When there is no room for all IPv4 addresses none of them is written. The answer is that of the
 * last family listed: when that is IPv6 and there is no such address it is SM_STATUS_SUCCESS, also
 * where IPv4 addresses found no room. Compare `*count` with the room.
 *
 * SM_STATUS_UNSUCCESSFUL: `count` is NULL. SM_STATUS_INVALID_PARAMETER: no such selector.
 * SM_STATUS_BUFFER_TOO_SMALL: an address found no room, also because `entries` is NULL.
 * SM_STATUS_NO_MEMORY. 0xFFFFFFFF: the interfaces cannot be asked about, or the system's list of
 * IPv6 addresses ends with something else. With the last two and SM_STATUS_INVALID_PARAMETER
 * `*count` is not changed; IPv4 entries may have been written. 17: not started. */
KQSUPT_API SMStatus SMGetInetAddrStrList(uint32_t selector, uint32_t* count,
                                         SMInetAddrStr* entries);

#ifdef __cplusplus
}
#endif

#endif
