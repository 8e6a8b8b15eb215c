// What the measurements of named objects share.
#pragma once

#include <cstddef>

#include "measure.h"

namespace kqbench {

inline constexpr const char* kNamedMutexRow = "named/mutex";
inline constexpr const char* kNamedSemaphoreRow = "named/semaphore";

// Enters a contestant: an object that is made once, and whose pair() is one operation.
template <class Object>
void add_named_pairs(const char* operation, const char* contestant) {
  constexpr size_t kPairs = 1000;
  add_measurement(
      operation, contestant, kPairs,
      [] {
        static Object object;
        return &object;
      },
      [](Object* object) {
        for (size_t i = 0; i < kPairs; ++i) {
          object->pair();
        }
      });
}

}  // namespace kqbench
