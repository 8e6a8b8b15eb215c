// The registry of named objects: which name has which System V key. It is an INI file in the IPC
// directory that the library replaces as a whole when a name is new.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kqsup {

enum class NameKind { kMutex, kSemaphore, kSharedMemory, kEvent, kPathLock, kUnknown };

// What a registered name stands for, by its beginning.
[[nodiscard]] NameKind kind_of_name(std::string_view decorated);
inline constexpr std::string_view kMutexPrefix = "kqsupmtx";
inline constexpr std::string_view kSemaphorePrefix = "kqsupsmp";
inline constexpr std::string_view kSharedMemoryPrefix = "kqsupshm";
inline constexpr std::string_view kEventPrefix = "kqsupevt";
inline constexpr std::string_view kReaderWriterPrefix = "kqsuprwl";
inline constexpr std::string_view kPathLockPrefix = "kqsupflk";

struct NameRegistry {
  // Keys are given from here on, one after the other.
  static constexpr uint32_t kFirstKey = 300001;

  struct Name {
    std::string text;
    uint32_t key;
    // The registry has it both ways. A file that is cut short may have but the first digits of a key.
    bool is_found_both_ways;
  };
  // A semaphore set without a key, and who made it.
  struct ListedSet {
    int32_t id;
    uint64_t maker;
  };

  std::vector<Name> names;  // in the order of their keys
  std::vector<ListedSet> listed_sets;
  std::vector<std::string> damage;  // what is wrong with it, a sentence each

  [[nodiscard]] uint32_t highest_key() const;  // 0 without names
};

[[nodiscard]] NameRegistry parse_name_registry(std::string_view content);

struct RegistryFile {
  bool was_read = false;
  NameRegistry registry;  // without names when there is no file: nobody has registered one yet
  std::string why;        // it was not read
};

// The IPC directory that the install registry gives; none, and why, when there is no install
// registry or it names none. Whether the directory is there is not looked at.
[[nodiscard]] std::optional<std::string> find_ipc_directory(std::string* why);

// The name of an object as it is registered: what stands for its kind, and the digest of the name
// that its users give it.
[[nodiscard]] std::string decorated_name(std::string_view prefix, const std::string& name);

// As it was at one moment, also while somebody replaces it. Takes no lock.
[[nodiscard]] RegistryFile read_name_registry(const std::string& ipc_directory);

[[nodiscard]] std::string registry_path(const std::string& ipc_directory);
// What its old content is called while the new one takes its place, which is for a moment, or until
// somebody mends an interrupted change.
[[nodiscard]] std::string registry_backup_path(const std::string& ipc_directory);

}  // namespace kqsup
