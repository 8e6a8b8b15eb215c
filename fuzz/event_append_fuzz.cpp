// Events of any texts and bytes, appended to logs that hold any bytes or other events: what was
// there stays, and each event is whole.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "kqsupt/log.h"
#include "log/header_block.h"
#include "scratch_file.h"

using kqsupt::fuzz::Input;
using kqsupt::fuzz::put_bytes;
using kqsupt::fuzz::require;
using kqsupt::fuzz::scratch_file;

namespace {

constexpr uint32_t kTextLog = 4;
constexpr uint32_t kXmlLog = 8;
constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr uint32_t kLargeSize = 4194304;

struct Event {
  uint16_t type;
  uint16_t category;
  uint32_t id;
  std::string source;
  std::string description;
  std::string user;
  std::string link;
  std::vector<uint8_t> data;
};

// A text of up to `most` bytes, without zeros.
std::string text_of(Input* input, uint32_t most) {
  std::string text;
  for (uint32_t left = input->byte() % (most + 1); left != 0; --left) {
    const uint8_t byte = input->byte();
    text += byte != 0 ? static_cast<char>(byte) : ' ';
  }
  // Lengths about the bounds, too.
  const uint8_t last = text.empty() ? 0 : static_cast<uint8_t>(text.back());
  if (last == 0xFE) {
    text.assign(512 + text.size(), 'l');
  } else if (last == 0xFF) {
    text.assign(8190 + text.size(), 'l');
  } else if (last == 0xFD) {
    // Many bytes for few units.
    const size_t count = 1010 + text.size();
    text.clear();
    for (size_t i = 0; i < count; ++i) {
      text += "\xFC\x80\x80\x81\x81\x81";
    }
  }
  return text;
}

Event event_of(Input* input) {
  Event event;
  event.type = input->byte() % 20;
  event.category = input->byte() % 8;
  event.id = input->byte() * 0x01010101U;
  event.source = text_of(input, 20);
  event.description = text_of(input, 40);
  event.user = text_of(input, 10);
  event.link = text_of(input, 10);
  event.data.resize(input->byte() % 50);
  for (uint8_t& byte : event.data) {
    byte = input->byte();
  }
  return event;
}

bool exists(const std::string& path) {
  return access(path.c_str(), F_OK) == 0;
}

std::string content_of(const std::string& path) {
  std::string content;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    return content;
  }
  char bytes[4096];
  for (size_t count = 0; (count = std::fread(bytes, 1, sizeof bytes, file)) != 0;) {
    content.append(bytes, count);
  }
  std::fclose(file);
  return content;
}

// ---- The text log ----

// False for a text that cannot be converted.
bool to_units(const std::string& text, std::u16string* units) {
  std::vector<ustring> buffer(text.size() + 1);
  auto size = static_cast<uint32_t>(buffer.size() * sizeof(ustring));
  if (SMUTF8StrToUCS2Str(buffer.data(), &size, text.c_str()) != SM_STATUS_SUCCESS) {
    return false;
  }
  units->assign(buffer.begin(), buffer.begin() + size / sizeof(ustring) - 1);
  return true;
}

// Bytes in the host's order; an odd one at their end is left out.
std::u16string units_of(std::string_view bytes) {
  std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
  std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
  return units;
}

std::u16string wide(const std::string& text) {
  return {text.begin(), text.end()};
}

const char* label_of(uint16_t type) {
  switch (type) {
    case 0:
      return "None";
    case 1:
      return "Error";
    case 2:
      return "Warning";
    case 4:
      return "Information";
    case 8:
      return "Audit Success";
    case 16:
      return "Audit Failure";
    default:
      return nullptr;
  }
}

const char* name_of(uint16_t category) {
  constexpr const char* kNames[] = {"Talmere", "Drosset", "Pellum",
                                    "Zarnith", "Quistel", "Vardeen"};
  return category >= 1 && category <= 6 ? kNames[category - 1] : nullptr;
}

bool take(std::u16string_view* text, std::u16string_view expected) {
  if (!text->starts_with(expected)) {
    return false;
  }
  text->remove_prefix(expected.size());
  return true;
}

bool take_line(std::u16string_view* text, size_t* size) {
  *size = text->find(u"\r\n");
  if (*size == std::u16string_view::npos) {
    return false;
  }
  text->remove_prefix(*size + 2);
  return true;
}

// A record's data, and the line behind it.
bool is_dump(std::u16string_view text, const std::vector<uint8_t>& data) {
  constexpr size_t kLine = 81;
  for (size_t offset = 0; offset < data.size(); offset += 16) {
    char start[32];
    std::snprintf(start, sizeof start, "0x%08zX: %02X", offset, data[offset]);
    if (text.size() < kLine || text.substr(kLine - 2, 2) != u"\r\n" ||
        !text.starts_with(wide(start))) {
      return false;
    }
    text.remove_prefix(kLine);
  }
  return text == u"\r\n";
}

