// collector: builds a record of this machine from uname, /proc and /sys and hands it to the reader.

#include <dirent.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "exchange.h"
#include "hand_over.h"
#include "machine_record.h"

namespace {

using namespace machine_record;

struct FreeRecord {
  void operator()(SMSDOConfig* record) const { SMSDOConfigFree(record); }
};
using Record = std::unique_ptr<SMSDOConfig, FreeRecord>;

// Thrown when a value is too large for the record that it is added to.
struct DoesNotFit : std::length_error {
  DoesNotFit() : std::length_error("a value does not fit into the record") {}
};

Record new_record() {
  Record record(SMSDOConfigAlloc());
  if (record == nullptr) {
    throw std::bad_alloc();
  }
  return record;
}

void add_value(const Record& record, Id id, const void* value, size_t size) {
  const SMStatus status = SMSDOConfigAddData(record.get(), id, field_of(id)->type, value,
                                             static_cast<uint32_t>(size), 0);
  switch (status) {
    case SM_STATUS_SUCCESS:
      return;
    case SM_STATUS_NO_MEMORY:
      throw std::bad_alloc();
    case SM_STATUS_OUT_OF_SPACE:
      throw DoesNotFit();
    default:
      throw std::runtime_error(std::string("adding \"") + field_of(id)->label +
                               "\" failed with status " + std::to_string(status));
  }
}

// No entry has a value of no bytes: an empty text is a field that is left out.
void add_text(const Record& record, Id id, const std::string& text) {
  if (!text.empty()) {
    add_value(record, id, text.data(), text.size());
  }
}

void add_number(const Record& record, Id id, uint64_t number) {
  if ((field_of(id)->type & 0x0FU) == kU32) {
    const auto narrow = static_cast<uint32_t>(number);
    add_value(record, id, &narrow, sizeof narrow);
  } else {
    add_value(record, id, &number, sizeof number);
  }
}

// For what the kernel writes, where an empty text is a file that could not be read.
void add_number(const Record& record, Id id, const std::string& digits) {
  if (!digits.empty()) {
    add_number(record, id, std::strtoull(digits.c_str(), nullptr, 10));
  }
}

void add_child(const Record& record, Id id, Record child) {
  SMSDOConfig* pointer = child.get();
  add_value(record, id, pointer, sizeof pointer);
  static_cast<void>(child.release());
}

// What cannot be opened is left out of the record, unless only memory was missing.
template <class Handle>
Handle* opened(Handle* handle) {
  if (handle == nullptr && errno == ENOMEM) {
    throw std::bad_alloc();
  }
  return handle;
}

// The lines of a text file; none when it cannot be read.
std::vector<std::string> lines_of(const std::string& path) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(opened(std::fopen(path.c_str(), "re")),
                                                   std::fclose);
  std::vector<std::string> lines;
  bool in_line = false;
  for (int byte = 0; file != nullptr && (byte = std::fgetc(file.get())) != EOF;) {
    if (!in_line) {
      lines.emplace_back();
    }
    in_line = byte != '\n';
    if (in_line) {
      lines.back() += static_cast<char>(byte);
    }
  }
  return lines;
}

std::string first_line_of(const std::string& path) {
  const std::vector<std::string> lines = lines_of(path);
  return lines.empty() ? "" : lines.front();
}

