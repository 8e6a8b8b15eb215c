// INI files: GLib's GKeyFile.

#include <glib.h>

#include <vector>

#include "ini_bench.h"

namespace kqbench {
namespace {

GKeyFile* load(const IniFile& file) {
  GKeyFile* loaded = g_key_file_new();
  require(g_key_file_load_from_file(loaded, file.path.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr));
  return loaded;
}

void read(const IniFile& file, const std::string& key) {
  GKeyFile* loaded = load(file);
  char* value = g_key_file_get_value(loaded, "section", key.c_str(), nullptr);
  require(value != nullptr);
  g_free(value);
  g_key_file_free(loaded);
}

void rewrite(const IniFile& file, const std::string& key) {
  GKeyFile* loaded = load(file);
  g_key_file_set_value(loaded, "section", key.c_str(), "value of some length, number 999999");
  require(g_key_file_save_to_file(loaded, file.path.c_str(), nullptr));
  g_key_file_free(loaded);
}

const bool kAdded = [] {
  add_ini_measurement<100>(kReadRow, "GKeyFile", read);
  add_ini_measurement<5000>(kReadLargeRow, "GKeyFile", read);
  add_ini_measurement<100>(kRewriteRow, "GKeyFile", rewrite);
  return true;
}();

}  // namespace
}  // namespace kqbench
