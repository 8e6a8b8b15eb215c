// The table of languages.

#include "text/language.h"

#include <cstdlib>
#include <cstring>

namespace kqsupt::text {
namespace {

struct Language {
  const char* locale_name;
  uint32_t id;
};

constexpr Language kLanguages[] = {
    {"es", 1034},    {"de", 1031}, {"en_US", kDefaultLanguage},
    {"en_GB", 2057}, {"fr", 1036}, {"ja", 1041},
    {"ko", 2066},  // not the usual 1042: files are keyed by this one
    {"pt_BR", 1046}, {"zh", 2052}, {"zh_TW", 1028},
};

}  // namespace

bool find_language(const char* locale_name, uint32_t* id) {
  for (const Language& language : kLanguages) {
    if (std::strcmp(language.locale_name, locale_name) == 0) {
      *id = language.id;
      return true;
    }
  }
  return false;
}

const char* locale_name(uint32_t id) {
  for (const Language& language : kLanguages) {
    if (language.id == id) {
      return language.locale_name;
    }
  }
  return locale_name(kDefaultLanguage);
}

uint32_t local_language() {
  const char* name = std::getenv("LANG");
  uint32_t id = kDefaultLanguage;
  return name != nullptr && find_language(name, &id) ? id : kDefaultLanguage;
}

}  // namespace kqsupt::text
