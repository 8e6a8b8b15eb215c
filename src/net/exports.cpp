// The exported functions on host names and network addresses.

#include "kqsupt/net.h"

#include "net/host_name.h"
#include "net/inet_address.h"
#include "net/interface_lists.h"
#include "net/ipv4.h"

using namespace kqsupt;

extern "C" {

SMStatus SMGetIPHostName(char* buffer, uint32_t* size) {
  return net::ip_host_name(buffer, size);
}

SMStatus SMUCS2GetIPHostName(ustring* buffer, uint32_t* size) {
  return net::ip_host_name_in_ucs2(buffer, size);
}

SMStatus SMGetDNSSuffixNameName(char* buffer, uint32_t* size) {
  return net::dns_suffix(buffer, size);
}

SMStatus SMIPAddrASCIIToNetwork(const char* text, uint32_t* address) {
  return net::ipv4_from_text(text, address);
}

SMStatus SMIPAddrNetworkToASCII(uint32_t address, char* buffer, uint32_t* size) {
  return net::ipv4_to_text(address, buffer, size);
}

SMStatus SMInetAddrUTF8ToNetwork(uint32_t family, const char* text, void* buffer, uint32_t* size) {
  return net::inet_from_text(family, text, buffer, size);
}

SMStatus SMInetAddrNetworkToUTF8(uint32_t family, const void* address, uint32_t length,
                                 char* buffer, uint32_t* size) {
  return net::inet_to_text(family, address, length, buffer, size);
}

SMStatus SMGetIPAddrStrList(const char*, uint32_t* count, SMIPAddrStr* entries) {
  return net::list_ipv4_addresses(count, entries);
}

SMStatus SMGetInetAddrStrList(uint32_t selector, uint32_t* count, SMInetAddrStr* entries) {
  return net::list_addresses(selector, count, entries);
}

}  // extern "C"
