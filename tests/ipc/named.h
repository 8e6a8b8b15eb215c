// Where named objects live in the sandbox, and what they are called there.
#pragma once

#include <sys/sem.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "kqsupt/config.h"
#include "kqsupt/containers.h"
#include "support/scratch.h"

namespace kqsupt::tests {

inline std::string ipc_directory() {
  return std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/wexlib/var/.ipc";
}
inline std::string registry() {
  return ipc_directory() + "/.lxsuptIPCini";
}

// The prefix of the kind of object and the digest of the name with its terminator.
inline std::string decorated(const std::string& prefix, const std::string& name) {
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  SMRFC1321AddMsg(&context, name.c_str(), static_cast<uint32_t>(name.size() + 1));
  SMRFC1321ComputeMsgDigest(&context);
  std::string text = prefix;
  for (const uint8_t byte : context.digest) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", byte);
    text += digits;
  }
  return text;
}

inline std::string lock_file_of_mutex(const std::string& name) {
  return ipc_directory() + "/." + decorated("kqsupmtx", name);
}
inline std::string lock_file_of_path(const std::string& path) {
  return ipc_directory() + "/." + decorated("kqsupflk", path);
}

// The key of a name in the registry; 0 when it has none.
inline uint32_t registered_key(const std::string& decorated_name) {
  uint32_t key = 0;
  uint32_t size = sizeof key;
  SMReadINIPathFileValue("Unique String Name Key Section", decorated_name.c_str(), SMINI_TYPE_U32,
                         &key, &size, nullptr, 0, registry().c_str(), 1);
  return key;
}

// What the system knows of a set of semaphores. The union is not to be left out: there are hosts that
// pass one otherwise than the pointer in it.
inline std::optional<semid_ds> about_set(int set) {
  semid_ds about{};
  union {
    semid_ds* about;
  } argument{&about};
  return semctl(set, 0, IPC_STAT, argument) == 0 ? std::optional(about) : std::nullopt;
}

}  // namespace kqsupt::tests
