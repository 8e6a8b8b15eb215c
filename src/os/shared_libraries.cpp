// One loaded copy of each library, with the names of its users and the addresses that were looked
// up.
//
// The loader is never called while the table's mutex is held. It runs constructors and destructors
// of libraries, which may well call the functions below, and it does so under a lock of its own: a
// thread that waited for that lock with the table's mutex in hand, and a constructor on another
// thread that waited for the mutex, would wait for ever. So a call notes what it needs, lets go of
// the mutex, asks the loader, and enters all that it brought at once. A constructor that links a
// function, be it of its own library, therefore gets it. Two threads that load a library at the
// same time both ask the loader, which counts: it is in the process once, and the second comer
// gives its count back. What one thread uses outside the mutex another one cannot unload, because
// each entry counts who holds it.

#include "os/shared_libraries.h"

#include <cstring>
#include <new>
#include <utility>

#include "containers/red_black_tree.h"
#include "frame/heap.h"
#include "ipc/local_mutex.h"
#include "os/library.h"

namespace kqsupt::os {
namespace {

using containers::Node;
using frame::HeapPtr;
using ipc::LocalMutexGuard;

struct Function {
  void* address;
  HeapPtr<char> name;
};

// All but the path and the library itself is guarded by the table's mutex.
struct Entry {
  HeapPtr<char> path;
  SMLib* library;
  Node* users = nullptr;
  int32_t user_count = 0;  // not the size of the tree: see unload_shared_library()
  Node* functions = nullptr;
  uint32_t holders = 0;  // the calls that use it now, and the table
};

struct Table {
  bool started = false;
  Node* libraries = nullptr;
};
constinit ipc::LocalMutex table_mutex;
constinit Table table;

HeapPtr<char> copy_of(const char* text) {
  return HeapPtr<char>(strdup(text));
}

const char* name_of_user(void* data) {
  return static_cast<char*>(data);
}
const char* name_of_function(void* data) {
  return static_cast<Function*>(data)->name.get();
}
const char* path_of_entry(void* data) {
  return static_cast<Entry*>(data)->path.get();
}

containers::Place locate(Node* root, const char* key, const char* (*key_of)(void*)) {
  return containers::locate(root,
                            [=](void* data) -> int32_t { return std::strcmp(key, key_of(data)); });
}

void destroy(Function* function) {
  function->~Function();
  frame::release(function);
}

// Calls the loader, and so destructors of the library.
void destroy(Entry* entry) {
  containers::erase_all(&entry->functions, [entry](void* data) {
    auto* const function = static_cast<Function*>(data);
    (void)unlink_library_function(entry->library, function->address);
    destroy(function);
  });
  (void)unload_library(entry->library);
  entry->~Entry();
  frame::release(entry);
}

// Keeps an entry for a scope in which the mutex is not held throughout. The last to let go of an
// entry that is out of the table destroys it; no scope ends with the mutex in hand.
class Hold {
 public:
  Hold() = default;
  Hold(Hold&& other) noexcept : entry_(std::exchange(other.entry_, nullptr)) {}
  Hold& operator=(Hold&& other) noexcept {
    std::swap(entry_, other.entry_);
    return *this;
  }
  ~Hold() {
    if (entry_ != nullptr && is_last()) {
      destroy(entry_);
    }
  }

  // Of what `holders` counts already.
  static Hold adopt(Entry* entry) {
    Hold hold;
    hold.entry_ = entry;
    return hold;
  }
  // Under the mutex.
  static Hold add(Entry* entry) {
    ++entry->holders;
    return adopt(entry);
  }

  [[nodiscard]] bool is_empty() const { return entry_ == nullptr; }
  [[nodiscard]] Entry* get() const { return entry_; }
  Entry* operator->() const { return entry_; }

 private:
  [[nodiscard]] bool is_last() const {
    const LocalMutexGuard guard(table_mutex);
    return --entry_->holders == 0;
  }

