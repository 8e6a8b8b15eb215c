// The permission bits of callers.

#include "ipc/permission.h"

namespace kqsupt::ipc {
namespace {

// One class of users: a bit for all, then one each for reading, writing and executing.
struct Bits {
  uint32_t all;
  uint32_t read;
  uint32_t write;
  uint32_t execute;
};
constexpr Bits kOwner = {0x01000000, 0x02000000, 0x04000000, 0x08000000};
constexpr Bits kGroup = {0x00010000, 0x00020000, 0x00040000, 0x00080000};
constexpr Bits kOther = {0x00000100, 0x00000200, 0x00000400, 0x00000800};

mode_t mode_of(uint32_t permission, const Bits& bits) {
  if ((permission & bits.all) != 0) {
    return 7;
  }
  return ((permission & bits.read) != 0 ? 4U : 0U) | ((permission & bits.write) != 0 ? 2U : 0U) |
         ((permission & bits.execute) != 0 ? 1U : 0U);
}

}  // namespace

mode_t mode_of_permission(int32_t permission) {
  if (permission == -1) {
    return 0664;
  }
  if (permission == 0) {
    return 0600;
  }
  const auto bits = static_cast<uint32_t>(permission);
  return mode_of(bits, kOwner) << 6 | mode_of(bits, kGroup) << 3 | mode_of(bits, kOther);
}

}  // namespace kqsupt::ipc
