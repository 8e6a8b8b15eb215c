// What the measurements of named objects share.
#pragma once

#include <cstddef>

#include "many_processes.h"
#include "measure.h"

namespace kqbench {

inline constexpr const char* kNamedMutexRow = "named/mutex";
inline constexpr const char* kContendedMutexRow = "named/mutex of 8 processes";
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

// The same of a mutex that eight processes take in turn.
template <class Object>
void add_contended_pairs(const char* contestant) {
  constexpr size_t kPairs = 5000;
  add_process_measurement(
      kContendedMutexRow, contestant, 8, kPairs,
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
