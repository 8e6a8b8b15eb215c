// The bounds-checked string functions: each is the C library's own with the room checked first.

#include <errno.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>

#include <charconv>

#include "kqbounded.h"

namespace {

// Refuses with an empty text where there is a destination to write it to.
int refuse(char* destination, size_t size, int reason) {
  if (destination != nullptr && size != 0) {
    destination[0] = '\0';
  }
  return reason;
}

bool has_room(const char* destination, size_t size) {
  return destination != nullptr && size != 0;
}

int copy(char* destination, size_t size, const char* source, size_t length) {
  if (length >= size) {
    return refuse(destination, size, ERANGE);
  }
  memcpy(destination, source, length);
  destination[length] = '\0';
  return 0;
}

}  // namespace

extern "C" {

int strcpy_s(char* destination, size_t size, const char* source) {
  if (!has_room(destination, size) || source == nullptr) {
    return refuse(destination, size, EINVAL);
  }
  return copy(destination, size, source, strnlen(source, size));
}

int strncpy_s(char* destination, size_t size, const char* source, size_t count) {
  if (!has_room(destination, size) || source == nullptr) {
    return refuse(destination, size, EINVAL);
  }
  return copy(destination, size, source, strnlen(source, count < size ? count : size));
}

int strcat_s(char* destination, size_t size, const char* source) {
  if (!has_room(destination, size) || source == nullptr) {
    return refuse(destination, size, EINVAL);
  }
  const size_t used = strnlen(destination, size);
  if (used == size) {
    return refuse(destination, size, EINVAL);
  }
  const size_t room = size - used;
  const size_t length = strnlen(source, room);
  if (length == room) {
    return refuse(destination, size, ERANGE);
  }
  return copy(destination + used, room, source, length);
}

int sprintf_s(char* destination, size_t size, const char* format, ...) {
  if (!has_room(destination, size) || format == nullptr) {
    return refuse(destination, size, EINVAL);
  }
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(destination, size, format, arguments);
  va_end(arguments);
  if (length < 0) {
    return refuse(destination, size, EINVAL);
  }
  return static_cast<size_t>(length) < size ? 0 : refuse(destination, size, ERANGE);
}

char* strtok_s(char* text, const char* delimiters, char** rest) {
  if (delimiters == nullptr || rest == nullptr || (text == nullptr && *rest == nullptr)) {
    return nullptr;
  }
  return strtok_r(text, delimiters, rest);
}

int fopen_s(FILE** file, const char* name, const char* mode) {
  if (file == nullptr) {
    return EINVAL;
  }
  *file = nullptr;
  if (name == nullptr || mode == nullptr) {
    return EINVAL;
  }
  *file = fopen(name, mode);
  return *file != nullptr ? 0 : errno;
}

int getenv_s(size_t* needed, char* value, size_t size, const char* name) {
  if (needed == nullptr || name == nullptr || (value == nullptr) != (size == 0)) {
    return refuse(value, size, EINVAL);
  }
  const char* found = getenv(name);
  *needed = found != nullptr ? strlen(found) + 1 : 0;
  if (value == nullptr) {
    return 0;
  }
  return found != nullptr ? copy(value, size, found, *needed - 1) : refuse(value, size, 0);
}

int localtime_s(struct tm* calendar, const time_t* time) {
  if (calendar == nullptr || time == nullptr) {
    return EINVAL;
  }
  tzset();  // as localtime does, and localtime_r does not
  return localtime_r(time, calendar) != nullptr ? 0 : errno;
}

int ctime_s(char* destination, size_t size, const time_t* time) {
  if (!has_room(destination, size) || time == nullptr) {
    return refuse(destination, size, EINVAL);
  }
  char text[26];  // what ctime_r asks for; it has no text for years that need more
  tzset();        // as ctime does, and ctime_r does not
  if (ctime_r(time, text) == nullptr) {
    return refuse(destination, size, EINVAL);
  }
  return copy(destination, size, text, strlen(text));
}

int _ltoa_s(long value, char* destination, size_t size, int radix) {
  if (!has_room(destination, size) || radix < 2 || radix > 36) {
    return refuse(destination, size, EINVAL);
  }
  char digits[sizeof(long) * 8 + 1];
  const auto end = radix == 10 ? std::to_chars(digits, digits + sizeof digits, value)
                               : std::to_chars(digits, digits + sizeof digits,
                                               static_cast<unsigned long>(value), radix);
  return copy(destination, size, digits, static_cast<size_t>(end.ptr - digits));
}

}  // extern "C"
