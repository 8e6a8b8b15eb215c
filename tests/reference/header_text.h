// The functions of a public header and what its comments say of each.
#pragma once

#include <string>
#include <vector>

namespace kqsupt::tests {

// An argument of a prototype.
struct Argument {
  std::string type;
  std::string name;  // "..." for those of no name
};

// A @param, @retval or @return of a comment.
struct Note {
  std::string kind;       // the word behind the @
  std::string direction;  // of a @param, what stands in its brackets
  std::string name;       // of a @param or @retval
  std::string text;       // with one space for each run of blanks
};

struct Function {
  std::string header;
  std::string result;  // its type
  std::string name;
  std::vector<Argument> arguments;
  bool described;           // a /** comment stands right before it
  std::string description;  // what the comment says before its first note
  std::vector<Note> notes;
};

// The functions that a header exports, in its order.
std::vector<Function> functions_of(const std::string& header, const std::string& source);

}  // namespace kqsupt::tests
