// The paths of the named objects' files.

#include "ipc/ipc_files.h"

#include <initializer_list>
#include <string_view>

#include "config/install_paths.h"
#include "frame/heap.h"
#include "text/text_builder.h"

namespace kqsupt::ipc {
namespace {

struct Paths {
  frame::HeapPtr<char> directory;
  frame::HeapPtr<char> registry;
  frame::HeapPtr<char> registry_lock;
};
constinit Paths paths;

frame::HeapPtr<char> joined(std::initializer_list<std::string_view> parts) {
  text::TextBuilder text(256);
  for (const std::string_view part : parts) {
    if (!text.append(part)) {
      return nullptr;
    }
  }
  return frame::HeapPtr<char>(text.release());
}

// Where the agents keep their data: the first of these products that has such a path.
constexpr int32_t kWexlib = 45;
constexpr int32_t kNurb = 44;
constexpr uint32_t kVariableData = 4;

frame::HeapPtr<char> variable_data_directory() {
  for (const int32_t product : {kWexlib, kNurb}) {
    uint32_t size = 0;
    const SMStatus status = config::get_path(product, kVariableData, nullptr, &size);
    if (status != SM_STATUS_BUFFER_TOO_SMALL) {
      continue;
    }
    frame::HeapPtr<char> path(static_cast<char*>(frame::allocate(size)));
    if (path != nullptr &&
        config::get_path(product, kVariableData, path.get(), &size) == SM_STATUS_SUCCESS) {
      return path;
    }
  }
  return nullptr;
}

}  // namespace

const char* ipc_directory() {
  return paths.directory.get();
}
const char* registry_path() {
  return paths.registry.get();
}
const char* registry_lock_path() {
  return paths.registry_lock.get();
}

bool find_ipc_files() {
  const frame::HeapPtr<char> variable_data = variable_data_directory();
  if (variable_data == nullptr) {
    return false;
  }
  Paths found;
  found.directory = joined({variable_data.get(), "/.ipc"});
  found.registry = joined({variable_data.get(), "/.ipc/.lxsuptIPCini"});
  found.registry_lock = joined({variable_data.get(), "/.ipc/.lxsuptIPCiniSem"});
  if (found.directory == nullptr || found.registry == nullptr || found.registry_lock == nullptr) {
    return false;
  }
  paths = std::move(found);
  return true;
}

void forget_ipc_files() {
  paths = {};
}

}  // namespace kqsupt::ipc
