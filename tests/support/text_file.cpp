// Files as texts.

#include "support/text_file.h"

#include <fstream>
#include <sstream>

#include "gtest/gtest.h"

namespace kqsupt::tests {

std::string read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path << " cannot be read";
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

std::string without_comments(const std::string& source) {
  std::string code;
  for (size_t i = 0; i < source.size();) {
    size_t end = std::string::npos;
    if (source.compare(i, 2, "/*") == 0) {
      end = source.find("*/", i);
      end = end == std::string::npos ? source.size() : end + 2;
    } else if (source.compare(i, 2, "//") == 0) {
      end = source.find('\n', i);
      end = end == std::string::npos ? source.size() : end;
    }
    if (end == std::string::npos) {
      code += source[i++];
    } else {
      code += ' ';
      i = end;
    }
  }
  return code;
}

}  // namespace kqsupt::tests
