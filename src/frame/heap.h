// Plain heap memory: owned inside the library by HeapPtr, handed to callers by release().
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace kqsupt::frame {

struct HeapFree {
  void operator()(void* block) const { std::free(block); }
};

template <class T>
using HeapPtr = std::unique_ptr<T, HeapFree>;

// `count` zeroed elements; null when memory is short, never for a count of 0.
template <class T>
[[nodiscard]] HeapPtr<T[]> heap_array(size_t count) {
  return HeapPtr<T[]>(static_cast<T*>(std::calloc(count != 0 ? count : 1, sizeof(T))));
}

// The exported memory calls. They are the C library's own, so that a block may be released by
// either side.
inline void* allocate(uint32_t size) {
  return std::malloc(size);
}
inline void* reallocate(void* block, uint32_t size) {
  return std::realloc(block, size);
}
inline void release(void* block) {
  std::free(block);
}

}  // namespace kqsupt::frame