// What a text log gets of an event.
struct Texts {
  std::u16string source;
  std::u16string description;
};

// Whether these bytes are the event's record, and nothing else.
bool is_record(std::string_view bytes, const Event& event, const Texts& texts) {
  const std::u16string units = units_of(bytes);
  std::u16string_view text = units;
  size_t time = 0;
  size_t computer = 0;
  return bytes.size() % sizeof(char16_t) == 0 &&
         take(&text, wide("EventID: " + std::to_string(event.id) + "\r\nSource: ")) &&
         take(&text, texts.source) &&
         take(&text, wide("\r\nCategory: " + std::string(name_of(event.category)) +
                          "\r\nType: " + label_of(event.type) + "\r\nDate and Time: ")) &&
         take_line(&text, &time) && time == 24 && take(&text, u"Computer: ") &&
         take_line(&text, &computer) && take(&text, u"Description:\r\n") &&
         take(&text, texts.description) && take(&text, u"\r\nData: Bytes in Hex\r\n") &&
         is_dump(text, event.data);
}

const std::string kBlock = kqsupt::tests::header_block();

// Whether a record ends here: behind its heading, or behind a line of its dump.
bool ends_record(std::u16string_view text) {
  constexpr std::u16string_view kHeading = u"\r\nData: Bytes in Hex\r\n\r\n";
  constexpr size_t kLastLine = 2 + 81 + 2;
  return text.ends_with(kHeading) || (text.size() >= kLastLine && text.ends_with(u"\r\n\r\n") &&
                                      text.substr(text.size() - kLastLine).starts_with(u"\r\n0x"));
}

// Whether a record that lacks its end, or the beginning of one, is at this place, and no whole one.
bool may_be_unfinished(const std::string& log, size_t place) {
  constexpr std::u16string_view kBegin = u"EventID: ";
  const size_t size = log.size() - place;
  if (place < kBlock.size() || size == 0 ||
      std::memcmp(log.data() + place, kBegin.data(),
                  std::min(size, kBegin.size() * sizeof(char16_t))) != 0) {
    return false;
  }
  const std::u16string rest = units_of(std::string_view(log).substr(place));
  for (size_t end = 0; end <= rest.size(); ++end) {
    if (ends_record(std::u16string_view(rest).substr(0, end))) {
      return false;
    }
  }
  return true;
}

// Whether the log got the event's record and kept what it had, but for a block or a record at its
// end that was not finished.
bool has_got(const std::string& before, std::string_view after, const Event& event,
             const Texts& texts) {
  if (before.size() < kBlock.size()) {
    const size_t place = kBlock.starts_with(before) ? 0 : before.size();
    return after.starts_with(before) && after.substr(place).starts_with(kBlock) &&
           is_record(after.substr(place + kBlock.size()), event, texts);
  }
  const auto common = std::mismatch(before.begin(), before.end(), after.begin(), after.end()).first;
  for (auto place = static_cast<size_t>(common - before.begin()); place >= kBlock.size(); --place) {
    if ((place == before.size() || may_be_unfinished(before, place)) &&
        is_record(after.substr(place), event, texts)) {
      return true;
    }
  }
  return false;
}

void append_to_text_log(const std::string& path, const Event& event) {
  const std::string before = content_of(path);
  require(SMAppendToLog(kTextLog, event.type, event.category, event.id, event.source.c_str(),
                        event.description.c_str(), event.data.data(),
                        static_cast<uint32_t>(event.data.size())) == SM_STATUS_SUCCESS);
  const std::string after = content_of(path);
  Texts texts;
  const bool is_valid = to_units(event.source, &texts.source) &&
                        to_units(event.description, &texts.description) && !texts.source.empty() &&
                        texts.source.size() <= 1023 && !texts.description.empty() &&
                        texts.description.size() <= 16383 && name_of(event.category) != nullptr &&
                        label_of(event.type) != nullptr;
  require(is_valid ? has_got(before, after, event, texts) : after == before);
}

// ---- The XML log ----

bool is_length(const std::string& text, size_t most) {
  return !text.empty() && text.size() <= most;
}

constexpr std::string_view kBegin = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog>";
constexpr std::string_view kEnd = "</EventLog>";

