// The formatter: an interpreter of formats, and the mutex under which it runs.

#include "text/format.h"

#include <algorithm>

#include "frame/heap.h"
#include "ipc/local_mutex.h"
#include "text/conversion.h"
#include "text/format_convert.h"
#include "text/format_parse.h"
#include "text/format_write.h"

namespace kqsupt::text {
namespace {

// Callers count on one call at a time in the whole process, also where the library has not started.
constinit ipc::ForkSafeMutex formatter_mutex;

uint32_t next_unsigned(const Spec& spec, Arguments& arguments) {
  const auto value = static_cast<uint32_t>(arguments.next_int());
  return spec.is_short ? static_cast<uint16_t>(value) : value;
}

int32_t next_signed(const Spec& spec, Arguments& arguments) {
  const int32_t value = arguments.next_int();
  return spec.is_short ? static_cast<int16_t>(value) : value;
}

void store_count(const Spec& spec, uint64_t produced, Arguments& arguments) {
  const auto count = static_cast<int32_t>(std::min<uint64_t>(produced, INT32_MAX));
  if (spec.is_short) {
    *arguments.next_pointer<int16_t>() = static_cast<int16_t>(count);
  } else {
    *arguments.next_pointer<int32_t>() = count;
  }
}

// False when the text cannot be converted or memory is short.
bool write_wide_text(const Spec& spec, const ustring* wide, BoundedOutput& output) {
  if (wide == nullptr) {
    write_field(output, spec, convert_text(spec, nullptr));
    return true;
  }
  uint32_t size = 0;
  if (ucs2_to_utf8(nullptr, &size, wide) != SM_STATUS_SUCCESS) {
    return false;
  }
  const auto narrow = frame::heap_array<char>(size);
  if (narrow == nullptr || ucs2_to_utf8(narrow.get(), &size, wide) != SM_STATUS_SUCCESS) {
    return false;
  }
  write_field(output, spec, convert_text(spec, narrow.get()));
  return true;
}

// A character that is no conversion stands for itself; of its specification only the width and "-"
// have a meaning.
Field plain_character(const Spec& spec, NumberText& room) {
  Field field = convert_character(spec, spec.conversion, room);
  field.zero_fill = false;
  return field;
}

Field convert_pointer(const Spec& spec, const void* pointer, NumberText& room) {
  Spec as_hexadecimal = spec;
  as_hexadecimal.alternate = true;
  return convert_hexadecimal(as_hexadecimal, reinterpret_cast<uintptr_t>(pointer), room);
}

// Writes one specification. False when the output ends here.
bool write_conversion(const Spec& spec, Arguments& arguments, BoundedOutput& output) {
  NumberText room;
  switch (spec.conversion) {
    case '\0':
      return false;
    case 'd':
      write_field(output, spec, convert_signed(spec, next_signed(spec, arguments), room));
      break;
    case 'u':
      write_field(output, spec, convert_decimal(spec, next_unsigned(spec, arguments), room));
      break;
    case 'o':
      write_field(output, spec, convert_octal(spec, next_unsigned(spec, arguments), room));
      break;
    case 'x':
    case 'X':
      write_field(output, spec, convert_hexadecimal(spec, next_unsigned(spec, arguments), room));
      break;
    case 'p':
      write_field(output, spec, convert_pointer(spec, arguments.next_pointer<void>(), room));
      break;
    case 'c':
      write_field(output, spec, convert_character(spec, arguments.next_int(), room));
      break;
    case 's':
      write_field(output, spec, convert_text(spec, arguments.next_pointer<const char>()));
      break;
    case 'S':
      return write_wide_text(spec, arguments.next_pointer<const ustring>(), output);
    case 'e':
    case 'E':
    case 'f':
    case 'g':
    case 'G':
      write_field(output, spec, convert_double(spec, arguments.next_double(), room));
      break;
    case 'n':
      store_count(spec, output.produced(), arguments);
      break;
    default:
      write_field(output, spec, plain_character(spec, room));
      break;
  }
  return true;
}

void interpret(const char* pattern, Arguments& arguments, BoundedOutput& output) {
  Spec spec;
  do {
    const char* percent = pattern;
    while (*percent != '%' && *percent != '\0') {
      ++percent;
    }
    output.text(pattern, static_cast<size_t>(percent - pattern));
    if (*percent == '\0') {
      return;
    }
    pattern = parse_spec(percent + 1, arguments, spec);
  } while (write_conversion(spec, arguments, output));
}

}  // namespace

int32_t format_list(char* dst, uint32_t size, const char* pattern, Arguments& arguments) {
  const ipc::LocalMutexGuard guard(formatter_mutex.held_over_forks());
  BoundedOutput output(dst, size);
  interpret(pattern, arguments, output);
  return output.finish();
}

int32_t format_list(char* dst, uint32_t size, const char* pattern, va_list list) {
  Arguments arguments;
  va_copy(arguments.list, list);
  const int32_t stored = format_list(dst, size, pattern, arguments);
  va_end(arguments.list);
  return stored;
}

int32_t format(char* dst, uint32_t size, const char* pattern, ...) {
  Arguments arguments;
  va_start(arguments.list, pattern);
  const int32_t stored = format_list(dst, size, pattern, arguments);
  va_end(arguments.list);
  return stored;
}

bool start_formatter() {
  return formatter_mutex.hold_over_forks();
}

void stop_formatter() {}

}  // namespace kqsupt::text
