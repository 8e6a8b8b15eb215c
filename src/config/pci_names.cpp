// Reading the file of PCI device names: lines of a kind, an identifier and a name, each for those
// that follow it.
//
//   V  8086  a vendor
//   D  1229  one of its devices
//   O  1014  who builds boards with the device
//   S  005C  one of the boards

#include "config/pci_names.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "config/line_reader.h"
#include "frame/heap.h"
#include "os/file_descriptor.h"

namespace kqsupt::config {
namespace {

constexpr uint32_t kNone = 0xFFFF;

struct Record {
  char kind;
  uint32_t id;
  std::string_view name;
};

// The next field of a line; several tabs between two count as one.
std::string_view take_field(std::string_view* line) {
  line->remove_prefix(std::min(line->find_first_not_of('\t'), line->size()));
  const std::string_view field = line->substr(0, std::min(line->find('\t'), line->size()));
  line->remove_prefix(field.size());
  return field;
}

// At most four digits, as reading a number of that width takes them. False where there is none.
bool parse_id(std::string_view text, uint32_t* id) {
  char digits[16] = {};
  text.copy(digits, sizeof digits - 1);
  unsigned value = 0;
  if (std::sscanf(digits, "%4X", &value) != 1) {
    return false;
  }
  *id = value;
  return true;
}

bool parse_record(std::string_view line, Record* record) {
  line = text_of(line);
  line = line.substr(0, std::min(line.find_first_of(";\r"), line.size()));
  const std::string_view kind = take_field(&line);
  const std::string_view id = take_field(&line);
  record->name = take_field(&line);
  if (record->name.empty() || kind.size() != 1 || !parse_id(id, &record->id)) {
    return false;
  }
  record->kind = static_cast<char>(kind[0] & ~0x20);
  return true;
}

void copy_name(std::string_view name, const NameRoom& room, uint32_t capacity, uint32_t* length) {
  *length = static_cast<uint32_t>(std::min<size_t>(name.size(), capacity - 1));
  *std::copy_n(name.begin(), *length, room.text) = '\0';
}

// What has been read so far, for the device that is looked for.
class Search {
 public:
  Search(const PciDevice& wanted, const NameRoom& vendor_name, const NameRoom& device_name)
      : wanted_(wanted),
        vendor_name_(vendor_name),
        device_name_(device_name),
        vendor_capacity_(*vendor_name.size),
        device_capacity_(*device_name.size) {
    copy_name({}, vendor_name_, vendor_capacity_, vendor_name_.size);
    copy_name({}, device_name_, device_capacity_, device_name_.size);
  }

  // False when nothing that follows can matter.
  bool take(const Record& record) {
    switch (record.kind) {
      case 'V':
        if (vendor_found_) {
          return false;
        }
        now_ = {record.id, kNone, kNone, kNone};
        vendor_found_ = now_.vendor == wanted_.vendor;
        if (vendor_found_) {
          copy_name(record.name, vendor_name_, vendor_capacity_, vendor_name_.size);
        }
        break;
      case 'D':
        if (device_found_) {
          return false;
        }
        now_.device = record.id;  // the maker stays: only a vendor ends what it applies to
        device_found_ = is_device();
        copy_device_name(record.name, device_found_);
        break;
      case 'O':
        now_.sub_vendor = record.id;
        copy_device_name(record.name, is_board_maker());
        break;
      case 'S':
        copy_device_name(record.name,
                         is_board_maker() && (record.id & 0xFFFF) == wanted_.sub_device);
        break;
      default:
        break;
    }
    return true;
  }

  [[nodiscard]] bool found() const { return vendor_found_ && device_found_; }

 private:
  [[nodiscard]] bool is_device() const {
    return now_.vendor == wanted_.vendor && now_.device == wanted_.device;
  }
  [[nodiscard]] bool is_board_maker() const {
    return is_device() && now_.sub_vendor == wanted_.sub_vendor;
  }
  void copy_device_name(std::string_view name, bool matches) {
    if (matches) {
      copy_name(name, device_name_, device_capacity_, device_name_.size);
    }
  }

  PciDevice wanted_;
  NameRoom vendor_name_;
  NameRoom device_name_;
  uint32_t vendor_capacity_;
  uint32_t device_capacity_;
  PciDevice now_{kNone, kNone, kNone, kNone};
  bool vendor_found_ = false;
  bool device_found_ = false;
};

bool is_valid(const NameRoom& room) {
  return room.text != nullptr && room.size != nullptr && *room.size != 0;
}

}  // namespace

SMStatus find_pci_names(const PciDevice& device, const char* path, const NameRoom& vendor_name,
                        const NameRoom& device_name) {
  if (path == nullptr || *path == '\0' || !is_valid(vendor_name) || !is_valid(device_name)) {
    for (uint32_t* size : {vendor_name.size, device_name.size}) {
      if (size != nullptr) {
        *size = 0;
      }
    }
    return SM_STATUS_INVALID_PARAMETER;
  }
  Search search(device, vendor_name, device_name);
  const frame::HeapPtr<char> room(static_cast<char*>(std::malloc(LineReader::kBufferSize)));
  if (room == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  const auto file = os::FileDescriptor::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!file.is_open()) {
    return SM_STATUS_FILE_NOT_FOUND;
  }
  LineReader lines(file, {room.get(), LineReader::kBufferSize});
  Record record{};
  for (std::string_view line; lines.next(line);) {
    if (parse_record(line, &record) && !search.take(record)) {
      break;
    }
  }
  return search.found() && !lines.failed() ? SM_STATUS_SUCCESS : SM_STATUS_FILE_NOT_FOUND;
}

}  // namespace kqsupt::config
