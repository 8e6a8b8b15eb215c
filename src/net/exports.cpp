// The exported functions on network addresses.

#include "kqsupt/net.h"

#include "net/ipv4.h"

using namespace kqsupt;

extern "C" {

SMStatus SMIPAddrASCIIToNetwork(const char* text, uint32_t* address) {
  return net::ipv4_from_text(text, address);
}

SMStatus SMIPAddrNetworkToASCII(uint32_t address, char* buffer, uint32_t* size) {
  return net::ipv4_to_text(address, buffer, size);
}

}  // extern "C"
