// copy-worker KIND SOURCE DESTINATION: copies a file, or appends it, and prints the status. The
// calls of getppid mark what is tested.

#include <kqsupt/os.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <string_view>

namespace {

using Function = SMStatus (*)(const char*, const char*, uint32_t);

Function function_of(std::string_view kind) {
  return kind == "copy"          ? SMFileCopy
         : kind == "copy-sync"   ? SMFileCopyAndSync
         : kind == "append"      ? SMFileAppend
         : kind == "append-sync" ? SMFileAppendAndSync
                                 : nullptr;
}

}  // namespace

int main(int count, char** arguments) {
  const Function function = count == 4 ? function_of(arguments[1]) : nullptr;
  if (function == nullptr) {
    return 2;
  }
  alarm(300);
  getppid();
  const SMStatus status = function(arguments[2], arguments[3], 1);
  getppid();
  std::printf("%" PRIX32 "\n", status);
  return 0;
}
