// ini-worker COMMAND PATH …: one of several processes that use a file. What is tested lies between
// two calls of getppid.

#include <kqsupt/config.h>
#include <kqsupt/ipc.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr uint32_t kText = SMINI_TYPE_UTF8;
constexpr SMStatus kTorn = 12345;  // read with success, but not to its end

SMStatus write(const char* path, const char* section, const char* key, const char* value) {
  const uint32_t size = value != nullptr ? static_cast<uint32_t>(std::strlen(value) + 1) : 0;
  return SMWriteINIPathFileValue(section, key, kText, value, size, path, 1);
}

// "17:17", so that a torn value shows.
std::string twice(uint32_t number) {
  return std::to_string(number) + ":" + std::to_string(number);
}

// Writes 1, 2, 3 … to a key.
void write_many(const char* path, const char* key, uint32_t count) {
  for (uint32_t i = 1; i <= count; ++i) {
    if (write(path, "S", key, twice(i).c_str()) != SM_STATUS_SUCCESS) {
      std::exit(1);
    }
  }
}

// Reads all keys again and again; exits with 1 when one is missing or torn, or goes back.
void read_many(const char* path, uint32_t keys, uint32_t count) {
  uint32_t last[16] = {};
  for (uint32_t i = 0; i < count; ++i) {
    const uint32_t key = i % keys;
    char value[64];
    uint32_t size = sizeof value;
    const SMStatus status = SMReadINIPathFileValue("S", ("K" + std::to_string(key)).c_str(), kText,
                                                   value, &size, nullptr, 0, path, 1);
    const auto number = static_cast<uint32_t>(std::strtoul(value, nullptr, 10));
    if (status != SM_STATUS_SUCCESS || value != twice(number) || number < last[key]) {
      std::printf("status %u, \"%s\" after %u\n", status, value, last[key]);
      std::exit(1);
    }
    last[key] = number;
  }
}

SMStatus change(const std::string& what, const char* path) {
  if (what == "change") {
    return write(path, "S", "K", "new");
  }
  if (what == "add") {
    return write(path, "T", "K", "new");
  }
  if (what == "delete-key") {
    return write(path, "S", "K", nullptr);
  }
  if (what == "delete-section") {
    return write(path, "S", nullptr, nullptr);
  }
  if (what == "property") {
    return SMPropertyFileWriteValue("K", SMXLT_TYPE_UTF8, "new", 4, path, 1);
  }
  if (what == "read") {
    char value[64];
    uint32_t size = sizeof value;
    return SMReadINIPathFileValue("S", "L", kText, value, &size, nullptr, 0, path, 1);
  }
  if (what == "read-property") {
    static char value[100000];
    uint32_t size = sizeof value;
    const SMStatus status =
        SMPropertyFileReadValue("K", SMXLT_TYPE_UTF8, value, &size, nullptr, 0, path, 1);
    return status == SM_STATUS_SUCCESS && (size < 5 || std::strcmp(value + size - 5, "last") != 0)
               ? kTorn
               : status;
  }
  if (what == "read-devices") {
    char vendor[16];
    char device[16];
    uint32_t sizes[2] = {sizeof vendor, sizeof device};
    const SMStatus status =
        SMReadPCIDevFile(1, 2, 3, 4, path, vendor, &sizes[0], device, &sizes[1]);
    return status == SM_STATUS_SUCCESS && std::strcmp(device, "board") != 0 ? kTorn : status;
  }
  if (what == "register") {
    SMSemaphore* semaphore = SMSemaphoreCreate(path, 1);
    SMSemaphoreDestroy(semaphore);
    return semaphore != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_UNSUCCESSFUL;
  }
  if (what == "mutex") {
    SMMutex* mutex = SMMutexCreate(path);
    const SMStatus status = SMMutexLock(mutex, 0);
    SMMutexUnLock(mutex);
    SMMutexDestroy(mutex);
    return mutex == nullptr ? SMStatus{SM_STATUS_UNSUCCESSFUL} : status;
  }
  std::exit(2);
}

}  // namespace

int main(int count, char** arguments) {
  alarm(300);
  const std::string command = count > 2 ? arguments[1] : "";
  const char* path = arguments[2];
  if (command == "write-many") {
    write_many(path, arguments[3], static_cast<uint32_t>(std::atoi(arguments[4])));
  } else if (command == "read-many") {
    read_many(path, static_cast<uint32_t>(std::atoi(arguments[3])),
              static_cast<uint32_t>(std::atoi(arguments[4])));
  } else {
    getppid();
    const SMStatus status = change(command, path);
    getppid();
    std::printf("%" PRIu32 "\n", status);
  }
  return 0;
}