  Entry* entry_ = nullptr;
};

// Empty when the path is not in the table. Under the mutex.
Hold find_entry(const char* path) {
  Node* const found = locate(table.libraries, path, path_of_entry).match;
  return found != nullptr ? Hold::add(static_cast<Entry*>(found->data)) : Hold();
}

// A library that is not in the table yet.
Hold load_entry(const char* path) {
  SMLib* const library = load_library(path);
  if (library == nullptr) {
    return {};
  }
  HeapPtr<char> copy = copy_of(path);
  HeapPtr<void> block(copy != nullptr ? std::malloc(sizeof(Entry)) : nullptr);
  if (block == nullptr) {
    (void)unload_library(library);
    return {};
  }
  auto* const entry = new (block.release()) Entry{.path = std::move(copy), .library = library};
  entry->holders = 1;
  return Hold::adopt(entry);
}

// The address that was looked up before, else what the loader says: null when the library has no
// such function.
void* address_in(const Hold& entry, const char* name) {
  {
    const LocalMutexGuard guard(table_mutex);
    if (Node* const found = locate(entry->functions, name, name_of_function).match) {
      return static_cast<Function*>(found->data)->address;
    }
  }
  return library_function(entry->library, name);
}

// ---- Under the mutex ----

// Takes the name of a user out of an entry and counts it down, also when it is not among the names:
// callers count on a library going when it was let go of as often as it has users.
void leave(Entry* entry, const char* user) {
  if (Node* const found = locate(entry->users, user, name_of_user).match) {
    void* const name = found->data;
    containers::erase(&entry->users, found);
    frame::release(name);
  }
  --entry->user_count;
}

// False, and nothing changed, when memory is short.
bool join(Entry* entry, const char* user, bool* is_new) {
  const containers::Place place = locate(entry->users, user, name_of_user);
  *is_new = place.match == nullptr;
  if (place.match != nullptr) {
    return true;
  }
  HeapPtr<char> copy = copy_of(user);
  if (copy == nullptr || !containers::insert_at(&entry->users, place, copy.get())) {
    *is_new = false;
    return false;
  }
  (void)copy.release();
  ++entry->user_count;
  return true;
}

// The same.
bool add_function(Entry* entry, const char* name, void* address) {
  const containers::Place place = locate(entry->functions, name, name_of_function);
  if (place.match != nullptr) {
    return true;
  }
  HeapPtr<char> copy = copy_of(name);
  HeapPtr<void> block(copy != nullptr ? std::malloc(sizeof(Function)) : nullptr);
  if (block == nullptr) {
    return false;
  }
  auto* const function = new (block.release()) Function{address, std::move(copy)};
  if (!containers::insert_at(&entry->functions, place, function)) {
    destroy(function);
    return false;
  }
  return true;
}

void forget_users(Entry* entry) {
  containers::erase_all(&entry->users, [](void* name) { frame::release(name); });
  entry->user_count = 0;
}

// What it says of functions stays true for as long as the library is loaded.
void take_out_unless_used(Entry* entry) {
  if (entry->user_count < 1) {
    containers::erase(&table.libraries,
                      locate(table.libraries, entry->path.get(), path_of_entry).match);
    forget_users(entry);
    --entry->holders;
  }
}

enum class Entered { kYes, kNo, kAnotherIsThere };

// Enters the library unless it is there, the user unless it is known, and the function unless
// there is none: all of them, or when memory is short none. An entry that somebody took out in the
// meantime goes in again.
Entered enter(Entry* entry, const char* user, const char* function, void* address) {
  const LocalMutexGuard guard(table_mutex);
  if (!table.started) {
    return Entered::kNo;
  }
  const containers::Place place = locate(table.libraries, entry->path.get(), path_of_entry);
  if (place.match != nullptr && place.match->data != entry) {
    return Entered::kAnotherIsThere;
  }
  if (place.match == nullptr) {
    if (!containers::insert_at(&table.libraries, place, entry)) {
      return Entered::kNo;
    }
    ++entry->holders;
  }
  bool is_new_user = false;
  if (join(entry, user, &is_new_user) &&
      (address == nullptr || add_function(entry, function, address))) {
    return Entered::kYes;
  }
  if (is_new_user) {
    leave(entry, user);
  }
  take_out_unless_used(entry);
  return Entered::kNo;
}

}  // namespace

bool start_shared_libraries() {
  if (!hold_over_forks(table_mutex)) {
    return false;
  }
  const LocalMutexGuard guard(table_mutex);
  table.started = true;
  return true;
}

void stop_shared_libraries() {
  Node* libraries = nullptr;
  {
    const LocalMutexGuard guard(table_mutex);
    table.started = false;
    libraries = std::exchange(table.libraries, nullptr);
  }
  containers::erase_all(&libraries, [](void* data) {
    const Hold entry = Hold::adopt(static_cast<Entry*>(data));
    const LocalMutexGuard guard(table_mutex);
    forget_users(entry.get());
  });
}

// A user that asks for a function which the library does not have is a user of it all the same, and
// lets go of it by unloading it.
void* link_shared_function(const char* user, const char* path, const char* function) {
  if (user == nullptr || path == nullptr) {
    return nullptr;
  }
  for (;;) {
    Hold entry;
    {
      const LocalMutexGuard guard(table_mutex);
      if (!table.started) {
        return nullptr;
      }
      entry = find_entry(path);
    }
    if (entry.is_empty()) {
      entry = load_entry(path);
    }
    if (entry.is_empty()) {
      return nullptr;
    }
    void* const address = function != nullptr ? address_in(entry, function) : nullptr;
    switch (enter(entry.get(), user, function, address)) {
      case Entered::kYes:
        return function != nullptr ? address : entry->library;
      case Entered::kNo:
        return nullptr;
      case Entered::kAnotherIsThere:
        break;  // of another thread, and later than this one looked: that is the one to use
    }
  }
}

SMStatus unload_shared_library(const char* user, const char* path) {
  if (user == nullptr || path == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  Hold entry;  // which goes, with the library, when the mutex is free again
  const LocalMutexGuard guard(table_mutex);
  entry = find_entry(path);
  if (!entry.is_empty()) {
    leave(entry.get(), user);
    take_out_unless_used(entry.get());
  }
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::os
