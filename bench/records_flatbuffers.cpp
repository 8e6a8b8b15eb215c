// Records as FlatBuffers: built with its builder, which is kept and cleared as its users do.

#include <records_generated.h>

#include "records_bench.h"

namespace kqbench {
namespace {

constexpr const char* kPeer = "FlatBuffers";

std::span<const uint8_t> build(const Content& content) {
  static flatbuffers::FlatBufferBuilder builder(0x10000);
  static std::vector<flatbuffers::Offset<fb::Entry>> entries;
  builder.Clear();
  entries.clear();
  for (const Content::Value& value : content.values) {
    const auto data = builder.CreateVector(value.bytes.data(), value.bytes.size());
    entries.push_back(fb::CreateEntry(builder, value.id, data));
  }
  builder.Finish(fb::CreateRecord(builder, builder.CreateVectorOfSortedTables(&entries)));
  benchmark::DoNotOptimize(builder.GetBufferPointer());
  return {builder.GetBufferPointer(), builder.GetSize()};
}

void look_up_all(const Lookups& lookups) {
  for (const uint16_t id : lookups.ids) {
    const auto* entries = fb::GetRecord(lookups.block.data())->entries();
    const auto* data = entries->LookupByKey(id)->data();
    std::memcpy(value_buffer.data(), data->data(), data->size());
    benchmark::DoNotOptimize(value_buffer);
  }
}

const bool kAdded = [] {
  add_record_measurement(
      kLookUp, kPeer, true,
      [](const Content& content) { return fresh_lookups(content, build(content)); }, look_up_all);
  // It has nothing between the values and the bytes, so that both rows measure the same. The values
  // come as they come: putting them in order is part of its build, as of ours.
  add_record_measurement(kSerialize, kPeer, false, as_it_is, build);
  add_record_measurement(kBuildAndSerialize, kPeer, false, as_it_is, build);
  return true;
}();

}  // namespace
}  // namespace kqbench
