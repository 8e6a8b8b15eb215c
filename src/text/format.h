// The library's own formatted output, the same on every host: parse, convert, write.
//
// The format language is described with SMsnprintf, which is this function, and differs from the C
// library's: "%S" takes UCS-2 text and "%ld" a 32-bit value, so that no compiler can check a call.
#pragma once

#include <cstdint>

#include "text/format_parse.h"

namespace kqsupt::text {

// Returns the number of characters stored, at most `size` - 1, without the terminator. Calls are
// serialised: not for signal handlers.
int32_t format(char* dst, uint32_t size, const char* pattern, ...);

// The same with the arguments in a list.
int32_t format_list(char* dst, uint32_t size, const char* pattern, Arguments& arguments);
int32_t format_list(char* dst, uint32_t size, const char* pattern, va_list list);

// The formatter as a module of the library. Its mutex is there from the first instruction of the
// process to the last, so that it formats also before its start and after its stop.
[[nodiscard]] bool start_formatter();
void stop_formatter();

}  // namespace kqsupt::text
