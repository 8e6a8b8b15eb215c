// The exported functions on configuration.

#include "kqsupt/config.h"

#include "config/directories.h"
#include "config/file_change.h"
#include "config/ini_file.h"
#include "config/install_paths.h"
#include "config/item_list.h"
#include "config/pci_names.h"
#include "config/property_file.h"
#include "config/string_ids.h"
#include "config/temporary_name.h"

using namespace kqsupt;

extern "C" {

SMStatus SMGetPathByProductIDandType(int32_t productID, uint32_t pathType, char* buffer,
                                     uint32_t* size) {
  return config::get_path(productID, pathType, buffer, size);
}
SMStatus SMGetInstallPath(char* buffer, uint32_t* size) {
  return config::get_path(config::kQuillance, config::kInstallPath, buffer, size);
}
SMStatus SMGetInstallPathByProductID(int32_t productID, char* buffer, uint32_t* size) {
  return config::get_path(productID, config::kInstallPath, buffer, size);
}
SMStatus SMExpandYbInstallPathString(const char* text, char* buffer, uint32_t* size) {
  return config::expand_install_path(text, buffer, size);
}
int32_t SMProductSIDToID(const char* productKey) {
  return config::product_of_key(productKey);
}
char* SMProductIDToSID(int32_t productID) {
  return config::key_of_product(productID);
}
char* SMMakePathFileNameByPID(int32_t productID, const char* subDirectory, const char* fileName) {
  return config::make_path(productID, config::kInstallPath, subDirectory, fileName);
}
char* SMMakePathFileNameByPIDAndType(int32_t productID, uint32_t pathType, const char* subDirectory,
                                     const char* fileName) {
  return config::make_path(productID, pathType, subDirectory, fileName);
}
char* SMGetLocalizedPathFileName(const char* baseDirectory, const char* directory,
                                 const char* languageID, const char* subDirectory,
                                 const char* fileName) {
  return config::find_localized_path(baseDirectory, directory, languageID, subDirectory, fileName);
}

SMStatus SMMkDir(const char* path) {
  return config::make_directory(path);
}
SMStatus SMRmDir(const char* path) {
  return config::remove_directory(path);
}
SMStatus SMDeleteFile(const char* path) {
  return config::delete_file(path);
}
SMStatus SMGetSizeOfFile(const char* path, uint32_t* size) {
  return config::size_of_file(path, size);
}
SMStatus SMGetTmpFile(const char* directory, char* buffer, uint32_t* size) {
  return config::make_temporary_name(directory, buffer, size);
}
SMFileProp* SMFilePropAlloc(const char* path) {
  return config::watch_file(path);
}
uint32_t SMFilePropIsModified(SMFileProp* file) {
  return config::was_modified(file);
}
void SMFilePropFree(SMFileProp* file) {
  config::stop_watching(file);
}

char* SMUTF8ConvertXSVToYSV(const char* text, char separator, char newSeparator, uint32_t* count,
                            uint32_t* size) {
  return config::convert_list_for_caller(text, separator, newSeparator, count, size);
}

SMStatus SMReadINIPathFileValue(const char* section, const char* key, uint32_t type, void* buffer,
                                uint32_t* size, const void* defaultValue, uint32_t defaultSize,
                                const char* pathFileName, uint16_t lockWait) {
  return config::read_ini_value(section, key, type, buffer, size, defaultValue, defaultSize,
                                pathFileName, lockWait == 1);
}
SMStatus SMWriteINIPathFileValue(const char* section, const char* key, uint32_t type,
                                 const void* value, uint32_t valueSize, const char* pathFileName,
                                 uint16_t lockWait) {
  return config::write_ini_value(section, key, type, value, valueSize, pathFileName, lockWait == 1);
}
SMStatus SMReadINIFileValue(const char* section, const char* key, uint32_t type, void* buffer,
                            uint32_t* size, const void* defaultValue, uint32_t defaultSize,
                            const char* fileName, uint16_t lockWait) {
  return config::read_own_ini_value(section, key, type, buffer, size, defaultValue, defaultSize,
                                    fileName, lockWait == 1);
}
SMStatus SMWriteINIFileValue(const char* section, const char* key, uint32_t type, const void* value,
                             uint32_t valueSize, const char* fileName, uint16_t lockWait) {
  return config::write_own_ini_value(section, key, type, value, valueSize, fileName, lockWait == 1);
}
char* SMReadINISectionKeyUTF8Value(const char* section, const char* key, const char* defaultValue,
                                   uint32_t* size, const char* pathFileName, uint16_t lockWait) {
  return config::read_ini_copy(section, key, defaultValue, size, pathFileName, lockWait == 1);
}
uint32_t SMReadINIEnums32Value(const char* section, const char* key, const SMEnums32* table,
                               uint32_t count, uint16_t isBitMask, const char* pathFileName,
                               uint16_t lockWait) {
  return config::read_ini_enum(section, key, table, count, isBitMask == 1, pathFileName,
                               lockWait == 1);
}

uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringID, uint32_t* languageID,
                                    const char* pathFileName, char* buffer, uint32_t* size) {
  return config::get_utf8_string(stringID, languageID, pathFileName, buffer, size);
}
uint32_t SMGetUCS2StrFromID(uint32_t stringID, uint32_t* languageID, ustring* ucs2Buffer,
                            uint32_t* size) {
  return config::get_ucs2_string(stringID, languageID, ucs2Buffer, size);
}
SMStatus SMReadPCIDevFile(uint32_t vendorID, uint32_t deviceID, uint32_t subVendorID,
                          uint32_t subDeviceID, const char* pathFileName, char* vendorName,
                          uint32_t* vendorNameSize, char* deviceName, uint32_t* deviceNameSize) {
  return config::find_pci_names({vendorID, deviceID, subVendorID, subDeviceID}, pathFileName,
                                {vendorName, vendorNameSize}, {deviceName, deviceNameSize});
}

SMStatus SMPropertyFileReadValue(const char* key, uint32_t typeCode, void* buffer, uint32_t* size,
                                 const void* defaultValue, uint32_t defaultSize,
                                 const char* pathFileName, uint16_t lockWait) {
  return config::read_property(key, typeCode, buffer, size, defaultValue, defaultSize, pathFileName,
                               lockWait == 1);
}
SMStatus SMPropertyFileWriteValue(const char* key, uint32_t typeCode, const void* value,
                                  uint32_t valueSize, const char* pathFileName, uint16_t lockWait) {
  return config::write_property(key, typeCode, value, valueSize, pathFileName, lockWait == 1);
}

}  // extern "C"
