// Reading a header that is written the way all of them are: a comment, then KQSUPT_API and a
// prototype.

#include "reference/header_text.h"

#include <regex>
#include <sstream>

namespace kqsupt::tests {
namespace {

const std::string kMark = "KQSUPT_API ";

// One space for each run of blanks, and none at the ends.
std::string squeezed(const std::string& text) {
  std::istringstream words(text);
  std::string result;
  for (std::string word; words >> word;) {
    result += (result.empty() ? "" : " ") + word;
  }
  return result;
}

// The comment that ends right before `place`, without its marks; empty when there is none.
std::string comment_before(const std::string& source, size_t place) {
  const size_t end = source.find_last_not_of(" \n", place - 1);
  if (end == std::string::npos || end < 1 || source.compare(end - 1, 2, "*/") != 0) {
    return "";
  }
  const size_t begin = source.rfind("/*", end - 1);
  if (begin == std::string::npos || source.compare(begin, 3, "/**") != 0) {
    return "";
  }
  std::istringstream lines(source.substr(begin + 3, end - 1 - (begin + 3)));
  std::string text;
  for (std::string line; std::getline(lines, line);) {
    const size_t first = line.find_first_not_of(' ');
    const bool starred = first != std::string::npos && line[first] == '*';
    text += (starred ? line.substr(first + 1) : line) + "\n";
  }
  return text;
}

std::vector<Argument> arguments_of(const std::string& list) {
  std::vector<Argument> arguments;
  std::istringstream parts(list);
  for (std::string part; std::getline(parts, part, ',');) {
    part = squeezed(part);
    if (part == "void") {
      continue;
    }
    const size_t name = part == "..." ? 0 : part.find_last_of(" *") + 1;
    arguments.push_back({squeezed(part.substr(0, name)), part.substr(name)});
  }
  return arguments;
}

// Splits a comment at the notes in it.
void read_comment(const std::string& comment, Function* function) {
  static const std::regex mark(R"((^|\n) *@(\w+)(\[([^\]]*)\])?)");
  size_t from = 0;
  Note note;
  const auto keep = [&](size_t to) {
    const std::string text = squeezed(comment.substr(from, to - from));
    if (note.kind.empty()) {
      function->description = text;
      return;
    }
    const bool named = note.kind == "param" || note.kind == "retval";
    const size_t blank = named ? std::min(text.find(' '), text.size()) : 0;
    note.name = text.substr(0, blank);
    note.text = squeezed(text.substr(blank));
    function->notes.push_back(note);
  };
  for (std::sregex_iterator match(comment.begin(), comment.end(), mark), end; match != end;
       ++match) {
    keep(static_cast<size_t>(match->position()));
    note = {(*match)[2], (*match)[4], "", ""};
    from = static_cast<size_t>(match->position() + match->length());
  }
  keep(comment.size());
}

}  // namespace

std::vector<Function> functions_of(const std::string& header, const std::string& source) {
  std::vector<Function> functions;
  for (size_t at = source.find("\n" + kMark); at != std::string::npos;
       at = source.find("\n" + kMark, at + 1)) {
    const size_t begin = at + 1 + kMark.size();
    const size_t open = source.find('(', begin);
    const size_t close = source.find(");", begin);
    const std::string head = squeezed(source.substr(begin, open - begin));
    const size_t name = head.find_last_of(" *") + 1;
    Function function{header, squeezed(head.substr(0, name)), head.substr(name), {}, false, "", {}};
    function.arguments = arguments_of(source.substr(open + 1, close - open - 1));
    const std::string comment = comment_before(source, at);
    function.described = !comment.empty();
    read_comment(comment, &function);
    functions.push_back(function);
  }
  return functions;
}

}  // namespace kqsupt::tests
