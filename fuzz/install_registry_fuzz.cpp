// Install registries of any bytes, and texts with the macro of the install path.

#include "kqsupt/config.h"
#include "scratch_file.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::put_bytes;
using kqsupt::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Only the registry of a sandbox may be written.
  if (std::getenv("KQSUPT_SANDBOX") == nullptr) {
    return 0;
  }
  Input input(data, size);
  const uint32_t capacity = input.byte();
  const auto bytes = input.bytes();
  put_bytes("/etc/ybreg.cfg", bytes.get(), input.size());
  uint32_t path_size = 0;
  require(SMGetPathByProductIDandType(99, SM_PATH_TYPE_INI, nullptr, &path_size) ==
          SM_STATUS_DATA_NOT_FOUND);
  const std::unique_ptr<char[]> buffer(new char[capacity]);
  char* const room = capacity != 0 ? buffer.get() : nullptr;
  // One type of each product: every path that is not found has the registry read again.
  const uint32_t type = 2U << capacity % 7;
  for (const int32_t product : {-1, 33, 34, 35, 44, 45, 88}) {
    path_size = capacity;
    const SMStatus status = SMGetPathByProductIDandType(product, type, room, &path_size);
    require(status != SM_STATUS_SUCCESS || path_size <= capacity);
    require(status != SM_STATUS_BUFFER_TOO_SMALL || path_size > capacity);
    const bool is_none = status == SM_STATUS_DATA_NOT_FOUND || status == SM_STATUS_OPERATION_FAILED;
    require(!is_none || path_size == 0);
    if (!is_none) {
      char* made = SMMakePathFileNameByPIDAndType(product, type, "sub", "file");
      require(made != nullptr && std::strstr(made, "/sub/file") != nullptr);
      SMFreeMem(made);
    }
  }
  const auto text = input.text();
  path_size = capacity;
  const SMStatus status = SMExpandYbInstallPathString(text.get(), room, &path_size);
  require(status != SM_STATUS_SUCCESS || std::strlen(room) + 1 == path_size);
  return 0;
}
