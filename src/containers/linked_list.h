// Lists of entries that carry their own links, written once for both families: an entry that has a
// `previous` beside its `next` makes the list a doubly linked one.
//
//   link_after(&list, previous, entry);
//   unlink_after(&list, previous, entry);
//
// The list owns nothing. A predecessor of null stands for the head of the list everywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

#include "frame/heap.h"
#include "kqsupt/containers.h"

namespace kqsupt::containers {

template <class List>
using EntryOf = std::remove_pointer_t<decltype(List::head)>;

template <class Entry>
concept HasPrevious = requires(Entry entry) {
  entry.previous;
};

// Called with what the caller looks for and an entry; the last argument is always 0.
template <class Entry>
using ListCallback = int32_t (*)(void* context, Entry* entry, uint32_t reserved);

// The pointer that holds the entry after `previous`.
template <class List>
EntryOf<List>*& slot_after(List* list, EntryOf<List>* previous) {
  return previous != nullptr ? previous->next : list->head;
}

// Makes what comes after `previous` point back to it: the entry `next`, or the tail of the list.
template <class List>
void point_back(List* list, EntryOf<List>* previous, EntryOf<List>* next) {
  if (next == nullptr) {
    list->tail = previous;
  } else if constexpr (HasPrevious<EntryOf<List>>) {
    next->previous = previous;
  }
}

template <class List>
void link_after(List* list, EntryOf<List>* previous, EntryOf<List>* entry) {
  EntryOf<List>*& slot = slot_after(list, previous);
  EntryOf<List>* next = slot;
  slot = entry;
  entry->next = next;
  if constexpr (HasPrevious<EntryOf<List>>) {
    entry->previous = previous;
  }
  point_back(list, entry, next);
}

// The links of the entry itself stay.
template <class List>
void unlink_after(List* list, EntryOf<List>* previous, EntryOf<List>* entry) {
  EntryOf<List>* next = entry->next;
  slot_after(list, previous) = next;
  point_back(list, previous, next);
}

// The exported operations.

template <class List>
[[nodiscard]] List* list_alloc() {
  return frame::heap_array<List>(1).release();
}

template <class List>
void list_set_empty(List* list) {
  if (list != nullptr) {
    *list = {nullptr, nullptr};
  }
}

template <class List>
[[nodiscard]] EntryOf<List>* list_entry_alloc(uint32_t payload_size) {
  using Entry = EntryOf<List>;
  size_t size = 0;
  if (__builtin_add_overflow(sizeof(Entry), payload_size, &size)) {
    return nullptr;
  }
  auto* entry = static_cast<Entry*>(std::malloc(size));
  if (entry != nullptr) {
    *entry = {};
    entry->data = payload_size != 0 ? entry + 1 : nullptr;
  }
  return entry;
}

template <class Entry>
void list_entry_clear_links(Entry* entry) {
  if (entry == nullptr) {
    return;
  }
  entry->next = nullptr;
  if constexpr (HasPrevious<Entry>) {
    entry->previous = nullptr;
  }
}

template <class Entry>
void list_entry_free(Entry* entry) {
  if (entry == nullptr) {
    return;
  }
  // Whoever still holds the entry shall not find a payload. Volatile: the compiler knows that the
  // block is about to go and would leave the store out.
  *const_cast<void* volatile*>(&entry->data) = nullptr;
  frame::release(entry);
}

template <class List>
void list_insert_at_head(List* list, EntryOf<List>* entry) {
  if (list != nullptr && entry != nullptr) {
    link_after<List>(list, nullptr, entry);
  }
}

template <class List>
void list_insert_at_tail(List* list, EntryOf<List>* entry) {
  if (list == nullptr || entry == nullptr) {
    return;
  }
  // What link_after would do, without a look at the links of the last entry.
  EntryOf<List>* last = list->tail;
  slot_after(list, last) = entry;
  entry->next = nullptr;
  if constexpr (HasPrevious<EntryOf<List>>) {
    entry->previous = last;
  }
  list->tail = entry;
}

template <class List>
[[nodiscard]] SMStatus list_insert(List* list, EntryOf<List>* entry, void* key,
                                   ListCallback<EntryOf<List>> compare) {
  if (list == nullptr || entry == nullptr || key == nullptr || compare == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  EntryOf<List>* previous = nullptr;
  for (EntryOf<List>* other = list->head; other != nullptr; other = other->next) {
    const int32_t sign = compare(key, other, 0);
    if (sign == 0) {
      return SM_STATUS_ALREADY_EXISTS;
    }
    if (sign < 0) {
      break;
    }
    previous = other;
  }
  link_after(list, previous, entry);
  return SM_STATUS_SUCCESS;
}

// The first entry for which the callback answers 0, along `direction`.
template <class Entry>
[[nodiscard]] Entry* walk(Entry* entry, Entry* Entry::*direction, void* context,
                          ListCallback<Entry> callback) {
  while (entry != nullptr && callback(context, entry, 0) != 0) {
    entry = entry->*direction;
  }
  return entry;
}

template <class List>
[[nodiscard]] EntryOf<List>* list_walk_at_head(const List* list, void* context,
                                               ListCallback<EntryOf<List>> callback) {
  if (list == nullptr || context == nullptr || callback == nullptr) {
    return nullptr;
  }
  return walk(list->head, &EntryOf<List>::next, context, callback);
}

template <class List>
[[nodiscard]] EntryOf<List>* list_walk_at_tail(const List* list, void* context,
                                               ListCallback<EntryOf<List>> callback) {
  if (list == nullptr || context == nullptr || callback == nullptr) {
    return nullptr;
  }
  return walk(list->tail, &EntryOf<List>::previous, context, callback);
}

// The list need not be in order: all of it is searched.
template <class List>
[[nodiscard]] EntryOf<List>* list_replace(List* list, EntryOf<List>* new_entry, void* key,
                                          ListCallback<EntryOf<List>> compare) {
  if (list == nullptr || new_entry == nullptr || key == nullptr || compare == nullptr) {
    return nullptr;
  }
  EntryOf<List>* previous = nullptr;
  EntryOf<List>* entry = list->head;
  while (entry != nullptr && compare(key, entry, 0) != 0) {
    previous = entry;
    entry = entry->next;
  }
  if (entry != nullptr) {
    unlink_after(list, previous, entry);
    link_after(list, previous, new_entry);
  }
  return entry;
}

// In a singly linked list the caller knows the predecessor.
template <class List>
void list_delete(List* list, EntryOf<List>* previous, EntryOf<List>* entry) {
  if (list != nullptr && entry != nullptr) {
    unlink_after(list, previous, entry);
  }
}

template <class List>
void list_delete(List* list, EntryOf<List>* entry) {
  if (list == nullptr || entry == nullptr) {
    return;
  }
  if (entry->previous != nullptr || list->head == entry) {  // else it was never linked
    unlink_after(list, entry->previous, entry);
  }
}

template <class List>
[[nodiscard]] EntryOf<List>* list_remove_at_head(List* list) {
  EntryOf<List>* entry = list != nullptr ? list->head : nullptr;
  if (entry != nullptr) {
    unlink_after<List>(list, nullptr, entry);
  }
  return entry;
}

template <class List>
[[nodiscard]] EntryOf<List>* list_remove_at_tail(List* list) {
  if (list == nullptr || list->head == nullptr) {
    return nullptr;
  }
  EntryOf<List>* previous = nullptr;
  EntryOf<List>* entry = list->tail;
  if constexpr (HasPrevious<EntryOf<List>>) {
    previous = entry->previous;
  } else {
    for (entry = list->head; entry->next != nullptr; entry = entry->next) {
      previous = entry;
    }
  }
  unlink_after(list, previous, entry);
  return entry;
}

template <class List>
[[nodiscard]] uint32_t list_is_empty(const List* list) {
  return list == nullptr || list->head == nullptr ? 1 : 0;
}

}  // namespace kqsupt::containers
