// rwl-visitor NAME: uses the reader-writer lock of that name once in each way, and destroys it.

#include <kqsupt/ipc.h>

#include <cstdio>

int main(int, char** argv) {
  SMRWLock* lock = SMRWLCreate(argv[1]);
  const bool wrote = SMRWLWriteLockGet(lock, 0) == SM_STATUS_SUCCESS;
  SMRWLWriteLockRelease(lock);
  const bool read = SMRWLReadLockGet(lock, 0) == SM_STATUS_SUCCESS;
  SMRWLReadLockRelease(lock);
  SMRWLDestroy(lock);
  std::puts(wrote && read ? "got in" : "refused");
  return 0;
}
