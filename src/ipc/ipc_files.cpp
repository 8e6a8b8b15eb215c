// The paths of the named objects' files.

#include "ipc/ipc_files.h"

#include <initializer_list>
#include <string_view>

#include "config/install_paths.h"
#include "frame/heap.h"
#include "text/text_builder.h"

namespace kqsupt::ipc {
namespace {

// On the heap. The process owns them from the start to the stop, and nothing is to be destroyed
// besides: what runs first at the end of a process depends on how the library was loaded.
struct Paths {
  char* directory;
  char* registry;
  char* registry_lock;
};
constinit Paths paths{};

frame::HeapPtr<char> joined(std::initializer_list<std::string_view> parts) {
  text::TextBuilder text(256);
  for (const std::string_view part : parts) {
    if (!text.append(part)) {
      return nullptr;
    }
  }
  return frame::HeapPtr<char>(text.release());
}

// Where the agents keep their data: the first of these products that has such a path. One whose
// directory is missing has it all the same: nobody looks elsewhere, for those who come when it is
// there again would not meet the others. Nor does anybody for want of memory.
constexpr int32_t kWexlib = 45;
constexpr int32_t kNurb = 44;

frame::HeapPtr<char> variable_data_directory() {
  SMStatus status = SM_STATUS_SUCCESS;
  frame::HeapPtr<char> path = config::copy_path(kWexlib, config::kVariableDataPath, &status);
  if (status == SM_STATUS_DATA_NOT_FOUND) {
    path = config::copy_path(kNurb, config::kVariableDataPath, &status);
  }
  return path;
}

}  // namespace

const char* ipc_directory() {
  return paths.directory;
}
const char* registry_path() {
  return paths.registry;
}
const char* registry_lock_path() {
  return paths.registry_lock;
}

bool find_ipc_files() {
  const frame::HeapPtr<char> variable_data = variable_data_directory();
  if (variable_data == nullptr) {
    return false;
  }
  frame::HeapPtr<char> directory = joined({variable_data.get(), "/.ipc"});
  frame::HeapPtr<char> registry = joined({variable_data.get(), "/.ipc/.lxsuptIPCini"});
  frame::HeapPtr<char> registry_lock = joined({variable_data.get(), "/.ipc/.lxsuptIPCiniSem"});
  if (directory == nullptr || registry == nullptr || registry_lock == nullptr) {
    return false;
  }
  paths = {directory.release(), registry.release(), registry_lock.release()};
  return true;
}

void forget_ipc_files() {
  frame::release(paths.directory);
  frame::release(paths.registry);
  frame::release(paths.registry_lock);
  paths = {};
}

}  // namespace kqsupt::ipc
