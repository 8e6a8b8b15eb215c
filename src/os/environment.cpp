// Copying a value out of the environment.

#include "os/environment.h"

#include <cstddef>

#include "frame/heap.h"
#include "kqbounded.h"

namespace kqsupt::os {

// A value that grows between the two looks at it is not copied, nor one that goes; one that shrinks
// tells its new size.
char* copy_of_variable(const char* name, uint32_t* size) {
  size_t needed = 0;
  if (getenv_s(&needed, nullptr, 0, name) != 0 || needed == 0) {
    return nullptr;
  }
  frame::HeapPtr<char> value(static_cast<char*>(std::malloc(needed)));
  const size_t room = needed;
  if (value == nullptr || getenv_s(&needed, value.get(), room, name) != 0 || needed == 0) {
    return nullptr;
  }
  if (size != nullptr) {
    *size = static_cast<uint32_t>(needed);
  }
  return value.release();
}

}  // namespace kqsupt::os
