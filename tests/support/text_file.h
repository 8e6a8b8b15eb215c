// Reading the project's own text files from a test.
#pragma once

#include <string>

namespace kqsupt::tests {

// The content of a file; a test failure and an empty text when it cannot be read.
std::string read_file(const std::string& path);

// C source without its comments.
std::string without_comments(const std::string& source);

}  // namespace kqsupt::tests
