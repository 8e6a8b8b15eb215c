// Formats in buffers of every size: put together of specifications of all kinds, each with the
// arguments it takes; or raw text, of which every conversion takes an integer; or a double beside
// the C library.

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "exact_input.h"
#include "kqsupt/text.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::require;

namespace {

constexpr uint32_t kLarge = 0x4000;

// Everything that the formatter takes is passed like one of these.
struct Argument {
  enum class Kind { kInteger, kDouble, kPointer } kind;
  int32_t integer = 0;
  double number = 0;
  const void* pointer = nullptr;
};

struct Call {
  std::string format;
  std::vector<Argument> arguments;
};

constexpr size_t kMostArguments = 5;

// Calls SMsnprintf with the arguments from `next` on behind those that are unpacked already.
template <class... Unpacked>
int32_t call_with(char* dst, uint32_t size, const Call& call, size_t next, Unpacked... unpacked) {
  if constexpr (sizeof...(unpacked) < kMostArguments) {
    if (next < call.arguments.size()) {
      const Argument& argument = call.arguments[next];
      switch (argument.kind) {
        case Argument::Kind::kInteger:
          return call_with(dst, size, call, next + 1, unpacked..., argument.integer);
        case Argument::Kind::kDouble:
          return call_with(dst, size, call, next + 1, unpacked..., argument.number);
        case Argument::Kind::kPointer:
          return call_with(dst, size, call, next + 1, unpacked..., argument.pointer);
      }
    }
  }
  // The format stands in a block of its own size.
  const std::unique_ptr<char[]> format(new char[call.format.size() + 1]);
  std::memcpy(format.get(), call.format.c_str(), call.format.size() + 1);
  return SMsnprintf(dst, size, format.get(), unpacked...);
}

// The same call with much room, with little and with none says the same. Returns its output.
std::string check(const Call& call, uint32_t room) {
  std::string whole(kLarge, '?');
  const int32_t stored = call_with(whole.data(), kLarge, call, 0);
  require(stored >= 0 && stored < static_cast<int32_t>(kLarge));
  whole.resize(static_cast<size_t>(stored) + 1);
  require(whole.back() == '\0');
  whole.pop_back();

  const std::string cut = whole.substr(0, room == 0 ? 0 : room - 1);
  const std::unique_ptr<char[]> buffer(new char[room == 0 ? 1 : room]);
  require(call_with(buffer.get(), room, call, 0) == static_cast<int32_t>(cut.size()));
  require(std::memcmp(buffer.get(), cut.c_str(), cut.size() + 1) == 0);
  require(call_with(nullptr, room, call, 0) == static_cast<int32_t>(cut.size()));
  return whole;
}

template <class Value>
Value value_of(Input& input) {
  uint8_t bytes[sizeof(Value)];
  for (uint8_t& byte : bytes) {
    byte = input.byte();
  }
  Value value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

// What the pointers of a call point to.
struct Targets {
  std::unique_ptr<char[]> text;
  std::unique_ptr<ustring[]> wide;
  int32_t count = 0;
};

// A width or a precision: left out, spelled out, or an argument.
void add_number(Input& input, Call& call) {
  const uint8_t how = input.byte();
  if (how < 100) {
    call.format += std::to_string(how);
  } else if (how < 130) {
    call.format += std::to_string(value_of<uint32_t>(input));
  } else if (how < 180) {
    call.format += '*';
    const int32_t number = how < 150 ? value_of<int32_t>(input) : input.byte() - 128;
    call.arguments.push_back({Argument::Kind::kInteger, number});
  }
}

void add_specification(Input& input, const Targets& targets, Call& call) {
  call.format += '%';
  const uint8_t flags = input.byte();
  for (unsigned i = 0; i < 5; ++i) {
    if ((flags >> i & 1U) != 0) {
      call.format += "-+ #0"[i];
    }
  }
  if ((flags & 0x20U) != 0) {
    add_number(input, call);
  }
  if ((flags & 0x40U) != 0) {
    call.format += '.';
    add_number(input, call);
  }
  if ((flags & 0x80U) != 0) {
    call.format += "hlLhl"[input.byte() % 5];
  }
  const char conversion = "diuoxXDUOpcsSeEfgGn%k"[input.byte() % 21];
  call.format += conversion;
  Argument argument{Argument::Kind::kPointer};
  switch (conversion) {
    case '%':
    case 'k':
      return;
    case 's':
      argument.pointer = targets.text.get();
      break;
    case 'S':
      argument.pointer = targets.wide.get();
      break;
    case 'n':
      argument.pointer = &targets.count;
      break;
    case 'p':
      argument.pointer = &targets;
      break;
    case 'e':
    case 'E':
    case 'f':
    case 'g':
    case 'G':
      argument = {Argument::Kind::kDouble, 0, value_of<double>(input)};
      break;
    default:
      argument = {Argument::Kind::kInteger, value_of<int32_t>(input)};
      break;
  }
  call.arguments.push_back(argument);
}

// The shape of the format comes first in the input. Of what is left, which the texts are made of,
// the specifications take theirs from the front.
void format_matching(Input& input, uint32_t room) {
  std::vector<uint8_t> pieces(input.byte() % 4);
  for (uint8_t& piece : pieces) {
    piece = input.byte();
  }
  Targets targets;
  targets.text = input.text();
  const size_t units = input.size() / sizeof(ustring);
  targets.wide.reset(new ustring[units + 1]);
  std::memcpy(targets.wide.get(), targets.text.get(), units * sizeof(ustring));
  targets.wide[units] = 0;
  Call call;
  for (const uint8_t piece : pieces) {
    call.format.append(piece % 16, static_cast<char>('a' + piece % 26));
    if (call.arguments.size() + 3 <= kMostArguments) {
      add_specification(input, targets, call);
    }
  }
  check(call, room);
}

// A format that is the input itself. All its conversions take integers, of which there are enough.
void format_raw(const Input& input, uint32_t room) {
  std::string format;
  size_t integers = 0;
  const std::unique_ptr<char[]> text = input.text();
  for (const char* at = text.get(); *at != '\0'; ++at) {
    const bool takes_other = std::strchr("eEfgGsSnp", *at) != nullptr;
    integers += *at == '%' || *at == '*' ? 1 : 0;
    format += takes_other ? 'd' : *at;
  }
  if (integers > kMostArguments) {
    return;
  }
  Call call{format, {}};
  for (size_t i = 0; i < kMostArguments; ++i) {
    call.arguments.push_back({Argument::Kind::kInteger, static_cast<int32_t>(i * 1000003) - 7});
  }
  check(call, room);
}

// A double by one conversion, beside the C library where both mean the same.
void format_double(Input& input, uint32_t room) {
  const auto value = value_of<double>(input);
  const char conversion = "eEfgG"[input.byte() % 5];
  const int32_t precision = input.byte();
  const int32_t width = input.byte() % 64 - 32;
  const Call call{std::string("%*.*") + conversion,
                  {{Argument::Kind::kInteger, width},
                   {Argument::Kind::kInteger, precision},
                   {Argument::Kind::kDouble, 0, value}}};
  const std::string whole = check(call, room);
  if (std::isfinite(value)) {
    char expected[1024];
    std::snprintf(expected, sizeof expected, call.format.c_str(), width, precision, value);
    require(whole == expected);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const uint8_t mode = input.byte();
  const uint32_t room = input.byte();
  switch (mode % 3) {
    case 0:
      format_matching(input, room);
      break;
    case 1:
      format_raw(input, room);
      break;
    default:
      format_double(input, room);
      break;
  }
  return 0;
}
