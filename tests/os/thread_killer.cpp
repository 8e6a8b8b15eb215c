// Kills one of its threads, and with it itself.

#include <kqsupt/os.h>
#include <unistd.h>

#include <cstdio>

int main() {
  SMThread* thread = SMThreadStart(
      [](void*) -> void* {
        for (;;) {
          pause();
        }
      },
      nullptr);
  std::puts("running");
  std::fflush(stdout);
  SMThreadKill(thread);
  std::puts("still running");
  return 0;
}
