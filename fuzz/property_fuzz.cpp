// Property files of any bytes, read as values and lists; and what is written to them is found again.

#include "kqsupt/config.h"
#include "scratch_file.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::put_bytes;
using kqsupt::fuzz::require;
using kqsupt::fuzz::scratch_file;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const std::string& path = scratch_file("fuzz.properties");
  const uint32_t capacity = input.byte();
  const uint32_t type = input.byte() % 18U;
  const auto bytes = input.bytes();
  put_bytes(path, bytes.get(), input.size());

  const std::unique_ptr<uint8_t[]> buffer(new uint8_t[capacity]);
  void* const room = capacity != 0 ? buffer.get() : nullptr;
  uint32_t value_size = capacity;
  (void)SMPropertyFileReadValue("key", type, room, &value_size, "d", 2, path.c_str(), 1);
  value_size = capacity;
  const SMStatus listed = SMPropertyFileReadValue(nullptr, SMXLT_TYPE_UTF8, room, &value_size,
                                                  nullptr, 0, path.c_str(), 1);
  require(listed == SM_STATUS_KEY_NOT_FOUND ||
          (listed == SM_STATUS_SUCCESS) == (value_size <= capacity));

  char before[8192];
  uint32_t before_size = sizeof before;
  const bool is_there = SMPropertyFileReadValue("key", SMXLT_TYPE_UTF8, before, &before_size,
                                                nullptr, 0, path.c_str(), 1) == SM_STATUS_SUCCESS;
  require(SMPropertyFileWriteValue("key", SMXLT_TYPE_UTF8, "new value", 10, path.c_str(), 1) ==
          SM_STATUS_SUCCESS);
  char after[16] = "";
  uint32_t after_size = sizeof after;
  const SMStatus found = SMPropertyFileReadValue("key", SMXLT_TYPE_UTF8, after, &after_size,
                                                 nullptr, 0, path.c_str(), 1);
  require(found == (is_there ? SM_STATUS_SUCCESS : SM_STATUS_KEY_NOT_FOUND));
  require(!is_there || std::strcmp(after, "new value") == 0);
  return 0;
}
