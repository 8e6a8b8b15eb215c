// agent: a sensor's reading handed from one process to another, written with the C++ layer.
//
//   agent offer FILE   reads the sensor from an INI file and offers its record until it is taken
//   agent take         takes the record, prints it, and logs an event when the sensor is too hot
//
// Either may be started first. What they know of each other are names and the IDs below.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <kqsupt.hpp>
#include <string_view>
#include <system_error>

namespace {

// The entries of a sensor's record, and what their types mean to these two.
constexpr uint16_t kIdName = 1;
constexpr uint16_t kIdCelsius = 2;
constexpr uint16_t kIdLimit = 3;
constexpr uint8_t kTypeNumber = 1;
constexpr uint8_t kTypeText = 3;

constexpr std::string_view kMemory = "example sensor";
constexpr std::string_view kThere = "example sensor is there";
constexpr std::string_view kTaken = "example sensor was taken";
constexpr uint32_t kMostBytes = 1024;
constexpr int32_t kPatience = 30000;  // milliseconds

constexpr uint32_t kEventTooHot = 2001;

// The block of the sensor that the INI file describes.
kqsupt::result<kqsupt::block> read_sensor(const char* path) {
  const kqsupt::ini_file file(path);
  const auto name = file.text("sensor", "name");
  const auto celsius = file.value<int32_t>("sensor", "celsius");
  if (!name || !celsius) {
    return name ? celsius.code() : name.code();
  }
  // A sensor without a limit is never too hot.
  const int32_t limit = file.value<int32_t>("sensor", "limit").value_or(INT32_MAX);
  auto sensor = kqsupt::record::create();
  if (!sensor) {
    return sensor.code();
  }
  for (const auto& added : {sensor->add_text(kIdName, kTypeText, *name),
                            sensor->add_value(kIdCelsius, kTypeNumber, *celsius),
                            sensor->add_value(kIdLimit, kTypeNumber, limit)}) {
    if (!added) {
      return added.code();
    }
  }
  return sensor->to_block();
}

std::error_code offer(const char* path) {
  const auto block = read_sensor(path);
  if (!block) {
    return block.error();
  }
  if (block->size() > kMostBytes) {
    return kqsupt::status::out_of_space;
  }
  auto there = kqsupt::event::create(kThere, kqsupt::event_reset::manual);
  auto taken = kqsupt::event::create(kTaken, kqsupt::event_reset::manual);
  const auto memory = kqsupt::shared_memory::create(kMemory, kMostBytes);
  if (!there || !taken || !memory) {
    return kqsupt::status::operation_failed;  // another one is offering, say
  }
  // What one that was killed left behind does not count.
  (void)there->clear();
  (void)taken->clear();
  std::memcpy(memory->address(), block->data(), block->size());
  const auto set = there->set();
  return set ? taken->wait(kPatience).error() : set.error();
}

std::error_code take() {
  auto there = kqsupt::event::open(kThere);
  for (const uint64_t start = kqsupt::ticks(); !there; there = kqsupt::event::open(kThere)) {
    if (kqsupt::ticks() - start > kPatience) {
      return kqsupt::status::timeout;
    }
    SMThreadYield();
  }
  if (const auto waited = there->wait(kPatience); !waited) {
    return waited.error();
  }
  const auto memory = kqsupt::shared_memory::open(kMemory);
  auto taken = kqsupt::event::open(kTaken);
  if (!memory || !taken) {
    return kqsupt::status::data_not_found;
  }
  // Values are looked up where they lie: nothing is unpacked.
  const auto block = kqsupt::block_view::in(memory->address(), kMostBytes);
  if (!block) {
    return block.error();
  }
  const auto name = block->text(kIdName);
  const auto celsius = block->value<int32_t>(kIdCelsius);
  const auto limit = block->value<int32_t>(kIdLimit);
  if (!name || !celsius || !limit) {
    return kqsupt::status::data_not_found;
  }
  std::printf("%s: %d degrees\n", name->c_str(), static_cast<int>(*celsius));
  if (const auto told = taken->set(); !told || *celsius <= *limit) {
    return told.error();
  }
  kqsupt::log_event event;
  event.type = SM_EVENT_WARNING;
  event.id = kEventTooHot;
  event.source = "agent";
  const std::string description = *name + " has " + std::to_string(*celsius) + " degrees";
  event.description = description;
  return kqsupt::append_to_log(SM_LOG_TEXT | SM_LOG_XML, event).error();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view task = argc > 1 ? argv[1] : "";
  std::error_code error;
  if (task == "offer" && argc == 3) {
    error = offer(argv[2]);
  } else if (task == "take" && argc == 2) {
    error = take();
  } else {
    std::fprintf(stderr, "usage: agent offer FILE | agent take\n");
    return 2;
  }
  if (error) {
    std::fprintf(stderr, "agent: %s\n", error.message().c_str());
    return 1;
  }
  return 0;
}
