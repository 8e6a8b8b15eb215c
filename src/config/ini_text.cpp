// Reading INI lines, and finding the places that a change concerns.

#include "config/ini_text.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace kqsupt::config {
namespace {

bool is_comment(std::string_view line) {
  return line.starts_with(';') || line.starts_with('#');
}

bool is_header(std::string_view line) {
  return skip_blanks(line).starts_with('[');
}

// The name in a header's brackets; none without the closing one.
std::optional<std::string_view> header_name(std::string_view line) {
  std::string_view text = skip_blanks(text_of(line));
  text.remove_prefix(1);
  const size_t end = text.find(']');
  return end != std::string_view::npos ? std::optional(text.substr(0, end)) : std::nullopt;
}

// Whether a line is the one of this key: `value` is then what follows the "=".
bool has_key(std::string_view line, std::string_view key, std::string_view* value) {
  const std::string_view text = skip_blanks(line);
  if (text.size() <= key.size() || text[key.size()] != '=' || !text.starts_with(key)) {
    return false;
  }
  *value = text_of(from(text, key.size() + 1));
  return true;
}

// Calls `visit` with each line and, of a header, its name, until it answers false.
// SM_STATUS_END_OF_FILE at a header without a "]"; SM_STATUS_SECTION_NOT_FOUND at the end of the
// lines.
template <class Visit>
SMStatus for_each_header(LineReader& lines, Visit visit) {
  for (std::string_view line; lines.next(line);) {
    if (!is_header(line)) {
      continue;
    }
    const std::optional<std::string_view> name = header_name(line);
    if (!name.has_value()) {
      return SM_STATUS_END_OF_FILE;
    }
    if (!visit(*name, line)) {
      return SM_STATUS_SUCCESS;
    }
  }
  return SM_STATUS_SECTION_NOT_FOUND;
}

SMStatus go_to_section(LineReader& lines, std::string_view section,
                       std::string_view* header = nullptr) {
  return for_each_header(lines, [&](std::string_view name, std::string_view line) {
    if (name == section && header != nullptr) {
      *header = line;
    }
    return name != section;
  });
}

}  // namespace

SMStatus find_ini_value(LineReader& lines, std::string_view section, std::string_view key,
                        std::string_view* value) {
  if (const SMStatus status = go_to_section(lines, section); status != SM_STATUS_SUCCESS) {
    return status;
  }
  const bool can_match = key.find('=') == std::string_view::npos;
  for (std::string_view line; lines.next(line) && !is_header(line);) {
    if (can_match && has_key(line, key, value) && !is_comment(line)) {
      return SM_STATUS_SUCCESS;
    }
  }
  return SM_STATUS_KEY_NOT_FOUND;
}

void NameList::add(std::string_view name) {
  const auto size = static_cast<uint32_t>(name.size() + 1);
  needed_ += size;
  if (needed_ <= capacity_) {
    *std::copy(name.begin(), name.end(), buffer_ + used_) = '\0';
    used_ += size;
  }
}

SMStatus NameList::finish(uint32_t* size) {
  if (capacity_ != 0) {
    buffer_[used_] = '\0';
  }
  *size = needed_;
  return needed_ <= capacity_ ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL;
}

SMStatus list_ini_sections(LineReader& lines, NameList* names) {
  const SMStatus status = for_each_header(lines, [names](std::string_view name, std::string_view) {
    names->add(name);
    return true;
  });
  return status == SM_STATUS_SECTION_NOT_FOUND && !names->is_empty() ? SMStatus{SM_STATUS_SUCCESS}
                                                                     : status;
}

SMStatus list_ini_keys(LineReader& lines, std::string_view section, NameList* names) {
  if (const SMStatus status = go_to_section(lines, section); status != SM_STATUS_SUCCESS) {
    return status;
  }
  for (std::string_view line; lines.next(line) && !is_header(line);) {
    const std::string_view text = skip_blanks(text_of(line));
    const size_t sign = text.find('=');
    if (sign != std::string_view::npos && !is_comment(line)) {
      names->add(text.substr(0, sign));
    }
  }
  return names->is_empty() ? SMStatus{SM_STATUS_KEY_NOT_FOUND} : SMStatus{SM_STATUS_SUCCESS};
}

SMStatus edit_ini_key(std::string_view content, std::string_view section, std::string_view key,
                      IniEdit* edit) {
  LineReader lines(content);
  if (const SMStatus status = go_to_section(lines, section); status != SM_STATUS_SUCCESS) {
    return status;
  }
  const auto offset_of = [&](std::string_view line) {
    return static_cast<size_t>(line.data() - content.data());
  };
  // Where the blank lines and comments begin that no key has followed yet.
  std::optional<size_t> run;
  for (std::string_view line; lines.next(line);) {
    const size_t offset = offset_of(line);
    const std::string_view text =
        from(line, std::min(line.find_first_not_of(" \t\r\n"), line.size()));
    if (text.empty() || is_comment(text)) {
      run = run.value_or(offset);
      continue;
    }
    if (is_header(line)) {
      *edit = {run.value_or(offset), run.value_or(offset)};
      return SM_STATUS_SUCCESS;
    }
    run.reset();
    std::string_view value;
    if (key.find('=') == std::string_view::npos && has_key(line, key, &value)) {
      *edit = {offset, offset + line.size()};
      return SM_STATUS_SUCCESS;
    }
  }
  *edit = {run.value_or(content.size()), content.size()};
  return SM_STATUS_SUCCESS;
}

SMStatus edit_ini_section(std::string_view content, std::string_view section, IniEdit* edit) {
  LineReader lines(content);
  std::string_view line;
  if (const SMStatus status = go_to_section(lines, section, &line); status != SM_STATUS_SUCCESS) {
    return status;
  }
  const auto offset_of = [&](std::string_view at) {
    return static_cast<size_t>(at.data() - content.data());
  };
  *edit = {offset_of(line), content.size()};
  while (lines.next(line)) {
    if (line.starts_with('[') || line.starts_with('#')) {
      edit->kept_from = offset_of(line);
      break;
    }
  }
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::config
