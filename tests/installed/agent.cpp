// An agent in C++, built from the installed files alone: a record, a named mutex and an event.
#include <kqsupt.h>
#if __has_include(<kqsupt.hpp>)
#include <kqsupt.hpp>
#endif

#include <cstdio>
#include <memory>

namespace {

struct Release {
  void operator()(SMSDOConfig* record) const { SMSDOConfigFree(record); }
  void operator()(SMMutex* mutex) const { SMMutexDestroy(mutex); }
};

}  // namespace

int main() {
  const uint32_t celsius = 24;
  unsigned char block[256];
  uint32_t size = sizeof block, number = 0, number_size = sizeof number;
  const std::unique_ptr<SMSDOConfig, Release> sensor(SMSDOConfigAlloc());
  const std::unique_ptr<SMMutex, Release> mutex(SMMutexCreate("installed-agent"));
  if (!sensor || !mutex || SMMutexLock(mutex.get(), -1) != SM_STATUS_SUCCESS ||
      SMSDOConfigAddData(sensor.get(), 1, 1, &celsius, sizeof celsius, 0) != SM_STATUS_SUCCESS ||
      SMSDOConfigToBinary(sensor.get(), block, &size) != SM_STATUS_SUCCESS ||
      SMSDOBinaryGetDataByID(block, 1, nullptr, &number, &number_size) != SM_STATUS_SUCCESS ||
      SMAppendToLog(SM_LOG_TEXT, SM_EVENT_INFORMATION, 1, 1, "agent", "started", nullptr, 0) !=
          SM_STATUS_SUCCESS) {
    return 1;
  }
  SMMutexUnLock(mutex.get());
  std::printf("%u degrees\n", number);
  return 0;
}
