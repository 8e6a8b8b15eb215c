// The languages that agents have texts in, by ID and by locale name.
#pragma once

#include <cstdint>

namespace kqsupt::text {

inline constexpr uint32_t kDefaultLanguage = 1033;

// The ID of a locale name, which is compared as a whole. False when there is no such language.
[[nodiscard]] bool find_language(const char* locale_name, uint32_t* id);

// The locale name of an ID; that of the default language for an unknown one.
[[nodiscard]] const char* locale_name(uint32_t id);

// The language of the environment, looked up at every call.
[[nodiscard]] uint32_t local_language();

}  // namespace kqsupt::text
