// IPv4 addresses read from any text, and written and read again.

#include <arpa/inet.h>
#include <strings.h>

#include "exact_input.h"
#include "kqsupt/net.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Input input(data, size);
  const auto text = input.text();
  uint32_t address = 0x12345678;
  const SMStatus status = SMIPAddrASCIIToNetwork(text.get(), &address);
  if (status != SM_STATUS_SUCCESS) {
    require(status == 0xFFFFFFFF && address == 0x12345678);
    // Without an "x" to drop and a part that begins with 0 the text is read as it stands.
    const bool is_read_as_it_stands = std::strpbrk(text.get(), "0x") == nullptr;
    require(!is_read_as_it_stands || inet_addr(text.get()) == INADDR_NONE);
    return 0;
  }
  require(address != 0xFFFFFFFF || strcasecmp(text.get(), "255.255.255.255") == 0 ||
          strcasecmp(text.get(), "0xff.0xff.0xff.0xff") == 0);
  uint32_t text_size = 0;
  char none = 0;
  require(SMIPAddrNetworkToASCII(address, &none, &text_size) == SM_STATUS_BUFFER_TOO_SMALL);
  require(text_size <= 16);
  const std::unique_ptr<char[]> written(new char[text_size]);
  require(SMIPAddrNetworkToASCII(address, written.get(), &text_size) == SM_STATUS_SUCCESS);
  require(std::strlen(written.get()) + 1 == text_size);
  uint32_t again = 0;
  require(SMIPAddrASCIIToNetwork(written.get(), &again) == SM_STATUS_SUCCESS && again == address);
  return 0;
}
