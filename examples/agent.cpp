// agent: a sensor's reading handed from one process to another, written with the C++ layer.
//
//   agent offer FILE   reads the sensor from an INI file and offers its record until it is taken
//   agent take         takes the record, prints it, and logs an event when the sensor is too hot
//
// Either may be started first. What they know of each other are names and the IDs below.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <kqsupt.hpp>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

namespace {

// The entries of a sensor's record, and what their types mean to these two.
constexpr uint16_t kIdName = 1;
constexpr uint16_t kIdCelsius = 2;
constexpr uint16_t kIdLimit = 3;
constexpr uint8_t kTypeNumber = 1;
constexpr uint8_t kTypeText = 3;

constexpr std::string_view kMemory = "example sensor";  // the segment's, and its mutex's
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

// Offers the block that the file describes. Only one process can have the segment, so who has it is
// the only one to create the event: to release a created event takes it away from everybody. The
// mutex keeps others out while the two come and go.
std::error_code offer(const char* path) {
  const auto block = read_sensor(path);
  if (!block) {
    return block.error();
  }
  if (block->size() > kMostBytes) {
    return kqsupt::status::out_of_space;
  }
  auto mutex = kqsupt::mutex::create(kMemory);
  if (!mutex) {
    return mutex.error();
  }
  auto held = mutex->lock(kPatience);
  if (!held) {
    return held.error();
  }
  const auto memory = kqsupt::shared_memory::create(kMemory, kMostBytes);
  if (!memory) {
    return memory.error();  // another one is offering, say
  }
  auto taken = kqsupt::event::create(kTaken, kqsupt::event_reset::manual);
  if (!taken) {
    return taken.error();
  }
  // What one that was killed left behind does not count.
  (void)taken->clear();
  std::memcpy(memory->address(), block->data(), block->size());
  held->unlock();
  (void)taken->wait(kPatience);
  held = mutex->lock(kPatience);
  return taken->wait(0).error();
}

struct reading {
  std::string name;
  int32_t celsius;
  int32_t limit;
};

// Values are looked up where they lie: nothing is unpacked.
kqsupt::result<reading> read_record(const void* memory) {
  const auto block = kqsupt::block_view::in(memory, kMostBytes);
  if (!block) {
    return block.code();
  }
  const auto name = block->text(kIdName);
  const auto celsius = block->value<int32_t>(kIdCelsius);
  const auto limit = block->value<int32_t>(kIdLimit);
  if (!name || !celsius || !limit) {
    return kqsupt::status::data_not_found;
  }
  return reading{*name, *celsius, *limit};
}

// What is offered now; status::timeout when nothing is.
kqsupt::result<reading> take_offered(kqsupt::mutex& mutex) {
  const auto held = mutex.lock(kPatience);
  if (!held) {
    return held.code();
  }
  const auto memory = kqsupt::shared_memory::open(kMemory);
  auto taken = kqsupt::event::open(kTaken);
  if (!memory || !taken || taken->wait(0)) {
    return kqsupt::status::timeout;
  }
  auto found = read_record(memory->address());
  if (found) {
    const auto told = taken->set();
    return told ? std::move(found) : told.code();
  }
  return found;
}

// The XML log takes texts as they are, so what is markup there is escaped for it alone.
std::error_code log_too_hot(const reading& sensor) {
  kqsupt::log_event event;
  event.type = SM_EVENT_WARNING;
  event.id = kEventTooHot;
  event.source = "agent";
  const std::string description =
      sensor.name + " has " + std::to_string(sensor.celsius) + " degrees";
  event.description = description;
  const auto logged = kqsupt::append_to_log(SM_LOG_TEXT, event);
  const auto source = kqsupt::escape_xml(event.source);
  const auto escaped = kqsupt::escape_xml(description);
  if (!logged || !source || !escaped) {
    return !logged ? logged.error() : kqsupt::status::no_memory;
  }
  event.source = *source;
  event.description = *escaped;
  return kqsupt::append_to_log(SM_LOG_XML, event).error();
}

std::error_code take() {
  auto mutex = kqsupt::mutex::create(kMemory);
  if (!mutex) {
    return mutex.error();
  }
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatience);
  auto sensor = take_offered(*mutex);
  while (sensor.code() == kqsupt::status::timeout && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    sensor = take_offered(*mutex);
  }
  if (!sensor) {
    return sensor.error();
  }
  std::printf("%s: %d degrees\n", sensor->name.c_str(), static_cast<int>(sensor->celsius));
  return sensor->celsius > sensor->limit ? log_too_hot(*sensor) : std::error_code();
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
