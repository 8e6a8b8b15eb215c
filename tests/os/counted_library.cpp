// A library that tells of its coming and going: it adds a "+" and a "-" to the file $KQSUPT_LOADS.

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace {

void note(const char* sign) {
  if (const char* path = std::getenv("KQSUPT_LOADS")) {
    const int file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || write(file, sign, 1) != 1) {
      std::abort();
    }
    close(file);
  }
}

[[gnu::constructor]] void on_load() {
  note("+");
}
[[gnu::destructor]] void on_unload() {
  note("-");
}

}  // namespace

extern "C" {

int answer() {
  return 42;
}
int question() {
  return 7;
}

extern const int kVariable = 5;

}  // extern "C"
