/** @file
 * Host names and network addresses.
 *
 * Every function here answers 17 when the library has not started in this process. That is looked
 * at before anything but the NULLs. */
#ifndef KQSUPT_NET_H
#define KQSUPT_NET_H

#include <kqsupt/frame.h>
#include <kqsupt/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup net_host The name of this machine
 * @{ */

/** Gives the host name. A name that is too long is cut without notice; it is always terminated.
 *
 * @param[out] buffer the room for the name. Not NULL; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the length of what was written and 1.
 *   With `*size` 0 nothing is written and it stays 0. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the name was written, cut where it was too long, to nothing at all
 *   where `*size` is 0.
 * @retval SM_STATUS_UNSUCCESSFUL `buffer` or `size` is NULL.
 * @retval 17 the library has not started. */
KQSUPT_API SMStatus SMGetIPHostName(char* buffer, uint32_t* size);

/** Gives the host name, at most its first 63 bytes, in UCS-2, as SMUTF8StrToUCS2Str converts it.
 *
 * @param[out] buffer the room for the name; NULL to ask for its size; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the bytes written with the
 *   terminator, or the bytes needed when `buffer` is NULL. It is not changed on failure. Not NULL;
 *   stays the caller's.
 * @retval SM_STATUS_SUCCESS the name was written, or its size told because `buffer` is NULL.
 * @retval SM_STATUS_UNSUCCESSFUL `size` is NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the name does not fit into `*size` bytes.
 * @retval SM_STATUS_OPERATION_FAILED the name is not UTF-8, also when a character of it was cut.
 * @retval 17 the library has not started. */
KQSUPT_API SMStatus SMUCS2GetIPHostName(ustring* buffer, uint32_t* size);

/** Gives the DNS suffix of this machine: what follows the first "." of the official name that the
 * resolver has for the host name, or an empty text when there is no ".". This may wait for a name
 * server.
 *
 * @param[out] buffer the room for the suffix; NULL to ask for its size; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the size of the text with its
 *   terminator, also with SM_STATUS_BUFFER_TOO_SMALL. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the suffix was written.
 * @retval SM_STATUS_UNSUCCESSFUL `size` is NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the suffix does not fit, also when `buffer` is NULL.
 * @retval 0xFFFFFFFF the host name does not resolve to an IPv4 address.
 * @retval SM_STATUS_NO_MEMORY memory is short.
 * @retval 17 the library has not started. */
KQSUPT_API SMStatus SMGetDNSSuffixNameName(char* buffer, uint32_t* size);

/** @} */

/** @defgroup net_ipv4 IPv4 addresses
 * @{ */

/** Reads an IPv4 address. Leading zeros of a part and every "x" in the text are dropped before it
 * is read, so that a part is never octal; otherwise it is read as inet_addr does, "1.2.3" included.
 * The broadcast address has two spellings: "255.255.255.255" and "0xff.0xff.0xff.0xff" in any case.
 *
 * @param[in] text the text that names the address, terminated. Not NULL; borrowed for the call.
 * @param[out] address receives the address in network byte order; not changed on failure. Not NULL;
 *   stays the caller's.
 * @retval SM_STATUS_SUCCESS the address was written.
 * @retval SM_STATUS_UNSUCCESSFUL an argument is NULL.
 * @retval 0xFFFFFFFF `text` is not an address; `*address` is not changed.
 * @retval SM_STATUS_NO_MEMORY memory is short.
 * @retval 17 the library has not started. */
KQSUPT_API SMStatus SMIPAddrASCIIToNetwork(const char* text, uint32_t* address);

/** Gives the dotted text of an IPv4 address.
 *
 * @param[in] address the address, in network byte order.
 * @param[out] buffer the room for the text. Not NULL; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the size of the text with its
 *   terminator, also with SM_STATUS_BUFFER_TOO_SMALL. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the text was written.
 * @retval SM_STATUS_UNSUCCESSFUL `buffer` or `size` is NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the text does not fit into `*size` bytes.
 * @retval 17 the library has not started. */
KQSUPT_API SMStatus SMIPAddrNetworkToASCII(uint32_t address, char* buffer, uint32_t* size);

/** @} */

/** @defgroup net_inet Addresses of either family
 * @{ */

/** Address families. An IPv4 address has 4 bytes, an IPv6 address 16, in network byte order. */
enum {
  SM_INET_FAMILY_IPV4 = 1, /**< IPv4 */
  SM_INET_FAMILY_IPV6 = 2  /**< IPv6 */
};

/** Reads an address of either family, in the forms that inet_pton reads.
 *
 * @param[in] family SM_INET_FAMILY_IPV4 or SM_INET_FAMILY_IPV6.
 * @param[in] text the text that names the address, terminated. Not NULL; borrowed for the call.
 * @param[out] buffer the room for the bytes of the address. Not NULL; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives 4 or 16, and is not changed on
 *   failure. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the address was written.
 * @retval SM_STATUS_UNSUCCESSFUL `text`, `buffer` or `size` is NULL.
 * @retval SM_STATUS_INVALID_PARAMETER there is no such family, or the text is no address of it.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the address does not fit into `*size` bytes.
 * @retval 17 the library has not started. */
KQSUPT_API SMStatus SMInetAddrUTF8ToNetwork(uint32_t family, const char* text, void* buffer,
                                            uint32_t* size);

/** Gives the text of an address of either family, as inet_ntop writes it.
 *
 * @param[in] family SM_INET_FAMILY_IPV4 or SM_INET_FAMILY_IPV6.
 * @param[in] address the bytes of the address. Not NULL; borrowed for the call.
 * @param[in] length the number of bytes of the address, 4 or 16 as its family has it.
 * @param[out] buffer the room for the text; 46 bytes hold every address. Not NULL; stays the
 *   caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the size of the text with its
 *   terminator, and is not changed on failure. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the text was written.
 * @retval SM_STATUS_UNSUCCESSFUL `address`, `buffer` or `size` is NULL.
 * @retval SM_STATUS_INVALID_PARAMETER there is no such family, or `length` is not the length of its
 *   addresses.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the text does not fit into `*size` bytes.
 * @retval 0xFFFFFFFF the system cannot write it.
 * @retval 17 the library has not started. */
KQSUPT_API SMStatus SMInetAddrNetworkToUTF8(uint32_t family, const void* address, uint32_t length,
                                            char* buffer, uint32_t* size);

/** @} */

/** @defgroup net_lists The addresses of this machine
 * @{ */

/** An IPv4 address as dotted text. */
typedef struct SMIPAddrStr {
  char text[16]; /**< the text, terminated */
} SMIPAddrStr;

/** Lists the IPv4 addresses of the interfaces that run and are neither loopback nor point-to-point.
 * Each address of an interface is there once, in the order of the interface table, also where
 * several have one label.
 *
 * @param[in] host not used; may be NULL; stays the caller's.
 * @param[in,out] count the number of entries that `entries` has room for, not read when that is
 *   NULL; receives the number found, which may be above the room. Not NULL; stays the caller's.
 * @param[out] entries the room for the addresses; NULL to count only; stays the caller's.
 * @retval SM_STATUS_SUCCESS all addresses were written, or counted because `entries` is NULL.
 * @retval SM_STATUS_UNSUCCESSFUL `count` is NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL more were found than fit; the first ones are there.
 * @retval 0xFFFFFFFF the interface table cannot be read, or memory is short; `*count` is not
 *   changed.
 * @retval 17 the library has not started. */
KQSUPT_API SMStatus SMGetIPAddrStrList(const char* host, uint32_t* count, SMIPAddrStr* entries);

/** An address of either family as text. */
typedef struct SMInetAddrStr {
  uint16_t family;   /**< SM_INET_FAMILY_ */
  uint16_t reserved; /**< 0 */
  char text[256];    /**< terminated: dotted, or as inet_ntop writes IPv6 addresses */
} SMInetAddrStr;

/** Which families to list. */
enum {
  SM_INET_LIST_BOTH = 0, /**< IPv4 addresses, then IPv6 addresses */
  SM_INET_LIST_IPV4 = 1, /**< IPv4 addresses only */
  SM_INET_LIST_IPV6 = 2  /**< IPv6 addresses only */
};

/** Lists the addresses of this machine: the IPv4 addresses as SMGetIPAddrStrList lists them, then
 * the IPv6 addresses of the interfaces that are not loopback and have neighbours, global ones
 * first, then site-local and link-local ones.
 *
 * When there is no room for all IPv4 addresses none of them is written. The answer is that of the
 * last family listed: when that is IPv6 and there is no such address it is SM_STATUS_SUCCESS, also
 * where IPv4 addresses found no room. Compare `*count` with the room.
 *
 * @param[in] selector SM_INET_LIST_BOTH, SM_INET_LIST_IPV4 or SM_INET_LIST_IPV6.
 * @param[in,out] count the number of entries that `entries` has room for, not read when that is
 *   NULL; receives the number found, which may be above the room. It is not changed with
 *   SM_STATUS_INVALID_PARAMETER, SM_STATUS_NO_MEMORY and 0xFFFFFFFF. Not NULL; stays the caller's.
 * @param[out] entries the room for the addresses; NULL to count only; stays the caller's.
 * @retval SM_STATUS_SUCCESS the last family listed has all its addresses in `entries`, or has none.
 * @retval SM_STATUS_UNSUCCESSFUL `count` is NULL.
 * @retval SM_STATUS_INVALID_PARAMETER there is no such selector.
 * @retval SM_STATUS_BUFFER_TOO_SMALL an address found no room, also because `entries` is NULL.
 * @retval SM_STATUS_NO_MEMORY memory is short; IPv4 entries may have been written.
 * @retval 0xFFFFFFFF the interfaces cannot be asked about, or the system's list of IPv6 addresses
 *   ends with something else; IPv4 entries may have been written.
 * @retval 17 the library has not started. */
KQSUPT_API SMStatus SMGetInetAddrStrList(uint32_t selector, uint32_t* count,
                                         SMInetAddrStr* entries);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
