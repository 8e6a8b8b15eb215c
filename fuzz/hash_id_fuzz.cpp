// Tables of IDs: any sequence of operations, beside a model.

#include <cstring>

#include "exact_input.h"
#include "kqsupt/containers.h"
#include "support/hash_id_model.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;
using kqsupt::tests::HashIdModel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const uint32_t bytes = input.byte();
  const std::unique_ptr<uint8_t[]> table(new uint8_t[bytes]);
  HashIdModel model(bytes);
  (void)SMClearHashTable(table.get(), bytes);
  // The bits of the first input byte of an operation say which, the second one what with.
  for (; input.size() != 0;) {
    const uint8_t operation = input.byte();
    const uint32_t id = uint32_t{operation} / 8 * 256 + input.byte();
    switch (operation % 8) {
      case 0:
        require(SMAcquireHashIDByID(table.get(), bytes, id) == model.take(id));
        break;
      case 1:
        require(SMVerifyHashID(table.get(), bytes, id) == model.verify(id));
        break;
      case 2:
        require(SMReleaseHashID(table.get(), bytes, id) == model.release(id));
        break;
      case 3:
      case 4: {
        const int32_t mode = operation % 8 - 3;
        require(SMAcquireHashID(table.get(), bytes, mode) == model.acquire(mode));
        break;
      }
      case 5:  // takes many at once
        for (uint32_t next = id; next < id + 64; ++next) {
          require(SMAcquireHashIDByID(table.get(), bytes, next) == model.take(next));
        }
        break;
      case 6: {
        uint32_t word = id / 32;
        uint32_t bit = id % 32;
        uint32_t next = id + 1;
        while (next < model.count() && !model.used(next)) {
          ++next;
        }
        require(SMFindNextHashID(table.get(), bytes, &word, &bit) ==
                (next < model.count() ? next : 0));
        require(word * 32 + bit == (next < model.count() ? next : id));
        break;
      }
      default:
        require(SMGetMinInUseID(table.get(), bytes) == model.smallest());
        require(SMGetMaxInUseID(table.get(), bytes) == model.largest());
    }
  }
  for (uint32_t index = 0; index < bytes / 4; ++index) {
    uint32_t word;
    std::memcpy(&word, table.get() + size_t{index} * 4, sizeof word);
    require(word == model.word(index));
  }
  return 0;
}
