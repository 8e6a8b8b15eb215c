// The library, loaded when a command first needs it: its start makes a lock file and takes away what
// dead processes left behind, so what only looks must do without.
#pragma once

#include <string>

namespace kqsup {

class Library {
 public:
  // The library beside this program, or where programs of this host find it; null, and why, when
  // there is none. It is loaded once and stays.
  [[nodiscard]] static const Library* load(std::string* why);

  // An exported function: library->get<decltype(SMReadINIFileValue)>("SMReadINIFileValue"). Null
  // when this library has none of the name.
  template <class Function>
  [[nodiscard]] Function* get(const char* name) const {
    return reinterpret_cast<Function*>(address(name));
  }

 private:
  [[nodiscard]] void* address(const char* name) const;

  void* handle_ = nullptr;
};

}  // namespace kqsup
