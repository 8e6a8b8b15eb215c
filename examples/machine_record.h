// The record of a machine, as the collector writes it and the reader finds it: IDs, types, labels.
#pragma once

#include <kqsupt.h>

namespace machine_record {

// Base types that both sides agree on; nested records have those of the library. Text has no
// terminator and no zero byte in it. A field that the machine does not tell is left out.
enum Type : uint8_t {
  kU32 = 1,
  kU64 = 2,
  kText = 3,
  kRecord = SDO_TYPE_CONFIG,
  kRecords = SDO_TYPE_CONFIG | SDO_TYPE_FLAG_ARRAY,
};

// The unit of a number, in the two top bits of its type byte. A walk reports them by themselves.
enum Unit : uint8_t { kNoUnit = 0, kBytes = 1, kSeconds = 2, kKilohertz = 3 };

constexpr uint8_t in(Unit unit, Type type) {
  return static_cast<uint8_t>(unit << 6U | type);
}

// No two fields share an ID, whichever record they are in: an ID alone tells its label.
enum Id : uint16_t {
  kHost = 0x01,
  kUptime = 0x02,
  kKernel = 0x03,
  kMemory = 0x04,
  kCpus = 0x05,
  kInterfaces = 0x06,
  kMounts = 0x07,
  // How many records of an array did not fit into the block; not there when all of them did.
  kCpusOmitted = 0x08,
  kInterfacesOmitted = 0x09,
  kMountsOmitted = 0x0A,

  kKernelSystem = 0x10,
  kKernelRelease = 0x11,
  kKernelVersion = 0x12,
  kKernelMachine = 0x13,

  kMemoryTotal = 0x20,
  kMemoryFree = 0x21,
  kMemoryAvailable = 0x22,
  kSwap = 0x23,
  kSwapTotal = 0x24,
  kSwapFree = 0x25,

  kCpuIndex = 0x30,
  kCpuOnline = 0x31,
  kCpuModel = 0x32,
  kCpuMaxFrequency = 0x33,

  kInterfaceName = 0x40,
  kInterfaceMtu = 0x41,
  kInterfaceAddress = 0x42,
  kInterfaceState = 0x43,
  kInterfaceReceived = 0x44,
  kInterfaceSent = 0x45,

  kMountSource = 0x50,
  kMountTarget = 0x51,
  kMountType = 0x52,
  kMountOptions = 0x53,
};

struct Field {
  Id id;
  uint8_t type;
  const char* label;
};

inline constexpr Field kFields[] = {
    {kHost, kText, "host"},
    {kUptime, in(kSeconds, kU64), "uptime"},
    {kKernel, kRecord, "kernel"},
    {kMemory, kRecord, "memory"},
    {kCpus, kRecords, "cpus"},
    {kInterfaces, kRecords, "interfaces"},
    {kMounts, kRecords, "mounts"},
    {kCpusOmitted, kU32, "cpus omitted"},
    {kInterfacesOmitted, kU32, "interfaces omitted"},
    {kMountsOmitted, kU32, "mounts omitted"},
    {kKernelSystem, kText, "system"},
    {kKernelRelease, kText, "release"},
    {kKernelVersion, kText, "version"},
    {kKernelMachine, kText, "machine"},
    {kMemoryTotal, in(kBytes, kU64), "total"},
    {kMemoryFree, in(kBytes, kU64), "free"},
    {kMemoryAvailable, in(kBytes, kU64), "available"},
    {kSwap, kRecord, "swap"},
    {kSwapTotal, in(kBytes, kU64), "total"},
    {kSwapFree, in(kBytes, kU64), "free"},
    {kCpuIndex, kU32, "index"},
    {kCpuOnline, kU32, "online"},
    {kCpuModel, kText, "model"},
    {kCpuMaxFrequency, in(kKilohertz, kU32), "max frequency"},
    {kInterfaceName, kText, "name"},
    {kInterfaceMtu, in(kBytes, kU32), "mtu"},
    {kInterfaceAddress, kText, "address"},
    {kInterfaceState, kText, "state"},
    {kInterfaceReceived, in(kBytes, kU64), "received"},
    {kInterfaceSent, in(kBytes, kU64), "sent"},
    {kMountSource, kText, "source"},
    {kMountTarget, kText, "target"},
    {kMountType, kText, "type"},
    {kMountOptions, kText, "options"},
};

// Null for an ID that no field has.
constexpr const Field* field_of(uint32_t id) {
  for (const Field& field : kFields) {
    if (field.id == id) {
      return &field;
    }
  }
  return nullptr;
}

}  // namespace machine_record
