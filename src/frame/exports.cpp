// The frame's exported functions.

#include "kqsupt/frame.h"

#include "frame/heap.h"
#include "frame/version.h"

using namespace kqsupt;

extern "C" {

void* SMAllocMem(uint32_t size) {
  return frame::allocate(size);
}
void* SMReAllocMem(void* ptr, uint32_t size) {
  return frame::reallocate(ptr, size);
}
void SMFreeMem(void* ptr) {
  frame::release(ptr);
}
void SMFreeGeneric(void* ptr) {
  frame::release(ptr);
}

uint32_t SUPTGetMajorVersion() {
  return frame::kMajorVersion;
}
uint32_t SUPTGetMinorVersion() {
  return frame::kMinorVersion;
}
uint32_t SUPTGetRevision() {
  return frame::kRevision;
}

}  // extern "C"
