// What all lockable objects have in common: one heap block that begins with the kind of object and
// its name, and holds that name too.
//
//   auto mutex = make_object<SMMutex>(name);            // null: no memory, or no such name
//   if (SMStatus status = check_object(handle); …)      // before anything else is looked at
#pragma once

#include <cstdint>
#include <memory>
#include <new>

#include "frame/heap.h"
#include "kqsupt/frame.h"

namespace kqsupt::ipc {

enum class ObjectType : uint32_t {
  kMutex = 1,
  kSemaphore = 2,
  kSharedMemory = 3,
  kEvent = 4,
  kReaderWriterLock = 5,
  kPathLock = 6,
};

struct ObjectHeader {
  ObjectType type;
  const char* name;  // decorated, inside the object's block; null for an object without a name
};

// The header, `size` bytes in all, and the name behind them. Null for the empty name, for one that
// gets too long when decorated, and when memory is short.
[[nodiscard]] frame::HeapPtr<ObjectHeader> make_block(const char* name, size_t size,
                                                      ObjectType type);

template <class Object>
struct ObjectDelete {
  void operator()(Object* object) const {
    object->~Object();
    frame::release(object);
  }
};
template <class Object>
using ObjectPtr = std::unique_ptr<Object, ObjectDelete<Object>>;

// `Object` has a member `header`, before all others, and a constant kType.
template <class Object>
[[nodiscard]] ObjectPtr<Object> make_object(const char* name) {
  static_assert(offsetof(Object, header) == 0);
  frame::HeapPtr<ObjectHeader> block = make_block(name, sizeof(Object), Object::kType);
  if (block == nullptr) {
    return nullptr;
  }
  const ObjectHeader header = *block;
  auto* object = new (block.release()) Object{};
  object->header = header;
  return ObjectPtr<Object>(object);
}

template <class Object>
[[nodiscard]] bool is_object(const Object* handle) {
  return handle != nullptr && handle->header.type == Object::kType;
}

template <class Object>
[[nodiscard]] SMStatus check_object(const Object* handle) {
  if (handle == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  return is_object(handle) ? SM_STATUS_SUCCESS : SM_STATUS_OPERATION_FAILED;
}

// Takes the object of a handle that is about to go; null for any other kind of handle.
template <class Object>
[[nodiscard]] ObjectPtr<Object> take_object(Object* handle) {
  return ObjectPtr<Object>(is_object(handle) ? handle : nullptr);
}

}  // namespace kqsupt::ipc