void check_xml_log(const std::string& path, bool was_there, std::string before, const Event& event,
                   SMStatus status, bool is_valid) {
  const std::string after = content_of(path);
  if (!is_valid) {
    require(status == SM_STATUS_UNSUCCESSFUL && after == before && exists(path) == was_there);
    return;
  }
  if (name_of(event.category) == nullptr) {
    require(status == kFailed && after == before && exists(path) == was_there);
    return;
  }
  size_t start = 0;
  if (before.size() > 37) {
    start = before.rfind(kEnd);
    if (start == std::string::npos || start < 38) {
      if (status != SM_STATUS_SUCCESS) {
        require(status == SM_STATUS_OPERATION_FAILED && after == before);
        return;
      }
      // An element that was not finished, behind one that was or behind the beginning.
      constexpr std::string_view kElementEnd = "</LogEntry>";
      const size_t element = before.rfind(kElementEnd);
      start = element != std::string::npos ? element + kElementEnd.size() : kBegin.size();
      require(before.size() > start && before[start] == '<');
      before.resize(start);
    }
  }
  require(status == SM_STATUS_SUCCESS && after.substr(0, start) == before.substr(0, start));
  std::string_view rest = std::string_view(after).substr(start);
  if (before.size() <= 37) {
    require(rest.starts_with(kBegin));
    rest.remove_prefix(kBegin.size());
  }
  require(rest.starts_with("<LogEntry><TimeStamp>"));
  const std::string middle = "<Type>" + std::to_string(event.type) + "</Type><ID>" +
                             std::to_string(event.id) + "</ID><Link>";
  require(rest.find(middle) < 600);
  const std::string last = "<Category>" + std::string(name_of(event.category)) +
                           "</Category><Description>" + event.description + "</Description><Data>";
  const size_t at = rest.find(last);
  require(at != std::string::npos);
  const std::string_view end = "</Data></LogEntry></EventLog>";
  const size_t behind = rest.find(end, at + last.size());  // the texts may hold one
  require(behind != std::string::npos);
  // Behind the document is what it did not come to lie on.
  const size_t size = after.size() - rest.size() + behind + end.size();
  require(after.substr(size) == (before.size() > size ? before.substr(size) : ""));
}

void append_to_xml_log(const std::string& path, const Event& event) {
  const std::string before = content_of(path);
  const bool was_there = exists(path);
  const SMStatus status = SMAppendToLog(
      kXmlLog, event.type, event.category, event.id, event.source.c_str(),
      event.description.c_str(), event.data.data(), static_cast<uint32_t>(event.data.size()));
  check_xml_log(path, was_there, before, event, status,
                is_length(event.source, 511) && is_length(event.description, 8191));
}

void append_to_other_xml_log(const std::string& path, const Event& event) {
  const std::string before = content_of(path);
  const bool was_there = exists(path);
  const SMStatus status =
      SMAppendToXMLLog(path.c_str(), event.type, event.category, event.id, event.user.c_str(),
                       event.source.c_str(), event.description.c_str(), event.link.c_str(),
                       event.data.data(), static_cast<uint32_t>(event.data.size()), kLargeSize);
  check_xml_log(path, was_there, before, event, status,
                is_length(event.user, 511) && is_length(event.source, 511) &&
                    is_length(event.description, 8191));
}

// A log of one event, an arbitrary one or none.
void begin(const std::string& path, uint8_t kind, const std::string& bytes,
           void (*append)(const std::string&, const Event&)) {
  unlink(path.c_str());
  if (kind % 4 != 0) {
    const Event first{4, 1, 1, "source", "first", "user", "", {1, 2, 3}};
    if (kind % 4 != 1) {
      append(path, first);
    }
    std::string content = content_of(path);
    if (kind % 4 == 3) {
      content.resize(content.size() * kind / 256);
    }
    if (kind % 4 != 2) {
      content += bytes;
      put_bytes(path, content.data(), content.size());
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Only the logs of a sandbox may be written.
  const char* sandbox = std::getenv("KQSUPT_SANDBOX");
  if (sandbox == nullptr) {
    return 0;
  }
  static const std::string directory = std::string(sandbox) + "/install/Quillance/log/log/";
  static const std::string text_log = directory + "kqsys32.log";
  static const std::string xml_log = directory + "kqsys32.xml";
  mkdir(directory.c_str(), 0755);
  Input input(data, size);
  const uint8_t kind = input.byte();
  const Event event = event_of(&input);
  const auto rest = input.bytes();
  const std::string bytes(reinterpret_cast<const char*>(rest.get()), input.size());
  begin(text_log, kind, bytes, append_to_text_log);
  append_to_text_log(text_log, event);
  append_to_text_log(text_log, event);
  begin(xml_log, kind, bytes, append_to_xml_log);
  append_to_xml_log(xml_log, event);
  append_to_xml_log(xml_log, event);
  begin(scratch_file("fuzz.xml"), kind, bytes, append_to_other_xml_log);
  append_to_other_xml_log(scratch_file("fuzz.xml"), event);
  append_to_other_xml_log(scratch_file("fuzz.xml"), event);
  return 0;
}
