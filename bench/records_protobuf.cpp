// Records as protobuf messages.

#include <records.pb.h>

#include <memory>

#include "records_bench.h"

namespace kqbench {
namespace {

constexpr const char* kPeer = "protobuf";

void fill(pb::Record& record, const Content& content) {
  auto& entries = *record.mutable_entries();
  for (const Content::Value& value : content.values) {
    entries[value.id].assign(reinterpret_cast<const char*>(value.bytes.data()), value.bytes.size());
  }
}

void serialize(const pb::Record& record) {
  require(record.SerializeToArray(block_buffer.data(), block_buffer.size()));
  benchmark::DoNotOptimize(block_buffer);
}

const bool kAdded = [] {
  add_record_measurement(
      kSerialize, kPeer, false,
      [](const Content& content) {
        auto record = std::make_unique<pb::Record>();
        fill(*record, content);
        return record;
      },
      [](const std::unique_ptr<pb::Record>& record) { serialize(*record); });
  add_record_measurement(kBuildAndSerialize, kPeer, false, as_it_is, [](const Content& content) {
    pb::Record record;
    fill(record, content);
    serialize(record);
  });
  add_record_measurement(
      kRebuild, kPeer, false,
      [](const Content& content) {
        pb::Record record;
        fill(record, content);
        return record.SerializeAsString();
      },
      [](const std::string& bytes) {
        pb::Record record;
        require(record.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())));
        benchmark::DoNotOptimize(record);
      });
  return true;
}();

}  // namespace
}  // namespace kqbench
