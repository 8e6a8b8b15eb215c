// Records: looking up in the bytes, writing them, and rebuilding a record from them.

#include "records_bench.h"

#include <kqsupt/sdo.h>

#include <bitset>
#include <memory>

#include "ratio_table.h"

namespace kqbench {

Content fresh_content(size_t entries) {
  Random& random = fresh();
  std::vector<size_t> sizes;
  size_t total = 0;
  for (size_t i = 0; i < entries; ++i) {
    const uint32_t tenth = random.between(0, 9);
    sizes.push_back(tenth < 5   ? 1U << random.between(0, 3)
                    : tenth < 9 ? random.between(8, 40)
                                : random.between(41, 200));
    total += sizes.back();
  }
  Content content;
  for (size_t i = 0; i < total; ++i) {
    content.storage.push_back(static_cast<uint8_t>(i));
  }
  std::bitset<0x10000> used;
  const uint8_t* bytes = content.storage.data();
  for (const size_t size : sizes) {
    uint16_t id = 0;
    do {
      id = static_cast<uint16_t>(random.between(1, 0xFFFD));
    } while (used[id]);
    used[id] = true;
    content.values.push_back({id, {bytes, size}});
    bytes += size;
  }
  return content;
}

Lookups fresh_lookups(const Content& content, std::span<const uint8_t> block) {
  Lookups lookups{{block.begin(), block.end()}, {}};
  for (const Content::Value& value : content.values) {
    lookups.ids.push_back(value.id);
  }
  std::shuffle(lookups.ids.begin(), lookups.ids.end(), fresh());
  return lookups;
}

namespace {

constexpr uint8_t kAnyType = 1;

struct FreeConfig {
  void operator()(SMSDOConfig* config) const { SMSDOConfigFree(config); }
};
using ConfigPtr = std::unique_ptr<SMSDOConfig, FreeConfig>;

ConfigPtr build(const Content& content) {
  ConfigPtr config(SMSDOConfigAlloc());
  for (const Content::Value& value : content.values) {
    const SMStatus status = SMSDOConfigAddData(config.get(), value.id, kAnyType, value.bytes.data(),
                                               static_cast<uint32_t>(value.bytes.size()), 0);
    require(status == SM_STATUS_SUCCESS);
  }
  return config;
}

std::span<const uint8_t> serialize(const ConfigPtr& config) {
  uint32_t size = block_buffer.size();
  const SMStatus status = SMSDOConfigToBinary(config.get(), block_buffer.data(), &size);
  require(status == SM_STATUS_SUCCESS);
  benchmark::DoNotOptimize(block_buffer);
  return {block_buffer.data(), size};
}

void look_up_all(const Lookups& lookups) {
  for (const uint16_t id : lookups.ids) {
    uint32_t size = value_buffer.size();
    const SMStatus status =
        SMSDOBinaryGetDataByID(lookups.block.data(), id, nullptr, value_buffer.data(), &size);
    require(status == SM_STATUS_SUCCESS);
    benchmark::DoNotOptimize(size);
    benchmark::DoNotOptimize(value_buffer);
  }
}

std::vector<Row> rows() {
  std::vector<Row> rows;
  const auto add = [&](const char* operation, const std::string& text, double target,
                       const char* peer) {
    for (const size_t entries : kRecordSizes) {
      rows.push_back({record_row(operation, entries), text + ", N = " + std::to_string(entries),
                      target, peer});
    }
  };
  add(kLookUp, "look up an ID in the bytes", 0.25, "FlatBuffers");
  add(kSerialize, "serialize a built record", 0.35, "FlatBuffers");
  add(kBuildAndSerialize, "build and serialize", 0.8, "protobuf");
  add(kRebuild, "rebuild from the bytes", 0.8, "protobuf");
  return rows;
}

const bool kAdded = [] {
  add_family({"records", {"FlatBuffers", "protobuf", "GVariant"}, rows()});

  add_record_measurement(
      kLookUp, kOurs, true,
      [](const Content& content) { return fresh_lookups(content, serialize(build(content))); },
      look_up_all);
  add_record_measurement(kSerialize, kOurs, false, build, serialize);
  add_record_measurement(kBuildAndSerialize, kOurs, false, as_it_is,
                         [](const Content& content) { serialize(build(content)); });
  add_record_measurement(
      kRebuild, kOurs, false,
      [](const Content& content) {
        const auto bytes = serialize(build(content));
        return std::vector<uint8_t>(bytes.begin(), bytes.end());
      },
      [](const std::vector<uint8_t>& block) {
        const ConfigPtr config(SMSDOBinaryToConfig(block.data()));
        require(config != nullptr);
      });
  return true;
}();

}  // namespace
}  // namespace kqbench
