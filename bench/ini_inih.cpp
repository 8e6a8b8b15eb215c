// INI files: inih.

#include <ini.h>

#include <cstring>
#include <vector>

#include "ini_bench.h"

namespace kqbench {
namespace {

struct Search {
  const char* key;
  char value[128];
};

int take(void* user, const char*, const char* name, const char* value) {
  auto* search = static_cast<Search*>(user);
  if (std::strcmp(name, search->key) == 0) {
    std::strncpy(search->value, value, sizeof search->value - 1);
  }
  return 1;
}

void read(const IniFile& file, const std::string& key) {
  Search search{key.c_str(), {}};
  require(ini_parse(file.path.c_str(), take, &search) == 0 && search.value[0] != '\0');
  benchmark::DoNotOptimize(search);
}

const bool kAdded = [] {
  add_ini_measurement<100>(kReadRow, "inih", read);
  add_ini_measurement<5000>(kReadLargeRow, "inih", read);
  return true;
}();

}  // namespace
}  // namespace kqbench
