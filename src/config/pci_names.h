// The names of PCI devices, from a text file.
#pragma once

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::config {

struct PciDevice {
  uint32_t vendor;
  uint32_t device;
  uint32_t sub_vendor;
  uint32_t sub_device;
};

// Room for a name: its size in bytes, and then the length of the name.
struct NameRoom {
  char* text;
  uint32_t* size;
};

[[nodiscard]] SMStatus find_pci_names(const PciDevice& device, const char* path,
                                      const NameRoom& vendor_name, const NameRoom& device_name);

}  // namespace kqsupt::config
