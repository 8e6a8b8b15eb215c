// reader: receives the record of a machine, looks a few values up in its bytes, and prints it all.

#include <kqsupt/log.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>

#include "exchange.h"
#include "hand_over.h"
#include "machine_record.h"

namespace {

using namespace machine_record;

constexpr uint32_t kBaseTypeMask = 0x0F;

// What lies in a block has no alignment.
template <class Number>
Number number_at(const void* value) {
  Number number;
  std::memcpy(&number, value, sizeof number);
  return number;
}

// Writes text on one line: control characters and backslashes as \ooo.
void print_text(const void* value, size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(value);
  for (size_t i = 0; i < size; ++i) {
    if (bytes[i] < 0x20 || bytes[i] == 0x7F || bytes[i] == '\\') {
      std::printf("\\%03o", bytes[i]);
    } else {
      std::putchar(bytes[i]);
    }
  }
}

// The value of an entry that must be there with the type that its field has.
Block look_up(const Block& block, Id id) {
  const Field& field = *field_of(id);
  const bool nested = (field.type & kBaseTypeMask) == SDO_TYPE_CONFIG;
  const uint8_t expected = nested ? uint8_t{SDO_TYPE_BINARY} : field.type;
  uint8_t type = 0;
  uint32_t size = 0;
  Block value;
  SMStatus status = SMSDOBinaryGetDataByID(block.data(), id, nullptr, nullptr, &size);
  if (status == SM_STATUS_BUFFER_TOO_SMALL) {
    value.resize(size);
    status = SMSDOBinaryGetDataByID(block.data(), id, &type, value.data(), &size);
  }
  if (status != SM_STATUS_SUCCESS || type != expected) {
    throw std::runtime_error(std::string("the record does not tell the \"") + field.label +
                             "\" of a machine");
  }
  return value;
}

// A look-up by ID delivers short text with the zeros that fill its slot.
void print_text_of(const Block& block, Id id) {
  const Block text = look_up(block, id);
  print_text(text.data(), strnlen(reinterpret_cast<const char*>(text.data()), text.size()));
}

void print_summary(const Block& block) {
  const Block uptime = look_up(block, kUptime);
  const Block kernel = look_up(block, kKernel);
  if (uptime.size() != sizeof(uint64_t) ||
      SMSDOBinaryGetSize(kernel.data(), nullptr) != kernel.size()) {
    throw std::runtime_error("the record tells the uptime or the kernel in another form");
  }
  const auto minutes = number_at<uint64_t>(uptime.data()) / 60;
  print_text_of(block, kHost);
  std::printf(": ");
  print_text_of(kernel, kKernelSystem);
  std::printf(" ");
  print_text_of(kernel, kKernelRelease);
  std::printf(", up %" PRIu64 " d %02u:%02u\n", minutes / (24 * 60),
              static_cast<unsigned>(minutes / 60 % 24), static_cast<unsigned>(minutes % 60));
}

// The state of a walk: how deep the block lies whose entries are being reported. The callbacks run
// inside the library, so none of them throws.
struct Printer {
  int depth = -1;

  void indent() const { std::printf("%*s", depth * 2, ""); }
};

SMStatus begin_block(void* context, uint32_t, uint32_t, uint32_t, uint32_t index, const void*) {
  auto* printer = static_cast<Printer*>(context);
  if (index != 0xFFFFFFFF) {
    printer->indent();
    std::printf("[%" PRIu32 "]:\n", index);
  }
  ++printer->depth;
  return SM_STATUS_SUCCESS;
}

SMStatus end_block(void* context, uint32_t, uint32_t) {
  --static_cast<Printer*>(context)->depth;
  return SM_STATUS_SUCCESS;
}

SMStatus print_entry(void* context, uint32_t*, uint32_t id, uint32_t unit, uint32_t, uint32_t,
                     uint32_t base_type, uint32_t size, const void* value) {
  static constexpr const char* kUnitNames[] = {"", " bytes", " seconds", " kHz"};
  static_cast<Printer*>(context)->indent();
  if (const Field* field = field_of(id)) {
    std::printf("%s:", field->label);
  } else {
    std::printf("field %" PRIu32 ":", id);
  }
  if (base_type == kU32 && size == sizeof(uint32_t)) {
    std::printf(" %" PRIu32 "%s", number_at<uint32_t>(value), kUnitNames[unit]);
  } else if (base_type == kU64 && size == sizeof(uint64_t)) {
    std::printf(" %" PRIu64 "%s", number_at<uint64_t>(value), kUnitNames[unit]);
  } else if (base_type == kText) {
    std::putchar(' ');
    print_text(value, size);
  } else if (base_type != SDO_TYPE_BINARY) {
    std::printf(" %" PRIu32 " bytes of type %" PRIu32, size, base_type);
  }
  std::putchar('\n');
  return SM_STATUS_SUCCESS;
}

void print_tree(const Block& block) {
  Printer printer;
  const SMStatus status =
      SMSDOBinaryWalk(block.data(), &printer, begin_block, print_entry, nullptr, end_block, 1);
  if (status != SM_STATUS_SUCCESS) {
    throw std::runtime_error("walking the record failed with status " + std::to_string(status));
  }
}

// Tells operators what was received: in the family's logs, as text and as XML, and in the system's
// own.
void log_receipt(const Block& block) {
  constexpr uint16_t kCategory = 1;
  constexpr uint32_t kReceived = 1001;
  constexpr uint32_t kShownBytes = 32;
  const std::string description =
      "The record of this machine was received: " + std::to_string(block.size()) + " bytes";
  const auto shown = std::min<size_t>(block.size(), kShownBytes);
  const SMStatus status = SMAppendToLog(SM_LOG_OS | SM_LOG_TEXT | SM_LOG_XML, SM_EVENT_INFORMATION,
                                        kCategory, kReceived, "reader", description.c_str(),
                                        block.data(), static_cast<uint32_t>(shown));
  if (status != SM_STATUS_SUCCESS) {
    throw std::runtime_error("logging failed with status " + std::to_string(status));
  }
}

}  // namespace

// reader: takes the record that a collector offers, and logs that it did. reader -: reads it from the
// standard input.
int main(int count, char** arguments) {
  try {
    const bool from_input = count > 1 && std::string(arguments[1]) == "-";
    const Block block = from_input ? receive_block() : exchange::take();
    print_summary(block);
    print_tree(block);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      throw std::system_error(errno, std::generic_category(), "standard output");
    }
    if (!from_input) {
      log_receipt(block);
    }
    return EXIT_SUCCESS;
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "reader: memory is short\n");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "reader: %s\n", error.what());
  }
  return EXIT_FAILURE;
}
