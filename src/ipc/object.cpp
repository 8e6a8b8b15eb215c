// The names under which unrelated processes find an object.

#include "ipc/object.h"

#include <cstdint>
#include <cstring>
#include <string_view>

#include "containers/md5.h"
#include "ipc/ipc_files.h"

namespace kqsupt::ipc {
namespace {

using containers::add_message;
using containers::compute_digest;
using containers::load_digest;

constexpr size_t kDigestBytes = 16;
constexpr size_t kPrefixLength = 8;
constexpr size_t kPlainSize = kPrefixLength + 2 * kDigestBytes + 1;
constexpr size_t kLongestSize = 256;

std::string_view prefix_of(ObjectType type) {
  switch (type) {
    case ObjectType::kMutex:
      return "kqsupmtx";
    case ObjectType::kSemaphore:
      return "kqsupsmp";
    case ObjectType::kSharedMemory:
      return "kqsupshm";
    case ObjectType::kEvent:
      return "kqsupevt";
    case ObjectType::kReaderWriterLock:
      return "kqsuprwl";
    case ObjectType::kPathLock:
      return "kqsupflk";
  }
  return {};
}

// The objects that are files are named by a path.
bool is_file(ObjectType type) {
  return type == ObjectType::kMutex || type == ObjectType::kPathLock;
}

char* append(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

// The digest of the name and its terminator.
char* append_digest(char* to, const char* name) {
  SMRFC1321Context context;
  load_digest(&context);
  add_message(&context, name, static_cast<uint32_t>(std::strlen(name) + 1));
  compute_digest(&context);
  for (const uint8_t byte : context.digest) {
    *to++ = "0123456789ABCDEF"[byte >> 4];
    *to++ = "0123456789ABCDEF"[byte & 15];
  }
  return to;
}

}  // namespace

frame::HeapPtr<ObjectHeader> make_block(const char* name, size_t size, ObjectType type) {
  std::string_view directory;
  size_t name_size = 0;
  if (name != nullptr) {
    if (*name == '\0') {
      return nullptr;
    }
    name_size = kPlainSize;
    if (is_file(type)) {
      if (ipc_directory() == nullptr) {
        return nullptr;
      }
      directory = ipc_directory();
      name_size += directory.size() + 2;
    }
    if (name_size > kLongestSize) {
      return nullptr;
    }
  }
  frame::HeapPtr<ObjectHeader> block(static_cast<ObjectHeader*>(std::calloc(1, size + name_size)));
  if (block == nullptr) {
    return nullptr;
  }
  block->type = type;
  if (name != nullptr) {
    char* const text = reinterpret_cast<char*>(block.get()) + size;
    char* end = text;
    if (is_file(type)) {
      end = append(append(end, directory), "/.");
    }
    *append_digest(append(end, prefix_of(type)), name) = '\0';
    block->name = text;
  }
  return block;
}

}  // namespace kqsupt::ipc
