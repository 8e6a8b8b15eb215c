// The exported functions on records and their blocks.

#include "kqsupt/sdo.h"

#include "sdo/binary.h"
#include "sdo/binary_array.h"
#include "sdo/config.h"
#include "sdo/conversion.h"

using namespace kqsupt;

extern "C" {

SMSDOConfig* SMSDOConfigAlloc() {
  return sdo::alloc_config();
}
void SMSDOConfigFree(SMSDOConfig* config) {
  sdo::free_config(config);
}
SMSDOConfig* SMSDOConfigClone(const SMSDOConfig* config) {
  return sdo::clone(config);
}

uint32_t SMSDOConfigCompareByValue(const SMSDOConfig* a, const SMSDOConfig* b) {
  return sdo::compare_by_value(a, b);
}

uint32_t SMSDOConfigGetCount(const SMSDOConfig* config) {
  return sdo::count(config);
}

SMStatus SMSDOConfigAddData(SMSDOConfig* config, uint16_t id, uint8_t type, const void* data,
                            uint32_t size, uint32_t replace) {
  return sdo::add_data(config, id, type, data, size, replace, sdo::UnaddedChild::kLose);
}

SMStatus SMSDOConfigGetDataByID(const SMSDOConfig* config, uint16_t id, uint8_t* typeOut,
                                void* buffer, uint32_t* size) {
  return sdo::get_data_by_id(config, id, typeOut, buffer, size);
}

SMStatus SMSDOConfigGetDataByIndex(const SMSDOConfig* config, uint32_t index, uint16_t* idOut,
                                   uint8_t* typeOut, void* buffer, uint32_t* size) {
  return sdo::get_data_by_index(config, index, idOut, typeOut, buffer, size);
}

SMStatus SMSDOConfigRemoveData(SMSDOConfig* config, uint16_t id, uint32_t index,
                               uint32_t removeAll) {
  return sdo::remove_data(config, id, index, removeAll);
}

uint32_t SMSDOConfigGetBinarySize(const SMSDOConfig* config) {
  return sdo::binary_size(config);
}
uint32_t SMSDOConfigReCalcBinarySize(SMSDOConfig* config) {
  return sdo::recalc_binary_size(config);
}

SMStatus SMSDOConfigToBinary(const SMSDOConfig* config, void* buffer, uint32_t* size) {
  return sdo::to_binary(config, buffer, size);
}

SMSDOConfig* SMSDOBinaryToConfig(const void* binary) {
  return sdo::to_config(binary);
}

SMStatus SMSDOConfigArrayToBinaryArray(SMSDOConfig* const* configs, uint32_t count, void* buffer,
                                       uint32_t* size) {
  return sdo::configs_to_array(configs, count, buffer, size);
}

SMStatus SMSDOBinaryArrayToConfigArray(const void* array, SMSDOConfig** configsOut,
                                       uint32_t* count) {
  return sdo::array_to_configs(array, configsOut, count);
}

uint32_t SMSDOBinaryGetCount(const void* binary, uint16_t* isArray) {
  return sdo::block_count(binary, isArray);
}

uint32_t SMSDOBinaryGetSize(const void* binary, uint16_t* isArray) {
  return sdo::block_size(binary, isArray);
}

SMStatus SMSDOBinaryGetDataByID(const void* binary, uint16_t id, uint8_t* typeOut, void* buffer,
                                uint32_t* size) {
  return sdo::block_get_by_id(binary, id, typeOut, buffer, size);
}

SMStatus SMSDOBinaryGetDataByIndex(const void* binary, uint32_t index, uint16_t* idOut,
                                   uint8_t* typeOut, void* buffer, uint32_t* size) {
  return sdo::block_get_by_index(binary, index, idOut, typeOut, buffer, size);
}

SMStatus SMSDOBinarySetData(void* binary, uint32_t* capacity, uint16_t id, uint8_t type,
                            const void* data, uint32_t size) {
  return sdo::block_set(binary, capacity, id, type, data, size);
}

SMStatus SMSDOBinaryWalk(const void* binary, void* context, SMSDOBinaryWalkBegin begin,
                         SMSDOBinaryWalkEntry entry, SMSDOBinaryWalkAfter after,
                         SMSDOBinaryWalkEnd end, uint16_t recurse) {
  return sdo::block_walk(binary, context, begin, entry, after, end, recurse);
}

SMStatus SMSDOBinaryArrayInitHeader(void* buffer, uint32_t size) {
  return sdo::array_init(buffer, size);
}

SMStatus SMSDOBinaryArrayAddData(void* array, uint32_t* capacity, const void* element,
                                 uint32_t elementSize) {
  return sdo::array_add(array, capacity, element, elementSize);
}

SMStatus SMSDOBinaryArrayGetByIndex(const void* array, uint32_t arraySize, uint32_t index,
                                    void* buffer, uint32_t* size) {
  return sdo::array_get(array, arraySize, index, buffer, size);
}

}  // extern "C"
