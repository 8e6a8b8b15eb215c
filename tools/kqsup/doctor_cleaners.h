// What the check of temporary-file cleaners judges by.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kqsup {

// A line of the configuration of temporary files.
struct CleanerLine {
  std::string type;  // never empty
  std::string path;  // with its specifiers replaced; empty when one of them is not known
  std::string age;   // empty for none
};

[[nodiscard]] std::vector<CleanerLine> cleaner_lines(std::string_view text);

// The line that takes away what lies in the directory; null when none does. The line that is
// closest to the directory decides.
[[nodiscard]] const CleanerLine* cleaner_of(const std::vector<CleanerLine>& lines,
                                            const std::string& directory);

// The absolute paths that a line of a shell script names, but for those that a cleaner is told to
// spare; without what only says "all that is in it".
[[nodiscard]] std::vector<std::string> cleaned_paths(std::string_view line);

}  // namespace kqsup
