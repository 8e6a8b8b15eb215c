// A library whose constructor and destructor link and unload: functions of their own library, which
// is at $KQSUPT_SELF, and of another one, which is at $KQSUPT_OTHER.

#include <kqsupt/os.h>

#include <cstdlib>

namespace {

using Answer = int (*)();

int seen = 0;

[[gnu::constructor]] void on_load() {
  const auto of_other = reinterpret_cast<Answer>(
      SMFLibLinkToExportFN("constructor", std::getenv("KQSUPT_OTHER"), "answer"));
  const auto of_self = reinterpret_cast<Answer>(
      SMFLibLinkToExportFN("constructor", std::getenv("KQSUPT_SELF"), "what_was_seen"));
  seen = of_other != nullptr && of_self != nullptr ? of_other() + of_self() : -1;
}

[[gnu::destructor]] void on_unload() {
  (void)SMFLibUnLoad("constructor", std::getenv("KQSUPT_OTHER"));
}

}  // namespace

// What the constructor was answered.
extern "C" int what_was_seen() {
  return seen;
}
