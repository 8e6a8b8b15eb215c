// A sine for the emulator of the reference host, which stops the C library's own with an illegal
// instruction though every processor of that host runs it. tools/run-target preloads this into
// programs of the preset "reference"; the sine of long doubles, which it is made from, works there
// and gives the same values.

#include <cstdlib>

extern "C" long double sinl(long double angle) noexcept;

extern "C" double sin(double angle) noexcept {
  return static_cast<double>(sinl(angle));
}

// A native program that this one starts must not preload it too.
[[gnu::constructor]] static void leave_the_environment() {
  unsetenv("LD_PRELOAD");
}
