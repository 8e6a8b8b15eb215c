// Files of PCI device names of any bytes.

#include "kqsupt/config.h"
#include "scratch_file.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::put_bytes;
using kqsupt::fuzz::require;
using kqsupt::fuzz::scratch_file;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const std::string& path = scratch_file("fuzz.pci");
  const uint32_t capacity = input.byte() % 32 + 1U;
  const auto bytes = input.bytes();
  put_bytes(path, bytes.get(), input.size());
  const std::unique_ptr<char[]> vendor(new char[capacity]);
  const std::unique_ptr<char[]> device(new char[capacity]);
  for (const uint32_t id : {1U, 0x8086U, 0xFFFFU}) {
    uint32_t vendor_size = capacity;
    uint32_t device_size = capacity;
    const SMStatus status = SMReadPCIDevFile(id, id, id, id, path.c_str(), vendor.get(),
                                             &vendor_size, device.get(), &device_size);
    require(status == SM_STATUS_SUCCESS || status == SM_STATUS_FILE_NOT_FOUND);
    require(std::strlen(vendor.get()) <= vendor_size && vendor_size < capacity);
    require(std::strlen(device.get()) <= device_size && device_size < capacity);
  }
  return 0;
}
