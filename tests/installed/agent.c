/* An agent in C, built from the installed files alone: a record, a named mutex and an event. */
#include <kqsupt.h>
#include <stdio.h>

int main(void) {
  const uint32_t celsius = 24;
  unsigned char block[256];
  uint32_t size = sizeof block, number = 0, number_size = sizeof number;
  SMSDOConfig* sensor = SMSDOConfigAlloc();
  SMMutex* mutex = SMMutexCreate("installed-agent");
  if (sensor == NULL || mutex == NULL) return 1;
  if (SMSDOConfigAddData(sensor, 1, 1, &celsius, sizeof celsius, 0) != SM_STATUS_SUCCESS) return 2;
  if (SMSDOConfigToBinary(sensor, block, &size) != SM_STATUS_SUCCESS) return 3;
  if (SMMutexLock(mutex, -1) != SM_STATUS_SUCCESS) return 4;
  if (SMSDOBinaryGetDataByID(block, 1, NULL, &number, &number_size) != SM_STATUS_SUCCESS) return 5;
  if (SMAppendToLog(SM_LOG_TEXT, SM_EVENT_INFORMATION, 1, 1, "agent", "started", NULL, 0) !=
      SM_STATUS_SUCCESS)
    return 6;
  SMMutexUnLock(mutex);
  SMMutexDestroy(mutex);
  SMSDOConfigFree(sensor);
  printf("%u degrees\n", (unsigned)number);
  return 0;
}