// The directories in a directory of /sys, links to some among them; none when it cannot be read.
std::vector<std::string> directories_in(const std::string& path) {
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opened(opendir(path.c_str())), closedir);
  std::vector<std::string> names;
  while (const dirent* entry = directory != nullptr ? readdir(directory.get()) : nullptr) {
    const std::string name = entry->d_name;
    struct stat about {};
    if (name != "." && name != ".." && stat((path + "/" + name).c_str(), &about) == 0 &&
        S_ISDIR(about.st_mode)) {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Splits "key: value" or "key<tabs>: value" at the colon.
std::pair<std::string, std::string> key_and_value(const std::string& line) {
  const size_t colon = line.find(':');
  if (colon == std::string::npos) {
    return {};
  }
  const std::string key = line.substr(0, colon);
  const size_t start = line.find_first_not_of(" \t", colon + 1);
  return {key.substr(0, key.find_last_not_of(" \t") + 1),
          start == std::string::npos ? "" : line.substr(start)};
}

Record kernel_record(const utsname& system) {
  Record record = new_record();
  add_text(record, kKernelSystem, system.sysname);
  add_text(record, kKernelRelease, system.release);
  add_text(record, kKernelVersion, system.version);
  add_text(record, kKernelMachine, system.machine);
  return record;
}

Record memory_record() {
  std::map<std::string, uint64_t> sizes;
  for (const std::string& line : lines_of("/proc/meminfo")) {
    const auto [key, value] = key_and_value(line);
    sizes[key] = std::strtoull(value.c_str(), nullptr, 10) * 1024;  // the file counts in kB
  }
  const auto add_size = [&sizes](const Record& record, Id id, const char* key) {
    if (const auto found = sizes.find(key); found != sizes.end()) {
      add_number(record, id, found->second);
    }
  };
  Record record = new_record();
  add_size(record, kMemoryTotal, "MemTotal");
  add_size(record, kMemoryFree, "MemFree");
  add_size(record, kMemoryAvailable, "MemAvailable");
  Record swap = new_record();
  add_size(swap, kSwapTotal, "SwapTotal");
  add_size(swap, kSwapFree, "SwapFree");
  add_child(record, kSwap, std::move(swap));
  return record;
}

constexpr char kCpuDirectory[] = "/sys/devices/system/cpu/";
constexpr char kInterfaceDirectory[] = "/sys/class/net/";

// The indices of the CPUs, as text, in ascending order.
std::vector<std::string> cpu_indices() {
  std::vector<std::string> indices;
  for (const std::string& name : directories_in(kCpuDirectory)) {
    if (name.size() > 3 && name.compare(0, 3, "cpu") == 0 &&
        name.find_first_not_of("0123456789", 3) == std::string::npos) {
      indices.push_back(name.substr(3));
    }
  }
  std::sort(indices.begin(), indices.end(), [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  return indices;
}

// The model of each CPU that is online, by its index. PowerPC calls it "cpu".
std::map<std::string, std::string> cpu_models() {
  std::map<std::string, std::string> models;
  std::string index;
  for (const std::string& line : lines_of("/proc/cpuinfo")) {
    const auto [key, value] = key_and_value(line);
    if (key == "processor") {
      index = value;
    } else if (key == "model name" || key == "cpu") {
      models[index] = value;
    }
  }
  return models;
}

Record cpu_record(const std::string& index, const std::string& model) {
  const std::string directory = kCpuDirectory + ("cpu" + index);
  const std::string online = first_line_of(directory + "/online");
  Record record = new_record();
  add_number(record, kCpuIndex, index);
  // A CPU that cannot be taken offline has no such file.
  add_number(record, kCpuOnline, online.empty() ? "1" : online);
  add_text(record, kCpuModel, model);
  add_number(record, kCpuMaxFrequency, first_line_of(directory + "/cpufreq/cpuinfo_max_freq"));
  return record;
}

Record interface_record(const std::string& name) {
  const std::string directory = kInterfaceDirectory + name;
  Record record = new_record();
  add_text(record, kInterfaceName, name);
  add_number(record, kInterfaceMtu, first_line_of(directory + "/mtu"));
  add_text(record, kInterfaceAddress, first_line_of(directory + "/address"));
  add_text(record, kInterfaceState, first_line_of(directory + "/operstate"));
  add_number(record, kInterfaceReceived, first_line_of(directory + "/statistics/rx_bytes"));
  add_number(record, kInterfaceSent, first_line_of(directory + "/statistics/tx_bytes"));
  return record;
}

// The kernel writes blanks, line ends and backslashes inside a field as \ooo.
std::string without_escapes(const std::string& field) {
  std::string plain;
  for (size_t i = 0; i < field.size(); ++i) {
    const std::string digits = field[i] == '\\' ? field.substr(i + 1, 3) : "";
    if (digits.size() == 3 && digits.find_first_not_of("01234567") == std::string::npos) {
      plain += static_cast<char>(std::strtoul(digits.c_str(), nullptr, 8));
      i += digits.size();
    } else {
      plain += field[i];
    }
  }
  return plain;
}

// `line` is one of /proc/self/mounts: source, target, type and options, with a blank between them.
// An empty source leaves two blanks side by side.
Record mount_record(const std::string& line) {
  Record record = new_record();
  size_t start = 0;
  for (const Id id : {kMountSource, kMountTarget, kMountType, kMountOptions}) {
    const size_t end = std::min(line.find(' ', start), line.size());
    add_text(record, id, without_escapes(line.substr(start, end - start)));
    start = std::min(end + 1, line.size());
  }
  return record;
}

// Adds a record per source to the array `id`, as many as fit into a fair share of the room: what is
// left, divided by the number of arrays that are still to come, this one among them. The number of
// those that are left out becomes the value of `omitted_id`.
template <class Build>
void add_array(const Record& machine, Id id, Id omitted_id, uint32_t arrays_to_come,
               const std::vector<std::string>& sources, Build build) {
  constexpr uint32_t kBlockLimit = 65535;
  constexpr uint32_t kArrayCost = 16;   // the entry and the header of the array
  constexpr uint32_t kOmittedCost = 8;  // the entry of the number
  const uint32_t room = (kBlockLimit - SMSDOConfigGetBinarySize(machine.get())) / arrays_to_come;
  uint32_t used = kArrayCost + kOmittedCost;
  std::vector<Record> elements;
  for (const std::string& source : sources) {
    try {
      Record element = build(source);
      const uint32_t size = SMSDOConfigGetBinarySize(element.get());
      if (used + size <= room) {
        used += size;
        elements.push_back(std::move(element));
      }
    } catch (const DoesNotFit&) {
      continue;  // not even alone
    }
  }
  if (elements.size() < sources.size()) {
    add_number(machine, omitted_id, sources.size() - elements.size());
  }
  if (elements.empty()) {
    return;
  }
  std::vector<SMSDOConfig*> pointers;
  for (const Record& element : elements) {
    pointers.push_back(element.get());
  }
  add_value(machine, id, pointers.data(), pointers.size() * sizeof(SMSDOConfig*));
  for (Record& element : elements) {
    static_cast<void>(element.release());
  }
}

Record machine() {
  utsname system{};
  if (uname(&system) != 0) {
    throw std::system_error(errno, std::generic_category(), "uname");
  }
  Record record = new_record();
  add_text(record, kHost, system.nodename);
  add_number(record, kUptime, first_line_of("/proc/uptime"));
  add_child(record, kKernel, kernel_record(system));
  add_child(record, kMemory, memory_record());
  const auto models = cpu_models();
  add_array(record, kCpus, kCpusOmitted, 3, cpu_indices(), [&models](const std::string& index) {
    const auto model = models.find(index);
    return cpu_record(index, model != models.end() ? model->second : "");
  });
  add_array(record, kInterfaces, kInterfacesOmitted, 2, directories_in(kInterfaceDirectory),
            interface_record);
  add_array(record, kMounts, kMountsOmitted, 1, lines_of("/proc/self/mounts"), mount_record);
  return record;
}

Block serialized(const Record& record) {
  Block block(SMSDOConfigGetBinarySize(record.get()));
  auto size = static_cast<uint32_t>(block.size());
  const SMStatus status = SMSDOConfigToBinary(record.get(), block.data(), &size);
  if (status != SM_STATUS_SUCCESS) {
    throw std::runtime_error("serializing failed with status " + std::to_string(status));
  }
  return block;
}

}  // namespace

// collector: offers the record to whoever reads it. collector -: writes it to the standard output.
int main(int count, char** arguments) {
  try {
    const Block block = serialized(machine());
    if (count > 1 && std::string(arguments[1]) == "-") {
      send_block(block);
    } else {
      exchange::offer(block);
    }
    return EXIT_SUCCESS;
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "collector: memory is short\n");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "collector: %s\n", error.what());
  }
  return EXIT_FAILURE;
}
