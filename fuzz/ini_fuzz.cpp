// INI files of any bytes, in all forms in which they are read; and what is written to them is found
// again.

#include "kqsupt/config.h"
#include "scratch_file.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::put_bytes;
using kqsupt::fuzz::require;
using kqsupt::fuzz::scratch_file;

namespace {

constexpr const char* kSections[] = {"s", "", "t t", nullptr};
constexpr const char* kKeys[] = {"k", "", "a=b", nullptr};

void read_all_forms(const char* path, uint32_t capacity) {
  for (const char* section : kSections) {
    for (const char* key : kKeys) {
      for (uint32_t type = 1; type <= 9; ++type) {
        const std::unique_ptr<uint8_t[]> buffer(new uint8_t[capacity]);
        uint32_t size = capacity;
        const SMStatus status = SMReadINIPathFileValue(
            section, key, type, capacity != 0 ? buffer.get() : nullptr, &size, "d", 2, path, 1);
        require(status != SM_STATUS_NEXT_SECTION);
        if (status == SM_STATUS_BUFFER_TOO_SMALL && type <= 3) {
          require(size > capacity || type != 1);
        } else {
          require(size <= capacity);
        }
      }
    }
  }
  uint32_t size = 0;
  char* copy = SMReadINISectionKeyUTF8Value("s", "k", "dflt", &size, path, 1);
  require((copy == nullptr) == (size == 0));
  SMFreeMem(copy);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const std::string& path = scratch_file("fuzz.ini");
  const uint32_t capacity = input.byte() % 64;
  const bool is_deletion = input.byte() % 4 == 0;
  const auto bytes = input.bytes();
  put_bytes(path, bytes.get(), input.size());
  read_all_forms(path.c_str(), capacity);

  const SMStatus status =
      SMWriteINIPathFileValue("s", "k", SMINI_TYPE_UTF8, is_deletion ? nullptr : "new value",
                              is_deletion ? 0 : 10, path.c_str(), 1);
  require(status == SM_STATUS_SUCCESS || status == SM_STATUS_END_OF_FILE ||
          (is_deletion && status == SM_STATUS_BAD_LENGTH));
  if (status == SM_STATUS_SUCCESS && !is_deletion) {
    char value[16];
    uint32_t value_size = sizeof value;
    require(SMReadINIPathFileValue("s", "k", SMINI_TYPE_UTF8, value, &value_size, nullptr, 0,
                                   path.c_str(), 1) == SM_STATUS_SUCCESS);
    require(value_size == 10 && std::strcmp(value, "new value") == 0);
  }
  return 0;
}
