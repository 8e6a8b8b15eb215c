// kqsup ini: the values of INI files. What only looks reads the file itself; what changes it goes
// through the library, for its locks and its way of replacing a file.
#include <kqsupt/config.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

#include "command.h"
#include "ini_reader.h"
#include "library.h"
#include "listing.h"

namespace kqsup {

namespace {

struct Words {
  std::string file;
  std::string section;
  std::string key;
  std::string value;
};

std::optional<IniContent> content_of(const std::string& path, Run& run) {
  const IniFile ini = look_at_ini(path);
  if (!ini.file.ok() || ini.file.goes_on) {
    run.could_not_look((ini.is_interrupted ? ini_backup(path) : path) + ": " +
                       (ini.file.ok() ? "It is too large" : ini.file.why));
    return std::nullopt;
  }
  if (ini.is_interrupted) {
    run.complain(Outcome::kAllRight,
                 path + ": a change was interrupted: what counts is in " + ini_backup(path));
  }
  return read_ini(ini.file.bytes);
}

// Tells why a value is not found.
void complain_of_missing(const IniContent& content, const Words& words, bool is_section, Run& run) {
  std::string what = is_section || !content.has_section(words.section)
                         ? "There is no section " + words.section
                         : "There is no key " + words.key + " in section " + words.section;
  if (content.broken_header != 0) {
    what += "; line " + std::to_string(content.broken_header) + " is a header without a ]";
  }
  run.complain(Outcome::kFoundWrong, words.file + ": " + what);
}

void get(const Words& words, Run& run) {
  const auto content = content_of(words.file, run);
  if (!content) {
    return;
  }
  const IniLine* line = content->find(words.section, words.key);
  if (line == nullptr) {
    complain_of_missing(*content, words, false, run);
    return;
  }
  std::string text;
  if (run.as_json) {
    nlohmann::ordered_json json;
    json["section"] = words.section;
    json["key"] = words.key;
    json["value"] = line->value;
    text = json_text(json);
  } else {
    // Programs get the bytes as they are.
    text = isatty(STDOUT_FILENO) != 0 ? printable(line->value) : line->value;
  }
  text += "\n";
  std::fwrite(text.data(), 1, text.size(), stdout);
}

void list(const Words& words, bool has_section, Run& run) {
  const auto content = content_of(words.file, run);
  if (!content) {
    return;
  }
  Listing listing({{"LINE", "line"},
                   {"SECTION", "section"},
                   {"KEY", "key"},
                   {"VALUE", "value"},
                   {"FOUND", "found"}});
  for (const IniLine& line : content->lines) {
    if (!has_section || *line.section == words.section) {
      listing.add({line.line, *line.section,
                   line.key ? nlohmann::ordered_json(*line.key) : nlohmann::ordered_json(),
                   line.value,
                   run.as_json ? nlohmann::ordered_json(line.is_found)
                               : nlohmann::ordered_json(line.is_found ? "yes" : "no")});
    }
  }
  if (has_section && !content->has_section(words.section)) {
    complain_of_missing(*content, words, true, run);
  } else if (content->broken_header != 0) {
    run.complain(Outcome::kFoundWrong,
                 words.file + ": line " + std::to_string(content->broken_header) +
                     " is a header without a ]: sections behind it are not found");
  }
  listing.print(run.as_json);
}

// What would not be found again, or would be more than one line.
const char* why_not_written(const Words& words) {
  constexpr size_t kLongestName = 255;
  const auto has = [](const std::string& text, const char* bytes) {
    return text.find_first_of(bytes) != std::string::npos;
  };
  if (has(words.section, "]\n")) {
    return "The name of a section has no ] and no line end";
  }
  if (has(words.key, "=\n") || words.key.find_first_of(" \t[;#") == 0) {
    return "A key has no = and no line end, and begins with none of blank, [, ; and #";
  }
  if (words.section.size() > kLongestName || words.key.size() > kLongestName) {
    return "The names of sections and keys have 255 bytes at most";
  }
  return has(words.value, "\n") ? "A value has no line end" : nullptr;
}

// Locks go by the path as it is written: a relative one would be another file's.
std::string absolute(const std::string& path) {
  if (path.empty() || path.starts_with('/')) {
    return path;
  }
  std::string_view rest = path;
  while (rest.starts_with("./")) {
    rest.remove_prefix(std::min(rest.find_first_not_of('/', 1), rest.size()));
  }
  return std::filesystem::current_path() / rest;
}

// Without a value the key is taken out, without a key the section.
void write(const Words& words, const char* key, const char* value, Run& run) {
  std::string why;
  const Library* library = Library::load(&why);
  auto* const write_value =
      library != nullptr
          ? library->get<decltype(SMWriteINIPathFileValue)>("SMWriteINIPathFileValue")
          : nullptr;
  if (write_value == nullptr) {
    return run.could_not_look("the library: " + (why.empty() ? "It is too old" : why));
  }
  const uint32_t size = value != nullptr ? static_cast<uint32_t>(words.value.size() + 1) : 0;
  const SMStatus status = write_value(words.section.c_str(), key, SMINI_TYPE_UTF8, value, size,
                                      absolute(words.file).c_str(), 1);
  if (status != SM_STATUS_SUCCESS) {
    char text[64];
    std::snprintf(text, sizeof text, "It could not be changed: status 0x%X",
                  static_cast<unsigned>(status));
    run.could_not_look(words.file + ": " + text);
  }
}

void set(const Words& words, Run& run) {
  if (const char* why = why_not_written(words)) {
    return run.could_not_look(words.file + ": " + why);
  }
  write(words, words.key.c_str(), words.value.c_str(), run);
}

void unset(const Words& words, bool has_key, Run& run) {
  const auto content = content_of(words.file, run);
  if (!content) {
    return;
  }
  if (has_key ? content->find(words.section, words.key) == nullptr
              : !content->has_section(words.section)) {
    complain_of_missing(*content, words, !has_key, run);
    return;
  }
  write(words, has_key ? words.key.c_str() : nullptr, nullptr, run);
}

}  // namespace

void add_ini_commands(CLI::App& app, Run& run) {
  CLI::App* ini = app.add_subcommand("ini", "The values of INI files");
  ini->require_subcommand(1);
  ini->footer("Example: kqsup ini get /opt/agent/ini/agent.ini Poll Seconds");
  const auto words = std::make_shared<Words>();
  const auto add = [&](const char* name, const char* what, const char* example) {
    CLI::App* command = ini->add_subcommand(name, what);
    command->add_option("FILE", words->file, "The file, by the path that agents name it by")
        ->required();
    command->footer(std::string("Example: kqsup ini ") + example);
    return command;
  };

  CLI::App* getting = add("get", "Print a value", "get /opt/agent/ini/agent.ini Poll Seconds");
  getting->add_option("SECTION", words->section, "Its section")->required();
  getting->add_option("KEY", words->key, "Its key")->required();
  getting->callback([words, &run] { get(*words, run); });

  CLI::App* setting = add("set", "Give a key a value, making what is missing",
                          "set /opt/agent/ini/agent.ini Poll Seconds 30\n\n"
                          "A word that begins with a dash stands behind --.");
  setting->add_option("SECTION", words->section, "Its section")->required();
  setting->add_option("KEY", words->key, "Its key")->required();
  setting->add_option("VALUE", words->value, "The value")->required();
  setting->callback([words, &run] { set(*words, run); });

  CLI::App* unsetting = add("unset", "Take out a key, or a whole section",
                            "unset /opt/agent/ini/agent.ini Poll Seconds");
  unsetting->add_option("SECTION", words->section, "Its section")->required();
  const CLI::Option* key = unsetting->add_option("KEY", words->key, "Its key");
  unsetting->callback([words, key, &run] { unset(*words, key->count() != 0, run); });

  CLI::App* listing = add("list", "List the values", "list --json /opt/agent/ini/agent.ini Poll");
  const CLI::Option* section =
      listing->add_option("SECTION", words->section, "Only those of this section");
  listing->callback([words, section, &run] { list(*words, section->count() != 0, run); });
}

}  // namespace kqsup
