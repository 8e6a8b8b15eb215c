// Records as GVariants of type a{qv}. They are not ordered, so looking up goes through them.

#include <glib.h>

#include <cstring>

#include "records_bench.h"

namespace kqbench {
namespace {

constexpr const char* kPeer = "GVariant";

std::span<const uint8_t> build(const Content& content) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a{qv}"));
  for (const Content::Value& value : content.values) {
    GVariant* bytes =
        g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, value.bytes.data(), value.bytes.size(), 1);
    g_variant_builder_add_value(&builder, g_variant_new_dict_entry(g_variant_new_uint16(value.id),
                                                                   g_variant_new_variant(bytes)));
  }
  GVariant* record = g_variant_ref_sink(g_variant_builder_end(&builder));
  const size_t size = g_variant_get_size(record);
  g_variant_store(record, block_buffer.data());
  benchmark::DoNotOptimize(block_buffer);
  g_variant_unref(record);
  return {block_buffer.data(), size};
}

void look_up(GVariant* record, uint16_t id) {
  GVariantIter iterator;
  g_variant_iter_init(&iterator, record);
  for (bool found = false; !found;) {
    GVariant* entry = g_variant_iter_next_value(&iterator);
    GVariant* key = g_variant_get_child_value(entry, 0);
    found = g_variant_get_uint16(key) == id;
    if (found) {
      GVariant* boxed = g_variant_get_child_value(entry, 1);
      GVariant* value = g_variant_get_variant(boxed);
      size_t size = 0;
      const void* bytes = g_variant_get_fixed_array(value, &size, 1);
      std::memcpy(value_buffer.data(), bytes, size);
      benchmark::DoNotOptimize(value_buffer);
      g_variant_unref(value);
      g_variant_unref(boxed);
    }
    g_variant_unref(key);
    g_variant_unref(entry);
  }
}

void look_up_all(const Lookups& lookups) {
  GVariant* record = g_variant_new_from_data(G_VARIANT_TYPE("a{qv}"), lookups.block.data(),
                                             lookups.block.size(), TRUE, nullptr, nullptr);
  g_variant_ref_sink(record);
  for (const uint16_t id : lookups.ids) {
    look_up(record, id);
  }
  g_variant_unref(record);
}

const bool kAdded = [] {
  add_record_measurement(
      kLookUp, kPeer, true,
      [](const Content& content) { return fresh_lookups(content, build(content)); }, look_up_all);
  add_record_measurement(kBuildAndSerialize, kPeer, false, as_it_is, build);
  return true;
}();

}  // namespace
}  // namespace kqbench
