// The order in which a process starts the library's modules, and stops them again.
#pragma once

#include <cstdint>
#include <span>

namespace kqsupt::frame {

struct Module {
  const char* name;
  bool (*start)();
  void (*stop)();  // tolerates a module that was never started
};

// Counts attaches. The first one starts the modules in order, the last detach stops them in
// reverse. The loader serialises its constructors and destructors, so nothing is locked here.
class AttachSequence {
 public:
  explicit constexpr AttachSequence(std::span<const Module> modules) : modules_(modules) {}

  // False when a module did not start: the earlier ones have been stopped again, the latest first.
  // The attach stays counted, so a second one reports success and starts nothing.
  [[nodiscard]] bool attach();

  // Below one attach all modules are stopped, also after a failed start.
  void detach();

 private:
  static void stop_in_reverse(std::span<const Module> modules);

  std::span<const Module> modules_;
  int32_t attached_ = 0;
};

}  // namespace kqsupt::frame
